// The model of saxpy and the linear combination: each element alone, src1 * scale
// (+ src2 * scale2) + src2; 32f with each product and the sum rounded to single, 64f
// at register width with one rounding at the store.
#include "harness.h"

namespace vt {
namespace {

bool packedFixed(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return isF32(e) && e.size && (l == "" || l == "L");
}

class Weighted : public ModelOf<Weighted> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        std::string_view f = e.family;
        return f == "Saxpy" || f == "LComb";
    }

    // Around the fast path of the run-time pair, and arrays past a group of four.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out = defaultCases(e);
        if (!e.size)
            for (uint32_t n : {10u, 11u, 19u, 37u}) out.push_back(dimsOf(e, n, 3));
        else if (isArrayCall(e))
            out.push_back(dimsOf(e, 0, 5));
        return out;
    }

    // Elements in ascending order, each after the test of its entries.
    bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t entry, uint32_t& n) const override
    {
        n = entry;
        return true;
    }

    // Element i is read before it is written and nothing else depends on it: in place
    // over any source of dst's kind.
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        auto codes = splitCodes(e.code);
        return isArrayCode(codes[name == "src1" ? 0 : 1]) == isArrayCall(e);
    }

    // The packed fixed sizes hold the single vector in registers from before the count test.
    bool readsAhead(const CatalogueEntry& e, const std::string& name) const override
    {
        auto codes = splitCodes(e.code);
        return packedFixed(e) && isArrayCall(e) && !isArrayCode(codes[name == "src1" ? 0 : 1]);
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        uint32_t len = in.d["len"];
        if (!e.size && len == 0) return vorxStatusBadSize;
        bool lcomb = in.has("scale2");
        T c = in.value(lcomb ? "scale1" : "scale"), c2 = lcomb ? in.value("scale2") : T(1);
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t j = 0; j < len; ++j) {
                T a = in.in("src1", k, 0, j), b = in.in("src2", k, 0, j), r;
                if constexpr (sizeof(T) == 4)
                    r = f32::add(f32::mul(a, c), lcomb ? f32::mul(b, c2) : b);
                else
                    r = roundToDouble(lcomb ? static_cast<long double>(a) * c + static_cast<long double>(b) * c2
                                            : static_cast<long double>(a) * c + b);
                d.set(k, 0, j, r);
            }
        return vorxStatusOk;
    }
};

const Weighted kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
