#include "render/TextProvider.h"

#include "core/Vector4D.h"
#include "geometry/Shape.h"
#include "geometry/TriangleTextured.h"
#include "render/TextFont.h"
#include "render/TextSign.h"
#include "render/TextureBase.h"
#include "scene/Shape3D.h"

#include <algorithm>
#include <cstdint>
#include <iostream>

namespace korvel {

const char* TextProvider::className = "TextProvider";

namespace {

// Width and height of a sign's rectangle in atlas pixels.
float pixelWidth(const TextSign& sign, const TextFont& font)
{
    return (sign.getRightU() - sign.getLeftU()) * static_cast<float>(font.getImageWidth());
}

float pixelHeight(const TextSign& sign, const TextFont& font)
{
    return (sign.getBottomV() - sign.getTopV()) * static_cast<float>(font.getImageHeight());
}

// Pixels from the bottom of a line's cells to their top: the font's ascent
// and descent, or the atlas height for a font that gives none.
double linePixels(const TextFont& font)
{
    // In 64 bits: two large 32-bit metrics must not wrap.
    const int64_t sum = static_cast<int64_t>(font.getAscent()) + font.getDescent();
    if (sum > 0) {
        return static_cast<double>(sum);
    }
    return font.getImageHeight() > 0 ? static_cast<double>(font.getImageHeight()) : 1.0;
}

// One glyph cell of width w and height h hanging from (x, top), facing +z:
// two textured triangles, counter-clockwise seen from the front, the
// glyph's top row (its smaller v) at the top.
void addCell(Shape& shape, const TextSign& sign, float x, float top, float w, float h)
{
    const Vector4D normal(0.0f, 0.0f, 1.0f, 0.0f);
    const Vector4D uv[4] = {{sign.getLeftU(), sign.getBottomV(), 0.0f, 0.0f},
                            {sign.getRightU(), sign.getBottomV(), 0.0f, 0.0f},
                            {sign.getRightU(), sign.getTopV(), 0.0f, 0.0f},
                            {sign.getLeftU(), sign.getTopV(), 0.0f, 0.0f}};
    TriangleTextured::addShapeQuad(&shape, Vector4D(x, top - h, 0.0f, 1.0f), Vector4D(x + w, top - h, 0.0f, 1.0f),
                                   Vector4D(x + w, top, 0.0f, 1.0f), Vector4D(x, top, 0.0f, 1.0f), nullptr, false,
                                   &normal, &normal, &normal, &normal, &uv[0], &uv[1], &uv[2], &uv[3]);
}

}  // namespace

TextProvider::TextProvider(TextFont* textFont, float height)
    : font(textFont), lineHeight(height), alignment(Alignment::left), fallbackCode('?')
{
}

const TextSign* TextProvider::findSign(unsigned char code) const
{
    if (font == nullptr) {
        return nullptr;
    }
    for (unsigned char candidate : {code, fallbackCode, static_cast<unsigned char>(' ')}) {
        if (const TextSign* sign = font->getSign(candidate)) {
            return sign;
        }
    }
    return nullptr;
}

float TextProvider::scale() const
{
    return font != nullptr ? static_cast<float>(static_cast<double>(lineHeight) / linePixels(*font)) : 0.0f;
}

float TextProvider::advance(const TextSign* sign) const
{
    return sign != nullptr ? std::max(pixelWidth(*sign, *font), 0.0f) * scale() : 0.5f * lineHeight;
}

float TextProvider::lineWidth(const std::string& text, std::size_t begin, std::size_t end) const
{
    float width = 0.0f;
    for (std::size_t i = begin; i < end; ++i) {
        width += advance(findSign(static_cast<unsigned char>(text[i])));
    }
    return width;
}

float TextProvider::measure(const std::string& text) const
{
    float widest = 0.0f;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        widest = std::max(widest, lineWidth(text, begin, end));
        if (end == text.size()) {
            return widest;
        }
        begin = end + 1;
    }
}

std::size_t TextProvider::layout(const std::string& text, Shape& shape) const
{
    if (font == nullptr) {
        return 0;
    }
    const float perPixel = scale();
    const double cell = linePixels(*font);
    const float top = static_cast<float>(std::clamp(static_cast<double>(font->getAscent()), 0.0, cell)) * perPixel;
    std::size_t quads = 0;
    float baseline = 0.0f;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const float width = lineWidth(text, begin, end);
        float x = alignment == Alignment::left ? 0.0f : (alignment == Alignment::centre ? -0.5f * width : -width);
        for (std::size_t i = begin; i < end; ++i) {
            const TextSign* sign = findSign(static_cast<unsigned char>(text[i]));
            if (sign != nullptr) {
                const float w = pixelWidth(*sign, *font) * perPixel;
                const float h = pixelHeight(*sign, *font) * perPixel;
                if (w > 0.0f && h > 0.0f) {
                    addCell(shape, *sign, x, baseline + top, w, h);
                    ++quads;
                }
            }
            x += advance(sign);
        }
        if (end == text.size()) {
            return quads;
        }
        begin = end + 1;
        baseline -= lineHeight;
    }
}

Shape3D* TextProvider::createMessage(const std::string& text) const
{
    if (font == nullptr) {
        std::cout << "[ERROR] TextProvider has no font to write with" << std::endl;
        return nullptr;
    }
    if (font->getShaderProgram() == nullptr) {
        std::cout << "[Warning] TextProvider font has no program: its messages draw nothing" << std::endl;
    }
    auto* message = new Shape3D();
    message->setShaderProgram(font->getShaderProgram());
    message->setTexture(font->getTexture());
    message->setElementKind(IObject3D::kindBlended);
    if (!updateMessage(*message, text)) {
        delete message;
        return nullptr;
    }
    return message;
}

bool TextProvider::updateMessage(Shape3D& message, const std::string& text) const
{
    if (message.getShape() == nullptr) {
        message.setShape(new Shape());
    }
    message.getShape()->clear();
    layout(text, *message.getShape());
    message.updateLimits();
    if (!message.make()) {
        std::cout << "[ERROR] TextProvider message cannot be made: " << text << std::endl;
        return false;
    }
    return true;
}

}  // namespace korvel
