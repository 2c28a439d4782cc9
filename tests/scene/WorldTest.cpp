// The world's camera, projection and pick ray, without any program to feed.

#include "core/Matrix4D.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

namespace {

const float quarterTurn = 1.5707963f;

void expectVector(const Vector4D& v, float x, float y, float z, float w)
{
    EXPECT_NEAR(v.x, x, 1e-5f);
    EXPECT_NEAR(v.y, y, 1e-5f);
    EXPECT_NEAR(v.z, z, 1e-5f);
    EXPECT_NEAR(v.w, w, 1e-5f);
}

TEST(WorldTest, MovingAndTurningKeepCameraPositionAndDirectionInStep)
{
    korvel::World world;
    world.moveIn(2.0f);
    expectVector(world.getPosition(), 0, 0, -2, 1);  // forward is -z
    world.rotY(quarterTurn);
    expectVector(world.getPosition(), 0, 0, -2, 1);  // turning happens in place
    expectVector(world.getCameraDirection(), 1, 0, 0, 0);
    world.moveIn(3.0f);
    expectVector(world.getPosition(), 3, 0, -2, 1);  // forward is now +x
    world.rotY(-quarterTurn);
    world.rotX(quarterTurn);
    expectVector(world.getCameraDirection(), 0, -1, 0, 0);
    world.rotX(-quarterTurn);
    world.rotZ(quarterTurn);  // rolling does not change where the eye looks
    expectVector(world.getCameraDirection(), 0, 0, -1, 0);

    // A view set from outside brings the camera along.
    Matrix4D view = Matrix4D::getI4();
    view.setPosition(1.0f, 2.0f, 3.0f);
    world.setView(view);
    expectVector(world.getPosition(), -1, -2, -3, 1);

    // A singular view is reported and leaves the camera where it was.
    world.setView(Matrix4D());
    CaptureStdout out;
    world.moveIn(1.0f);
    world.rotY(0.5f);
    EXPECT_EQ(out.text(), "[Error] Move in World view not invertible\n"
                          "[Error] Move camera direction in World view not invertible\n");
    expectVector(world.getPosition(), -1, -2, -3, 1);
    expectVector(world.getCameraDirection(), 0, 0, -1, 0);
}

TEST(WorldTest, PickRayGoesThroughTheCursorPixel)
{
    korvel::World world;
    const int width = 800;
    const int height = 600;
    world.setProjection(0.7853982f, width, height, 1.0f, 100.0f);
    world.moveIn(-5.0f);
    world.rotY(0.3f);
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    const int pixels[][2] = {{400, 300}, {0, 0}, {800, 600}, {123, 456}};
    for (const auto& p : pixels) {
        ASSERT_TRUE(world.computePick(p[0], p[1], origin, direction, up));
        expectVector(origin, world.getPosition().x, world.getPosition().y, world.getPosition().z, 1);
        EXPECT_NEAR(direction.norm3D(), 1.0f, 1e-5f);
        // A point on the ray, taken through view and projection, lands on
        // the pixel it was cast from.
        Vector4D point = origin + direction * 10.0f;
        point.w = 1.0f;
        const Vector4D clip = world.getProjection() * (world.getView() * point);
        EXPECT_NEAR((clip.x / clip.w + 1.0f) * 0.5f * width, p[0], 0.01f);
        EXPECT_NEAR((1.0f - clip.y / clip.w) * 0.5f * height, p[1], 0.01f);
    }

    world.setView(Matrix4D());  // singular
    CaptureStdout out;
    EXPECT_FALSE(world.computePick(0, 0, origin, direction, up));
    EXPECT_EQ(out.text(), "[Error] ComputePick in World view not invertible\n");
}

}  // namespace
