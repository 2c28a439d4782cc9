#pragma once
// Model files written by the tests: OBJ text for sphere meshes.

#include "geometry/Shape.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

// One "v" per corner and one "f" per triangle of a sphere centred at
// (x, 0, 0); the loader shares equal corners again.
inline std::string sphereObj(float radius, int division, float x = 0.0f)
{
    korvel::Shape shape;
    korvel::Sphere sphere(Vector4D(x, 0.0f, 0.0f, 1.0f), radius);
    sphere.setDivision(division);
    sphere.includeShape(&shape, nullptr);
    std::ostringstream text;
    text << std::setprecision(9);
    int corner = 1;
    for (const korvel::Triangle* t : shape.getTriangles()) {
        for (const Vector4D* p : t->points) {
            text << "v " << p->x << ' ' << p->y << ' ' << p->z << '\n';
        }
        text << "f " << corner << ' ' << corner + 1 << ' ' << corner + 2 << '\n';
        corner += 3;
    }
    return text.str();
}

inline void writeText(const std::string& file, const std::string& text)
{
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream(file, std::ios::binary) << text;
}
