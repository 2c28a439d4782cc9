#pragma once
// One GLSL stage. The text comes from setSource or from setFileName + read;
// make hands it to the driver and compiles it. The GL shader object lives as
// long as the Shader. Its kinds are ShaderVertex and ShaderFragment; a bare
// Shader has no type and never compiles.

#include <string>

class Shader {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Fetches the entry points this class uses; false at the first one the
    // current context does not offer. Needs a current GL context.
    static bool init();

    Shader();
    explicit Shader(std::string source);
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;

    virtual ~Shader();
    virtual void setSource(std::string source);
    virtual void setFileName(std::string name);
    // Appends the file's lines to the source without clearing it first: a
    // second read appends a second copy. That is deliberate and kept.
    virtual bool read();
    virtual bool make();
    virtual const char* getInstanceClassName() const { return className; }

    unsigned getShaderRaw() const { return handle; }
    unsigned getShaderType() const { return type; }
    std::string& getSource() { return source; }
    const std::string& getFileName() const { return fileName; }

protected:
    unsigned handle;
    unsigned type;
    std::string source;
    std::string fileName;

private:
    void releaseHandle();
};
