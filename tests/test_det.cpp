// Determinants beyond what the catalogue-wide tests check against the family's
// model: exact values every form must give (identity, one exchange, the sign of
// exchanged rows), the thresholds and NaN pivots of the elimination, its narrowed
// 64f maximum, a singular object mid-array, the partial write of a single Pointer
// matrix, the List kernels' null entry (-2, or a trap), and agreement with LAPACK.
#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <limits>

#include "harness.h"
#include "models/det.h"

namespace {

using vt::byName;

template <class T>
using Objects = std::vector<std::vector<T>>;

// Determinants of dense row-major objects by any Det entry, in its own layout; with
// `perm`, the row order the elimination leaves behind its working copy.
template <class T>
std::vector<T> dets(const CatalogueEntry& e, const Objects<T>& objs, std::vector<uint32_t>* perm = nullptr)
{
    const uint32_t S = static_cast<uint32_t>(std::sqrt(objs[0].size()) + 0.5);
    if (!vt::isArrayCall(e) && objs.size() > 1) {  // one call per object
        std::vector<T> out;
        for (const auto& o : objs) out.push_back(dets<T>(e, {o}, perm)[0]);
        return out;
    }
    vt::Case<T> c(e, vt::dimsOf(e, S, static_cast<uint32_t>(objs.size())), S);
    for (uint32_t k = 0; k < c.s.objects(); ++k)
        for (uint32_t n = 0; n < S * S; ++n) c.s.op("src").set(k, n / S, n % S, objs[k][n]);
    EXPECT_EQ(c.s.call(), vorxStatusOk) << e.name;
    std::vector<T> out;
    for (uint32_t k = 0; k < c.s.objects(); ++k) out.push_back(c.s.op("dst").get(0, 0, k));
    if (perm) {
        perm->resize(S);
        auto* indexes = reinterpret_cast<unsigned char*>(c.s.op("scratch").addr(0, 0, 0)) + S * S * sizeof(T);
        std::memcpy(perm->data(), indexes, S * 4);
    }
    return out;
}

template <class F>
void everyDet(F f)
{
    for (const auto& e : kCatalogue) {
        std::string_view fam = e.family;
        if (fam != "Det" && fam != "a6_Det") continue;
        if (vt::isF32(e)) f(float{}, e);
        else f(double{}, e);
    }
}

std::vector<uint32_t> sizesOf(const CatalogueEntry& e) { return e.size ? std::vector<uint32_t>{e.size} : std::vector<uint32_t>{1, 2, 5, 8}; }

// Every form: the identity gives 1, one exchange of rows -1, and for integer
// matrices (every intermediate exact) the closed forms negate exactly when the
// first two rows are exchanged.
TEST(Det, IdentityExchangeAndSignEveryForm)
{
    std::mt19937 rng(13);
    everyDet([&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        for (uint32_t S : sizesOf(e)) {
            std::vector<T> id(S * S, T(0)), swapped;
            for (uint32_t i = 0; i < S; ++i) id[i * S + i] = 1;
            swapped = id;
            if (S > 1) std::swap_ranges(swapped.begin(), swapped.begin() + S, swapped.begin() + S);
            EXPECT_EQ(dets<T>(e, {id, swapped}), (std::vector<T>{1, S > 1 ? T(-1) : T(1)})) << e.name;
            if (!e.size) continue;
            std::vector<T> m(S * S);
            for (auto& v : m) v = static_cast<T>(static_cast<int>(rng() % 9) - 4);
            std::vector<T> x = m;
            std::swap_ranges(x.begin(), x.begin() + S, x.begin() + S);
            std::vector<T> d = dets<T>(e, {m, x});
            EXPECT_EQ(d[0], -d[1]) << e.name;
        }
    });
}

// The elimination: the >= / > pair at the threshold, 1e-8 pivots, NaN pivots, size 1,
// the 64f maximum narrowed to single precision.
template <class T>
void thresholds(const char* name)
{
    const CatalogueEntry& e = byName(name);
    const T thr = static_cast<T>(sizeof(T) == 4 ? 0x1p-23 : 0x1p-52), nan = std::numeric_limits<T>::quiet_NaN();
    auto diag = [](T a, T b, T c) { return std::vector<T>{a, 0, 0, 0, b, 0, 0, 0, c}; };
    // An early pivot at the threshold passes, the last one does not.
    EXPECT_EQ(dets<T>(e, {diag(thr, 1, 2), diag(2, 1, thr), diag(1, 1, std::nextafter(thr, T(1)))}),
              (std::vector<T>{thr * 2, 0, std::nextafter(thr, T(1))}))
        << name;
    // 1e-8 on the diagonal: too small in 32f, a product in 64f.
    T tiny = static_cast<T>(1e-8);
    EXPECT_EQ(dets<T>(e, {diag(tiny, tiny, tiny)})[0], sizeof(T) == 4 ? T(0) : vt::detAnySize(diag(tiny, tiny, tiny), 3));
    // A NaN pivot gives 0.0. A NaN below the pivot is never chosen, and where it
    // has spread into the next pivot position it is never displaced.
    std::vector<uint32_t> perm;
    EXPECT_EQ(dets<T>(e, {diag(nan, 1, 1)}), std::vector<T>{0});
    EXPECT_EQ(dets<T>(e, {{1, 0, 0, nan, 1, 0, 0, 0, 1}}, &perm), std::vector<T>{0});
    EXPECT_EQ(perm, (std::vector<uint32_t>{0, 1, 2}));
    // Size 1: no search, no division, only the last-pivot test.
    EXPECT_EQ(dets<T>(e, {{T(-3)}, {thr}}), (std::vector<T>{-3, 0}));
    // A candidate equal to the kept maximum wins in 64f (kept at single precision,
    // rounded down), not in 32f; beyond the single range nothing beats it.
    T x = static_cast<T>(sizeof(T) == 4 ? 1 + 0x1p-20 : 1 + 0x1p-40);
    dets<T>(e, {{x, 0, x, 1}}, &perm);
    EXPECT_EQ(perm, (sizeof(T) == 4 ? std::vector<uint32_t>{0, 1} : std::vector<uint32_t>{1, 0})) << name;
    if (sizeof(T) == 8) {
        dets<T>(e, {{T(1e300), 0, T(1e301), 1}}, &perm);
        EXPECT_EQ(perm, (std::vector<uint32_t>{0, 1}));
    }
}

TEST(Det, AnySizeThresholdsNaNAndTheNarrowedMaximum)
{
    thresholds<float>("vorxDet_ma_32f");
    thresholds<double>("vorxDet_ma_64f");
}

// Any size: a singular object mid-array gives 0.0 there and the call goes on.
TEST(Det, SingularObjectMidArray)
{
    everyDet([&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        if (e.size || std::string_view(e.code) != "ma") return;
        std::vector<T> a = {2, 1, 1, 3}, zero(4, T(0));
        EXPECT_EQ(dets<T>(e, {a, zero, a}), (std::vector<T>{5, 0, 5})) << e.name;
    });
}

// A single Pointer matrix tests each entry as its element is copied: dst already
// holds 1.0. At count 0 a null List-strided entry is never read.
template <class T>
void entriesAsReached(const char* type)
{
    const CatalogueEntry& one = byName(std::string("vorxDet_m_") + type + "_P");
    vt::Case<T> c(one, vt::dimsOf(one, 3, 1), 1);
    c.s.op("src").table()[4] = nullptr;
    EXPECT_EQ(c.s.call(), vorxStatusNullPointer) << one.name;
    EXPECT_EQ(c.s.op("dst").get(0, 0, 0), T(1)) << one.name;
    for (std::string name : {"vorxDet_ma_" + std::string(type) + "_LS2", "vorxDet_ma_" + std::string(type) + "_4x4_LS2"}) {
        const CatalogueEntry& e = byName(name);
        vt::Case<T> z(e, vt::dimsOf(e, 4, 0), 2);
        z.s.op("src").table()[0] = nullptr;
        EXPECT_EQ(z.s.call(), vorxStatusOk) << name;
    }
}

TEST(Det, NullEntriesAsTheyAreReached)
{
    entriesAsReached<float>("32f");
    entriesAsReached<double>("64f");
}

// A List kernel meets a null entry at object 1 of 3: the 64f 6x6 kernel returns -2,
// which its wrapper reports as -8, object 0 written and the others untouched.
TEST(Det, TheListKernelThatReturnsFromANullEntry)
{
    for (auto [name, want] : {std::pair{"a6_Det_ma_64f_6x6_L", -2}, {"vorxDet_ma_64f_6x6_L", vorxStatusNullPointer}}) {
        const CatalogueEntry& e = byName(name);
        vt::Case<double> c(e, vt::dimsOf(e, 6, 3), 3);
        c.s.op("src").table()[1] = nullptr;
        EXPECT_EQ(c.s.call(), want) << name;
        EXPECT_TRUE(c.predicted("dst", 0, 0, 0) && c.untouched("dst", 0, 0, 1) && c.untouched("dst", 0, 0, 2)) << name;
    }
}

// The seven other List kernels trap at a null entry, after the objects before it:
// the child checks object 0 from its SIGILL handler.
const float* gDst;
float gWant;
void trapped(int) { _exit(vt::sameBits(*gDst, gWant) ? 42 : 1); }
void callWithNullEntry(const char* name)
{
    const CatalogueEntry& e = byName(name);
    vt::Case<float> c(e, vt::dimsOf(e, 0, 3), 4);
    c.s.op("src").table()[1] = nullptr;
    gDst = c.s.op("dst").addr(0, 0, 0);
    gWant = c.want.op("dst").get(0, 0, 0);
    signal(SIGILL, trapped);
    c.s.call();
    _exit(0);
}

TEST(DetDeathTest, OtherListKernelsTrapAtANullEntry)
{
    for (const char* name : {"a6_Det_ma_32f_5x5_L", "vorxDet_ma_32f_3x3_L"})
        EXPECT_EXIT(callWithNullEntry(name), ::testing::ExitedWithCode(42), "") << name;
}

// dst on the first element of src: each fixed form reads its whole object first.
TEST(Det, FixedSizesReadTheWholeMatrixBeforeTheStore)
{
    std::mt19937 rng(21);
    for (const char* name : {"vorxDet_m_32f_6x6", "vorxDet_m_64f_5x5_S2", "vorxDet_m_32f_3x3_S2"}) {
        const CatalogueEntry& e = byName(name);
        auto run = [&](auto t) {
            using T = decltype(t);
            vt::Case<T> c(e, vt::dimsOf(e, 0, 1), rng());
            c.s.pack.dst = c.s.op("src").addr(0, 0, 0);
            EXPECT_EQ(c.s.call(), vorxStatusOk);
            EXPECT_TRUE(vt::sameBits(c.s.op("src").get(0, 0, 0), c.want.op("dst").get(0, 0, 0))) << name;
        };
        if (vt::isF32(e)) run(0.0f); else run(0.0);
    }
}

extern "C" void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);

// Every Contiguous form agrees with reference LAPACK within a tolerance scaled by
// the product of the row norms.
TEST(Det, AgreesWithLapack)
{
    std::mt19937 rng(31);
    everyDet([&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        if (*e.layout) return;
        for (uint32_t S : sizesOf(e)) {
            std::vector<T> a(S * S);
            std::vector<double> col(S * S);
            long double bound = 1;
            for (uint32_t i = 0; i < S; ++i) {
                long double n2 = 0;
                for (uint32_t j = 0; j < S; ++j) {
                    a[i * S + j] = vt::randomValue<T>(rng, 0);
                    col[j * S + i] = a[i * S + j];
                    n2 += col[j * S + i] * col[j * S + i];
                }
                bound *= std::sqrt(n2);
            }
            int n = static_cast<int>(S), info;
            std::vector<int> ipiv(S);
            dgetrf_(&n, &n, col.data(), &n, ipiv.data(), &info);
            long double want = 1;
            for (uint32_t i = 0; i < S; ++i) want *= (ipiv[i] != static_cast<int>(i) + 1 ? -1 : 1) * col[i * S + i];
            T got = dets<T>(e, {a})[0];
            EXPECT_LE(std::fabs(got - want), (sizeof(T) == 4 ? 1e-5L : 1e-13L) * S * bound) << e.name << " size " << S;
        }
    });
}

}  // namespace
