// Reading the model descriptor: its failures and the empty list.

#include "scene/ModelManager.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

class Descriptor {
public:
    Descriptor()
    {
        char pattern[] = "/tmp/quorbane-models-XXXXXX";
        path = std::string(mkdtemp(pattern)) + "/";
        korvel::ModelManager::getInstance()->setPath(path);
    }
    ~Descriptor()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    void write(const std::string& text) const { std::ofstream(path + "models.txt") << text; }
    std::string path;
};

TEST(ModelManagerTest, MissingDescriptorFailsAndAnEmptyListLoads)
{
    Descriptor dir;
    korvel::ModelManager* manager = korvel::ModelManager::getInstance();
    CaptureStdout out;
    EXPECT_FALSE(manager->loadModels("models.txt"));
    EXPECT_EQ(out.text(), "[ERROR] model descriptor not found\n");

    dir.write("0\r\n");
    out.clear();
    EXPECT_TRUE(manager->loadModels("models.txt"));
    EXPECT_EQ(out.text(),
              "[Information] Attempting to open model descriptor: models.txt\n"
              "[Information] found models list: 0 item(s)\n");
    EXPECT_EQ(manager->countModels(), 0u);
    manager->modelNext();
    manager->modelPrevious();
    EXPECT_EQ(manager->getCurrentModelName(), "");
    EXPECT_EQ(manager->getModel("Ship"), nullptr);
}

TEST(ModelManagerTest, BadEntriesAreReportedOneByOne)
{
    Descriptor dir;
    korvel::ModelManager* manager = korvel::ModelManager::getInstance();
    CaptureStdout out;
    dir.write("several\n");
    EXPECT_FALSE(manager->loadModels("models.txt"));
    EXPECT_NE(out.text().find("[ERROR] model descriptor count is not a number of models\n"), std::string::npos);

    dir.write("3\nRock Pebble\nShip ModelShape 1 ship.obj\n");
    out.clear();
    EXPECT_TRUE(manager->loadModels("models.txt"));
    const std::string text = out.text();
    EXPECT_NE(text.find("[Information] found models list: 3 item(s)\n"
                        "[Information] found model name: Rock\n"
                        "[ERROR] unknown model type: Pebble\n"
                        "[ERROR] loading model: Rock\n"
                        "[Information] found model name: Ship\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("[ERROR] loading model: Ship\n"), std::string::npos);
    EXPECT_EQ(manager->countModels(), 0u);

    dir.write("2\nRock\n");
    out.clear();
    EXPECT_TRUE(manager->loadModels("models.txt"));
    EXPECT_NE(out.text().find("[ERROR] loading model: Rock\n[ERROR] model descriptor ends after 1 of 2 model(s)\n"),
              std::string::npos)
        << out.text();
}

}  // namespace
