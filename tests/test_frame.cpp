// What every caller meets first: the version record, byte for byte, and the exact
// argument lists of the exported names (checked against the header's prototypes).
#include <cstddef>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "vorx.h"

namespace {

template <class F, class G>
constexpr bool sameSignature = std::is_same_v<F, G>;

using I = int32_t;
using U = uint32_t;
using CF = const float*;
using CFT = const float* const*;
using FT = float* const*;
using CD = const double*;
using CDT = const double* const*;
using DT = double* const*;

// src1 (list) with byte shift and elem stride, src2 plain strided, dst (list), len, count.
static_assert(sameSignature<decltype(vorxAdd_vav_32f_LS2),
                            vorxStatus(CFT, I, I, CF, I, FT, I, I, U, U)>);
static_assert(sameSignature<decltype(vorxAdd_vav_32f_P), vorxStatus(CFT, I, CFT, I, FT, I, U, U)>);
// The constant first in the name, the vector's arguments first in the call.
static_assert(sameSignature<decltype(vorxSub_cva_64f_3x1_PS2),
                            vorxStatus(CDT, I, I, double, DT, I, I, U)>);
static_assert(sameSignature<decltype(vorxSub_cv_32f), vorxStatus(CF, float, float*, U)>);
static_assert(sameSignature<decltype(vorxSub_vva_32f_LS2),
                            vorxStatus(CF, I, CFT, I, I, FT, I, I, U, U)>);
static_assert(sameSignature<decltype(vorxAdd_vava_64f_S2),
                            vorxStatus(CD, I, I, CD, I, I, double*, I, I, U, U)>);
static_assert(sameSignature<decltype(vorxGetLibVersion), const vorxVersionRecord*(void)>);

TEST(VersionRecord, ByteForByte)
{
    const vorxVersionRecord* r = vorxGetLibVersion();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r, vorxGetLibVersion()) << "the same record every time";
    EXPECT_EQ(r->majorVersion, 4);
    EXPECT_EQ(r->minorVersion, 1);
    EXPECT_EQ(r->buildMajor, 11);
    EXPECT_EQ(r->buildMinor, 30);
    const unsigned char tag[4] = {'a', '6', 0, 0};
    EXPECT_EQ(std::memcmp(r->cpuTag, tag, 4), 0);
    EXPECT_STREQ(r->libraryName, "libvorxa6.so");
    EXPECT_STREQ(r->versionText, "v4.1");
    EXPECT_STREQ(r->buildDate, "Jul 23 2004");
    // Four 32-bit numbers, four tag bytes, then the three text pointers.
    EXPECT_EQ(offsetof(vorxVersionRecord, cpuTag), 16u);
    EXPECT_EQ(offsetof(vorxVersionRecord, libraryName), 20u + (sizeof(void*) == 8 ? 4u : 0u));
    char text[8];
    std::snprintf(text, sizeof text, "v%d.%d", r->majorVersion, r->minorVersion);
    EXPECT_STREQ(text, r->versionText);
}

}  // namespace
