// Vector addition and subtraction: every function of the families against a plain
// reference, bit for bit, in every layout with guarded outputs; then the statuses
// and partial writes of the frame, in-place and overlapping calls.
#include <gtest/gtest.h>

#include "fixture.h"

namespace {

using vt::Laid;

bool isVectorCode(const CatalogueEntry& e)
{
    for (const auto& c : vt::splitCodes(e.code))
        if (c[0] == 'm') return false;
    return true;
}

// Calls `check(T{}, entry)` for every vector Add/Sub function, T its element type.
template <class Check>
void eachVectorFunction(Check check)
{
    for (const char* fam : {"Add", "Sub"})
        for (const auto* e : vt::entries(fam, isVectorCode)) {
            if (std::string_view(e->type) == "32f")
                check(float{}, *e);
            else
                check(double{}, *e);
        }
}

template <class T>
T reference(bool sub, T a, T b) { return vt::addOrSub(sub, a, b); }

// One call of a vector Add/Sub function on fresh random operands.
template <class T>
struct VectorCase {
    const CatalogueEntry& e;
    std::vector<std::string> codes;
    vt::Lay lay;
    uint32_t len, count;
    bool array;
    std::mt19937 rng;
    std::vector<Laid<T>> src;  // the vector operands, in call order
    T value = 0;
    bool valueFirst = false;   // cv, cva: value - src
    Laid<T> dst;
    ArgPack args;

    VectorCase(const CatalogueEntry& entry, uint32_t n, uint32_t cnt, unsigned seed,
               vt::Options dstOptions = {})
        : e(entry), codes(vt::splitCodes(entry.code)), lay(vt::layoutOf(entry.layout)),
          len(n), count(cnt), array(false), rng(seed), dst(make(false, dstOptions))
    {
        for (const auto& c : codes) array = array || vt::isArrayCode(c);
        dst = make(array, dstOptions);
        for (const auto& c : codes)
            if (c != "c") src.push_back(make(vt::isArrayCode(c), {}));
        valueFirst = codes[0] == "c";
        value = vt::randomValue<T>(rng);
        for (auto& s : src) s.randomize(rng);
        dst.randomize(rng);
        bindAll();
    }

    Laid<T> make(bool isArray, vt::Options o) { return Laid<T>(lay, isArray, count, 1, len, rng, o); }

    void bindAll()
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
        args.len = len;
        args.count = count;
    }

    // Expected element (k, j): src1 op src2, or src op value, or value - src.
    T expected(const std::vector<Laid<T>>& in, uint32_t k, uint32_t j) const
    {
        bool sub = std::string_view(e.family) == "Sub";
        auto at = [&](const Laid<T>& l) { return l.get(l.count() > 1 ? k : 0, 0, j); };
        if (in.size() == 2) return reference(sub, at(in[0]), at(in[1]));
        return valueFirst ? reference(true, value, at(in[0])) : reference(sub, at(in[0]), value);
    }

    uint32_t objects() const { return array ? count : 1; }
};

template <class T>
void checkAll(const CatalogueEntry& e)
{
    std::vector<uint32_t> lens = e.size ? std::vector<uint32_t>{e.size}
                                        : std::vector<uint32_t>{1, 3, 10, 11, 19, 37};
    std::vector<uint32_t> counts = {1};
    for (const auto& c : vt::splitCodes(e.code))
        if (vt::isArrayCode(c)) counts = {0, 1, 5};
    unsigned seed = 1;
    for (uint32_t len : lens)
        for (uint32_t count : counts) {
            VectorCase<T> c(e, len, count, seed++);
            auto before = c.dst.bytes();
            std::vector<Laid<T>> in = c.src;
            vorxStatus s = vt::call(e, c.args);
            ASSERT_EQ(s, vorxStatusOk) << e.name << " len " << len << " count " << count;
            vt::digest(c.dst.bytes());
            if (count == 0) {
                EXPECT_EQ(c.dst.bytes(), before) << e.name << ": count 0 wrote";
                continue;
            }
            for (uint32_t k = 0; k < c.objects(); ++k)
                for (uint32_t j = 0; j < len; ++j)
                    ASSERT_TRUE(vt::sameBits(c.dst.get(k, 0, j), c.expected(in, k, j)))
                        << e.name << " object " << k << " element " << j << " len " << len;
            EXPECT_TRUE(c.dst.guardsIntact()) << e.name << " wrote outside dst";
            for (size_t n = 0; n < in.size(); ++n)
                EXPECT_EQ(c.src[n].bytes(), in[n].bytes()) << e.name << " changed a source";
        }
}

TEST(VectorAddSub, EveryFunctionMatchesTheReferenceInEveryLayout)
{
    eachVectorFunction([](auto t, const CatalogueEntry& e) { checkAll<decltype(t)>(e); });
}

// dst the same storage as the first vector source of its kind, same strides.
template <class T>
void checkInPlace(const CatalogueEntry& e)
{
    uint32_t len = e.size ? e.size : 13;
    VectorCase<T> c(e, len, 4, 99);
    auto codes = vt::splitCodes(e.code);
    size_t first = codes[0] == "c" ? 1 : 0;
    if (vt::isArrayCode(codes[first]) != c.array) return;  // vva: src1 is the single vector
    auto in = c.src;  // snapshots of the values
    c.src[0].bind(c.args, "dst");
    ASSERT_EQ(vt::call(e, c.args), vorxStatusOk) << e.name;
    for (uint32_t k = 0; k < c.objects(); ++k)
        for (uint32_t j = 0; j < len; ++j)
            ASSERT_TRUE(vt::sameBits(c.src[0].get(k, 0, j), c.expected(in, k, j))) << e.name << " in place";
}

TEST(VectorAddSub, InPlaceWithTheSameStrides)
{
    eachVectorFunction([](auto t, const CatalogueEntry& e) { checkInPlace<decltype(t)>(e); });
}

// The frame's failures over every function: a null top-level pointer at each
// position, a null table entry in Pointer layouts (scanned before count), a null
// list entry at object 2, a null element entry in single-object Pointer calls.
template <class T>
void checkFailures(const CatalogueEntry& e)
{
    uint32_t len = e.size ? e.size : 6;
    for (const char* top : {"src1", "src2", "src", "dst"}) {
        VectorCase<T> c(e, len, 3, 7);
        void** field = static_cast<void**>(argField(c.args, top));
        if (!field || !*field) continue;
        *field = nullptr;
        auto before = c.dst.bytes();
        EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name << " null " << top;
        EXPECT_EQ(c.dst.bytes(), before) << e.name;
    }
    if (!e.size) {
        VectorCase<T> c(e, len, 0, 8);
        c.args.len = 0;
        EXPECT_EQ(vt::call(e, c.args), vorxStatusBadSize) << e.name << " len 0";
    }
    VectorCase<T> probe(e, len, 3, 9);
    std::vector<Laid<T>*> ops;
    for (auto& s : probe.src) ops.push_back(&s);
    for (size_t which = 0; which <= ops.size(); ++which) {
        for (uint32_t count : {0u, 3u}) {
            VectorCase<T> c(e, len, count, 10 + static_cast<unsigned>(which));
            Laid<T>& op = which < c.src.size() ? c.src[which] : c.dst;
            if (!op.usesTable()) continue;
            auto before = c.dst.bytes();
            vt::Lay lay = op.layout();
            if (c.array && (lay == vt::Lay::P || lay == vt::Lay::PS2)) {
                op.table()[len - 1] = nullptr;  // found by the scan, even at count 0
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                EXPECT_EQ(c.dst.bytes(), before) << e.name << ": the scan runs before any store";
            } else if (c.array && count == 3) {  // List: objects 0, 1 written, 2 untouched
                op.table()[2] = nullptr;
                auto in = c.src;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                for (uint32_t j = 0; j < len; ++j)
                    for (uint32_t k = 0; k < 2; ++k)
                        EXPECT_TRUE(vt::sameBits(c.dst.get(k, 0, j), c.expected(in, k, j))) << e.name;
                auto after = c.dst.bytes();
                EXPECT_TRUE(std::equal(after.begin() + 2 * len * sizeof(T), after.end(),
                                       before.begin() + 2 * len * sizeof(T)))
                    << e.name << ": object 2 written";
            } else if (!c.array && count == 3) {  // single object: elements before it written
                uint32_t bad = len - 1;
                op.table()[bad] = nullptr;
                auto in = c.src;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                for (uint32_t j = 0; j < bad; ++j)
                    EXPECT_TRUE(vt::sameBits(c.dst.get(0, 0, j), c.expected(in, 0, j))) << e.name;
                if (&op != &c.dst) {
                    auto after = c.dst.bytes();
                    EXPECT_TRUE(std::equal(after.end() - sizeof(T), after.end(), before.end() - sizeof(T)))
                        << e.name << ": the failing element was written";
                }
            }
        }
    }
}

TEST(VectorAddSub, StatusesAndPartialWrites)
{
    eachVectorFunction([](auto t, const CatalogueEntry& e) { checkFailures<decltype(t)>(e); });
}

TEST(VectorAddSub, FrameEdgeCases)
{
    float a[20] = {}, b[20] = {}, d[20] = {};
    EXPECT_EQ(vorxAdd_vv_32f(a, b, nullptr, 0), vorxStatusNullPointer);
    EXPECT_EQ(vorxAdd_vv_32f(a, b, d, 0), vorxStatusBadSize);
    EXPECT_EQ(vorxAdd_vav_32f_S2(a, 12, 4, b, 4, d, 12, 4, 3, 0), vorxStatusOk);
    EXPECT_EQ(vorxAdd_vav_32f_S2(a, 12, 4, b, 4, d, 12, 4, 0, 0), vorxStatusBadSize);
    // A stride of zero is followed, not refused: every object is the same memory.
    float one[3] = {1, 2, 3}, out[3] = {0, 0, 0};
    EXPECT_EQ(vorxAdd_vav_32f(one, 0, one, out, 0, 3, 4), vorxStatusOk);
    EXPECT_EQ(out[2], 6.0f);
    // The constant first in the name, the vector first in the call.
    float three[1] = {3}, r[1] = {0};
    EXPECT_EQ(vorxSub_cv_32f(three, 1.0f, r, 1), vorxStatusOk);
    EXPECT_EQ(r[0], -2.0f);
    double v[3] = {3, 3, 3}, rv[3];
    EXPECT_EQ(vorxSub_cv_64f_3x1(v, 1.0, rv), vorxStatusOk);
    EXPECT_EQ(rv[1], -2.0);
}

// The run-time Contiguous 32f loop: any alignment of the three pointers, lengths
// around the packed threshold, give the plain results.
TEST(VectorAddSub, RunTimeLoopAnyAlignment)
{
    alignas(16) float a[80], b[80], d[80];
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> u(-4, 4);
    for (float& x : a) x = u(rng);
    for (float& x : b) x = u(rng);
    for (int ma = 0; ma < 16; ma += 1)
        for (int md = 0; md < 16; md += 3)
            for (uint32_t len : {10u, 11u, 17u, 33u}) {
                auto* pa = reinterpret_cast<const float*>(reinterpret_cast<const char*>(a) + ma);
                auto* pb = reinterpret_cast<const float*>(reinterpret_cast<const char*>(b) + (ma * 7 % 16));
                auto* pd = reinterpret_cast<float*>(reinterpret_cast<char*>(d) + md);
                std::memset(d, 0, sizeof d);
                ASSERT_EQ(vorxSub_vv_32f(pa, pb, pd, len), vorxStatusOk);
                for (uint32_t j = 0; j < len; ++j) {
                    float x, y, z;
                    std::memcpy(&x, reinterpret_cast<const char*>(pa) + 4 * j, 4);
                    std::memcpy(&y, reinterpret_cast<const char*>(pb) + 4 * j, 4);
                    std::memcpy(&z, reinterpret_cast<char*>(pd) + 4 * j, 4);
                    ASSERT_TRUE(vt::sameBits(z, x - y)) << ma << " " << md << " " << len;
                }
                ASSERT_EQ(vorxAdd_vc_32f(pa, 0.5f, pd, len), vorxStatusOk);
                ASSERT_EQ(vorxSub_cv_32f(pa, 0.5f, pd, len), vorxStatusOk);
                float z;
                std::memcpy(&z, reinterpret_cast<char*>(pd) + 4 * (len - 1), 4);
                float x;
                std::memcpy(&x, reinterpret_cast<const char*>(pa) + 4 * (len - 1), 4);
                ASSERT_TRUE(vt::sameBits(z, 0.5f - x));
            }
}

// Overlapping ranges run the ascending loop: each element reads the one just written.
TEST(VectorAddSub, OverlapReadsWhatWasJustWritten)
{
    float buf[24], b[20];
    for (int j = 0; j < 24; ++j) buf[j] = static_cast<float>(j) * 0.375f;
    for (int j = 0; j < 20; ++j) b[j] = 1.0f + static_cast<float>(j) / 64.0f;
    float expect[24];
    std::memcpy(expect, buf, sizeof buf);
    for (int j = 0; j < 20; ++j) expect[j + 1] = expect[j] + b[j];
    ASSERT_EQ(vorxAdd_vv_32f(buf, b, buf + 1, 20), vorxStatusOk);
    for (int j = 0; j < 24; ++j) EXPECT_TRUE(vt::sameBits(buf[j], expect[j])) << j;
}

// vorxAdd_vv_32f_4x1 takes aligned moves only when all three pointers allow them;
// both paths give the same sums.
TEST(VectorAddSub, Add4ByAlignment)
{
    alignas(16) float a[8] = {1.5f, 2.25f, -3, 1e-3f, 9, 9, 9, 9}, b[8] = {0.1f, 0.2f, 0.3f, 0.4f}, d[12];
    for (int shift : {0, 1, 2}) {
        for (float& x : d) x = -1;
        ASSERT_EQ(vorxAdd_vv_32f_4x1(a, b, d + shift), vorxStatusOk);
        for (int j = 0; j < 4; ++j) EXPECT_TRUE(vt::sameBits(d[shift + j], a[j] + b[j]));
        EXPECT_EQ(d[shift + 4], -1.0f);
    }
}

}  // namespace
