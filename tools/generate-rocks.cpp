// Writes the two rocks of the game, "asteroid" and "asteroid2", into the
// directory given as the only argument: spheres pushed in and out by the
// engine's value noise, six units in mean radius so that a rock the game
// enlarges by s looks as large as the 6 s that it collides at. The first is a rounded, cratered
// boulder; the second a long shard with ridges and broken flat faces. Each
// is one closed surface of shared points, drawn with the "Soil" program.
//
//   generate-rocks <directory>
#include "core/Random.h"
#include "tools/MeshPart.h"
#include "tools/ModelCheck.h"
#include "tools/ObjWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <vector>

namespace {

// The game collides a rock at six times the scale it draws it at.
constexpr double rockRadius = 6.0;

using tools::MeshPart;
using tools::Point3;

Point3 normalised(const Point3& p)
{
    const double length = std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z);
    return {p.x / length, p.y / length, p.z / length};
}

Point3 midpoint(const Point3& a, const Point3& b)
{
    return normalised({(a.x + b.x) * 0.5, (a.y + b.y) * 0.5, (a.z + b.z) * 0.5});
}

double dot(const Point3& a, const Point3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

using Face = std::array<Point3, 3>;

// A unit icosahedron whose faces are split in four `levels` times: points
// spread evenly, with no crowding at poles.
MeshPart icosphere(int levels, const std::string& material)
{
    const double t = (1.0 + std::sqrt(5.0)) / 2.0;
    const std::vector<Point3> corners = {
        {-1, t, 0}, {1, t, 0}, {-1, -t, 0}, {1, -t, 0}, {0, -1, t}, {0, 1, t},
        {0, -1, -t}, {0, 1, -t}, {t, 0, -1}, {t, 0, 1}, {-t, 0, -1}, {-t, 0, 1}};
    const int faces[20][3] = {{0, 11, 5}, {0, 5, 1}, {0, 1, 7}, {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                              {11, 10, 2}, {10, 7, 6}, {7, 1, 8}, {3, 9, 4}, {3, 4, 2}, {3, 2, 6}, {3, 6, 8},
                              {3, 8, 9}, {4, 9, 5}, {2, 4, 11}, {6, 2, 10}, {8, 6, 7}, {9, 8, 1}};
    std::vector<Face> mesh;
    for (const auto& f : faces) {
        mesh.push_back({normalised(corners[f[0]]), normalised(corners[f[1]]), normalised(corners[f[2]])});
    }
    for (int level = 0; level < levels; ++level) {
        std::vector<Face> finer;
        for (const Face& f : mesh) {
            const Point3 ab = midpoint(f[0], f[1]);
            const Point3 bc = midpoint(f[1], f[2]);
            const Point3 ca = midpoint(f[2], f[0]);
            finer.push_back({f[0], ab, ca});
            finer.push_back({f[1], bc, ab});
            finer.push_back({f[2], ca, bc});
            finer.push_back({ab, bc, ca});
        }
        mesh.swap(finer);
    }
    MeshPart part(material);
    for (const Face& f : mesh) {
        part.addTriangle(part.addPoint(f[0]), part.addPoint(f[1]), part.addPoint(f[2]));
    }
    return part;
}

// Octaves of the engine's value noise, each twice as fine and half as strong
// as the one before; about -1 to 1.
double fractalNoise(const Point3& p, double frequency, int octaves, int seed)
{
    double sum = 0.0;
    double weight = 1.0;
    double total = 0.0;
    for (int octave = 0; octave < octaves; ++octave) {
        const double f = frequency * std::ldexp(1.0, octave);
        const Vector4D at(static_cast<float>(p.x * f + 17.0), static_cast<float>(p.y * f + 31.0),
                          static_cast<float>(p.z * f + 47.0), 1.0f);
        sum += weight * korvel::Random::noise(at, 1, seed + octave);
        total += weight;
        weight *= 0.5;
    }
    return sum / total;
}

// A direction drawn from the engine's random draws.
Point3 randomDirection()
{
    return normalised({korvel::Random::aleaFloatMinusOneOne(), korvel::Random::aleaFloatMinusOneOne(),
                       korvel::Random::aleaFloatMinusOneOne() + 1e-3});
}

struct Crater {
    Point3 centre;
    double radius;  // angle, radians
    double depth;
};

// A bowl below the surface with a raised rim around it.
double craterHeight(const Point3& direction, const Crater& c)
{
    const double angle = std::acos(std::clamp(dot(direction, c.centre), -1.0, 1.0));
    const double t = angle / c.radius;
    const double bowl = t < 1.0 ? t * t - 1.0 : 0.0;
    const double rim = 0.35 * std::exp(-(t - 1.0) * (t - 1.0) / 0.06);
    return c.depth * (bowl + rim);
}

// Scales the part so that its points lie on average at `radius` from the
// centre.
void setMeanRadius(MeshPart& part, double radius)
{
    double sum = 0.0;
    for (const Point3& p : part.getPoints()) {
        sum += std::sqrt(dot(p, p));
    }
    const double f = radius * static_cast<double>(part.getPoints().size()) / sum;
    part.transform([f](const Point3& p) { return Point3{p.x * f, p.y * f, p.z * f}; });
}

MeshPart boulder()
{
    std::srand(20260101);
    std::vector<Crater> craters;
    for (int i = 0; i < 7; ++i) {
        const Point3 centre = randomDirection();
        const double radius = 0.25 + 0.3 * korvel::Random::aleaFloatZeroOne();
        const double depth = 0.09 + 0.1 * korvel::Random::aleaFloatZeroOne();
        craters.push_back({centre, radius, depth});
    }
    MeshPart part = icosphere(3, "rock");
    part.transform([&craters](const Point3& d) {
        double r = 1.0 + 0.3 * fractalNoise(d, 1.4, 3, 11) + 0.07 * fractalNoise(d, 6.0, 2, 23);
        for (const Crater& c : craters) {
            r += craterHeight(d, c);
        }
        return Point3{d.x * r * 1.08, d.y * r * 0.9, d.z * r};
    });
    setMeanRadius(part, rockRadius);
    return part;
}

MeshPart shard()
{
    std::srand(20260202);
    std::vector<std::array<double, 4>> cuts;
    for (int i = 0; i < 4; ++i) {
        const Point3 n = randomDirection();
        cuts.push_back({n.x, n.y, n.z, 0.7 + 0.15 * korvel::Random::aleaFloatZeroOne()});
    }
    MeshPart part = icosphere(3, "rock");
    part.transform([&cuts](const Point3& d) {
        // Ridged noise: sharp crests where the noise crosses zero.
        const double ridge = 1.0 - std::fabs(fractalNoise(d, 1.2, 3, 41));
        const double r = 0.85 + 0.4 * ridge + 0.06 * fractalNoise(d, 5.0, 2, 59);
        Point3 p{d.x * r * 1.5, d.y * r * 0.75, d.z * r * 0.9};
        // Broken faces: points beyond a plane slide back onto it along their
        // own direction, which keeps the surface from folding.
        for (const auto& c : cuts) {
            const double along = p.x * c[0] + p.y * c[1] + p.z * c[2];
            if (along > c[3]) {
                const double f = c[3] / along;
                p = {p.x * f, p.y * f, p.z * f};
            }
        }
        return p;
    });
    setMeanRadius(part, rockRadius);
    return part;
}

bool writeRock(const std::string& directory, const std::string& name, const MeshPart& part,
               const tools::MaterialSpec& material)
{
    tools::ObjWriter writer(name, name + ": generated by tools/generate-rocks, do not edit");
    writer.addMaterial(material);
    writer.addPart(part);
    if (!writer.write(directory)) {
        return false;
    }
    tools::ModelCheck check;
    return check.checkWritten(directory, name, std::cout);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: generate-rocks <directory>" << std::endl;
        return 2;
    }
    const std::string directory = argv[1];
    const tools::MaterialSpec rock{"rock", "Soil", 0.42, 0.33, 0.25, ""};
    const bool ok = writeRock(directory, "asteroid", boulder(), rock) &&
                    writeRock(directory, "asteroid2", shard(), rock);
    return ok ? 0 : 1;
}
