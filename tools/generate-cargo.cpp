// Writes "cargo", a textured cargo pod, into the directory given as the only
// argument: cargo.obj, cargo.mtl and its painted image cargo.png. The pod is
// an eight-sided hull along z with pointed ends, a recessed waist and bevels;
// every flat side is one panel of the image (u around the pod, v along it,
// v = 0 at the front tip and at the top row of the image). Its material
// names a texture, so the engine loads it as textured triangles, flat lit.
//
//   generate-cargo <directory>
#include "core/Random.h"
#include "tools/Image.h"
#include "tools/MeshPart.h"
#include "tools/ModelCheck.h"
#include "tools/ObjWriter.h"

#include <array>
#include <cmath>
#include <iostream>
#include <vector>

namespace {

using tools::Colour;
using tools::MeshPart;

constexpr int sides = 8;
constexpr unsigned textureSize = 512;

struct Station {
    double z;
    double radius;
    double v;
};

// Front tip to back tip. The v of each station is where its band starts in
// the image; the painting below follows the same bands.
const std::vector<Station> stations = {{-1.3, 0.0, 0.0},   {-1.2, 0.42, 0.10}, {-1.08, 0.58, 0.16},
                                       {-0.45, 0.58, 0.40}, {-0.40, 0.52, 0.43}, {0.40, 0.52, 0.57},
                                       {0.45, 0.58, 0.60},  {1.08, 0.58, 0.84},  {1.2, 0.42, 0.90},
                                       {1.3, 0.0, 1.0}};

MeshPart pod()
{
    MeshPart part("cargo");
    const double pi = 3.14159265358979323846;
    // ring[k][j]: station k, corner j; a tip is one point.
    std::vector<std::array<int, sides>> ring;
    for (const Station& s : stations) {
        std::array<int, sides> corners{};
        for (int j = 0; j < sides; ++j) {
            // Corners half a side off the axes: a flat side lies underneath.
            const double a = (j + 0.5) * 2.0 * pi / sides;
            corners[static_cast<std::size_t>(j)] =
                part.addPoint({s.radius * std::cos(a), s.radius * std::sin(a), s.z});
        }
        ring.push_back(corners);
    }
    for (std::size_t k = 0; k + 1 < stations.size(); ++k) {
        const double v0 = stations[k].v;
        const double v1 = stations[k + 1].v;
        for (int j = 0; j < sides; ++j) {
            const auto a = static_cast<std::size_t>(j);
            const auto b = static_cast<std::size_t>((j + 1) % sides);
            const double u0 = static_cast<double>(j) / sides;
            const double u1 = static_cast<double>(j + 1) / sides;
            const double middle = (u0 + u1) / 2.0;
            const int q1 = ring[k][a], q2 = ring[k][b], q3 = ring[k + 1][a], q4 = ring[k + 1][b];
            if (stations[k].radius == 0.0) {
                part.addTriangle({q1, q4, q3}, {part.addUV(middle, v0), part.addUV(u1, v1), part.addUV(u0, v1)});
            } else if (stations[k + 1].radius == 0.0) {
                part.addTriangle({q1, q2, q3}, {part.addUV(u0, v0), part.addUV(u1, v0), part.addUV(middle, v1)});
            } else {
                part.addTriangle({q1, q2, q4}, {part.addUV(u0, v0), part.addUV(u1, v0), part.addUV(u1, v1)});
                part.addTriangle({q1, q4, q3}, {part.addUV(u0, v0), part.addUV(u1, v1), part.addUV(u0, v1)});
            }
        }
    }
    return part;
}

// ---- the painting ---------------------------------------------------------

const Colour paint{0.86, 0.45, 0.10, 1.0};
const Colour steel{0.36, 0.38, 0.41, 1.0};
const Colour darkSteel{0.20, 0.21, 0.23, 1.0};
const Colour yellow{0.95, 0.78, 0.12, 1.0};
const Colour black{0.07, 0.07, 0.08, 1.0};
const Colour white{0.92, 0.92, 0.88, 1.0};

Colour scaled(const Colour& c, double f)
{
    return {c.red * f, c.green * f, c.blue * f, c.alpha};
}

Colour hazard(double u, double v)
{
    return std::fmod((u * sides * 4.0 + v * 40.0), 2.0) < 1.0 ? yellow : black;
}

// The forward chevron of the front panels, s across the panel, t along it.
bool chevron(double s, double t)
{
    const double offset = t - 0.25 - std::fabs(s - 0.5) * 0.9;
    return offset > 0.0 && offset < 0.14 && std::fabs(s - 0.5) < 0.32;
}

// A label of bars on the back panels, different on each panel.
bool label(double s, double t, int panel, Colour& out)
{
    if (s < 0.18 || s > 0.82 || t < 0.3 || t > 0.72) {
        return false;
    }
    out = white;
    const int bar = static_cast<int>((s - 0.18) / 0.64 * 22.0);
    const float hash = korvel::Random::aleaPoint(Vector4D(static_cast<float>(bar), static_cast<float>(panel), 0.0f, 1.0f), 5);
    if (t > 0.36 && t < 0.66 && bar > 0 && bar < 21 && std::fabs(hash) > 0.45) {
        out = black;
    }
    return true;
}

Colour bodyPanel(double u, double s, double t, bool front)
{
    const int panel = static_cast<int>(u * sides);
    Colour c = paint;
    // Rivets near the corners, seams at the panel edges.
    const double ds = std::fmin(s, 1.0 - s);
    const double dt = std::fmin(t, 1.0 - t);
    if (ds < 0.03 || dt < 0.03) {
        return scaled(paint, 0.45);
    }
    if (std::fabs(ds - 0.08) < 0.025 && std::fabs(dt - 0.08) < 0.04) {
        return scaled(steel, 1.3);
    }
    if (front && chevron(s, t)) {
        c = white;
    } else if (!front) {
        label(s, t, panel, c);
    }
    return c;
}

Colour cap(double s, double v)
{
    const double towardsTip = v < 0.5 ? 1.0 - v / 0.10 : (v - 0.90) / 0.10;
    const bool ring = std::fmod(towardsTip * 6.0, 1.0) < 0.15;
    const bool rib = std::fabs(s - 0.5) < 0.04;
    return ring || rib ? darkSteel : steel;
}

Colour painted(double u, double v)
{
    const double s = std::fmod(u * sides, 1.0);
    if (v < 0.10 || v >= 0.90) {
        return cap(s, v);
    }
    if ((v < 0.16) || (v >= 0.84)) {
        return hazard(u, v);
    }
    if ((v >= 0.40 && v < 0.43) || (v >= 0.57 && v < 0.60)) {
        return darkSteel;
    }
    if (v >= 0.43 && v < 0.57) {
        return scaled(hazard(u, v), 0.85);
    }
    const bool front = v < 0.5;
    const double t = front ? (v - 0.16) / 0.24 : (v - 0.60) / 0.24;
    return bodyPanel(u, s, t, front);
}

// Scuffs and soot from the engine's noise, darker towards the ends.
double grime(double u, double v)
{
    const Vector4D at(static_cast<float>(u * 24.0), static_cast<float>(v * 24.0), 3.5f, 1.0f);
    const Vector4D fine(static_cast<float>(u * 90.0), static_cast<float>(v * 90.0), 7.5f, 1.0f);
    const double n = 0.6 * korvel::Random::noise(at, 1, 3) + 0.4 * korvel::Random::noise(fine, 1, 9);
    return 0.88 + 0.12 * n;
}

tools::Image texture()
{
    tools::Image image(textureSize, textureSize);
    for (unsigned y = 0; y < textureSize; ++y) {
        for (unsigned x = 0; x < textureSize; ++x) {
            const double u = (x + 0.5) / textureSize;
            const double v = (y + 0.5) / textureSize;
            image.set(x, y, scaled(painted(u, v), grime(u, v)));
        }
    }
    return image;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: generate-cargo <directory>" << std::endl;
        return 2;
    }
    const std::string directory = argv[1];
    if (!texture().save(directory + "/cargo.png")) {
        return 1;
    }
    const MeshPart part = pod();
    tools::ObjWriter writer("cargo", "cargo: generated by tools/generate-cargo, do not edit");
    writer.addMaterial({"cargo", "MapTextured", 1.0, 1.0, 1.0, "cargo.png"});
    writer.addPart(part);
    if (!writer.write(directory)) {
        return 1;
    }
    tools::ModelCheck check;
    return check.checkWritten(directory, "cargo", std::cout) ? 0 : 1;
}
