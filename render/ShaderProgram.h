#pragma once
// A linked program of one vertex and one fragment stage. Abstract: the
// subclass names the attributes (bound before linking) and looks up its
// uniforms (after linking); ShaderProgramBase is the engine's one concrete
// kind. Each stage is either owned (deleted with the program) or only linked
// (left to the caller), as the setter used says.

#include <string>

class ShaderVertex;
class ShaderFragment;

class ShaderProgram {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Fetches the entry points of programs and uniforms; false at the first
    // one the current context does not offer.
    static bool init();

    ShaderProgram();
    ShaderProgram(const ShaderProgram&) = delete;
    ShaderProgram& operator=(const ShaderProgram&) = delete;

    virtual bool bindAttributes() = 0;  // the base body answers false
    virtual bool bindUniforms() = 0;
    virtual bool checkAttributeBinding();
    // Unbinds whatever program is current, not only this one.
    virtual ~ShaderProgram();
    virtual void dump();
    virtual const char* getInstanceClassName() const { return className; }

    void setVertexOwned(ShaderVertex* stage);
    void setFragmentOwned(ShaderFragment* stage);
    void setVertex(ShaderVertex* stage);
    void setFragment(ShaderFragment* stage);
    // Delete the stage even when it is only linked.
    void releaseVertex();
    void releaseFragment();

    ShaderVertex* getVertex() const { return vertex; }
    ShaderFragment* getFragment() const { return fragment; }
    bool isVertexOwned() const { return vertexOwned; }
    bool isFragmentOwned() const { return fragmentOwned; }
    unsigned getProgramRaw() const { return program; }

    bool make();
    void use();
    void unUse();

    int getUniformLocation(const char* name);
    int getAttribLocation(const char* name);
    void bindAttribLocation(unsigned index, const char* name);

    // Act on the program in use.
    static void uniformMatrix4fv(int location, int count, unsigned char transpose, const float* values);
    static void uniform1f(int location, float value);
    static void uniform1i(int location, int value);
    static void uniform3fv(int location, int count, const float* values);
    static void uniform4fv(int location, int count, const float* values);

    // Name under which the manager registered the program.
    std::string codeName;
    // Switches on the diagnostic printing of the bindings.
    bool isVerbose;

protected:
    unsigned program;
    bool vertexOwned;
    ShaderVertex* vertex;
    bool fragmentOwned;
    ShaderFragment* fragment;

private:
    void dropVertex();
    void dropFragment();
    void detach(unsigned shader);
};
