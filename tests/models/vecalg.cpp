// The models of the dot product, the L2 norm and the cross product: each form's
// order of summation (some keyed on the address an operand is passed at), the two
// square-root regimes with the estimate taken from the instruction itself, the groups
// of four objects with their list tests and gaps, and the cross product's stores.
#include <xmmintrin.h>

#include "harness.h"

namespace vt {
namespace {

using Terms = std::vector<float>;
using f32::add;
using f32::mul;

bool family(const CatalogueEntry& e, std::string_view f) { return f == e.family; }
bool layout(const CatalogueEntry& e, std::string_view l) { return l == e.layout; }
bool adjacent(const CatalogueEntry& e) { return layout(e, "") || layout(e, "L"); }
bool packedFixed(const CatalogueEntry& e) { return isF32(e) && e.size && adjacent(e); }
bool code(const CatalogueEntry& e, std::string_view c) { return c == e.code; }

// The address an operand was passed at, and an integer argument of the call.
template <class T>
uintptr_t passedAt(const Specimen<T>& s, const char* name)
{
    return reinterpret_cast<uintptr_t>(*static_cast<void**>(argField(const_cast<ArgPack&>(s.pack), name)));
}
template <class T>
int32_t intArg(const Specimen<T>& s, const char* name)
{
    return *static_cast<int32_t*>(argField(const_cast<ArgPack&>(s.pack), name));
}

float leftToRight(const Terms& p)
{
    float s = 0.0f;
    for (float x : p) s = add(s, x);
    return s;
}

// The eight-way sum, keyed on the address b of src2 (or src).
float eightWay(const Terms& p, uintptr_t b)
{
    uint32_t len = static_cast<uint32_t>(p.size());
    if (len < 11 || b % 4) return leftToRight(p);
    uint32_t j = b % 16 ? static_cast<uint32_t>(16 - b % 16) / 4 : 0;
    float A[4] = {leftToRight(Terms(p.begin(), p.begin() + j)), 0, 0, 0}, B[4] = {0, 0, 0, 0};
    for (; len - j >= 8; j += 8)
        for (int q = 0; q < 4; ++q) {
            A[q] = add(A[q], p[j + q]);
            B[q] = add(B[q], p[j + 4 + q]);
        }
    float C[4];
    for (int q = 0; q < 4; ++q) C[q] = add(A[q], B[q]);
    float s = add(add(C[0], C[2]), add(C[1], C[3]));
    for (; j < len; ++j) s = add(s, p[j]);
    return s;
}

// The forms grouped by four, and those of them whose List form leaves the entries of
// the remainder objects untested.
bool grouped(const CatalogueEntry& e)
{
    if (!packedFixed(e)) return false;
    if (family(e, "L2Norm")) return code(e, "va");
    return family(e, "DotProduct") && code(e, "vav") && e.size <= 4;
}
bool gap(const CatalogueEntry& e)
{
    return grouped(e) && layout(e, "L") && (family(e, "DotProduct") || e.size == 4);
}

// vorxDotProduct_vava_32f_3x1 groups only with its pointers and object strides on 16 bytes.
bool alignedGroups(const Specimen<float>& s)
{
    uintptr_t all = passedAt(s, "src1") | passedAt(s, "src2") | passedAt(s, "dst") |
                    static_cast<uint32_t>(intArg(s, "src1ObjectStride") | intArg(s, "src2ObjectStride"));
    return all % 16 == 0;
}

float dot32(const Specimen<float>& s, uint32_t k, const Terms& p)
{
    const CatalogueEntry& e = *s.e;
    bool inGroup = k < (s.d.count & ~3u);
    if (!e.size && code(e, "vv") && layout(e, "")) return eightWay(p, passedAt(s, "src2"));
    if (e.size == 4 && code(e, "vav") && adjacent(e)) return add(add(p[0], p[1]), add(p[2], p[3]));
    if (e.size == 3 && code(e, "vava") && layout(e, "") && inGroup && alignedGroups(s)) return add(add(p[0], p[2]), p[1]);
    return leftToRight(p);
}

// The estimate and its Newton step; grouped objects take the estimate from the
// packed instruction, single ones from the scalar one.
float estimatedRoot(float s, bool packed)
{
    float y0 = packed ? _mm_cvtss_f32(_mm_rsqrt_ps(_mm_set1_ps(s))) : _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(s)));
    float a = mul(y0, y0), b = mul(a, s), c = f32::sub(3.0f, b), d = mul(c, 0.5f), y1 = mul(y0, d);
    return mul(s, y1);
}

float norm32(const Specimen<float>& s, uint32_t k, const Terms& p)
{
    const CatalogueEntry& e = *s.e;
    bool va = code(e, "va"), inGroup = va && k < (s.d.count & ~3u);
    if (!packedFixed(e)) {
        float sum = !e.size && !va && layout(e, "") ? eightWay(p, passedAt(s, "src")) : leftToRight(p);
        return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(sum)));
    }
    float sum = 0;
    auto pairs = [&] { return add(add(p[0], p[1]), add(p[2], p[3])); };
    switch (e.size) {
    case 3: sum = add(add(p[0], p[1]), p[2]); break;
    case 4: sum = va ? add(add(add(p[0], p[1]), p[2]), p[3]) : pairs(); break;
    case 5: sum = add(inGroup ? add(add(p[0], p[2]), add(p[1], p[3])) : pairs(), p[4]); break;
    case 6:
        sum = va ? add(add(add(p[0], p[2]), p[4]), add(add(p[1], p[3]), p[5])) : add(pairs(), add(p[4], p[5]));
        break;
    }
    return estimatedRoot(sum, inGroup);
}

class Functionals : public ModelOf<Functionals> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        return family(e, "DotProduct") || family(e, "L2Norm") || family(e, "CrossProduct");
    }

    // Around the eight-way threshold, and groups of four with a remainder.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out = defaultCases(e);
        if (!e.size)
            for (uint32_t n : {10u, 11u, 19u, 37u}) out.push_back(dimsOf(e, n, 3));
        else if (isArrayCall(e))
            for (uint32_t c : {5u, 8u}) out.push_back(dimsOf(e, 0, c));
        return out;
    }

    // The cross product of one pair scans its three tables before any store.
    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        if (family(e, "CrossProduct") && layout(e, "P")) return EntryRule::Scan;
        return Model::entryRule(e, o);
    }

    // A single-object dot product or norm stores its result only at the end.
    bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t, uint32_t& n) const override
    {
        n = 0;
        return true;
    }

    // A group's four list entries are tested together: a null in a group leaves the
    // group unwritten.
    uint32_t objectsBeforeNullEntry(const CatalogueEntry& e, const Operand&, uint32_t entry, uint32_t count) const override
    {
        return grouped(e) && entry < (count & ~3u) ? entry & ~3u : entry;
    }
    // The objects after the last whole group go through a path that follows its list
    // entries untested.
    bool entryFollowed(const CatalogueEntry& e, const Operand&, const Dims& d, uint32_t entry) const override
    {
        return gap(e) && entry >= (d.count & ~3u) && entry < d.count;
    }

    // The estimate regime's results hold the processor's estimate.
    bool sameOnEveryMachine(const CatalogueEntry& e) const override { return !(family(e, "L2Norm") && packedFixed(e)); }

    // The cross product in place over a source of dst's kind (with what that gives).
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        return family(e, "CrossProduct") && isArrayCode(splitCodes(e.code)[name == "src1" ? 0 : 1]) == isArrayCall(e);
    }

    // The packed fixed sizes hold a single vector in registers from before the count test.
    bool readsAhead(const CatalogueEntry& e, const std::string& name) const override
    {
        if (!packedFixed(e) || family(e, "L2Norm")) return false;
        return !isArrayCode(splitCodes(e.code)[name == "src1" ? 0 : 1]);
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        if (family(e, "CrossProduct")) return cross(in, out);
        uint32_t len = in.d["len"];
        if (!e.size && len == 0) return vorxStatusBadSize;
        bool norm = family(e, "L2Norm");
        const char* a = norm ? "src" : "src1";
        const char* b = norm ? "src" : "src2";
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k) {
            if constexpr (sizeof(T) == 4) {
                Terms p(len);
                for (uint32_t j = 0; j < len; ++j) p[j] = mul(in.in(a, k, 0, j), in.in(b, k, 0, j));
                d.set(0, 0, k, norm ? norm32(in, k, p) : dot32(in, k, p));
            } else {
                long double s = 0;
                for (uint32_t j = 0; j < len; ++j) s = s + static_cast<long double>(in.in(a, k, 0, j)) * in.in(b, k, 0, j);
                d.set(0, 0, k, roundToDouble(norm ? std::sqrt(s) : s));
            }
        }
        return vorxStatusOk;
    }

private:
    // 32f Contiguous and List forms read all six inputs first; every other form stores
    // each component at once, so in place the later ones read it.
    template <class T>
    static vorxStatus cross(const Specimen<T>& in, Specimen<T>& out)
    {
        const CatalogueEntry& e = *in.e;
        bool stepwise = !(isF32(e) && adjacent(e));
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k) {
            T a[3], b[3];
            for (uint32_t j = 0; j < 3; ++j) {
                a[j] = in.in("src1", k, 0, j);
                b[j] = in.in("src2", k, 0, j);
            }
            T* shared = in.aliasDst == "src1" ? a : in.aliasDst == "src2" ? b : nullptr;
            for (uint32_t c = 0; c < 3; ++c) {
                uint32_t i = (c + 1) % 3, j = (c + 2) % 3;
                T r;
                if constexpr (sizeof(T) == 4)
                    r = f32::sub(mul(a[i], b[j]), mul(a[j], b[i]));
                else
                    r = roundToDouble(static_cast<long double>(a[i]) * b[j] - static_cast<long double>(a[j]) * b[i]);
                d.set(k, 0, c, r);
                if (stepwise && shared) shared[c] = r;
            }
        }
        return vorxStatusOk;
    }
};

const Functionals kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
