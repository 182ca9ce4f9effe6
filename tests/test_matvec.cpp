// Matrix by vector and gaxpy beyond what the catalogue-wide tests check against
// the models: trees that differ from the left-to-right sums, the short and long
// scans of non-square transposed calls, entries tested as they are reached (and the
// transposed matrix's running index), gaxpy's dst on src3, dst on the vector, and
// aligned operands.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "harness.h"

namespace {

using vt::byName;
using vt::Case;
using vt::sameBits;

const float kTiny = std::ldexp(1.0f, -24);

// x = (1, 2^-24, -1, 2^-24, 0) against rows of ones: left to right from +0.0 gives
// 2^-24, the plain 4x4 tree (p0+p2)+(p1+p3) and the plain 5x5 row 4 give 2^-23.
TEST(MatVec, TreesDifferFromLeftToRightSums)
{
    float m[36], x[6] = {1, kTiny, -1, kTiny, 0, 0}, y[6] = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, d[6], e[6];
    for (float& a : m) a = 1;
    auto all = [&](const float* r, int n, float want) {
        for (int i = 0; i < n; ++i) EXPECT_TRUE(sameBits(r[i], want)) << i << " " << r[i];
    };
    ASSERT_EQ(vorxMul_mv_32f_4x4(m, 16, x, d), vorxStatusOk);
    all(d, 4, 2 * kTiny);
    ASSERT_EQ(vorxMul_mv_32f_4x4_S2(m, 16, 4, x, 4, e, 4), vorxStatusOk);
    all(e, 4, kTiny);
    ASSERT_EQ(vorxGaxpy_v_32f_4x4(m, 16, x, y, d), vorxStatusOk);  // the product, then + y
    all(d, 4, 0.5f + 2 * kTiny);
    ASSERT_EQ(vorxGaxpy_v_32f_4x4_S2(m, 16, 4, x, 4, y, 4, d, 4), vorxStatusOk);
    all(d, 4, 0.5f + kTiny);
    ASSERT_EQ(vorxMul_mv_32f_5x5(m, 20, x, d), vorxStatusOk);
    all(d, 4, kTiny);
    EXPECT_TRUE(sameBits(d[4], 2 * kTiny));  // row 4 has a tree of its own
    ASSERT_EQ(vorxMul_mTv_32f_5x5(m, 20, x, d), vorxStatusOk);
    all(d, 5, kTiny);
    // Products all -0.0: the trees begin with a product, the element loops with +0.0.
    float z[6] = {-0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f};
    ASSERT_EQ(vorxMul_mv_32f_6x6(m, 24, z, d), vorxStatusOk);
    all(d, 6, -0.0f);
    ASSERT_EQ(vorxMul_mv_32f_6x6_S2(m, 24, 4, z, 4, e, 4), vorxStatusOk);
    all(e, 6, 0.0f);
}

// A transposed Pointer array call with src1Width 2, src1Height 3 reads 2 elements of
// src2 and writes 3 of dst, but its scan tests 3 src2 entries and 2 dst entries.
TEST(MatVec, NonSquareTransposedScansAreShortOrLong)
{
    float mem[64] = {};
    const float* s1[6] = {mem, mem + 1, mem + 2, mem + 3, mem + 4, mem + 5};
    const float* s2[3] = {mem + 8, mem + 9, mem + 10};
    float* d[3] = {mem + 16, mem + 20, mem + 24};
    auto call = [&](uint32_t len, uint32_t count) {
        return vorxMul_mTva_32f_P(s1, 0, 2, 3, s2, 0, len, d, 0, count);
    };
    s2[2] = nullptr;  // never read, tested all the same
    EXPECT_EQ(call(3, 0), vorxStatusNullPointer);
    EXPECT_EQ(call(2, 0), vorxStatusBadSize);  // sizes before tables
    s2[2] = mem + 10;
    d[2] = nullptr;  // written, never tested
    EXPECT_EQ(call(3, 0), vorxStatusOk);
    EXPECT_EQ(vorxMul_mva_32f_P(s1, 0, 2, 3, s2, 0, 2, d, 0, 0), vorxStatusNullPointer);
    d[2] = mem + 24;
    mem[0] = mem[3] = 2, mem[8] = 3, mem[9] = 5;  // m(0,0), m(0,1) stored at (0,0), (1,0)
    ASSERT_EQ(call(3, 1), vorxStatusOk);
    EXPECT_EQ(mem[16], 2.0f * 3 + 2.0f * 5);
}

// The partial sum a single Pointer call leaves at a null source entry: row `row`
// holds `terms` products from +0.0, the rows before it are complete, the rest untouched.
template <class T>
void partial(const char* name, const char* op, uint32_t entry, uint32_t row, uint32_t terms)
{
    const CatalogueEntry& e = byName(name);
    Case<T> c(e, vt::dimsOf(e, 3, 1), 60);
    c.s.op(op).table()[entry] = nullptr;
    ASSERT_EQ(c.s.call(), vorxStatusNullPointer) << name;
    T s = 0;
    for (uint32_t k = 0; k < terms; ++k) s = vt::plusProduct(s, c.before.in("src1", 0, row, k), c.before.in("src2", 0, 0, k));
    for (uint32_t i = 0; i < 3; ++i)
        EXPECT_TRUE(i < row ? c.predicted("dst", 0, 0, i) : i > row ? c.untouched("dst", 0, 0, i)
                                                                   : sameBits(c.s.op("dst").get(0, 0, i), s))
            << name << " element " << i;
}

TEST(MatVec, SinglePointerCallsTestEntriesAsReached)
{
    partial<float>("vorxMul_mv_32f_P", "src2", 2, 0, 2);
    partial<double>("vorxMul_mv_64f_3x3_P", "src1", 4, 1, 1);
    partial<double>("vorxGaxpy_v_64f_P", "src2", 1, 0, 1);  // src3 is added after the sum
    // A transposed matrix is tested at the running index i*3 + k: entry 1 at (0, 1),
    // though it is read at (1, 0).
    partial<float>("vorxMul_mTv_32f_3x3_P", "src1", 1, 0, 1);
}

// dst on src3: the element loops set dst[i] to +0.0 first and so add the dot part to
// itself; the packed forms read src3 whole first. Integer data keeps every sum exact.
TEST(Gaxpy, DstOnSrc3)
{
    int checked = 0;
    for (const auto* e : vt::entries("Gaxpy", [](const CatalogueEntry&) { return true; })) {
        auto run = [&](auto zero) {
            using T = decltype(zero);
            vt::Draw draw{vt::Data::Random, 70};
            draw.aliasDst = "src3";
            auto s = vt::Specimen<T>::make(*e, vt::dimsOf(*e, 3, 2), draw);
            std::mt19937 rng(71);
            for (const char* op : {"src1", "src2", "src3"})
                s.op(op).fill([&](uint32_t, uint32_t, uint32_t) { return static_cast<T>(int(rng() % 9) - 4); });
            const auto before = s;
            ASSERT_EQ(s.call(), vorxStatusOk) << e->name;
            std::string_view l = e->layout;
            bool packed = vt::isF32(*e) && e->size && (l == "" || l == "L");
            for (uint32_t k = 0; k < s.objects(); ++k)
                for (uint32_t i = 0; i < s.d["height"]; ++i) {
                    T dot = 0;
                    for (uint32_t n = 0; n < s.d["width"]; ++n)
                        dot += before.in("src1", k, i, n) * before.in("src2", k, 0, n);
                    T want = packed ? dot + before.in("src3", k, 0, i) : 2 * dot;
                    ASSERT_EQ(s.op("src3").get(k, 0, i), want) << e->name << " " << k << " " << i;
                }
            ++checked;
        };
        if (vt::isF32(*e)) run(0.0f); else run(0.0);
    }
    EXPECT_EQ(checked, 90);
}

// 64f dst on the vector: every partial sum is stored as it arises and read back as
// an element of the vector; the sums are stored once only where dst lies apart. Two
// objects of a matrix array against the one vector, dst on the vector and past it.
TEST(MatVec, DstOnTheVectorReadsThePartialSums)
{
    std::mt19937 rng(95);
    double m[32], x[8], want[8];
    for (double& v : m) v = vt::randomValue<double>(rng);
    for (double& v : x) v = vt::randomValue<double>(rng);
    std::memcpy(want, x, sizeof x);
    for (int k = 0; k < 2; ++k)
        for (int i = 0; i < 4; ++i) {
            long double s = 0;
            want[4 * k + i] = 0;
            for (int n = 0; n < 4; ++n) {
                s = s + static_cast<long double>(m[16 * k + 4 * i + n]) * want[n];
                want[4 * k + i] = vt::roundToDouble(s);
            }
        }
    ASSERT_EQ(vorxMul_mav_64f_4x4(m, 128, 32, x, x, 32, 2), vorxStatusOk);
    for (int n = 0; n < 8; ++n) EXPECT_TRUE(sameBits(x[n], want[n])) << n;
}

// Every operand on 16 bytes (pointers, strides, list entries): the forms with an
// alignment branch take their aligned moves, and all give the model's results.
TEST(MatVec, AlignedOperands)
{
    unsigned seed = 80;
    for (const auto& e : kCatalogue) {
        std::string_view f = e.family, l = e.layout, code = e.code;
        bool ours = f == "Gaxpy" || (f == "Mul" && (code.find('v') != code.npos || code.back() == 'c'));
        if (!ours || !vt::isF32(e) || !e.size || !(l == "" || l == "L")) continue;
        vt::Draw draw{vt::Data::Random, seed++};
        for (unsigned n = 0; n < e.operandCount; ++n) draw.options[e.operands[n].name].align16 = true;
        auto s = vt::Specimen<float>::make(e, vt::dimsOf(e, e.size, 3), draw);
        for (uint32_t k = 0; k < s.op("dst").count(); ++k)
            ASSERT_EQ(reinterpret_cast<uintptr_t>(s.op("dst").addr(k, 0, 0)) % 16, 0u) << e.name;
        EXPECT_EQ(vt::verify(*vt::modelFor(e), s), "");
    }
}

}  // namespace
