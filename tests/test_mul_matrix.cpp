// Matrix by matrix products beyond what the catalogue-wide tests check against the
// family's model: the checks table row by row, the dst entries a Pointer scan
// tests, entries tested as they are reached, the closed forms that test none, the
// sign of a zero sum, the Contiguous mmT bounds, partial sums written as they go.
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "harness.h"

namespace {

using vt::byName;
using vt::Case;

enum Sz { W1, H1, W2, H2 };
struct Row {
    const char* code;
    Sz third, ca, cb;
};
// The checks table as the callers see it: the third size tested for zero, the two
// sizes that must be equal.
const Row kTable[] = {
    {"mm", W2, W1, H2},    {"mmT", H2, W1, W2},   {"mTm", W2, H1, H2},   {"mTmT", H2, H1, W2},
    {"mam", H2, H2, W1},   {"mamT", H2, W1, W2},  {"maTm", W2, H1, H2},  {"maTmT", H2, H1, W2},
    {"mma", H2, H1, W2},   {"mmaT", H2, W1, W2},  {"mTma", W2, H1, H2},  {"mTmaT", H2, H1, W2},
    {"mama", H2, H1, W2},  {"mamaT", H2, W1, W2}, {"maTma", W2, H1, H2}, {"maTmaT", H2, H1, W2},
};

const CatalogueEntry& entry(const std::string& name) { return byName(name); }

// Run-time Contiguous forms on large buffers (8x8 elements a matrix, any size up
// to 8 stays inside), for statuses that depend on the sizes only.
struct Big {
    float m[3][4][64];
    ArgPack args{};
    Big()
    {
        for (int n = 0; n < 3; ++n)
            for (int o = 0; o < 4; ++o)
                for (int e = 0; e < 64; ++e) m[n][o][e] = 1.0f + static_cast<float>(e % 7) / 8;
        const char* names[] = {"src1", "src2", "dst"};
        for (int n = 0; n < 3; ++n) {
            *static_cast<void**>(argField(args, names[n])) = m[n][0];
            *static_cast<int32_t*>(argField(args, std::string(names[n]) + "RowStride")) = 32;
            *static_cast<int32_t*>(argField(args, std::string(names[n]) + "ObjectStride")) = 256;
        }
        args.count = 1;
    }
    vorxStatus run(const CatalogueEntry& e, uint32_t w1, uint32_t h1, uint32_t w2, uint32_t h2)
    {
        args.src1Width = w1;
        args.src1Height = h1;
        args.src2Width = w2;
        args.src2Height = h2;
        return vt::call(e, args);
    }
};


// Every row of the checks table: which zero sizes are refused (the size a code
// does not test may be zero and the call returns 0), and which pair must agree.
TEST(MulMatrix, ChecksTableRowByRow)
{
    for (const auto& row : kTable) {
        const CatalogueEntry& e = entry(std::string("vorxMul_") + row.code + "_32f");
        for (int z = 0; z < 4; ++z) {
            uint32_t v[4] = {3, 3, 3, 3};
            v[z] = 0;
            bool tested = z == W1 || z == H1 || z == row.third;
            Big b;
            vorxStatus want = tested ? vorxStatusBadSize : vorxStatusOk;
            if (!tested && (z == row.ca || z == row.cb)) want = vorxStatusBadSize;  // 0 != 3
            EXPECT_EQ(b.run(e, v[0], v[1], v[2], v[3]), want) << row.code << " size " << z << " zero";
        }
        for (int a = 0; a < 4; ++a)
            for (int c = a + 1; c < 4; ++c) {
                uint32_t v[4] = {3, 3, 3, 3};
                v[a] = 4;
                v[c] = 5;
                bool refused = (a == row.ca || a == row.cb || c == row.ca || c == row.cb);
                Big b;
                EXPECT_EQ(b.run(e, v[0], v[1], v[2], v[3]), refused ? vorxStatusBadSize : vorxStatusOk)
                    << row.code << " sizes " << a << "," << c;
            }
    }
    // The three odd rows: mma and mama never compare src1Width with src2Height, and
    // the inner sum runs over src2Height; mam with src2Width 0 writes nothing.
    for (const char* code : {"vorxMul_mma_32f", "vorxMul_mama_32f"}) {
        Big b;
        EXPECT_EQ(b.run(entry(code), 3, 2, 2, 5), vorxStatusOk) << code;
        // row 0, column 0: five products of src1 row 0 and src2 column 0
        float s = 0;
        for (int n = 0; n < 5; ++n) s = s + b.m[0][0][n] * b.m[1][0][8 * n];
        EXPECT_TRUE(vt::sameBits(b.m[2][0][0], s)) << code;
        Big g;
        EXPECT_EQ(g.run(entry(code), 3, 2, 4, 3), vorxStatusBadSize) << code << " conformable, refused";
    }
    Big b;
    auto d = b.m[2][0][0];
    EXPECT_EQ(b.run(entry("vorxMul_mam_32f"), 3, 3, 0, 3), vorxStatusOk);
    EXPECT_TRUE(vt::sameBits(b.m[2][0][0], d));
    // Null pointers come before sizes.
    Big n;
    n.args.dst = nullptr;
    EXPECT_EQ(n.run(entry("vorxMul_mm_32f"), 0, 0, 0, 0), vorxStatusNullPointer);
}

// A Pointer-array scan tests as many dst entries as the square of the inner
// dimension, whatever the result's size: here more than the result has.
TEST(MulMatrix, PointerScanCountsTheInnerSquareOfDst)
{
    struct Probe {
        const char* name;
        uint32_t w1, h1, w2, h2, scanned, result;
    } probes[] = {
        {"vorxMul_mam_32f_P", 3, 1, 2, 3, 9, 2},   {"vorxMul_mma_64f_P", 3, 1, 1, 3, 9, 1},
        {"vorxMul_mamT_32f_PS2", 3, 1, 3, 3, 9, 3}, {"vorxMul_maTm_64f_PS2", 3, 3, 1, 3, 9, 3},
    };
    for (const auto& p : probes) {
        std::vector<double> mem(64, 1.0);
        std::vector<const double*> src(16, mem.data());
        std::vector<double*> dst(p.scanned, mem.data() + 32);
        for (uint32_t bad : {p.result, p.scanned - 1}) {
            ArgPack a{};
            a.src1 = a.src2 = src.data();
            dst[bad] = nullptr;
            a.dst = dst.data();
            a.src1ObjectStride = a.src2ObjectStride = a.dstObjectStride = 8;
            a.src1Width = p.w1, a.src1Height = p.h1, a.src2Width = p.w2, a.src2Height = p.h2;
            a.count = 0;
            EXPECT_EQ(vt::call(entry(p.name), a), vorxStatusNullPointer) << p.name << " entry " << bad;
            dst[bad] = mem.data() + 40;
            a.count = 1;
            EXPECT_EQ(vt::call(entry(p.name), a), vorxStatusOk) << p.name;
        }
    }
}

// Single-object Pointer forms test each entry as it is reached: the dst entry,
// then per k the src1 entry it reads and the src2 entry; on a null the finished
// elements stand and the current one holds its partial sum of `terms` products.
template <class T>
void checkReached(const char* name, const char* op, uint32_t bad, uint32_t at, uint32_t terms)
{
    const CatalogueEntry& e = byName(name);
    Case<T> c(e, vt::dimsOf(e, 3, 1), 40);
    c.s.op(op).table()[bad] = nullptr;
    EXPECT_EQ(c.s.call(), vorxStatusNullPointer) << name;
    for (uint32_t n = 0; n < 9; ++n) {
        uint32_t i = n / 3, j = n % 3;
        if (n < at) EXPECT_TRUE(c.predicted("dst", 0, i, j)) << name << " element " << n;
        if (n > at) EXPECT_TRUE(c.untouched("dst", 0, i, j)) << name << " element " << n;
        if (n != at || std::string_view(op) == "dst") continue;
        T s = 0;  // from +0.0, each partial sum stored
        for (uint32_t k = 0; k < terms; ++k) s = vt::plusProduct(s, c.before.in("src1", 0, i, k), c.before.in("src2", 0, k, j));
        EXPECT_TRUE(vt::sameBits(c.s.op("dst").get(0, i, j), s)) << name << " partial sum";
    }
}

TEST(MulMatrix, SingleObjectPointerEntriesAsReached)
{
    checkReached<float>("vorxMul_mm_32f_3x3_P", "dst", 4, 4, 0);   // dst (1,1)
    checkReached<float>("vorxMul_mm_32f_P", "src1", 5, 3, 2);      // src1 (1,2) at (1,0), k 2
    checkReached<double>("vorxMul_mm_64f_P", "src2", 3, 0, 1);     // src2 (1,0) at (0,0), k 1
    // A transposed src1 tests the entry it reads: s1(1,0) is entry 0*3+1.
    checkReached<double>("vorxMul_mTm_64f_3x3_P", "src1", 1, 3, 0);
    checkReached<float>("vorxMul_mTmT_32f_P", "src2", 1, 0, 1);    // s2(1,0) is entry 0*3+1
}

// The closed forms that test no entry: a null entry at count 0 is not looked at,
// where the other codes' scan finds it.
TEST(MulMatrix, ClosedFormsTestNoEntries)
{
    for (const char* code : {"mam", "mamT", "maTm", "maTmT"})
        for (const char* lay : {"P", "PS2"}) {
            const CatalogueEntry& e = byName(std::string("vorxMul_") + code + "_32f_3x3_" + lay);
            Case<float> c(e, vt::dimsOf(e, 3, 0), 50);
            c.s.op("src1").table()[4] = nullptr;
            c.s.op("dst").table()[8] = nullptr;
            bool closed = std::string_view(code) != "maTmT";
            EXPECT_EQ(c.s.call(), closed ? vorxStatusOk : vorxStatusNullPointer) << e.name;
        }
}

// The packed forms begin the sum with the first product, the scalar forms with +0.0.
TEST(MulMatrix, SignOfAZeroSum)
{
    for (unsigned n = 3; n <= 6; ++n)
        for (const char* lay : {"", "S2"}) {
            std::string name = "vorxMul_mm_32f_" + std::to_string(n) + "x" + std::to_string(n);
            const CatalogueEntry& e = byName(*lay ? name + "_" + lay : name);
            Case<float> c(e, vt::dimsOf(e, n, 1), 70);
            c.s.op("src1").fill([](uint32_t, uint32_t, uint32_t) { return 0.0f; });
            c.s.op("src2").fill([](uint32_t, uint32_t, uint32_t) { return -1.5f; });
            ASSERT_EQ(c.s.call(), vorxStatusOk);
            bool packed = !*lay;
            for (uint32_t i = 0; i < n; ++i)
                for (uint32_t j = 0; j < n; ++j)
                    if (packed || n != 6)  // 6x6 S2 mm is a closed form, free to choose
                        EXPECT_EQ(std::signbit(c.s.op("dst").get(0, i, j)), packed) << e.name << " " << i << j;
        }
    const CatalogueEntry& g = byName("vorxMul_mama_32f_L");
    Case<float> c(g, vt::dimsOf(g, 3, 2), 71);
    c.s.op("src1").fill([](uint32_t, uint32_t, uint32_t) { return -0.0f; });
    ASSERT_EQ(c.s.call(), vorxStatusOk);
    EXPECT_FALSE(std::signbit(c.s.op("dst").get(1, 1, 2)));
}

// Every 64f element starts from +0.0, also where the sum is held in a register and
// stored once: all products -0.0 give +0.0, and a sum of -denorm_min (whose sign
// and exponent word is that of -0.0) stays what it is. The same for matrix by
// vector, and for its 32f sums outside the packed layouts, which run by columns.
template <class T>
void zeroAndTinySums(const char* code, const char* lay)
{
    const T tiny = -std::numeric_limits<T>::denorm_min();
    for (unsigned n : {0u, 3u, 4u, 5u, 6u}) {
        std::string name = std::string("vorxMul_") + code + (sizeof(T) == 4 ? "_32f" : "_64f");
        if (n) name += "_" + std::to_string(n) + "x" + std::to_string(n);
        const CatalogueEntry& e = byName(name + lay);
        Case<T> c(e, vt::dimsOf(e, n ? n : 4, 2), 72);
        c.s.op("src1").fill([](uint32_t, uint32_t, uint32_t) { return T(0); });
        c.s.op("src2").fill([](uint32_t, uint32_t, uint32_t) { return T(-1.5); });
        ASSERT_EQ(c.s.call(), vorxStatusOk);
        const auto& dst = c.s.op("dst");
        uint32_t last = dst.count() - 1, i = dst.rows() - 1, j = dst.cols() - 1;
        EXPECT_FALSE(std::signbit(dst.get(last, i, j))) << e.name;
        c.s.op("src1").fill([&](uint32_t, uint32_t, uint32_t j) { return j ? T(0) : tiny; });
        c.s.op("src2").fill([](uint32_t, uint32_t, uint32_t) { return T(1); });
        ASSERT_EQ(c.s.call(), vorxStatusOk);
        EXPECT_EQ(dst.get(last, i, j), tiny) << e.name;
    }
}
TEST(MulMatrix, SignOfAZeroSumWhereTheSumIsHeld)
{
    for (const char* code : {"mm", "mama", "mamT", "mv", "mav"})
        for (const char* lay : {"", "_S2"}) zeroAndTinySums<double>(code, lay);
    for (const char* code : {"mv", "mav", "mva"}) zeroAndTinySums<float>(code, "_S2");
}

// The Contiguous run-time mmT runs C over src2Height and K over src2Width; the
// Strided one over src2Width and src2Height.
TEST(MulMatrix, ContiguousTransposedBoundsDifferFromStrided)
{
    float a[8 * 8], b[8 * 8], d[8 * 8], e[8 * 8];
    std::mt19937 rng(80);
    for (int n = 0; n < 64; ++n) {
        a[n] = vt::randomValue<float>(rng);
        b[n] = vt::randomValue<float>(rng);
        d[n] = e[n] = 7.0f;
    }
    // src1 2x5, src2 stored as 7 rows of 5 (src2Width 5, src2Height 7).
    ASSERT_EQ(vorxMul_mmT_32f(a, 32, 5, 2, b, 32, 5, 7, d, 32), vorxStatusOk);
    ASSERT_EQ(vorxMul_mmT_32f_S2(a, 32, 4, 5, 2, b, 32, 4, 5, 7, e, 32, 4), vorxStatusOk);
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 8; ++j) {
            auto dot = [&](int K) {
                float s = 0;
                for (int k = 0; k < K; ++k) s = s + a[i * 8 + k] * b[j * 8 + k];
                return s;
            };
            EXPECT_TRUE(vt::sameBits(d[i * 8 + j], j < 7 ? dot(5) : 7.0f)) << i << j;
            EXPECT_TRUE(vt::sameBits(e[i * 8 + j], j < 5 ? dot(7) : 7.0f)) << i << j;
        }
}

}  // namespace

namespace {

// The scalar forms set each element to +0.0 and write every partial sum at once:
// with dst = src1 a later element reads what the earlier ones left. The same walk
// done here on a copy gives the bits the library must give.
TEST(MulMatrix, ScalarFormsWritePartialSumsAsTheyGo)
{
    double a[9], b[9];
    float af[9], bf[9];
    std::mt19937 rng(90);
    for (int n = 0; n < 9; ++n) {
        a[n] = vt::randomValue<double>(rng);
        b[n] = vt::randomValue<double>(rng);
        af[n] = vt::randomValue<float>(rng);
        bf[n] = vt::randomValue<float>(rng);
    }
    double wantD[9];
    float wantF[9];
    std::memcpy(wantD, a, sizeof a);
    std::memcpy(wantF, af, sizeof af);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            long double s = 0;
            float f = 0;
            wantD[i * 3 + j] = 0;
            wantF[i * 3 + j] = 0;
            for (int k = 0; k < 3; ++k) {
                s = s + static_cast<long double>(wantD[i * 3 + k]) * b[k * 3 + j];
                wantD[i * 3 + j] = vt::roundToDouble(s);
                volatile float p = wantF[i * 3 + k] * bf[k * 3 + j];
                volatile float q = f + p;
                f = q;
                wantF[i * 3 + j] = f;
            }
        }
    ASSERT_EQ(vorxMul_mm_64f(a, 24, 3, 3, b, 24, 3, 3, a, 24), vorxStatusOk);
    ASSERT_EQ(vorxMul_mm_32f_3x3_S2(af, 12, 4, bf, 12, 4, af, 12, 4), vorxStatusOk);
    for (int n = 0; n < 9; ++n) {
        EXPECT_TRUE(vt::sameBits(a[n], wantD[n])) << n;
        EXPECT_TRUE(vt::sameBits(af[n], wantF[n])) << n;
    }
}

// The closed List-strided 3x3 forms follow a null list entry; their checking
// twins return -8 at it.
TEST(MulMatrixDeathTest, ClosedListFormsFollowANullEntry)
{
    float m[64] = {};
    const float* src1[2] = {m, nullptr};
    float* dst[2] = {m + 16, m + 32};
    EXPECT_EQ(vorxMul_mama_32f_3x3_LS2(src1, 0, 12, 4, src1, 0, 12, 4, dst, 0, 12, 4, 2),
              vorxStatusNullPointer);
    EXPECT_DEATH(vorxMul_mam_32f_3x3_LS2(src1, 0, 12, 4, m, 12, 4, dst, 0, 12, 4, 2), "");
}

}  // namespace
