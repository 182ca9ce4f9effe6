// Matrix addition and subtraction: every function of the families against a plain
// reference, bit for bit, in every layout with guarded outputs; the statuses and
// partial writes of the frame; in place; and the behaviours particular to single
// functions (the 3x3 pipelines at count 0 and their list tests, the unread
// src2RowStride of mamT 3x3, the test index of transposed Pointer operands).
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "fixture.h"

namespace {

using vt::Laid;

bool isMatrixCode(const CatalogueEntry& e) { return e.code[0] == 'm'; }

template <class T>
T reference(bool sub, T a, T b) { return vt::addOrSub(sub, a, b); }

// The 3x3 32f mam/mamT forms in Contiguous and List layouts: a pipeline with no zero
// test. The List pair also tests its entries out of step.
bool pipelined(const CatalogueEntry& e)
{
    std::string_view code(e.code), lay(e.layout);
    return std::string_view(e.type) == "32f" && e.size == 3 && (code == "mam" || code == "mamT") &&
           (lay == "" || lay == "L");
}
bool pipelinedList(const CatalogueEntry& e) { return pipelined(e) && std::string_view(e.layout) == "L"; }
// mamT of those: rows of src2 stepped with src1RowStride.
bool src2AtSrc1Stride(const CatalogueEntry& e) { return pipelined(e) && std::string_view(e.code) == "mamT"; }

// One call of a matrix Add/Sub function on fresh random operands. A transposed source
// is stored with `width` rows of `height` columns.
template <class T>
struct MatCase {
    const CatalogueEntry& e;
    std::vector<std::string> codes;
    vt::Lay lay;
    uint32_t w, h, count;
    bool array = false;
    std::mt19937 rng;
    std::vector<Laid<T>> src;
    std::vector<Laid<T>> dstHolder;
    ArgPack args;
    std::vector<std::vector<T*>> padded;  // tables with words behind them

    MatCase(const CatalogueEntry& entry, uint32_t width, uint32_t height, uint32_t cnt, unsigned seed)
        : e(entry), codes(vt::splitCodes(entry.code)), lay(vt::layoutOf(entry.layout)), w(width),
          h(height), count(cnt), rng(seed)
    {
        for (const auto& c : codes) array = array || vt::isArrayCode(c);
        vt::Options o;
        o.tight = src2AtSrc1Stride(e);  // equal row strides: the one the function reads
        for (const auto& c : codes) {
            bool t = vt::isTransposed(c);
            src.emplace_back(lay, vt::isArrayCode(c), count, t ? w : h, t ? h : w, rng, o);
        }
        dstHolder.emplace_back(lay, array, count, h, w, rng);
        for (auto& s : src) s.randomize(rng);
        dst().randomize(rng);
        args = ArgPack{};
        src[0].bind(args, "src1");
        src[1].bind(args, "src2");
        dst().bind(args, "dst");
        args.width = w;
        args.height = h;
        args.count = count;
        if (src2AtSrc1Stride(e)) args.src2RowStride += 4;  // not read
        // A transposed single-object Pointer operand has its entries tested at
        // i*height + j, which runs past its table when height > width: give every
        // table of those calls non-null words behind it.
        if (!array && lay == vt::Lay::P) {
            for (const char* name : {"src1", "src2", "dst"}) {
                void** f = static_cast<void**>(argField(args, name));
                T** t = static_cast<T**>(*f);
                padded.emplace_back(t, t + w * h);
                padded.back().resize(w * h + h * h, t[0]);
                *f = padded.back().data();
            }
        }
    }
    Laid<T>& dst() { return dstHolder[0]; }

    T operand(const std::vector<Laid<T>>& in, size_t n, uint32_t k, uint32_t i, uint32_t j) const
    {
        const Laid<T>& l = in[n];
        uint32_t kk = vt::isArrayCode(codes[n]) ? k : 0;
        return vt::isTransposed(codes[n]) ? l.get(kk, j, i) : l.get(kk, i, j);
    }
    T expected(const std::vector<Laid<T>>& in, uint32_t k, uint32_t i, uint32_t j) const
    {
        bool sub = std::string_view(e.family) == "Sub";
        return reference(sub, operand(in, 0, k, i, j), operand(in, 1, k, i, j));
    }
    uint32_t objects() const { return array ? count : 1; }
    size_t objectBytes() const { return static_cast<size_t>(w) * h * sizeof(T); }
};

template <class T>
::testing::AssertionResult objectsMatch(MatCase<T>& c, const std::vector<Laid<T>>& in, uint32_t from,
                                        uint32_t to)
{
    for (uint32_t k = from; k < to; ++k)
        for (uint32_t i = 0; i < c.h; ++i)
            for (uint32_t j = 0; j < c.w; ++j)
                if (!vt::sameBits(c.dst().get(k, i, j), c.expected(in, k, i, j)))
                    return ::testing::AssertionFailure()
                           << c.e.name << " " << c.w << "x" << c.h << " object " << k << " (" << i << ", " << j
                           << ")";
    return ::testing::AssertionSuccess();
}

template <class T>
void checkAll(const CatalogueEntry& e)
{
    struct Shape { uint32_t w, h; };
    std::vector<Shape> shapes = e.size ? std::vector<Shape>{{e.size, e.size}}
                                       : std::vector<Shape>{{5, 3}, {3, 5}, {1, 4}, {4, 1}};
    bool array = false;
    for (const auto& c : vt::splitCodes(e.code)) array = array || vt::isArrayCode(c);
    std::vector<uint32_t> counts = array ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
    unsigned seed = 1;
    for (Shape s : shapes)
        for (uint32_t count : counts) {
            if (count == 0 && pipelinedList(e)) continue;  // dst[-1]: its own test
            MatCase<T> c(e, s.w, s.h, count, seed++);
            auto before = c.dst().bytes();
            std::vector<Laid<T>> in = c.src;
            ASSERT_EQ(vt::call(e, c.args), vorxStatusOk) << e.name;
            vt::digest(c.dst().bytes());
            EXPECT_TRUE(c.dst().guardsIntact()) << e.name << " wrote outside dst";
            for (size_t n = 0; n < in.size(); ++n)
                EXPECT_EQ(c.src[n].bytes(), in[n].bytes()) << e.name << " changed a source";
            if (count == 0 && !pipelined(e)) {
                EXPECT_EQ(c.dst().bytes(), before) << e.name << ": count 0 wrote";
                continue;
            }
            // The pipelined Contiguous pair computes object 0 at count 0 as at count 1.
            ASSERT_TRUE(objectsMatch(c, in, 0, std::max<uint32_t>(c.objects(), 1)));
        }
}

template <class F>
void forEachMatrixFunction(F f)
{
    for (const char* fam : {"Add", "Sub"})
        for (const auto* e : vt::entries(fam, isMatrixCode)) f(*e);
}

TEST(MatrixAddSub, EveryFunctionMatchesTheReferenceInEveryLayout)
{
    size_t n = 0;
    forEachMatrixFunction([&](const CatalogueEntry& e) {
        ++n;
        if (std::string_view(e.type) == "32f") checkAll<float>(e); else checkAll<double>(e);
    });
    EXPECT_EQ(n, 1440u);
}

// dst the same storage as a non-transposed source of the same kind, same strides.
template <class T>
void checkInPlace(const CatalogueEntry& e)
{
    uint32_t n = e.size ? e.size : 4;
    MatCase<T> c(e, e.size ? n : 5, e.size ? n : 3, 4, 99);
    for (size_t s = 0; s < 2; ++s) {
        const std::string& code = c.codes[s];
        if (vt::isTransposed(code) || vt::isArrayCode(code) != c.array) continue;
        MatCase<T> d(e, c.w, c.h, 4, 99 + static_cast<unsigned>(s));
        auto in = d.src;
        d.src[s].bind(d.args, "dst");
        if (src2AtSrc1Stride(e)) d.args.src2RowStride += 4;
        ASSERT_EQ(vt::call(e, d.args), vorxStatusOk) << e.name;
        for (uint32_t k = 0; k < d.objects(); ++k)
            for (uint32_t i = 0; i < d.h; ++i)
                for (uint32_t j = 0; j < d.w; ++j)
                    ASSERT_TRUE(vt::sameBits(d.src[s].get(k, i, j), d.expected(in, k, i, j)))
                        << e.name << " in place over source " << s + 1;
        return;
    }
}

TEST(MatrixAddSub, InPlaceWithAPlainSource)
{
    forEachMatrixFunction([](const CatalogueEntry& e) {
        if (std::string_view(e.type) == "32f") checkInPlace<float>(e); else checkInPlace<double>(e);
    });
}

// The frame's failures over every function: a null top-level pointer at each
// position, zero sizes, a null table entry in Pointer arrays (scanned before count),
// a null list entry at object 2, a null element entry in single-object Pointer calls.
template <class T>
void checkFailures(const CatalogueEntry& e)
{
    const uint32_t n = e.size ? e.size : 4;
    for (const char* top : {"src1", "src2", "dst"}) {
        MatCase<T> c(e, n, n, 3, 7);
        *static_cast<void**>(argField(c.args, top)) = nullptr;
        if (!e.size) c.args.width = 0;  // a null pointer comes before a zero size
        auto before = c.dst().bytes();
        EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name << " null " << top;
        EXPECT_EQ(c.dst().bytes(), before) << e.name;
    }
    if (!e.size)
        for (int which = 0; which < 2; ++which) {
            MatCase<T> c(e, n, n, 0, 8);
            (which ? c.args.height : c.args.width) = 0;
            auto before = c.dst().bytes();
            EXPECT_EQ(vt::call(e, c.args), vorxStatusBadSize) << e.name << " size 0 at count 0";
            EXPECT_EQ(c.dst().bytes(), before) << e.name;
        }
    if (pipelinedList(e)) return;  // out of step: its own test
    for (size_t which = 0; which < 3; ++which)
        for (uint32_t count : {0u, 3u}) {
            MatCase<T> c(e, n, n, count, 10 + static_cast<unsigned>(which));
            Laid<T>& op = which < 2 ? c.src[which] : c.dst();
            if (!op.usesTable()) continue;
            T** table = c.padded.empty() ? op.table() : c.padded[which].data();
            auto before = c.dst().bytes();
            auto in = c.src;
            vt::Lay lay = op.layout();
            if (c.array && (lay == vt::Lay::P || lay == vt::Lay::PS2)) {
                table[n * n - 1] = nullptr;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                EXPECT_EQ(c.dst().bytes(), before) << e.name << ": the scan runs before any store";
            } else if (c.array && count == 3) {  // List: objects 0, 1 written, 2 untouched
                table[2] = nullptr;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                EXPECT_TRUE(objectsMatch(c, in, 0, 2));
                auto after = c.dst().bytes();
                EXPECT_TRUE(std::equal(after.begin() + 2 * c.objectBytes(), after.end(),
                                       before.begin() + 2 * c.objectBytes()))
                    << e.name << ": object 2 written";
            } else if (!c.array && count == 3) {
                // The last entry: for a square transposed operand it is both read and
                // tested at the last element.
                table[n * n - 1] = nullptr;
                EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << e.name;
                for (uint32_t i = 0; i < n; ++i)
                    for (uint32_t j = 0; j < n; ++j)
                        if (i * n + j < n * n - 1)
                            ASSERT_TRUE(vt::sameBits(c.dst().get(0, i, j), c.expected(in, 0, i, j))) << e.name;
                if (which < 2) {
                    auto after = c.dst().bytes();
                    EXPECT_TRUE(std::equal(after.end() - sizeof(T), after.end(), before.end() - sizeof(T)))
                        << e.name << ": the failing element was written";
                }
            }
        }
}

TEST(MatrixAddSub, StatusesAndPartialWrites)
{
    forEachMatrixFunction([](const CatalogueEntry& e) {
        if (std::string_view(e.type) == "32f") checkFailures<float>(e); else checkFailures<double>(e);
    });
}

const CatalogueEntry& entry(const char* name)
{
    for (const auto& e : kCatalogue)
        if (std::string_view(name) == e.name) return e;
    ADD_FAILURE() << name << " not in the catalogue";
    return kCatalogue[0];
}

// The List pair at count 0 stores through the word in front of the dst list, and
// tests it first; null gives -8 with nothing written.
TEST(MatrixAddSub, PipelinedListFormsUseTheWordInFrontOfDstAtCountZero)
{
    for (const char* name : {"vorxAdd_mam_32f_3x3_L", "vorxSub_mam_32f_3x3_L", "vorxAdd_mamT_32f_3x3_L",
                             "vorxSub_mamT_32f_3x3_L"}) {
        const CatalogueEntry& e = entry(name);
        MatCase<float> c(e, 3, 3, 0, 21);
        auto in = c.src;
        // dst[-1] leads to object 0 of dst; dst[0] (count 0: never to be used) is null.
        std::vector<float*> list = {c.dst().table()[0], nullptr};
        c.args.dst = list.data() + 1;
        ASSERT_EQ(vt::call(e, c.args), vorxStatusOk) << name;
        EXPECT_TRUE(objectsMatch(c, in, 0, 1));
        MatCase<float> z(e, 3, 3, 0, 22);
        auto before = z.dst().bytes();
        std::vector<float*> nulled = {nullptr, z.dst().table()[0]};
        z.args.dst = nulled.data() + 1;
        EXPECT_EQ(vt::call(e, z.args), vorxStatusNullPointer) << name;
        EXPECT_EQ(z.dst().bytes(), before) << name;
    }
}

// Out of step: src1[0] and dst[count-1] before anything, then src1[k] and dst[k-1]
// before object k is loaded and object k-1 stored. So a null entry leaves one object
// fewer written than in the other List forms.
TEST(MatrixAddSub, PipelinedListFormsTestEntriesOutOfStep)
{
    struct Null { int op; uint32_t k; uint32_t written; };
    const Null cases[] = {{2, 2, 0}, {0, 1, 0}, {0, 2, 1}, {2, 0, 0}, {2, 1, 1}, {0, 0, 0}};
    for (const char* name : {"vorxAdd_mam_32f_3x3_L", "vorxSub_mam_32f_3x3_L", "vorxAdd_mamT_32f_3x3_L",
                             "vorxSub_mamT_32f_3x3_L"}) {
        const CatalogueEntry& e = entry(name);
        for (const Null& n : cases) {
            MatCase<float> c(e, 3, 3, 3, 30 + n.k);
            auto in = c.src;
            auto before = c.dst().bytes();
            (n.op == 0 ? c.src[0] : c.dst()).table()[n.k] = nullptr;
            EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << name;
            EXPECT_TRUE(objectsMatch(c, in, 0, n.written));
            auto after = c.dst().bytes();
            size_t keep = n.written * c.objectBytes();
            EXPECT_TRUE(std::equal(after.begin() + keep, after.end(), before.begin() + keep))
                << name << " null " << (n.op ? "dst" : "src1") << "[" << n.k << "] wrote object " << n.written;
        }
    }
}

// mamT 3x3 (Contiguous and List) steps the rows of src2 with src1RowStride.
TEST(MatrixAddSub, Mamt3x3ReadsSrc2RowsAtSrc1Stride)
{
    float a[12] = {}, b[24], d[9];
    for (int n = 0; n < 24; ++n) b[n] = static_cast<float>(n + 1);
    // src2 rows 16 bytes apart: elements (r, c) at b[4r + c]; its own stride says 32.
    ASSERT_EQ(vorxAdd_mamT_32f_3x3(a, 48, 16, b, 32, d, 36, 12, 1), vorxStatusOk);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_EQ(d[3 * i + j], b[4 * j + i]) << i << " " << j;
    const float* list[1] = {a};
    float* dl[1] = {d};
    ASSERT_EQ(vorxSub_mamT_32f_3x3_L(list, 0, 16, b, 32, dl, 0, 12, 1), vorxStatusOk);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_EQ(d[3 * i + j], -b[4 * j + i]) << i << " " << j;
    // Its 4x4 neighbour and its Strided twin use src2RowStride.
    float a4[16] = {}, b4[32], d4[16];
    for (int n = 0; n < 32; ++n) b4[n] = static_cast<float>(n + 1);
    ASSERT_EQ(vorxAdd_mamT_32f_4x4(a4, 64, 16, b4, 32, d4, 64, 16, 1), vorxStatusOk);
    EXPECT_EQ(d4[1], b4[8]);
    ASSERT_EQ(vorxAdd_mamT_32f_3x3_S2(a, 48, 16, 4, b, 32, 4, d, 36, 12, 4, 1), vorxStatusOk);
    EXPECT_EQ(d[1], b[8]);
}

// Single-object Pointer forms with a transposed source test each element's entry at
// the running index, not the one they read.
TEST(MatrixAddSub, TransposedPointerOperandsTestAtTheRunningIndex)
{
    // Fixed size: a null entry 1 is read at element (1, 0) but tested at (0, 1), so
    // only element (0, 0) is written.
    for (const char* name : {"vorxAdd_mTm_32f_3x3_P", "vorxSub_mTmT_64f_4x4_P"}) {
        const CatalogueEntry& e = entry(name);
        bool f32 = std::string_view(e.type) == "32f";
        auto run = [&](auto tag) {
            using T = decltype(tag);
            MatCase<T> c(e, e.size, e.size, 1, 40);
            auto in = c.src;
            auto before = c.dst().bytes();
            c.padded[0][1] = nullptr;
            EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << name;
            EXPECT_TRUE(vt::sameBits(c.dst().get(0, 0, 0), c.expected(in, 0, 0, 0)));
            auto after = c.dst().bytes();
            EXPECT_TRUE(std::equal(after.begin() + sizeof(T), after.end(), before.begin() + sizeof(T))) << name;
        };
        if (f32) run(0.0f); else run(0.0);
    }
    // Generic, height 3 > width 2: entries tested up to 2*3 + 1 = 7, past the six of
    // the table. A null word behind the table gives -8 though no entry is null.
    for (const char* name : {"vorxAdd_mTm_32f_P", "vorxSub_mmT_64f_P"}) {
        const CatalogueEntry& e = entry(name);
        auto run = [&](auto tag) {
            using T = decltype(tag);
            MatCase<T> c(e, 2, 3, 1, 41);
            size_t t = vt::isTransposed(c.codes[0]) ? 0 : 1;
            auto in = c.src;
            c.padded[t][6] = nullptr;  // tested at element (2, 0)
            EXPECT_EQ(vt::call(e, c.args), vorxStatusNullPointer) << name;
            for (uint32_t i = 0; i < 2; ++i)
                for (uint32_t j = 0; j < 2; ++j)
                    EXPECT_TRUE(vt::sameBits(c.dst().get(0, i, j), c.expected(in, 0, i, j))) << name;
        };
        if (std::string_view(e.type) == "32f") run(0.0f); else run(0.0);
    }
}

// The alignment dispatch: with every pointer and stride on 16 bytes the aligned moves
// run and give the same sums (the dispatching forms, the four with a gap included).
TEST(MatrixAddSub, AlignedDataTakesTheAlignedMoves)
{
    alignas(16) static float a[4 * 64], b[4 * 64], d[4 * 64];
    alignas(16) static float* la[4], *lb[4], *ld[4];
    std::mt19937 rng(3);
    for (int n = 0; n < 256; ++n) a[n] = vt::randomValue<float>(rng), b[n] = vt::randomValue<float>(rng);
    const char* names[] = {"vorxAdd_mam_32f_4x4", "vorxAdd_mama_32f_4x4", "vorxAdd_mama_32f_5x5",
                           "vorxAdd_mam_32f_6x6", "vorxAdd_mama_32f_6x6", "vorxSub_mam_32f_4x4",
                           "vorxSub_mma_32f_4x4", "vorxSub_mm_32f_4x4", "vorxSub_mama_32f_5x5",
                           "vorxSub_mma_32f_5x5", "vorxSub_mam_32f_5x5", "vorxSub_mam_32f_6x6",
                           "vorxAdd_maTm_32f_3x3", "vorxSub_maTm_32f_3x3", "vorxAdd_mama_32f_4x4_L",
                           "vorxSub_mama_32f_4x4_L", "vorxAdd_mam_32f_6x6_L", "vorxSub_mam_32f_4x4_L"};
    for (const char* name : names) {
        const CatalogueEntry& e = entry(name);
        auto codes = vt::splitCodes(e.code);
        bool list = std::string_view(e.layout) == "L";
        uint32_t n = e.size;
        for (float& x : d) x = -1;
        ArgPack p;
        for (int k = 0; k < 4; ++k) la[k] = a + 64 * k, lb[k] = b + 64 * k, ld[k] = d + 64 * k;
        p.src1 = list && vt::isArrayCode(codes[0]) ? static_cast<void*>(la) : a;
        p.src2 = list && vt::isArrayCode(codes[1]) ? static_cast<void*>(lb) : b;
        p.dst = list ? static_cast<void*>(ld) : d;
        p.src1ObjectStride = p.src2ObjectStride = p.dstObjectStride = 256;
        p.src1RowStride = p.src2RowStride = p.dstRowStride = 32;
        p.count = 4;
        ASSERT_EQ(vt::call(e, p), vorxStatusOk) << name;
        bool sub = std::string_view(e.family) == "Sub";
        for (uint32_t k = 0; k < 4; ++k)
            for (uint32_t i = 0; i < n; ++i)
                for (uint32_t j = 0; j < n; ++j) {
                    auto at = [&](const float* base, size_t o) {
                        uint32_t kk = vt::isArrayCode(codes[o]) ? k : 0;
                        bool t = vt::isTransposed(codes[o]);
                        return base[64 * kk + 8 * (t ? j : i) + (t ? i : j)];
                    };
                    uint32_t kd = codes[0] == "m" && codes[1] == "m" ? 0 : k;
                    ASSERT_TRUE(vt::sameBits(d[64 * kd + 8 * i + j], reference(sub, at(a, 0), at(b, 1))))
                        << name << " " << k << " " << i << " " << j;
                }
    }
}

// The 3x3 maTm and mamT forms read each stored row of their transposed source as
// four elements: the word behind its last row must be readable. With that word on a
// protected page they fault where their twins, which read exactly three, do not.
TEST(MatrixAddSubDeathTest, FullWidthRowLoadsOfThe3x3TransposedForms)
{
    long page = sysconf(_SC_PAGESIZE);
    auto* mem = static_cast<unsigned char*>(
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(mem, MAP_FAILED);
    ASSERT_EQ(mprotect(mem + page, page, PROT_NONE), 0);
    float* src1 = reinterpret_cast<float*>(mem + page) - 9;  // the last row ends at the page
    for (int n = 0; n < 9; ++n) src1[n] = static_cast<float>(n);
    float src2[9] = {}, dst[9];
    EXPECT_EQ(vorxAdd_mam_32f_3x3(src1, 36, 12, src2, 12, dst, 36, 12, 1), vorxStatusOk);
    EXPECT_EQ(vorxAdd_maTm_32f_3x3_S2(src1, 36, 12, 4, src2, 12, 4, dst, 36, 12, 4, 1), vorxStatusOk);
    EXPECT_DEATH(vorxAdd_maTm_32f_3x3(src1, 36, 12, src2, 12, dst, 36, 12, 1), "");
    EXPECT_DEATH(vorxSub_maTm_32f_3x3(src1, 36, 12, src2, 12, dst, 36, 12, 1), "");
    // mamT reads the single src2 so.
    EXPECT_DEATH(vorxAdd_mamT_32f_3x3(src2, 36, 12, src1, 12, dst, 36, 12, 1), "");
    munmap(mem, 2 * page);
}

}  // namespace
