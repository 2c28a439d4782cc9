#pragma once
// The one kind of program that draws everything. Its GLSL sources must use
// these names:
//   attributes  in_Position (location 0, required), in_Normal (1), in_UV (2)
//   uniforms    projection, modelview, refObject (mat4, required),
//               light, camera (vec3), phong, fogcolor (vec4),
//               fogstart, fogend, time (float), textureSampler (sampler2D)
// A missing optional name is a warning when the program is made; a missing
// required one refuses the program.
//
// The setters upload at once, so the program must be in use (the program
// manager's useProgram). The pointers are not owned: the world keeps the
// camera, light and fog, the drawn object its matrix.

#include "render/ShaderProgram.h"

class Matrix4D;
class Vector4D;

class ShaderProgramBase : public ShaderProgram {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    ShaderProgramBase();

    bool bindAttributes() override;
    bool bindUniforms() override;
    bool checkAttributeBinding() override;
    ~ShaderProgramBase() override = default;
    void dump() override;
    const char* getInstanceClassName() const override { return className; }

    void setMatrixProjection(Matrix4D* matrix);
    void setMatrixView(Matrix4D* matrix);
    void setMatrixObject(Matrix4D* matrix);
    void setCamera(Vector4D* camera);
    void setLight(Vector4D* light);
    void setPhong(Vector4D* phong);
    void setFogColor(Vector4D* color);
    void setFogEnd(float end);
    void setFogStart(float start);
    // Uploads the view matrix again after its owner changed it in place.
    void updateView();
    void setTextureSampler(int unit);
    // Age of the drawn object in seconds.
    void setTimeElapse(float t);

    int getProjectionLocation() const { return projectionLoc; }
    int getModelviewLocation() const { return modelviewLoc; }
    int getObjectLocation() const { return objectLoc; }
    int getCameraLocation() const { return cameraLoc; }
    int getTextureSamplerLocation() const { return textureSamplerLoc; }
    int getLightLocation() const { return lightLoc; }
    int getPhongLocation() const { return phongLoc; }
    int getFogColorLocation() const { return fogColorLoc; }
    int getFogEndLocation() const { return fogEndLoc; }
    int getFogStartLocation() const { return fogStartLoc; }
    int getTimeLocation() const { return timeLoc; }

    Matrix4D* getMatrixProjection() const { return projection; }
    Matrix4D* getMatrixView() const { return view; }
    Matrix4D* getMatrixObject() const { return object; }
    int getTextureSampler() const { return textureSampler; }
    float getFogEnd() const { return fogEnd; }
    float getFogStart() const { return fogStart; }

private:
    int projectionLoc;
    int modelviewLoc;
    int objectLoc;
    int cameraLoc;
    int textureSamplerLoc;
    int lightLoc;
    int phongLoc;
    int fogColorLoc;
    int fogEndLoc;
    int fogStartLoc;
    int timeLoc;

    Matrix4D* projection;
    Matrix4D* view;
    Matrix4D* object;
    Vector4D* camera;
    Vector4D* light;
    int textureSampler;
    Vector4D* phong;
    Vector4D* fogColor;
    float fogEnd;
    float fogStart;
};
