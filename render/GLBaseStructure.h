#pragma once
// The geometry of one drawable object on the graphics card: a vertex array
// object, one interleaved vertex buffer of GPattern records (position at
// attribute 0, normal at 1, texture coordinates at 2, 32 bytes a vertex) and
// one index buffer, drawn as indexed triangles.
//
// The index buffer is deliberately left out of the vertex array state (the
// array is unbound before the index buffer is made), so draw binds it itself.

struct GPattern;
class ShaderProgramBase;

class GLBaseStructure {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Fetches the buffer and vertex-array entry points; false at the first
    // one the current context does not offer.
    static bool init();

    GLBaseStructure();
    GLBaseStructure(const GLBaseStructure&) = delete;
    GLBaseStructure& operator=(const GLBaseStructure&) = delete;
    virtual ~GLBaseStructure();
    virtual const char* getInstanceClassName() const { return className; }

    // Takes ownership of both arrays (released with delete[]) and uploads
    // them; whatever the structure held before is released first.
    bool make(GPattern* vertices, int vertexCount, unsigned* indices, int indexCount);
    void draw();
    // Uploads the index array again after its owner reordered it in place;
    // the count must be the one given to make.
    bool reorganize();

    // Both take effect at the next make.
    void setVerticesCanChanged();
    void setIndicesCanChanged();

    void releaseVBOs();
    void releaseVAO();
    void releaseBuffers();
    bool clear();

    void setShaderProgram(ShaderProgramBase* program) { shaderProgram = program; }
    ShaderProgramBase* getShaderProgram() const { return shaderProgram; }
    GPattern* getVertices() const { return vertices; }
    unsigned* getIndices() const { return indices; }
    int getIndexCount() const { return indexCount; }
    unsigned getVertexArrayRaw() const { return vao; }
    unsigned getVertexBufferRaw() const { return vbo; }
    unsigned getIndexBufferRaw() const { return ibo; }
    unsigned getVertexUsage() const { return vertexUsage; }
    unsigned getIndexUsage() const { return indexUsage; }

private:
    void releaseArrays();

    unsigned vao;
    unsigned vbo;
    unsigned ibo;
    int indexCount;
    GPattern* vertices;
    unsigned* indices;
    ShaderProgramBase* shaderProgram;
    unsigned vertexUsage;
    unsigned indexUsage;
};
