// The catalogue fuzzer: the input chooses an entry, its sizes and count, the strides
// and byte shifts of every operand (odd, negative, zero for sources), the data,
// aliasing where the family promises it, and a null pointer at the top level or in a
// table or list. Every operand lies in guarded memory: guard bytes around every
// element, an inaccessible page behind the last byte the function may read. The
// harness then checks the call against the family's model: status (and so the order
// of the checks), every output element, no byte written outside the outputs, the
// sources unchanged. A difference aborts with its description.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "harness.h"

namespace vt {
std::set<std::string>& calledNames()
{
    static thread_local std::set<std::string> names;
    return names;
}
void digest(const std::vector<unsigned char>&) {}
void digest(int32_t) {}
}  // namespace vt

namespace {

using namespace vt;

// Strides of one operand of `rows` x `cols` stored elements of E bytes: elements
// that never share bytes (outputs, and the source dst shares), or anything at all.
void drawStrides(FuzzedDataProvider& in, Options& o, int32_t E, uint32_t rows, uint32_t cols, bool apart)
{
    auto sign = [&] { return in.ConsumeBool() ? -1 : 1; };
    auto pad = [&](int hi) { return in.ConsumeIntegralInRange<int32_t>(0, hi); };
    o.explicitStrides = true;
    if (apart) {
        o.es = sign() * (E + pad(2 * E));
        int32_t row = static_cast<int32_t>(std::max(cols, 1u) - 1) * std::abs(o.es) + E;
        o.rs = sign() * (row + pad(3 * E));
        o.os = sign() * (static_cast<int32_t>(std::max(rows, 1u) - 1) * std::abs(o.rs) + row + pad(3 * E));
    } else {
        o.es = sign() * pad(3 * E);
        o.rs = sign() * pad(static_cast<int32_t>(cols + 1) * 2 * E);
        o.os = sign() * pad(static_cast<int32_t>((rows + 1) * (cols + 1)) * 2 * E);
    }
    o.bs = in.ConsumeIntegralInRange<int32_t>(-40, 40);
}

// The case an input makes, for a replay (scripts/fuzz.sh --replay sets VORX_FUZZ_SHOW).
template <class T>
void show(const Specimen<T>& s, const Null& null)
{
    std::fprintf(stderr, "vorx fuzz case: %s count %u", s.e->name, s.d.count);
    for (const auto& [name, value] : s.d.v) std::fprintf(stderr, " %s %u", name.c_str(), value);
    if (!s.aliasDst.empty()) std::fprintf(stderr, " dst=%s", s.aliasDst.c_str());
    if (!null.op.empty()) std::fprintf(stderr, " null %s%s %u", null.op.c_str(), null.entry ? " entry" : "", null.index);
    std::fprintf(stderr, "\n");
    for (const auto& a : s.args)
        if (a.elems)
            std::fprintf(stderr, "  %s: %ux%u objects %u os %d rs %d es %d bs %d table %zu\n", a.desc->name,
                         a.elems->rows(), a.elems->cols(), a.elems->count(), a.elems->objectStride(),
                         a.elems->rowStride(), a.elems->elemStride(), a.elems->byteShift(), a.elems->tableSize());
}

template <class T>
std::string run(FuzzedDataProvider& in, const CatalogueEntry& e, const Model& m)
{
    Dims d = dimsOf(e, 0, 0);
    for (auto& [name, value] : d.v) {
        uint8_t b = in.ConsumeIntegral<uint8_t>();
        value = e.size ? e.size : (b % 16 == 0 ? 0 : 1 + b % 7);
    }
    d.count = d.array ? in.ConsumeIntegralInRange<uint32_t>(0, 5) : 1;
    m.fitDims(e, d);
    Draw draw;
    draw.data = static_cast<Data>(in.ConsumeIntegralInRange<int>(0, 2));
    draw.seed = in.ConsumeIntegral<uint32_t>();
    std::string alias;
    for (unsigned n = 0; n < e.operandCount; ++n) {
        const Operand& o = e.operands[n];
        if (o.role == 'o' && !o.out && m.inPlace(e, o.name) && in.ConsumeIntegralInRange<int>(0, 3) == 0)
            alias = o.name;
    }
    draw.aliasDst = alias;
    for (unsigned n = 0; n < e.operandCount; ++n) {
        const Operand& o = e.operands[n];
        if (o.role != 'o' && o.role != 'b' && o.role != 'r' && o.role != 'i') continue;
        Options& opt = draw.options[o.name];
        opt.guardPage = true;
        opt.misalign = in.ConsumeIntegralInRange<int>(0, 15);
        if (o.role == 'o' && in.ConsumeBool()) {
            uint32_t rows = d.eval(o.rows), cols = d.eval(o.cols);
            if (isTransposed(o.kind)) std::swap(rows, cols);
            drawStrides(in, opt, static_cast<int32_t>(sizeof(T)), rows, cols, o.out || alias == o.name);
        }
    }
    if (!alias.empty()) draw.options[alias] = draw.options["dst"];
    Specimen<T> s = Specimen<T>::make(e, d, draw);
    Null null;
    int what = in.ConsumeIntegralInRange<int>(0, 7);
    std::vector<const Operand*> tops, tables;
    for (unsigned n = 0; n < e.operandCount; ++n) {
        const Operand& o = e.operands[n];
        if ((o.role == 'o' || o.role == 'b' || o.role == 'r' || o.role == 'i') && m.nullChecked(e, o))
            tops.push_back(&o);
        if (o.role == 'o' && s.op(o.name).usesTable() && m.entryRule(e, o) != EntryRule::Untested &&
            o.name != alias && !(o.out && !alias.empty()))
            tables.push_back(&o);
    }
    if (what == 0 && !tops.empty()) {
        null.op = tops[in.ConsumeIntegralInRange<size_t>(0, tops.size() - 1)]->name;
    } else if (what == 1 && !tables.empty()) {
        // The entries of the operand's own elements, or a list's `count` entries (none
        // at count 0); entries a form reads beyond them are never tested.
        const char* name = tables[in.ConsumeIntegralInRange<size_t>(0, tables.size() - 1)]->name;
        const Laid<T>& l = s.op(name);
        const bool list = l.layout() == Lay::L || l.layout() == Lay::LS2;
        const uint32_t entries = list ? d.count : l.rows() * l.cols();
        if (entries) {
            null.op = name;
            null.entry = true;
            null.index = in.ConsumeIntegralInRange<uint32_t>(0, entries - 1);
        }
    }
    if (std::getenv("VORX_FUZZ_SHOW")) show(s, null);
    return verify(m, s, null);
}

// The entries the input chooses from: the whole catalogue, or those whose names begin
// with VORX_FUZZ_ONLY (scripts/fuzz.sh --only PREFIX).
const std::vector<const CatalogueEntry*>& chosen()
{
    static const std::vector<const CatalogueEntry*> list = [] {
        const char* only = std::getenv("VORX_FUZZ_ONLY");
        std::string_view prefix = only ? only : "";
        std::vector<const CatalogueEntry*> v;
        for (const CatalogueEntry& e : kCatalogue)
            if (std::string_view(e.name).starts_with(prefix)) v.push_back(&e);
        if (v.empty()) {
            std::fprintf(stderr, "vorx fuzz: no entry begins with %s\n", only);
            std::exit(2);
        }
        return v;
    }();
    return list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const CatalogueEntry& e = *chosen()[in.ConsumeIntegral<uint16_t>() % chosen().size()];
    const Model* m = modelFor(e);
    if (!m) {
        std::fprintf(stderr, "%s has no model\n", e.name);
        std::abort();
    }
    std::string why = isF32(e) ? run<float>(in, e, *m) : run<double>(in, e, *m);
    if (!why.empty()) {
        std::fprintf(stderr, "vorx fuzz: %s\n", why.c_str());
        std::abort();
    }
    return 0;
}
