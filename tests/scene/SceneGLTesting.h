#pragma once
// Helpers shared by the scene's GL tests: programs of one flat colour each
// (and one shaded by the face's direction), written to a scratch directory
// and loaded through the program manager, and the window read back.

#include "support/GLContextFixture.h"
#include "ModelTesting.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "support/CaptureStdout.h"
#include "support/ScratchDirectory.h"

#include <string>
#include <utility>
#include <vector>

const int side = 64;  // the fixture's window

// "Laser" is the selection's: its presence enables the marker and the beam.
class Programs {
public:
    Programs()
    {
        const std::string dir = scratchDirectory("scene_gltest_programs");
        const std::string vertex =
            "#version 330\nin vec3 in_Position;\nin vec3 in_Normal;\nuniform mat4 projection;\n"
            "uniform mat4 modelview;\nuniform mat4 refObject;\nout vec3 normal;\nvoid main()\n{\n"
            "    normal = mat3(refObject) * in_Normal;\n"
            "    gl_Position = projection * modelview * refObject * vec4(in_Position, 1.0);\n}\n";
        const std::pair<const char*, std::string> colours[] = {
            {"Red", "vec4(1.0, 0.0, 0.0, 1.0)"},
            {"Glass", "vec4(0.0, 0.0, 1.0, 0.5)"},
            {"Laser", "vec4(0.0, 1.0, 0.0, 1.0)"},
            {"Shade", "vec4(0.5 + 0.5 * normalize(normal), 1.0)"},
        };
        korvel::ShaderProgramManager::releaseInstance();  // programs of an earlier test
        korvel::ShaderProgramManagerBase::init();
        korvel::ShaderProgramManager::getInstance()->setPath(dir);
        CaptureStdout quiet;  // the optional uniforms are missing
        for (const auto& [name, colour] : colours) {
            writeText(dir + "shaderV" + name + ".glsl", vertex);
            writeText(dir + "shaderF" + name + ".glsl",
                      "#version 330\nin vec3 normal;\nout vec4 colour;\nvoid main()\n{\n    colour = " + colour
                          + ";\n}\n");
            EXPECT_NE(get(name), nullptr) << quiet.text();
        }
    }
    ~Programs() { korvel::ShaderProgramManager::releaseInstance(); }
    Programs(const Programs&) = delete;
    Programs& operator=(const Programs&) = delete;

    static ShaderProgramBase* get(const std::string& name)
    {
        return dynamic_cast<ShaderProgramBase*>(korvel::ShaderProgramManager::getInstance()->getProgram(name));
    }
};

// The window's pixels once drawing is done, RGBA, bottom row first.
inline std::vector<unsigned char> readWindow()
{
    glFinish();
    std::vector<unsigned char> pixels(side * side * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, side, side, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}
