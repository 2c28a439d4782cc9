#pragma once
// Helpers shared by the scene tests: a program manager holding named
// programs that were never linked (enough to look programs up and save or
// load objects without a display), and small shapes.

#include "core/Matrix4D.h"
#include "core/Vector4D.h"
#include "geometry/Shape.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

inline Vector4D at(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

inline void expectVector(const Vector4D& v, float x, float y, float z, float w)
{
    EXPECT_NEAR(v.x, x, 1e-5f);
    EXPECT_NEAR(v.y, y, 1e-5f);
    EXPECT_NEAR(v.z, z, 1e-5f);
    EXPECT_NEAR(v.w, w, 1e-5f);
}

// The names of a world's elements or of a compound's joints, in order.
template <class Map>
std::vector<std::string> keys(const Map& map)
{
    std::vector<std::string> result;
    for (const auto& entry : map) {
        result.push_back(entry.first);
    }
    return result;
}

inline Matrix4D moved(float x, float y, float z, float scale = 1.0f)
{
    Matrix4D m = Matrix4D::getI4();
    m.enlarge(scale);
    m.setPosition(x, y, z);
    return m;
}

// Programs that only carry their names; removed with the manager at the end.
class FakePrograms {
public:
    explicit FakePrograms(std::initializer_list<const char*> names)
    {
        korvel::ShaderProgramManagerBase::init();
        for (const char* name : names) {
            auto* program = new ShaderProgramBase();
            program->codeName = name;
            korvel::ShaderProgramManager::getInstance()->getPrograms()[name] = program;
        }
    }
    ~FakePrograms() { korvel::ShaderProgramManager::releaseInstance(); }
    FakePrograms(const FakePrograms&) = delete;
    FakePrograms& operator=(const FakePrograms&) = delete;

    static ShaderProgramBase* get(const std::string& name)
    {
        return dynamic_cast<ShaderProgramBase*>(korvel::ShaderProgramManager::getInstance()->getPrograms()[name]);
    }
};

// A triangle facing +z (counter-clockwise seen from +z).
inline korvel::Triangle* flatTriangle(float x, float y, float z, float size = 1.0f)
{
    return new korvel::Triangle(at(x, y, z), at(x + size, y, z), at(x, y + size, z));
}

// A closed sphere mesh of about division^2 / 2 points.
template <class ShapeKind>
ShapeKind* sphereShape(float radius, int division)
{
    auto* shape = new ShapeKind();
    korvel::Sphere sphere(at(0.0f, 0.0f, 0.0f), radius);
    sphere.setDivision(division);
    sphere.includeShape(shape, nullptr);
    return shape;
}
