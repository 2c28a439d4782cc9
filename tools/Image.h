#pragma once
// An 8-bit RGBA picture, row 0 at the top (the row the engine uploads
// first, texture coordinate v = 0), written as PNG through LodePNG.
#include <cstdint>
#include <string>
#include <vector>

namespace tools {

struct Colour {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;
};

class Image {
public:
    Image(unsigned width, unsigned height, const Colour& fill = Colour{0.0, 0.0, 0.0, 0.0});

    unsigned getWidth() const { return width; }
    unsigned getHeight() const { return height; }
    // Components are clamped to [0, 1] and rounded to the nearest byte.
    void set(unsigned x, unsigned y, const Colour& c);
    Colour get(unsigned x, unsigned y) const;
    void setBytes(unsigned x, unsigned y, uint8_t r, uint8_t g, uint8_t b, uint8_t a);
    // The colour at (u, v) in [0, 1], nearest pixel.
    Colour sample(double u, double v) const;

    // False with a line on standard error when encoding or writing fails.
    bool save(const std::string& path) const;
    // False when the file is not a PNG that LodePNG decodes.
    bool load(const std::string& path);

private:
    unsigned width;
    unsigned height;
    std::vector<uint8_t> pixels;
};

}  // namespace tools
