// The model of vector and matrix addition and subtraction: each element one
// operation of its two operands with one rounding, in the order of the name (the
// value of a `c` operand second, or first in Sub cv, cva).
#include "harness.h"

namespace vt {
namespace {

// The 3x3 32f mam and mamT forms in Contiguous and List layouts run a pipeline with
// no zero test: count 0 computes one object. mamT steps src2's rows with src1's
// stride. The List pair tests its entries out of step (their own tests).
bool pipelined(const CatalogueEntry& e)
{
    std::string_view lay = e.layout, code = e.code;
    return isF32(e) && e.size == 3 && (code == "mam" || code == "mamT") && (lay == "" || lay == "L");
}

class AddSub : public ModelOf<AddSub> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        std::string_view f = e.family;
        return f == "Add" || f == "Sub";
    }

    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        for (Dims d : defaultCases(e)) {
            fitDims(e, d);
            out.push_back(d);
        }
        if (!e.size && e.code[0] != 'm')  // around the packed threshold of the run-time loop
            for (uint32_t n : {10u, 11u, 19u, 37u}) out.push_back(dimsOf(e, n, 3));
        return out;
    }

    void fitDims(const CatalogueEntry& e, Dims& d) const override
    {
        if (pipelined(e) && std::string_view(e.layout) == "L" && d.count == 0) d.count = 1;  // dst[-1]
    }

    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        std::string_view code = e.code, name = o.name;
        // Rows of a transposed 3x3 source loaded four elements wide: the word behind
        // the last stored row is read.
        if (isF32(e) && e.size == 3 && (std::string_view(e.layout) == "" || std::string_view(e.layout) == "L") &&
            ((code == "maTm" && name == "src1") || (code == "mamT" && name == "src2")))
            opt.slack = std::max(opt.slack, 4u);
        // mamT 3x3 pipelines read src2 at src1's row stride: give both the same one.
        if (pipelined(e) && code == "mamT" && name != "dst") {
            opt.explicitStrides = false;
            opt.tight = true;
        }
        // A single-object Pointer call tests a transposed operand's entries at the
        // running index i*height + j, past its table when height > width.
        if (!e.size && !isArrayCall(e) && std::string_view(e.layout) == "P" && isTransposed(o.kind)) {
            uint32_t w = d["width"], h = d["height"];
            if (h > w) opt.tableSlack = std::max(opt.tableSlack, (h - 1) * h + w - w * h);
        }
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        // A transposed operand's entry can be followed before its test comes up.
        if (!isArrayCall(e) && isTransposed(o.kind)) return EntryRule::Untested;
        if (pipelined(e) && std::string_view(e.layout) == "L") return EntryRule::Untested;
        return Model::entryRule(e, o);
    }

    // Elements are taken in row-major order, each after the test of its entries.
    bool writtenBefore(const CatalogueEntry&, const Operand& o, uint32_t entry, uint32_t& n) const override
    {
        n = entry;
        return !isTransposed(o.kind);
    }

    // In place over a plain source of dst's kind, with its strides.
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        auto codes = splitCodes(e.code);
        size_t n = name == "src2" ? 1 : 0;
        if (codes[0] == "c") n = 1;
        if (n >= codes.size() || codes[n] == "c" || isTransposed(codes[n])) return false;
        return isArrayCode(codes[n]) == isArrayCall(e);
    }

    // The packed 32f fixed sizes in Contiguous and List layouts load a single
    // vector or matrix before the count test, but the 3x3 forms that stay element
    // loops.
    bool readsAhead(const CatalogueEntry& e, const std::string& name) const override
    {
        std::string_view l = e.layout, code = e.code;
        if (!isF32(e) || !e.size || !(l == "" || l == "L") || !isArrayCall(e)) return false;
        auto codes = splitCodes(code);
        size_t n = name == "src1" ? 0 : 1;
        if (n >= codes.size() || codes[n] == "c" || isArrayCode(codes[n])) return false;
        bool scalar3 = code == "maTmT" || code == "mma" || code == "mmaT" || code == "mTma" || code == "mTmaT";
        return !(e.size == 3 && scalar3);
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        bool matrix = e.code[0] == 'm';
        uint32_t w = matrix ? in.d["width"] : in.d["len"], h = matrix ? in.d["height"] : 1;
        if (!e.size && (w == 0 || h == 0)) return vorxStatusBadSize;
        bool sub = std::string_view(e.family) == "Sub";
        bool valueFirst = e.code[0] == 'c';
        uint32_t objects = in.d.array && in.d.count == 0 && pipelined(e) ? 1 : in.objects();
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < objects; ++k)
            for (uint32_t i = 0; i < h; ++i)
                for (uint32_t j = 0; j < w; ++j) {
                    T r;
                    if (in.has("value")) {
                        T x = in.in("src", k, i, j), v = in.value("value");
                        r = valueFirst ? addOrSub(true, v, x) : addOrSub(sub, x, v);
                    } else {
                        r = addOrSub(sub, in.in("src1", k, i, j), in.in("src2", k, i, j));
                    }
                    d.set(k, i, j, r);
                }
        return vorxStatusOk;
    }
};

const AddSub kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
