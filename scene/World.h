#pragma once
// The scene: its named objects, the camera (view matrix, position, viewing
// direction), the projection, the main light, the Phong coefficients and the
// fog. Those values live here and are pushed into every shader program of the
// program manager, only when a changed flag says they moved.
//
// Camera conventions: the view matrix maps world coordinates to eye
// coordinates; the eye looks down its -z axis. moveIn(+step) goes forward.
// Main thread only, with the window's GL context current for setup, update
// and draw.

#include "core/ISerializable.h"
#include "core/Matrix4D.h"
#include "core/Vector4D.h"

#include <cstdint>
#include <list>
#include <map>
#include <string>

namespace korvel {

class IObject3D;
class Triangle;

class World : public ISerializable {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    ~World() override;

    const char* getInstanceClassName() const override { return className; }

    // Loads the current camera, projection, light, Phong and fog into every
    // program of the manager. Called once the programs exist.
    virtual bool setup();
    // Once per frame: re-sends what changed, then lets the objects follow.
    virtual void update();
    virtual void updateViewParameters();
    virtual void draw();
    virtual void drawBlended();

    const std::string& getPath() const { return path; }
    void setPath(const std::string& newPath) { path = newPath; }

    // ---- camera ----
    // Besides the matrix, the camera position and direction follow the new
    // view when it can be inverted.
    void setView(const Matrix4D& newView);
    const Matrix4D& getView() const { return view; }
    const Vector4D& getPosition() const { return cameraPosition; }
    const Vector4D& getCameraDirection() const { return cameraDirection; }
    void moveIn(float step);
    void rotX(float angle);
    void rotY(float angle);
    void rotZ(float angle);
    void updateCameraDirection();

    // ---- projection, light, fog ----
    void setProjection(const Matrix4D& newProjection);
    void setProjection(float newAngle, int newWidth, int newHeight, float newNear, float newFar);
    const Matrix4D& getProjection() const { return projection; }
    void setMainLight(const Vector4D& light);
    const Vector4D& getMainLight() const { return mainLight; }
    void setPhong(const Vector4D& coefficients);
    const Vector4D& getPhong() const { return phong; }
    void setFogColor(const Vector4D& colour);
    const Vector4D& getFogColor() const { return fogColor; }
    void setFogStart(float start);
    float getFogStart() const { return fogStart; }
    void setFogEnd(float end);
    float getFogEnd() const { return fogEnd; }

    bool isViewChanged() const { return viewChanged; }
    bool isSceneChanged() const { return sceneChanged; }

    // ---- picking and selection ----
    // Ray through the cursor (pixels, y downwards) in world coordinates. False
    // when the view cannot be inverted; the vectors then stay in eye space.
    bool computePick(int x, int y, Vector4D& origin, Vector4D& direction, Vector4D& up);
    // The nearest object crossed by the ray through the cursor, or null.
    IObject3D* pickObject(int x, int y, Triangle& triangle);
    IObject3D* getSelection() const { return selected; }
    bool isSelectionDisabled() const { return selectionDisabled; }
    // The selection operations work on the selected object and do nothing
    // while none is selected.
    void rotSelection(float angle);
    void deleteSelection();
    void addSelection();
    void subtractSelection();
    // The beam follows the cursor while selection is enabled.
    void moveSelectionBeam(int x, int y);
    const Vector4D& getBeamOrigin() const { return beamOrigin; }
    const Vector4D& getBeamDirection() const { return beamDirection; }

    std::size_t countElements() const { return elements.size(); }
    // Forgets every registered object; also run by the destructor.
    void releaseObjects();

private:
    bool inverseView(Matrix4D& inverse, const char* failure) const;

    int32_t generatedNameCounter;
    std::string path;
    std::list<IObject3D*> blended;
    std::list<IObject3D*> plainLeaves;
    std::list<IObject3D*> blendedLeaves;
    IObject3D* selected;
    IObject3D* secondSelected;
    bool selectionDisabled;
    bool selectionShown;
    bool beamShown;
    Vector4D beamOrigin;
    Vector4D beamDirection;
    std::map<std::string, IObject3D*> elements;
    Matrix4D projection;
    Matrix4D view;
    int32_t width;
    int32_t height;
    float nearDistance;
    float farDistance;
    float angle;
    bool viewChanged;
    Vector4D cameraPosition;
    Vector4D cameraDirection;
    Vector4D mainLight;
    Vector4D phong;
    Vector4D fogColor;
    bool sceneChanged;
    float fogStart;
    float fogEnd;
};

}  // namespace korvel
