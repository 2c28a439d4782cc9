#pragma once
// A PNG image decoded to 8-bit RGBA and uploaded once as a mip-mapped 2D
// texture. The GL texture lives as long as the object.

#include "render/Texture.h"

#include <string>

namespace korvel {

class TextureBase : public Texture {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    TextureBase();
    TextureBase(const TextureBase&) = delete;
    TextureBase& operator=(const TextureBase&) = delete;
    ~TextureBase() override;

    // Binds on the active unit; the drawing code keeps unit 0 active.
    void activateDraw() override;
    // Decodes and uploads the file; false with the decoder's error on a file
    // that is missing or not a PNG, and then no GL texture exists.
    bool load(const std::string& file);

    unsigned getName() const { return name; }
    unsigned getWidth() const { return width; }
    unsigned getHeight() const { return height; }

private:
    unsigned name;
    unsigned width;
    unsigned height;
};

}  // namespace korvel
