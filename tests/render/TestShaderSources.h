#pragma once
// GLSL sources that honour the program contract, with one chosen name left
// out. Every uniform takes part in a comparison the compiler cannot fold, so
// none is optimised away; with the values the tests leave at zero the output
// is pure red.

#include <string>

inline std::string testVertexSource(const std::string& omit = "")
{
    // The text, or what stands in its place when the name is left out.
    auto unless = [&omit](const char* name, const char* text, const char* otherwise = "") {
        return std::string(omit == name ? otherwise : text);
    };
    return "#version 330\n" + unless("in_Position", "in vec3 in_Position;\n")
        + unless("in_Normal", "in vec3 in_Normal;\n") + unless("in_UV", "in vec2 in_UV;\n")
        + unless("projection", "uniform mat4 projection;\n") + unless("modelview", "uniform mat4 modelview;\n")
        + unless("refObject", "uniform mat4 refObject;\n")
        + "out vec3 normal;\nout vec2 uv;\nvoid main()\n{\n"
        + unless("in_Normal", "    normal = in_Normal;\n", "    normal = vec3(0.0);\n")
        + unless("in_UV", "    uv = in_UV;\n", "    uv = vec2(0.0);\n")
        + unless("in_Position", "    vec4 p = vec4(in_Position, 1.0);\n", "    vec4 p = vec4(0.0, 0.0, 0.0, 1.0);\n")
        + unless("refObject", "    p = refObject * p;\n") + unless("modelview", "    p = modelview * p;\n")
        + unless("projection", "    p = projection * p;\n") + "    gl_Position = p;\n}\n";
}

inline std::string testFragmentSource(const std::string& omit = "")
{
    const char* uniforms[][3] = {
        {"float", "time", "time"},
        {"vec3", "light", "light.x"},
        {"vec3", "camera", "camera.y"},
        {"vec4", "phong", "phong.w"},
        {"vec4", "fogcolor", "fogcolor.z"},
        {"float", "fogstart", "fogstart"},
        {"float", "fogend", "fogend"},
        {"sampler2D", "textureSampler", "texture(textureSampler, uv).a"},
    };
    std::string text = "#version 330\nin vec3 normal;\nin vec2 uv;\n";
    std::string sum = "normal.x + uv.y";
    for (const auto& uniform : uniforms) {
        if (omit != uniform[1]) {
            text += std::string("uniform ") + uniform[0] + " " + uniform[1] + ";\n";
            sum += std::string(" + ") + uniform[2];
        }
    }
    return text + "out vec4 fragColor;\nvoid main()\n{\n    float sum = " + sum + ";\n"
        + "    fragColor = sum > 1.0e30 ? vec4(0.0, 1.0, 0.0, 1.0) : vec4(1.0, 0.0, 0.0, 1.0);\n}\n";
}
