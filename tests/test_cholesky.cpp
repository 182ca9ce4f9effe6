// Cholesky decomposition and back substitution beyond what the catalogue-wide tests
// check against the families' models: NaN pivots that pass and those that do not,
// zero pivots of both signs, the state after a failure, NaN in the unread upper
// triangle, element strides that are not whole elements, the 64f closed forms against
// the row loop, negative and zero counts and sizes, a list entry that sums with its
// shift to zero, the solve at order 1, the residual over a range of condition
// numbers, and solutions against reference LAPACK.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "harness.h"
#include "models/cholesky.h"

namespace {

using vt::Dims;
using vt::Specimen;

template <class Check>
void eachEntry(std::string_view family, const std::function<bool(const CatalogueEntry&)>& pick, Check check)
{
    for (const auto* e : vt::entries(family, pick)) {
        if (vt::isF32(*e)) check(float{}, *e);
        else check(double{}, *e);
    }
}
bool any(const CatalogueEntry&) { return true; }

std::vector<uint32_t> ordersOf(const CatalogueEntry& e, std::vector<uint32_t> runTime)
{
    return e.size ? std::vector<uint32_t>{e.size} : runTime;
}

vt::Lay bodyLayout(const CatalogueEntry& e)
{
    vt::Lay l = vt::layoutOf(e.layout);
    return l == vt::Lay::L ? vt::Lay::C : l == vt::Lay::LS2 ? vt::Lay::S2 : l == vt::Lay::PS2 ? vt::Lay::P : l;
}

// Lays e out with positive-definite data, lets `change` alter it, and checks the call
// against the model; returns the model's status, and leaves the results in `s`.
template <class T, class Change>
vorxStatus checked(const CatalogueEntry& e, const Dims& d, unsigned seed, Specimen<T>& s, Change change)
{
    s = Specimen<T>::make(e, d, vt::Draw{vt::Data::Dominant, seed});
    change(s);
    Specimen<T> want = s;
    vorxStatus st = vt::modelFor(e)->predict(s, want);
    EXPECT_EQ(vt::verify(*vt::modelFor(e), s), "");
    return st;
}

// ---------------------------------------------------------------------------
// Decomposition

// A NaN as the first or the last pivot. Only the 64f closed forms let some through
// (the first pivot at every order, the last at order 4, and at order 3 in Contiguous
// layout): a first one that passes writes NaN into dst[0][0] and dst[1][0] and row 1
// fails; a last one that passes leaves status 0 and a NaN diagonal.
TEST(CholeskyDecomp, NaNPivotsThatPassAndThoseThatDoNot)
{
    unsigned seed = 100;
    eachEntry("CholeskyDecomp", any, [&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        const T nan = std::numeric_limits<T>::quiet_NaN();
        vt::Lay body = bodyLayout(e);
        for (uint32_t n : ordersOf(e, {1, 2, 3, 4, 7})) {
            bool closed64 = sizeof(T) == 8 && body != vt::Lay::P && n >= 3 && n <= 6;
            for (bool last : {false, true}) {
                uint32_t p = last ? n - 1 : 0;
                bool passes = closed64 && (!last || n == 4 || (n == 3 && body == vt::Lay::C));
                Specimen<T> s;
                vorxStatus st = checked<T>(e, vt::dimsOf(e, n, 2), seed++, s, [&](Specimen<T>& x) {
                    x.op("src").set(0, p, p, nan);
                });
                const auto& d = s.op("dst");
                EXPECT_EQ(st, passes && last ? vorxStatusOk : vorxStatusNotPositiveDefinite) << e.name << " " << n;
                EXPECT_EQ(std::isnan(d.get(0, p, p)), passes) << e.name << " " << n << (last ? " last" : " first");
                if (passes && !last) EXPECT_TRUE(std::isnan(d.get(0, 1, 0))) << e.name;
            }
        }
    });
}

// d exactly 0 (4, 2 over 1 gives 1 - (2·0.5)²) and -0 both fail, the first also at a
// pivot that lets a NaN through; rows before stand complete, the diagonal is not written.
TEST(CholeskyDecomp, ZeroPivotsOfBothSignsFail)
{
    unsigned seed = 200;
    eachEntry("CholeskyDecomp", [](const CatalogueEntry& c) { return std::string_view(c.code) == "m"; },
              [&](auto t, const CatalogueEntry& e) {
                  using T = decltype(t);
                  for (uint32_t n : ordersOf(e, {2, 3, 7})) {
                      for (int which = 0; which < 2; ++which) {
                          Specimen<T> s;
                          vorxStatus st = checked<T>(e, vt::dimsOf(e, n, 1), seed++, s, [&](Specimen<T>& x) {
                              auto& a = x.op("src");
                              if (which == 0) a.set(0, 0, 0, T(4)), a.set(0, 1, 0, T(2)), a.set(0, 1, 1, T(1));
                              else a.set(0, 0, 0, -T(0));
                          });
                          EXPECT_EQ(st, vorxStatusNotPositiveDefinite) << e.name;
                          Specimen<T> fresh = Specimen<T>::make(e, vt::dimsOf(e, n, 1), vt::Draw{vt::Data::Dominant, seed - 1});
                          uint32_t p = which == 0 ? 1 : 0;
                          EXPECT_TRUE(vt::sameBits(s.op("dst").get(0, p, p), fresh.op("dst").get(0, p, p))) << e.name;
                      }
                  }
              });
}

// A failure at row 2 of object 1 of three: object 0 complete, object 1 with rows 0
// and 1 and dst[2][0..1] written, dst[2][2] and later rows as they were, object 2
// untouched. And a NaN in every element of the strict upper triangle of src changes
// nothing.
TEST(CholeskyDecomp, FailureStatesAndTheUnreadUpperTriangle)
{
    unsigned seed = 300;
    eachEntry("CholeskyDecomp", any, [&](auto t, const CatalogueEntry& e) {
        using T = decltype(t);
        const T nan = std::numeric_limits<T>::quiet_NaN();
        for (uint32_t n : ordersOf(e, {3, 7})) {
            Dims d = vt::dimsOf(e, n, 3);
            uint32_t k = d.array ? 1 : 0;
            Specimen<T> s;
            vorxStatus st = checked<T>(e, d, seed, s, [&](Specimen<T>& x) { x.op("src").set(k, 2, 2, T(-1)); });
            EXPECT_EQ(st, vorxStatusNotPositiveDefinite) << e.name;
            Specimen<T> before = Specimen<T>::make(e, d, vt::Draw{vt::Data::Dominant, seed++});
            auto same = [&](uint32_t o, uint32_t i, uint32_t j) {
                return vt::sameBits(s.op("dst").get(o, i, j), before.op("dst").get(o, i, j));
            };
            EXPECT_TRUE(same(k, 2, 2) && (n == 3 || same(k, 3, 0))) << e.name;
            EXPECT_FALSE(same(k, 2, 1)) << e.name;
            if (d.array) EXPECT_TRUE(s.op("dst").object(2) == before.op("dst").object(2)) << e.name;

            checked<T>(e, d, seed++, s, [&](Specimen<T>& x) {
                for (uint32_t o = 0; o < x.objects(); ++o)
                    for (uint32_t i = 0; i < n; ++i)
                        for (uint32_t j = i + 1; j < n; ++j) x.op("src").set(o, i, j, nan);
            });
        }
    });
}

// Strided element strides that are not whole elements, positive and negative: the
// closed forms (order 3) step by the stride shifted down to whole elements (6 bytes
// in 32f are 1 element, -6 are -2), the row loop (order 7) by the bytes as given.
// Every byte not meant as an element reads as NaN, and dst must come out exactly.
template <class T>
void strided(uint32_t n, int32_t es, std::mt19937& rng)
{
    const int32_t E = sizeof(T);
    const bool closed = n >= 3 && n <= 6;
    const int32_t step = closed ? (es >> (E == 4 ? 2 : 3)) * E : es;
    const int32_t rs = static_cast<int32_t>(n) * (std::abs(es) + E) + 5;
    const size_t lead = 32 + (n - 1) * (std::abs(es) + E), bytes = lead + n * rs + 32;
    std::vector<unsigned char> src(bytes, 0xFF), dst(bytes, vt::kGuard);
    auto at = [&](std::vector<unsigned char>& m, int64_t i, int64_t j) { return m.data() + lead + i * rs + j * step; };
    std::vector<T> a(n * n), f(n * n);
    for (uint32_t i = 0; i < n; ++i)
        for (uint32_t j = 0; j <= i; ++j) {
            a[i * n + j] = i == j ? T(n + 1) : vt::randomValue<T>(rng, 0);
            std::memcpy(at(src, i, j), &a[i * n + j], E);
            std::memcpy(&f[i * n + j], at(dst, i, j), E);
        }
    ASSERT_LT(vt::cholFactor(a, f, n, vt::cholRule<T>(vt::Lay::S2, n)), 0);
    std::vector<unsigned char> want = dst;
    for (uint32_t i = 0; i < n; ++i)
        for (uint32_t j = 0; j <= i; ++j) std::memcpy(at(want, i, j), &f[i * n + j], E);
    ArgPack args;
    args.src = lead + src.data();
    args.dst = lead + dst.data();
    args.srcRowStride = args.dstRowStride = rs;
    args.srcElemStride = args.dstElemStride = es;
    args.widthHeight = n;
    std::string name = std::string("vorxCholeskyDecomp_m_") + (E == 4 ? "32f" : "64f") + "_S2";
    EXPECT_EQ(vt::call(vt::byName(name), args), vorxStatusOk) << name << " " << n << " " << es;
    EXPECT_TRUE(dst == want) << name << " order " << n << " element stride " << es;
}

TEST(CholeskyDecomp, StridesThatAreNotWholeElements)
{
    std::mt19937 rng(400);
    for (uint32_t n : {3u, 7u})
        for (int32_t extra : {2, -2}) {
            strided<float>(n, extra > 0 ? 6 : -6, rng);
            strided<double>(n, extra > 0 ? 10 : -10, rng);
        }
}

// The 64f closed forms carry the current row of L and the newest reciprocal at register
// width where the row loop reads back the stored doubles: their factors stay within
// two units in the last place of the loop's (the Pointer function runs the loop at
// every order), and are not always the same bits.
TEST(CholeskyDecomp, DoubleClosedFormsAgreeWithTheLoopInTheLastBits)
{
    int differ = 0;
    for (uint32_t n = 3; n <= 6; ++n) {
        const CatalogueEntry& e = vt::byName("vorxCholeskyDecomp_m_64f_" + std::to_string(n) + "x" + std::to_string(n));
        for (unsigned seed = 0; seed < 10; ++seed) {
            vt::Case<double> c(e, vt::dimsOf(e, n, 1), 900 + seed, vt::Data::Dominant);
            ASSERT_EQ(c.s.call(), vorxStatusOk);
            std::vector<double> loop = c.before.op("dst").object(0);
            ASSERT_LT(vt::cholFactor(c.before.op("src").object(0), loop, n, vt::cholRule<double>(vt::Lay::P, n)), 0);
            for (uint32_t i = 0; i < n; ++i)
                for (uint32_t j = 0; j <= i; ++j) {
                    double got = c.s.op("dst").get(0, i, j), want = loop[i * n + j];
                    EXPECT_LE(std::fabs(got - want), 2 * std::numeric_limits<double>::epsilon() * std::fabs(want)) << e.name;
                    differ += got != want;
                }
        }
    }
    EXPECT_GT(differ, 0);
}

// ---------------------------------------------------------------------------
// Both families

// count 0 is a bad size in every array form. A count with its top bit set is
// negative, and does nothing, except in the Pointer decompositions, which read it
// unsigned and run until an object fails (object 1 here). A negative order does
// nothing in the back substitution; the decomposition's row loop reads it unsigned,
// and a first pivot that fails returns at once.
TEST(Cholesky, ZeroAndNegativeCountsAndSizes)
{
    unsigned seed = 500;
    for (std::string_view family : {"CholeskyDecomp", "CholeskyBackSubst"})
        eachEntry(family, any, [&](auto t, const CatalogueEntry& e) {
            using T = decltype(t);
            const bool decomp = family == "CholeskyDecomp";
            const bool unsignedCount = decomp && bodyLayout(e) == vt::Lay::P;
            Dims d = vt::dimsOf(e, 3, 2);
            std::string in = decomp ? "src" : "src1";
            vt::Case<T> c(e, d, seed++, vt::Data::Dominant);
            if (d.array) {
                c.s.pack.count = 0;
                EXPECT_EQ(c.s.call(), vorxStatusBadSize) << e.name;
                EXPECT_TRUE(c.untouched("dst", 0) && c.untouched("dst", 1)) << e.name;
                if (unsignedCount) c.s.op(in).set(1, 0, 0, T(-1));
                c.want = c.s;
                c.status = vt::modelFor(e)->predict(c.s, c.want);
                c.s.pack.count = 0xFFFFFFFFu;
                EXPECT_EQ(c.s.call(), unsignedCount ? vorxStatusNotPositiveDefinite : vorxStatusOk) << e.name;
                for (uint32_t k = 0; k < 2; ++k)
                    EXPECT_TRUE(unsignedCount ? c.predicted("dst", k) : c.untouched("dst", k)) << e.name;
            } else if (!e.size) {
                c.s.op(in).set(0, 0, 0, T(-1));
                c.s.pack.widthHeight = 0x80000000u;
                EXPECT_EQ(c.s.call(), decomp ? vorxStatusNotPositiveDefinite : vorxStatusOk) << e.name;
                EXPECT_TRUE(c.untouched("dst", 0)) << e.name;
            }
        });
}

// A list entry that sums with its shift to zero: the decomposition's call for that
// object returns -8 and the loop stops there; the back substitution drops that status,
// leaves the object as it was and goes on.
TEST(Cholesky, AListEntryThatSumsToZeroWithItsShift)
{
    unsigned seed = 600;
    auto lists = [](const CatalogueEntry& c) { return std::string_view(c.layout).starts_with("L"); };
    for (std::string_view family : {"CholeskyDecomp", "CholeskyBackSubst"})
        eachEntry(family, lists, [&](auto t, const CatalogueEntry& e) {
            using T = decltype(t);
            const bool decomp = family == "CholeskyDecomp";
            for (const char* op : {decomp ? "src" : "src2", "dst"}) {
                vt::Case<T> c(e, vt::dimsOf(e, 4, 3), seed++, vt::Data::Dominant);
                ASSERT_EQ(c.status, vorxStatusOk);
                auto& l = c.s.op(op);
                l.table()[1] = reinterpret_cast<T*>(uintptr_t(0) - static_cast<uintptr_t>(l.byteShift()));
                EXPECT_EQ(c.s.call(), decomp ? vorxStatusNullPointer : vorxStatusOk) << e.name << " " << op;
                EXPECT_TRUE(c.predicted("dst", 0) && c.untouched("dst", 1)) << e.name << " " << op;
                EXPECT_TRUE(decomp ? c.untouched("dst", 2) : c.predicted("dst", 2)) << e.name << " " << op;
            }
        });
}

// Order 1: the solve applies the reciprocal twice, x = b·r·r.
TEST(CholeskyBackSubst, OrderOneAppliesTheReciprocalTwice)
{
    float l = 0.5f, b = 3, x = 0;
    ArgPack s;
    s.src1 = &l, s.src2 = &b, s.dst = &x, s.widthHeight = 1;
    EXPECT_EQ(vt::call(vt::byName("vorxCholeskyBackSubst_mv_32f"), s), vorxStatusOk);
    EXPECT_EQ(x, 0.75f);
}

// ---------------------------------------------------------------------------
// Accuracy

// A symmetric positive-definite S x S matrix of 2-norm condition number kappa:
// H diag(s) H with eigenvalues from 1 down to 1/kappa and a Householder reflection H.
std::vector<long double> conditioned(uint32_t S, long double kappa, std::mt19937& rng)
{
    std::vector<long double> v(S), a(S * S, 0.0L);
    const long double vv = vt::randomReflector(v, rng);
    auto h = [&](uint32_t i, uint32_t j) { return (i == j ? 1 : 0) - 2 * v[i] * v[j] / vv; };
    for (uint32_t i = 0; i < S; ++i)
        for (uint32_t j = 0; j < S; ++j)
            for (uint32_t k = 0; k < S; ++k)
                a[i * S + j] += h(i, k) * (S > 1 ? std::pow(kappa, -static_cast<long double>(k) / (S - 1)) : 1) * h(k, j);
    return a;
}

// ||A - L Lᵀ|| <= 4 n eps ||A|| (max norms) from well to badly conditioned matrices,
// with L read from the factor form (its diagonal the reciprocal of the stored one).
TEST(CholeskyDecomp, ResidualOverARangeOfConditionNumbers)
{
    unsigned seed = 700;
    eachEntry("CholeskyDecomp", [](const CatalogueEntry& c) { return std::string_view(c.code) == "m"; },
              [&](auto t, const CatalogueEntry& e) {
                  using T = decltype(t);
                  const long double eps = std::numeric_limits<T>::epsilon();
                  for (uint32_t S : ordersOf(e, {2, 4, 7}))
                      for (long double kappa : {1e1L, 1e3L, 1e5L}) {
                          std::mt19937 rng(seed);
                          std::vector<long double> A = conditioned(S, kappa, rng);
                          vt::Case<T> c(e, vt::dimsOf(e, S, 1), seed++);
                          long double normA = 0;
                          for (uint32_t n = 0; n < S * S; ++n) {
                              c.s.op("src").set(0, n / S, n % S, static_cast<T>(A[n]));
                              normA = std::max(normA, std::fabs(A[n] = static_cast<T>(A[n])));
                          }
                          ASSERT_EQ(c.s.call(), vorxStatusOk) << e.name;
                          const auto& d = c.s.op("dst");
                          auto L = [&](uint32_t i, uint32_t j) -> long double {
                              return j > i ? 0 : j == i ? 1 / static_cast<long double>(d.get(0, i, i)) : d.get(0, i, j);
                          };
                          long double worst = 0;
                          for (uint32_t i = 0; i < S; ++i)
                              for (uint32_t j = 0; j <= i; ++j) {
                                  long double ll = 0;
                                  for (uint32_t k = 0; k <= j; ++k) ll += L(i, k) * L(j, k);
                                  worst = std::max(worst, std::fabs(A[i * S + j] - ll));
                              }
                          EXPECT_LE(worst, 4 * S * eps * normA) << e.name << " order " << S << " condition " << kappa;
                      }
              });
}

extern "C" void dposv_(const char* uplo, const int* n, const int* nrhs, double* a, const int* lda, double* b,
                       const int* ldb, int* info);

// Factor and solve, each in Contiguous layout, against reference LAPACK in double.
TEST(CholeskyBackSubst, SolutionsAgreeWithLapack)
{
    unsigned seed = 800;
    eachEntry("CholeskyBackSubst",
              [](const CatalogueEntry& c) { return std::string_view(c.code) == "mv" && !*c.layout; },
              [&](auto t, const CatalogueEntry& e) {
                  using T = decltype(t);
                  for (uint32_t S : ordersOf(e, {1, 3, 7})) {
                      const CatalogueEntry& f = vt::byName(std::string("vorxCholeskyDecomp_m_") + e.type);
                      vt::Case<T> fc(f, vt::dimsOf(f, S, 1), seed++, vt::Data::Dominant);
                      ASSERT_EQ(fc.s.call(), vorxStatusOk);
                      vt::Case<T> c(e, vt::dimsOf(e, S, 1), seed++);
                      std::vector<double> a(S * S), x(S);
                      for (uint32_t i = 0; i < S; ++i) {
                          x[i] = c.s.op("src2").get(0, 0, i);
                          for (uint32_t j = 0; j < S; ++j) {
                              c.s.op("src1").set(0, i, j, fc.s.op("dst").get(0, i, j));
                              a[j * S + i] = fc.s.op("src").get(0, std::max(i, j), std::min(i, j));
                          }
                      }
                      int n = static_cast<int>(S), one = 1, info = -1;
                      dposv_("L", &n, &one, a.data(), &n, x.data(), &n, &info);
                      ASSERT_EQ(info, 0);
                      ASSERT_EQ(c.s.call(), vorxStatusOk);
                      const double tol = sizeof(T) == 4 ? 1e-5 : 1e-13;
                      for (uint32_t i = 0; i < S; ++i)
                          EXPECT_LE(std::fabs(c.s.op("dst").get(0, 0, i) - x[i]), tol * (1 + std::fabs(x[i])))
                              << e.name << " x[" << i << "]";
                  }
              });
}

}  // namespace
