#pragma once
// One character of a bitmap font: its code and the rectangle of its glyph in
// the font's atlas, in texture coordinates (u to the right, v downwards: row
// 0 of the image is v = 0, as the image is uploaded first row first).
//
// A new sign covers the whole atlas under code 0.

#include "core/ISerializable.h"

namespace korvel {

class Token;

class TextSign : public ISerializable {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    TextSign();

    // Reads one "Glyph" element of a font descriptor: "Code", "X", "Y",
    // "SizeX", "SizeY" (pixels), divided by the atlas size. False, with the
    // line naming the first attribute missing (or not a number), when one
    // is; a missing "Y" is reported under "X", as it always was. A code that
    // fits no byte is refused; a rectangle outside the atlas is kept with a
    // warning (it samples the wrong pixels, nothing worse).
    bool importDefinitionOFT(Token* element, int imageWidth, int imageHeight);

    signed char getCode() const { return code; }
    void setCode(signed char value) { code = value; }
    float getLeftU() const { return leftU; }
    float getTopV() const { return topV; }
    float getRightU() const { return rightU; }
    float getBottomV() const { return bottomV; }
    void setRectangle(float left, float top, float right, float bottom);

private:
    signed char code;
    float leftU;
    float topV;
    float rightU;
    float bottomV;
};

}  // namespace korvel
