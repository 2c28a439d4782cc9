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
// The shown model and the text are drawn by the viewer after the world: the
// text last, without depth test, placed each frame in front of the camera.

#include "app/Application3D.h"
#include "core/Matrix4D.h"

#include <memory>
#include <string>
#include <vector>

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

    // The font and its program, then the first model.
    bool initWorld() override;
    // The world, the shown model, then the text; a screenshot when asked.
    bool updateView() override;
    // Hands the orbit to the world's camera when it moved.
    bool updatePointOfView() override;
    // The clones and texts go before the models they draw.
    bool releaseAll() override;

    void manageKey(GLFWwindow* window, int key, int scancode, int action, int mods) override;
    void manageButton(GLFWwindow* window, int button, int action, int mods) override;
    void manageCursorPos(GLFWwindow* window, double x, double y) override;
    void manageScroll(GLFWwindow* window, double xOffset, double yOffset) override;

    // Clones of every level of the model at the browsing position; shows
    // level 0 and frames the model.
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
    // The text's plane lies this far ahead of the camera (twice the near
    // distance), and a line of the description is this high on it.
    float textDistance() const;
    float textLine() const;
    void updateText();
    void drawText();
    // Places text in the camera's frame: x, y on the plane textDistance
    // ahead, so that it stays on screen whatever the orbit.
    void placeText(Shape3D& text, float x, float y);
    bool saveScreenshot();

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
