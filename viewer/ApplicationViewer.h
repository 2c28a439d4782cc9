#pragma once
// A model viewer on the engine: it loads the game's models.txt through the
// frame, shows one model at a time with one of its levels of detail, orbits
// the camera around it with the mouse and writes the model's name, level and
// triangle count on screen with the font "Arial".
//
// Keys (acting on press and repeat, not on release):
//   P / M        next / previous model
//   L / K        next / previous level of detail
//   arrows       orbit; Z / S zoom in / out; R back to the first view
//   F12          screenshot beside the log (KorvelViewer_<date>_<time>_shotNNN.png)
//   Escape       quit (the frame's)
// Mouse: drag with the left button to orbit, wheel to zoom.
//
// Everything on screen is in the world and drawn by it: the shown model is a
// detail handler of clones registered as "model", the two lines of text are
// blended objects registered as "text-help" and "text-info" (after the model
// in name order, so drawn over it), placed each frame on a plane just past
// the near plane, which the orbit never lets the model reach.

#include "app/Application3D.h"
#include "core/Matrix4D.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

class ShaderProgram;

namespace korvel {

class IHandler3D;
class IObject3D;
class Shape3D;
class TextFont;
class TextProvider;

class ApplicationViewer : public Application3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    ApplicationViewer();
    ~ApplicationViewer() override;

    // The world's setup, then a note of the programs it prepared.
    bool initView() override;
    // The font and its program, the programs made since the world's setup,
    // the text, then the first model.
    bool initWorld() override;
    // The world's frame; a screenshot when asked.
    bool updateView() override;
    // Hands the orbit to the world's camera when it moved and keeps the text
    // in front of the camera, then the world's update.
    bool updatePointOfView() override;
    // Lets the world delete what it holds, then the frame's release.
    bool releaseAll() override;

    void manageKey(GLFWwindow* window, int key, int scancode, int action, int mods) override;
    void manageButton(GLFWwindow* window, int button, int action, int mods) override;
    // Drags orbit; the cursor is kept, but draws no selection beam.
    void manageCursorPos(GLFWwindow* window, double x, double y) override;
    void manageScroll(GLFWwindow* window, double xOffset, double yOffset) override;

    // Clones of every level of the model at the browsing position, in the
    // world in place of the model shown before; shows level 0 and frames
    // the model.
    void showModel();
    // Steps through the levels the model has (step +1 or -1, wrapping).
    void stepLevel(int step);
    void orbit(float yawStep, float pitchStep);
    void zoom(float factor);
    // The camera's matrix for the current orbit.
    Matrix4D orbitView() const;
    std::string describe() const;

    // Triangles of an object: a shape's, or the sum over a compound.
    static std::size_t countTriangles(const IObject3D* object);

private:
    // The orbit's centre and radius: the object's bounding box.
    void frame(IObject3D& object);
    void resetOrbit();
    // The nearest the camera comes to the orbit's centre: the model's sphere
    // stays beyond the near plane and the text's plane.
    float closestDistance() const;
    // The text's plane lies this far ahead of the camera (just past the near
    // plane), and a line of the description is this high on it.
    float textDistance() const;
    float textLine() const;
    // Programs made after the world's setup (the text's, the materials' of
    // the models) get the world's camera, projection, light and fog.
    void initializeLatePrograms();
    void createText();
    void updateText();
    void placeTexts();
    // Places text in the camera's frame: x, y on the plane textDistance
    // ahead, so that it stays on screen whatever the orbit.
    void placeText(Shape3D& text, float x, float y);
    // Takes the shown model out of the world and deletes it.
    void dropModel();
    bool saveScreenshot();

    std::set<const ShaderProgram*> programsAtSetup;
    // Registered in the world, which owns and deletes them.
    IHandler3D* shown;
    std::vector<short> levels;
    std::size_t levelIndex;
    std::string modelName;
    std::size_t modelIndex;
    float radius;
    float centre[3];
    float yaw;
    float pitch;
    float distance;
    bool orbitChanged;
    bool dragging;
    double dragX;
    double dragY;
    std::unique_ptr<TextFont> font;
    std::unique_ptr<TextProvider> provider;
    Shape3D* info;
    Shape3D* help;
    bool screenshotWanted;
    int screenshotCount;
};

}  // namespace korvel
