// Multiplication by a constant beyond what the catalogue-wide tests check against
// the model: the transposed source's running index in single Pointer calls, and
// the run-time fast path with any alignment and with overlapping operands.
#include <gtest/gtest.h>

#include "harness.h"

namespace {

using vt::sameBits;

// A transposed Pointer source is tested at the running index i*3 + j: entry 1 at
// (0, 1), though it is read at (1, 0). Element (0, 0) alone is written.
TEST(MulConstant, TransposedPointerSourceTestedAtTheRunningIndex)
{
    const CatalogueEntry& e = vt::byName("vorxMul_mTc_64f_3x3_P");
    vt::Case<double> c(e, vt::dimsOf(e, 3, 1), 61);
    c.s.op("src").table()[1] = nullptr;
    ASSERT_EQ(c.s.call(), vorxStatusNullPointer);
    for (uint32_t n = 0; n < 9; ++n)
        EXPECT_TRUE(n ? c.untouched("dst", 0, n / 3, n % 3) : c.predicted("dst", 0, 0, 0)) << n;
}

// vorxMul_vc_32f from 11 elements: any byte alignment of src and dst gives the
// element loop's products; dst a little above src runs the ascending loop, each
// element reading the product just written.
TEST(MulConstant, RunTimeFastPath)
{
    alignas(16) unsigned char a[400], d[400];
    std::mt19937 rng(90);
    for (int j = 0; j < 96; ++j) {
        float x = vt::randomValue<float>(rng);
        std::memcpy(a + 4 * j, &x, 4);
    }
    const float v = 1.375f;
    auto at = [](const unsigned char* p, uint32_t j) {
        float x;
        std::memcpy(&x, p + 4 * j, 4);
        return x;
    };
    for (int ma = 0; ma < 16; ma += 3)
        for (int md = 0; md < 16; ++md)
            for (uint32_t len : {10u, 11u, 17u, 33u}) {
                ASSERT_EQ(vorxMul_vc_32f(reinterpret_cast<const float*>(a + ma), v, reinterpret_cast<float*>(d + md), len),
                          vorxStatusOk);
                for (uint32_t j = 0; j < len; ++j)
                    ASSERT_TRUE(sameBits(at(d + md, j), at(a + ma, j) * v)) << ma << " " << md << " " << len;
            }
    for (int shift : {1, 3, 5}) {
        float buf[48], want[48];
        for (int j = 0; j < 48; ++j) buf[j] = want[j] = 1.0f + static_cast<float>(j) / 64;
        for (int j = 0; j < 40; ++j) want[j + shift] = want[j] * v;
        ASSERT_EQ(vorxMul_vc_32f(buf, v, buf + shift, 40), vorxStatusOk);
        for (int j = 0; j < 48; ++j) EXPECT_TRUE(sameBits(buf[j], want[j])) << shift << " " << j;
    }
}

}  // namespace
