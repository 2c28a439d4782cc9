// Writes the player's fighter, "spaceship", into the directory given as the
// only argument. Every part is built from the engine's primitives (cylinder
// walls chained into a lathe, discs closing them, spheres) and then shaped
// by a mapping of its own: a flattened fuselage, a glass canopy, swept wings,
// two engine nacelles with glowing exhausts, a tail fin and two wing-tip
// cannons. The nose points along -z, the top along +y; the ship is about
// 4.7 units long and as wide. Each part is one closed surface and one object
// of the model.
//
//   generate-ship <directory>
#include "geometry/Circle.h"
#include "geometry/Cylinder.h"
#include "geometry/Shape.h"
#include "geometry/Sphere.h"
#include "tools/MeshPart.h"
#include "tools/ModelCheck.h"
#include "tools/ObjWriter.h"

#include <iostream>
#include <list>
#include <utility>
#include <vector>

namespace {

using tools::MeshPart;
using tools::Point3;

// (z, radius) stations of a surface of revolution around the z axis.
using Profile = std::vector<std::pair<float, float>>;

// Cylinder walls between consecutive stations; a station of radius 0 closes
// its end in a point, any other end is closed by a disc.
MeshPart lathe(const std::string& material, const Profile& profile, int division)
{
    korvel::Shape shape;
    for (std::size_t i = 0; i + 1 < profile.size(); ++i) {
        korvel::Cylinder wall(Vector4D(0.0f, 0.0f, profile[i].first, 1.0f),
                              Vector4D(0.0f, 0.0f, profile[i + 1].first, 1.0f), profile[i].second,
                              profile[i + 1].second, false);
        wall.setDivision(division);
        wall.includeBody(&shape, nullptr);
    }
    const auto closeEnd = [&shape, division](const std::pair<float, float>& station, bool facingBack) {
        if (station.second <= 0.0f) {
            return;
        }
        korvel::Circle disc(Vector4D(0.0f, 0.0f, station.first, 1.0f), station.second);
        disc.setDivision(division);
        disc.setReversed(facingBack);
        disc.includeShape(&shape, nullptr);
    };
    closeEnd(profile.front(), false);
    closeEnd(profile.back(), true);
    MeshPart part(material);
    part.addShape(shape);
    return part;
}

MeshPart sphere(const std::string& material, int division)
{
    korvel::Shape shape;
    korvel::Sphere ball(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), 1.0f);
    ball.setDivision(division);
    ball.includeShape(&shape, nullptr);
    MeshPart part(material);
    part.addShape(shape);
    return part;
}

MeshPart fuselage()
{
    MeshPart part = lathe("hull",
                          {{-2.5f, 0.0f}, {-2.25f, 0.12f}, {-1.9f, 0.24f}, {-1.4f, 0.36f}, {-0.8f, 0.46f},
                           {-0.1f, 0.52f}, {0.7f, 0.52f}, {1.4f, 0.46f}, {1.9f, 0.38f}},
                          32);
    part.transform([](const Point3& p) { return Point3{p.x, p.y * 0.72, p.z}; });
    return part;
}

MeshPart canopy()
{
    MeshPart part = sphere("canopy", 24);
    part.transform([](const Point3& p) { return Point3{p.x * 0.27, 0.18 + p.y * 0.3, -1.0 + p.z * 0.75}; });
    return part;
}

// side = 1 for the right wing (+x), -1 for the left. The lathe's axis runs
// along the span and its circles are flattened into a thin swept blade; the
// mapping keeps the faces turned outwards on both sides.
MeshPart wing(double side)
{
    MeshPart part = lathe("wing", {{0.0f, 0.95f}, {0.5f, 0.8f}, {1.0f, 0.62f}, {1.5f, 0.45f}, {2.0f, 0.28f}}, 24);
    part.transform([side](const Point3& p) {
        return Point3{side * (0.3 + p.z), -0.12 + p.y * 0.09 + 0.06 * p.z, 0.3 + 0.55 * p.z - side * p.x};
    });
    return part;
}

MeshPart nacelle(double side)
{
    MeshPart part = lathe("engine",
                          {{-0.55f, 0.2f}, {-0.45f, 0.27f}, {0.1f, 0.29f}, {1.3f, 0.29f}, {1.75f, 0.25f},
                           {1.95f, 0.22f}},
                          24);
    part.transform([side](const Point3& p) { return Point3{side * 0.75 + p.x, p.y - 0.1, p.z}; });
    return part;
}

MeshPart exhaust(double side)
{
    MeshPart part = sphere("exhaust", 16);
    part.transform([side](const Point3& p) {
        return Point3{side * 0.75 + p.x * 0.19, -0.1 + p.y * 0.19, 1.95 + p.z * 0.13};
    });
    return part;
}

MeshPart fin()
{
    MeshPart part = lathe("fin", {{0.0f, 0.55f}, {0.45f, 0.42f}, {0.85f, 0.22f}}, 24);
    part.transform([](const Point3& p) { return Point3{p.y * 0.08, 0.25 + p.z, 1.2 + p.x + 0.6 * p.z}; });
    return part;
}

MeshPart cannon(double side)
{
    MeshPart part = lathe("cannon", {{-0.75f, 0.035f}, {-0.65f, 0.05f}, {0.6f, 0.065f}, {1.55f, 0.09f}}, 16);
    part.transform([side](const Point3& p) { return Point3{side * 2.32 + p.x, p.y, p.z}; });
    return part;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: generate-ship <directory>" << std::endl;
        return 2;
    }
    const std::string directory = argv[1];
    // Built in the order they are drawn: the body first, the glowing parts
    // last.
    const std::list<MeshPart> parts = {fuselage(),    canopy(),       wing(1.0),   wing(-1.0),
                                       nacelle(1.0),  nacelle(-1.0),  fin(),       cannon(1.0),
                                       cannon(-1.0),  exhaust(1.0),   exhaust(-1.0)};
    tools::ObjWriter writer("spaceship", "spaceship: generated by tools/generate-ship, do not edit");
    writer.addMaterial({"hull", "Hull", 0.62, 0.65, 0.70, ""});
    writer.addMaterial({"canopy", "Selection", 0.30, 0.80, 1.00, ""});
    writer.addMaterial({"wing", "Hull", 0.58, 0.60, 0.66, ""});
    writer.addMaterial({"engine", "Hull", 0.45, 0.47, 0.52, ""});
    writer.addMaterial({"fin", "Hull", 0.58, 0.60, 0.66, ""});
    writer.addMaterial({"cannon", "Hull", 0.35, 0.36, 0.40, ""});
    writer.addMaterial({"exhaust", "Laser", 1.00, 0.55, 0.25, ""});
    for (const MeshPart& part : parts) {
        writer.addPart(part);
    }
    if (!writer.write(directory)) {
        return 1;
    }
    tools::ModelCheck check;
    return check.checkWritten(directory, "spaceship", std::cout) ? 0 : 1;
}
