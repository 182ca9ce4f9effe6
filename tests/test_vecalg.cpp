// Vector algebra beyond what the catalogue-wide tests check against the families'
// models: the address-keyed sums at every address, the aligned groups of the 3-element
// dot product, groups and remainders with their list tests and gaps, the norm's two
// regimes at zero, denormal and infinite sums, partial overlaps of the fast path, the
// cross product in place, the order of the table scans and the alignment branches.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <limits>

#include "harness.h"

namespace {

using vt::byName;
using vt::Dims;
using vt::Draw;

const vt::Model& modelOf(const CatalogueEntry& e) { return *vt::modelFor(e); }

// Every operand of a call laid out from `misalign` (mod 16) with object stride `os`.
Draw placed(unsigned seed, int misalign, int32_t os, std::initializer_list<const char*> names)
{
    Draw d{vt::Data::Random, seed};
    for (const char* n : names) {
        vt::Options& o = d.options[n];
        o.misalign = misalign;
        o.explicitStrides = true;
        o.os = os;
    }
    return d;
}

TEST(VecAlg, FrameEdgeCases)
{
    float a[8] = {1, 2, 3, 4, 5, 6, 7, 8}, b[8] = {}, d[8] = {};
    EXPECT_EQ(vorxSaxpy_vav_32f(a, 16, 2.0f, b, d, 16, 0, 0), vorxStatusBadSize);
    EXPECT_EQ(vorxSaxpy_vav_32f(a, 16, 2.0f, b, d, 16, 1, 0), vorxStatusOk);
    EXPECT_EQ(vorxDotProduct_vava_32f(a, 16, b, 16, d, 0, 0), vorxStatusBadSize);
    EXPECT_EQ(vorxL2Norm_va_64f(nullptr, 16, reinterpret_cast<double*>(d), 0, 0), vorxStatusNullPointer);
    EXPECT_EQ(vorxCrossProduct_vava_32f_3x1(a, 12, b, 12, d, 12, 0), vorxStatusOk);
    // A zero scale still multiplies: infinity times zero is NaN, in every form.
    float inf[4] = {INFINITY, 1, 1, 1}, out[4];
    double infd[4] = {INFINITY, 1, 1, 1}, outd[4];
    ASSERT_EQ(vorxSaxpy_vv_32f_4x1(inf, 0.0f, b, out), vorxStatusOk);
    EXPECT_TRUE(std::isnan(out[0]));
    ASSERT_EQ(vorxLComb_vv_64f(infd, 1.0, infd, 0.0, outd, 4), vorxStatusOk);
    EXPECT_TRUE(std::isnan(outd[0]));
}

// The eight-way sums keyed on src2 (dot) and src (norm) at every address modulo 16,
// with src1 anywhere, below and at the threshold and past one turn.
TEST(VecAlg, EightWaySumsAtEveryAddress)
{
    unsigned seed = 1;
    for (const char* name : {"vorxDotProduct_vv_32f", "vorxL2Norm_v_32f"})
        for (int at = 0; at < 16; ++at)
            for (uint32_t len : {10u, 11u, 20u, 37u}) {
                Draw draw{vt::Data::Random, seed++};
                bool dot = std::string_view(name).find("Dot") != std::string_view::npos;
                draw.options[dot ? "src2" : "src"].misalign = at;
                draw.options["src1"].misalign = (at * 7) % 16;
                EXPECT_EQ(vt::verifyEntry(byName(name), vt::dimsOf(byName(name), len, 1), draw), "");
            }
    // 2^24 then ones: with src2 on 4 mod 16, three leading terms, two turns of eight
    // and one more, the ones that left to right would lose survive in the lanes.
    alignas(16) float ones[24], big[24];
    for (float& x : ones) x = 1.0f;
    for (float& x : big) x = 1.0f;
    big[1] = 0x1p24f;
    float r = 0;
    ASSERT_EQ(vorxDotProduct_vv_32f(ones, big + 1, &r, 20), vorxStatusOk);
    EXPECT_EQ(r, 0x1p24f + 16);
    ASSERT_EQ(vorxDotProduct_vv_32f(ones, big + 1, &r, 10), vorxStatusOk);
    EXPECT_EQ(r, 0x1p24f);
    auto* odd = reinterpret_cast<float*>(reinterpret_cast<char*>(big) + 2);
    std::memcpy(odd, big + 1, 4);  // src2 on 2 mod 4: left to right
    ASSERT_EQ(vorxDotProduct_vv_32f(ones, odd, &r, 20), vorxStatusOk);
    EXPECT_EQ(r, 0x1p24f);
}

// vorxDotProduct_vava_32f_3x1 groups with every pointer and object stride on 16
// bytes (zero and negative strides too), and not when one of them is off.
TEST(VecAlg, DotProductOf3GroupsOnlyAligned)
{
    const CatalogueEntry& e = byName("vorxDotProduct_vava_32f_3x1");
    unsigned seed = 20;
    for (int32_t os : {16, 32, 0, -48, 20})
        for (int at : {0, 8})
            for (uint32_t count : {1u, 4u, 5u, 7u, 8u})
                EXPECT_EQ(vt::verifyEntry(e, vt::dimsOf(e, 3, count), placed(seed++, at, os, {"src1", "src2", "dst"})), "");
}

// The grouped forms over counts that fill no group, one, and two with a remainder.
TEST(VecAlg, GroupsAndRemainders)
{
    unsigned seed = 40;
    for (const auto& e : kCatalogue) {
        std::string_view f = e.family, l = e.layout;
        bool grouped = vt::isF32(e) && e.size && (l == "" || l == "L") &&
                       ((f == "L2Norm" && vt::isArrayCall(e)) || (f == "DotProduct" && e.size <= 4 && std::string_view(e.code) != "vv"));
        if (!grouped) continue;
        for (uint32_t count : {1u, 2u, 3u, 4u, 5u, 9u})
            EXPECT_EQ(vt::verifyEntry(e, vt::dimsOf(e, 0, count), Draw{vt::Data::Random, seed++}), "");
    }
}

// List forms in groups test a group's four entries at its start: a null at 4n+1
// leaves 4n unwritten. In the remainder three forms test nothing and follow the null.
TEST(VecAlg, GroupListTestsAndGaps)
{
    unsigned seed = 60;
    for (const char* name : {"vorxDotProduct_vav_32f_3x1_L", "vorxDotProduct_vav_32f_4x1_L", "vorxL2Norm_va_32f_3x1_L",
                             "vorxL2Norm_va_32f_4x1_L", "vorxL2Norm_va_32f_5x1_L", "vorxL2Norm_va_32f_6x1_L"}) {
        const CatalogueEntry& e = byName(name);
        const char* list = std::string_view(e.family) == "L2Norm" ? "src" : "src1";
        Dims d = vt::dimsOf(e, 0, 9);
        for (uint32_t at : {0u, 5u, 7u})
            EXPECT_EQ(vt::verifyEntry(e, d, Draw{vt::Data::Random, seed++}, vt::Null{list, true, at}), "");
        auto s = vt::Specimen<float>::make(e, d, Draw{vt::Data::Random, seed++});
        s.op(list).table()[8] = nullptr;
        vorxStatus st = 0;
        bool followed = vt::faults([&] { st = s.call(); });
        bool gap = std::string_view(e.family) == "DotProduct" || e.size == 4;
        EXPECT_EQ(followed, gap) << name;
        if (!gap) EXPECT_EQ(st, vorxStatusNullPointer) << name;
    }
}

// Sums of squares of zero, of denormals (small enough that the estimate's square
// overflows, and not) and of overflow, in both regimes. The model takes the estimate
// from the instruction; only what holds for any estimate is spelled out here.
TEST(VecAlg, NormRegimesAtZeroDenormalAndInfiniteSums)
{
    const float kInputs[] = {0.0f, 0x1p-70f, 0x1.8p-64f, 0x1p70f};
    unsigned seed = 80;
    for (const char* name : {"vorxL2Norm_v_32f_3x1", "vorxL2Norm_va_32f_4x1", "vorxL2Norm_va_32f_5x1_L",
                             "vorxL2Norm_v_32f_3x1_S2", "vorxL2Norm_v_32f", "vorxL2Norm_va_32f_4x1_S2"}) {
        const CatalogueEntry& e = byName(name);
        bool estimate = e.size && (std::string_view(e.layout) == "" || std::string_view(e.layout) == "L");
        for (float x : kInputs) {
            auto s = vt::Specimen<float>::make(e, vt::dimsOf(e, 3, 5), Draw{vt::Data::Random, seed++});
            s.op("src").fill([&](uint32_t, uint32_t, uint32_t j) { return j == 0 ? x : 0.0f; });
            EXPECT_EQ(vt::verify(modelOf(e), s), "");
            for (uint32_t k = 0; k < s.objects(); ++k) {
                float r = s.op("dst").get(0, 0, k);
                if (x == 0.0f) EXPECT_TRUE(estimate ? std::isnan(r) : vt::sameBits(r, 0.0f)) << name;
                if (x == 0x1p70f) EXPECT_TRUE(estimate ? std::isnan(r) : r == INFINITY) << name;
            }
        }
    }
}

// Every 64f dot product sums from +0.0: all products -0.0 give +0.0, and a sum of
// -denorm_min (the sign and exponent word of -0.0) stays what it is.
TEST(VecAlg, DotProducts64fZeroAndTinySums)
{
    const double tiny = -std::numeric_limits<double>::denorm_min();
    unsigned seed = 90;
    auto dots = vt::entries("DotProduct", [](const CatalogueEntry& e) { return !vt::isF32(e); });
    for (const auto* p : dots) {
        const CatalogueEntry& e = *p;
        std::string_view name = e.name;
        for (double x : {0.0, tiny}) {
            auto s = vt::Specimen<double>::make(e, vt::dimsOf(e, 4, 3), Draw{vt::Data::Random, seed++});
            s.op("src1").fill([&](uint32_t, uint32_t, uint32_t j) { return j == 0 ? x : 0.0; });
            s.op("src2").fill([&](uint32_t, uint32_t, uint32_t) { return x == 0.0 ? -1.5 : 1.0; });
            EXPECT_EQ(vt::verify(modelOf(e), s), "") << name;
            EXPECT_TRUE(vt::sameBits(s.op("dst").get(0, 0, 0), x)) << name;
        }
    }
    EXPECT_EQ(dots.size(), 75u);
}

// The fast path with dst one element behind or ahead of a source: the ascending loop,
// each element reading what is in memory at its turn.
TEST(VecAlg, FastPathPartialOverlaps)
{
    for (bool lcomb : {false, true})
        for (int src : {1, 2})
            for (int shift : {-1, 1, 3})
                for (uint32_t len : {20u, 37u}) {
                    std::vector<float> buf(64), other(64);
                    std::mt19937 rng(len);
                    for (size_t j = 0; j < buf.size(); ++j) {
                        buf[j] = vt::randomValue<float>(rng, 2);
                        other[j] = 1.0f + static_cast<float>(j) / 64.0f;
                    }
                    std::vector<float> want = buf;
                    const int base = 8, to = base + shift;
                    const float* s1 = src == 1 ? &buf[base] : other.data();
                    const float* s2 = src == 2 ? &buf[base] : other.data();
                    const float* w1 = src == 1 ? &want[base] : other.data();
                    const float* w2 = src == 2 ? &want[base] : other.data();
                    for (uint32_t j = 0; j < len; ++j) {
                        float p = vt::f32::mul(w1[j], 1.5f);
                        want[to + j] = vt::f32::add(p, lcomb ? vt::f32::mul(w2[j], -0.75f) : w2[j]);
                    }
                    vorxStatus st = lcomb ? vorxLComb_vv_32f(s1, 1.5f, s2, -0.75f, &buf[to], len)
                                          : vorxSaxpy_vv_32f(s1, 1.5f, s2, &buf[to], len);
                    ASSERT_EQ(st, vorxStatusOk);
                    for (size_t j = 0; j < buf.size(); ++j)
                        ASSERT_TRUE(vt::sameBits(buf[j], want[j])) << lcomb << src << shift << len << " " << j;
                }
}

// In place, the 32f Contiguous and List forms read all six inputs first; the others
// store each component as they go and read it back.
TEST(VecAlg, CrossProductInPlace)
{
    float a[3] = {1, 2, 3}, b[3] = {4, 5, 6};
    ASSERT_EQ(vorxCrossProduct_vv_32f_3x1(a, b, a), vorxStatusOk);
    EXPECT_EQ(a[0], -3.0f);
    EXPECT_EQ(a[1], 6.0f);
    EXPECT_EQ(a[2], -3.0f);
    double c[3] = {1, 2, 3}, e[3] = {4, 5, 6};
    ASSERT_EQ(vorxCrossProduct_vv_64f_3x1(c, e, c), vorxStatusOk);
    EXPECT_EQ(c[0], -3.0);
    EXPECT_EQ(c[1], 30.0);
    EXPECT_EQ(c[2], -135.0);
    float f[3] = {1, 2, 3};
    ASSERT_EQ(vorxCrossProduct_vv_32f_3x1_S2(f, 4, b, 4, f, 4), vorxStatusOk);
    EXPECT_EQ(f[1], 30.0f);
}

// Array calls in Pointer layouts test entry e of every table before entry e + 1 of
// any: with src1's table cut after its first entry, a null first entry of a later
// table is found without reading further.
TEST(VecAlg, TablesScannedEntryByEntry)
{
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* mem = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(mem, MAP_FAILED);
    mprotect(static_cast<char*>(mem) + page, page, PROT_NONE);
    void** last = reinterpret_cast<void**>(static_cast<char*>(mem) + page) - 1;
    unsigned seed = 100, checked = 0;
    for (const auto& e : kCatalogue) {
        std::string_view f = e.family, l = e.layout;
        bool family = f == "Saxpy" || f == "LComb" || f == "DotProduct" || f == "CrossProduct";
        if (!family || (l != "P" && l != "PS2") || (!vt::isArrayCall(e) && f != "CrossProduct")) continue;
        for (const char* later : {"src2", "dst"}) {
            if (f == "DotProduct" && std::string_view(later) == "dst") continue;
            Dims d = vt::dimsOf(e, 3, 2);
            bool broken = false;
            auto run = [&](auto s) {
                *last = s.op("src1").table()[0];
                *static_cast<void**>(argField(s.pack, "src1")) = last;
                if (std::string_view(later) == "dst") *static_cast<void**>(argField(s.pack, "src2")) = last;
                s.op(later).table()[0] = nullptr;
                vorxStatus st = 0;
                broken = vt::faults([&] { st = s.call(); }) || st != vorxStatusNullPointer;
            };
            if (vt::isF32(e)) run(vt::Specimen<float>::make(e, d, Draw{vt::Data::Random, seed++}));
            else run(vt::Specimen<double>::make(e, d, Draw{vt::Data::Random, seed++}));
            EXPECT_FALSE(broken) << e.name << " null " << later;
            ++checked;
        }
    }
    munmap(mem, 2 * page);
    EXPECT_GT(checked, 150u);
}

// The packed fixed sizes with every pointer and object stride on 16 bytes (the
// aligned moves of the weighted sums, the aligned groups of the 3-element dot
// product) and with objects back to back (one run, three full moves for four
// 3-element objects): the model's bits too.
TEST(VecAlg, AlignedAndBackToBackArrays)
{
    unsigned seed = 200;
    for (const auto& e : kCatalogue) {
        std::string_view f = e.family, l = e.layout;
        bool family = f == "Saxpy" || f == "LComb" || f == "DotProduct" || f == "CrossProduct" || f == "L2Norm";
        if (!family || !vt::isF32(e) || !e.size || !vt::isArrayCall(e) || (l != "" && l != "L")) continue;
        for (uint32_t count : {1u, 5u, 9u}) {
            Dims d = vt::dimsOf(e, 0, count);
            EXPECT_EQ(vt::verifyEntry(e, d, placed(seed++, 0, 32, {"src", "src1", "src2", "dst"})), "");
            Draw tight{vt::Data::Random, seed++};
            for (const char* n : {"src", "src1", "src2", "dst"}) tight.options[n].tight = true;
            EXPECT_EQ(vt::verifyEntry(e, d, tight), "");
        }
    }
}

}  // namespace
