#include "core/Random.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using korvel::Random;

template <typename Draw>
void expectBothEndsReached(Draw draw, float low, float high)
{
    std::srand(12345);
    float seenLow = high;
    float seenHigh = low;
    // 15-bit draws: a few hundred thousand tries hit both ends many times.
    for (int i = 0; i < 400000; ++i) {
        const float value = draw();
        ASSERT_GE(value, low);
        ASSERT_LE(value, high);
        seenLow = std::min(seenLow, value);
        seenHigh = std::max(seenHigh, value);
    }
    EXPECT_EQ(seenLow, low);
    EXPECT_EQ(seenHigh, high);
}

TEST(RandomTest, UniformDrawsStayInTheirClosedRangesAndReachBothEnds)
{
    expectBothEndsReached([] { return Random::aleaFloatZeroOne(); }, 0.0f, 1.0f);
    expectBothEndsReached([] { return Random::aleaFloatMinusOneOne(); }, -1.0f, 1.0f);
    expectBothEndsReached([] { return Random::aleaFloatZeroRange(7.5f); }, 0.0f, 7.5f);
    expectBothEndsReached([] { return Random::aleaFloatMinusRangeRange(3.0f); }, -3.0f, 3.0f);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Random::aleaFloatZeroRange(0.0f), 0.0f);
    }
}

TEST(RandomTest, DrawsTakeOneValueFromTheUnseededStandardGenerator)
{
    std::srand(99);
    const int first = std::rand();
    const int second = std::rand();
    const int third = std::rand();
    std::srand(99);
    // One std::rand() per draw, its top 15 bits over 32767; no reseeding.
    EXPECT_FLOAT_EQ(Random::aleaFloatZeroOne(), static_cast<float>((first >> 16) / 32767.0));
    EXPECT_FLOAT_EQ(Random::aleaFloatZeroRange(2.0f), static_cast<float>(2.0 * ((second >> 16) / 32767.0)));
    EXPECT_EQ(std::rand(), third);
}

TEST(RandomTest, PointHashIsDeterministicSeededAndSigned)
{
    const Vector4D p(1.25f, -3.5f, 8.0f, 1.0f);
    EXPECT_EQ(Random::aleaPoint(p, 3), Random::aleaPoint(p, 3));
    EXPECT_NE(Random::aleaPoint(p, 3), Random::aleaPoint(p, 4));
    EXPECT_NE(Random::aleaPoint(p, 3), Random::aleaPoint(Vector4D(1.25f, -3.5f, 9.0f, 1.0f), 3));
    bool negative = false;
    bool positive = false;
    for (int i = 0; i < 200; ++i) {
        const float value = Random::aleaPoint(Vector4D(i * 0.37f, i * -1.1f, 2.0f, 1.0f), 0);
        ASSERT_GT(value, -1.0f);
        ASSERT_LT(value, 1.0f);
        negative = negative || value < 0.0f;
        positive = positive || value > 0.0f;
    }
    EXPECT_TRUE(negative);
    EXPECT_TRUE(positive);
}

TEST(RandomTest, NoiseMatchesCornerHashesAndBlendsBetweenThem)
{
    const int size = 4;
    const Vector4D corner(8, -4, 12, 1);
    EXPECT_FLOAT_EQ(Random::noise(corner, size, 2), Random::aleaPoint(corner, 2));
    EXPECT_FLOAT_EQ(Random::noise(Vector4D(12, 0, 16, 1), size, 2), Random::aleaPoint(Vector4D(12, 0, 16, 1), 2));

    // Inside a cell the value is a convex blend of the eight corner hashes.
    float low = 1.0f;
    float high = -1.0f;
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
            for (int k = 0; k < 2; ++k) {
                const float h = Random::aleaPoint(corner + Vector4D(i * 4.0f, j * 4.0f, k * 4.0f, 0), 2);
                low = std::min(low, h);
                high = std::max(high, h);
            }
        }
    }
    for (float t = 0.05f; t < 1.0f; t += 0.1f) {
        const float value = Random::noise(corner + Vector4D(4 * t, 4 * (1 - t), 4 * t * t, 0), size, 2);
        EXPECT_GE(value, low - 1e-6f);
        EXPECT_LE(value, high + 1e-6f);
    }
    // Continuous across a cell boundary.
    EXPECT_NEAR(Random::noise(Vector4D(11.999f, -2, 13, 1), size, 2), Random::noise(Vector4D(12.0f, -2, 13, 1), size, 2),
                1e-3f);

    CaptureStdout out;
    EXPECT_EQ(Random::noise(corner, 0, 2), 0.0f);
    EXPECT_EQ(out.text(), "[Warning] Random::noise: a cell size of 0 has no lattice, noise is 0\n");
}

}  // namespace
