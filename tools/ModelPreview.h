#pragma once
// A small software rasteriser that draws a written model from a few angles
// into one picture, so that a generated model can be looked at without the
// game: flat shading under one light, back faces culled (a face wound the
// wrong way shows as a hole), each program in a colour of its own, textured
// materials through their image.
#include "tools/Image.h"
#include "tools/ObjReader.h"

#include <map>
#include <string>
#include <vector>

namespace tools {

class ModelPreview {
public:
    // Reads the textures named by the model from `directory`.
    ModelPreview(const ObjModel& model, const std::string& directory);

    // Three views side by side, each size x size pixels: from the front
    // right above, from above, from the rear left.
    Image render(unsigned size) const;

private:
    struct Camera {
        double azimuth;
        double elevation;
    };
    void drawView(Image& image, std::vector<double>& depth, unsigned left, unsigned size, const Camera& camera) const;
    void drawTriangle(Image& image, std::vector<double>& depth, const double screen[3][3], const Vector4D* uv[3],
                      const Colour& base, double light, const Image* texture, unsigned left, unsigned size) const;
    static Colour programColour(const std::string& program);

    const ObjModel& model;
    std::map<std::string, Image> textures;
    double centre[3] = {0.0, 0.0, 0.0};
    double radius = 1.0;
};

}  // namespace tools
