// Matrix addition and subtraction beyond what the catalogue-wide tests check against
// the family's model: the behaviours particular to single functions (the 3x3
// pipelines at count 0 and their list tests, the unread src2RowStride of mamT 3x3,
// the test index of transposed Pointer operands), the aligned moves, and the
// full-width row loads.
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "harness.h"

namespace {

using vt::byName;
using vt::Case;

template <class T>
T reference(bool sub, T a, T b) { return vt::addOrSub(sub, a, b); }

const char* const kPipelinedLists[] = {"vorxAdd_mam_32f_3x3_L", "vorxSub_mam_32f_3x3_L", "vorxAdd_mamT_32f_3x3_L",
                                       "vorxSub_mamT_32f_3x3_L"};

// The List pair at count 0 stores through the word in front of the dst list, and
// tests it first; null gives -8 with nothing written.
TEST(MatrixAddSub, PipelinedListFormsUseTheWordInFrontOfDstAtCountZero)
{
    for (const char* name : kPipelinedLists) {
        const CatalogueEntry& e = byName(name);
        Case<float> c(e, vt::dimsOf(e, 3, 1), 21);  // predicted at count 1: object 0
        // dst[-1] leads to object 0 of dst; dst[0] (count 0: never to be used) is null.
        std::vector<float*> list = {c.s.op("dst").table()[0], nullptr};
        c.s.pack.dst = list.data() + 1;
        c.s.pack.count = 0;
        ASSERT_EQ(c.s.call(), vorxStatusOk) << name;
        EXPECT_TRUE(c.predicted("dst", 0)) << name;
        Case<float> z(e, vt::dimsOf(e, 3, 1), 22);
        std::vector<float*> nulled = {nullptr, z.s.op("dst").table()[0]};
        z.s.pack.dst = nulled.data() + 1;
        z.s.pack.count = 0;
        EXPECT_EQ(z.s.call(), vorxStatusNullPointer) << name;
        EXPECT_TRUE(z.untouched("dst", 0)) << name;
    }
}

// Out of step: src1[0] and dst[count-1] before anything, then src1[k] and dst[k-1]
// before object k is loaded and object k-1 stored. So a null entry leaves one object
// fewer written than in the other List forms.
TEST(MatrixAddSub, PipelinedListFormsTestEntriesOutOfStep)
{
    struct Null { const char* op; uint32_t k; uint32_t written; };
    const Null cases[] = {{"dst", 2, 0}, {"src1", 1, 0}, {"src1", 2, 1}, {"dst", 0, 0}, {"dst", 1, 1}, {"src1", 0, 0}};
    for (const char* name : kPipelinedLists) {
        const CatalogueEntry& e = byName(name);
        for (const Null& n : cases) {
            Case<float> c(e, vt::dimsOf(e, 3, 3), 30 + n.k);
            c.s.op(n.op).table()[n.k] = nullptr;
            EXPECT_EQ(c.s.call(), vorxStatusNullPointer) << name;
            for (uint32_t k = 0; k < 3; ++k)
                EXPECT_TRUE(k < n.written ? c.predicted("dst", k) : c.untouched("dst", k))
                    << name << " null " << n.op << "[" << n.k << "]: object " << k;
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
    // only element (0, 0) is written. Generic, height 3 > width 2: entries are tested
    // up to 2*3 + 1 = 7, past the six of the table: a null word behind the table
    // (tested at element (2, 0)) gives -8 though no entry is null.
    struct Probe { const char* name; const char* op; uint32_t entry, w, h, written; };
    const Probe probes[] = {{"vorxAdd_mTm_32f_3x3_P", "src1", 1, 3, 3, 1}, {"vorxSub_mTmT_64f_4x4_P", "src1", 1, 4, 4, 1},
                            {"vorxAdd_mTm_32f_P", "src1", 6, 2, 3, 4}, {"vorxSub_mmT_64f_P", "src2", 6, 2, 3, 4}};
    for (const Probe& p : probes) {
        const CatalogueEntry& e = byName(p.name);
        auto run = [&](auto tag) {
            using T = decltype(tag);
            vt::Dims d = vt::dimsOf(e, 0, 1);
            d.set("width", p.w);
            d.set("height", p.h);
            Case<T> c(e, d, 40);
            c.s.op(p.op).table()[p.entry] = nullptr;
            EXPECT_EQ(c.s.call(), vorxStatusNullPointer) << p.name;
            for (uint32_t i = 0; i < p.h; ++i)
                for (uint32_t j = 0; j < p.w; ++j)
                    EXPECT_TRUE(i * p.w + j < p.written ? c.predicted("dst", 0, i, j) : c.untouched("dst", 0, i, j))
                        << p.name << " (" << i << ", " << j << ")";
        };
        if (vt::isF32(e)) run(0.0f); else run(0.0);
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
        const CatalogueEntry& e = byName(name);
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
