// The model of multiplication by a constant: one multiplication per element, the
// source first (64f formed at extended precision, rounded once to double), the
// transposed codes' Pointer quirk, and where dst may be src.
#include "harness.h"

namespace vt {
namespace {

// Fixed-size 32f arrays of vectors lying end to end go through the run-time fast
// path: a case of kRun objects packed tight reaches its four-lane loop.
constexpr uint32_t kRun = 7;
bool endToEnd(const CatalogueEntry& e)
{
    return isF32(e) && e.size && std::string_view(e.code) == "vac" && !*e.layout;
}

class Scale : public ModelOf<Scale> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        std::string_view code = e.code;
        return std::string_view(e.family) == "Mul" && !code.empty() && code.back() == 'c';
    }

    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out = defaultCases(e);
        if (!e.size && e.code[0] == 'v')  // around the threshold of the run-time fast path
            for (uint32_t n : {10u, 11u, 19u, 37u}) out.push_back(dimsOf(e, n, 3));
        if (endToEnd(e)) out.push_back(dimsOf(e, 0, kRun));
        return out;
    }

    // A single transposed Pointer source is tested at the running index i*height + j,
    // past its table when height > width.
    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        if (endToEnd(e) && d.count == kRun) opt.tight = true;
        if (e.size || isArrayCall(e) || std::string_view(e.layout) != "P" || !isTransposed(o.kind)) return;
        uint32_t w = d["width"], h = d["height"];
        if (h > w) opt.tableSlack = std::max(opt.tableSlack, (h - 1) * h + w - w * h);
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        // That entry can be followed before its test comes up.
        if (!isArrayCall(e) && isTransposed(o.kind)) return EntryRule::Untested;
        return Model::entryRule(e, o);
    }

    bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t entry, uint32_t& n) const override
    {
        n = entry;
        return true;
    }

    // A plain source element is read just before its result is written; the
    // transposed 4x4 forms in registers finish the matrix before they store.
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        if (name != "src") return false;
        std::string_view l = e.layout;
        return !isTransposed(splitCodes(e.code)[0]) || (isF32(e) && e.size == 4 && (l == "" || l == "L"));
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        bool matrix = in.e->code[0] == 'm';
        uint32_t w = matrix ? in.d["width"] : in.d["len"], h = matrix ? in.d["height"] : 1;
        if (!in.e->size && (w == 0 || h == 0)) return vorxStatusBadSize;
        T v = in.value("value");
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t i = 0; i < h; ++i)
                for (uint32_t j = 0; j < w; ++j) {
                    T x = in.in("src", k, i, j);
                    if constexpr (sizeof(T) == 4) d.set(k, i, j, f32::mul(x, v));
                    else d.set(k, i, j, roundToDouble(static_cast<long double>(x) * v));
                }
        return vorxStatusOk;
    }
};

const Scale kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
