#include "render/TextureBase.h"

#include "render/GLEntryPoint.h"
#include "render/TextureManager.h"

#include <lodepng.h>

#include <iostream>
#include <vector>

namespace korvel {

const char* TextureBase::className = "TextureBase";

TextureBase::TextureBase() : name(0), width(0), height(0) {}

TextureBase::~TextureBase()
{
    if (name != 0) {
        glDeleteTextures(1, &name);
    }
}

void TextureBase::activateDraw()
{
    glBindTexture(GL_TEXTURE_2D, name);
}

bool TextureBase::load(const std::string& file)
{
    std::vector<unsigned char> pixels;
    unsigned decodedWidth = 0;
    unsigned decodedHeight = 0;
    const unsigned error = lodepng::decode(pixels, decodedWidth, decodedHeight, file, LCT_RGBA, 8);
    if (error != 0) {
        std::cout << "[ERROR] decoder error " << error << ": " << lodepng_error_text(error) << std::endl;
        return false;
    }
    std::cout << "[Information] image" << file << " loaded and decodded" << std::endl;
    width = decodedWidth;
    height = decodedHeight;

    // A reload replaces the earlier texture.
    if (name != 0) {
        glDeleteTextures(1, &name);
        name = 0;
    }
    glGenTextures(1, &name);
    std::cout << "[Information] texture ID:" << name << std::endl;
    TextureManager::glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, name);
    // RGBA rows are 4-byte aligned whatever the width, so the default
    // unpack alignment fits.
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, static_cast<GLsizei>(width), static_cast<GLsizei>(height), 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    TextureManager::glGenerateMipmap(GL_TEXTURE_2D);
    return true;
}

}  // namespace korvel
