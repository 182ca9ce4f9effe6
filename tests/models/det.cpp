// The model of the determinants: the elimination of any size with its thresholds
// and running product, and the closed forms of the fixed sizes in the order and at
// the width of each form (own code, and the x87 kernels with the 32f minors they
// keep in 32-bit temporaries).
#include "harness.h"
#include "models/det.h"

namespace vt {
namespace {

bool isKernel(const CatalogueEntry& e) { return std::string_view(e.family) == "a6_Det"; }
// The kernels, and the fixed sizes in layouts none and L that hand over to them.
bool byKernel(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return e.size && (l == "" || l == "L");
}

// The minors of the 32f kernels that go through a 32-bit temporary.
bool narrow4(int order, unsigned set) { return order == 2 && set == 0x3; }
bool narrow5(int order, unsigned set) { return order < 3 || (order == 3 && (set & 1)); }
bool narrow6(int order, unsigned set) { return order < 4 || (order == 4 && (set & 1)); }

template <class T>
T fixedDet(const CatalogueEntry& e, const std::vector<T>& object)
{
    const unsigned n = e.size;
    const bool kernel = byKernel(e), f32 = isF32(e);
    std::vector<long double> a(object.begin(), object.end());
    DetArith ar;
    ar.single = f32 && !kernel;
    if (f32 && kernel) ar.narrow = n == 4 ? narrow4 : n == 5 ? narrow5 : n == 6 ? narrow6 : nullptr;
    long double v;
    if (n == 3) {
        Det3 form = Det3::Row;
        if (kernel)
            form = std::string_view(e.layout) == "L" ? Det3::KernelL
                   : std::string_view(e.code) == "ma" ? Det3::KernelMa
                   : f32                               ? Det3::KernelM32
                                                       : Det3::KernelM64;
        v = det3(a, form, ar);
    } else {
        v = detByMinors(a, n, ar);
    }
    if constexpr (sizeof(T) == 4) return roundToFloat(v);
    else return roundToDouble(v);
}

class Det : public ModelOf<Det> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        return std::string_view(e.family) == "Det" || isKernel(e);
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        // A kernel's List: -2, or a trap (test_det.cpp); so are seven of the eight
        // List wrappers.
        bool list = std::string_view(o.layout) == "L";
        if (isKernel(e) || (byKernel(e) && list && !(e.size == 6 && !isF32(e)))) return EntryRule::Untested;
        if (e.size && !isArrayCall(e) && layoutOf(o.layout) == Lay::P) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }

    // The kernels check nothing; their wrappers do.
    bool nullChecked(const CatalogueEntry& e, const Operand&) const override { return !isKernel(e); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const uint32_t S = in.d["size"];
        if (!e.size && S == 0) return vorxStatusBadSize;
        if (in.has("scratch")) out.leaveAllOpen("scratch");
        Laid<T>& d = out.op("dst");
        for (uint32_t n = 0; n < in.objects(); ++n) {
            std::vector<T> a = in.op("src").object(n);
            d.set(0, 0, n, e.size ? fixedDet(e, a) : detAnySize(a, S));
            // The x87 unit gives a quiet NaN before a signalling one met as a memory
            // operand, and which operands stay in memory is the compiler's choice.
            if (isF32(e) && byKernel(e) && std::isnan(d.get(0, 0, n)))
                for (T x : a)
                    if (std::isnan(x) && !(f32::bitsOf(float(x)) & 0x00400000u)) out.leaveOpen("dst", 0, 0, n);
        }
        return vorxStatusOk;
    }
};

const Det kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
