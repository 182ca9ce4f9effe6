// The models of LU decomposition and back substitution: the elimination through
// perm with its strict pivot search and threshold, the displaced last-pivot test of
// array members, and the two substitutions in ascending column order.
#include "harness.h"
#include "models/lu.h"

namespace vt {
namespace {


class Decomp : public ModelOf<Decomp> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "LUDecomp"; }

    // Object n >= 1 of an array tests its last pivot n*size elements further along
    // the row, n rows further down the table in the Pointer layouts: keep that
    // memory readable (the planted table entries lead to 1.0).
    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        if (!isArrayCall(e) || std::string_view(o.name) != "dst" || d.count < 2) return;
        uint32_t S = d["size"];
        Lay l = layoutOf(o.layout);
        if (l == Lay::P || l == Lay::PS2) {
            opt.tableSlack = std::max(opt.tableSlack, (d.count - 1) * S);
        } else {
            uint32_t E = isF32(e) ? 4 : 8;
            if (opt.explicitStrides) opt.es = std::abs(opt.es);
            uint32_t es = opt.explicitStrides && (l == Lay::S2 || l == Lay::LS2) ? opt.es : E + 5;
            opt.slack = std::max(opt.slack, (d.count - 1) * S * es + E);
        }
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        Lay l = layoutOf(o.layout);
        if (!isArrayCall(e) && l == Lay::P) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }

    bool inPlace(const CatalogueEntry&, const std::string& name) const override { return name == "src"; }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const uint32_t S = in.d["size"];
        if (!in.e->size && S == 0) return vorxStatusBadSize;
        Laid<T>& d = out.op("dst");
        // In place, the last-pivot tests read src's memory as the calls leave it.
        Laid<T>& mem = in.aliasDst.empty() ? d : out.op(in.aliasDst);
        Laid<uint32_t>& perm = out.idx("perm");
        for (uint32_t n = 0; n < in.objects(); ++n) {
            std::vector<T> a = in.op("src").object(n);
            std::vector<uint32_t> p(S);
            // A failing step leaves its exchange in perm and the steps before it in dst.
            int fail = luFactor(a, p.data(), S, in.e->size != 0);
            for (uint32_t e = 0; e < S * S; ++e) d.set(n, e / S, e % S, a[e]), mem.set(n, e / S, e % S, a[e]);
            for (uint32_t i = 0; i < S; ++i) perm.set(0, 0, n * S + i, p[i]);
            if (fail >= 0 || !luPasses(lastPivot(in, mem, n, p[S - 1], S))) return vorxStatusZeroDivide;
        }
        return vorxStatusOk;
    }

private:
    // What the last-pivot test of object n reads, with l = perm[size-1], in dst as
    // the objects before it (and n itself) have left it.
    template <class T>
    static T lastPivot(const Specimen<T>& in, const Laid<T>& d, uint32_t n, uint32_t l, uint32_t S)
    {
        Lay lay = d.layout();
        if (!in.d.array || n == 0) return d.get(n, l, S - 1);
        T v{};
        if (lay == Lay::P || lay == Lay::PS2) {
            uint32_t entry = (l + n) * S + S - 1;
            if (entry < S * S) return d.get(n, entry / S, entry % S);
            d.peek(d.entryTarget(entry) + int64_t(n) * d.objectStride(), v);
            return v;
        }
        d.peek(d.offsetOf(n, l, S - 1) + int64_t(n) * S * d.elemStride(), v);
        return v;
    }
};

class BackSubst : public ModelOf<BackSubst> {
public:
    bool covers(const CatalogueEntry& e) const override { return std::string_view(e.family) == "LUBackSubst"; }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        if (!isArrayCall(e) && layoutOf(o.layout) == Lay::P) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }

    // Factors of dominant matrices, so that solutions are numbers.
    void fill(Specimen<float>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }
    void fill(Specimen<double>& s, Data data, std::mt19937& rng) const override { factors(s, data, rng); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const uint32_t S = in.d["size"];
        if (!in.e->size && S == 0) return vorxStatusBadSize;
        std::string_view code = in.e->code;
        // The 64f List members with one matrix step its columns by 4 bytes.
        bool fourByte = code == "mva" && !isF32(*in.e) && std::string_view(in.e->layout) == "L";
        const Laid<T>& m = in.op("src");
        const Laid<uint32_t>& perm = in.idx("perm");
        Laid<T>& x = out.op("dst");
        for (uint32_t n = 0; n < in.objects(); ++n) {
            uint32_t mk = code == "mava" ? n : 0;
            std::vector<uint32_t> p(S);
            for (uint32_t i = 0; i < S; ++i) p[i] = perm.get(0, 0, (code == "mava" ? n * S : 0) + i);
            std::vector<T> b(S), r(S);
            for (uint32_t j = 0; j < S; ++j) b[j] = in.in("src2", n, 0, j);
            auto a = [&](uint32_t row, uint32_t j) {
                if (!fourByte) return m.get(mk, row, j);
                T v;
                m.peek(m.offsetOf(mk, row, 0) + 4 * j, v);
                return v;
            };
            luSolve<T>(a, p.data(), b.data(), r.data(), S);
            for (uint32_t j = 0; j < S; ++j) x.set(n, 0, j, r[j]);
        }
        return vorxStatusOk;
    }

private:
    template <class T>
    void factors(Specimen<T>& s, Data data, std::mt19937& rng) const
    {
        Model::fill(s, data == Data::Special ? Data::Special : Data::Dominant, rng);
        if (data == Data::Special) return;
        const uint32_t S = s.d["size"];
        Laid<T>& m = s.op("src");
        Laid<uint32_t>& perm = s.idx("perm");
        for (uint32_t k = 0; k < m.count() && S; ++k) {
            std::vector<T> a = m.object(k);
            std::vector<uint32_t> p(S);
            if (luFactor(a, p.data(), S, s.e->size != 0) >= 0) continue;
            for (uint32_t e = 0; e < S * S; ++e) m.set(k, e / S, e % S, a[e]);
            if (perm.cols() >= (k + 1) * S)
                for (uint32_t i = 0; i < S; ++i) perm.set(0, 0, k * S + i, p[i]);
        }
    }
};

const Decomp kDecomp;
const BackSubst kBackSubst;
const RegisterModel kRegistered1(&kDecomp), kRegistered2(&kBackSubst);

}  // namespace
}  // namespace vt
