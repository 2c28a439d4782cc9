// Compounds and joints: naming, replacement, detail reduction of mixed
// compounds, grounding (which also checks the limits: the union of the
// placed parts), and saving and loading through the factories. Placing and
// picking the parts is checked through the world.

#include "scene/Compound3D.h"
#include "scene/Joint3D.h"
#include "scene/SceneFactories.h"
#include "scene/ShapeIndexed3D.h"
#include "SceneTesting.h"

#include "core/FactoryManager.h"
#include "geometry/ShapeIndexed.h"
#include "support/CaptureStdout.h"

#include <sstream>
#include <vector>

namespace {

using korvel::Compound3D;
using korvel::IObject3D;
using korvel::Joint3D;
using korvel::Shape3D;
using korvel::ShapeIndexed3D;

Shape3D* triangleObject(float x, float y, float z)
{
    auto* object = new Shape3D();
    object->getShape()->addTriangle(flatTriangle(x, y, z));
    return object;
}

TEST(Compound3DTest, NamesAreGeneratedInOrderAndASecondComponentUnderOneNameReplacesTheFirst)
{
    Compound3D compound;
    compound.addJoinedComponent(new IObject3D(), "component000001");  // a generated name already taken
    EXPECT_EQ(compound.addJoinedComponent(new IObject3D()), "component000000");
    EXPECT_EQ(compound.addJoinedComponent(new IObject3D()), "component000002");

    auto* first = new IObject3D();
    auto* second = new IObject3D();
    compound.addJoinedComponent(first, "wing");
    Joint3D* forgotten = compound.getJoint("wing");
    compound.addJoinedComponent(second, "wing");
    EXPECT_EQ(compound.getJoint("wing")->getComponent(), second);
    EXPECT_EQ(keys(compound.getJoints()),
              (std::vector<std::string>{"component000000", "component000001", "component000002", "wing"}));
    delete forgotten;  // neither deleted nor kept by the compound
}

TEST(Compound3DTest, ReductionReducesWhatCanBeAndKeepsTheRestWhole)
{
    Compound3D compound;
    auto* smooth = new ShapeIndexed3D();
    smooth->setShape(sphereShape<korvel::ShapeIndexed>(1.0f, 20));
    auto* flat = triangleObject(0, 0, 0);
    compound.addJoinedComponent(flat);
    compound.addJoinedComponent(smooth);
    const std::size_t before = smooth->getShapeIndexed()->getPointCount();
    EXPECT_TRUE(compound.canReduceDetail());
    CaptureStdout quiet;
    EXPECT_TRUE(compound.reduceDetail(0.5f));
    EXPECT_EQ(smooth->getShapeIndexed()->getPointCount(), before / 2);
    EXPECT_EQ(flat->getShape()->getTriangleCount(), 1u);
    EXPECT_FALSE(compound.reduceDetail(1.5f));  // a reducible part fails

    Compound3D flatOnly;
    flatOnly.addJoinedComponent(triangleObject(0, 0, 0));
    EXPECT_FALSE(flatOnly.canReduceDetail());
    EXPECT_FALSE(flatOnly.reduceDetail(0.5f));
}

TEST(Compound3DTest, GroundingBringsTheLowestComponentToHeightZero)
{
    Compound3D compound;
    compound.addJoinedComponent(triangleObject(0, -2, 0));
    compound.addJoinedComponent(triangleObject(0, 4, 0));
    compound.setToMinPointY();
    compound.updateLimits();
    EXPECT_FLOAT_EQ(compound.getLocalMin().y, 0.0f);
    EXPECT_FLOAT_EQ(compound.getLocalMax().y, 7.0f);
}

TEST(Compound3DTest, SavedObjectsComeBackThroughTheFactories)
{
    FakePrograms programs({"Wood"});
    korvel::FactoryManager::endService();
    korvel::registerSceneFactories();
    korvel::registerSceneFactories();  // harmless a second time

    Compound3D saved;
    saved.setElementKind(2);
    auto* smooth = new ShapeIndexed3D();
    smooth->setShaderProgram(FakePrograms::get("Wood"));
    smooth->getShape()->addTriangle(flatTriangle(1, 1, 1));
    saved.addJoinedComponent(smooth, "hull part");
    saved.addJoinedComponent(nullptr, "empty");
    saved.getJoint("hull part")->getMatrixObjectChange()->setPosition(0.0f, 2.0f, 0.0f);
    std::stringstream text;
    ASSERT_TRUE(saved.save(text));

    std::string kind;
    text >> kind;
    auto* loaded = dynamic_cast<Compound3D*>(korvel::FactoryManager::getInstance()->createObject(kind));
    ASSERT_NE(loaded, nullptr);
    ASSERT_TRUE(loaded->load(text)) << text.str();
    EXPECT_EQ(loaded->getElementKind(), 2u);
    EXPECT_EQ(keys(loaded->getJoints()), (std::vector<std::string>{"empty", "hull part"}));
    EXPECT_EQ(loaded->getJoint("empty")->getComponent(), nullptr);
    auto* part = dynamic_cast<ShapeIndexed3D*>(loaded->getJoint("hull part")->getComponent());
    ASSERT_NE(part, nullptr);
    EXPECT_TRUE(*part->getShape() == *smooth->getShape());
    EXPECT_FLOAT_EQ(loaded->getJoint("hull part")->getMatrixObject()->m[13], 2.0f);

    // A copy through the factories copies the components too.
    auto* copy = dynamic_cast<Compound3D*>(korvel::FactoryManager::getInstance()->createObject(*loaded));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->getJoint("hull part")->getComponent(), part);
    EXPECT_EQ(copy->getJoint("hull part")->getComponent()->getInstanceClassName(), std::string("ShapeIndexed3D"));
    delete copy;
    delete loaded;

    const std::string identity = " 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 ";
    std::istringstream unknown("Compound3D 1 1 \"x\" Joint3D 1" + identity + "Teapot 1\n");
    CaptureStdout out;
    Compound3D failed;
    EXPECT_FALSE(failed.load(unknown));
    EXPECT_EQ(out.text(), "[Error] Factory creation error in Joint3D for Teapot\n");

    // Joints nested a hundred deep are refused, not followed down the stack.
    std::string deep = "Joint3D 1" + identity;
    for (int i = 0; i < 100; ++i) {
        deep += "Joint3D 1" + identity;
    }
    std::istringstream nested(deep + "none\n");
    Joint3D top;
    out.clear();
    EXPECT_FALSE(top.load(nested));
    EXPECT_EQ(out.text(), "[Error] objects nested too deep in Joint3D load\n");
}

}  // namespace
