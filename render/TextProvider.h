#pragma once
// Turns a string into one drawable object: a Shape3D of textured quads, one
// per character, that samples the font's atlas with the font's program.
//
//   TextProvider provider(&font, 0.5f);            // lines 0.5 world units high
//   Shape3D* banner = provider.createMessage("Ready");   // made, caller owns
//   banner->getMatrixObjectChange()->setPosition(0, 2, -2);
//   banner->changeMatrixObject();
//   world->addElement(banner);
//
// Layout, in the object's own frame: text reads along +x and faces +z
// (seen from +z its triangles are counter-clockwise). The first line's
// baseline lies on y = 0; each "\n" starts a new line one line height lower.
// The origin is the left end, the middle or the right end of each line,
// after the alignment. Characters are the font's advance cells laid side by
// side, scaled so that Ascent + Descent pixels make one line height.
//
// A code without a glyph is drawn with the fallback sign ('?' unless set
// otherwise), else with the blank's; when the font has neither, it leaves a
// gap of half a line height.
//
// The object is of the blended element kind (glyph edges are translucent),
// references the font's atlas and program but not the font, which may go
// once the messages are made. Making an object needs the GL context; layout
// and measure do not.

#include "core/Object.h"

#include <cstddef>
#include <string>

namespace korvel {

class Shape;
class Shape3D;
class TextFont;
class TextSign;

class TextProvider : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    enum class Alignment { left, centre, right };

    // font is not owned and may be null until setFont.
    explicit TextProvider(TextFont* font = nullptr, float lineHeight = 1.0f);

    void setFont(TextFont* value) { font = value; }
    TextFont* getFont() const { return font; }
    // World units from the bottom of a line's cells to their top.
    void setLineHeight(float value) { lineHeight = value; }
    float getLineHeight() const { return lineHeight; }
    void setAlignment(Alignment value) { alignment = value; }
    Alignment getAlignment() const { return alignment; }
    void setFallbackCode(unsigned char code) { fallbackCode = code; }

    // The sign drawn for code (its own or a fallback), null when none.
    const TextSign* findSign(unsigned char code) const;
    // Width of the widest line, in world units.
    float measure(const std::string& text) const;
    // Appends the quads of text to shape (two textured triangles each) and
    // returns how many were added. Nothing without a font.
    std::size_t layout(const std::string& text, Shape& shape) const;

    // A new made object holding text (the caller owns it); null, with a
    // line, without a font or when the object cannot be made.
    Shape3D* createMessage(const std::string& text) const;
    // Lays text out again into an object made by createMessage and makes it
    // again; its matrix and settings stay.
    bool updateMessage(Shape3D& message, const std::string& text) const;

private:
    // World units per atlas pixel.
    float scale() const;
    // World units the pen moves for one character drawn with sign (null:
    // no sign at all).
    float advance(const TextSign* sign) const;
    // Width of one line of text (no line end inside), in world units.
    float lineWidth(const std::string& text, std::size_t begin, std::size_t end) const;

    TextFont* font;
    float lineHeight;
    Alignment alignment;
    unsigned char fallbackCode;
};

}  // namespace korvel
