#include "render/TextureManager.h"

#include "render/GLEntryPoint.h"
#include "render/TextureBase.h"

#include <iostream>
#include <memory>

namespace korvel {

namespace {

PFNGLGENERATEMIPMAPPROC pglGenerateMipmap = nullptr;
PFNGLACTIVETEXTUREPROC pglActiveTexture = nullptr;

}  // namespace

const char* TextureManager::className = "TextureManager";

bool TextureManager::init()
{
    if (!fetchEntryPoint(pglGenerateMipmap, "glGenerateMipmap")) {
        std::cout << "[ERROR] generateMipmap function not found" << std::endl;
        return false;
    }
    return fetchEntryPoint(pglActiveTexture, "glActiveTexture");
}

TextureManager* TextureManager::getInstance()
{
    static std::unique_ptr<TextureManager> instance(new TextureManager());
    return instance.get();
}

void TextureManager::glGenerateMipmap(unsigned target)
{
    if (pglGenerateMipmap != nullptr) {
        pglGenerateMipmap(target);
    }
}

void TextureManager::glActiveTexture(unsigned unit)
{
    if (pglActiveTexture != nullptr) {
        pglActiveTexture(unit);
    }
}

TextureManager::TextureManager() = default;

TextureManager::~TextureManager()
{
    for (auto& [name, texture] : textures) {
        delete texture;
    }
}

TextureBase* TextureManager::getTexture(const std::string& name)
{
    const auto found = textures.find(name);
    if (found != textures.end()) {
        return found->second;
    }
    return createTextureBase(name);
}

TextureBase* TextureManager::createTextureBase(const std::string& name)
{
    const std::string file = path + name + ".png";
    auto texture = std::make_unique<TextureBase>();
    if (!texture->load(file)) {
        std::cout << "[ERROR] Texture not loaded:" << name << std::endl;
        std::cout << "[ERROR] filename information:" << file << std::endl;
        // Remembered as failed; a texture already held under the name stays.
        textures.emplace(name, nullptr);
        return nullptr;
    }
    TextureBase* loaded = texture.release();
    // A direct call for a name already held replaces the old texture.
    auto& slot = textures[name];
    delete slot;
    slot = loaded;
    return loaded;
}

void TextureManager::releaseTextures() {}

}  // namespace korvel
