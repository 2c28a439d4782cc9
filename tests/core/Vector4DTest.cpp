#include "core/Matrix4D.h"
#include "core/Vector4D.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

void expectVector(const Vector4D& v, float x, float y, float z, float w)
{
    EXPECT_FLOAT_EQ(v.x, x);
    EXPECT_FLOAT_EQ(v.y, y);
    EXPECT_FLOAT_EQ(v.z, z);
    EXPECT_FLOAT_EQ(v.w, w);
}

TEST(Vector4DTest, IndexAccessIgnoresOutOfRangeAndThreeDimensionalOperationsLeaveWAlone)
{
    Vector4D v;
    const float array[] = {1, 2, 3, 4};
    v = array;
    EXPECT_EQ(v.getValue(4), 0.0f);
    EXPECT_EQ(v.getValue(-1), 0.0f);
    v.setValue(9.0f, 7);
    v.setValue(9.0f, -1);
    expectVector(v, 1, 2, 3, 4);

    EXPECT_FLOAT_EQ(Vector4D(3, 4, 0, 100).norm3D(), 5.0f);
    Vector4D onlyW(0, 0, 0, 5);
    onlyW.normalize3D();
    expectVector(onlyW, 0, 0, 0, 5);
    v.setCoord(0, 3, 4, 7);
    v.normalize3D();
    expectVector(v, 0, 0.6f, 0.8f, 7);
    expectVector(Vector4D(1, 2, 3, 1).pvect3D(Vector4D(4, 5, 6, 1)), -3, 6, -3, 0);

    // Columns (0 1 2 3), (4 5 6 7)...: x' = 0*1 + 4*2 + 8*3 + 12*1, and so on.
    v.setCoord(1, 2, 3, 1);
    v *= Matrix4D(Vector4D(0, 1, 2, 3), Vector4D(4, 5, 6, 7), Vector4D(8, 9, 10, 11), Vector4D(12, 13, 14, 15));
    expectVector(v, 44, 51, 58, 65);
}

TEST(Vector4DTest, NullnessIsAbsoluteAndEqualityRelative)
{
    EXPECT_TRUE(Vector4D(0.0001f, -0.0001f, 0, 0).isNull());
    EXPECT_FALSE(Vector4D(0, 0, 0, 0.0002f).isNull());
    struct Case {
        Vector4D a;
        Vector4D b;
        bool equal;
    };
    const Case cases[] = {
        {Vector4D(0, 0, 0, 0), Vector4D(0, 0, 0, 0), true},  // 0/0 is NaN, which passes
        {Vector4D(1000, 1, 1, 1), Vector4D(1000.05f, 1, 1, 1), true},
        {Vector4D(1000, 1, 1, 1), Vector4D(1000.2f, 1, 1, 1), false},
        // Tiny values are compared relatively too: a sign change is a difference.
        {Vector4D(1e-8f, 0, 0, 0), Vector4D(-1e-8f, 0, 0, 0), false},
        // 0 on the right alone gives an infinite quotient; 0 on the left
        // alone a quotient of 0, a relative gap of 1. Both differ.
        {Vector4D(1, 1e-9f, 0, 0), Vector4D(1, 0, 0, 0), false},
        {Vector4D(1, 0, 0, 0), Vector4D(1, 1e-9f, 0, 0), false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.a == c.b, c.equal) << c.a << " vs" << c.b;
        EXPECT_EQ(c.a != c.b, !c.equal) << c.a << " vs" << c.b;
    }
}

TEST(Vector4DTest, FloorAndFractionByBaseWorkOnXYZOnlyAndIgnoreAZeroBase)
{
    Vector4D v(2.5f, -2.5f, 7.0f, 3.7f);
    v.floor();
    expectVector(v, 2, -3, 7, 3.7f);
    v.setCoord(7, -1, 10, 3.7f);
    v.floorBase(4u);  // rounded down, not towards zero
    expectVector(v, 4, -4, 8, 3.7f);
    v.setCoord(7, -1, 10, 3.7f);
    v.fractBase(4);
    expectVector(v, 0.75f, 0.75f, 0.5f, 3.7f);  // of the quotient, not scaled back

    // Each of the three overloads ignores a zero base.
    v.floorBase(0);
    v.floorBase(0u);
    v.floorBase(0.0f);
    v.fractBase(0);
    v.fractBase(0u);
    v.fractBase(0.0f);
    expectVector(v, 0.75f, 0.75f, 0.5f, 3.7f);
}

TEST(Vector4DTest, SaveLoadRoundTripAndLoadAnswersFalseAnyway)
{
    std::stringstream text;
    EXPECT_TRUE(Vector4D(1.5f, -2.25f, 1e-3f, 123456.0f).save(text));
    EXPECT_EQ(text.str(), "1.5\t\n-2.25\t\n0.001\t\n123456\t\n");
    Vector4D loaded;
    EXPECT_FALSE(loaded.load(text));
    expectVector(loaded, 1.5f, -2.25f, 1e-3f, 123456.0f);

    std::istringstream shortInput("1 2 oops 4");
    CaptureStdout out;
    EXPECT_FALSE(loaded.load(shortInput));
    expectVector(loaded, 1.5f, -2.25f, 1e-3f, 123456.0f);
    EXPECT_EQ(out.text(), "[Error] Vector4D::load: four numbers expected, vector left unchanged\n");
}

}  // namespace
