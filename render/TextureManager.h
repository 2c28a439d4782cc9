#pragma once
// Loads each PNG texture once, on the first request by name, and keeps it
// for the rest of the run. A name whose file failed is remembered as failed:
// later requests answer null at once, without decoding or logging again.
// Also keeps the two texture entry points above GL 1.1 that textures need.

#include "core/Object.h"

#include <map>
#include <string>
#include <utility>

namespace korvel {

class TextureBase;

class TextureManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Fetches "glGenerateMipmap" then "glActiveTexture"; false when either is
    // missing. Does not create the singleton.
    static bool init();
    // Created on the first call; lives until the end of the run.
    static TextureManager* getInstance();

    static void glGenerateMipmap(unsigned target);
    static void glActiveTexture(unsigned unit);

    TextureManager();
    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;
    ~TextureManager() override;

    // Directory of the textures, with its trailing separator.
    void setPath(std::string directory) { path = std::move(directory); }
    std::string getPath() const { return path; }

    // The texture of that name (directory + name + ".png"), or null when the
    // file cannot be loaded.
    TextureBase* getTexture(const std::string& name);
    TextureBase* createTextureBase(const std::string& name);
    // Textures live until the manager goes; this is a no-op.
    void releaseTextures();
    const std::map<std::string, TextureBase*>& getTextures() const { return textures; }

private:
    std::string path;
    std::map<std::string, TextureBase*> textures;
};

}  // namespace korvel
