#include "tools/ModelPreview.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tools {

namespace {

struct V3 {
    double x, y, z;
};

V3 sub(const V3& a, const V3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(const V3& a, const V3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
V3 cross(const V3& a, const V3& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
V3 unit(const V3& a)
{
    const double l = std::sqrt(dot(a, a));
    return l > 0.0 ? V3{a.x / l, a.y / l, a.z / l} : a;
}
V3 toV3(const Vector4D& p) { return {p.x, p.y, p.z}; }

const Colour background{0.05, 0.06, 0.10, 1.0};

}  // namespace

ModelPreview::ModelPreview(const ObjModel& source, const std::string& directory) : model(source)
{
    double low[3] = {1e30, 1e30, 1e30};
    double high[3] = {-1e30, -1e30, -1e30};
    for (const auto& entry : model.points) {
        const double p[3] = {entry.second.x, entry.second.y, entry.second.z};
        for (int i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], p[i]);
            high[i] = std::max(high[i], p[i]);
        }
    }
    for (int i = 0; i < 3; ++i) {
        centre[i] = (low[i] + high[i]) / 2.0;
    }
    radius = 1e-6;
    for (const auto& entry : model.points) {
        const V3 d = sub(toV3(entry.second), {centre[0], centre[1], centre[2]});
        radius = std::max(radius, std::sqrt(dot(d, d)));
    }
    for (const auto& entry : model.materials) {
        if (!entry.second.texture.empty()) {
            Image texture(1, 1);
            if (texture.load(directory + "/" + entry.second.texture + ".png")) {
                textures.emplace(entry.second.texture, texture);
            }
        }
    }
}

Colour ModelPreview::programColour(const std::string& program)
{
    static const std::map<std::string, Colour> colours = {
        {"Soil", {0.50, 0.38, 0.27, 1.0}},     {"Hull", {0.62, 0.65, 0.70, 1.0}},
        {"Selection", {0.30, 0.80, 1.00, 1.0}}, {"Laser", {1.00, 0.55, 0.25, 1.0}},
        {"Fusion", {0.40, 0.60, 1.00, 1.0}},    {"Wood", {0.60, 0.42, 0.24, 1.0}},
        {"MapTextured", {1.0, 1.0, 1.0, 1.0}}};
    const auto found = colours.find(program);
    return found == colours.end() ? Colour{1.0, 0.0, 1.0, 1.0} : found->second;
}

Image ModelPreview::render(unsigned size) const
{
    Image image(3 * size, size, background);
    std::vector<double> depth(static_cast<std::size_t>(3) * size * size, -std::numeric_limits<double>::infinity());
    const double pi = 3.14159265358979;
    drawView(image, depth, 0, size, {145.0 * pi / 180.0, 25.0 * pi / 180.0});
    drawView(image, depth, size, size, {pi, 89.0 * pi / 180.0});
    drawView(image, depth, 2 * size, size, {-35.0 * pi / 180.0, 20.0 * pi / 180.0});
    return image;
}

void ModelPreview::drawView(Image& image, std::vector<double>& depth, unsigned left, unsigned size,
                            const Camera& camera) const
{
    const V3 toCamera{std::sin(camera.azimuth) * std::cos(camera.elevation), std::sin(camera.elevation),
                      std::cos(camera.azimuth) * std::cos(camera.elevation)};
    const V3 right = unit(cross({0.0, 1.0, 0.0}, toCamera));
    const V3 up = cross(toCamera, right);
    const V3 lightDirection = unit({0.45, 0.8, -0.4});
    const V3 middle{centre[0], centre[1], centre[2]};
    const double scale = 0.46 * size / radius;
    for (const ObjObject& object : model.objects) {
        const ObjMaterial* material = model.materialOf(object);
        const std::string program = material != nullptr && !material->program.empty() ? material->program : "Wood";
        const Image* texture = nullptr;
        if (material != nullptr && model.textured) {
            const auto found = textures.find(material->texture);
            texture = found == textures.end() ? nullptr : &found->second;
        }
        const bool emissive = program == "Laser" || program == "Fusion";
        for (std::size_t i = 0; i < object.points.size(); ++i) {
            V3 world[3];
            double screen[3][3];
            const Vector4D* uv[3] = {nullptr, nullptr, nullptr};
            for (int k = 0; k < 3; ++k) {
                const auto found = model.points.find(object.points[i][static_cast<std::size_t>(k)]);
                world[k] = found == model.points.end() ? V3{0, 0, 0} : toV3(found->second);
                const V3 d = sub(world[k], middle);
                screen[k][0] = dot(d, right);
                screen[k][1] = dot(d, up);
                screen[k][2] = dot(d, toCamera);
                const auto t = model.uvs.find(object.uvs[i][static_cast<std::size_t>(k)]);
                uv[k] = t == model.uvs.end() ? nullptr : &t->second;
            }
            const double area = (screen[1][0] - screen[0][0]) * (screen[2][1] - screen[0][1]) -
                                (screen[2][0] - screen[0][0]) * (screen[1][1] - screen[0][1]);
            if (area <= 0.0) {
                continue;
            }
            for (auto& s : screen) {
                s[0] = size / 2.0 + scale * s[0];
                s[1] = size / 2.0 - scale * s[1];
            }
            const V3 normal = unit(cross(sub(world[1], world[0]), sub(world[2], world[0])));
            const double light = emissive ? 1.0 : 0.28 + 0.72 * std::max(0.0, dot(normal, lightDirection));
            drawTriangle(image, depth, screen, uv, programColour(program), light, texture, left, size);
        }
    }
}

void ModelPreview::drawTriangle(Image& image, std::vector<double>& depth, const double s[3][3],
                                const Vector4D* uv[3], const Colour& base, double light, const Image* texture,
                                unsigned left, unsigned size) const
{
    const double minX = std::max(0.0, std::floor(std::min({s[0][0], s[1][0], s[2][0]})));
    const double maxX = std::min(size - 1.0, std::ceil(std::max({s[0][0], s[1][0], s[2][0]})));
    const double minY = std::max(0.0, std::floor(std::min({s[0][1], s[1][1], s[2][1]})));
    const double maxY = std::min(size - 1.0, std::ceil(std::max({s[0][1], s[1][1], s[2][1]})));
    const double area = (s[1][0] - s[0][0]) * (s[2][1] - s[0][1]) - (s[2][0] - s[0][0]) * (s[1][1] - s[0][1]);
    for (double y = minY; y <= maxY; ++y) {
        for (double x = minX; x <= maxX; ++x) {
            const double px = x + 0.5;
            const double py = y + 0.5;
            double w[3];
            for (int k = 0; k < 3; ++k) {
                const double* a = s[(k + 1) % 3];
                const double* b = s[(k + 2) % 3];
                w[k] = ((b[0] - a[0]) * (py - a[1]) - (px - a[0]) * (b[1] - a[1])) / area;
            }
            if (w[0] < 0.0 || w[1] < 0.0 || w[2] < 0.0) {
                continue;
            }
            const double z = w[0] * s[0][2] + w[1] * s[1][2] + w[2] * s[2][2];
            const std::size_t at = static_cast<std::size_t>(y) * 3 * size + left + static_cast<std::size_t>(x);
            if (z <= depth[at]) {
                continue;
            }
            depth[at] = z;
            Colour c = base;
            if (texture != nullptr && uv[0] != nullptr && uv[1] != nullptr && uv[2] != nullptr) {
                c = texture->sample(w[0] * uv[0]->x + w[1] * uv[1]->x + w[2] * uv[2]->x,
                                    w[0] * uv[0]->y + w[1] * uv[1]->y + w[2] * uv[2]->y);
            }
            image.set(left + static_cast<unsigned>(x), static_cast<unsigned>(y),
                      {c.red * light, c.green * light, c.blue * light, 1.0});
        }
    }
}

}  // namespace tools
