#include "render/TextSign.h"

#include "parser/Token.h"

#include <cstdint>
#include <iostream>

namespace korvel {

const char* TextSign::className = "TextSign";

namespace {

bool readInt(Token* element, const char* attribute, int32_t& value)
{
    element->startAttributes();
    return element->getNextAttributeValueInt(attribute, value);
}

}  // namespace

TextSign::TextSign() : code(0), leftU(0.0f), topV(0.0f), rightU(1.0f), bottomV(1.0f) {}

void TextSign::setRectangle(float left, float top, float right, float bottom)
{
    leftU = left;
    topV = top;
    rightU = right;
    bottomV = bottom;
}

bool TextSign::importDefinitionOFT(Token* element, int imageWidth, int imageHeight)
{
    if (imageWidth <= 0 || imageHeight <= 0) {
        std::cout << "[ERROR] Glyph needs a positive font image size" << std::endl;
        return false;
    }
    int32_t value = 0;
    if (element == nullptr || !readInt(element, "Code", value)) {
        std::cout << "[ERROR] Glyph Code not defined !" << std::endl;
        return false;
    }
    // Codes are bytes; both the signed and the unsigned reading are taken.
    if (value < -128 || value > 255) {
        std::cout << "[ERROR] Glyph Code out of byte range: " << value << std::endl;
        return false;
    }
    code = static_cast<signed char>(value);
    int32_t x = 0;
    int32_t y = 0;
    int32_t sizeX = 0;
    int32_t sizeY = 0;
    // One message for both corners: a missing Y has always been reported so.
    if (!readInt(element, "X", x) || !readInt(element, "Y", y)) {
        std::cout << "[ERROR] Glyph X not defined !" << std::endl;
        return false;
    }
    const float w = static_cast<float>(imageWidth);
    const float h = static_cast<float>(imageHeight);
    leftU = static_cast<float>(x) / w;
    topV = static_cast<float>(y) / h;
    if (!readInt(element, "SizeX", sizeX)) {
        std::cout << "[ERROR] Glyph SizeX not defined !" << std::endl;
        return false;
    }
    // Sums in 64 bits: two large 32-bit values must not wrap.
    const int64_t right = static_cast<int64_t>(x) + sizeX;
    rightU = static_cast<float>(right) / w;
    if (!readInt(element, "SizeY", sizeY)) {
        std::cout << "[ERROR] Glyph SizeY not defined !" << std::endl;
        return false;
    }
    const int64_t bottom = static_cast<int64_t>(y) + sizeY;
    bottomV = static_cast<float>(bottom) / h;
    if (x < 0 || y < 0 || sizeX <= 0 || sizeY <= 0 || right > imageWidth || bottom > imageHeight) {
        std::cout << "[Warning] Glyph rectangle empty or outside the font image, code: " << value << std::endl;
    }
    return true;
}

}  // namespace korvel
