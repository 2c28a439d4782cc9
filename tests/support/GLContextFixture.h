#pragma once
// A hidden GLFW window whose GL context stays current for a whole test suite,
// with every rendering entry point loaded as the application does at start.
// Under Xvfb, Mesa's llvmpipe serves the context.

#include "render/GLBaseStructure.h"
#include "render/OpenGLError.h"
#include "render/Shader.h"
#include "render/ShaderProgram.h"
#include "render/TextureManager.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <GL/gl.h>
#include <gtest/gtest.h>

class GLContextFixture : public ::testing::Test {
public:
    static void SetUpTestSuite()
    {
        if (glfwInit() == GLFW_FALSE) {
            return;
        }
        glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
        glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);
        window = glfwCreateWindow(64, 64, "render tests", nullptr, nullptr);
        if (window == nullptr) {
            return;
        }
        glfwMakeContextCurrent(window);
        loaded = Shader::init() && ShaderProgram::init() && OpenGLError::init() && GLBaseStructure::init()
            && korvel::TextureManager::init();
    }

    // GLFW is not terminated: that would unload Mesa's driver, and what the
    // driver keeps for the process would then show as leaks under the leak
    // checker. The process ends right after the suite anyway.
    static void TearDownTestSuite()
    {
        if (window != nullptr) {
            glfwDestroyWindow(window);
            window = nullptr;
        }
    }

protected:
    void SetUp() override
    {
        ASSERT_NE(window, nullptr) << "no GL window (run under xvfb-run)";
        ASSERT_TRUE(loaded) << "an OpenGL entry point is missing";
        glfwMakeContextCurrent(window);
    }

    static GLint currentProgram()
    {
        GLint program = -1;
        glGetIntegerv(0x8B8D /* GL_CURRENT_PROGRAM */, &program);
        return program;
    }

    static inline GLFWwindow* window = nullptr;
    static inline bool loaded = false;
};
