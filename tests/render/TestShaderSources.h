#pragma once
// GLSL sources that honour the program contract, with one chosen name left
// out. Every uniform takes part in a comparison the compiler cannot fold, so
// none is optimised away; with the values the tests leave at zero the output
// is pure red.

#include <string>

inline std::string testVertexSource(const std::string& omit = "")
{
    std::string text = "#version 330\n";
    if (omit != "in_Position") {
        text += "in vec3 in_Position;\n";
    }
    if (omit != "in_Normal") {
        text += "in vec3 in_Normal;\n";
    }
    if (omit != "in_UV") {
        text += "in vec2 in_UV;\n";
    }
    for (const char* name : {"projection", "modelview", "refObject"}) {
        if (omit != name) {
            text += std::string("uniform mat4 ") + name + ";\n";
        }
    }
    text += "out vec3 normal;\nout vec2 uv;\nvoid main()\n{\n";
    text += omit != "in_Normal" ? "    normal = in_Normal;\n" : "    normal = vec3(0.0);\n";
    text += omit != "in_UV" ? "    uv = in_UV;\n" : "    uv = vec2(0.0);\n";
    text += "    vec4 p = ";
    text += omit != "in_Position" ? "vec4(in_Position, 1.0);\n" : "vec4(0.0, 0.0, 0.0, 1.0);\n";
    for (const char* name : {"refObject", "modelview", "projection"}) {
        if (omit != name) {
            text += std::string("    p = ") + name + " * p;\n";
        }
    }
    text += "    gl_Position = p;\n}\n";
    return text;
}

inline std::string testFragmentSource(const std::string& omit = "")
{
    struct Uniform {
        const char* type;
        const char* name;
        const char* use;
    };
    const Uniform uniforms[] = {
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
    for (const Uniform& uniform : uniforms) {
        if (omit != uniform.name) {
            text += std::string("uniform ") + uniform.type + " " + uniform.name + ";\n";
            sum += std::string(" + ") + uniform.use;
        }
    }
    text += "out vec4 fragColor;\nvoid main()\n{\n";
    text += "    float sum = " + sum + ";\n";
    text += "    fragColor = sum > 1.0e30 ? vec4(0.0, 1.0, 0.0, 1.0) : vec4(1.0, 0.0, 0.0, 1.0);\n}\n";
    return text;
}
