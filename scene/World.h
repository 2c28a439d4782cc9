#pragma once
// The scene: its named objects, the camera (view matrix, position, viewing
// direction), the projection, the main light, the Phong coefficients and the
// fog. Those values live here and are pushed into every shader program of the
// program manager, only when a changed flag says they moved.
//
// Camera conventions: the view matrix maps world coordinates to eye
// coordinates; the eye looks down its -z axis. moveIn(+step) goes forward.
//
// Ownership: the world owns the objects registered with it. releaseObjects
// (and so the destructor) deletes each distinct object once; removeElement
// hands an object back to the caller without deleting it. An object must not
// be registered while a compound or a handler also owns it.
//
// Drawing: opaque objects (any element kind but exactly 2) are drawn at once
// in name order, blended ones (kind 2) after them with blending on, then the
// selection marker and beam. An object is skipped when both corners of its
// world limits lie beyond the far distance, or both lie behind the camera:
// set the projection before drawing, a far distance of 0 hides everything.
//
// Main thread only, with the window's GL context current for setup, update,
// draw and loading.

#include "core/Matrix4D.h"
#include "core/Object.h"
#include "core/Vector4D.h"
#include "geometry/Triangle.h"
#include "scene/Shape3D.h"

#include <cstdint>
#include <istream>
#include <list>
#include <map>
#include <ostream>
#include <string>

class ShaderProgramBase;

namespace korvel {

class IObject3D;

class World : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // The name asked for by an object without one, and the stem of the
    // names generated when a name is taken.
    static const char* const rootName;

    World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    ~World() override;

    const char* getInstanceClassName() const override { return className; }

    // Normalises the light, enables the selection when a "Laser" program
    // exists, and loads the current values into every program of the
    // manager. Called once the programs exist.
    virtual bool setup();
    // Once per world update: re-sends what changed, then lets the objects
    // follow the view (updateObjectView).
    virtual void update();
    virtual void updateViewParameters();
    virtual bool shouldDraw(IObject3D* object) const;
    // drawPlain, then drawBlended.
    virtual void draw();
    // Draws the opaque objects and collects the blended ones for drawBlended.
    virtual void drawPlain();
    virtual void drawBlended();

    // ---- persistence ----
    // A world file is the line "World", the context (camera, projection,
    // light, Phong, fog), then the objects: per object its name, its
    // visibility and placement, and the object as it saves itself. A failed
    // load reports the first fault and changes nothing.
    virtual bool saveContext(std::ostream& out);
    virtual bool saveObjects(std::ostream& out);
    virtual bool save(std::ostream& out);
    virtual bool loadContext(std::istream& in);
    virtual bool loadObjects(std::istream& in);
    virtual bool load(std::istream& in);

    const std::string& getPath() const { return path; }
    void setPath(const std::string& newPath) { path = newPath; }

    // ---- elements ----
    // Registers object (owned from now on) under its own name, or under
    // rootName when it has none; a name already taken is replaced by rootName
    // followed by the generated-name counter. The object's limits are
    // updated from what it holds, for the visibility test and picking
    // (geometry changed later needs its own updateLimits). Returns the name
    // used, empty (nothing registered) for a null object.
    std::string addElement(IObject3D* object);
    std::string addElement(const std::string& name, IObject3D* object);
    // Drops the first entry, in name order, holding object; the caller owns
    // the object again. Its leaves stay listed: see removeRelatedElements.
    bool removeElement(IObject3D* object);
    // Takes the object's plain and blended leaves out of the leaf lists.
    void removeRelatedElements(IObject3D* object);
    // Deletes every registered object once and empties the world.
    void releaseObjects();
    // Rebuilds the leaf lists from the registered objects and builds the GPU
    // data of those not made yet. False when one could not be made.
    bool linkObjects();
    // How many registered objects saveObjects writes.
    int getSizeSerializableObjects();
    IObject3D* getElement(const std::string& name) const;
    const std::map<std::string, IObject3D*>& getElements() const { return elements; }
    std::size_t countElements() const { return elements.size(); }
    // The leaves of kind 1 and of kind 2 of the registered objects, filled
    // as objects are added. An object taken out by removeElement stays
    // listed until removeRelatedElements; the world never reads through
    // these lists.
    const std::list<IObject3D*>& getPlainLeaves() const { return plainLeaves; }
    const std::list<IObject3D*>& getBlendedLeaves() const { return blendedLeaves; }
    // The blended objects of the last draw, in drawing order.
    const std::list<IObject3D*>& getBlendedList() const { return blended; }

    // ---- camera ----
    // Besides the matrix, the camera position and direction follow the new
    // view when it can be inverted.
    void setView(const Matrix4D& newView);
    const Matrix4D& getView() const { return view; }
    const Vector4D& getPosition() const { return cameraPosition; }
    const Vector4D& getCameraDirection() const { return cameraDirection; }
    // Places the eye at a world point, looking where it looked.
    void setCamera(const Vector4D& position);
    // Moves the eye along its own viewing axis.
    void moveIn(float step);
    // Moves the eye by a displacement given in world axes, looking where it
    // looked.
    void moveToWorld(float dx, float dy, float dz);
    void rotX(float angle);
    void rotY(float angle);
    void rotZ(float angle);
    void updateCameraDirection();
    // Hands the view to every object, in name order, and orders the
    // triangles of the visible blended shapes back to front.
    void updateObjectView();

    // ---- projection, light, fog ----
    void setProjection(const Matrix4D& newProjection);
    void setProjection(float newAngle, int newWidth, int newHeight, float newNear, float newFar);
    const Matrix4D& getProjection() const { return projection; }
    int getWidth() const { return width; }
    int getHeight() const { return height; }
    float getNear() const { return nearDistance; }
    float getFar() const { return farDistance; }
    float getAngle() const { return angle; }
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

    // ---- programs ----
    // Hands the world's current values to every program of the manager.
    void initializeShaderProgramManager();
    // Makes program current and hands it the world's projection, view,
    // light, camera, Phong and fog. For programs made after setup.
    bool initializeShaderProgram(ShaderProgramBase* program);

    // ---- picking ----
    // Ray through the cursor (pixels, y downwards) in world coordinates. False
    // when the view cannot be inverted; the vectors then stay in eye space.
    bool computePick(int x, int y, Vector4D& origin, Vector4D& direction, Vector4D& up);
    // The registered object whose triangle, crossed by the line, ahead of the
    // origin and facing it, is the nearest (by its centre); that triangle is
    // copied into triangle. Null when none is hit.
    IObject3D* pickObject(const Vector4D& origin, const Vector4D& direction, Triangle& triangle);
    IObject3D* pickObject(int x, int y, Triangle& triangle);
    // Keeps the picked triangle in the world (getPickTriangle).
    IObject3D* pickObject(int x, int y);
    const Triangle& getPickTriangle() const { return pickTriangle; }
    // The object found by the last pick, until it leaves the world.
    IObject3D* getLastPicked() const { return lastPicked; }

    // ---- selection ----
    // Resets the marker: one triangle, an identity matrix, nothing selected,
    // hidden, selection disabled until setup finds the "Laser" program.
    void createSelection();
    // A thin bar of unit length along x, placed by moveSelectionBeam.
    void createBeam();
    // Selects object and marks triangle (world coordinates) on it; the marker
    // follows the object when it moves. Null releases the selection.
    void setSelection(IObject3D* object, const Triangle& triangle);
    void releaseSelection();
    IObject3D* getSelection() const { return selected; }
    bool isSelectionDisabled() const { return selectionDisabled; }
    bool isSelectionShown() const { return selectionShown; }
    // The selection operations work on the selected object and do nothing
    // while none is selected. Rotation turns it about the vertical axis
    // through its position; add and subtract scale it up and down by
    // selectionScaleStep about its position; delete removes it from the
    // world and deletes it.
    void rotSelection(float angle);
    void addSelection();
    void subtractSelection();
    void deleteSelection();
    static constexpr float selectionScaleStep = 1.1f;
    // The beam leaves from off the lower right corner of the screen and runs
    // to the point under the cursor, far ahead. Nothing happens while the
    // selection is disabled.
    void moveSelectionBeam(int x, int y);
    bool isBeamShown() const { return beamShown; }
    const Vector4D& getBeamOrigin() const { return beamOrigin; }
    const Vector4D& getBeamDirection() const { return beamDirection; }
    Shape3D& getSelectionMarker() { return selectionMarker; }
    Shape3D& getSelectionBeam() { return selectionBeam; }

private:
    // The camera, projection, light and fog as a world file holds them.
    struct Context;
    bool inverseView(Matrix4D& inverse, const char* failure) const;
    // Camera position from the inverse view; viewChanged on success.
    void placeCamera(const char* failure);
    // Takes every entry and leaf of object out of the world; false when it
    // was not registered.
    bool forgetObject(IObject3D* object);
    void collectLeaves(IObject3D* object);
    void scaleSelection(float factor);
    void prepareMarker();
    void prepareBeam();
    bool readContext(std::istream& in, Context& context) const;
    void applyContext(const Context& context);
    // Objects read into loaded (owned by the caller), with their names.
    bool readObjects(std::istream& in, std::list<std::pair<std::string, IObject3D*>>& loaded) const;
    bool adoptObjects(std::list<std::pair<std::string, IObject3D*>>& loaded);

    int32_t generatedNameCounter;
    std::string path;
    std::list<IObject3D*> blended;
    std::list<IObject3D*> plainLeaves;
    std::list<IObject3D*> blendedLeaves;
    IObject3D* selected;
    IObject3D* lastPicked;
    bool selectionDisabled;
    bool selectionShown;
    Shape3D selectionMarker;
    Triangle* markerTriangle;  // inside the marker's shape
    Triangle pickTriangle;
    bool markerChanged;
    bool markerFollows;  // the marker is in the selected object's frame
    bool beamShown;
    Shape3D selectionBeam;
    bool beamMade;
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
