// Element-wise forms on operands that lie as one run (Contiguous objects with no gap,
// Pointer tables whose elements' stretches follow each other): every array function
// of Add and Sub, counts around the four-lane and pattern boundaries, bit for bit
// against the element reference (32f NaN payloads included), nothing written
// outside dst, and the same in place.
#include <cmath>

#include <gtest/gtest.h>

#include "fixture.h"

namespace {

using vt::Laid;

template <class T>
struct DenseCase {
    std::vector<std::string> codes;
    bool sub, valueFirst, matrix;
    uint32_t rows, cols, count;
    std::mt19937 rng;
    std::vector<Laid<T>> src;  // the array or object operands, in call order
    std::vector<Laid<T>> out;
    T value;
    ArgPack args;

    DenseCase(const CatalogueEntry& e, uint32_t cnt, unsigned seed)
        : codes(vt::splitCodes(e.code)), sub(std::string_view(e.family) == "Sub"),
          valueFirst(codes[0] == "c"), matrix(e.code[0] == 'm'), count(cnt), rng(seed)
    {
        vt::Lay lay = vt::layoutOf(e.layout);
        cols = e.size ? e.size : 5;
        rows = matrix ? (e.size ? e.size : 3) : 1;
        vt::Options o;
        o.tight = o.run = true;
        for (const auto& c : codes) {
            if (c == "c") continue;
            bool t = vt::isTransposed(c);
            src.emplace_back(lay, vt::isArrayCode(c), count, t ? cols : rows, t ? rows : cols, rng, o);
        }
        out.emplace_back(lay, true, count, rows, cols, rng, o);
        value = vt::randomValue<T>(rng);
        for (auto& s : src) s.randomize(rng);
        out[0].randomize(rng);
        if constexpr (sizeof(T) == 4) {
            // NaNs with payloads of their own, never in both operands of one element
            // (which one SSE returns then is not what an emulator returns).
            for (size_t n = 0; n < src.size(); ++n)
                if (vt::isArrayCode(codes[n]))
                    for (uint32_t k = static_cast<uint32_t>(n); k < src[n].count(); k += 3)
                        src[n].set(k, 0, 0, nan(k));
        }
        bind(out[0]);
    }
    static float nan(uint32_t payload)
    {
        uint32_t bits = 0x7fc00000u | ((payload + 1) & 0xffff);  // quiet: x87 moves keep it
        float f;
        std::memcpy(&f, &bits, 4);
        return f;
    }
    void bind(Laid<T>& dst)
    {
        args = ArgPack{};
        if (src.size() == 2) {
            src[0].bind(args, "src1");
            src[1].bind(args, "src2");
        } else {
            src[0].bind(args, "src");
            args.value = value;
        }
        dst.bind(args, "dst");
        args.len = cols;
        args.width = cols;
        args.height = rows;
        args.count = count;
    }
    T operand(const std::vector<Laid<T>>& in, size_t n, uint32_t k, uint32_t i, uint32_t j) const
    {
        const Laid<T>& l = in[n];
        bool t = vt::isTransposed(codes[n]);
        return l.get(l.count() > 1 ? k : 0, t ? j : i, t ? i : j);
    }
    T expected(const std::vector<Laid<T>>& in, uint32_t k, uint32_t i, uint32_t j) const
    {
        if (in.size() == 2) return sse(operand(in, 0, k, i, j), operand(in, 1, k, i, j), sub);
        T x = operand(in, 0, k, i, j);
        return valueFirst ? sse(value, x, true) : sse(x, value, sub);
    }
    // One operation; a NaN operand comes out quietened, with its payload.
    static T sse(T a, T b, bool s)
    {
        if constexpr (sizeof(T) == 4) {
            if (std::isnan(a) || std::isnan(b)) {
                uint32_t bits;
                std::memcpy(&bits, std::isnan(a) ? &a : &b, 4);
                bits |= 0x00400000u;
                std::memcpy(&a, &bits, 4);
                return a;
            }
        }
        return vt::addOrSub(s, a, b);
    }
};

template <class T>
void checkDense(const CatalogueEntry& e)
{
    unsigned seed = 3;
    for (uint32_t count : {1u, 2u, 3u, 4u, 5u, 7u, 13u})
        for (bool inPlace : {false, true}) {
            DenseCase<T> c(e, count, seed++);
            // In place: dst the first source, when that is a plain array.
            bool canInPlace = !c.valueFirst && vt::isArrayCode(c.codes[0]) && !vt::isTransposed(c.codes[0]);
            if (inPlace && !canInPlace) continue;
            std::vector<Laid<T>> in = c.src;
            Laid<T>& dst = inPlace ? c.src[0] : c.out[0];
            c.bind(dst);
            ASSERT_EQ(vt::call(e, c.args), vorxStatusOk) << e.name << " count " << count;
            vt::digest(dst.bytes());
            for (uint32_t k = 0; k < count; ++k)
                for (uint32_t i = 0; i < c.rows; ++i)
                    for (uint32_t j = 0; j < c.cols; ++j)
                        ASSERT_TRUE(vt::sameBits(dst.get(k, i, j), c.expected(in, k, i, j)))
                            << e.name << " count " << count << (inPlace ? " in place" : "") << " object "
                            << k << " element " << i << ", " << j;
            EXPECT_TRUE(dst.guardsIntact()) << e.name << " wrote outside dst";
        }
}

TEST(DenseRuns, ElementWiseArraysOnOneRun)
{
    for (const char* fam : {"Add", "Sub"})
        for (const auto* e : vt::entries(fam, [](const CatalogueEntry& x) {
                 std::string_view lay(x.layout);
                 return std::string_view(x.code).find('a') != std::string_view::npos &&
                        (lay == "" || lay == "P");
             })) {
            if (std::string_view(e->type) == "32f")
                checkDense<float>(*e);
            else
                checkDense<double>(*e);
        }
}

}  // namespace
