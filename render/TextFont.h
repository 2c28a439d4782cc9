#pragma once
// A bitmap font: one atlas image (a texture of the texture manager, named
// after the font) and a descriptor in the definition-file syntax, name +
// ".oft", that gives the metrics and, per character, the rectangle of its
// glyph in the atlas:
//
//   <FontDefinition> Name, Ascent, Descent, Padding, ImageWidth, ImageHeight
//   <Glyphs> one <Glyph> per character: Code, X, Y, SizeX, SizeY (pixels)
//
// Each rectangle is the character's whole advance cell, Ascent + Descent
// pixels high with the baseline Ascent pixels below its top, so that cells
// laid side by side at their pixel sizes give the font's spacing. Padding
// is the gap kept between cells in the atlas; text layout does not use it.
//
// The font owns its signs. addSign under a code already held points the
// entry at the new sign and leaves the old one in place: the font keeps such
// replaced signs aside and deletes them with the others (releaseSigns), so
// nothing leaks, and a pointer handed out earlier stays valid until then.
// The atlas belongs to the texture manager and the program to the program
// manager. Main thread only; importTexture needs the GL context.

#include "core/ISerializable.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class ShaderProgramBase;

namespace korvel {

class TextSign;
class TextureBase;
class Token;

class TextFont : public ISerializable {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // A descriptor larger than this is refused unread: the 256 codes of a
    // font take a few tens of kilobytes, and every element of a parsed file
    // costs memory and a trace line.
    static constexpr std::size_t maxDescriptorSize = 1024u * 1024u;

    TextFont();
    TextFont(const TextFont&) = delete;
    TextFont& operator=(const TextFont&) = delete;
    ~TextFont() override;

    // Reads name + ".oft" (name may hold a directory) and then the atlas;
    // the signs of an earlier import are released first. False, with the
    // line saying which step failed, on any fault.
    bool importOFT(std::string name);
    // The metrics of a "FontDefinition" element; kept only when all six are
    // there and the image size is positive.
    bool importDefinition(Token* element);
    // One sign per "Glyph" element of the block, against the image size read
    // before; the first ill-defined glyph stops the import.
    bool importGlyphsOFT(Token* block);
    // The atlas: the texture manager's texture named after the font.
    bool importTexture();

    // Null when the code has no glyph.
    TextSign* getSign(unsigned char code) const;
    // Takes ownership; null is ignored.
    void addSign(TextSign* sign);
    void releaseSigns();
    const std::map<unsigned char, TextSign*>& getSigns() const { return signs; }

    void setShaderProgram(ShaderProgramBase* program) { shaderProgram = program; }
    ShaderProgramBase* getShaderProgram() const { return shaderProgram; }
    TextureBase* getTexture() const { return texture; }

    const std::string& getName() const { return fontName; }
    int32_t getAscent() const { return ascent; }
    int32_t getDescent() const { return descent; }
    int32_t getPadding() const { return padding; }
    int32_t getImageWidth() const { return imageWidth; }
    int32_t getImageHeight() const { return imageHeight; }

private:
    std::string fontName;
    int32_t ascent;
    int32_t descent;
    int32_t padding;
    int32_t imageWidth;
    int32_t imageHeight;
    TextureBase* texture;
    ShaderProgramBase* shaderProgram;
    std::map<unsigned char, TextSign*> signs;
    // Signs displaced by addSign, deleted with the rest.
    std::vector<TextSign*> replaced;
};

}  // namespace korvel
