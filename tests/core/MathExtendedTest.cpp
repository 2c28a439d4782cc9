#include "core/MathExtended.h"

#include <gtest/gtest.h>

namespace {

using korvel::MathExtended;

TEST(MathExtendedTest, FadeLerpAndLogarithm)
{
    // The quintic step; the cubic one would give 0.15625 at a quarter.
    EXPECT_FLOAT_EQ(MathExtended::fade(0.25f), 0.103515625f);
    EXPECT_FLOAT_EQ(MathExtended::fade(1.0f), 1.0f);
    Vector4D v(0.0f, 0.25f, 1.0f, 0.25f);
    MathExtended::fade(v);
    EXPECT_FLOAT_EQ(v.y, MathExtended::fade(0.25f));
    EXPECT_EQ(v.w, 0.25f);

    EXPECT_FLOAT_EQ(MathExtended::lerp(2.0f, 6.0f, 0.25f), 3.0f);
    Vector4D out;
    MathExtended::lerp(out, Vector4D(0, 10, -2, 0), Vector4D(4, 20, 2, 0), 0.5f);
    // Exact in binary: each term is a half of a small integer.
    EXPECT_TRUE(out.x == 2.0f && out.y == 15.0f && out.z == 0.0f && out.w == 1.0f) << out;
    EXPECT_NEAR(MathExtended::log2(8.0f), 3.0f, 1e-6f);
}

}  // namespace
