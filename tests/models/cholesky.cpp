// The models of Cholesky decomposition and back substitution: the factorisation row
// by row with its literal-zero pivot test (and the pivots of the 64f closed forms
// that let a NaN pass), arrays that stop at the first failing object, solves whose
// arrays drop each object's status, and sizes and counts read as signed numbers
// where the families read them so.
#include "harness.h"
#include "models/cholesky.h"

namespace vt {
namespace {

// The one-matrix function an entry's objects go through: List layouts read their
// objects as Contiguous or Strided ones, Pointer-strided ones as Pointer ones.
Lay bodyLayout(const CatalogueEntry& e)
{
    Lay l = layoutOf(e.layout);
    return l == Lay::L ? Lay::C : l == Lay::LS2 ? Lay::S2 : l == Lay::PS2 ? Lay::P : l;
}

std::vector<Dims> cholCases(const CatalogueEntry& e)
{
    std::vector<Dims> out;
    std::vector<uint32_t> counts = isArrayCall(e) ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
    // Run-time orders on both sides of the closed forms, and one of them.
    std::vector<uint32_t> sizes = e.size ? std::vector<uint32_t>{e.size} : std::vector<uint32_t>{1, 2, 3, 5, 7};
    for (uint32_t n : sizes)
        for (uint32_t c : counts) out.push_back(dimsOf(e, n, c));
    return out;
}

class Decomp : public ModelOf<Decomp> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "CholeskyDecomp"; }
    std::vector<Dims> cases(const CatalogueEntry& e) const override { return cholCases(e); }
    EntryRule entryRule(const CatalogueEntry&, const Operand&) const override { return EntryRule::Untested; }
    bool inPlace(const CatalogueEntry&, const std::string& name) const override { return name == "src"; }

    // The closed forms step Strided rows by whole elements: drawn element strides
    // are whole there (the tests of single behaviours take the others).
    void options(const CatalogueEntry& e, const Dims& d, const Operand&, Options& opt) const override
    {
        uint32_t n = d["widthHeight"];
        if (bodyLayout(e) == Lay::S2 && n >= 3 && n <= 6) opt.wholeElements = true;
    }

    // Positive definite, or failing at one random row now and then; the strict upper
    // triangle random, unlike the lower one.
    void fill(Specimen<float>& s, Data data, std::mt19937& rng) const override { spd(s, data, rng); }
    void fill(Specimen<double>& s, Data data, std::mt19937& rng) const override { spd(s, data, rng); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const uint32_t S = in.d["widthHeight"];
        if (S == 0 || (in.d.array && in.d.count == 0)) return vorxStatusBadSize;
        Lay body = bodyLayout(*in.e);
        if (in.d.array && body != Lay::P && static_cast<int32_t>(in.d.count) < 0) return vorxStatusOk;
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k) {
            std::vector<T> f = d.object(k);
            int fail = cholFactor(in.op("src").object(k), f, S, cholRule<T>(body, S));
            for (uint32_t e = 0; e < S * S; ++e) d.set(k, e / S, e % S, f[e]);
            if (fail >= 0) return vorxStatusNotPositiveDefinite;
        }
        return vorxStatusOk;
    }

private:
    template <class T>
    void spd(Specimen<T>& s, Data data, std::mt19937& rng) const
    {
        Model::fill(s, data, rng);
        if (data != Data::Random) return;
        Laid<T>& a = s.op("src");
        const uint32_t S = a.rows();
        for (uint32_t k = 0; k < a.count(); ++k) {
            // In [128, 256), exactly: dominant over off-diagonal elements in [-8, 8).
            for (uint32_t i = 0; i < S; ++i) a.set(k, i, i, std::ldexp(T(1) + std::fabs(randomValue<T>(rng, 0)), 7));
            if (S && rng() % 4 == 0) {
                uint32_t r = rng() % S;
                a.set(k, r, r, randomValue<T>(rng, 2));
            }
        }
    }
};

class BackSubst : public ModelOf<BackSubst> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "CholeskyBackSubst"; }
    std::vector<Dims> cases(const CatalogueEntry& e) const override { return cholCases(e); }
    EntryRule entryRule(const CatalogueEntry&, const Operand&) const override { return EntryRule::Untested; }
    bool inPlace(const CatalogueEntry&, const std::string& name) const override { return name == "src2"; }

    // Factors of dominant matrices, so that solutions are numbers.
    void fill(Specimen<float>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }
    void fill(Specimen<double>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const uint32_t S = in.d["widthHeight"];
        if (S == 0 || (in.d.array && in.d.count == 0)) return vorxStatusBadSize;
        if (static_cast<int32_t>(S) < 0 || (in.d.array && static_cast<int32_t>(in.d.count) < 0)) return vorxStatusOk;
        const Laid<T>& m = in.op("src1");
        Laid<T>& x = out.op("dst");
        bool each = std::string_view(in.e->code) == "mava";
        for (uint32_t k = 0; k < in.objects(); ++k) {
            std::vector<T> b(S), r(S);
            for (uint32_t j = 0; j < S; ++j) b[j] = in.in("src2", k, 0, j);
            cholSolve<T>([&](uint32_t i, uint32_t j) { return m.get(each ? k : 0, i, j); }, b.data(), r.data(), S);
            for (uint32_t j = 0; j < S; ++j) x.set(k, 0, j, r[j]);
        }
        return vorxStatusOk;
    }

private:
    template <class T>
    void factors(Specimen<T>& s, Data data, std::mt19937& rng) const
    {
        Model::fill(s, data == Data::Special ? Data::Special : Data::Dominant, rng);
        if (data == Data::Special) return;
        Laid<T>& m = s.op("src1");
        const uint32_t S = m.rows();
        for (uint32_t k = 0; k < m.count(); ++k) {
            std::vector<T> f = m.object(k);
            cholFactor(m.object(k), f, S, cholRule<T>(Lay::C, S));
            for (uint32_t e = 0; e < S * S; ++e) m.set(k, e / S, e % S, f[e]);
        }
        if (data == Data::Random) s.op("src2").randomize(rng);
    }
};

const Decomp kDecomp;
const BackSubst kBackSubst;
const RegisterModel kRegistered1(&kDecomp), kRegistered2(&kBackSubst);

}  // namespace
}  // namespace vt
