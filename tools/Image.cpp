#include "tools/Image.h"

#include <lodepng.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace tools {

namespace {

uint8_t toByte(double value)
{
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

}  // namespace

Image::Image(unsigned w, unsigned h, const Colour& fill)
    : width(w), height(h), pixels(static_cast<std::size_t>(w) * h * 4)
{
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            set(x, y, fill);
        }
    }
}

void Image::setBytes(unsigned x, unsigned y, uint8_t r, uint8_t g, uint8_t b, uint8_t a)
{
    if (x >= width || y >= height) {
        return;
    }
    const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 4;
    pixels[at] = r;
    pixels[at + 1] = g;
    pixels[at + 2] = b;
    pixels[at + 3] = a;
}

void Image::set(unsigned x, unsigned y, const Colour& c)
{
    setBytes(x, y, toByte(c.red), toByte(c.green), toByte(c.blue), toByte(c.alpha));
}

Colour Image::get(unsigned x, unsigned y) const
{
    if (x >= width || y >= height) {
        return Colour{};
    }
    const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 4;
    return Colour{pixels[at] / 255.0, pixels[at + 1] / 255.0, pixels[at + 2] / 255.0, pixels[at + 3] / 255.0};
}

Colour Image::sample(double u, double v) const
{
    const double x = std::clamp(u, 0.0, 1.0) * width;
    const double y = std::clamp(v, 0.0, 1.0) * height;
    return get(std::min(static_cast<unsigned>(x), width - 1), std::min(static_cast<unsigned>(y), height - 1));
}

bool Image::save(const std::string& path) const
{
    const unsigned error = lodepng::encode(path, pixels, width, height);
    if (error != 0) {
        std::cerr << "cannot write " << path << ": " << lodepng_error_text(error) << std::endl;
        return false;
    }
    return true;
}

bool Image::load(const std::string& path)
{
    std::vector<uint8_t> decoded;
    unsigned w = 0;
    unsigned h = 0;
    if (lodepng::decode(decoded, w, h, path) != 0) {
        return false;
    }
    width = w;
    height = h;
    pixels = std::move(decoded);
    return true;
}

}  // namespace tools
