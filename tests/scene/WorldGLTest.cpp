// The world with a display: it feeds its camera and projection into real
// programs and re-sends the projection only when a scene setter asked for it
// (values read back from the driver); it draws opaque objects, then blended
// ones, then the selection, and orders blended faces from the farthest; a
// world saved and loaded again draws the same picture (pixels read back).

#include "SceneGLTesting.h"
#include "SceneTesting.h"
#include "render/GLBaseStructure.h"
#include "scene/Compound3D.h"
#include "scene/Joint3D.h"
#include "scene/ModelManager.h"
#include "scene/ModelShape.h"
#include "scene/ShapeIndexed3D.h"
#include "scene/World.h"
#include "geometry/ShapeIndexed.h"

#include <filesystem>
#include <sstream>
#include <vector>

namespace {

using GetUniformfv = void (*)(unsigned, int, float*);

class WorldGLTest : public GLContextFixture {};

TEST_F(WorldGLTest, SetupFeedsEveryProgramAndUpdatesResendOnlyWhatChanged)
{
    ASSERT_TRUE(korvel::ShaderProgramManagerBase::init());
    const auto getUniformfv = reinterpret_cast<GetUniformfv>(glfwGetProcAddress("glGetUniformfv"));
    auto uniform = [&](ShaderProgramBase* program, int location, int index) {
        float values[16] = {};
        getUniformfv(program->getProgramRaw(), location, values);
        return values[index];
    };

    korvel::ShaderProgramManager* manager = korvel::ShaderProgramManager::getInstance();
    // KORVEL_TEST_DATA is <repository>/tests/scene/data/, which need not exist.
    manager->setPath((std::filesystem::path(KORVEL_TEST_DATA) / "../../../data/Shaders/").lexically_normal().string());
    CaptureStdout quiet;
    auto* wood = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Wood"));
    auto* laser = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Laser"));
    quiet.restore();
    ASSERT_TRUE(wood != nullptr && laser != nullptr);

    korvel::World world;
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    world.moveIn(-4.0f);
    EXPECT_TRUE(world.setup());
    for (ShaderProgramBase* program : {wood, laser}) {
        for (int i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(uniform(program, program->getProjectionLocation(), i), world.getProjection().m[i]);
            EXPECT_FLOAT_EQ(uniform(program, program->getModelviewLocation(), i), world.getView().m[i]);
        }
    }

    // The camera moves: the view is re-sent at the next update.
    world.moveIn(1.5f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getModelviewLocation(), 14), world.getView().m[14]);

    // The projection is re-sent only once a scene setter asked for it.
    wood->use();
    const float poisoned[16] = {};
    ShaderProgram::uniformMatrix4fv(wood->getProjectionLocation(), 1, 0, poisoned);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), 0.0f);
    world.setFogStart(7.0f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), world.getProjection().m[0]);
    EXPECT_FLOAT_EQ(uniform(wood, wood->getFogStartLocation(), 0), 7.0f);
}

// ---- drawing ----------------------------------------------------------------------

using korvel::IObject3D;
using korvel::Shape3D;
using korvel::World;

// The frame's drawing state, for the duration of a test.
class FrameState {
public:
    FrameState()
    {
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    }
    ~FrameState()
    {
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
    }
};

std::vector<unsigned char> frame(World& world)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    world.update();
    world.draw();
    return readWindow();
}

// The colour at a point of the screen in normalised device units.
void expectColour(const std::vector<unsigned char>& pixels, float x, float y, std::vector<int> expected,
                  const char* what)
{
    const int column = static_cast<int>((x + 1.0f) * 0.5f * side);
    const int row = static_cast<int>((y + 1.0f) * 0.5f * side);
    for (int i = 0; i < 3; ++i) {
        // Half-transparent blue over red lands on 127 or 128 by rounding.
        EXPECT_NEAR(pixels[(row * side + column) * 4 + i], expected[i], 2) << what << ", channel " << i;
    }
}

// A quad facing the eye at depth z (the camera unmoved), covering the
// screen rectangle [x0, x1] x [y0, y1] in normalised device units.
Shape3D* quad(const World& world, float x0, float y0, float x1, float y1, float z, const char* program,
              uint32_t kind)
{
    const float sx = -z / world.getProjection().m[0];
    const float sy = -z / world.getProjection().m[5];
    auto corner = [&](float x, float y) { return Vector4D(x * sx, y * sy, z, 1.0f); };
    auto* object = new Shape3D();
    object->getShape()->addQuad(corner(x0, y0), corner(x1, y0), corner(x1, y1), corner(x0, y1));
    object->setShaderProgram(Programs::get(program));
    object->setElementKind(kind);
    object->updateLimits();
    EXPECT_TRUE(object->make());
    return object;
}

TEST_F(WorldGLTest, OpaqueObjectsFirstThenBlendedOnesThenTheSelection)
{
    Programs programs;
    FrameState state;
    World world;
    world.setProjection(0.7853982f, side, side, 1.0f, 100.0f);
    ASSERT_TRUE(world.setup());
    ASSERT_FALSE(world.isSelectionDisabled());
    // Named so that the blended glass comes first: drawn at once, it would
    // blend with the empty screen and hide the wall behind it.
    world.addElement("a glass", quad(world, 0.2f, -0.8f, 0.8f, 0.2f, -5.0f, "Glass", IObject3D::kindBlended));
    Shape3D* wall = quad(world, -1.0f, -1.0f, 1.0f, 0.5f, -10.0f, "Red", IObject3D::kindPlain);
    world.addElement("b wall", wall);
    world.addElement("c both", quad(world, -0.8f, -0.8f, -0.2f, 0.2f, -5.0f, "Glass", 3));

    std::vector<unsigned char> pixels = frame(world);
    expectColour(pixels, 0.0f, -0.3f, {255, 0, 0}, "wall");
    expectColour(pixels, 0.5f, -0.3f, {127, 0, 128}, "glass over the wall");
    expectColour(pixels, -0.5f, -0.3f, {0, 0, 255}, "element kind 3, drawn without blending");

    // The marker covers the selected face, the wall's lower right half.
    const korvel::Triangle* face = wall->getShape()->getTriangles().front();
    world.setSelection(wall, *face);
    pixels = frame(world);
    expectColour(pixels, 0.9f, -0.9f, {0, 255, 0}, "marked face");
    expectColour(pixels, -0.9f, 0.4f, {255, 0, 0}, "the wall's other face");
    expectColour(pixels, 0.5f, -0.3f, {127, 0, 128}, "glass, drawn before the marker");
}

TEST_F(WorldGLTest, TheBeamRunsFromTheLowerRightCornerToTheCursor)
{
    auto greenPixels = [](const std::vector<unsigned char>& p) {
        std::vector<std::pair<int, int>> green;  // column, row from the bottom
        for (int i = 0; i < side * side; ++i) {
            if (p[i * 4 + 1] > 200) {
                green.emplace_back(i % side, i / side);
            }
        }
        return green;
    };
    FrameState state;
    Programs programs;
    World world;
    world.setProjection(0.7853982f, side, side, 1.0f, 100.0f);
    ASSERT_TRUE(world.setup());
    EXPECT_TRUE(greenPixels(frame(world)).empty());
    world.moveSelectionBeam(16, 16);  // upper left, y downwards
    const auto green = greenPixels(frame(world));
    EXPECT_GT(green.size(), 8u);  // thin at this size, but there
    for (const auto& [column, row] : green) {
        // Between the cursor (column 16, row 48 from the bottom) and the
        // lower right corner.
        EXPECT_GE(column, 15);
        EXPECT_LE(row, 49);
    }
    EXPECT_LT(green.back().first, side / 2);  // it reaches towards the cursor
}

TEST_F(WorldGLTest, BlendedFacesAreOrderedFromTheFarthestAsTheCameraMoves)
{
    Programs programs;
    World world;
    world.setProjection(0.7853982f, side, side, 1.0f, 100.0f);
    auto pane = [](float z) { return new korvel::Triangle(at(-1, -1, z), at(1, -1, z), at(0, 1, z)); };
    // Two panes, the near one first; one object alone, one inside a compound.
    std::vector<Shape3D*> shapes;
    for (int i = 0; i < 2; ++i) {
        auto* shape = new Shape3D();
        shape->getShape()->addTriangle(pane(-5.0f));
        shape->getShape()->addTriangle(pane(-8.0f));
        shape->setShaderProgram(Programs::get("Glass"));
        shape->setElementKind(IObject3D::kindBlended);
        ASSERT_TRUE(shape->make());
        shapes.push_back(shape);
    }
    world.addElement("alone", shapes[0]);
    auto* compound = new korvel::Compound3D();
    compound->addJoinedComponent(shapes[1], "panes");
    world.addElement("compound", compound);
    auto firstIndex = [](Shape3D* shape) { return shape->getStructure()->getIndices()[0]; };

    world.update();
    EXPECT_EQ(firstIndex(shapes[0]), 3u);  // the pane at -8 first
    EXPECT_EQ(firstIndex(shapes[1]), 3u);
    // From beyond the panes, looking back, the pane at -5 is the farther.
    world.setCamera(Vector4D(0.0f, 0.0f, -20.0f, 1.0f));
    world.rotY(3.1415927f);
    world.update();
    EXPECT_EQ(firstIndex(shapes[0]), 0u);
    EXPECT_EQ(firstIndex(shapes[1]), 0u);
}

// What the game puts in a world: clones of a model made of an indexed
// shape, a plain shape, a compound; turned and scaled.
void populate(World& world)
{
    auto* ball = new korvel::ShapeIndexed3D();
    ball->setShape(sphereShape<korvel::ShapeIndexed>(1.0f, 12));
    ball->setShaderProgram(Programs::get("Shade"));
    ball->updateLimits();
    ASSERT_TRUE(ball->make());
    auto* model = new korvel::ModelShape();
    model->addObject(0, ball);
    ASSERT_TRUE(korvel::ModelManager::getInstance()->addModel("ball", model));

    auto place = [](IObject3D* object, float x, float y, float z, float turn, float scale) {
        Matrix4D* m = object->getMatrixObjectChange();
        m->rotX(turn);
        m->rotY(2.0f * turn);
        m->enlarge(scale);
        m->setPosition(x, y, z);
        object->changeMatrixObject();
        return object;
    };
    world.addElement("left", place(korvel::ModelManager::getInstance()->createClone("ball"), -1.5f, 0, -8, 0.4f, 1));
    world.addElement("right", place(korvel::ModelManager::getInstance()->createClone("ball"), 1.5f, 1, -9, 0, 0.7f));

    auto cube = [](int division) {
        auto* object = new Shape3D();
        korvel::Shape::generateCube(object->getShape(), division);
        object->setShaderProgram(Programs::get("Shade"));
        object->updateLimits();
        return object;
    };
    world.addElement("cube", place(cube(2), 0, -1.5f, -7, 0.5f, 1.2f));
    auto* pair = new korvel::Compound3D();
    pair->addJoinedComponent(cube(1), "one");
    pair->addJoinedComponent(cube(1), "two");
    pair->getJoint("two")->getMatrixObjectChange()->setPosition(1.2f, 0.3f, 0.0f);
    pair->updateLimits();
    world.addElement("pair", place(pair, -2.5f, -2, -11, 0.7f, 0.8f));
    world.linkObjects();  // makes what is not made yet
}

TEST_F(WorldGLTest, AWorldSavedAndLoadedAgainDrawsTheSamePicture)
{
    Programs programs;
    FrameState state;
    std::string text;
    std::vector<unsigned char> before;
    {
        World world;
        world.setProjection(0.7853982f, side, side, 1.0f, 100.0f);
        world.moveIn(3.0f);
        world.rotY(0.1f);
        populate(world);
        ASSERT_TRUE(world.setup());
        before = frame(world);
        std::ostringstream out;
        ASSERT_TRUE(world.save(out));
        text = out.str();
    }
    int lit = 0;
    for (std::size_t i = 0; i < before.size(); i += 4) {
        lit += before[i] + before[i + 1] + before[i + 2] > 0 ? 1 : 0;
    }
    EXPECT_GT(lit, side * side / 16);  // there is something to compare

    World copy;
    std::istringstream in(text);
    CaptureStdout out;
    ASSERT_TRUE(copy.load(in)) << out.text();
    EXPECT_EQ(out.text().find("[Warning]"), std::string::npos) << out.text();
    EXPECT_EQ(copy.countElements(), 4u);
    ASSERT_TRUE(copy.setup());
    EXPECT_TRUE(frame(copy) == before);
    copy.releaseObjects();
    korvel::ModelManager::getInstance()->cleanUp();  // the clones are gone
}

}  // namespace
