// Vector addition and subtraction beyond what the catalogue-wide tests check against
// the family's model: the frame's edge cases by hand, the run-time Contiguous loop at
// every alignment, overlapping ranges, and the alignment choice of the 4-element sum.
#include <gtest/gtest.h>

#include "fixture.h"

namespace {

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
