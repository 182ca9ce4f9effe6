// The models of the matrix functionals: the trace's two forms of one ascending sum,
// and the Frobenius norm's scalar orders and packed trees, whose root is the
// reciprocal-root estimate (taken from the instruction at run time) and one Newton
// step.
#include <xmmintrin.h>

#include <array>

#include "models/shape.h"

namespace vt {
namespace {

using namespace shape;
// Packed norms of 3x3 and 4x4 arrays go four objects at a time.
bool blocks(const CatalogueEntry& e) { return fixedAdjacent32(e) && isArrayCall(e) && e.size <= 4; }

class Trace : public ModelOf<Trace> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "Trace"); }

    // Pointer forms: the first-row scan of arrays and the diagonal entries of one
    // matrix, which a null off the diagonal never meets, have their own tests.
    EntryRule entryRule(const CatalogueEntry& e, const Operand& o) const override
    {
        return pointer(e) ? EntryRule::Untested : Model::entryRule(e, o);
    }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const uint32_t n = in.d["widthHeight"];
        if (!in.e->size && n == 0) return vorxStatusBadSize;
        Laid<T>& d = out.op("dst");
        for (uint32_t k = 0; k < in.objects(); ++k) {
            auto a = [&](uint32_t i) { return in.in("src", k, i, i); };
            if constexpr (sizeof(T) == 4) {
                // From a00, or from +0.0.
                bool first = fixedAdjacent32(*in.e);
                float s = first ? a(0) : f32::add(0.0f, a(0));
                for (uint32_t i = 1; i < n; ++i) s = f32::add(s, a(i));
                d.set(0, 0, k, s);
            } else {
                long double s = 0;
                for (uint32_t i = 0; i < n; ++i) s += a(i);
                d.set(0, 0, k, roundToDouble(s));
            }
        }
        return vorxStatusOk;
    }
};

// Four-lane arithmetic of the packed norms, lane by lane.
using Lanes = std::array<float, 4>;
Lanes add(const Lanes& a, const Lanes& b) { return {f32::add(a[0], b[0]), f32::add(a[1], b[1]), f32::add(a[2], b[2]), f32::add(a[3], b[3])}; }
Lanes sq(Lanes a)
{
    for (float& x : a) x = f32::mul(x, x);
    return a;
}
float horizontal(const Lanes& v) { return f32::add(f32::add(v[0], v[2]), f32::add(v[1], v[3])); }
float newton(float x, float y)
{
    using namespace f32;
    return mul(x, mul(y, mul(0.5f, sub(3.0f, mul(x, mul(y, y))))));
}
float estimate(float x) { return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x))); }
Lanes estimate(const Lanes& x)
{
    Lanes y;
    _mm_storeu_ps(y.data(), _mm_rsqrt_ps(_mm_loadu_ps(x.data())));
    return y;
}

class FrobNorm : public ModelOf<FrobNorm> {
public:
    bool covers(const CatalogueEntry& e) const override { return is(e, "FrobNorm"); }

    // Packed arrays of 3x3 and 4x4 also with full blocks and a remainder.
    std::vector<Dims> cases(const CatalogueEntry& e) const override
    {
        std::vector<Dims> out = defaultCases(e);
        if (blocks(e))
            for (uint32_t c : {4u, 5u, 11u}) out.push_back(dimsOf(e, 0, c));
        return out;
    }

    // The 3x3 blocks load 16 bytes from each row start, 4 past the row.
    void options(const CatalogueEntry& e, const Dims&, const Operand& o, Options& opt) const override
    {
        if (blocks(e) && e.size == 3 && std::string_view(o.name) == "src") opt.slack = std::max(opt.slack, 4u);
    }

    // Packed List blocks test their four entries together: a null in a block leaves
    // the block unwritten.
    uint32_t objectsBeforeNullEntry(const CatalogueEntry& e, const Operand&, uint32_t entry, uint32_t count) const override
    {
        return blocks(e) && entry < (count & ~3u) ? entry & ~3u : entry;
    }

    // One matrix in Pointer layout stores its result at the end only.
    bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t, uint32_t& n) const override
    {
        n = 0;
        return true;
    }

    bool sameOnEveryMachine(const CatalogueEntry& e) const override { return !fixedAdjacent32(e); }

    template <class T>
    vorxStatus run(const Specimen<T>& in, Specimen<T>& out) const
    {
        const CatalogueEntry& e = *in.e;
        const uint32_t w = in.d["width"], h = in.d["height"];
        if (!e.size && (w == 0 || h == 0)) return vorxStatusBadSize;
        Laid<T>& d = out.op("dst");
        const uint32_t n = in.objects(), inBlocks = blocks(e) ? n & ~3u : 0;
        for (uint32_t k = 0; k < inBlocks; k += 4) {
            Lanes x;
            for (uint32_t o = 0; o < 4; ++o) x[o] = blockSum(in, k + o);
            Lanes y = estimate(x);
            for (uint32_t o = 0; o < 4; ++o) d.set(0, 0, k + o, static_cast<T>(newton(x[o], y[o])));
        }
        for (uint32_t k = inBlocks; k < n; ++k) {
            if constexpr (sizeof(T) == 4) {
                if (fixedAdjacent32(e)) {
                    float x = treeSum(in, k);
                    d.set(0, 0, k, newton(x, estimate(x)));
                    continue;
                }
                float s = 0.0f;
                scalarOrder(in, k, w, h, [&](float a) { s = f32::add(s, f32::mul(a, a)); });
                d.set(0, 0, k, _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(s))));
            } else {
                long double s = 0;
                scalarOrder(in, k, w, h, [&](double a) { s += static_cast<long double>(a) * a; });
                d.set(0, 0, k, roundToDouble(__builtin_sqrtl(s)));
            }
        }
        return vorxStatusOk;
    }

private:
    // One matrix row by row, the matrices of an array column by column.
    template <class T, class F>
    static void scalarOrder(const Specimen<T>& in, uint32_t k, uint32_t w, uint32_t h, F add)
    {
        if (!in.d.array)
            for (uint32_t i = 0; i < h; ++i)
                for (uint32_t j = 0; j < w; ++j) add(in.in("src", k, i, j));
        else
            for (uint32_t j = 0; j < w; ++j)
                for (uint32_t i = 0; i < h; ++i) add(in.in("src", k, i, j));
    }

    // The tree of one matrix; a 3x3 row lies in lanes as (a, 0, b, c).
    template <class T>
    static float treeSum(const Specimen<T>& in, uint32_t k)
    {
        auto a = [&](uint32_t i, uint32_t j) { return static_cast<float>(in.in("src", k, i, j)); };
        auto row = [&](uint32_t i, uint32_t j) { return sq(Lanes{a(i, j), a(i, j + 1), a(i, j + 2), a(i, j + 3)}); };
        switch (in.e->size) {
        case 3: {
            auto r = [&](uint32_t i) { return sq(Lanes{a(i, 0), 0.0f, a(i, 1), a(i, 2)}); };
            return horizontal(add(add(r(0), r(1)), r(2)));
        }
        case 4: return horizontal(add(add(row(0, 0), row(1, 0)), add(row(2, 0), row(3, 0))));
        case 5: {
            float c = f32::add(f32::add(f32::add(f32::mul(a(0, 4), a(0, 4)), f32::mul(a(1, 4), a(1, 4))),
                                        f32::add(f32::mul(a(2, 4), a(2, 4)), f32::mul(a(3, 4), a(3, 4)))),
                               f32::mul(a(4, 4), a(4, 4)));
            return f32::add(horizontal(add(add(add(row(0, 0), row(1, 0)), add(row(2, 0), row(3, 0))), row(4, 0))), c);
        }
        default: {
            auto p = [&](uint32_t i) { return sq(Lanes{a(i, 4), a(i, 5), a(i + 1, 4), a(i + 1, 5)}); };
            float v = horizontal(add(add(add(row(0, 0), row(1, 0)), add(row(2, 0), row(3, 0))), add(row(4, 0), row(5, 0))));
            return f32::add(v, horizontal(add(add(p(0), p(2)), p(4))));
        }
        }
    }

    // One object's lane of a block.
    template <class T>
    static float blockSum(const Specimen<T>& in, uint32_t k)
    {
        auto q = [&](uint32_t i, uint32_t j) {
            float x = static_cast<float>(in.in("src", k, i, j));
            return f32::mul(x, x);
        };
        using f32::add;
        if (in.e->size == 3)
            return add(add(add(add(q(0, 0), q(0, 1)), q(2, 2)), add(q(0, 2), q(1, 0))),
                       add(add(q(1, 1), q(1, 2)), add(q(2, 0), q(2, 1))));
        float c[4];
        for (uint32_t j = 0; j < 4; ++j) c[j] = add(add(q(0, j), q(1, j)), add(q(2, j), q(3, j)));
        return add(add(c[0], c[1]), add(c[2], c[3]));
    }
};

const Trace kTrace;
const FrobNorm kFrobNorm;
const RegisterModel kRegistered1(&kTrace), kRegistered2(&kFrobNorm);

}  // namespace
}  // namespace vt
