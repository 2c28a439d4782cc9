#include "core/Random.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace {

using korvel::Random;

TEST(RandomTest, UniformDrawsStayInTheirClosedRangesAndReachBothEnds)
{
    struct Case {
        std::function<float()> draw;
        float low;
        float high;
    };
    const Case cases[] = {
        {[] { return Random::aleaFloatZeroOne(); }, 0.0f, 1.0f},
        {[] { return Random::aleaFloatMinusOneOne(); }, -1.0f, 1.0f},
        {[] { return Random::aleaFloatZeroRange(7.5f); }, 0.0f, 7.5f},
        {[] { return Random::aleaFloatMinusRangeRange(3.0f); }, -3.0f, 3.0f},
        {[] { return Random::aleaFloatZeroRange(0.0f); }, 0.0f, 0.0f},
    };
    for (const Case& c : cases) {
        std::srand(12345);
        float seenLow = c.high;
        float seenHigh = c.low;
        // 15-bit draws: a few hundred thousand tries hit both ends many times,
        // and both ends seen as the extremes means nothing fell outside.
        for (int i = 0; i < 400000; ++i) {
            const float value = c.draw();
            seenLow = std::min(seenLow, value);
            seenHigh = std::max(seenHigh, value);
        }
        EXPECT_EQ(seenLow, c.low);
        EXPECT_EQ(seenHigh, c.high);
    }
}

TEST(RandomTest, PointHashIsSeededAndSignedAndNoiseBlendsItContinuously)
{
    const Vector4D p(1.25f, -3.5f, 8.0f, 1.0f);
    EXPECT_EQ(Random::aleaPoint(p, 3), Random::aleaPoint(p, 3));
    EXPECT_NE(Random::aleaPoint(p, 3), Random::aleaPoint(p, 4));
    EXPECT_NE(Random::aleaPoint(p, 3), Random::aleaPoint(Vector4D(1.25f, -3.5f, 9.0f, 1.0f), 3));
    float low = 1.0f;
    float high = -1.0f;
    for (int i = 0; i < 200; ++i) {
        const float value = Random::aleaPoint(Vector4D(i * 0.37f, i * -1.1f, 2.0f, 1.0f), 0);
        low = std::min(low, value);
        high = std::max(high, value);
    }
    EXPECT_TRUE(low > -1.0f && low < 0.0f) << low;
    EXPECT_TRUE(high > 0.0f && high < 1.0f) << high;

    // The corners of a cell give their hash; across a boundary it is continuous.
    for (int i = 0; i < 8; ++i) {
        const Vector4D at = Vector4D(8, -4, 12, 1) + Vector4D((i & 1) * 4.0f, (i >> 1 & 1) * 4.0f, (i >> 2) * 4.0f, 0);
        EXPECT_FLOAT_EQ(Random::noise(at, 4, 2), Random::aleaPoint(at, 2));
    }
    EXPECT_NEAR(Random::noise(Vector4D(11.999f, -2, 13, 1), 4, 2), Random::noise(Vector4D(12.0f, -2, 13, 1), 4, 2),
                1e-3f);
    CaptureStdout out;
    EXPECT_EQ(Random::noise(p, 0, 2), 0.0f);
    EXPECT_EQ(out.text(), "[Warning] Random::noise: a cell size of 0 has no lattice, noise is 0\n");
}

}  // namespace
