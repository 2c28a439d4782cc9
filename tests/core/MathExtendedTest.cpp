#include "core/MathExtended.h"

#include <gtest/gtest.h>

namespace {

using korvel::MathExtended;

TEST(MathExtendedTest, FadeIsASmoothStepFlatAtBothEnds)
{
    EXPECT_EQ(MathExtended::fade(0.0f), 0.0f);
    EXPECT_FLOAT_EQ(MathExtended::fade(0.5f), 0.5f);
    EXPECT_FLOAT_EQ(MathExtended::fade(1.0f), 1.0f);
    const float h = 1e-3f;
    EXPECT_NEAR((MathExtended::fade(h) - MathExtended::fade(0.0f)) / h, 0.0f, 1e-4f);
    EXPECT_NEAR((MathExtended::fade(1.0f) - MathExtended::fade(1.0f - h)) / h, 0.0f, 1e-3f);
    float previous = 0.0f;
    for (float t = 0.01f; t <= 1.0f; t += 0.01f) {
        EXPECT_GT(MathExtended::fade(t), previous);
        previous = MathExtended::fade(t);
    }

    Vector4D v(0.0f, 0.5f, 1.0f, 0.25f);
    MathExtended::fade(v);
    EXPECT_FLOAT_EQ(v.y, 0.5f);
    EXPECT_FLOAT_EQ(v.z, 1.0f);
    EXPECT_EQ(v.w, 0.25f);
}

TEST(MathExtendedTest, LerpAndLogarithm)
{
    EXPECT_EQ(MathExtended::lerp(2.0f, 6.0f, 0.0f), 2.0f);
    EXPECT_EQ(MathExtended::lerp(2.0f, 6.0f, 1.0f), 6.0f);
    EXPECT_FLOAT_EQ(MathExtended::lerp(2.0f, 6.0f, 0.25f), 3.0f);

    Vector4D out;
    MathExtended::lerp(out, Vector4D(0, 10, -2, 0), Vector4D(4, 20, 2, 0), 0.5f);
    EXPECT_FLOAT_EQ(out.x, 2.0f);
    EXPECT_FLOAT_EQ(out.y, 15.0f);
    EXPECT_FLOAT_EQ(out.z, 0.0f);
    EXPECT_EQ(out.w, 1.0f);

    EXPECT_NEAR(MathExtended::log2(8.0f), 3.0f, 1e-6f);
    EXPECT_EQ(MathExtended::log2(1.0f), 0.0f);
    EXPECT_NEAR(MathExtended::log2(0.125f), -3.0f, 1e-6f);
}

}  // namespace
