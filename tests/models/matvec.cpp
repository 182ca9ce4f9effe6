// The models of matrix by vector and of gaxpy: the checks, the bounds of a
// non-square call and the tables its scans read, and the order and width of every
// sum (the packed trees of the fixed 32f Contiguous and List forms, left to right
// from +0.0 elsewhere, in the three precision regimes).
#include <array>

#include "harness.h"

namespace vt {
namespace {

bool oneOf(std::string_view code, std::initializer_list<std::string_view> codes)
{
    for (auto c : codes)
        if (c == code) return true;
    return false;
}
bool gaxpy(const CatalogueEntry& e) { return std::string_view(e.family) == "Gaxpy"; }
bool transposed(const CatalogueEntry& e) { return std::string_view(e.code).find('T') != std::string_view::npos; }
bool pointer(const CatalogueEntry& e) { return std::string_view(e.layout) == "P" || std::string_view(e.layout) == "PS2"; }
bool packed(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return isF32(e) && e.size && (l == "" || l == "L");
}

// Result count R, term count K, and the vector length the checks compare.
struct Shape {
    uint32_t R, K, len;
};
Shape shapeOf(const CatalogueEntry& e, const Dims& d)
{
    if (gaxpy(e)) return {d["height"], d["width"], d["width"]};
    return {d["src1Height"], d["src1Width"], d["src2Len"]};
}
bool refused(const CatalogueEntry& e, const Dims& d)
{
    if (e.size) return false;
    Shape s = shapeOf(e, d);
    if (s.R == 0 || s.K == 0) return true;
    return !gaxpy(e) && (transposed(e) ? s.R : s.K) != s.len;
}

// The packed trees; p the products of one result element (row i).
float tree(const CatalogueEntry& e, uint32_t i, const std::vector<float>& p)
{
    using f32::add;
    bool t = transposed(e);
    switch (e.size) {
    case 3: return add(add(p[0], p[1]), p[2]);
    case 4: return t ? add(add(p[0], p[1]), add(p[2], p[3])) : add(add(p[0], p[2]), add(p[1], p[3]));
    case 5:
        if (!t && i == 4) return add(add(add(p[0], p[2]), p[4]), add(p[1], p[3]));
        return add(add(add(p[0], p[1]), p[4]), add(p[2], p[3]));
    default:
        if (t) return add(add(add(p[0], p[1]), add(p[2], p[3])), add(p[4], p[5]));
        return add(add(add(p[0], p[2]), p[4]), add(add(p[1], p[3]), p[5]));
    }
}

class MatVec : public MixedModelOf<MatVec> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        return gaxpy(e) || (std::string_view(e.family) == "Mul" &&
                            oneOf(e.code, {"mv", "mTv", "mva", "mTva", "mav", "maTv", "mava", "maTva"}));
    }

    // Shapes (K, R) square and not, and one a matrix by vector call refuses.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        std::vector<uint32_t> counts = isArrayCall(e) ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
        std::vector<std::array<uint32_t, 2>> shapes = {{1, 1}, {3, 3}, {7, 7}, {2, 5}, {5, 2}, {3, 4}, {6, 3}};
        if (e.size) shapes = {{e.size, e.size}};
        for (auto s : shapes)
            for (uint32_t c : counts) {
                Dims d = dimsOf(e, 0, c);
                if (!e.size) set(e, d, s[0], s[1]);
                out.push_back(d);
            }
        if (!e.size && !gaxpy(e)) {
            Dims d = dimsOf(e, 0, 1);
            set(e, d, 5, 3);
            d.set("src2Len", 4);
            out.push_back(d);
        }
        return out;
    }

    // The tables a Pointer call reads past: a transposed array call's scan tests
    // src2Len entries of src2 and src1Width of dst (which have src1Width and
    // src1Height); a transposed single call tests src1 at i*src1Height + k.
    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        if (e.size || gaxpy(e) || !transposed(e) || !pointer(e) || refused(e, d)) return;
        Shape s = shapeOf(e, d);
        std::string_view name = o.name;
        uint32_t tested = 0, entries = 0;
        if (isArrayCall(e) && name == "src2") tested = s.len, entries = s.K;
        if (isArrayCall(e) && name == "dst") tested = s.K, entries = s.R;
        if (!isArrayCall(e) && name == "src1") tested = (s.R - 1) * s.R + s.K, entries = s.R * s.K;
        if (tested > entries) opt.tableSlack = std::max(opt.tableSlack, tested - entries);
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        // A transposed matrix's entry can be followed before its test comes up.
        if (!isArrayCall(e) && isTransposed(o.kind)) return EntryRule::Untested;
        return Model::entryRule(e, o);
    }

    // Results are written row by row; a null dst (or src3) entry leaves the rows
    // before it. A source entry met in a row leaves that row's partial sum.
    bool writtenBefore(const CatalogueEntry&, const Operand& o, uint32_t entry, uint32_t& n) const override
    {
        n = entry;
        std::string_view name = o.name;
        return name == "dst" || name == "src3";
    }

    // The packed forms read the vectors whole before they write.
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        if (!packed(e)) return false;
        if (gaxpy(e)) return name == "src2" || name == "src3";
        return name == "src2" && !oneOf(e.code, {"mav", "maTv"});
    }

    bool readsAhead(const CatalogueEntry& e, const std::string& name) const override
    {
        if (!packed(e) || !isArrayCall(e)) return false;
        if (gaxpy(e)) return name == "src1";
        return name == (oneOf(e.code, {"mva", "mTva"}) ? "src1" : oneOf(e.code, {"mav", "maTv"}) ? "src2" : "");
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        if (refused(e, in.d)) return vorxStatusBadSize;
        Shape s = shapeOf(e, in.d);
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t i = 0; i < s.R; ++i) {
                std::vector<T> x(s.K), y(s.K);
                for (uint32_t n = 0; n < s.K; ++n) {
                    x[n] = in.in("src1", k, i, n);
                    y[n] = in.in("src2", k, 0, n);
                }
                d.set(k, 0, i, element(e, i, x, y, gaxpy(e) ? &in : nullptr, k));
            }
        return vorxStatusOk;
    }

private:
    static void set(const CatalogueEntry& e, Dims& d, uint32_t K, uint32_t R)
    {
        if (gaxpy(e)) {
            d.set("width", K);
            d.set("height", R);
        } else {
            d.set("src1Width", K);
            d.set("src1Height", R);
            d.set("src2Len", transposed(e) ? R : K);
        }
    }

    // Result element i from its K pairs of factors; gaxpy adds src3[i] last.
    template <class T>
    static T element(const CatalogueEntry& e, uint32_t i, const std::vector<T>& x, const std::vector<T>& y,
                     const Specimen<T>* plus, uint32_t k)
    {
        size_t K = x.size();
        if constexpr (sizeof(T) == 4) {
            std::vector<float> p(K);
            for (size_t n = 0; n < K; ++n) p[n] = f32::mul(x[n], y[n]);
            float s = 0.0f;
            if (packed(e)) s = tree(e, i, p);
            else
                for (size_t n = 0; n < K; ++n) s = f32::add(s, p[n]);
            return plus ? f32::add(s, plus->in("src3", k, 0, i)) : s;
        } else {
            long double add = plus ? static_cast<long double>(plus->in("src3", k, 0, i)) : 0.0L;
            std::string_view l = e.layout;
            if (l == "" || l == "S2") {  // the sum at register width, one rounding
                long double s = 0;
                for (size_t n = 0; n < K; ++n) s = s + static_cast<long double>(x[n]) * y[n];
                return roundToDouble(plus ? s + add : s);
            }
            double d = 0;  // through dst, rounded at every step
            for (size_t n = 0; n < K; ++n)
                d = roundToDouble(static_cast<long double>(d) + static_cast<long double>(x[n]) * y[n]);
            return plus ? roundToDouble(d + add) : d;
        }
    }
};

const MatVec kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
