// Reading the model descriptor: its failures and the empty list.

#include "scene/ModelManager.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

TEST(ModelManagerTest, DescriptorFailuresAreReportedAndAnEmptyListLoads)
{
    struct Case {
        const char* text;  // nullptr: no descriptor
        bool loaded;
        const char* lines;  // the output contains them
    };
    const Case cases[] = {
        {nullptr, false, "[ERROR] model descriptor not found\n"},
        {"0\r\n", true,
         "[Information] Attempting to open model descriptor: models.txt\n"
         "[Information] found models list: 0 item(s)\n"},
        {"several\n", false, "[ERROR] model descriptor count is not a number of models\n"},
        // Bad entries are reported one by one and skipped.
        {"3\nRock Pebble\nShip ModelShape 1 ship.obj\n", true,
         "[Information] found models list: 3 item(s)\n[Information] found model name: Rock\n"
         "[ERROR] unknown model type: Pebble\n[ERROR] loading model: Rock\n"
         "[Information] found model name: Ship\n"},
        {"2\nRock\n", true, "[ERROR] loading model: Rock\n[ERROR] model descriptor ends after 1 of 2 model(s)\n"},
    };
    const std::string dir = std::string(KORVEL_BINARY_DIR) + "scene_models_test/";
    std::filesystem::create_directories(dir);
    korvel::ModelManager* manager = korvel::ModelManager::getInstance();
    manager->setPath(dir);
    for (const Case& c : cases) {
        std::filesystem::remove(dir + "models.txt");
        if (c.text != nullptr) {
            std::ofstream(dir + "models.txt") << c.text;
        }
        CaptureStdout out;
        EXPECT_EQ(manager->loadModels("models.txt"), c.loaded) << c.lines;
        EXPECT_NE(out.text().find(c.lines), std::string::npos) << out.text();
        EXPECT_EQ(manager->countModels(), 0u);
    }
}

}  // namespace
