// The models of the QR decomposition and back substitution: the reflections in the
// order and at the width the family promises, the one scratch that every object
// uses in turn, and the src2 entries of the solve that are read but never tested.
#include "harness.h"

namespace vt {
namespace {

// The reference arithmetic: 32f one rounding per operation, 64f at register width
// with `round` where the library stores a double.
template <class T>
struct Ref {
    using W = float;
    static W add(W a, W b) { return f32::add(a, b); }
    static W sub(W a, W b) { return f32::sub(a, b); }
    static W mul(W a, W b) { return f32::mul(a, b); }
    static W div(W a, W b) { return f32::div(a, b); }
    static T round(W v) { return v; }
    static W root(W s)
    {
        volatile float r = static_cast<float>(std::sqrt(static_cast<long double>(s)));
        return r;
    }
};
template <>
struct Ref<double> {
    using W = long double;
    static W add(W a, W b) { return a + b; }
    static W sub(W a, W b) { return a - b; }
    static W mul(W a, W b) { return a * b; }
    static W div(W a, W b) { return a / b; }
    static double round(W v) { return roundToDouble(v); }
    static W root(W s) { return std::sqrt(s); }
};

uint32_t reflectors(uint32_t w, uint32_t h) { return w == h ? w - 1 : w; }

// Factorises a dense row-major h x w matrix in place with scratch `sc`; false at
// the first column that cannot be reflected, the earlier steps applied.
template <class T>
bool qrFactor(std::vector<T>& d, std::vector<T>& sc, uint32_t w, uint32_t h)
{
    using R = Ref<T>;
    using W = typename R::W;
    auto at = [&](uint32_t i, uint32_t j) -> T& { return d[i * w + j]; };
    for (uint32_t k = 0; k < reflectors(w, h); ++k) {
        W sum = 0;
        for (uint32_t i = k; i < h; ++i) sum = R::add(sum, R::mul(at(i, k), at(i, k)));
        if (!(std::fabs(static_cast<long double>(sum)) >= 0x1p-23L)) return false;
        W norm = R::root(sum), a = at(k, k);
        W r = R::div(1, a > 0 ? R::add(a, norm) : R::sub(a, norm));
        W v = 1;
        sc[k] = 1;
        for (uint32_t i = k + 1; i < h; ++i) {
            W p = R::mul(at(i, k), r);
            sc[i] = R::round(p);
            v = R::add(v, R::mul(p, p));
        }
        W beta = R::div(-2, v);
        for (uint32_t j = k; j < w; ++j) {
            W t = at(k, j);
            for (uint32_t i = k + 1; i < h; ++i) t = R::add(t, R::mul(at(i, j), sc[i]));
            t = R::mul(t, beta);
            for (uint32_t i = k; i < h; ++i) at(i, j) = R::round(R::add(at(i, j), R::mul(sc[i], t)));
        }
        for (uint32_t i = k + 1; i < h; ++i) at(i, k) = sc[i];
    }
    return true;
}

// Solves from factor `m(i, j)` with b already in `sc`, into x.
template <class T, class M>
void qrSolve(M m, std::vector<T>& sc, std::vector<T>& x, uint32_t w, uint32_t h)
{
    using R = Ref<T>;
    using W = typename R::W;
    for (uint32_t k = 0; k < reflectors(w, h); ++k) {
        W v = 1, t = sc[k];
        for (uint32_t i = k + 1; i < h; ++i) {
            v = R::add(v, R::mul(m(i, k), m(i, k)));
            t = R::add(t, R::mul(sc[i], m(i, k)));
        }
        t = R::mul(t, R::div(-2, v));
        sc[k] = R::round(R::add(sc[k], t));
        for (uint32_t i = k + 1; i < h; ++i) sc[i] = R::round(R::add(sc[i], R::mul(m(i, k), t)));
    }
    x[w - 1] = R::round(R::div(sc[w - 1], m(w - 1, w - 1)));
    for (uint32_t r = w - 1; r-- > 0;) {
        W u = 0;
        for (uint32_t j = r + 1; j < w; ++j) u = R::add(u, R::mul(m(r, j), x[j]));
        x[r] = R::round(R::div(R::sub(sc[r], u), m(r, r)));
    }
}

// The shared part of both models: size sets with tall shapes (and five objects, which
// the fixed 32f sizes take in groups and one by one), the frame's checks.
template <class M>
class QRModel : public ModelOf<M> {
public:
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        std::vector<std::pair<uint32_t, uint32_t>> shapes = {{1, 1}, {1, 4}, {3, 3}, {2, 5}, {4, 6}, {7, 7}, {5, 3}};
        for (uint32_t c : isArrayCall(e) ? std::vector<uint32_t>{0, 1, 5} : std::vector<uint32_t>{1})
            for (auto [w, h] : e.size ? decltype(shapes){{e.size, e.size}} : shapes) {
                Dims d = dimsOf(e, 0, c);
                d.set("width", w);
                d.set("height", h);
                this->fitDims(e, d);
                out.push_back(d);
            }
        return out;
    }
    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        if (!isArrayCall(e) && layoutOf(o.layout) == Lay::P) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }
    template <class T>
    static bool refused(const Specimen<T>& s) { return !s.e->size && (!s.d["width"] || !s.d["height"]); }
};

class Decomp : public QRModel<Decomp> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "QRDecomp"; }
    bool inPlace(const CatalogueEntry&, const std::string& name) const override { return name == "src"; }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        if (refused(in)) return vorxStatusBadSize;
        const uint32_t w = in.d["width"], h = in.d["height"];
        Laid<T>& d = out.op("dst");
        std::vector<T> sc = in.op("scratch").object(0);
        vorxStatus st = vorxStatusOk;
        for (uint32_t n = 0; n < in.objects() && st == vorxStatusOk; ++n) {
            std::vector<T> a = in.op("src").object(n);
            if (!qrFactor(a, sc, w, h)) st = vorxStatusZeroDivide;
            for (uint32_t e = 0; e < w * h; ++e) d.set(n, e / w, e % w, a[e]);
        }
        out.op("scratch").fill([&](uint32_t, uint32_t, uint32_t j) { return sc[j]; });
        return st;
    }
};

class BackSubst : public QRModel<BackSubst> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "QRBackSubst"; }
    bool inPlace(const CatalogueEntry&, const std::string& name) const override { return name == "src2"; }
    // A width above the height reads scratch, and the factor, past their ends.
    void fitDims(const CatalogueEntry&, Dims& d) const override
    {
        if (d["width"] > d["height"]) d.set("width", d["height"]);
    }
    bool entryFollowed(const CatalogueEntry&, const Operand& o, const Dims& d, uint32_t entry) const override
    {
        return std::string_view(o.name) == "src2" && entry >= d["width"];
    }

    // Factors of random matrices, so that solutions are numbers.
    void fill(Specimen<float>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }
    void fill(Specimen<double>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        if (refused(in)) return vorxStatusBadSize;
        const uint32_t w = in.d["width"], h = in.d["height"];
        std::vector<T> sc = in.op("scratch").object(0), x(w);
        for (uint32_t n = 0; n < in.objects(); ++n) {
            for (uint32_t i = 0; i < h; ++i) sc[i] = in.in("src2", n, 0, i);
            qrSolve<T>([&](uint32_t i, uint32_t j) { return in.in("src1", n, i, j); }, sc, x, w, h);
            for (uint32_t j = 0; j < w; ++j) out.op("dst").set(n, 0, j, x[j]);
        }
        out.op("scratch").fill([&](uint32_t, uint32_t, uint32_t j) { return sc[j]; });
        return vorxStatusOk;
    }

private:
    template <class T>
    void factors(Specimen<T>& s, Data data, std::mt19937& rng) const
    {
        Model::fill(s, data, rng);
        const uint32_t w = s.d["width"], h = s.d["height"];
        if (data == Data::Special || !w || w > h) return;
        Laid<T>& m = s.op("src1");
        std::vector<T> sc(h);
        for (uint32_t k = 0; k < m.count(); ++k) {
            std::vector<T> a = m.object(k);
            if (qrFactor(a, sc, w, h))
                for (uint32_t e = 0; e < w * h; ++e) m.set(k, e / w, e % w, a[e]);
        }
    }
};

const Decomp kDecomp;
const BackSubst kBackSubst;
const RegisterModel kRegistered1(&kDecomp), kRegistered2(&kBackSubst);

}  // namespace
}  // namespace vt
