#include "render/GLBaseStructure.h"

#include "geometry/GPattern.h"
#include "render/GLEntryPoint.h"

#include <cstdint>
#include <iostream>

namespace {

PFNGLGENBUFFERSPROC pglGenBuffers = nullptr;
PFNGLGENVERTEXARRAYSPROC pglGenVertexArrays = nullptr;
PFNGLDELETEVERTEXARRAYSPROC pglDeleteVertexArrays = nullptr;
PFNGLBINDVERTEXARRAYPROC pglBindVertexArray = nullptr;
PFNGLBUFFERDATAPROC pglBufferData = nullptr;
PFNGLBINDBUFFERPROC pglBindBuffer = nullptr;
PFNGLBUFFERSUBDATAPROC pglBufferSubData = nullptr;
PFNGLENABLEVERTEXATTRIBARRAYPROC pglEnableVertexAttribArray = nullptr;
PFNGLDISABLEVERTEXATTRIBARRAYPROC pglDisableVertexAttribArray = nullptr;
PFNGLVERTEXATTRIBPOINTERPROC pglVertexAttribPointer = nullptr;
PFNGLDELETEBUFFERSPROC pglDeleteBuffers = nullptr;
bool entryPointsReady = false;

const void* byteOffset(std::uintptr_t offset)
{
    return reinterpret_cast<const void*>(offset);
}

}  // namespace

const char* GLBaseStructure::className = "GLBaseStructure";

bool GLBaseStructure::init()
{
    using korvel::fetchEntryPoint;
    entryPointsReady = fetchEntryPoint(pglGenBuffers, "glGenBuffers")
        && fetchEntryPoint(pglGenVertexArrays, "glGenVertexArrays")
        && fetchEntryPoint(pglDeleteVertexArrays, "glDeleteVertexArrays")
        && fetchEntryPoint(pglBindVertexArray, "glBindVertexArray")
        && fetchEntryPoint(pglBufferData, "glBufferData")
        && fetchEntryPoint(pglBindBuffer, "glBindBuffer")
        && fetchEntryPoint(pglBufferSubData, "glBufferSubData")
        && fetchEntryPoint(pglEnableVertexAttribArray, "glEnableVertexAttribArray")
        && fetchEntryPoint(pglDisableVertexAttribArray, "glDisableVertexAttribArray")
        && fetchEntryPoint(pglVertexAttribPointer, "glVertexAttribPointer")
        && fetchEntryPoint(pglDeleteBuffers, "glDeleteBuffers");
    return entryPointsReady;
}

GLBaseStructure::GLBaseStructure()
    : vao(0),
      vbo(0),
      ibo(0),
      indexCount(0),
      vertices(nullptr),
      indices(nullptr),
      shaderProgram(nullptr),
      vertexUsage(GL_STATIC_DRAW),
      indexUsage(GL_STATIC_DRAW)
{
}

GLBaseStructure::~GLBaseStructure()
{
    releaseBuffers();
}

void GLBaseStructure::releaseArrays()
{
    delete[] vertices;
    vertices = nullptr;
    delete[] indices;
    indices = nullptr;
}

bool GLBaseStructure::make(GPattern* newVertices, int vertexCount, unsigned* newIndices, int newIndexCount)
{
    releaseBuffers();
    vertices = newVertices;
    indices = newIndices;
    indexCount = newIndexCount < 0 ? 0 : newIndexCount;
    if (!entryPointsReady) {
        // Without its entry points the structure keeps the arrays and draws
        // nothing.
        std::cout << "[ERROR] vertex buffers used before their OpenGL functions were initiated" << std::endl;
        indexCount = 0;
        return false;
    }
    const GLsizeiptr vertexBytes = vertexCount > 0 ? static_cast<GLsizeiptr>(vertexCount) * sizeof(GPattern) : 0;
    const GLsizeiptr indexBytes = static_cast<GLsizeiptr>(indexCount) * sizeof(unsigned);

    pglGenVertexArrays(1, &vao);
    pglBindVertexArray(vao);

    pglGenBuffers(1, &vbo);
    pglBindBuffer(GL_ARRAY_BUFFER, vbo);
    pglBufferData(GL_ARRAY_BUFFER, vertexBytes, vertices, vertexUsage);

    constexpr GLsizei stride = sizeof(GPattern);
    pglVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, stride, byteOffset(offsetof(GPattern, x)));
    pglEnableVertexAttribArray(0);
    pglVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, stride, byteOffset(offsetof(GPattern, nx)));
    pglEnableVertexAttribArray(1);
    pglVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, stride, byteOffset(offsetof(GPattern, u)));
    pglEnableVertexAttribArray(2);

    pglBindBuffer(GL_ARRAY_BUFFER, 0);
    pglBindVertexArray(0);

    pglGenBuffers(1, &ibo);
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ibo);
    pglBufferData(GL_ELEMENT_ARRAY_BUFFER, indexBytes, indices, indexUsage);
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    return true;
}

void GLBaseStructure::draw()
{
    if (vao == 0) {
        return;
    }
    pglBindVertexArray(vao);
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ibo);
    glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_INT, nullptr);
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    pglBindVertexArray(0);
    // Leaves attribute 0 of the default vertex array state off, as every
    // draw before it did.
    pglDisableVertexAttribArray(0);
}

bool GLBaseStructure::reorganize()
{
    if (ibo == 0 || indices == nullptr) {
        return true;
    }
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ibo);
    pglBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(indexCount) * sizeof(unsigned), indices);
    pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    return true;
}

void GLBaseStructure::setVerticesCanChanged()
{
    vertexUsage = GL_DYNAMIC_DRAW;
}

void GLBaseStructure::setIndicesCanChanged()
{
    indexUsage = GL_DYNAMIC_DRAW;
}

void GLBaseStructure::releaseVBOs()
{
    if (vbo != 0 && pglDeleteBuffers != nullptr) {
        pglBindBuffer(GL_ARRAY_BUFFER, 0);
        pglDeleteBuffers(1, &vbo);
    }
    vbo = 0;
    if (ibo != 0 && pglDeleteBuffers != nullptr) {
        pglBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        pglDeleteBuffers(1, &ibo);
    }
    ibo = 0;
}

void GLBaseStructure::releaseVAO()
{
    if (vao != 0 && pglDeleteVertexArrays != nullptr) {
        pglBindVertexArray(vao);
        // Attribute 2 is left enabled; deleting the array drops it anyway.
        pglDisableVertexAttribArray(0);
        pglDisableVertexAttribArray(1);
        pglBindVertexArray(0);
        pglDeleteVertexArrays(1, &vao);
    }
    vao = 0;
}

void GLBaseStructure::releaseBuffers()
{
    releaseArrays();
    releaseVBOs();
    releaseVAO();
}

bool GLBaseStructure::clear()
{
    releaseBuffers();
    return true;
}
