// The model of inversion: the adjugate of any size through the determinant's
// elimination, and the fixed sizes scheme by scheme (closed 3x3 and 4x4, the 2+3
// and 3+3 partitions, the packed 32f forms with the reciprocal estimate taken from
// the instruction at run time), each with its test, its order of arithmetic and
// what it leaves in dst when it fails.
#include <xmmintrin.h>

#include <array>

#include "harness.h"
#include "models/det.h"

namespace vt {
namespace {

using L = long double;

bool packedForm(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return isF32(e) && e.size && (l == "" || l == "L");
}

// The members whose first block test (dP, or the 3x3 block) lets a NaN through.
bool firstBlockAdmitsNaN(const CatalogueEntry& e)
{
    std::string_view l = e.layout, code = e.code;
    if (code != "ma") return false;
    if (e.size == 5) return isF32(e);
    return e.size == 6 && !isF32(e) && (l == "S2" || l == "P" || l == "LS2");
}

struct Arith : DetArith {
    double band;
    L recip(L d) const { return single ? f32::div(1.0f, float(d)) : 1.0L / d; }
    bool inside(L d) const { return d > -band && d < band; }              // a NaN passes
    bool notOutside(L d) const { return !(d <= -band || d >= band); }  // a NaN fails
};

// The reciprocal estimate of this processor (or emulator) with one Newton step.
float rcp(float d) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(d))); }
float newton3(float d)
{
    float r0 = rcp(d);
    return f32::sub(f32::add(r0, r0), f32::mul(f32::mul(d, r0), r0));
}
float newton4(float d)
{
    float r0 = rcp(d);
    return f32::sub(f32::add(r0, r0), f32::mul(d, f32::mul(r0, r0)));
}

using Get = std::function<L(int, int)>;
using Put = std::function<void(int, int, L)>;

// 3x3: the numerators of the cofactor table; d along row 0, or down column 0 in the
// packed forms (with the test d == 0 and the estimate).
bool inverse3(const Get& x, const Put& put, const Arith& ar, bool firstAdmits, bool packed)
{
    auto two = [&](int i, int j, int k, int l, int m, int n, int o, int p) {
        return ar.sub(ar.mul(x(i, j), x(k, l)), ar.mul(x(m, n), x(o, p)));
    };
    const L num[3][3] = {{two(1, 1, 2, 2, 1, 2, 2, 1), two(0, 2, 2, 1, 0, 1, 2, 2), two(0, 1, 1, 2, 0, 2, 1, 1)},
                         {two(1, 2, 2, 0, 1, 0, 2, 2), two(0, 0, 2, 2, 0, 2, 2, 0), two(0, 2, 1, 0, 0, 0, 1, 2)},
                         {two(1, 0, 2, 1, 1, 1, 2, 0), two(0, 1, 2, 0, 0, 0, 2, 1), two(0, 0, 1, 1, 0, 1, 1, 0)}};
    L d = packed ? ar.add(ar.add(ar.mul(x(1, 0), num[0][1]), ar.mul(x(2, 0), num[0][2])), ar.mul(x(0, 0), num[0][0]))
                 : ar.add(ar.add(ar.mul(x(0, 0), num[0][0]), ar.mul(x(0, 1), num[1][0])), ar.mul(x(0, 2), num[2][0]));
    if (packed ? d == 0 : firstAdmits ? ar.inside(d) : ar.notOutside(d)) return false;
    L r = packed ? newton3(float(d)) : ar.recip(d);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) put(i, j, ar.mul(num[i][j], r));
    return true;
}

// 4x4 scalar and 64f: the adjugate stored element by element (dst[i][j] the cofactor
// of a[j][i], down its first column, its differences the other way round where i + j
// is odd), d from row 0 as stored, then the scaling pass.
template <class T>
bool inverse4(const Get& x, std::vector<T>& d, const Arith& ar)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            int r[3], c[3], nr = 0, nc = 0;
            for (int q = 0; q < 4; ++q) {
                if (q != j) r[nr++] = q;
                if (q != i) c[nc++] = q;
            }
            auto diff = [&](L p, L q) { return (i + j) % 2 ? ar.sub(q, p) : ar.sub(p, q); };
            auto m = [&](int s, int t, int u, int v) { return ar.mul(x(r[s], c[t]), x(r[u], c[v])); };
            L t0 = ar.mul(diff(m(1, 1, 2, 2), m(2, 1, 1, 2)), x(r[0], c[0]));
            L t1 = ar.mul(diff(m(2, 1, 0, 2), m(2, 2, 0, 1)), x(r[1], c[0]));
            L t2 = ar.mul(diff(m(0, 1, 1, 2), m(1, 1, 0, 2)), x(r[2], c[0]));
            d[i * 4 + j] = stored<T>(ar.add(ar.add(t0, t1), t2));
        }
    L det = ar.add(ar.add(ar.add(ar.mul(x(1, 0), d[1]), ar.mul(x(2, 0), d[2])), ar.mul(x(3, 0), d[3])), ar.mul(x(0, 0), d[0]));
    if (ar.inside(det)) return false;
    L r = ar.recip(det);
    for (auto& v : d) v = stored<T>(ar.mul(v, r));
    return true;
}

// The 2+3 and 3+3 partitions.
bool partitioned(const Get& src, int N, const Put& put, const Arith& ar, bool firstAdmits)
{
    const int b = N - 3;
    int c[6] = {0, 1, 2, 3, 4, 5}, best = 0;
    for (int j = 1; j < 5; ++j)
        if (std::fabs(src(0, j)) > std::fabs(src(0, best))) best = j;
    std::swap(c[0], c[best]);
    auto pick = [&](int place, const std::function<L(int)>& value) {
        int arg = place;
        L top = value(place);
        for (int t = place + 1; t < 5; ++t)
            if (std::fabs(value(t)) > std::fabs(top)) top = value(t), arg = t;
        std::swap(c[place], c[arg]);
    };
    auto a = [&](int i, int j) { return src(i, c[j]); };
    auto two = [&](const Get& x, int i, int j, int k, int l, int m, int n, int o, int p) {
        return ar.sub(ar.mul(x(i, j), x(k, l)), ar.mul(x(m, n), x(o, p)));
    };
    pick(1, [&](int t) { return two(src, 0, c[0], 1, c[t], 0, c[t], 1, c[0]); });
    if (b == 3)
        pick(2, [&](int t) {
            int cols[3] = {c[0], c[1], c[t]};
            Get x = [&](int i, int j) { return src(i, cols[j]); };
            return ar.add(ar.add(ar.mul(two(x, 1, 1, 2, 2, 1, 2, 2, 1), x(0, 0)), ar.mul(two(x, 1, 2, 2, 0, 1, 0, 2, 2), x(0, 1))),
                          ar.mul(two(x, 1, 0, 2, 1, 1, 1, 2, 0), x(0, 2)));
        });
    L pinv[3][3], y[3][3], s[3][3], sinv[3][3], w[3][3], z[3][3];
    if (b == 2) {
        L d = two(a, 0, 0, 1, 1, 1, 0, 0, 1);
        if (firstAdmits ? ar.inside(d) : ar.notOutside(d)) return false;
        L r = ar.recip(d);
        pinv[0][0] = ar.mul(a(1, 1), r);
        pinv[0][1] = ar.mul(ar.sub(0, a(0, 1)), r);
        pinv[1][0] = ar.mul(ar.sub(0, a(1, 0)), r);
        pinv[1][1] = ar.mul(a(0, 0), r);
    } else if (!inverse3(a, [&](int i, int j, L v) { pinv[i][j] = v; }, ar, firstAdmits, false)) {
        return false;
    }
    auto sum = [&](int n, const std::function<L(int)>& x, const std::function<L(int)>& y2, L init, bool fromInit) {
        L t = fromInit ? init : ar.mul(x(0), y2(0));
        for (int k = fromInit ? 0 : 1; k < n; ++k) t = ar.add(t, ar.mul(x(k), y2(k)));
        return t;
    };
    for (int i = 0; i < b; ++i)
        for (int j = 0; j < 3; ++j)
            y[i][j] = ar.sub(0, sum(b, [&](int k) { return pinv[i][k]; }, [&](int k) { return a(k, b + j); }, 0, false));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            s[i][j] = sum(b, [&](int k) { return a(b + i, k); }, [&](int k) { return y[k][j]; }, a(b + i, b + j), true);
    if (!inverse3([&](int i, int j) { return s[i][j]; }, [&](int i, int j, L v) { sinv[i][j] = v; }, ar, true, false))
        return false;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < b; ++j) {
            w[i][j] = sum(b, [&](int k) { return a(b + i, k); }, [&](int k) { return pinv[k][j]; }, 0, false);
        }
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < b; ++j)
            z[i][j] = ar.sub(0, sum(3, [&](int k) { return sinv[i][k]; }, [&](int k) { return w[k][j]; }, 0, false));
    for (int i = 0; i < b; ++i)
        for (int j = 0; j < N; ++j)
            put(c[i], j, j < b ? sum(3, [&](int k) { return y[i][k]; }, [&](int k) { return z[k][j]; }, pinv[i][j], true)
                               : sum(3, [&](int k) { return y[i][k]; }, [&](int k) { return sinv[k][j - b]; }, 0, false));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < N; ++j) put(c[b + i], j, j < b ? z[i][j] : sinv[i][j - b]);
    return true;
}

// The packed 4x4 in lanes: C0..C3, the six rounds, d = (P3 + P1) + (P2 + P0).
using V4 = std::array<float, 4>;
V4 lanes(const V4& a, const V4& b, float (*f)(float, float))
{
    return {f(a[0], b[0]), f(a[1], b[1]), f(a[2], b[2]), f(a[3], b[3])};
}
V4 M(const V4& a, const V4& b) { return lanes(a, b, f32::mul); }
V4 A(const V4& a, const V4& b) { return lanes(a, b, f32::add); }
V4 S(const V4& a, const V4& b) { return lanes(a, b, f32::sub); }
V4 E(const V4& a) { return {a[1], a[0], a[3], a[2]}; }
V4 H(const V4& a) { return {a[2], a[3], a[0], a[1]}; }

bool packed4(const Get& x, std::array<V4, 4>& out)
{
    auto f = [&](int i, int j) { return float(x(i, j)); };
    V4 C0 = {f(0, 0), f(1, 0), f(2, 0), f(3, 0)}, C1 = {f(2, 1), f(3, 1), f(0, 1), f(1, 1)};
    V4 C2 = {f(0, 2), f(1, 2), f(2, 2), f(3, 2)}, C3 = {f(2, 3), f(3, 3), f(0, 3), f(1, 3)}, D = H(C2), t, M0, M1, M2, M3;
    t = E(M(C2, C3));
    M0 = S(M(C1, H(t)), M(C1, t));
    M1 = H(S(M(C0, H(t)), M(C0, t)));
    t = E(M(C1, C2));
    M0 = S(A(M(C3, t), M0), M(C3, H(t)));
    M3 = H(S(M(C0, H(t)), M(C0, t)));
    t = E(M(H(C1), C3));
    M0 = S(A(M(D, t), M0), M(D, H(t)));
    M2 = H(S(M(C0, H(t)), M(C0, t)));
    t = E(M(C0, C1));
    M2 = S(M(C3, H(t)), A(M(C3, t), M2));
    M3 = S(S(M(D, t), M3), M(D, H(t)));
    t = E(M(C0, C3));
    M1 = A(M(D, H(t)), S(M1, M(D, t)));
    M2 = S(A(M(C1, t), M2), M(C1, H(t)));
    t = E(M(C0, D));
    M1 = S(A(M(C3, t), M1), M(C3, H(t)));
    M3 = A(M(C1, H(t)), S(M3, M(C1, t)));
    V4 P = M(C0, M0);
    float d = f32::add(f32::add(P[3], P[1]), f32::add(P[2], P[0]));
    if (d == 0) return false;
    V4 r = {newton4(d), 0, 0, 0};
    r = {r[0], r[0], r[0], r[0]};
    out = {M(M0, r), M(M1, r), M(M2, r), M(M3, r)};
    return true;
}

// The packed 5x5 and 6x6: pivot columns and elimination steps down to the packed
// 4x4, whose Schur complement is stored in dst's bottom right block first.
bool pivoted(const Get& src, int N, std::vector<float>& dst)
{
    using Rows = std::vector<std::vector<float>>;
    auto pivot = [&](const Rows& a, bool nanInside) {
        const float x = a[0][0];
        bool inside = nanInside ? !(x <= -1e-07 || x >= 1e-07) : (x > -1e-07 && x < 1e-07);
        if (!inside) return 0;
        int best = -1;
        float top = -1;
        for (size_t j = 0; j < a.size(); ++j)
            if (std::fabs(a[0][j]) > top) top = std::fabs(a[0][j]), best = static_cast<int>(j);
        return best < 0 || (a[0][best] > -1e-07 && a[0][best] < 1e-07) ? -1 : best;
    };
    struct Step {
        int n, c;
        float r;
        std::vector<float> u, v;
    };
    auto reduce = [&](Rows& a, Step& st) {
        const int n = st.n;
        for (auto& row : a) std::swap(row[0], row[st.c]);
        st.r = newton4(a[0][0]);
        st.u.assign(n, 0);
        st.v.assign(n, 0);
        Rows s(n - 1, std::vector<float>(n - 1));
        for (int j = 1; j < n; ++j) st.u[j] = f32::mul(a[0][j], st.r);
        for (int i = 1; i < n; ++i) {
            st.v[i] = f32::mul(a[i][0], st.r);
            for (int j = 1; j < n; ++j) s[i - 1][j - 1] = f32::sub(a[i][j], f32::mul(a[i][0], st.u[j]));
        }
        return s;
    };
    auto assemble = [&](const Step& st, const Rows& x) {
        const int n = st.n;
        Rows out(n, std::vector<float>(n));
        auto row = [&](int t) { return t == 0 ? st.c : t == st.c ? 0 : t; };
        std::vector<float> y(n);
        for (int i = 1; i < n; ++i) {
            float acc = f32::mul(x[i - 1][0], st.v[1]);
            for (int k = 2; k < n; ++k) acc = f32::add(acc, f32::mul(x[i - 1][k - 1], st.v[k]));
            y[i] = acc;
            out[row(i)][0] = f32::sub(0, acc);
            for (int j = 1; j < n; ++j) out[row(i)][j] = x[i - 1][j - 1];
        }
        for (int j = 1; j < n; ++j) {
            float acc = f32::mul(st.u[1], x[0][j - 1]);
            for (int k = 2; k < n; ++k) acc = f32::add(acc, f32::mul(st.u[k], x[k - 1][j - 1]));
            out[row(0)][j] = f32::sub(0, acc);
        }
        float t = f32::mul(st.u[1], y[1]);
        for (int k = 2; k < n; ++k) t = f32::add(t, f32::mul(st.u[k], y[k]));
        out[row(0)][0] = f32::add(st.r, t);
        return out;
    };
    Rows a(N, std::vector<float>(N));
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) a[i][j] = float(src(i, j));
    std::vector<Step> steps;
    while (static_cast<int>(a.size()) > 4) {
        Step st{static_cast<int>(a.size()), pivot(a, N == 6), 0, {}, {}};
        if (st.c < 0) return false;
        a = reduce(a, st);
        steps.push_back(st);
    }
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) dst[(N - 4 + i) * N + N - 4 + j] = a[i][j];
    std::array<V4, 4> x4;
    if (!packed4([&](int i, int j) { return L(a[i][j]); }, x4)) return false;
    Rows x(4, std::vector<float>(4));
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) x[i][j] = x4[i][j];
    for (size_t k = steps.size(); k-- > 0;) x = assemble(steps[k], x);
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) dst[i * N + j] = x[i][j];
    return true;
}

// One fixed-size object into d (which holds dst's old values), as far as it goes.
template <class T>
bool fixedInverse(const CatalogueEntry& e, const std::vector<T>& a, std::vector<T>& d)
{
    const int N = static_cast<int>(e.size);
    Arith ar;
    ar.single = isF32(e);
    ar.band = isF32(e) ? 1e-07 : 1e-15;
    Get x = [&](int i, int j) { return L(a[i * N + j]); };
    Put put = [&](int i, int j, L v) { d[i * N + j] = stored<T>(v); };
    if (!packedForm(e)) {
        if (N == 3) return inverse3(x, put, ar, true, false);
        if (N == 4) return inverse4(x, d, ar);
        return partitioned(x, N, put, ar, firstBlockAdmitsNaN(e));
    }
    if constexpr (sizeof(T) == 4) {
        if (N == 3) return inverse3(x, put, ar, true, true);
        if (N >= 5) return pivoted(x, N, d);
        std::array<V4, 4> rows;
        if (!packed4(x, rows)) return false;
        for (int i = 0; i < 16; ++i) d[i] = rows[i / 4][i % 4];
        return true;
    }
    return false;
}

// Any size: the determinant, then every cofactor by its own elimination.
template <class T>
bool adjugate(const std::vector<T>& a, uint32_t S, std::vector<T>& d)
{
    using W = ElimWide<T>;
    Elimination<T> w(S);
    w.a = a;
    W run = 1;
    auto step = [](W& r) { return [&r](T p) { r = elimMul(W(p), r); }; };
    if (!w.reduce(S, step(run)) || !lastPasses(w.last(S))) return false;
    W det = w.finish(run, S);
    W inv = sizeof(T) == 4 ? W(f32::div(1.0f, float(det))) : W(1.0L / det);
    const uint32_t m = S - 1;
    for (uint32_t i = 0; i < S; ++i)
        for (uint32_t j = 0; j < S; ++j) {
            Elimination<T> c(S);
            for (uint32_t q = 0; q < m; ++q)
                for (uint32_t p = 0; p < m; ++p) c.at(q, p) = a[(q + (q >= i)) * S + p + (p >= j)];
            W minor = 1;
            if (!c.reduce(m, step(minor))) minor = 0;
            W cof = lastPasses(c.last(m)) ? c.finish(minor, m) : W(0);
            d[j * S + i] = stored<T>(elimMul(elimMul(cof, inv), W((i + j) % 2 ? -1 : 1)));
        }
    return true;
}

class Invert : public ModelOf<Invert> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "Invert"; }

    // Order 1 lies outside the contract of the any-size members.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        for (Dims d : defaultCases(e))
            if (e.size || d["size"] != 1) out.push_back(d);
        return out;
    }
    void fitDims(const CatalogueEntry& e, Dims& d) const override
    {
        if (!e.size && d["size"] == 1) d.set("size", 2);
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        Lay l = layoutOf(o.layout);
        if (!e.size) return Model::entryRule(e, o);
        if (l == Lay::L && isF32(e)) return EntryRule::Untested;  // shifted addresses (test_invert.cpp)
        if (l == Lay::L || l == Lay::LS2 || l == Lay::P || l == Lay::PS2) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }
    // A single Pointer matrix of any size meets a null entry while it copies the
    // source into scratch: dst stands untouched.
    bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t, uint32_t& n) const override
    {
        n = 0;
        return true;
    }
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        return name == "src" && packedForm(e) && e.size <= 4;
    }
    // The packed forms hold the processor's reciprocal estimate (exact under the emulator).
    bool sameOnEveryMachine(const CatalogueEntry& e) const override { return !packedForm(e); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const uint32_t S = in.d["size"];
        if (!e.size && S == 0) return vorxStatusBadSize;
        if (in.has("scratch")) out.leaveAllOpen("scratch");
        Laid<T>& dst = out.op("dst");
        for (uint32_t n = 0; n < in.objects(); ++n) {
            std::vector<T> a = in.op("src").object(n), d = dst.object(n);
            bool ok = e.size ? fixedInverse(e, a, d) : adjugate(a, S, d);
            for (uint32_t k = 0; k < S * S; ++k) dst.set(n, k / S, k % S, d[k]);
            if (!ok) return vorxStatusZeroDivide;
        }
        return vorxStatusOk;
    }
};

const Invert kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
