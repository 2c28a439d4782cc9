// The model descriptor and what the manager makes of it: levels of detail,
// compounds, clones of every level, browsing, saving the descriptor back.

#include "scene/ModelManager.h"

#include "ModelTesting.h"
#include "geometry/ShapeIndexed.h"
#include "scene/Clone3D.h"
#include "scene/CompoundClone3D.h"
#include "scene/IHandler3D.h"
#include "scene/ModelShape.h"
#include "scene/ShapeIndexed3D.h"
#include "support/CaptureStdout.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace {

using korvel::IObject3D;
using korvel::ModelManager;

const std::string dir = scratchDirectory("scene_models_test");

std::size_t triangles(const IObject3D* object)
{
    std::list<IObject3D*> leaves;
    const_cast<IObject3D*>(object)->supplyElements(leaves, ~0);
    std::size_t count = 0;
    for (IObject3D* leaf : leaves) {
        count += dynamic_cast<korvel::Shape3D*>(leaf)->getShape()->getTriangleCount();
    }
    return count;
}

class ModelManagerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        manager->releaseModels();
        manager->setPath(dir);
    }
    void TearDown() override { manager->releaseModels(); }

    ModelManager* manager = ModelManager::getInstance();
};

TEST_F(ModelManagerTest, DescriptorFailuresAreReportedAndAnEmptyListLoads)
{
    struct Case {
        const char* text;  // nullptr: no descriptor
        bool loaded;
        const char* lines;  // the output contains them
        std::size_t models;
    };
    const Case cases[] = {
        {nullptr, false, "[ERROR] model descriptor not found\n", 0},
        {"0\r\n", true,
         "[Information] Attempting to open model descriptor: models.txt\n"
         "[Information] found models list: 0 item(s)\n", 0},
        {"several\n", false, "[ERROR] model descriptor count is not a number of models\n", 0},
        // Bad entries are reported one by one and skipped; a model whose
        // file is missing is kept, empty.
        {"3\nRock Pebble\nShip ModelShape 1 ship.obj\n", true,
         "[Information] found models list: 3 item(s)\n[Information] found model name: Rock\n"
         "[ERROR] unknown model type: Pebble\n[ERROR] loading model: Rock\n"
         "[Information] found model name: Ship\n", 1},
        {"2\nRock\n", true, "[ERROR] loading model: Rock\n[ERROR] model descriptor ends after 1 of 2 model(s)\n", 0},
        {"1\nRaw ModelShape 0\n", true, "[ERROR] raw model description is not supported\n[ERROR] loading model: Raw\n", 1},
    };
    for (const Case& c : cases) {
        manager->releaseModels();
        std::filesystem::remove(dir + "models.txt");
        if (c.text != nullptr) {
            writeText(dir + "models.txt", c.text);
        }
        CaptureStdout out;
        EXPECT_EQ(manager->loadModels("models.txt"), c.loaded) << c.lines;
        EXPECT_NE(out.text().find(c.lines), std::string::npos) << out.text();
        EXPECT_EQ(manager->countModels(), c.models) << c.lines;
    }
    // A directory or a pipe is no descriptor.
    CaptureStdout out;
    EXPECT_FALSE(manager->loadModels(""));
}

TEST_F(ModelManagerTest, ModelsGetHalvingLevelsAndClonesOfEveryLevel)
{
    writeText(dir + "ball.obj", sphereObj(1.0f, 24));
    writeText(dir + "pair.obj", "g left\n" + sphereObj(1.0f, 24) + "g right\n" + sphereObj(1.0f, 24, 3.0f));
    writeText(dir + "decal.obj", "# mapuv\n" + sphereObj(1.0f, 8));
    writeText(dir + "models.txt",
              "5\nball ModelShape 1 ball.obj\npair ModelShape 1 pair.obj\ndecal ModelShape 1 decal.obj\n"
              "ghost ModelShape 1 ghost.obj\nball ModelShape 1 decal.obj\n");
    CaptureStdout out;
    ASSERT_TRUE(manager->loadModels("models.txt"));
    EXPECT_NE(out.text().find("[ERROR] loading model: ghost\n"), std::string::npos);
    EXPECT_NE(out.text().find("[Warning] model name already in use, the new model is dropped: ball\n"),
              std::string::npos);
    ASSERT_EQ(manager->countModels(), 4u);

    // Each generated level keeps about half the triangles of the one before.
    for (const char* name : {"ball", "pair"}) {
        for (int lod = 1; lod < 4; ++lod) {
            const IObject3D* finer = manager->getObject3D(name, lod - 1);
            const IObject3D* coarser = manager->getObject3D(name, lod);
            ASSERT_TRUE(finer != nullptr && coarser != nullptr) << name << lod;
            const double ratio = double(triangles(coarser)) / double(triangles(finer));
            EXPECT_GT(ratio, 0.35) << name << " level " << lod;
            EXPECT_LT(ratio, 0.65) << name << " level " << lod;
        }
    }
    EXPECT_EQ(manager->getObject3D("ball", 4), nullptr);
    // Plain textured shapes cannot be reduced: no further levels.
    EXPECT_NE(manager->getObject3D("decal", 0), nullptr);
    EXPECT_EQ(manager->getObject3D("decal", 1), nullptr);
    EXPECT_EQ(manager->getObject3D("ghost", 0), nullptr);

    // Clones: a shape model's clone draws that level's object; a compound
    // model's clone stands in for each component.
    std::unique_ptr<korvel::IHandler3D> balls(manager->createClones("ball"));
    for (short lod = 0; lod < 4; ++lod) {
        auto* clone = dynamic_cast<korvel::Clone3D*>(balls->getRepresentative(lod));
        ASSERT_NE(clone, nullptr);
        EXPECT_EQ(clone->getMother(), manager->getObject3D("ball", lod));
    }
    std::unique_ptr<IObject3D> pair(manager->createClone("pair"));
    EXPECT_EQ(dynamic_cast<korvel::IClone3D*>(pair.get())->getModel(), manager->getModel("pair"));
    EXPECT_NE(dynamic_cast<korvel::CompoundClone3D*>(pair.get()), nullptr);
    std::unique_ptr<korvel::IHandler3D> decals(manager->createClones("decal"));
    EXPECT_EQ(dynamic_cast<korvel::Clone3D*>(decals->getRepresentative(1))->getMother(), nullptr);
    out.clear();
    EXPECT_EQ(manager->createClone("nothing"), nullptr);
    EXPECT_EQ(out.text(), "[ERROR] model not found for clone: nothing\n");

    // The descriptor written back loads the same models.
    ASSERT_TRUE(manager->saveModels("saved.txt"));
    std::ifstream saved(dir + "saved.txt");
    std::string text((std::istreambuf_iterator<char>(saved)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "4\nball ModelShape 1 ball.obj\ndecal ModelShape 1 decal.obj\nghost ModelShape 1 ghost.obj\n"
                    "pair ModelShape 1 pair.obj\n");
}

TEST_F(ModelManagerTest, BrowsingWrapsAroundInNameOrder)
{
    CaptureStdout quiet;
    EXPECT_EQ(manager->createCurrentClone(), nullptr);
    manager->modelNext();  // nothing to browse
    for (const char* name : {"b", "c", "a"}) {
        manager->addModel(name, new korvel::ModelShape());
    }
    std::string seen = manager->getCurrentModelName();
    for (int i = 0; i < 4; ++i) {
        manager->modelNext();
        seen += manager->getCurrentModelName();
    }
    manager->modelPrevious();
    manager->modelPrevious();
    seen += manager->getCurrentModelName();
    EXPECT_EQ(seen, "bcabca");  // from the first added, wrapping after c, then back twice
    std::unique_ptr<IObject3D> clone(manager->createCurrentClone());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(dynamic_cast<korvel::IClone3D*>(clone.get())->getModel(), manager->getModel("a"));
}

}  // namespace
