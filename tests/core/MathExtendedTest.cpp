#include "core/MathExtended.h"

#include <gtest/gtest.h>

namespace {

using korvel::MathExtended;

TEST(MathExtendedTest, FadeIsARisingSmoothStepFlatAtBothEnds)
{
    EXPECT_EQ(MathExtended::fade(0.0f), 0.0f);
    EXPECT_FLOAT_EQ(MathExtended::fade(0.5f), 0.5f);
    EXPECT_FLOAT_EQ(MathExtended::fade(1.0f), 1.0f);
    const float h = 1e-3f;
    EXPECT_NEAR(MathExtended::fade(h) / h, 0.0f, 1e-4f);
    EXPECT_NEAR((1.0f - MathExtended::fade(1.0f - h)) / h, 0.0f, 1e-3f);
    for (float t = 0.01f; t <= 1.0f; t += 0.01f) {
        EXPECT_GT(MathExtended::fade(t), MathExtended::fade(t - 0.01f)) << t;
    }
    Vector4D v(0.0f, 0.5f, 1.0f, 0.25f);
    MathExtended::fade(v);
    EXPECT_FLOAT_EQ(v.y, 0.5f);
    EXPECT_EQ(v.w, 0.25f);
}

TEST(MathExtendedTest, LerpAndLogarithm)
{
    EXPECT_EQ(MathExtended::lerp(2.0f, 6.0f, 1.0f), 6.0f);
    EXPECT_FLOAT_EQ(MathExtended::lerp(2.0f, 6.0f, 0.25f), 3.0f);
    Vector4D out;
    MathExtended::lerp(out, Vector4D(0, 10, -2, 0), Vector4D(4, 20, 2, 0), 0.5f);
    const float expected[] = {2, 15, 0, 1};
    for (int i = 0; i < 4; ++i) {
        EXPECT_FLOAT_EQ(out.getValue(i), expected[i]) << i;
    }
    EXPECT_NEAR(MathExtended::log2(8.0f), 3.0f, 1e-6f);
    EXPECT_NEAR(MathExtended::log2(0.125f), -3.0f, 1e-6f);
}

}  // namespace
