// The map container draws opaque objects at once in key order and blended
// ones after them, in the order met, with blending on only for those. The
// blending state is read back from the driver while each object draws.

#include "support/GLContextFixture.h"
#include "app/WindowGL.h"
#include "scene/IObject3D.h"
#include "support/CaptureStdout.h"

#include <string>
#include <utility>
#include <vector>

namespace {

using korvel::IObject3D;
using Log = std::vector<std::string>;

// Writes its name, and "+" when blending is on, each time it is drawn.
class Recorder : public IObject3D {
public:
    Recorder(std::string name, uint32_t kind, Log& log) : name(std::move(name)), log(log) { setElementKind(kind); }
    void draw() override { log.push_back(name + (glIsEnabled(GL_BLEND) == GL_TRUE ? "+" : "")); }

    std::string name;
    Log& log;
};

class WindowGLTest : public GLContextFixture {};

TEST_F(WindowGLTest, OpaqueObjectsDrawInKeyOrderThenBlendedOnesWithBlending)
{
    Log log;
    Recorder plainB("plainB", IObject3D::kindPlain, log);
    Recorder blendA("blendA", IObject3D::kindBlended, log);
    Recorder bothD("bothD", IObject3D::kindPlain | IObject3D::kindBlended, log);  // not strictly blended
    Recorder blendC("blendC", IObject3D::kindBlended, log);
    korvel::WindowGL window;
    ASSERT_TRUE(window.addObject("d", &bothD));
    ASSERT_TRUE(window.addObject("c", &blendC));
    ASSERT_TRUE(window.addObject("b", &plainB));
    ASSERT_TRUE(window.addObject("a", &blendA));

    window.draw();
    EXPECT_EQ(log, (Log{"plainB", "bothD", "blendA+", "blendC+"}));
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);

    // The blended pass alone replays the list of the last draw.
    log.clear();
    window.drawBlended();
    EXPECT_EQ(log, (Log{"blendA+", "blendC+"}));

    // A removed object leaves that list at once: its owner may delete it.
    ASSERT_TRUE(window.removeObject("a"));
    log.clear();
    window.drawBlended();
    EXPECT_EQ(log, (Log{"blendC+"}));
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);

    // Blending ends switched off even with nothing to blend.
    window.clearObjects();
    glEnable(GL_BLEND);
    log.clear();
    window.draw();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);
}

TEST_F(WindowGLTest, MisuseIsRefusedAndKeepsWhatIsHeld)
{
    Log log;
    Recorder first("first", IObject3D::kindPlain, log);
    Recorder second("second", IObject3D::kindPlain, log);
    korvel::WindowGL window;
    ASSERT_TRUE(window.addObject("ship", &first));

    CaptureStdout out;
    EXPECT_FALSE(window.addObject("ship", &second));
    EXPECT_FALSE(window.addObject("rock", nullptr));
    EXPECT_FALSE(window.removeObject("rock"));
    EXPECT_EQ(out.text(), "[Warning] WindowGL key already used, object not added: ship\n"
                          "[Error] WindowGL cannot add a null object under rock\n"
                          "[Warning] WindowGL has no object under rock\n");
    EXPECT_EQ(window.getObject("ship"), &first);
}

}  // namespace
