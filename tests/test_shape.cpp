// The matrix functionals and the moves beyond what the catalogue-wide tests check
// against their models: the trace's start and its Pointer-layout tests, the packed
// norm's NaNs and its blocks, the transpose's Pointer indexing and its moves in
// place, the Copy that reads through the destination's table, the rules and gaps
// of Extract, the floors and the running diagonal of LoadIdentity, and signalling
// NaNs through every mover.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "harness.h"

namespace {

using vt::Data;
using vt::Dims;
using vt::Draw;
using vt::Specimen;

std::string_view lay(const CatalogueEntry& e) { return e.layout; }
bool packed32(const CatalogueEntry& e) { return vt::isF32(e) && e.size && (lay(e) == "" || lay(e) == "L"); }

template <class T>
bool negative(T x) { return std::signbit(x); }

// Runs f(Specimen<T>&) on a specimen of e in the right type.
template <class F>
void withSpecimen(const CatalogueEntry& e, const Dims& d, unsigned seed, F f)
{
    if (vt::isF32(e)) {
        auto s = Specimen<float>::make(e, d, Draw{Data::Random, seed});
        f(s);
    } else {
        auto s = Specimen<double>::make(e, d, Draw{Data::Random, seed});
        f(s);
    }
}

template <class T>
std::string predicted(Specimen<T>& s) { return vt::verify(*vt::modelFor(*s.e), s); }

TEST(Trace, AllMinusZeroDiagonalGivesMinusZeroOnlyWhereTheSumStartsFromTheFirstElement)
{
    for (const auto* e : vt::entries("Trace", [](const CatalogueEntry&) { return true; }))
        withSpecimen(*e, vt::dimsOf(*e, 4, 2), 1, [&](auto& s) {
            using T = typename std::decay_t<decltype(s)>::Elem;
            for (uint32_t k = 0; k < s.objects(); ++k)
                for (uint32_t i = 0; i < s.d["widthHeight"]; ++i) s.op("src").set(k, i, i, T(-0.0));
            ASSERT_EQ(predicted(s), "") << e->name;
            for (uint32_t k = 0; k < s.objects(); ++k)
                EXPECT_EQ(negative(s.op("dst").get(0, 0, k)), packed32(*e)) << e->name;
            // A sum of -denorm_min, whose sign and exponent word is that of -0.0.
            const T tiny = -std::numeric_limits<T>::denorm_min();
            for (uint32_t k = 0; k < s.objects(); ++k) s.op("src").set(k, 0, 0, tiny);
            ASSERT_EQ(predicted(s), "") << e->name;
            EXPECT_EQ(s.op("dst").get(0, 0, 0), tiny) << e->name;
        });
}

// One matrix: each diagonal entry tested just before it is read; the running sum
// stands in dst at a null; a null off the diagonal is never met.
TEST(Trace, OneMatrixInPointerLayoutTestsTheDiagonalAsItGoes)
{
    for (const auto* e : vt::entries("Trace", [](const CatalogueEntry& e) { return lay(e) == "P" && !vt::isArrayCall(e); }))
        withSpecimen(*e, vt::dimsOf(*e, 4, 1), 2, [&](auto& s) {
            using T = typename std::decay_t<decltype(s)>::Elem;
            const uint32_t n = s.d["widthHeight"];
            auto before = s;
            s.op("src").table()[n] = nullptr;  // row 1, column 0
            ASSERT_EQ(predicted(s), "") << e->name;
            s.op("src").table()[2 * n + 2] = nullptr;  // the third diagonal element
            EXPECT_EQ(s.call(), vorxStatusNullPointer) << e->name;
            T a = before.op("src").get(0, 0, 0), b = before.op("src").get(0, 1, 1), partial;
            if constexpr (sizeof(T) == 4) partial = vt::f32::add(vt::f32::add(0.0f, a), b);
            else partial = vt::roundToDouble(static_cast<long double>(a) + b);
            EXPECT_TRUE(vt::sameBits(s.op("dst").get(0, 0, 0), partial)) << e->name;
        });
}

// Arrays: only the first n entries (the first row) are tested up front, also at
// count 0; the diagonal entries of later rows are followed untested.
TEST(Trace, ArraysInPointerLayoutsScanTheFirstRowOnly)
{
    for (const auto* e : vt::entries("Trace", [](const CatalogueEntry& e) { return lay(e)[0] == 'P' && vt::isArrayCall(e); }))
        for (uint32_t count : {0u, 2u}) {
            withSpecimen(*e, vt::dimsOf(*e, 3, count), 3, [&](auto& s) {
                const uint32_t n = s.d["widthHeight"];
                s.op("src").table()[n] = nullptr;  // row 1, column 0: never read, never tested
                ASSERT_EQ(predicted(s), "") << e->name;
                auto dst = s.op("dst").bytes();
                s.op("src").table()[n - 1] = nullptr;
                EXPECT_EQ(s.call(), vorxStatusNullPointer) << e->name;
                EXPECT_EQ(s.op("dst").bytes(), dst) << e->name;
                s.op("src").table()[n - 1] = s.op("src").table()[n - 2];
                s.op("src").table()[n + 1] = nullptr;  // diagonal (1, 1)
                EXPECT_EQ(vt::faults([&] { s.call(); }), count > 0) << e->name;
            });
        }
}

TEST(FrobNorm, PackedFormsGiveNaNForZeroAndInfiniteSumsWhereScalarOnesGiveZeroAndInfinity)
{
    for (const auto* e : vt::entries("FrobNorm", [](const CatalogueEntry&) { return true; }))
        for (uint32_t count : {1u, 4u})
            for (bool inf : {false, true})
                withSpecimen(*e, vt::dimsOf(*e, 3, count), 4, [&](auto& s) {
                    using T = typename std::decay_t<decltype(s)>::Elem;
                    s.op("src").fill([](uint32_t, uint32_t, uint32_t) { return T(0); });
                    if (inf)
                        for (uint32_t k = 0; k < s.objects(); ++k) s.op("src").set(k, 1, 2, std::numeric_limits<T>::infinity());
                    ASSERT_EQ(predicted(s), "") << e->name;
                    for (uint32_t k = 0; k < s.objects(); ++k) {
                        T r = s.op("dst").get(0, 0, k);
                        if (packed32(*e)) EXPECT_TRUE(std::isnan(r)) << e->name;
                        else EXPECT_TRUE(vt::sameBits(r, inf ? std::numeric_limits<T>::infinity() : T(0))) << e->name;
                    }
                });
}

// Count 5: objects 0..3 as one block, object 4 alone, by the tree of the single
// matrix; the same matrix in both places, over a few matrices, shows both ways.
TEST(FrobNorm, PackedArraysGoInBlocksOfFourAndTheRestOneByOne)
{
    using One = vorxStatus (*)(const float*, int32_t, float*);
    for (const auto* e : vt::entries("FrobNorm", [](const CatalogueEntry& e) { return packed32(e) && vt::isArrayCall(e) && e.size <= 4; })) {
        One single = e->size == 3 ? vorxFrobNorm_m_32f_3x3 : vorxFrobNorm_m_32f_4x4;
        int differ = 0;
        for (unsigned seed = 0; seed < 20; ++seed) {
            auto s = Specimen<float>::make(*e, vt::dimsOf(*e, 0, 5), Draw{Data::Random, 10 + seed});
            vt::Laid<float>& src = s.op("src");
            src.fill([&](uint32_t k, uint32_t i, uint32_t j) { return src.get(k == 4 ? 0 : k, i, j); });
            ASSERT_EQ(predicted(s), "") << e->name;
            float alone;
            single(src.addr(4, 0, 0), src.rowStride(), &alone);
            EXPECT_TRUE(vt::sameBits(alone, s.op("dst").get(0, 0, 4))) << e->name;
            differ += !vt::sameBits(s.op("dst").get(0, 0, 0), alone);
        }
        EXPECT_GT(differ, 0) << e->name << ": block and remainder never differ";
        // A null list entry stops its block before any of it is written.
        if (lay(*e) == "L") {
            auto s = Specimen<float>::make(*e, vt::dimsOf(*e, 0, 9), Draw{Data::Random, 9});
            EXPECT_EQ(vt::verify(*vt::modelFor(*e), s, vt::Null{"src", true, 6}), "");
        }
    }
}

// Run-time Pointer forms: source element (i, j) at entry i*height + j, dst element
// (j, i) at entry j*width + i, tables as long as those entries need (and the
// width*height entries that arrays scan); later moves win where entries coincide.
template <class T>
void pointerTranspose(uint32_t w, uint32_t h, bool array)
{
    const uint32_t srcEntries = std::max((h - 1) * h + w, w * h), dstEntries = std::max((w - 1) * w + h, w * h);
    std::vector<T> a(2 * srcEntries), b(2 * dstEntries, T(-1));
    std::vector<const T*> st(srcEntries);
    std::vector<T*> dt(dstEntries);
    for (uint32_t n = 0; n < srcEntries; ++n) a[2 * n] = T(n), a[2 * n + 1] = T(100 + n), st[n] = &a[2 * n];
    for (uint32_t n = 0; n < dstEntries; ++n) dt[n] = &b[2 * n];
    std::vector<T> want = b;
    for (uint32_t k = 0; k < (array ? 2u : 1u); ++k)
        for (uint32_t i = 0; i < h; ++i)
            for (uint32_t j = 0; j < w; ++j) want[2 * (j * w + i) + k] = a[2 * (i * h + j) + k];
    vorxStatus st32;
    if constexpr (sizeof(T) == 4) {
        st32 = array ? vorxTranspose_ma_32f_PS2(st.data(), 0, 4, w, h, dt.data(), 0, 4, 2)
                     : vorxTranspose_m_32f_P(st.data(), 0, w, h, dt.data(), 0);
    } else {
        st32 = array ? vorxTranspose_ma_64f_P(st.data(), 0, w, h, dt.data(), 0, 2)
                     : vorxTranspose_m_64f_P(st.data(), 0, w, h, dt.data(), 0);
    }
    EXPECT_EQ(st32, vorxStatusOk);
    EXPECT_EQ(b, want) << w << "x" << h << (array ? " array" : "");
}

TEST(Transpose, RunTimePointerFormsIndexTheirTablesByTheOtherDimension)
{
    for (auto [w, h] : {std::pair<uint32_t, uint32_t>{5, 3}, {3, 5}, {1, 4}, {4, 1}})
        for (bool array : {false, true}) {
            pointerTranspose<float>(w, h, array);
            pointerTranspose<double>(w, h, array);
        }
}

// One run-time matrix in Pointer layout tests the dst entry, then the src entry,
// of each element just before it moves.
TEST(Transpose, OneMatrixInPointerLayoutStopsAtANullWithTheElementsBeforeItMoved)
{
    float a[4] = {1, 2, 3, 4}, b[4] = {};
    const float* st[4] = {&a[0], &a[1], &a[2], &a[3]};
    float* dt[4] = {&b[0], nullptr, nullptr, &b[3]};  // source element (0, 1) goes to dst entry 2
    EXPECT_EQ(vorxTranspose_m_32f_P(st, 0, 2, 2, dt, 0), vorxStatusNullPointer);
    EXPECT_EQ(b[0], 1.0f);
    b[0] = 0;
    dt[2] = &b[2];
    st[1] = nullptr;  // now the dst entry passes and the src entry stops it
    EXPECT_EQ(vorxTranspose_m_32f_P(st, 0, 2, 2, dt, 0), vorxStatusNullPointer);
    EXPECT_EQ(b[0], 1.0f);
    EXPECT_EQ(b[2], 0.0f);
}

// dst on src: the element-by-element forms copy the upper triangle onto the lower
// one; the 4x4 tiles read everything first; the 3x3 tile form stores [2][0] (from
// [0][2]) before it reads it.
TEST(Transpose, InPlace)
{
    double m[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_EQ(vorxTranspose_m_64f_3x3(m, 24, m, 24), vorxStatusOk);
    EXPECT_EQ(std::vector<double>(m, m + 9), (std::vector<double>{0, 1, 2, 1, 4, 5, 2, 5, 8}));
    float f[16];
    for (int n = 0; n < 16; ++n) f[n] = float(n);
    ASSERT_EQ(vorxTranspose_m_32f_4x4(f, 16, f, 16), vorxStatusOk);
    for (int n = 0; n < 16; ++n) EXPECT_EQ(f[n], float(n % 4 * 4 + n / 4));
    for (int n = 0; n < 9; ++n) f[n] = float(n);
    ASSERT_EQ(vorxTranspose_m_32f_3x3(f, 12, f, 12), vorxStatusOk);
    EXPECT_EQ(std::vector<float>(f, f + 9), (std::vector<float>{0, 3, 2, 1, 4, 5, 2, 5, 8}));
}

// Vectors from Pointer-strided to Pointer-strided read through dst's table on both
// sides; the src table is tested for null and never read.
template <class T, class F>
void copyThroughDst(F copy)
{
    constexpr int32_t E = sizeof(T);
    std::vector<T> cells(12);
    for (size_t n = 0; n < cells.size(); ++n) cells[n] = T(n);
    T* dt[3] = {&cells[0], &cells[4], &cells[8]};
    const T* never[3] = {nullptr, nullptr, nullptr};
    // object k, element j: from cells[4j + k] to cells[4j + 2 + k]
    ASSERT_EQ(copy(never, 0, E, dt, 2 * E, E, 3, 2), vorxStatusOk);
    EXPECT_EQ(cells, (std::vector<T>{0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9}));
    EXPECT_EQ(copy(nullptr, 0, E, dt, 2 * E, E, 3, 2), vorxStatusNullPointer);
}

TEST(Copy, VectorsPointerToPointerReadThroughTheDestinationTable)
{
    copyThroughDst<float>(vorxCopy_va_32f_PP);
    copyThroughDst<double>(vorxCopy_va_64f_PP);
}

TEST(Extract, ChecksAsTheFamilyTableHasThem)
{
    float f[4] = {1, 2, 3, 4}, out[4];
    const float* ft[2] = {&f[0], &f[1]};
    double g[2] = {1, 2}, gout[2];
    const double* gt[2] = {&g[0], &g[1]};
    // m and mT in Pointer layout check nothing at all, the Strided twins do.
    EXPECT_EQ(vorxExtract_m_32f_P(nullptr, 0, nullptr, 0, 0), vorxStatusOk);
    EXPECT_EQ(vorxExtract_mT_64f_P(nullptr, 0, nullptr, 3, 0), vorxStatusOk);
    EXPECT_EQ(vorxExtract_m_32f_S2(nullptr, 8, 4, out, 0, 0), vorxStatusNullPointer);
    EXPECT_EQ(vorxExtract_mT_32f_S2(f, 8, 4, out, 0, 2), vorxStatusBadSize);
    // The 64f vector in Pointer layout checks nothing; its 32f twin checks both.
    EXPECT_EQ(vorxExtract_v_64f_P(nullptr, 0, nullptr, 0), vorxStatusOk);
    EXPECT_EQ(vorxExtract_v_64f_P(gt, 0, gout, 2), vorxStatusOk);
    EXPECT_EQ(gout[1], 2.0);
    EXPECT_EQ(vorxExtract_v_32f_P(nullptr, 0, out, 2), vorxStatusNullPointer);
    EXPECT_EQ(vorxExtract_v_32f_P(ft, 0, out, 0), vorxStatusBadSize);
    // Arrays: a zero count is a bad size, after the pointers.
    EXPECT_EQ(vorxExtract_va_32f_S2(f, 8, 4, out, 2, 0), vorxStatusBadSize);
    EXPECT_EQ(vorxExtract_maT_64f_PS2(gt, 0, 8, nullptr, 1, 1, 0), vorxStatusNullPointer);
}

// mT _P reads the stored matrix's entries as they stand, whatever srcByteShift says;
// maT _PS2 gives what ma _PS2 gives.
TEST(Extract, TransposedPointerForms)
{
    for (const auto* e : vt::entries("Extract", [](const CatalogueEntry& e) { return std::string_view(e.code) == "mT" && lay(e) == "P"; })) {
        Dims d = vt::dimsOf(*e, 3, 1);
        d.set("height", 2);
        withSpecimen(*e, d, 5, [&](auto& s) {
            ASSERT_EQ(predicted(s), "") << e->name;
            auto first = s.op("dst").bytes();
            s.pack.srcByteShift += 12;
            s.call();
            EXPECT_EQ(s.op("dst").bytes(), first) << e->name;
        });
    }
    for (const char* type : {"32f", "64f"}) {
        const auto& ma = vt::byName(std::string("vorxExtract_ma_") + type + "_PS2");
        const auto& maT = vt::byName(std::string("vorxExtract_maT_") + type + "_PS2");
        Dims d = vt::dimsOf(ma, 3, 2);
        d.set("height", 2);
        withSpecimen(ma, d, 6, [&](auto& s) {
            ASSERT_EQ(s.call(), vorxStatusOk);
            auto once = s.op("dst").bytes();
            EXPECT_EQ(vt::call(maT, s.pack), vorxStatusOk);
            EXPECT_EQ(s.op("dst").bytes(), once) << type;
        });
    }
}

// Zero strides take the dense ones; the diagonal counter runs on into object 1.
TEST(LoadIdentity, ZeroStridesAndTheRunningDiagonal)
{
    float f[2 * 9 + 6];
    std::fill(std::begin(f), std::end(f), 7.0f);
    ASSERT_EQ(vorxLoadIdentity_ma_32f_S(f, 36, 0, 0, 3, 3, 2), vorxStatusOk);
    // Object 1's 1.0s at columns 3, 4, 5: the first two under the next row's zeros,
    // the last one past the object.
    std::vector<float> want(std::size(f), 0.0f);
    want[0] = want[4] = want[8] = want[20] = 1.0f;
    want[18] = want[19] = want[21] = want[22] = want[23] = 7.0f;
    EXPECT_EQ(std::vector<float>(f, std::end(f)), want);
    double g[2 * 4];
    double* gl[2] = {&g[0], &g[4]};
    ASSERT_EQ(vorxLoadIdentity_ma_64f_L(gl, 0, 0, 8, 2, 2, 1), vorxStatusOk);
    EXPECT_EQ(std::vector<double>(g, g + 4), (std::vector<double>{1, 0, 0, 1}));
    EXPECT_EQ(vorxLoadIdentity_ma_64f_S(g, 0, 16, 8, 2, 2, 0), vorxStatusBadSize);
    EXPECT_EQ(vorxLoadIdentity_ma_64f_S(nullptr, 0, 16, 8, 2, 2, 0), vorxStatusNullPointer);
}

// The odd floors: 64f List keeps an element floor of 4, 64f Pointer-strided turns an
// object stride below 8 into 4. Width and height are signed.
TEST(LoadIdentity, OddFloorsAndSignedSizes)
{
    alignas(8) unsigned char m[32];
    std::memset(m, 0x55, sizeof m);
    double* list[1] = {reinterpret_cast<double*>(m)};
    ASSERT_EQ(vorxLoadIdentity_ma_64f_L(list, 0, 0, 0, 2, 2, 1), vorxStatusOk);
    // row 0 at byte 0 (zeros at 0 and 4, the 1.0 at 0), row 1 at byte 16 (the 1.0 at 20)
    double one = 1.0;
    EXPECT_EQ(std::memcmp(m, &one, 8), 0);
    EXPECT_EQ(std::memcmp(m + 20, &one, 8), 0);
    EXPECT_EQ(m[16], 0) << "row 1's first zero";
    EXPECT_EQ(m[28], 0x55);

    // 1x1 matrices, object stride 6: object 1 lies 4 bytes on, its 1.0 behind entry 1.
    alignas(8) unsigned char c[32];
    std::memset(c, 0x55, sizeof c);
    double* table[2] = {reinterpret_cast<double*>(c), reinterpret_cast<double*>(c + 16)};
    ASSERT_EQ(vorxLoadIdentity_ma_64f_P(table, 0, 6, 1, 1, 2), vorxStatusOk);
    EXPECT_EQ(std::memcmp(c + 20, &one, 8), 0);

    float f[4] = {7, 7, 7, 7};
    const uint32_t minus1 = 0xFFFFFFFFu;
    EXPECT_EQ(vorxLoadIdentity_ma_32f_S(f, 0, 16, 4, 2, minus1, 1), vorxStatusOk);
    EXPECT_EQ(std::vector<float>(f, f + 4), (std::vector<float>{7, 7, 7, 7})) << "height -1: nothing";
    // width -1: no zeros; the row floor 4*width wraps to -4 bytes, so every 1.0 of the
    // three rows lands on element 0.
    EXPECT_EQ(vorxLoadIdentity_ma_32f_S(f, 0, 16, 4, minus1, 3, 1), vorxStatusOk);
    EXPECT_EQ(std::vector<float>(f, f + 4), (std::vector<float>{1, 7, 7, 7}));
}

// Every mover of both types with signalling NaNs in its source: 64f ones come out
// quiet with their payloads, 32f ones unchanged. Elements are written and read as
// bytes: a float returned by value on i386 passes the x87 unit, which quietens it.
TEST(Moves, SignallingNaNsComeOutQuietIn64fAndUnchangedIn32f)
{
    int signalling32 = 0, quiet64 = 0;
    for (std::string_view family : {"Transpose", "Copy", "Extract"})
        for (const auto* e : vt::entries(family, [](const CatalogueEntry&) { return true; }))
            withSpecimen(*e, vt::dimsOf(*e, 3, 2), 7, [&](auto& s) {
                using T = typename std::decay_t<decltype(s)>::Elem;
                using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
                constexpr Bits exponent = sizeof(T) == 4 ? Bits(0x7f800000u) : Bits(0x7ff0000000000000ull);
                constexpr Bits quietBit = sizeof(T) == 4 ? Bits(0x00400000u) : Bits(1ull << 51);
                constexpr Bits mantissa = sizeof(T) == 4 ? Bits(0x007fffffu) : Bits(0x000fffffffffffffull);
                vt::Laid<T>& src = s.op("src");
                for (uint32_t k = 0; k < src.count(); ++k)
                    for (uint32_t i = 0; i < src.rows(); ++i)
                        for (uint32_t j = 0; j < src.cols(); ++j) {
                            Bits b = exponent + 0x123 + k * 16 + i * 4 + j;
                            std::memcpy(src.addr(k, i, j), &b, sizeof b);
                        }
                ASSERT_EQ(predicted(s), "") << e->name;
                if (family == "Copy" && std::string_view(e->code) == "va" && lay(*e) == "PP") return;
                auto bytes = s.op("dst").bytes();
                for (size_t at = 0; at + sizeof(T) <= bytes.size(); at += sizeof(T)) {
                    Bits b;
                    std::memcpy(&b, &bytes[at], sizeof b);
                    if ((b & exponent) != exponent || !(b & mantissa)) continue;  // not a NaN
                    if (sizeof(T) == 4) {
                        signalling32 += !(b & quietBit);
                    } else {
                        quiet64 += (b & quietBit) != 0;
                        EXPECT_TRUE(b & quietBit) << e->name;
                    }
                }
            });
    EXPECT_GT(signalling32, 500);
    EXPECT_GT(quiet64, 500);
}

}  // namespace
