#include "render/ShaderProgramBase.h"

#include "core/Matrix4D.h"
#include "core/Vector4D.h"

#include <iostream>

const char* ShaderProgramBase::className = "ShaderProgramBase";

namespace {

const float* payload(const Matrix4D* matrix)
{
    return matrix != nullptr ? matrix->m : nullptr;
}

const float* payload(const Vector4D* vector)
{
    return vector != nullptr ? &vector->x : nullptr;
}

}  // namespace

ShaderProgramBase::ShaderProgramBase()
    : projectionLoc(0),
      modelviewLoc(0),
      objectLoc(0),
      cameraLoc(0),
      textureSamplerLoc(0),
      lightLoc(0),
      phongLoc(0),
      fogColorLoc(0),
      fogEndLoc(0),
      fogStartLoc(0),
      timeLoc(0),
      projection(nullptr),
      view(nullptr),
      object(nullptr),
      camera(nullptr),
      light(nullptr),
      textureSampler(0),
      phong(nullptr),
      fogColor(nullptr),
      fogEnd(100.0f),
      fogStart(10.0f)
{
}

bool ShaderProgramBase::bindAttributes()
{
    bindAttribLocation(0, "in_Position");
    bindAttribLocation(1, "in_Normal");
    bindAttribLocation(2, "in_UV");
    return true;
}

bool ShaderProgramBase::bindUniforms()
{
    projectionLoc = getUniformLocation("projection");
    if (projectionLoc == -1) {
        std::cout << "[Error] binding of projection failed" << std::endl;
        return false;
    }
    modelviewLoc = getUniformLocation("modelview");
    if (modelviewLoc == -1) {
        std::cout << "[Error] binding of modelview failed" << std::endl;
        return false;
    }
    objectLoc = getUniformLocation("refObject");
    if (objectLoc == -1) {
        std::cout << "[Error] binding of matrix object failed" << std::endl;
        return false;
    }
    struct Optional {
        int& location;
        const char* name;
        const char* warning;
    };
    const Optional optional[] = {
        {lightLoc, "light", "[Warning] binding of light vector failed"},
        {timeLoc, "time", "[Warning] binding of time elapse failed"},
        {cameraLoc, "camera", "[Warning] binding of camera vector failed"},
        {textureSamplerLoc, "textureSampler", "[Warning] binding of textureSampler int failed"},
        {phongLoc, "phong", "[Warning] binding of phong vector failed"},
        {fogColorLoc, "fogcolor", "[Warning] binding of fog vector failed"},
        {fogStartLoc, "fogstart", "[Warning] binding of fog start failed"},
        {fogEndLoc, "fogend", "[Warning] binding of fog end failed"},
    };
    for (const Optional& uniform : optional) {
        uniform.location = getUniformLocation(uniform.name);
        if (uniform.location == -1) {
            std::cout << uniform.warning << std::endl;
        }
    }
    if (isVerbose) {
        std::cout << "--------------------------------------------------- Start values At binding "
                     "---------------------------"
                  << std::endl;
        dump();
        std::cout << "--------------------------------------------------- End values At binding "
                     "---------------------------"
                  << std::endl;
    }
    return true;
}

bool ShaderProgramBase::checkAttributeBinding()
{
    const int position = getAttribLocation("in_Position");
    const int normal = getAttribLocation("in_Normal");
    const int uv = getAttribLocation("in_UV");
    if (isVerbose) {
        std::cout << "[Information] Attrib location for in_Position: " << position << std::endl;
        std::cout << "[Information] Attrib location for in_Normal: " << normal << std::endl;
        std::cout << "[Information] Attrib location for in_UV: " << uv << std::endl;
    }
    if (position != 0) {
        std::cout << "[Error] binding of attribute in_Position failed" << std::endl;
        return false;
    }
    // Flat programs without normals or texture coordinates are acceptable.
    if (normal != 1) {
        std::cout << "[Warning] binding of attribute in_Normal failed" << std::endl;
        return true;
    }
    if (uv != 2) {
        std::cout << "[Warning] binding of attribute in_UV failed" << std::endl;
    }
    return true;
}

void ShaderProgramBase::dump()
{
    ShaderProgram::dump();
    std::cout << "projectMatrixLoc: " << projectionLoc << std::endl;
    std::cout << "modelviewMatrixLoc: " << modelviewLoc << std::endl;
    std::cout << "objectMatrixLoc: " << objectLoc << std::endl;
    std::cout << "lightVecLoc: " << lightLoc << std::endl;
    std::cout << "cameraVecLoc: " << cameraLoc << std::endl;
    std::cout << "phongVecLoc: " << phongLoc << std::endl;
    std::cout << "textureSamplerLoc: " << textureSamplerLoc << std::endl;
    std::cout << "fogVecLoc: " << fogColorLoc << std::endl;
    std::cout << "fogEndLoc: " << fogEndLoc << std::endl;
    std::cout << "fogStartLoc: " << fogStartLoc << std::endl;
    std::cout << "timeElapseLoc: " << timeLoc << std::endl;
    std::cout << "pProjection: " << static_cast<const void*>(projection) << std::endl;
    std::cout << "pView: " << static_cast<const void*>(view) << std::endl;
    std::cout << "pMObject: " << static_cast<const void*>(object) << std::endl;
    std::cout << "pVecLight: " << static_cast<const void*>(light) << std::endl;
    std::cout << "pVecCamera: " << static_cast<const void*>(camera) << std::endl;
    std::cout << "textureSampler: " << textureSampler << std::endl;
    std::cout << "pVecPhong: " << static_cast<const void*>(phong) << std::endl;
    std::cout << "pVecFogColor: " << static_cast<const void*>(fogColor) << std::endl;
    std::cout << "fogEnd: " << fogEnd << std::endl;
    std::cout << "fogStart: " << fogStart << std::endl;
}

// The uploads do not check the location (the driver ignores -1); a null
// pointer is stored but never handed to the driver.

void ShaderProgramBase::setMatrixProjection(Matrix4D* matrix)
{
    projection = matrix;
    if (matrix != nullptr) {
        uniformMatrix4fv(projectionLoc, 1, 0, payload(matrix));
    }
}

void ShaderProgramBase::setMatrixView(Matrix4D* matrix)
{
    view = matrix;
    updateView();
}

void ShaderProgramBase::updateView()
{
    if (view != nullptr) {
        uniformMatrix4fv(modelviewLoc, 1, 0, payload(view));
    }
}

void ShaderProgramBase::setMatrixObject(Matrix4D* matrix)
{
    object = matrix;
    if (matrix != nullptr) {
        uniformMatrix4fv(objectLoc, 1, 0, payload(matrix));
    }
}

void ShaderProgramBase::setCamera(Vector4D* value)
{
    camera = value;
    if (value != nullptr) {
        uniform3fv(cameraLoc, 1, payload(value));
    }
}

void ShaderProgramBase::setLight(Vector4D* value)
{
    light = value;
    if (value != nullptr) {
        uniform3fv(lightLoc, 1, payload(value));
    }
}

void ShaderProgramBase::setPhong(Vector4D* value)
{
    phong = value;
    if (value != nullptr) {
        uniform4fv(phongLoc, 1, payload(value));
    }
}

void ShaderProgramBase::setFogColor(Vector4D* value)
{
    fogColor = value;
    if (value != nullptr) {
        uniform4fv(fogColorLoc, 1, payload(value));
    }
}

void ShaderProgramBase::setFogEnd(float end)
{
    fogEnd = end;
    uniform1f(fogEndLoc, end);
}

void ShaderProgramBase::setFogStart(float start)
{
    fogStart = start;
    uniform1f(fogStartLoc, start);
}

void ShaderProgramBase::setTextureSampler(int unit)
{
    textureSampler = unit;
    if (textureSamplerLoc == -1) {
        std::cout << "[Warning] attempt to change unmapped texture sampler in shaderprogram" << std::endl;
        return;
    }
    uniform1i(textureSamplerLoc, unit);
}

void ShaderProgramBase::setTimeElapse(float t)
{
    if (timeLoc != -1) {
        uniform1f(timeLoc, t);
    } else if (t != 0.0f) {
        std::cout << "ERREUR" << std::endl;
    }
}
