// The models of the moves: transpose, copy, extract and load identity. They only
// move values: a 32f element keeps its bits, a 64f one goes through an x87 load and
// store, which quietens a signalling NaN. Where a form indexes a table its own way,
// the model follows the entry, not the operand's element order.
#include "models/shape.h"

namespace vt {
namespace {

using namespace shape;

// Values are carried as bytes, never returned by value: on i386 a float returned by
// value passes the x87 unit, which would quieten a signalling NaN.
template <class T>
void move(T& v)
{
    if constexpr (sizeof(T) == 8) {
        uint64_t b;
        std::memcpy(&b, &v, 8);
        if ((b & 0x7ff0000000000000ull) == 0x7ff0000000000000ull && (b & 0x000fffffffffffffull)) b |= 1ull << 51;
        std::memcpy(&v, &b, 8);
    }
}
template <class T>
void element(const Laid<T>& l, uint32_t k, uint32_t i, uint32_t j, T& v)
{
    l.peek(l.offsetOf(k, i, j), v);
}

// What table entry n of object k leads to, with the operand's shift: an element,
// or past the elements a planted cell.
template <class T>
void behind(const Laid<T>& l, uint32_t k, uint32_t n, T& v)
{
    if (n < l.rows() * l.cols()) element(l, k, n / l.cols(), n % l.cols(), v);
    else l.peek(l.entryTarget(n) + int64_t(k) * l.objectStride(), v);
}
template <class T>
void setEntry(Laid<T>& l, uint32_t k, uint32_t n, T v)
{
    l.set(k, n / l.cols(), n % l.cols(), v);
}

class Transpose : public ModelOf<Transpose> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "Transpose"); }

    // Run-time Pointer forms take source entry i*height + j and dst entry j*width + i.
    static bool tablesByOther(const CatalogueEntry& e) { return !e.size && pointer(e); }

    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out;
        for (Dims d : defaultCases(e)) {
            fitDims(e, d);
            out.push_back(d);
        }
        return out;
    }

    // With width > height those forms write dst entries past its width*height
    // elements, cells the harness cannot own; that case has its own test.
    void fitDims(const CatalogueEntry& e, Dims& d) const override
    {
        if (tablesByOther(e) && d["width"] > d["height"]) {
            uint32_t w = d["width"];
            d.set("width", d["height"]);
            d.set("height", w);
        }
    }

    // ... and read source entries up to (height-1)*height + width - 1.
    void options(const CatalogueEntry& e, const Dims& d, const Operand& o, Options& opt) const override
    {
        uint32_t w = d["width"], h = d["height"];
        if (!tablesByOther(e) || std::string_view(o.name) != "src" || w == 0 || h == 0) return;
        uint32_t reach = (h - 1) * h + w;
        if (reach > w * h) opt.tableSlack = std::max(opt.tableSlack, reach - w * h);
    }

    // One run-time matrix in Pointer layout tests entries that a non-square shape
    // may never reach: its own test.
    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        if (tablesByOther(e) && !isArrayCall(e)) return EntryRule::Untested;
        return Model::entryRule(e, o);
    }

    // Every fixed size in place, with the order of its moves.
    bool inPlace(const CatalogueEntry& e, const std::string& name) const override { return e.size && name == "src"; }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const uint32_t w = in.d["width"], h = in.d["height"];
        if (!e.size && (w == 0 || h == 0)) return vorxStatusBadSize;
        const Laid<T>& s = in.op("src");
        Laid<T>& d = out.op("dst");
        const bool alias = in.aliasDst == "src";  // square: dst (i, j) is src (i, j)
        const uint32_t ps = tablesByOther(e) ? h : w, pd = tablesByOther(e) ? w : h;
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (const auto& group : moves(e, w, h)) {
                std::vector<T> v(group.size());
                for (size_t n = 0; n < group.size(); ++n) {
                    auto [i, j] = group[n];
                    if (alias) element(d, k, i, j, v[n]);
                    else behind(s, k, i * ps + j, v[n]);
                }
                for (size_t n = 0; n < group.size(); ++n) {
                    move(v[n]);
                    setEntry(d, k, group[n].second * pd + group[n].first, v[n]);
                }
            }
        return vorxStatusOk;
    }

private:
    using Group = std::vector<std::pair<uint32_t, uint32_t>>;
    // Source elements in the order they move, a group read before any of it is
    // stored: the tiles of the 32f fixed sizes (all four at once at 4x4), then the
    // elements they leave, in row order; elsewhere one element at a time.
    static std::vector<Group> moves(const CatalogueEntry& e, uint32_t w, uint32_t h)
    {
        std::vector<Group> out;
        const uint32_t n = e.size;
        bool tiles = fixedAdjacent32(e) && !(n == 5 && isArrayCall(e) && !*e.layout);
        uint32_t covered = tiles ? n & ~1u : 0;
        for (uint32_t i = 0; i < covered; i += 2)
            for (uint32_t j = 0; j < covered; j += 2) out.push_back({{i, j}, {i, j + 1}, {i + 1, j}, {i + 1, j + 1}});
        if (n == 4 && tiles) {
            Group all;
            for (const auto& g : out) all.insert(all.end(), g.begin(), g.end());
            out = {all};
        }
        for (uint32_t i = 0; i < h; ++i)
            for (uint32_t j = 0; j < w; ++j)
                if (i >= covered || j >= covered) out.push_back({{i, j}});
        return out;
    }
};

class Copy : public ModelOf<Copy> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "Copy"); }
    EntryRule entryRule(const CatalogueEntry&, const Operand&) const override { return EntryRule::Untested; }

    static bool throughDst(const CatalogueEntry& e) { return std::string_view(e.code) == "va" && std::string_view(e.layout) == "PP"; }

    // va PP reads through dst's table with src's shift and object stride: strides that
    // keep those reads inside dst's memory, 2 bytes off its elements.
    void options(const CatalogueEntry& e, const Dims&, const Operand& o, Options& opt) const override
    {
        if (!throughDst(e)) return;
        int32_t E = isF32(e) ? 4 : 8;
        opt.explicitStrides = true;
        opt.os = E + 4;
        opt.bs = std::string_view(o.name) == "dst" ? 5 : 7;
        opt.slack = std::max(opt.slack, 2u);  // the last read ends 2 bytes past dst's last element
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const bool vectors = std::string_view(e.code) == "va";
        const uint32_t w = vectors ? in.d["len"] : in.d["width"], h = vectors ? 1 : in.d["height"];
        if (vectors && w == 0) return vorxStatusBadSize;
        const Laid<T>& s = in.op("src");
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t i = 0; i < h; ++i)
                for (uint32_t j = 0; j < w; ++j) {
                    T v;
                    if (throughDst(e))
                        d.peek(d.entryTarget(j) - d.byteShift() + s.byteShift() + int64_t(k) * s.objectStride(), v);
                    else
                        element(s, k, i, j, v);
                    move(v);
                    d.set(k, i, j, v);
                }
        return vorxStatusOk;
    }
};

class Extract : public ModelOf<Extract> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "Extract"); }
    EntryRule entryRule(const CatalogueEntry&, const Operand&) const override { return EntryRule::Untested; }

    // m and mT in Pointer layout, and the 64f vector in Pointer layout, check nothing.
    static bool unchecked(const CatalogueEntry& e)
    {
        std::string_view c = e.code;
        return std::string_view(e.layout) == "P" && (c[0] == 'm' || !isF32(e));
    }
    bool nullChecked(const CatalogueEntry& e, const Operand&) const override { return !unchecked(e); }

    // mT in Pointer layout reads at the entries unshifted: as far past an element as
    // the shift is below zero (drawn shifts reach -40 bytes).
    void options(const CatalogueEntry& e, const Dims&, const Operand& o, Options& opt) const override
    {
        if (std::string_view(e.code) == "mT" && std::string_view(e.layout) == "P" && std::string_view(o.name) == "src")
            opt.slack = std::max(opt.slack, 40u);
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const std::string_view code = e.code, lay = e.layout;
        const bool vectors = code[0] == 'v', array = isArrayCall(e);
        const uint32_t w = vectors ? in.d["len"] : in.d["width"], h = vectors ? 1 : in.d["height"];
        if (!unchecked(e) && (w == 0 || h == 0 || (array && in.d.count == 0))) return vorxStatusBadSize;
        const Laid<T>& s = in.op("src");
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k)
            for (uint32_t i = 0; i < h; ++i)
                for (uint32_t j = 0; j < w; ++j) {
                    uint32_t at = (k * h + i) * w + j;
                    T v;
                    if (code == "mT" && lay == "P") {
                        // the stored matrix's entries, unshifted, to the transposed place
                        s.peek(s.entryTarget(i * w + j) - s.byteShift(), v);
                        at = j * h + i;
                    } else if (code == "maT" && lay == "PS2") {
                        behind(s, k, i * w + j, v);  // entry by entry, untransposed
                    } else if (isTransposed(std::string(code))) {
                        element(s, k, j, i, v);
                    } else {
                        element(s, k, i, j, v);
                    }
                    move(v);
                    d.set(0, 0, at, v);
                }
        return vorxStatusOk;
    }
};

class LoadIdentity : public ModelOf<LoadIdentity> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "LoadIdentity"); }
    EntryRule entryRule(const CatalogueEntry&, const Operand&) const override { return EntryRule::Untested; }

    // Drawn strides, which no floor changes (the floors have their own test).
    void options(const CatalogueEntry&, const Dims&, const Operand&, Options& opt) const override
    {
        opt.explicitStrides = false;
        opt.zeroObjectStride = false;
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        if (in.d.count == 0) return vorxStatusBadSize;
        const int32_t w = static_cast<int32_t>(in.d["width"]), h = static_cast<int32_t>(in.d["height"]);
        Laid<T>& d = out.op("dst");  // rows reach column count*height - 1
        const bool table = pointer(*in.e);
        auto put = [&](uint32_t k, uint32_t i, uint32_t j, T v) {
            if (table) setEntry(d, k, i * w + j, v);  // entry i*width + j
            else d.set(k, i, j, v);
        };
        uint32_t diag = 0;
        for (uint32_t k = 0; k < in.d.count; ++k)
            for (int32_t i = 0; i < h; ++i) {
                for (int32_t j = 0; j < w; ++j) put(k, i, j, T(0));
                put(k, i, diag++, T(1));
            }
        return vorxStatusOk;
    }
};

const Transpose kTranspose;
const Copy kCopy;
const Extract kExtract;
const LoadIdentity kLoadIdentity;
const RegisterModel kRegistered1(&kTranspose), kRegistered2(&kCopy), kRegistered3(&kExtract),
    kRegistered4(&kLoadIdentity);

}  // namespace
}  // namespace vt
