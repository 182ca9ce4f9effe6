// The model of matrix by matrix products: the checks table of each operand code,
// the loop bounds, and the order and width of every sum.
#include <array>

#include "harness.h"

namespace vt {
namespace {

enum Sz { W1, H1, W2, H2 };
const char* const kSizeName[] = {"src1Width", "src1Height", "src2Width", "src2Height"};

// The checks table: the third size tested for zero, the two sizes that must agree,
// the dst entries the scan of a Pointer array call tests (their product).
struct Row {
    const char* code;
    Sz third, ca, cb, da, db;
};
const Row kTable[] = {
    {"mm", W2, W1, H2, W1, H2},     {"mmT", H2, W1, W2, W1, W2},    {"mTm", W2, H1, H2, H1, H2},
    {"mTmT", H2, H1, W2, H1, W2},   {"mam", H2, H2, W1, W1, H2},    {"mamT", H2, W1, W2, W1, W2},
    {"maTm", W2, H1, H2, H1, H2},   {"maTmT", H2, H1, W2, H1, W2},  {"mma", H2, H1, W2, W1, H2},
    {"mmaT", H2, W1, W2, W1, W2},   {"mTma", W2, H1, H2, H1, H2},   {"mTmaT", H2, H1, W2, H1, W2},
    {"mama", H2, H1, W2, W1, H2},   {"mamaT", H2, W1, W2, W1, W2},  {"maTma", W2, H1, H2, H1, H2},
    {"maTmaT", H2, H1, W2, H1, W2},
};
const Row& rowOf(std::string_view code)
{
    for (const auto& r : kTable)
        if (code == r.code) return r;
    std::abort();
}

uint32_t get(const Dims& d, Sz s) { return d[kSizeName[s]]; }
bool refused(const CatalogueEntry& e, const Dims& d)
{
    if (e.size) return false;
    const Row& r = rowOf(e.code);
    return get(d, H1) == 0 || get(d, W1) == 0 || get(d, r.third) == 0 || get(d, r.ca) != get(d, r.cb);
}

bool is(const CatalogueEntry& e, std::string_view type, unsigned n, std::string_view lay)
{
    return type == e.type && n == e.size && lay == e.layout;
}
bool oneOf(std::string_view code, std::initializer_list<std::string_view> codes)
{
    for (auto c : codes)
        if (c == code) return true;
    return false;
}

// The closed forms that hold op(src2) (their units say so): they sum from the first
// product and test no table or list entry, bar the maTmT ones in Pointer layouts.
bool held(const CatalogueEntry& e)
{
    std::string_view c = e.code;
    if (is(e, "32f", 3, "P") || is(e, "32f", 3, "PS2")) return oneOf(c, {"mam", "mamT", "maTm"});
    if (is(e, "32f", 3, "LS2")) return oneOf(c, {"mam", "mamT", "maTm", "maTmT"});
    if (is(e, "32f", 3, "S2")) return oneOf(c, {"mam", "mamT", "mama"});
    if (is(e, "32f", 4, "S2")) return oneOf(c, {"mam", "mama"});
    return is(e, "32f", 6, "S2") && oneOf(c, {"mm", "mmT", "mTmT"});
}
bool tree(const CatalogueEntry& e) { return is(e, "32f", 6, "S2") && oneOf(e.code, {"mm", "mmT", "mTmT"}); }
bool packed(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return isF32(e) && e.size && (l == "" || l == "L");
}
// vorxMul_mmT_32f and _64f run the result columns over src2Height, the sum over src2Width.
bool contiguousMmT(const CatalogueEntry& e)
{
    return !e.size && std::string_view(e.code) == "mmT" && std::string_view(e.layout) == "";
}

// The in-place forms: dst the same storage as src1 or src2, same strides.
struct InPlace {
    unsigned size;
    const char* layouts;
    const char* onSrc1;
    const char* onSrc2;
};
const InPlace kInPlace[] = {
    {3, " C L ", " mm mmT mam mamT mama mamaT ", " mm mmT mTm mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT "},
    {4, " C L ", " mm mmT mam mamT mama mamaT ", " mm mmT mTm mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT "},
    {5, " C L ", " mm mmT mam mamT mama mamaT ", " mmT mTmT mma mmaT mTma mTmaT mama mamaT maTma maTmaT "},
    {6, " C L ", " ", " mm mTm mma mmaT mTma mTmaT mama mamaT maTma maTmaT "},
    {3, " S2 ", " mam mamT mama ", " mama "},
    {4, " S2 ", " mam mama ", " mama "},
    {6, " S2 ", " mm mmT ", " mm mmT mTmT "},
    {3, " P PS2 LS2 ", " mam mamT ", " "},
};
bool listed(const char* words, std::string_view w) { return std::string_view(words).find(" " + std::string(w) + " ") != std::string_view::npos; }

class MulMatrix : public MixedModelOf<MulMatrix> {
public:
    bool covers(const CatalogueEntry& e) const override
    {
        auto c = splitCodes(e.code);
        return std::string_view(e.family) == "Mul" && c.size() == 2 && c[0][0] == 'm' && c[1][0] == 'm';
    }

    // Result R x C with inner length K, as (R, C, K): square, and shapes that fit.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        std::vector<uint32_t> counts = isArrayCall(e) ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
        std::vector<std::array<uint32_t, 3>> shapes = {{1, 1, 1}, {3, 3, 3}, {7, 7, 7}, {2, 5, 4}, {4, 2, 2}, {3, 6, 3}, {5, 3, 5}};
        if (e.size) shapes = {{e.size, e.size, e.size}};
        for (auto s : shapes)
            for (uint32_t c : counts) {
                Dims d = dimsOf(e, 0, c);
                if (!e.size) {
                    d.set(kSizeName[W1], s[2]);
                    d.set(kSizeName[H1], s[0]);
                    d.set(kSizeName[W2], s[1]);
                    d.set(kSizeName[H2], s[2]);
                    if (refused(e, d)) continue;
                }
                fitDims(e, d);
                out.push_back(d);
            }
        return out;
    }

    // A call the table lets through reads src1 over src2Height columns: keep that
    // inside src1, and the Contiguous mmT's columns inside dst.
    void fitDims(const CatalogueEntry& e, Dims& d) const override
    {
        if (e.size || refused(e, d)) return;
        if (get(d, W1) != get(d, H2) || (contiguousMmT(e) && get(d, W2) != get(d, H2))) {
            uint32_t n = get(d, H2);
            d.set(kSizeName[W1], n);
            if (refused(e, d) || contiguousMmT(e))
                for (Sz s : {W1, H1, W2, H2}) d.set(kSizeName[s], n);
        }
    }

    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        // The scan of a Pointer array tests as many dst entries as the inner square.
        std::string_view l = e.layout;
        if (!e.size && isArrayCall(e) && (l == "P" || l == "PS2") && std::string_view(o.name) == "dst") {
            const Row& r = rowOf(e.code);
            uint32_t scanned = get(d, r.da) * get(d, r.db), entries = get(d, H1) * get(d, W2);
            if (scanned > entries) opt.tableSlack = std::max(opt.tableSlack, scanned - entries);
        }
    }

    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        if (held(e)) return EntryRule::Untested;
        return Model::entryRule(e, o);
    }

    bool inPlace(const CatalogueEntry& e, const std::string& name) const override
    {
        if (!isF32(e)) return false;
        std::string lay = *e.layout ? e.layout : "C";
        for (const auto& r : kInPlace)
            if (r.size == e.size && listed(r.layouts, lay) && listed(name == "src1" ? r.onSrc1 : r.onSrc2, e.code))
                return true;
        return false;
    }

    // A single src2 held in registers is loaded before the count test.
    bool readsAhead(const CatalogueEntry& e, const std::string& name) const override
    {
        return name == "src2" && oneOf(e.code, {"mam", "mamT", "maTm", "maTmT"}) && (packed(e) || held(e));
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        if (refused(e, in.d)) return vorxStatusBadSize;
        uint32_t R = get(in.d, H1), C = get(in.d, W2), K = get(in.d, H2);
        if (contiguousMmT(e)) std::swap(C, K);
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t i = 0; i < R; ++i)
                for (uint32_t j = 0; j < C; ++j) {
                    std::vector<T> x(K), y(K);
                    for (uint32_t n = 0; n < K; ++n) {
                        x[n] = in.in("src1", k, i, n);
                        y[n] = in.in("src2", k, n, j);
                    }
                    d.set(k, i, j, sum(e, x, y));
                }
        return vorxStatusOk;
    }

private:
    // One element from its K pairs of factors.
    template <class T>
    static T sum(const CatalogueEntry& e, const std::vector<T>& x, const std::vector<T>& y)
    {
        size_t K = x.size();
        if constexpr (sizeof(T) == 4) {
            std::vector<float> p(K);
            for (size_t n = 0; n < K; ++n) p[n] = f32::mul(x[n], y[n]);
            if (tree(e)) {
                using f32::add;
                return add(add(add(p[0], p[1]), add(p[2], p[3])), add(p[4], p[5]));
            }
            // Packed and closed forms begin with the first product, the element loops
            // with +0.0 (which shows in the sign of a zero sum).
            bool first = packed(e) || held(e);
            float s = first ? p[0] : f32::add(0.0f, p[0]);
            for (size_t n = 1; n < K; ++n) s = f32::add(s, p[n]);
            return K ? s : 0.0f;
        } else {
            std::string_view l = e.layout;
            if (l == "" || l == "S2") {  // the sum at register width, one rounding
                long double s = 0;
                for (size_t n = 0; n < K; ++n) s = s + static_cast<long double>(x[n]) * y[n];
                return roundToDouble(s);
            }
            double d = 0;  // through dst, rounded at every step
            for (size_t n = 0; n < K; ++n)
                d = roundToDouble(static_cast<long double>(d) + static_cast<long double>(x[n]) * y[n]);
            return d;
        }
    }
};

const MulMatrix kModel;
const RegisterModel kRegistered(&kModel);

}  // namespace
}  // namespace vt
