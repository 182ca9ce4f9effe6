// Matrix by matrix products: every function against a reference that sums in the
// order of its precision regime, bit for bit, in every layout with guarded outputs;
// then the checks table, the table and list tests, the in-place forms, the sign of
// a zero sum, and the Contiguous mmT bounds.
#include <gtest/gtest.h>

#include <array>

#include "fixture.h"

namespace {

using vt::Laid;
using vt::Lay;

bool isMatMul(const CatalogueEntry& e)
{
    auto c = vt::splitCodes(e.code);
    return c.size() == 2 && c[0][0] == 'm' && c[1][0] == 'm';
}

// The checks table of the family, as the callers see it: the third size tested for
// zero, the two sizes that must be equal, the dst entries a Pointer-array scan tests.
enum Sz { W1, H1, W2, H2 };
struct Row {
    const char* code;
    Sz third, ca, cb, da, db;
};
const Row kTable[] = {
    {"mm", W2, W1, H2, W1, H2},     {"mmT", H2, W1, W2, W1, W2},    {"mTm", W2, H1, H2, H1, H2},
    {"mTmT", H2, H1, W2, H1, W2},   {"mam", H2, H2, W1, W1, H2},    {"mamT", H2, W1, W2, W1, W2},
    {"maTm", W2, H1, H2, H1, H2},   {"maTmT", H2, H1, W2, H1, W2},  {"mma", H2, H1, W2, W1, H2},
    {"mmaT", H2, W1, W2, W1, W2},   {"mTma", W2, H1, H2, H1, H2},   {"mTmaT", H2, H1, W2, H1, W2},
    {"mama", H2, H1, W2, W1, H2},   {"mamaT", H2, W1, W2, W1, W2},  {"maTma", W2, H1, H2, H1, H2},
    {"maTmaT", H2, H1, W2, H1, W2},
};
const Row& rowOf(std::string_view code)
{
    for (const auto& r : kTable)
        if (code == r.code) return r;
    return kTable[0];
}

bool is(const CatalogueEntry& e, std::string_view t, unsigned n, std::string_view lay)
{
    return t == e.type && n == e.size && lay == e.layout;
}

// How one function sums an element.
enum class Order { Float, Tree, Wide, Stepped };
Order orderOf(const CatalogueEntry& e)
{
    std::string_view code = e.code;
    if (std::string_view(e.type) == "64f") {
        Lay l = vt::layoutOf(e.layout);
        return l == Lay::C || l == Lay::S2 ? Order::Wide : Order::Stepped;
    }
    if (is(e, "32f", 6, "S2") && (code == "mm" || code == "mmT" || code == "mTmT")) return Order::Tree;
    return Order::Float;
}

// One element of the product from its K pairs of factors.
template <class T>
T sum(Order o, const std::vector<T>& x, const std::vector<T>& y)
{
    size_t K = x.size();
    if constexpr (sizeof(T) == 4) {
        std::vector<float> p(K);
        for (size_t n = 0; n < K; ++n) {
            volatile float q = x[n] * y[n];
            p[n] = q;
        }
        if (o == Order::Tree) {
            volatile float a = p[0] + p[1], b = p[2] + p[3], c = p[4] + p[5];
            volatile float ab = a + b;
            volatile float r = ab + c;
            return r;
        }
        volatile float s = p[0];
        for (size_t n = 1; n < K; ++n) s = s + p[n];
        return s;
    } else {
        if (o == Order::Wide) {
            long double s = 0;
            for (size_t n = 0; n < K; ++n) s = s + static_cast<long double>(x[n]) * y[n];
            return vt::roundToDouble(s);
        }
        double d = 0;
        for (size_t n = 0; n < K; ++n)
            d = vt::roundToDouble(static_cast<long double>(d) + static_cast<long double>(x[n]) * y[n]);
        return d;
    }
}

// Values with full mantissas over a range of magnitudes, so that the order and the
// width of every sum shows in the last bits.
template <class T>
void mixed(Laid<T>& l, std::mt19937& rng)
{
    l.fill([&](uint32_t, uint32_t, uint32_t) { return vt::randomValue<T>(rng, static_cast<int>(rng() % 13) - 6); });
}

// One call: result R x C with inner length K. A transposed source is stored
// transposed; its sizes are those of the operand after transposition.
template <class T>
struct MulCase {
    const CatalogueEntry& e;
    std::string c1, c2;
    bool t1, t2, a1, a2, array;
    uint32_t R, C, K, count;
    std::mt19937 rng;
    Laid<T> s1, s2, dst;
    ArgPack args;

    MulCase(const CatalogueEntry& entry, uint32_t r, uint32_t c, uint32_t k, uint32_t cnt, unsigned seed)
        : e(entry), c1(vt::splitCodes(entry.code)[0]), c2(vt::splitCodes(entry.code)[1]),
          t1(vt::isTransposed(c1)), t2(vt::isTransposed(c2)), a1(vt::isArrayCode(c1)),
          a2(vt::isArrayCode(c2)), array(a1 || a2), R(r), C(c), K(k), count(cnt), rng(seed),
          s1(make(a1, t1 ? K : R, t1 ? R : K)), s2(make(a2, t2 ? C : K, t2 ? K : C)),
          dst(make(array, R, C))
    {
        mixed(s1, rng);
        mixed(s2, rng);
        dst.randomize(rng);
        bindAll();
    }
    Laid<T> make(bool arr, uint32_t rows, uint32_t cols)
    {
        return Laid<T>(vt::layoutOf(e.layout), arr, count, rows, cols, rng);
    }
    void bindAll()
    {
        args = ArgPack{};
        s1.bind(args, "src1");
        s2.bind(args, "src2");
        dst.bind(args, "dst");
        args.src1Width = K;
        args.src1Height = R;
        args.src2Width = C;
        args.src2Height = K;
        args.count = count;
    }
    uint32_t objects() const { return array ? count : 1; }

    static T x1(const Laid<T>& s, bool t, bool a, uint32_t k, uint32_t i, uint32_t n)
    {
        return t ? s.get(a ? k : 0, n, i) : s.get(a ? k : 0, i, n);
    }
    T expected(Order o, const Laid<T>& in1, const Laid<T>& in2, uint32_t k, uint32_t i, uint32_t j) const
    {
        std::vector<T> x(K), y(K);
        for (uint32_t n = 0; n < K; ++n) {
            x[n] = x1(in1, t1, a1, k, i, n);
            y[n] = t2 ? in2.get(a2 ? k : 0, j, n) : in2.get(a2 ? k : 0, n, j);
        }
        return sum<T>(o, x, y);
    }
};

// Shapes (R, C, K) whose stored operands fit the sizes the code is given.
std::vector<std::array<uint32_t, 3>> shapesFor(const CatalogueEntry& e)
{
    if (e.size) return {{e.size, e.size, e.size}};
    const Row& row = rowOf(e.code);
    std::vector<std::array<uint32_t, 3>> out;
    for (auto s : std::vector<std::array<uint32_t, 3>>{{1, 1, 1}, {3, 3, 3}, {7, 7, 7}, {2, 5, 4},
                                                       {4, 2, 2}, {3, 6, 3}, {5, 3, 5}}) {
        uint32_t v[4] = {s[2], s[0], s[1], s[2]};  // W1 = K, H1 = R, W2 = C, H2 = K
        if (v[row.ca] != v[row.cb]) continue;
        Lay l = vt::layoutOf(e.layout);
        bool arr = std::string_view(e.code).find('a') != std::string_view::npos;
        if (arr && (l == Lay::P || l == Lay::PS2) && v[row.da] * v[row.db] > s[0] * s[1]) continue;
        out.push_back(s);
    }
    return out;
}

int orderShows[2];  // results where another order or width would give other bits

template <class T>
void checkAll(const CatalogueEntry& e)
{
    Order o = orderOf(e);
    bool arr = std::string_view(e.code).find('a') != std::string_view::npos;
    std::vector<uint32_t> counts = arr ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
    unsigned seed = 11;
    for (auto s : shapesFor(e))
        for (uint32_t count : counts) {
            MulCase<T> c(e, s[0], s[1], s[2], count, seed++);
            Laid<T> in1 = c.s1, in2 = c.s2;
            auto before = c.dst.bytes();
            ASSERT_EQ(vt::call(e, c.args), vorxStatusOk) << e.name;
            vt::digest(c.dst.bytes());
            EXPECT_TRUE(c.dst.guardsIntact()) << e.name << " wrote outside dst";
            EXPECT_EQ(c.s1.bytes(), in1.bytes()) << e.name;
            EXPECT_EQ(c.s2.bytes(), in2.bytes()) << e.name;
            if (count == 0) {
                EXPECT_EQ(c.dst.bytes(), before) << e.name << ": count 0 wrote";
                continue;
            }
            Order other = o == Order::Tree ? Order::Float : o == Order::Wide ? Order::Stepped
                        : o == Order::Stepped ? Order::Wide : o;
            for (uint32_t k = 0; k < c.objects(); ++k)
                for (uint32_t i = 0; i < c.R; ++i)
                    for (uint32_t j = 0; j < c.C; ++j) {
                        T want = c.expected(o, in1, in2, k, i, j);
                        ASSERT_TRUE(vt::sameBits(c.dst.get(k, i, j), want))
                            << e.name << " object " << k << " (" << i << "," << j << ") R" << c.R
                            << " C" << c.C << " K" << c.K << ": " << c.dst.get(k, i, j) << " vs " << want;
                        if (other != o && !vt::sameBits(want, c.expected(other, in1, in2, k, i, j)))
                            ++orderShows[o == Order::Tree ? 0 : 1];
                    }
        }
}

TEST(MulMatrix, EveryFunctionMatchesItsOrderOfSummation)
{
    orderShows[0] = orderShows[1] = 0;
    for (const auto* e : vt::entries("Mul", isMatMul)) {
        if (std::string_view(e->type) == "32f")
            checkAll<float>(*e);
        else
            checkAll<double>(*e);
    }
    // The data tells the tree from the left-to-right sum, and the register-width
    // 64f sum from the one rounded at every step.
    EXPECT_GT(orderShows[0], 0);
    EXPECT_GT(orderShows[1], 0);
}

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

const CatalogueEntry& entry(const std::string& name)
{
    for (const auto& e : kCatalogue)
        if (name == e.name) return e;
    ADD_FAILURE() << name;
    return kCatalogue[0];
}

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

// Top-level pointers in every function: -8 and nothing written.
template <class T>
void checkNulls(const CatalogueEntry& e)
{
    uint32_t n = e.size ? e.size : 3;
    for (const char* top : {"src1", "src2", "dst"}) {
        MulCase<T> c(e, n, n, n, 2, 3);
        *static_cast<void**>(argField(c.args, top)) = nullptr;
        auto before = c.dst.bytes();
        EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name << " null " << top;
        EXPECT_EQ(c.dst.bytes(), before) << e.name;
    }
}

bool untestedTables(const CatalogueEntry& e)
{
    std::string_view c = e.code;
    bool three = c == "mam" || c == "mamT" || c == "maTm";
    if (is(e, "32f", 3, "P") || is(e, "32f", 3, "PS2")) return three;
    return is(e, "32f", 3, "LS2") && (three || c == "maTmT");
}

// Table and list entries: Pointer arrays scan every table before count (dst
// untouched even at count 0); Lists test object k's entries before object k.
template <class T>
void checkEntries(const CatalogueEntry& e)
{
    Lay l = vt::layoutOf(e.layout);
    if (untestedTables(e)) return;
    uint32_t n = e.size ? e.size : 3;
    for (int which = 0; which < 3; ++which)
        for (uint32_t count : {0u, 3u}) {
            MulCase<T> c(e, n, n, n, count, 20 + which);
            Laid<T>& op = which == 0 ? c.s1 : which == 1 ? c.s2 : c.dst;
            if (!op.usesTable() || !c.array) continue;
            Laid<T> in1 = c.s1, in2 = c.s2;
            auto before = c.dst.bytes();
            if (l == Lay::P || l == Lay::PS2) {
                op.table()[n * n - 1] = nullptr;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name << " table " << which;
                EXPECT_EQ(c.dst.bytes(), before) << e.name;
            } else if (count == 3) {
                op.table()[1] = nullptr;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name << " list " << which;
                for (uint32_t i = 0; i < n; ++i)
                    for (uint32_t j = 0; j < n; ++j)
                        EXPECT_TRUE(vt::sameBits(c.dst.get(0, i, j), c.expected(orderOf(e), in1, in2, 0, i, j)))
                            << e.name;
                auto after = c.dst.bytes();
                size_t obj = n * n * sizeof(T);
                EXPECT_TRUE(std::equal(after.begin() + obj, after.end(), before.begin() + obj))
                        << e.name << ": objects after the null one written";
            }
        }
}

TEST(MulMatrix, StatusesOfEveryFunction)
{
    for (const auto* e : vt::entries("Mul", isMatMul)) {
        if (std::string_view(e->type) == "32f") {
            checkNulls<float>(*e);
            checkEntries<float>(*e);
        } else {
            checkNulls<double>(*e);
            checkEntries<double>(*e);
        }
    }
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
// elements stand and the current one holds its partial sum.
template <class T>
void checkReached(const char* name, int which, uint32_t bad, uint32_t doneI, uint32_t doneJ, uint32_t terms)
{
    const CatalogueEntry& e = entry(name);
    MulCase<T> c(e, 3, 3, 3, 1, 40);
    Laid<T> in1 = c.s1, in2 = c.s2;
    Laid<T>& op = which == 0 ? c.s1 : which == 1 ? c.s2 : c.dst;
    op.table()[bad] = nullptr;
    EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << name;
    Order o = orderOf(e);
    for (uint32_t i = 0; i < 3; ++i)
        for (uint32_t j = 0; j < 3; ++j) {
            uint32_t pos = i * 3 + j, at = doneI * 3 + doneJ;
            if (pos < at)
                EXPECT_TRUE(vt::sameBits(c.dst.get(0, i, j), c.expected(o, in1, in2, 0, i, j))) << name;
            else if (pos == at && which != 2) {
                std::vector<T> x, y;
                for (uint32_t n = 0; n < terms; ++n) {
                    x.push_back(MulCase<T>::x1(in1, c.t1, false, 0, i, n));
                    y.push_back(c.t2 ? in2.get(0, j, n) : in2.get(0, n, j));
                }
                T want = terms ? sum<T>(Order::Stepped, x, y) : T(0);
                if (sizeof(T) == 4 && terms) want = sum<T>(Order::Float, x, y);
                EXPECT_TRUE(vt::sameBits(c.dst.get(0, i, j), want)) << name << " partial sum";
            }
        }
}

TEST(MulMatrix, SingleObjectPointerEntriesAsReached)
{
    checkReached<float>("vorxMul_mm_32f_3x3_P", 2, 4, 1, 1, 0);   // dst (1,1)
    checkReached<float>("vorxMul_mm_32f_P", 0, 5, 1, 0, 2);       // src1 (1,2) at (1,0), k 2
    checkReached<double>("vorxMul_mm_64f_P", 1, 3, 0, 0, 1);      // src2 (1,0) at (0,0), k 1
    // A transposed src1 tests the entry it reads: s1(1,0) is entry 0*3+1.
    checkReached<double>("vorxMul_mTm_64f_3x3_P", 0, 1, 1, 0, 0);
    checkReached<float>("vorxMul_mTmT_32f_P", 1, 1, 0, 0, 1);     // s2(1,0) is entry 0*3+1
}

// The closed forms that test no entry: a null entry at count 0 is not looked at,
// where the other codes' scan finds it.
TEST(MulMatrix, ClosedFormsTestNoEntries)
{
    for (const char* code : {"mam", "mamT", "maTm", "maTmT"})
        for (const char* lay : {"P", "PS2"}) {
            const CatalogueEntry& e = entry(std::string("vorxMul_") + code + "_32f_3x3_" + lay);
            MulCase<float> c(e, 3, 3, 3, 0, 50);
            c.s1.table()[4] = nullptr;
            c.dst.table()[8] = nullptr;
            bool closed = std::string_view(code) != "maTmT";
            EXPECT_EQ(vt::call(e, c.args), closed ? vorxStatusOk : vorxStatusNullPointer) << e.name;
        }
}

// The in-place forms: dst the same storage as src1 or src2, same strides.
struct InPlace {
    unsigned size;
    const char* layouts;
    const char* onSrc1;
    const char* onSrc2;
};
const InPlace kInPlace[] = {
    {3, "C L", "mm mmT mam mamT mama mamaT", "mm mmT mTm mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT"},
    {4, "C L", "mm mmT mam mamT mama mamaT", "mm mmT mTm mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT"},
    {5, "C L", "mm mmT mam mamT mama mamaT", "mmT mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT"},
    {6, "C L", "", "mm mTm mma mmaT mTma mTmaT mama mamaT maTma maTmaT"},
    {3, "S2", "mam mamT mama", "mama"},
    {4, "S2", "mam mama", "mama"},
    {6, "S2", "mm mmT", "mm mmT mTmT"},
    {3, "P PS2 LS2", "mam mamT", ""},
};

bool listed(const char* words, std::string_view w)
{
    std::string s = std::string(" ") + words + " ";
    return s.find(" " + std::string(w) + " ") != std::string::npos;
}

TEST(MulMatrix, InPlaceFormsGiveTheProduct)
{
    int checked = 0;
    for (const auto& row : kInPlace)
        for (const auto* e : vt::entries("Mul", isMatMul)) {
            if (e->size != row.size || std::string_view(e->type) != "32f") continue;
            std::string lay = *e->layout ? e->layout : "C";
            if (!listed(row.layouts, lay)) continue;
            for (int which = 0; which < 2; ++which) {
                if (!listed(which ? row.onSrc2 : row.onSrc1, e->code)) continue;
                MulCase<float> c(*e, row.size, row.size, row.size, 3, 60 + which);
                Laid<float> in1 = c.s1, in2 = c.s2;
                Laid<float>& op = which ? c.s2 : c.s1;
                op.bind(c.args, "dst");
                ASSERT_EQ(vt::call(*e, c.args), vorxStatusOk) << e->name;
                for (uint32_t k = 0; k < c.objects(); ++k)
                    for (uint32_t i = 0; i < row.size; ++i)
                        for (uint32_t j = 0; j < row.size; ++j)
                            ASSERT_TRUE(vt::sameBits(op.get(k, i, j), c.expected(orderOf(*e), in1, in2, k, i, j)))
                                << e->name << " in place on src" << which + 1 << " (" << i << "," << j << ")";
                ++checked;
            }
        }
    EXPECT_EQ(checked, 124);  // every row of the table above
}

// The packed forms begin the sum with the first product, the scalar forms with +0.0.
TEST(MulMatrix, SignOfAZeroSum)
{
    for (unsigned n = 3; n <= 6; ++n)
        for (const char* lay : {"", "S2"}) {
            std::string name = "vorxMul_mm_32f_" + std::to_string(n) + "x" + std::to_string(n);
            const CatalogueEntry& e = entry(*lay ? name + "_" + lay : name);
            MulCase<float> c(e, n, n, n, 1, 70);
            c.s1.fill([](uint32_t, uint32_t, uint32_t) { return 0.0f; });
            c.s2.fill([](uint32_t, uint32_t, uint32_t) { return -1.5f; });
            ASSERT_EQ(vt::call(e, c.args), vorxStatusOk);
            bool packed = !*lay;
            for (uint32_t i = 0; i < n; ++i)
                for (uint32_t j = 0; j < n; ++j)
                    if (packed || n != 6)  // 6x6 S2 mm is a closed form, free to choose
                        EXPECT_EQ(std::signbit(c.dst.get(0, i, j)), packed) << e.name << " " << i << j;
        }
    const CatalogueEntry& g = entry("vorxMul_mama_32f_L");
    MulCase<float> c(g, 3, 3, 2, 2, 71);
    c.s1.fill([](uint32_t, uint32_t, uint32_t) { return -0.0f; });
    ASSERT_EQ(vt::call(g, c.args), vorxStatusOk);
    EXPECT_FALSE(std::signbit(c.dst.get(1, 1, 2)));
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
