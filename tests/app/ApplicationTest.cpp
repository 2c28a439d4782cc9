// The frame's steps that need no window: key handling on the camera and the
// movement step.

#include "app/Application3D.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <iterator>
#include <regex>
#include <string>

namespace {

TEST(ApplicationTest, KeysMoveTheCameraAndEveryEventWritesThePosition)
{
    korvel::Application3D frame;
    auto* world = new korvel::World();
    frame.setWorld(world);
    CaptureStdout out;
    frame.manageKey(nullptr, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
    frame.manageKey(nullptr, GLFW_KEY_Z, 0, GLFW_RELEASE, 0);  // a tap moves twice
    frame.manageKey(nullptr, GLFW_KEY_S, 0, GLFW_REPEAT, 0);
    EXPECT_FLOAT_EQ(world->getView().getPosition().z, 0.2f);
    frame.manageKey(nullptr, GLFW_KEY_RIGHT, 0, GLFW_PRESS, 0);
    EXPECT_GT(world->getCameraDirection().x, 0.0f);
    frame.manageKey(nullptr, GLFW_KEY_UP, 0, GLFW_PRESS, 0);
    EXPECT_LT(world->getCameraDirection().y, 0.0f);  // the nose goes down, as with a flight stick
    frame.manageKey(nullptr, GLFW_KEY_F5, 0, GLFW_PRESS, 0);
    frame.manageKey(nullptr, GLFW_KEY_O, 0, GLFW_PRESS, 0);  // back to the origin
    EXPECT_FLOAT_EQ(world->getView().getPosition().norm3D(), 0.0f);

    EXPECT_EQ(frame.getKeyEventCount(), 7);
    const std::string text = out.text();
    const std::regex position("\\[information\\] Position in world: ");
    EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), position), std::sregex_iterator()), 7);
}

TEST(ApplicationTest, MoveStepFollowsTheKeyRateInStages)
{
    // Key rate, step before, step after.
    const float cases[][3] = {{0.0f, 5.0f, 0.2f},  {0.5f, 0.2f, 1.0f},  {30.0f, 0.2f, 1.0f}, {30.5f, 1.0f, 5.0f},
                              {70.0f, 1.0f, 5.0f}, {70.5f, 1.0f, 1.0f}, {500.0f, 5.0f, 5.0f}};
    for (const auto& c : cases) {
        EXPECT_FLOAT_EQ(korvel::Application3D::followKeyRate(c[0], c[1]), c[2]) << c[0];
    }
}

}  // namespace
