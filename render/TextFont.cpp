#include "render/TextFont.h"

#include "parser/Parser.h"
#include "parser/TextFile.h"
#include "parser/Token.h"
#include "render/TextSign.h"
#include "render/TextureBase.h"
#include "render/TextureManager.h"

#include <sys/stat.h>

#include <iostream>
#include <set>

namespace korvel {

const char* TextFont::className = "TextFont";

namespace {

enum class Reading { read, missing, empty, tooLarge };

Reading readDescriptor(const std::string& file, std::string& text)
{
    struct stat info;
    if (::stat(file.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return Reading::missing;
    }
    if (static_cast<unsigned long long>(info.st_size) > TextFont::maxDescriptorSize) {
        return Reading::tooLarge;
    }
    if (!readTextLines(file, text)) {
        return Reading::missing;
    }
    return text.empty() ? Reading::empty : Reading::read;
}

// The first top-level element of that name, as parsed.
Token* findElement(BaseParserElement* module, const char* name)
{
    module->startAttributes();
    return dynamic_cast<Token*>(module->getNextAttribute(name));
}

bool readInt(Token* element, const char* attribute, int32_t& value)
{
    element->startAttributes();
    return element->getNextAttributeValueInt(attribute, value);
}

}  // namespace

TextFont::TextFont()
    : ascent(0), descent(0), padding(0), imageWidth(0), imageHeight(0), texture(nullptr), shaderProgram(nullptr)
{
}

TextFont::~TextFont()
{
    releaseSigns();
}

bool TextFont::importOFT(std::string name)
{
    const std::string file = name + ".oft";
    std::cout << "[Information] Attempting to open font descriptor: " << file << std::endl;
    std::string text;
    switch (readDescriptor(file, text)) {
    case Reading::missing:
        std::cout << "[ERROR] font descriptor not found" << std::endl;
        return false;
    case Reading::empty:
        std::cout << "[ERROR] font descriptor is empty" << std::endl;
        return false;
    case Reading::tooLarge:
        std::cout << "[ERROR] font descriptor larger than " << maxDescriptorSize << " bytes: " << file << std::endl;
        return false;
    case Reading::read:
        break;
    }
    releaseSigns();
    texture = nullptr;
    Parser parser;
    if (!parser.parse(text)) {
        // Wording kept as the engine has always printed it.
        std::cout << "[ERROR] font descriptor for OFT is illed-formed" << std::endl;
        return false;
    }
    Token* definition = findElement(parser.getModule(), "FontDefinition");
    if (definition == nullptr) {
        std::cout << "[ERROR] font definition is missing in descriptor" << std::endl;
        return false;
    }
    if (!importDefinition(definition)) {
        std::cout << "[ERROR] font definition is illed-formed" << std::endl;
        return false;
    }
    Token* glyphs = findElement(parser.getModule(), "Glyphs");
    if (glyphs == nullptr) {
        std::cout << "[ERROR] Font Glyphs block is missing" << std::endl;
        return false;
    }
    if (!importGlyphsOFT(glyphs)) {
        std::cout << "[ERROR] Font Glyphs block is ill formed" << std::endl;
        return false;
    }
    if (!importTexture()) {
        std::cout << "[ERROR] Texture not included" << std::endl;
        return false;
    }
    return true;
}

bool TextFont::importDefinition(Token* element)
{
    if (element == nullptr) {
        return false;
    }
    std::string name;
    int32_t metrics[5] = {0, 0, 0, 0, 0};
    const char* const attributes[5] = {"Ascent", "Descent", "Padding", "ImageWidth", "ImageHeight"};
    const char* const missing[5] = {"[ERROR] Font ascent not defined !", "[ERROR] Font descent not defined !",
                                    "[ERROR] Font padding not defined !", "[ERROR] Font ImageWidth not defined !",
                                    "[ERROR] Font ImageHeight not defined !"};
    element->startAttributes();
    if (!element->getNextAttributeValueString("Name", name)) {
        std::cout << "[ERROR] Font Name not defined !" << std::endl;
        return false;
    }
    for (int i = 0; i < 5; ++i) {
        if (!readInt(element, attributes[i], metrics[i])) {
            std::cout << missing[i] << std::endl;
            return false;
        }
    }
    // Glyph rectangles are divided by the image size.
    if (metrics[3] <= 0 || metrics[4] <= 0) {
        std::cout << "[ERROR] Font image size must be positive, width: " << metrics[3]
                  << " / height: " << metrics[4] << std::endl;
        return false;
    }
    fontName = name;
    ascent = metrics[0];
    descent = metrics[1];
    padding = metrics[2];
    imageWidth = metrics[3];
    imageHeight = metrics[4];
    return true;
}

bool TextFont::importGlyphsOFT(Token* block)
{
    if (block == nullptr) {
        return false;
    }
    for (BaseParserElement* child : block->getAttributes()) {
        if (child->getName() != "Glyph") {
            continue;
        }
        auto* sign = new TextSign();
        if (!sign->importDefinitionOFT(dynamic_cast<Token*>(child), imageWidth, imageHeight)) {
            delete sign;
            std::cout << "[Error] Glyph is ill defined" << std::endl;
            return false;
        }
        addSign(sign);
    }
    return true;
}

bool TextFont::importTexture()
{
    texture = TextureManager::getInstance()->getTexture(fontName);
    if (texture == nullptr) {
        std::cout << "[ERROR] Font Texture not found:" << fontName << ".png" << std::endl;
        return false;
    }
    const bool sameSize = texture->getWidth() == static_cast<unsigned>(imageWidth) &&
                          texture->getHeight() == static_cast<unsigned>(imageHeight);
    if (!sameSize) {
        std::cout << "[Warning] Font image size " << imageWidth << " x " << imageHeight
                  << " differs from its texture: " << texture->getWidth() << " x " << texture->getHeight()
                  << std::endl;
    }
    return true;
}

TextSign* TextFont::getSign(unsigned char code) const
{
    const auto found = signs.find(code);
    return found != signs.end() ? found->second : nullptr;
}

void TextFont::addSign(TextSign* sign)
{
    if (sign == nullptr) {
        return;
    }
    TextSign*& slot = signs[static_cast<unsigned char>(sign->getCode())];
    if (slot != nullptr && slot != sign) {
        replaced.push_back(slot);
    }
    slot = sign;
}

void TextFont::releaseSigns()
{
    // A sign stored twice (its code changed between two addSign) is deleted
    // once.
    std::set<TextSign*> distinct(replaced.begin(), replaced.end());
    for (const auto& entry : signs) {
        distinct.insert(entry.second);
    }
    for (TextSign* sign : distinct) {
        delete sign;
    }
    signs.clear();
    replaced.clear();
}

}  // namespace korvel
