// QR decomposition and back substitution beyond what the catalogue-wide tests check
// against the families' models: the threshold on the sum of squares, the untested
// last column of a square matrix, a failing object of an array, the untested src2
// entries and the unread object stride of the solve, and residuals and least-squares
// solutions against reference LAPACK over a range of condition numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "harness.h"

namespace {

using vt::byName;

// A specimen of `name` (sizes w x h where they are arguments) changed by `set`,
// called and compared with the model bit for bit, then handed to `after`; returns
// the model's status.
template <class T>
vorxStatus agreed(const char* name, uint32_t w, uint32_t h, uint32_t count,
                  const std::function<void(vt::Specimen<T>&)>& set,
                  const std::function<void(const vt::Specimen<T>&)>& after = {})
{
    const CatalogueEntry& e = byName(name);
    vt::Dims d = vt::dimsOf(e, 0, count);
    if (!e.size) d.set("width", w), d.set("height", h);
    auto s = vt::Specimen<T>::make(e, d, vt::Draw{vt::Data::Random, 7});
    set(s);
    vt::Specimen<T> out = s;
    vorxStatus st = vt::modelFor(e)->predict(s, out);
    EXPECT_EQ(vt::verify(*vt::modelFor(e), s), "") << name;
    if (after) after(s);
    return st;
}

// Column 0 of a 3x3 matrix: its sum of squares just below, at and above 2^-23, a
// NaN anywhere in it, and a norm below 3.45e-4 that fails in 64f too.
template <class T>
void thresholdCases(const char* name)
{
    const T h = T(0x1p-12), nan = std::numeric_limits<T>::quiet_NaN();
    const T below = std::nextafter(h, T(0)), above = std::nextafter(h, T(1));
    struct Col {
        T a, b, c;
        vorxStatus st;
    };
    for (Col col : {Col{h, below, 0, vorxStatusZeroDivide}, Col{h, h, 0, vorxStatusOk}, Col{-h, above, 0, vorxStatusOk},
                    Col{nan, 1, 1, vorxStatusZeroDivide}, Col{1, 1, nan, vorxStatusZeroDivide},
                    Col{T(3e-4), 0, 0, vorxStatusZeroDivide}}) {
        vorxStatus st = agreed<T>(name, 3, 3, 1, [&](vt::Specimen<T>& s) {
            T v[] = {col.a, col.b, col.c};
            for (uint32_t i = 0; i < 3; ++i) s.op("src").set(0, i, 0, v[i]);
        });
        EXPECT_EQ(st, col.st) << name << " column " << col.a << " " << col.b << " " << col.c;
    }
}

TEST(QRDecomp, ThresholdOnTheSumOfSquares)
{
    thresholdCases<float>("vorxQRDecomp_m_32f_3x3");
    thresholdCases<double>("vorxQRDecomp_m_64f_S2");
}

// A zero last column: never tested in a square matrix (R[2][2] = 0, and the solve
// gives an infinity or NaN with status 0), tested in a tall one. A width above the
// height fails at step `height`, dst changed by the steps before.
TEST(QRDecomp, LastColumnAndWidthAboveHeight)
{
    auto zeroLast = [](vt::Specimen<double>& s) {
        for (uint32_t i = 0; i < s.d["height"]; ++i) s.op("src").set(0, i, 2, 0.0);
    };
    EXPECT_EQ(agreed<double>("vorxQRDecomp_m_64f", 3, 3, 1, zeroLast), vorxStatusOk);
    EXPECT_EQ(agreed<double>("vorxQRDecomp_m_64f", 3, 4, 1, zeroLast), vorxStatusZeroDivide);
    std::vector<double> a = {2, 1, 0, 4, 3, 0, 2, 1, 0}, r(9), sc(3), b = {1, 2, 3}, x(3);
    ArgPack p;
    p.src = a.data(), p.dst = r.data(), p.scratch = sc.data();
    p.srcRowStride = p.dstRowStride = 24;
    EXPECT_EQ(vt::call(byName("vorxQRDecomp_m_64f_3x3"), p), vorxStatusOk);
    EXPECT_EQ(std::fabs(r[8]), 0.0);
    p.src1 = r.data(), p.src1RowStride = 24, p.src2 = b.data(), p.dst = x.data();
    EXPECT_EQ(vt::call(byName("vorxQRBackSubst_mv_64f_3x3"), p), vorxStatusOk);
    EXPECT_FALSE(std::isfinite(x[2]));

    EXPECT_EQ(agreed<float>("vorxQRDecomp_ma_32f_PS2", 5, 3, 2, [](vt::Specimen<float>&) {}), vorxStatusZeroDivide);
}

// Object 2 of five fails at step 1 (its column 0 is already reduced, column 1 zero
// below row 0): objects 0 and 1 complete, object 2 with reflector 0 applied (row 0
// negated), objects 3 and 4 untouched, also where objects go through in groups.
TEST(QRDecomp, StateAfterAFailingObject)
{
    for (const char* name : {"vorxQRDecomp_ma_32f_4x4_L", "vorxQRDecomp_ma_32f_6x6", "vorxQRDecomp_ma_32f_3x3_PS2",
                             "vorxQRDecomp_ma_64f_P"}) {
        auto run = [&](auto t) {
            using T = decltype(t);
            const CatalogueEntry& e = byName(name);
            const uint32_t n = e.size ? e.size : 3;
            std::vector<std::vector<T>> later;
            auto set = [&](vt::Specimen<T>& s) {
                for (uint32_t i = 0; i < n; ++i)
                    for (uint32_t j = 0; j < n; ++j) s.op("src").set(2, i, j, i == 0 ? T(j + 1) : j < 2 ? T(0) : T(i + j));
                later = {s.op("dst").object(3), s.op("dst").object(4)};
            };
            auto after = [&](const vt::Specimen<T>& s) {
                EXPECT_EQ(s.op("dst").object(3), later[0]) << name;
                EXPECT_EQ(s.op("dst").object(4), later[1]) << name;
                for (uint32_t j = 0; j < n; ++j) EXPECT_EQ(s.op("dst").get(2, 0, j), -T(j + 1)) << name;
            };
            EXPECT_EQ(agreed<T>(name, n, n, 5, set, after), vorxStatusZeroDivide) << name;
        };
        if (vt::isF32(byName(name))) run(0.0f); else run(0.0);
    }
}

// In the Pointer layouts the solve tests the src2 entries below `width` only, but
// copies all `height` of them: a null entry beyond is followed.
TEST(QRBackSubst, Src2EntriesBeyondWidthAreReadUntested)
{
    for (uint32_t entry : {1u, 3u}) {
        const CatalogueEntry& e = byName("vorxQRBackSubst_mv_32f_P");
        vt::Dims d = vt::dimsOf(e, 0, 1);
        d.set("width", 2), d.set("height", 4);
        auto s = vt::Specimen<float>::make(e, d, vt::Draw{});
        s.op("src2").table()[entry] = nullptr;
        vorxStatus st = 0;
        EXPECT_EQ(vt::faults([&] { st = s.call(); }), entry >= 2) << entry;
        if (entry < 2) EXPECT_EQ(st, vorxStatusNullPointer);
    }
    // At count 0 nothing is read: such a null entry is not seen at all.
    EXPECT_EQ(agreed<double>("vorxQRBackSubst_mava_64f_PS2", 2, 4, 0,
                             [](vt::Specimen<double>& s) { s.op("src2").table()[3] = nullptr; }),
              vorxStatusOk);
}

// The object stride of the one factor of mva is accepted and never read.
TEST(QRBackSubst, OneFactorIgnoresItsObjectStride)
{
    unsigned seed = 40;
    for (const auto* e : vt::entries("QRBackSubst", [](const CatalogueEntry& c) {
             std::string_view l = c.layout;
             return std::string_view(c.code) == "mva" && (l == "" || l == "S2" || l == "L" || l == "LS2");
         })) {
        auto run = [&](auto t) {
            vt::Case<decltype(t)> c(*e, vt::dimsOf(*e, 4, 3), seed++);
            c.s.pack.src1ObjectStride = static_cast<int32_t>(0x8badf00d);
            EXPECT_EQ(c.s.call(), vorxStatusOk) << e->name;
            for (uint32_t k = 0; k < 3; ++k) EXPECT_TRUE(c.predicted("dst", k)) << e->name << " object " << k;
        };
        if (vt::isF32(*e)) run(0.0f); else run(0.0);
    }
}

extern "C" void dgels_(const char* trans, const int* m, const int* n, const int* nrhs, double* a, const int* lda,
                       double* b, const int* ldb, double* work, const int* lwork, int* info);

// An h x w matrix H1 [S; 0] H2 with singular values S from kappa down to 1; H1, H2
// reflections of random vectors.
template <class T>
std::vector<T> conditioned(uint32_t w, uint32_t h, long double kappa, std::mt19937& rng)
{
    std::vector<long double> u(h), v(w);
    const long double uu = vt::randomReflector(u, rng), vv = vt::randomReflector(v, rng);
    std::vector<T> a(h * w);
    for (uint32_t i = 0; i < h; ++i)
        for (uint32_t j = 0; j < w; ++j) {
            long double x = 0;
            for (uint32_t k = 0; k < w; ++k)
                x += ((i == k) - 2 * u[i] * u[k] / uu) * std::pow(kappa, 1 - k / std::max(1.0L, w - 1.0L)) *
                     ((k == j) - 2 * v[k] * v[j] / vv);
            a[i * w + j] = static_cast<T>(x);
        }
    return a;
}

// Over condition numbers 10 to 1e5, square and tall: A - Q R small against A (Q R
// rebuilt from the stored reflectors in long double), and the least-squares
// solution of a system with a residual against LAPACK's.
TEST(QR, ResidualAndLeastSquaresAgainstLapack)
{
    std::mt19937 rng(9000);
    for (const auto* e : vt::entries("QRDecomp", [](const CatalogueEntry& c) { return std::string_view(c.code) == "m" && !*c.layout; })) {
        auto run = [&](auto tag) {
            using T = decltype(tag);
            const long double eps = std::numeric_limits<T>::epsilon();
            std::string solve = std::string(e->name).replace(0, 14, "vorxQRBackSubst_mv");
            std::vector<std::pair<uint32_t, uint32_t>> shapes = {{3, 5}, {4, 6}, {7, 7}};
            if (e->size) shapes = {{e->size, e->size}};
            for (auto [w, h] : shapes)
                for (long double kappa : {1e1L, 1e3L, 1e5L}) {
                    std::vector<T> a = conditioned<T>(w, h, kappa, rng), f(h * w), sc(h), b(h), x(w);
                    ArgPack p;
                    p.src = a.data(), p.dst = f.data(), p.scratch = sc.data();
                    p.srcRowStride = p.dstRowStride = p.src1RowStride = static_cast<int32_t>(w * sizeof(T));
                    p.width = w, p.height = h;
                    ASSERT_EQ(vt::call(*e, p), vorxStatusOk) << e->name;
                    // Q R = H0 H1 ... R, each H = I + beta v v'.
                    std::vector<long double> qr(h * w, 0);
                    for (uint32_t i = 0; i < h; ++i)
                        for (uint32_t j = i; j < w; ++j) qr[i * w + j] = f[i * w + j];
                    for (uint32_t k = w == h ? w - 1 : w; k-- > 0;) {
                        std::vector<long double> v(h, 0);
                        long double vv = 1;
                        v[k] = 1;
                        for (uint32_t i = k + 1; i < h; ++i) vv += (v[i] = f[i * w + k]) * v[i];
                        for (uint32_t j = 0; j < w; ++j) {
                            long double t = 0;
                            for (uint32_t i = k; i < h; ++i) t += v[i] * qr[i * w + j];
                            for (uint32_t i = k; i < h; ++i) qr[i * w + j] += -2 / vv * v[i] * t;
                        }
                    }
                    long double normA = 0, worst = 0;
                    for (uint32_t n = 0; n < h * w; ++n) {
                        normA = std::max(normA, std::fabs(static_cast<long double>(a[n])));
                        worst = std::max(worst, std::fabs(a[n] - qr[n]));
                    }
                    EXPECT_LE(worst, 2 * h * eps * normA) << e->name << " " << w << "x" << h << " condition " << kappa;

                    for (uint32_t i = 0; i < h; ++i) {
                        long double s = vt::randomValue<double>(rng, -1);
                        for (uint32_t j = 0; j < w; ++j) s += a[i * w + j] * ((j % 3) - 1.0L);
                        b[i] = static_cast<T>(s);
                    }
                    p.src1 = f.data(), p.src2 = b.data(), p.dst = x.data();
                    ASSERT_EQ(vt::call(byName(solve), p), vorxStatusOk) << solve;
                    std::vector<double> colMajor(h * w), y(b.begin(), b.end()), work(512);
                    for (uint32_t i = 0; i < h; ++i)
                        for (uint32_t j = 0; j < w; ++j) colMajor[j * h + i] = a[i * w + j];
                    int m = static_cast<int>(h), n = static_cast<int>(w), one = 1, lwork = 512, info = -1;
                    dgels_("N", &m, &n, &one, colMajor.data(), &m, y.data(), &m, work.data(), &lwork, &info);
                    ASSERT_EQ(info, 0);
                    long double err = 0, normX = 0;
                    for (uint32_t j = 0; j < w; ++j) {
                        err = std::max(err, std::fabs(x[j] - static_cast<long double>(y[j])));
                        normX = std::max(normX, std::fabs(static_cast<long double>(y[j])));
                    }
                    EXPECT_LE(err, h * eps * kappa * (normX + 1))
                        << solve << " " << w << "x" << h << " condition " << kappa;
                }
        };
        if (vt::isF32(*e)) run(0.0f); else run(0.0);
    }
}

}  // namespace
