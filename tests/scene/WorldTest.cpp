// The world without a display: camera, pick ray, element names and
// ownership, leaf lists, the visibility test, picking against every
// triangle, the selection driven by the frame's mouse and keys, and world
// files, good and bad.

#include "app/Application3D.h"
#include "core/Matrix4D.h"
#include "scene/Clone3D.h"
#include "scene/Compound3D.h"
#include "scene/CompoundClone3D.h"
#include "scene/IHandler3D.h"
#include "scene/Joint3D.h"
#include "scene/ModelShape.h"
#include "scene/Object3D.h"
#include "scene/World.h"
#include "SceneTesting.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using korvel::IObject3D;
using korvel::Shape3D;
using korvel::World;

const float quarterTurn = 1.5707963f;

IObject3D* named(const std::string& name, uint32_t kind = IObject3D::kindPlain)
{
    auto* object = new IObject3D();
    object->setName(name);
    object->setElementKind(kind);
    return object;
}

// Counts its deletions, to tell who deletes what.
struct Counted : Shape3D {
    ~Counted() override { ++deletions; }
    static inline int deletions = 0;
};

Shape3D* placed(Shape3D* object, korvel::Shape* shape, const Matrix4D& placement)
{
    object->setShape(shape);
    object->updateLimits();
    *object->getMatrixObjectChange() = placement;
    object->changeMatrixObject();
    return object;
}

TEST(WorldTest, MovingAndTurningKeepCameraPositionAndDirectionInStep)
{
    World world;
    world.moveIn(2.0f);
    expectVector(world.getPosition(), 0, 0, -2, 1);  // forward is -z
    world.rotY(quarterTurn);
    expectVector(world.getPosition(), 0, 0, -2, 1);  // turning happens in place
    expectVector(world.getCameraDirection(), 1, 0, 0, 0);
    world.moveIn(3.0f);
    expectVector(world.getPosition(), 3, 0, -2, 1);  // forward is now +x
    world.moveToWorld(0.0f, 1.0f, -1.0f);            // world axes, whatever the eye's
    expectVector(world.getPosition(), 3, 1, -3, 1);
    world.setCamera(Vector4D(4.0f, 5.0f, 6.0f, 1.0f));
    expectVector(world.getPosition(), 4, 5, 6, 1);
    expectVector(world.getView() * Vector4D(4.0f, 5.0f, 6.0f, 1.0f), 0, 0, 0, 1);
    expectVector(world.getCameraDirection(), 1, 0, 0, 0);  // still looking the same way

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
    world.moveToWorld(1.0f, 0.0f, 0.0f);
    world.setCamera(Vector4D(9.0f, 9.0f, 9.0f, 1.0f));
    EXPECT_EQ(out.text(), "[Error] Move in World view not invertible\n"
                          "[Error] Move camera direction in World view not invertible\n"
                          "[Error] Move to world in World view not invertible\n"
                          "[Error] Set camera in World view not invertible\n");
    expectVector(world.getPosition(), -1, -2, -3, 1);
    expectVector(world.getCameraDirection(), 0, 0, -1, 0);
}

TEST(WorldTest, PickRayGoesThroughTheCursorPixel)
{
    World world;
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
    EXPECT_EQ(world.pickObject(0, 0), nullptr);
    EXPECT_EQ(out.text(), "[Error] ComputePick in World view not invertible\n"
                          "[Error] ComputePick in World view not invertible\n");
}

TEST(WorldTest, NamesStayUniqueAndTheWorldDeletesWhatItHoldsOnce)
{
    Counted::deletions = 0;
    auto* removed = new Counted();
    removed->setName("rock");
    {
        World world;
        auto* twice = new Counted();
        EXPECT_EQ(world.addElement(named("rock")), "rock");
        EXPECT_EQ(world.addElement(removed), "<RootName>0");  // taken: a generated name
        EXPECT_EQ(world.addElement(twice), "<RootName>");     // no name of its own
        EXPECT_EQ(world.addElement(twice), "<RootName>1");    // same object, second entry
        EXPECT_EQ(world.addElement("<RootName>2", named("")), "<RootName>2");
        // Every attempt uses up a number: 2 is taken, 3 is given.
        EXPECT_EQ(world.addElement(named("rock")), "<RootName>3");
        CaptureStdout out;
        EXPECT_EQ(world.addElement(nullptr), "");
        EXPECT_EQ(out.text(), "[Error] World cannot add a null element\n");
        EXPECT_EQ(keys(world.getElements()), (std::vector<std::string>{"<RootName>", "<RootName>0", "<RootName>1",
                                                                       "<RootName>2", "<RootName>3", "rock"}));

        // Removal hands the object back; removing it again changes nothing.
        EXPECT_TRUE(world.removeElement(removed));
        EXPECT_FALSE(world.removeElement(removed));
        EXPECT_EQ(world.countElements(), 5u);
        EXPECT_EQ(world.getElement("<RootName>0"), nullptr);
        out.clear();
    }
    // The shape under two names is deleted once; the removed one lives on.
    EXPECT_EQ(Counted::deletions, 1);
    EXPECT_EQ(removed->getName(), "rock");
    delete removed;
}

TEST(WorldTest, LeavesAreListedByKindAndRelatedRemovalKeepsMixedKinds)
{
    World world;
    auto* ship = new korvel::Compound3D();
    IObject3D* hull = named("hull", IObject3D::kindPlain);
    IObject3D* glass = named("glass", IObject3D::kindBlended);
    IObject3D* both = named("both", IObject3D::kindPlain | IObject3D::kindBlended);
    ship->addJoinedComponent(hull, "hull");
    ship->addJoinedComponent(glass, "glass");
    ship->addJoinedComponent(both, "both");
    world.addElement("ship", ship);
    IObject3D* rock = named("rock");
    world.addElement(rock);
    using Leaves = std::list<IObject3D*>;
    EXPECT_EQ(world.getPlainLeaves(), (Leaves{both, hull, rock}));
    EXPECT_EQ(world.getBlendedLeaves(), (Leaves{both, glass}));

    CaptureStdout out;
    world.removeRelatedElements(ship);
    EXPECT_EQ(out.text(), "[ERROR] World removing element neither strictly BLENDED nor PLAIN\n");
    EXPECT_EQ(world.getPlainLeaves(), (Leaves{both, rock}));
    EXPECT_EQ(world.getBlendedLeaves(), (Leaves{both}));
    EXPECT_EQ(world.countElements(), 2u);  // the objects themselves stay

    // Relinking lists every leaf of the registered objects again, in name
    // order.
    EXPECT_TRUE(world.linkObjects());
    EXPECT_EQ(world.getPlainLeaves(), (Leaves{rock, both, hull}));
    EXPECT_EQ(world.getBlendedLeaves(), (Leaves{both, glass}));
}

TEST(WorldTest, OnlyTwoCornersDecideWhatIsDrawn)
{
    World world;
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    struct Case {
        const char* name;
        Vector4D min;
        Vector4D max;
        bool ahead;   // looking down -z
        bool behind;  // looking down +z
    };
    auto p = [](float x, float y, float z) { return Vector4D(x, y, z, 1.0f); };
    const Case cases[] = {
        {"in front", p(-1, -1, -11), p(1, 1, -9), true, false},
        {"wide but both corners beyond far", p(-200, -1, -50), p(200, 1, -50), false, false},
        {"one corner within far", p(0, 0, -50), p(0, 0, -500), true, false},
        {"one corner on each side", p(-1, -1, -5), p(1, 1, 5), true, true},
        {"beside, a little back", p(10, 0, 1), p(10, 1, 1), true, true},
        {"behind", p(-1, -1, 9), p(1, 1, 11), false, true},
    };
    for (bool turned : {false, true}) {
        for (const Case& c : cases) {
            IObject3D object;
            object.setLocalLimits(c.min, c.max);
            EXPECT_EQ(world.shouldDraw(&object), turned ? c.behind : c.ahead) << c.name << (turned ? ", turned" : "");
        }
        world.rotY(2.0f * quarterTurn);
    }
    EXPECT_FALSE(world.shouldDraw(nullptr));
}

struct Hit {
    IObject3D* object = nullptr;
    float distance = 0.0f;
};

// Every triangle of every object, placed in the world: the nearest one
// crossed ahead of the origin and facing it, by its centre.
Hit pickAmongEveryTriangle(const std::vector<Shape3D*>& objects, const Vector4D& origin, const Vector4D& direction)
{
    Hit best;
    for (Shape3D* object : objects) {
        for (const korvel::Triangle* t : object->getShape()->getTriangles()) {
            korvel::Triangle triangle(*t);
            triangle.transform(*object->getMatrixObject());
            const Vector4D toCentre = triangle.getIsoBaryCenter() - origin;
            if (!triangle.isIntersectingLine(origin, direction) || toCentre.scal3D(direction) < 0.0f
                || direction.scal3D(triangle.getNormal()) > 0.0f) {
                continue;
            }
            if (best.object == nullptr || toCentre.norm3D() < best.distance) {
                best = {object, toCentre.norm3D()};
            }
        }
    }
    return best;
}

TEST(WorldTest, PickingFindsWhatASearchOfEveryTriangleFinds)
{
    std::mt19937 random(17);
    auto uniform = [&random](float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); };
    World world;
    std::vector<Shape3D*> objects;
    for (int i = 0; i < 40; ++i) {
        // Turned spheres: half turned in their geometry, half by their
        // matrix, which also moves and scales them.
        auto* shape = sphereShape<korvel::Shape>(uniform(0.5f, 2.0f), 8);
        Matrix4D turn = Matrix4D::getI4();
        turn.rotX(uniform(0.0f, 6.28f));
        turn.rotY(uniform(0.0f, 6.28f));
        Matrix4D placement = moved(uniform(-15, 15), uniform(-15, 15), uniform(-60, -10), uniform(0.5f, 1.5f));
        if (i % 2 == 0) {
            shape->transform(turn);
        } else {
            placement = placement * turn;
        }
        objects.push_back(placed(new Shape3D(), shape, placement));
        world.addElement(objects.back());
    }
    int hits = 0;
    for (int ray = 0; ray < 300; ++ray) {
        const Vector4D origin(uniform(-5, 5), uniform(-5, 5), uniform(-5, 5), 1.0f);
        Vector4D target(uniform(-15, 15), uniform(-15, 15), uniform(-60, -10), 1.0f);
        if (ray % 2 == 0) {  // aim at a face, or the rays would mostly miss
            Shape3D* object = objects[random() % objects.size()];
            const auto& triangles = object->getShape()->getTriangles();
            auto face = triangles.begin();
            std::advance(face, random() % triangles.size());
            Vector4D centre = (*face)->getIsoBaryCenter();
            centre.w = 1.0f;
            target = *object->getMatrixObject() * centre;
        }
        Vector4D direction = target - origin;
        direction.w = 0.0f;
        direction.normalize3D();
        korvel::Triangle triangle;
        IObject3D* picked = world.pickObject(origin, direction, triangle);
        const Hit expected = pickAmongEveryTriangle(objects, origin, direction);
        ASSERT_EQ(picked != nullptr, expected.object != nullptr) << "ray " << ray;
        if (picked == nullptr) {
            continue;
        }
        ++hits;
        const float distance = (triangle.getIsoBaryCenter() - origin).norm3D();
        EXPECT_NEAR(distance, expected.distance, 1e-3f * expected.distance) << "ray " << ray;
        if (std::abs(distance - expected.distance) > 1e-4f) {
            EXPECT_EQ(picked, expected.object) << "ray " << ray;
        }
    }
    EXPECT_GT(hits, 150);

    // With the trace on, the objects whose boxes the ray crosses are named.
    world.setVerbose(true);
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    world.setCamera(Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
    world.setView(Matrix4D::getI4());
    auto* ahead = placed(new Shape3D(), sphereShape<korvel::Shape>(1.0f, 8), moved(0, 0, -5));
    const std::string name = world.addElement("ahead", ahead);
    CaptureStdout out;
    EXPECT_EQ(world.pickObject(405, 295), ahead);
    EXPECT_NE(out.text().find("Object has been preselected: ahead\n"), std::string::npos) << out.text();
    EXPECT_NEAR(world.getPickTriangle().getIsoBaryCenter().z, -4.0f, 0.3f);  // the front face
}

// A closed cube of side 1 around the origin, as a plain shape object.
Shape3D* cube()
{
    auto* shape = new korvel::Shape();
    korvel::Shape::generateCube(shape, 1);
    return placed(new Shape3D(), shape, Matrix4D::getI4());
}

// Stretched along x, turned an eighth of a turn about z and about x, then
// moved: two corners of its box carried alone would span no width at all.
Matrix4D turnedAndStretched(float x, float y, float z, float stretch)
{
    Matrix4D m = Matrix4D::getI4();
    m.m[0] = stretch;
    m.rotZ(0.7853982f);
    m.rotX(0.7853982f);
    m.setPosition(x, y, z);
    return m;
}

TEST(WorldTest, TurnedAndScaledObjectsOfEveryKindArePickedThroughTheirGeometry)
{
    // Models first: the world's clones draw on them until the world goes.
    korvel::ModelShape shapeModel;
    shapeModel.addObject(0, cube());
    korvel::ModelShape compoundModel;
    auto* parts = new korvel::Compound3D();
    parts->addJoinedComponent(cube(), "part");
    Matrix4D joint = turnedAndStretched(0.5f, 0.0f, 0.0f, 1.5f);
    *parts->getJoint("part")->getMatrixObjectChange() = joint;
    parts->updateLimits();
    compoundModel.addObject(0, parts);

    World world;
    auto* compound = new korvel::Compound3D(*parts);
    auto* clone = new korvel::Clone3D();
    clone->setModel(&shapeModel);
    auto* compoundClone = new korvel::CompoundClone3D();
    compoundClone->setModel(&compoundModel);
    struct Case {
        const char* name;
        IObject3D* object;
        Matrix4D inside;  // carries the cube into the object's own frame
    };
    const Case cases[] = {
        {"shape", cube(), Matrix4D::getI4()},
        {"compound", compound, joint},
        {"clone", clone, Matrix4D::getI4()},
        {"compound clone", compoundClone, joint},
        {"handler of clones", shapeModel.createClones(), Matrix4D::getI4()},
    };
    float x = -20.0f;
    for (const Case& c : cases) {
        *c.object->getMatrixObjectChange() = turnedAndStretched(x, 1.0f, -10.0f, 2.0f + x / 20.0f);
        c.object->changeMatrixObject();
        world.addElement(c.name, c.object);
        x += 10.0f;
    }
    const Vector4D directions[] = {{0, 0, -1, 0}, {1, 0, 0, 0}, {0, -1, 0, 0}, {0.6f, 0.0f, 0.8f, 0.0f}};
    for (const Case& c : cases) {
        // Points just inside the cube's corners, where a flattened box
        // misses most, reached from outside along several directions.
        for (int corner = 0; corner < 8; ++corner) {
            const Vector4D inner((corner & 1) != 0 ? 0.4f : -0.4f, (corner & 2) != 0 ? 0.4f : -0.4f,
                                 (corner & 4) != 0 ? 0.4f : -0.4f, 1.0f);
            const Vector4D target = *c.object->getMatrixObject() * (c.inside * inner);
            for (const Vector4D& direction : directions) {
                Vector4D origin = target - direction * 6.0f;
                origin.w = 1.0f;
                korvel::Triangle triangle;
                EXPECT_EQ(world.pickObject(origin, direction, triangle), c.object)
                    << c.name << ", corner " << corner << ", along " << direction;
            }
        }
    }
}

TEST(WorldTest, AnObjectFilledWithoutItsLimitsIsSeenAndPickedByItsGeometry)
{
    World world;
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    auto* far = new Shape3D();
    far->getShape()->addTriangle(flatTriangle(30.0f, 0.0f, -50.0f, 2.0f));  // the limits still say (0, 0, 0)
    world.addElement("far", far);
    korvel::Triangle triangle;
    EXPECT_EQ(world.pickObject(at(30.5f, 0.5f, 0.0f), Vector4D(0, 0, -1, 0), triangle), far);
    EXPECT_FLOAT_EQ(far->getWorldMin().x, 30.0f);
}

TEST(WorldTest, TheMouseSelectsAndTheKeysTurnScaleAndDeleteTheSelection)
{
    Counted::deletions = 0;
    korvel::Application3D frame;
    auto* world = new World();
    frame.setWorld(world);
    world->setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    auto* ball = placed(new Counted(), sphereShape<korvel::Shape>(1.0f, 8), moved(0, 0, -10));
    world->addElement("ball", ball);
    CaptureStdout out;
    auto click = [&frame](int button, double x, double y) {
        frame.manageCursorPos(nullptr, x, y);
        frame.manageButton(nullptr, button, GLFW_RELEASE, 0);
    };
    auto key = [&frame](int code) { frame.manageKey(nullptr, code, 0, GLFW_PRESS, 0); };

    click(GLFW_MOUSE_BUTTON_LEFT, 410, 290);
    ASSERT_EQ(world->getSelection(), ball);
    EXPECT_TRUE(world->isSelectionShown());
    EXPECT_FALSE(world->isBeamShown());  // no "Laser" program: the beam stays off

    key(GLFW_KEY_PAGE_UP);  // about the vertical through the ball
    const Matrix4D& m = *ball->getMatrixObject();
    expectVector(m.getColumn(0), std::cos(0.15f), 0, -std::sin(0.15f), 0);
    key(GLFW_KEY_KP_ADD);
    key(GLFW_KEY_KP_ADD);
    EXPECT_NEAR(m.getColumn(0).norm3D(), 1.21f, 1e-5f);
    key(GLFW_KEY_KP_SUBTRACT);
    EXPECT_NEAR(m.getColumn(0).norm3D(), 1.1f, 1e-5f);
    expectVector(m.getPosition(), 0, 0, -10, 1);
    EXPECT_NEAR(ball->getWorldMax().y, 1.1f, 0.05f);  // the limits follow

    key(GLFW_KEY_DELETE);
    EXPECT_EQ(Counted::deletions, 1);
    EXPECT_EQ(world->countElements(), 0u);
    EXPECT_EQ(world->getSelection(), nullptr);
    EXPECT_FALSE(world->isSelectionShown());

    // Over empty space the left button lets the selection go.
    auto* other = placed(new Shape3D(), sphereShape<korvel::Shape>(1.0f, 8), moved(0, 0, -10));
    world->addElement(other);
    click(GLFW_MOUSE_BUTTON_LEFT, 410, 290);
    EXPECT_EQ(world->getSelection(), other);
    click(GLFW_MOUSE_BUTTON_LEFT, 10, 10);
    EXPECT_EQ(world->getSelection(), nullptr);
}

// ---- world files -----------------------------------------------------------------

korvel::Object3D* lamp(const std::string& program)
{
    auto* object = new korvel::Object3D();
    object->setShaderProgram(FakePrograms::get(program));
    return object;
}

// A world with a context off its defaults, a hidden blended object whose
// name needs quoting, and a compound whose components sit on their joints.
void fill(World& world)
{
    world.setProjection(0.6f, 640, 480, 0.5f, 300.0f);
    world.moveIn(-3.25f);
    world.rotY(0.3f);
    world.rotX(-0.1f);
    world.setMainLight(Vector4D(0.1f, -0.7f, 0.2f, 1.0f));
    world.setPhong(Vector4D(0.2f, 0.8f, 0.8f, 2.0f));
    world.setFogColor(Vector4D(0.3f, 0.4f, 0.5f, 1.0f));
    world.setFogStart(12.5f);
    world.setFogEnd(80.0f);

    korvel::Object3D* post = lamp("Wood");
    post->setElementKind(IObject3D::kindBlended);
    post->hide();
    Matrix4D placement = moved(1.0f / 3.0f, -2.0f, -7.7f, 1.5f);
    placement.rotY(0.7f);
    *post->getMatrixObjectChange() = placement;
    post->changeMatrixObject();
    world.addElement("lamp \"post\" 1", post);

    auto* cart = new korvel::Compound3D();
    cart->addJoinedComponent(lamp("Wood"), "wheel");
    cart->addJoinedComponent(lamp("Laser"), "body");
    *cart->getJoint("wheel")->getMatrixObjectChange() = moved(0.5f, -0.25f, 0.0f);
    cart->updateLimits();
    *cart->getMatrixObjectChange() = moved(4.0f, 0.0f, -20.0f, 2.0f);
    cart->changeMatrixObject();
    world.addElement("cart", cart);
}

std::string saved(World& world)
{
    std::ostringstream out;
    EXPECT_TRUE(world.save(out));
    return out.str();
}

TEST(WorldTest, ASavedWorldLoadsBackWithTheSameObjectsInTheSamePlaces)
{
    FakePrograms programs({"Wood", "Laser"});
    World original;
    fill(original);
    const std::string text = saved(original);

    World copy;
    std::istringstream in(text);
    CaptureStdout out;
    ASSERT_TRUE(copy.load(in)) << out.text();
    // Nothing lost, nothing rounded: what the file holds came back as it
    // was. What is derived from it must follow.
    EXPECT_EQ(saved(copy), text);
    EXPECT_TRUE(copy.isViewChanged() && copy.isSceneChanged());
    for (const auto& [name, object] : original.getElements()) {
        ASSERT_NE(copy.getElement(name), nullptr) << name;
        EXPECT_EQ(copy.getElement(name)->getWorldMin(), object->getWorldMin()) << name;
    }
    // The compound's parts stand where they stood.
    auto* cart = dynamic_cast<korvel::Compound3D*>(copy.getElement("cart"));
    ASSERT_NE(cart, nullptr);
    IObject3D* wheel = cart->getJoint("wheel")->getComponent();
    expectVector(wheel->getMatrixObject()->getPosition(), 5.0f, -0.5f, -20.0f, 1.0f);
    EXPECT_EQ(static_cast<korvel::Object3D*>(wheel)->getShaderProgram(), FakePrograms::get("Wood"));
    EXPECT_EQ(copy.getBlendedLeaves().size(), 1u);

    // A second load adds the objects again, under names of their own.
    std::istringstream again(text.substr(text.find("Objects")));
    ASSERT_TRUE(copy.loadObjects(again));
    EXPECT_EQ(copy.countElements(), 4u);
}

std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    const auto found = text.find(what);
    EXPECT_NE(found, std::string::npos) << what;
    return found == std::string::npos ? text : text.replace(found, what.size(), with);
}

TEST(WorldTest, ABadWorldFileIsReportedAndChangesNothing)
{
    FakePrograms programs({"Wood", "Laser"});
    World original;
    fill(original);
    const std::string good = saved(original);
    const std::string view = good.substr(good.find("View ") + 5, good.find(' ', good.find("View ") + 5) - good.find("View ") - 5);
    struct Case {
        const char* name;
        std::string text;
        std::string firstLine;  // empty: any "[Error]" line
    };
    const std::vector<Case> cases = {
        {"empty", "", "[Error] World file ends before World"},
        {"garbage", "hello world", "[Error] World file ill-formed: World expected, found hello"},
        {"binary", std::string("\x7f" "ELF\x02\x01\x01\0\0\xff\xfe", 12), "[Error] World file ill-formed: World expected"},
        {"unknown class", replaced(good, "Compound3D", "Spaceship9"), "[Error] Factory creation error in World !"},
        {"nan in the view", replaced(good, "View " + view, "View nan"),
         "[Error] World file holds a value that is not a finite number in View: nan"},
        {"overflow in a placement", replaced(good, "Placement 2 ", "Placement 1e39 "),
         "[Error] World file holds a value that is not a finite number in Placement: 1e39"},
        {"negative count", replaced(good, "Objects 2", "Objects -2"), "[Error] World file ill-formed: Objects holds -2"},
        {"count beyond the file", replaced(good, "Objects 2", "Objects 2000000000"), "[Error] World file ends before Element"},
        {"word for a number", replaced(good, "Frustum 0.6", "Frustum wide"), "[Error] World file ill-formed: Frustum holds wide"},
        {"visibility not a flag", replaced(good, "\" 0\n", "\" 7\n"), "[Error] World file ill-formed: Element holds 7"},
    };
    auto check = [](const std::string& name, const std::string& text, const std::string& firstLine) {
        World world;
        std::istringstream in(text);
        CaptureStdout out;
        EXPECT_FALSE(world.load(in)) << name;
        const std::string log = out.text();
        if (firstLine.empty()) {
            EXPECT_NE(log.find("[Error]"), std::string::npos) << name << ": " << log;
        } else {
            EXPECT_EQ(log.substr(0, firstLine.size()), firstLine) << name << ": " << log;
        }
        EXPECT_EQ(world.countElements(), 0u) << name;
        EXPECT_FALSE(world.isViewChanged()) << name;
        EXPECT_EQ(world.getFogStart(), 20.0f) << name;
    };
    for (const Case& c : cases) {
        check(c.name, c.text, c.firstLine);
    }
    // Cut anywhere before its last word, the file is short of something.
    const std::string trimmed = good.substr(0, good.find_last_not_of(" \n") + 1);
    const std::size_t lastWord = trimmed.find_last_of(" \n");
    for (std::size_t cut = 0; cut <= lastWord; cut += 3) {
        check("cut at " + std::to_string(cut), good.substr(0, cut), "");
    }
}

}  // namespace
