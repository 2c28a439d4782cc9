// The world's camera, projection and pick ray, without any program to feed.

#include "core/Matrix4D.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cmath>

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
    EXPECT_TRUE(world.isViewChanged());

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
    expectVector(world.getCameraDirection(), 0, 0, -1, 0);
}

TEST(WorldTest, SingularViewIsReportedAndLeavesTheCameraWhereItWas)
{
    korvel::World world;
    world.moveIn(1.0f);
    world.setView(Matrix4D());  // all zeros
    expectVector(world.getPosition(), 0, 0, -1, 1);

    CaptureStdout out;
    world.moveIn(1.0f);
    world.rotY(0.5f);
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    EXPECT_FALSE(world.computePick(0, 0, origin, direction, up));
    EXPECT_EQ(out.text(),
              "[Error] Move in World view not invertible\n"
              "[Error] Move camera direction in World view not invertible\n"
              "[Error] ComputePick in World view not invertible\n");
    expectVector(world.getPosition(), 0, 0, -1, 1);
    expectVector(world.getCameraDirection(), 0, 0, -1, 0);
}

TEST(WorldTest, SettersRaiseTheSceneFlagWhichAnUpdateClearsWhileTheViewFlagStays)
{
    korvel::World world;
    world.setFogStart(5.0f);
    EXPECT_TRUE(world.isSceneChanged());
    world.update();
    EXPECT_FALSE(world.isSceneChanged());

    world.setFogEnd(50.0f);
    world.update();
    world.setFogColor(Vector4D(0.1f, 0.2f, 0.3f, 1.0f));
    world.update();
    world.setPhong(Vector4D(0.2f, 0.8f, 0.8f, 2.0f));
    EXPECT_TRUE(world.isSceneChanged());
    world.update();
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    EXPECT_TRUE(world.isSceneChanged());
    world.update();
    EXPECT_FALSE(world.isViewChanged());

    world.rotX(0.1f);
    world.update();
    world.update();
    EXPECT_TRUE(world.isViewChanged());  // once moved, the view is always re-sent

    // Setup without any program only normalises the light.
    world.setMainLight(Vector4D(3.0f, 0.0f, -4.0f, 1.0f));
    EXPECT_TRUE(world.setup());
    expectVector(world.getMainLight(), 0.6f, 0.0f, -0.8f, 1.0f);
    EXPECT_TRUE(world.isSelectionDisabled());

    CaptureStdout out;
    world.setProjection(0.7853982f, 800, 0, 1.0f, 100.0f);
    EXPECT_EQ(out.text(), "[Warning] projection height is 0, square ratio used\n");
    EXPECT_TRUE(std::isfinite(world.getProjection().m[5]));
}

TEST(WorldTest, PickRayGoesThroughTheCursorPixel)
{
    korvel::World world;
    const int width = 800;
    const int height = 600;
    world.setProjection(0.7853982f, width, height, 1.0f, 100.0f);
    world.moveIn(-5.0f);  // the eye now stands at z = 5
    world.rotY(0.3f);

    struct Pixel {
        int x;
        int y;
    };
    for (const Pixel& p : {Pixel{400, 300}, Pixel{0, 0}, Pixel{800, 600}, Pixel{123, 456}}) {
        Vector4D origin;
        Vector4D direction;
        Vector4D up;
        ASSERT_TRUE(world.computePick(p.x, p.y, origin, direction, up));
        expectVector(origin, world.getPosition().x, world.getPosition().y, world.getPosition().z, 1);
        EXPECT_NEAR(direction.norm3D(), 1.0f, 1e-5f);
        // A point on the ray, taken through view and projection, lands on
        // the pixel it was cast from.
        Vector4D point = origin + direction * 10.0f;
        point.w = 1.0f;
        const Vector4D clip = world.getProjection() * (world.getView() * point);
        const float pixelX = (clip.x / clip.w + 1.0f) * 0.5f * width;
        const float pixelY = (1.0f - clip.y / clip.w) * 0.5f * height;
        EXPECT_NEAR(pixelX, static_cast<float>(p.x), 0.01f);
        EXPECT_NEAR(pixelY, static_cast<float>(p.y), 0.01f);
    }
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    world.computePick(400, 300, origin, direction, up);
    expectVector(direction, world.getCameraDirection().x, world.getCameraDirection().y,
                 world.getCameraDirection().z, 0);

    // No selection: the operations do nothing and picking finds nothing.
    world.rotSelection(0.15f);
    world.deleteSelection();
    world.addSelection();
    world.subtractSelection();
    EXPECT_EQ(world.getSelection(), nullptr);
    // The beam stays put while selection is disabled (no "Laser" program).
    world.moveSelectionBeam(10, 10);
    expectVector(world.getBeamOrigin(), 0, 0, 0, 1);
    expectVector(world.getBeamDirection(), 0, 0, -1, 0);
}

}  // namespace
