// LU decomposition and back substitution beyond what the catalogue-wide tests check
// against the families' models: the residual over a range of condition numbers,
// solutions against reference LAPACK, pivoting ties, NaN, the threshold, the
// displaced last-pivot test of arrays, and the 4-byte column step of the 64f List
// solve with one matrix.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "harness.h"
#include "models/lu.h"

namespace {

using vt::Laid;
using vt::byName;

constexpr uint32_t kUnset = 0xDEADBEEFu;



extern "C" void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b,
                       const int* ldb, int* info);

// An independent solve of A x = b (A dense row-major), by reference LAPACK in double.
template <class T>
std::vector<double> independentSolve(const std::vector<T>& A, const std::vector<T>& b, uint32_t S)
{
    std::vector<double> colMajor(S * S), x(b.begin(), b.end());
    for (uint32_t i = 0; i < S; ++i)
        for (uint32_t j = 0; j < S; ++j) colMajor[j * S + i] = A[i * S + j];
    std::vector<int> ipiv(S);
    int n = static_cast<int>(S), one = 1, info = -1;
    dgesv_(&n, &one, colMajor.data(), &n, ipiv.data(), x.data(), &n, &info);
    EXPECT_EQ(info, 0);
    return x;
}

enum class Shape { Random, Dominant, Upper, UpperZeroLast };

// A dense S x S matrix. Dominant: a diagonally dominant matrix with its rows
// shuffled, well conditioned with real exchanges. Upper: upper triangular with
// diagonal magnitudes of at least 1, so no exchange; UpperZeroLast the same with a
// zero last pivot.
template <class T>
std::vector<T> matrix(Shape shape, uint32_t S, std::mt19937& rng)
{
    std::vector<T> m(S * S);
    for (auto& v : m) v = vt::randomValue<T>(rng, 0);
    if (shape == Shape::Dominant) {
        for (uint32_t i = 0; i < S; ++i) {
            T mag = static_cast<T>(S + 1 + rng() % 4);
            m[i * S + i] = rng() % 2 ? mag : -mag;
        }
        std::vector<uint32_t> order(S);
        for (uint32_t i = 0; i < S; ++i) order[i] = i;
        vt::shuffle(order, rng);
        std::vector<T> out(S * S);
        for (uint32_t i = 0; i < S; ++i)
            for (uint32_t j = 0; j < S; ++j) out[order[i] * S + j] = m[i * S + j];
        return out;
    }
    if (shape == Shape::Upper || shape == Shape::UpperZeroLast) {
        for (uint32_t i = 0; i < S; ++i)
            for (uint32_t j = 0; j < i; ++j) m[i * S + j] = 0;
        for (uint32_t i = 0; i < S; ++i) m[i * S + i] = static_cast<T>(1 + rng() % 3);
        if (shape == Shape::UpperZeroLast) m[S * S - 1] = 0;
    }
    return m;
}

std::vector<unsigned char> rawBytes(const void* p, size_t n)
{
    auto* c = static_cast<const unsigned char*>(p);
    return std::vector<unsigned char>(c, c + n);
}

template <class T>
void expectSameBits(const std::vector<T>& got, const std::vector<T>& want, const std::string& what)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t n = 0; n < got.size(); ++n)
        ASSERT_EQ(std::memcmp(&got[n], &want[n], sizeof(T)), 0) << what << " element " << n << ": " << got[n] << " vs " << want[n];
}


template <class T>
void setObject(Laid<T>& l, uint32_t k, const std::vector<T>& v)
{
    for (uint32_t i = 0; i < l.rows(); ++i)
        for (uint32_t j = 0; j < l.cols(); ++j) l.set(k, i, j, v[i * l.cols() + j]);
}

template <class Check>
void eachEntry(std::string_view family, std::string_view code, Check check)
{
    for (const auto* e : vt::entries(family, [&](const CatalogueEntry& c) { return code == c.code; })) {
        if (std::string_view(e->type) == "32f")
            check(float{}, *e);
        else
            check(double{}, *e);
    }
}

std::vector<uint32_t> sizesOf(const CatalogueEntry& e)
{
    if (e.size) return {e.size};
    return {1, 2, 4, 7};
}

// ---------------------------------------------------------------------------
// Decomposition

// The dst of an array decomposition laid out by hand so that the location each
// object's last-pivot test reads is known: rows packed (rowStride = size *
// elemStride), so that location is element (l + n, size-1) of object n while
// l + n < size, and otherwise a cell behind the object (Contiguous, Strided, List
// layouts) or behind the end of the table (Pointer layouts) where the test plants a
// value of its choice. Everything that is not an element is guarded.
template <class T>
struct PlantedDst {
    static constexpr int32_t E = sizeof(T);
    vt::Lay lay;
    uint32_t S, count;
    int32_t es, rs, os, bs;
    std::vector<unsigned char> mem;
    std::vector<bool> owned;
    std::vector<T*> table;
    std::vector<size_t> off;

    PlantedDst(vt::Lay l, uint32_t s, uint32_t c, std::mt19937& rng) : lay(l), S(s), count(c)
    {
        bool pointer = l == vt::Lay::P || l == vt::Lay::PS2;
        bool list = l == vt::Lay::L || l == vt::Lay::LS2;
        es = (l == vt::Lay::S2 || l == vt::Lay::LS2) ? E + 4 : E;
        rs = static_cast<int32_t>(S) * es;
        bs = pointer || list ? static_cast<int32_t>(rng() % 19) - 9 : 0;
        off.resize(static_cast<size_t>(c) * S * S);
        if (pointer) {
            os = l == vt::Lay::P ? E : E + 3;
            size_t cell = (c - 1) * os + E + 8;
            uint32_t entries = S * S + 2 * S;  // enough for objects 0..2
            mem.assign(64 + entries * cell + 64, vt::kGuard);
            for (uint32_t e = 0; e < entries; ++e) table.push_back(reinterpret_cast<T*>(mem.data() + 64 + e * cell - bs));
            for (uint32_t k = 0; k < c; ++k)
                for (uint32_t e = 0; e < S * S; ++e) off[k * S * S + e] = 64 + e * cell + k * os;
        } else {
            os = static_cast<int32_t>(S * S * es + 2 * S * es + E + 3);
            mem.assign(64 + c * os + 64, vt::kGuard);
            for (uint32_t k = 0; k < c; ++k) {
                size_t start = 64 + (list ? c - 1 - k : k) * os;  // lists in reverse order
                if (list) table.push_back(reinterpret_cast<T*>(mem.data() + start - bs));
                for (uint32_t i = 0; i < S; ++i)
                    for (uint32_t j = 0; j < S; ++j) off[(k * S + i) * S + j] = start + i * rs + j * es;
            }
        }
        owned.assign(mem.size(), false);
        for (size_t o : off)
            for (int b = 0; b < E; ++b) owned[o + b] = true;
    }
    unsigned char* addr(uint32_t k, uint32_t i, uint32_t j) { return mem.data() + off[(k * S + i) * S + j]; }
    T get(uint32_t k, uint32_t i, uint32_t j) { T v; std::memcpy(&v, addr(k, i, j), E); return v; }
    void set(uint32_t k, uint32_t i, uint32_t j, T v) { std::memcpy(addr(k, i, j), &v, E); }
    std::vector<T> object(uint32_t k)
    {
        std::vector<T> out;
        for (uint32_t e = 0; e < S * S; ++e) out.push_back(get(k, e / S, e % S));
        return out;
    }
    // The location object n's last-pivot test reads, l = perm[size-1] of that object.
    unsigned char* lastPivotLocation(uint32_t n, uint32_t l)
    {
        if (lay == vt::Lay::P || lay == vt::Lay::PS2)
            return reinterpret_cast<unsigned char*>(table[(l + n) * S + S - 1]) + bs + n * os;
        return addr(n, l, S - 1) + n * S * es;
    }
    void bind(ArgPack& a)
    {
        a.dst = table.empty() ? static_cast<void*>(mem.data() + 64) : static_cast<void*>(table.data());
        a.dstObjectStride = os;
        a.dstRowStride = rs;
        a.dstElemStride = es;
        a.dstByteShift = bs;
    }
};

// Three objects of an array decomposition with the last-pivot locations planted
// with `plant`, against the reference object by object: objects up to the first
// failure as the reference leaves them, later objects and perm slices untouched.
template <class T>
void decompThree(const CatalogueEntry& e, uint32_t S, const std::vector<std::vector<T>>& objs, T plant,
                 std::mt19937& rng, const char* what)
{
    const uint32_t count = 3;
    vt::Lay lay = vt::layoutOf(e.layout);
    Laid<T> src(lay, true, count, S, S, rng);
    PlantedDst<T> dst(lay, S, count, rng);
    std::vector<std::vector<T>> before;
    for (uint32_t k = 0; k < count; ++k) {
        setObject(src, k, objs[k]);
        for (uint32_t e2 = 0; e2 < S * S; ++e2) dst.set(k, e2 / S, e2 % S, vt::randomValue<T>(rng));
        before.push_back(dst.object(k));
    }
    // The reference, object by object, planting where a test reads outside the object.
    std::vector<std::vector<T>> want = before;
    std::vector<uint32_t> wantPerm(count * S + 1, kUnset);
    vorxStatus wantSt = vorxStatusOk;
    for (uint32_t n = 0; n < count && wantSt == vorxStatusOk; ++n) {
        want[n] = objs[n];
        uint32_t* p = &wantPerm[n * S];
        if (vt::luFactor(want[n], p, S, e.size != 0) >= 0) {
            wantSt = vorxStatusZeroDivide;
            break;
        }
        uint32_t l = p[S - 1];
        unsigned char* at = dst.lastPivotLocation(n, l);
        T seen;
        if (l + n < S) {
            ASSERT_EQ(at, dst.addr(n, l + n, S - 1)) << e.name;
            seen = want[n][(l + n) * S + S - 1];
        } else {
            for (int b = 0; b < static_cast<int>(sizeof(T)); ++b) ASSERT_FALSE(dst.owned[at - dst.mem.data() + b]);
            std::memcpy(at, &plant, sizeof(T));
            seen = plant;
        }
        if (!vt::luPasses(seen)) wantSt = vorxStatusZeroDivide;
    }
    std::vector<unsigned char> guardsBefore = dst.mem;
    std::vector<uint32_t> perm(count * S + 1, kUnset);
    ArgPack args;
    src.bind(args, "src");
    dst.bind(args);
    args.perm = perm.data();
    args.size = S;
    args.count = count;
    vorxStatus st = vt::call(e, args);
    std::string name = std::string(e.name) + " (" + what + ")";
    EXPECT_EQ(st, wantSt) << name;
    for (uint32_t k = 0; k < count; ++k) expectSameBits(dst.object(k), want[k], name + " object " + std::to_string(k));
    EXPECT_EQ(perm, wantPerm) << name;
    for (size_t b = 0; b < dst.mem.size(); ++b)
        if (!dst.owned[b]) ASSERT_EQ(dst.mem[b], guardsBefore[b]) << name << " wrote outside dst";
    vt::digest(st);
    for (uint32_t k = 0; k < count; ++k) vt::digest(rawBytes(want[k].data(), S * S * sizeof(T)));
}

// Object n >= 1 of an array is tested at a displaced location, object 0 where its
// last pivot lies; with random objects and both kinds of planted value, and the two
// cases that show it: a singular object 1 passes on a planted 1.0, a regular one
// fails on a planted 0.0 after being factorised completely, object 2 untouched.
TEST(LUDecomp, ArraysTestTheLastPivotAtItsDisplacedLocation)
{
    unsigned seed = 1000;
    eachEntry("LUDecomp", "ma", [&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        for (uint32_t S : sizesOf(e)) {
            std::mt19937 rng(seed++);
            auto R = [&] { return matrix<T>(Shape::Random, S, rng); };
            auto U = [&] { return matrix<T>(Shape::Upper, S, rng); };
            decompThree<T>(e, S, {R(), R(), R()}, T(1), rng, "random, 1.0 planted");
            decompThree<T>(e, S, {R(), R(), R()}, T(0), rng, "random, 0.0 planted");
            decompThree<T>(e, S, {R(), matrix<T>(Shape::UpperZeroLast, S, rng), U()}, T(1), rng, "singular passes");
            decompThree<T>(e, S, {U(), U(), U()}, T(0), rng, "regular fails");
        }
    });
}

// The arguments of a decomposition of packed row-major matrices, object count 1.
template <class T>
ArgPack densePack(T* src, uint32_t* perm, T* dst, uint32_t S)
{
    ArgPack a;
    a.src = src;
    a.srcRowStride = static_cast<int32_t>(S * sizeof(T));
    a.perm = perm;
    a.dst = dst;
    a.dstRowStride = static_cast<int32_t>(S * sizeof(T));
    a.size = S;
    a.count = 1;
    return a;
}

// Single-matrix 3x3 cases in both types, with their expected perm and status.
template <class T>
void decompCase(const char* type, std::vector<T> a, std::vector<uint32_t> wantPerm, vorxStatus wantSt,
                const std::vector<T>* wantDst = nullptr)
{
    std::string name = std::string("vorxLUDecomp_m_") + type + "_3x3";
    std::vector<T> d(9, T(7));
    std::vector<uint32_t> perm(3, kUnset);
    EXPECT_EQ(vt::call(byName(name), densePack(a.data(), perm.data(), d.data(), 3)), wantSt) << name;
    EXPECT_EQ(perm, wantPerm) << name;
    if (wantDst) expectSameBits(d, *wantDst, name);
}

template <class T>
void pivotingCases(const char* type)
{
    const T nan = std::numeric_limits<T>::quiet_NaN();
    // The first of equal magnitudes wins, and the pivot keeps its sign.
    decompCase<T>(type, {2, 1, 0, -3, 1, 1, 3, 0, 1}, {1, 0, 2}, vorxStatusOk);
    // The row already in place wins a tie.
    decompCase<T>(type, {-3, 1, 0, 3, 1, 1, 1, 0, 1}, {0, 1, 2}, vorxStatusOk);
    // A NaN below the pivot is never chosen (step 0); a NaN at the pivot position is
    // never displaced (step 1, whose NaN pivot then fails).
    decompCase<T>(type, {1, 1, 0, nan, 1, 1, 2, 0, 1}, {2, 1, 0}, vorxStatusZeroDivide);
    std::vector<T> nanFirst = {nan, 1, 0, 5, 1, 1, 1, 0, 1};
    decompCase<T>(type, nanFirst, {0, 1, 2}, vorxStatusZeroDivide, &nanFirst);
    // Failure at step 1: step 0 applied, column 1 not scaled, perm with step 1's
    // (empty) exchange.
    std::vector<T> partial = {T(0.5), 0, T(-0.5), T(0.25), 0, T(4.25), 4, 8, 3};
    decompCase<T>(type, {2, 4, 1, 1, 2, 5, 4, 8, 3}, {2, 1, 0}, vorxStatusZeroDivide, &partial);
    // The exchange comes before the threshold test: a failing pivot stands exchanged.
    std::vector<T> tiny = {T(1e-9), 1, 0, T(-2e-9), 1, 1, 0, 0, 1};
    decompCase<T>(type, tiny, {1, 0, 2}, vorxStatusZeroDivide, &tiny);
    // A zero column: failure at step 0 with perm the identity and dst an exact copy,
    // a signalling NaN elsewhere copied bit for bit.
    std::vector<T> zeros(9, T(0));
    const T snan = std::numeric_limits<T>::signaling_NaN();
    std::memcpy(&zeros[4], &snan, sizeof(T));
    decompCase<T>(type, zeros, {0, 1, 2}, vorxStatusZeroDivide, &zeros);
    // 2^-23 passes; just below it fails, also in 64f, where 1e-8 fails too.
    const T t = static_cast<T>(0x1p-23);
    decompCase<T>(type, {t, 0, 0, 0, t, 0, 0, 0, t}, {0, 1, 2}, vorxStatusOk);
    const T below = std::nextafter(t, T(0));
    decompCase<T>(type, {1, 0, 0, 0, 1, 0, 0, 0, below}, {0, 1, 2}, vorxStatusZeroDivide);
    decompCase<T>(type, {1, 0, 0, 0, T(1e-8), 0, 0, 0, 1}, {0, 1, 2}, vorxStatusZeroDivide);
    // An infinite element can be the pivot.
    decompCase<T>(type, {1, 1, 0, std::numeric_limits<T>::infinity(), 0, 0, 0, 0, 1}, {1, 0, 2}, vorxStatusOk);
}

TEST(LUDecomp, PivotSearchThresholdAndFailureAtAStep)
{
    pivotingCases<float>("32f");
    pivotingCases<double>("64f");
}

// 64f: the fixed sizes keep the negated multiplier at register width, the run-time
// sizes round it; find data where that shows and check each kind.
TEST(LUDecomp, FixedSizesKeepTheMultiplierWide)
{
    int shown = 0;
    for (unsigned seed = 1; seed < 200 && shown < 3; ++seed) {
        std::mt19937 rng(seed);
        std::vector<double> a = matrix<double>(Shape::Random, 6, rng);
        std::vector<double> wide = a, narrow = a;
        std::vector<uint32_t> p1(6), p2(6);
        if (vt::luFactor(wide, p1.data(), 6, true) >= 0 || vt::luFactor(narrow, p2.data(), 6, false) >= 0) continue;
        if (rawBytes(wide.data(), 288) == rawBytes(narrow.data(), 288)) continue;
        ++shown;
        for (const char* name : {"vorxLUDecomp_m_64f_6x6", "vorxLUDecomp_m_64f"}) {
            std::vector<double> d(36);
            std::vector<uint32_t> perm(6);
            EXPECT_EQ(vt::call(byName(name), densePack(a.data(), perm.data(), d.data(), 6)), vorxStatusOk);
            expectSameBits(d, std::string(name) == "vorxLUDecomp_m_64f" ? narrow : wide, name);
        }
    }
    EXPECT_EQ(shown, 3);
}

TEST(LUDecomp, InPlaceAndSizeOne)
{
    std::mt19937 rng(7);
    std::vector<float> a = matrix<float>(Shape::Random, 5, rng), d(25), same = a;
    std::vector<uint32_t> p1(5), p2(5);
    EXPECT_EQ(vt::call(byName("vorxLUDecomp_m_32f_5x5"), densePack(a.data(), p1.data(), d.data(), 5)), vorxStatusOk);
    EXPECT_EQ(vt::call(byName("vorxLUDecomp_m_32f_5x5"), densePack(same.data(), p2.data(), same.data(), 5)),
              vorxStatusOk);
    expectSameBits(same, d, "in place");
    EXPECT_EQ(p1, p2);

    for (double v : {0.5, 0x1p-24}) {
        double s = v, out = 9;
        uint32_t perm = kUnset;
        EXPECT_EQ(vt::call(byName("vorxLUDecomp_ma_64f"), densePack(&s, &perm, &out, 1)),
                  v == 0.5 ? vorxStatusOk : vorxStatusZeroDivide);
        EXPECT_EQ(out, v);
        EXPECT_EQ(perm, 0u);
    }
}

// ---------------------------------------------------------------------------
// Back substitution


// The arguments of a solve with a packed row-major matrix and plain vectors.
template <class T>
ArgPack solvePack(T* src, uint32_t* perm, T* b, T* x, uint32_t S)
{
    ArgPack a;
    a.src = src;
    a.srcRowStride = static_cast<int32_t>(S * sizeof(T));
    a.perm = perm;
    a.src2 = b;
    a.dst = x;
    a.size = S;
    a.count = 1;
    return a;
}

// A random S x S matrix of 2-norm condition number `kappa`: Q1 diag(s) Q2 with
// singular values from 1 down to 1/kappa and Householder reflections for Q1, Q2.
std::vector<long double> conditioned(uint32_t S, long double kappa, std::mt19937& rng)
{
    std::vector<long double> a(S * S, 0.0L);
    for (uint32_t i = 0; i < S; ++i) a[i * S + i] = S > 1 ? std::pow(kappa, -static_cast<long double>(i) / (S - 1)) : 1;
    for (int side = 0; side < 2; ++side) {
        std::vector<long double> v(S);
        const long double n2 = vt::randomReflector(v, rng);
        // a = H a (side 0) or a H (side 1), H = I - 2 v v' / v'v.
        std::vector<long double> out(S * S);
        for (uint32_t i = 0; i < S; ++i)
            for (uint32_t j = 0; j < S; ++j) {
                long double t = 0;
                for (uint32_t k = 0; k < S; ++k) {
                    long double h = (i == k && side == 0) || (k == j && side == 1) ? 1 : 0;
                    h -= 2 * (side == 0 ? v[i] * v[k] : v[k] * v[j]) / n2;
                    t += side == 0 ? h * a[k * S + j] : a[i * S + k] * h;
                }
                out[i * S + j] = t;
            }
        a = out;
    }
    return a;
}

// ||P A - L U|| <= c n eps ||A|| (max norms), for matrices from well to badly
// conditioned: a wrong but self-consistent elimination shows here.
TEST(LUDecomp, ResidualOverARangeOfConditionNumbers)
{
    unsigned seed = 6000;
    for (const auto* e : vt::entries("LUDecomp", [](const CatalogueEntry& c) { return std::string_view(c.code) == "m"; })) {
        auto run = [&](auto tag) {
            using T = decltype(tag);
            const long double eps = std::numeric_limits<T>::epsilon();
            for (uint32_t S : e->size ? std::vector<uint32_t>{e->size} : std::vector<uint32_t>{2, 4, 7})
                for (long double kappa : {1e1L, 1e3L, 1e5L}) {
                    std::mt19937 rng(seed++);
                    std::vector<long double> A = conditioned(S, kappa, rng);
                    vt::Case<T> c(*e, vt::dimsOf(*e, S, 1), seed);
                    long double normA = 0;
                    for (uint32_t n = 0; n < S * S; ++n) {
                        c.s.op("src").set(0, n / S, n % S, static_cast<T>(A[n]));
                        A[n] = static_cast<T>(A[n]);
                        normA = std::max(normA, std::fabs(A[n]));
                    }
                    ASSERT_EQ(c.s.call(), vorxStatusOk) << e->name;
                    const auto& d = c.s.op("dst");
                    const auto& p = c.s.idx("perm");
                    long double worst = 0;
                    for (uint32_t i = 0; i < S; ++i)
                        for (uint32_t j = 0; j < S; ++j) {
                            long double lu = 0;
                            uint32_t r = p.get(0, 0, i);
                            for (uint32_t k = 0; k <= std::min(i, j); ++k) {
                                long double l = k == i ? 1 : d.get(0, r, k);
                                lu += l * d.get(0, p.get(0, 0, k), j);
                            }
                            worst = std::max(worst, std::fabs(A[r * S + j] - lu));
                        }
                    EXPECT_LE(worst, 4 * S * eps * normA) << e->name << " size " << S << " condition " << kappa;
                }
        };
        if (vt::isF32(*e)) run(0.0f); else run(0.0);
    }
}

// Solutions of the Contiguous single solves agree with reference LAPACK.
TEST(LUBackSubst, SolutionsAgreeWithLapack)
{
    std::mt19937 rng(5000);
    for (const auto* e : vt::entries("LUBackSubst", [](const CatalogueEntry& c) {
             return std::string_view(c.code) == "mv" && !*c.layout;
         })) {
        auto run = [&](auto tag) {
            using T = decltype(tag);
            for (uint32_t S : e->size ? std::vector<uint32_t>{e->size} : std::vector<uint32_t>{1, 3, 7}) {
                std::vector<T> A = matrix<T>(Shape::Dominant, S, rng), f = A, b(S), x(S);
                std::vector<uint32_t> perm(S);
                ASSERT_LT(vt::luFactor(f, perm.data(), S, e->size != 0), 0);
                for (auto& v : b) v = vt::randomValue<T>(rng);
                ASSERT_EQ(vt::call(*e, solvePack(f.data(), perm.data(), b.data(), x.data(), S)), vorxStatusOk);
                std::vector<double> indep = independentSolve(A, b, S);
                const double tol = sizeof(T) == 4 ? 1e-4 : 1e-12;
                for (uint32_t i = 0; i < S; ++i)
                    EXPECT_LE(std::fabs(x[i] - indep[i]), tol * (1 + std::fabs(indep[i]))) << e->name << " x[" << i << "]";
            }
        };
        if (vt::isF32(*e)) run(0.0f); else run(0.0);
    }
}

// Solves with one 64f matrix in C or List layout; `L` steps its columns by 4 bytes.
std::vector<double> solveMva(const char* name, const std::vector<double>& m, const std::vector<uint32_t>& perm,
                             std::vector<double> b, uint32_t S)
{
    std::vector<double> x(S, 9);
    double* bp = b.data();
    double* xp = x.data();
    ArgPack args = solvePack(const_cast<double*>(m.data()), const_cast<uint32_t*>(perm.data()), bp, xp, S);
    if (std::string_view(name).ends_with("_L")) {
        args.src2 = &bp;
        args.dst = &xp;
    }
    EXPECT_EQ(vt::call(byName(name), args), vorxStatusOk);
    return x;
}

TEST(LUBackSubst, TheDoubleListFormWithOneMatrixStepsColumnsByFourBytes)
{
    // Size 1 reads only column 0 and gives the right answer.
    EXPECT_EQ(solveMva("vorxLUBackSubst_mva_64f_L", {4.0}, {0}, {2.0}, 1), std::vector<double>{0.5});
    // From size 2 on it differs from the Contiguous form on the same data.
    std::mt19937 rng(11);
    std::vector<double> f = matrix<double>(Shape::Dominant, 3, rng), b = {1, 2, 3};
    std::vector<uint32_t> perm(3);
    ASSERT_LT(vt::luFactor(f, perm.data(), 3, false), 0);
    EXPECT_NE(solveMva("vorxLUBackSubst_mva_64f_L", f, perm, b, 3), solveMva("vorxLUBackSubst_mva_64f", f, perm, b, 3));
}

TEST(LUBackSubst, SizeOneInPlaceAndZeroPivot)
{
    // Size 1: x = b[perm[0]] / a.
    float a = 4, b = 3, x = 0;
    uint32_t p0 = 0;
    EXPECT_EQ(vt::call(byName("vorxLUBackSubst_mv_32f"), solvePack(&a, &p0, &b, &x, 1)), vorxStatusOk);
    EXPECT_EQ(x, 0.75f);

    // dst on src2: right only with the identity perm, because b[perm[i]] is read
    // after x[0..i-1] are written.
    std::mt19937 rng(3);
    for (bool identity : {true, false}) {
        std::vector<double> f = matrix<double>(identity ? Shape::Upper : Shape::Dominant, 4, rng);
        std::vector<uint32_t> perm(4);
        ASSERT_LT(vt::luFactor(f, perm.data(), 4, true), 0);
        if (!identity) ASSERT_NE(perm, (std::vector<uint32_t>{0, 1, 2, 3}));
        std::vector<double> rhs = {1, -2, 3, 5}, apart(4), inPlace = rhs, model = rhs;
        const CatalogueEntry& e = byName("vorxLUBackSubst_mv_64f_4x4");
        EXPECT_EQ(vt::call(e, solvePack(f.data(), perm.data(), rhs.data(), apart.data(), 4)), vorxStatusOk);
        EXPECT_EQ(vt::call(e, solvePack(f.data(), perm.data(), inPlace.data(), inPlace.data(), 4)), vorxStatusOk);
        vt::luSolve<double>([&](uint32_t r, uint32_t j) { return f[r * 4 + j]; }, perm.data(), model.data(), model.data(), 4);
        expectSameBits(inPlace, model, "in place");
        if (identity)
            expectSameBits(inPlace, apart, "in place, identity perm");
        else
            EXPECT_NE(inPlace, apart);
    }

    // A zero pivot is not caught.
    std::vector<float> u = {1, 2, 0, 0};
    std::vector<uint32_t> perm = {0, 1};
    std::vector<float> rhs = {1, 1}, out(2);
    EXPECT_EQ(vt::call(byName("vorxLUBackSubst_mv_32f"), solvePack(u.data(), perm.data(), rhs.data(), out.data(), 2)),
              vorxStatusOk);
    EXPECT_TRUE(std::isinf(out[1]));
}

}  // namespace
