#include "core/Matrix4D.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

namespace {

constexpr float halfPi = 1.57079632679f;

void expectNear(const Matrix4D& a, const Matrix4D& b, float tolerance)
{
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(a.m[i], b.m[i], tolerance) << "element " << i;
    }
}

void expectNear(const Vector4D& v, const Vector4D& expected, float tolerance = 1e-6f)
{
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(v.getValue(i), expected.getValue(i), tolerance) << "component " << i;
    }
}

Matrix4D randomMatrix(std::mt19937& generator, float low = -10.0f, float high = 10.0f)
{
    std::uniform_real_distribution<float> value(low, high);
    Matrix4D a;
    for (float& element : a.m) {
        element = value(generator);
    }
    return a;
}

// Orthonormal 3x3 block with determinant +1.
void expectRotation(const Matrix4D& r)
{
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(r.getColumn(i / 3).scal3D(r.getColumn(i % 3)), i % 4 == 0 ? 1.0f : 0.0f, 1e-5f) << i;
    }
    EXPECT_NEAR(r.getColumn(0).pvect3D(r.getColumn(1)).scal3D(r.getColumn(2)), 1.0f, 1e-5f);
}

TEST(Matrix4DTest, StoresByColumnSavesByLineRefusesBadIndicesAndAppliesTheRightFactorFirst)
{
    const Matrix4D a(Vector4D(0, 1, 2, 3), Vector4D(4, 5, 6, 7), Vector4D(8, 9, 10, 11), Vector4D(12, 13, 14, 15));
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(a.m[i], static_cast<float>(i));
        EXPECT_EQ(Matrix4D::getI4().m[i], (i % 5 == 0) ? 1.0f : 0.0f);
    }

    CaptureStdout out;
    Matrix4D b(a);
    b.setColumn(4, Vector4D(1, 1, 1, 1));
    b.setLine(-1, Vector4D(1, 1, 1, 1));
    expectNear(b, a, 0.0f);
    EXPECT_EQ(out.text().substr(0, 70), "[Error] Matrix4D::setColumn: index 4 is not a line or column (0 to 3)\n");

    // Saved line by line.
    std::stringstream text;
    EXPECT_TRUE(a.save(text));
    EXPECT_EQ(text.str().rfind("0\n4\n8\n12\n\n1\n5\n9\n", 0), 0u);
    Matrix4D loaded;
    EXPECT_TRUE(loaded.load(text));
    expectNear(loaded, a, 0.0f);

    // Translation in column 3 pins the convention; associativity over random
    // matrices then leaves only the true product.
    Matrix4D translate = Matrix4D::getI4();
    translate.setPosition(5, 0, 0);
    expectNear((translate * Matrix4D::getRz(halfPi)) * Vector4D(1, 0, 0, 1), Vector4D(5, 1, 0, 1));
    std::mt19937 generator(11);
    for (int round = 0; round < 20; ++round) {
        const Matrix4D a = randomMatrix(generator);
        const Matrix4D b = randomMatrix(generator);
        const Vector4D v(1.5f, -2.0f, 0.25f, 1.0f);
        expectNear((a * b) * v, a * (b * v), 1e-2f);
    }
}

TEST(Matrix4DTest, InverseTimesMatrixIsTheIdentityAndSingularMatricesAreRefused)
{
    std::mt19937 generator(2024);
    const Matrix4D identity = Matrix4D::getI4();
    Matrix4D inverse;
    for (int round = 0; round < 500; ++round) {
        // A dominant diagonal keeps them well conditioned; its sign varies so
        // that pivots are searched for and lines exchanged.
        Matrix4D a = randomMatrix(generator, -1.0f, 1.0f);
        a.m[4 * (round % 4) + (round / 4) % 4] += (round % 2 == 0) ? 6.0f : -6.0f;
        for (int i = 0; i < 4; ++i) {
            a.m[5 * i] += (round % 3 == 0) ? -3.0f : 3.0f;
        }
        if (round % 4 == 3) {
            // A tiny first pivot: without the line exchange the error explodes.
            a.m[0] = 1e-7f;
            a.m[1 + (round / 4) % 3] = 6.0f;
        }
        const Matrix4D copy(a);
        ASSERT_TRUE(a.invert(inverse)) << round;
        expectNear(a * inverse, identity, 1e-4f);
        expectNear(inverse * a, identity, 1e-4f);
        expectNear(a, copy, 0.0f);
    }

    Matrix4D zeroColumn = Matrix4D::getI4();
    zeroColumn.setColumn(2, Vector4D());
    // Line 1 is twice line 0: the second pivot search finds only zeros.
    Matrix4D dependent;
    dependent.setLines(Vector4D(1, 2, 0, 0), Vector4D(2, 4, 0, 0), Vector4D(0, 0, 1, 0), Vector4D(0, 0, 0, 1));
    for (const Matrix4D& singular : {zeroColumn, dependent, Matrix4D()}) {
        EXPECT_FALSE(singular.invert(inverse));
    }
}

TEST(Matrix4DTest, AxisRotationsAreRightHandedAndEqualTheirMatrixOnTheLeft)
{
    struct Case {
        void (Matrix4D::*rotate)(float);
        Matrix4D (*make)(float);
        Vector4D from;
        Vector4D to;
    };
    const Case cases[] = {
        {&Matrix4D::rotX, &Matrix4D::getRx, Vector4D::axisY, Vector4D::axisZ},
        {&Matrix4D::rotY, &Matrix4D::getRy, Vector4D::axisZ, Vector4D::axisX},
        {&Matrix4D::rotZ, &Matrix4D::getRz, Vector4D::axisX, Vector4D::axisY},
    };
    std::mt19937 generator(5);
    for (const Case& c : cases) {
        Matrix4D quarter = Matrix4D::getI4();
        (quarter.*c.rotate)(halfPi);
        expectNear(quarter * c.from, c.to);
        const float angle = std::uniform_real_distribution<float>(-4.0f, 4.0f)(generator);
        const Matrix4D m = randomMatrix(generator);
        Matrix4D rotated(m);
        (rotated.*c.rotate)(angle);
        expectNear(rotated, c.make(angle) * m, 1e-4f);
        expectRotation(c.make(angle));
    }
}

TEST(Matrix4DTest, AxisAngleRotationKeepsItsAxisAndTheTranslation)
{
    Vector4D axis(1, -2, 0.5f, 0);
    axis.normalize3D();
    Matrix4D pure = Matrix4D::getI4();
    pure.rotULocal(axis, 1.3f);
    expectRotation(pure);
    expectNear(pure * axis, axis);

    Matrix4D before = Matrix4D::getRz(0.4f);
    before.setPosition(7, 8, 9);
    before.m[3] = 0.5f;  // an odd bottom line must survive too
    Matrix4D m(before);
    m.rotULocal(axis, 1.3f);
    // R on the left of the 3x3 block; translation and bottom line untouched.
    expectNear(m, pure.mul3(before), 1e-5f);

    Matrix4D byVector(before);
    byVector.rotRLocal(axis * 1.3f);
    expectNear(byVector, m, 1e-5f);
    Matrix4D unchanged(before);
    unchanged.rotRLocal(Vector4D(0, 0, 0, 1));
    expectNear(unchanged, before, 0.0f);
}

TEST(Matrix4DTest, ProjectionMapsTheFrustumOntoTheUnitCube)
{
    const float angle = 0.6f, ratio = 16.0f / 9.0f, near = 0.5f, far = 100.0f;
    Matrix4D p;
    p.m[1] = 42.0f;  // cleared first
    p.setProjection(angle, ratio, near, far);
    const float t = std::tan(angle);
    auto ndc = [&p](const Vector4D& v) { return (p * v) * (1.0f / (p * v).w); };
    EXPECT_NEAR(ndc(Vector4D(0, 0, -near, 1)).z, -1.0f, 1e-5f);
    EXPECT_NEAR(ndc(Vector4D(0, 0, -far, 1)).z, 1.0f, 1e-4f);
    // The angle fixes the horizontal field, the ratio scales the vertical.
    EXPECT_NEAR(ndc(Vector4D(near * t, 0, -near, 1)).x, 1.0f, 1e-5f);
    EXPECT_NEAR(ndc(Vector4D(0, near * t / ratio, -near, 1)).y, 1.0f, 1e-5f);
    EXPECT_EQ(p.m[1], 0.0f);

    // A far plane on the near one is taken twice as far.
    Matrix4D same;
    same.setProjection(angle, ratio, 2.0f, 2.0f);
    p.setProjection(angle, ratio, 2.0f, 4.0f);
    expectNear(same, p, 0.0f);
}

TEST(Matrix4DTest, BasisFromAnAxisIsARightHandedOrthonormalFrame)
{
    Matrix4D m = Matrix4D::getRz(1.0f);
    const Matrix4D before(m);
    EXPECT_FALSE(m.setBaseMatrixXAxis(Vector4D(0, 0, 0.00005f, 0)));
    expectNear(m, before, 0.0f);
    std::mt19937 generator(3);
    std::uniform_real_distribution<float> value(-5.0f, 5.0f);
    for (int round = 0; round < 50; ++round) {
        // Every fifth axis has y = 0, which takes the other branch; the
        // first two are exactly Y and Z, which have their own.
        Vector4D axis(value(generator), round % 5 == 0 ? 0.0f : value(generator), value(generator), 0);
        if (round < 2) {
            axis = round == 0 ? Vector4D::axisY : Vector4D::axisZ;
        }
        ASSERT_TRUE(m.setBaseMatrixXAxis(axis));
        axis.normalize3D();
        expectNear(m.getColumn(0), axis);
        expectNear(m.getColumn(3), Vector4D::axisW, 0.0f);
        expectRotation(m);
    }
}

}  // namespace
