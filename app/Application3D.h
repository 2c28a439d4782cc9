#pragma once
// Frame of every program built on the engine: it owns the world, the window,
// the log and the parsed configuration, runs the start-up sequence in a fixed
// order, then the frame loop, then an ordered release. A game derives from it
// and overrides a few hooks (initWorld, updateWorld, the input handlers).
//
// Messages go to standard output, which initLog redirects into a
// time-stamped file under the data path. Main thread only.

#include "core/Object.h"
#include "core/Vector4D.h"
#include "geometry/Triangle.h"

#include <cstdint>
#include <fstream>
#include <string>

struct GLFWwindow;

namespace korvel {

class BaseParserElement;
class LogBuffer;
class IObject3D;
class ModelManager;
class World;

class Application3D : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    Application3D();
    Application3D(const Application3D&) = delete;
    Application3D& operator=(const Application3D&) = delete;
    ~Application3D() override;

    const char* getInstanceClassName() const override { return className; }

    // Start-up steps, in the order init runs most of them.
    virtual bool init();
    virtual bool initLog();
    virtual bool initWindow();
    virtual bool initGraphicObject();
    virtual bool initShaderProgram();
    virtual bool initOpenGLVariables();
    virtual bool initEvents();
    virtual bool initConfig();
    virtual bool initTextures();
    virtual bool initModels();
    virtual bool initView();
    virtual bool initWorld();

    virtual bool loop();
    virtual bool updateView();
    virtual bool updatePointOfView();
    virtual bool updateWorld();
    virtual bool updateWorld(float elapsed);
    virtual bool endLog();
    virtual bool releaseAll();
    // Called after every forward or backward move of the camera.
    virtual void checkChangePointOfView();

    // Runs init; on failure terminates GLFW and exits with status 1.
    virtual bool setup();
    // Nudges the camera, runs the loop and the release, then exits the
    // process: status 0 when both succeeded, 1 otherwise. Never returns.
    virtual void run();

    virtual void manageKey(GLFWwindow* window, int key, int scancode, int action, int mods);
    virtual void manageCursorPos(GLFWwindow* window, double x, double y);
    virtual void manageButton(GLFWwindow* window, int button, int action, int mods);
    virtual void manageScroll(GLFWwindow* window, double xOffset, double yOffset);

    virtual bool initPath();
    virtual bool moveAtSpawnPoint();

    // Sets path and hands it to the world (when there is one) and the model
    // manager.
    void setPath(const std::string& newPath);
    // Reads directory + "path.def"; true with result set when its first
    // element holds "Relative" (appended to directory) or "Absolute".
    bool findPathDefinition(const std::string& directory, std::string& result);
    void setSceneParameters(int newWidth, int newHeight, float start, float end);
    void setCulling(bool enabled);

    // The step that the loop gives moveStep after a world update, from the key
    // events per second since the previous one. Held keys repeat, so a longer
    // press speeds the camera up in stages; above 70 the step stays as it was.
    static float followKeyRate(float keyRate, float currentStep);

    // Accessors used by the entry point, the game and the tests.
    const std::string& getPath() const { return path; }
    const std::string& getApplicationName() const { return applicationName; }
    void setApplicationName(const std::string& name) { applicationName = name; }
    World* getWorld() { return world; }
    void setWorld(World* newWorld);
    GLFWwindow* getWindow() { return window; }
    const BaseParserElement* getConfiguration() const { return configuration; }
    int32_t getWidth() const { return width; }
    int32_t getHeight() const { return height; }
    float getViewStart() const { return viewStart; }
    float getViewEnd() const { return viewEnd; }
    float getMoveStep() const { return moveStep; }
    int32_t getKeyEventCount() const { return keyEventCount; }
    bool isPickingVerbose() const { return pickingVerbose; }
    void setLoadModels(bool value) { loadModels = value; }
    void setUpdateFrequency(float value) { updateFrequency = value; }

protected:
    // GLFW's own explanation of a failure (no display, no context...).
    static void reportGLFWError(int code, const char* description);

    // True and value set when the configuration holds element/attribute;
    // an attribute that is not an integer is reported and ignored.
    bool readConfigInt(const char* element, const char* attribute, int& value);
    // True when the configuration's element carries the attribute at all.
    bool hasConfigAttribute(const char* element, const char* attribute);

    World* world;
    std::string version;
    std::string author;
    std::string applicationName;
    std::string path;
    std::ofstream* log;
    BaseParserElement* configuration;
    GLFWwindow* window;
    int32_t width;
    int32_t height;
    float viewEnd;
    float viewStart;
    double cursorX;
    double cursorY;
    float selectionRotationStep;
    float moveStep;
    float updateFrequency;
    float lastUpdateTime;
    ModelManager* modelManager;
    bool loadModels;
    bool pickingVerbose;
    IObject3D* pickedObject;
    Triangle pickTriangle;
    Object* selectionHandle;
    int32_t keyEventCount;
    Vector4D lightDirection;
    Vector4D phong;
    Vector4D backgroundColour;

private:
    // Where standard output wrote before the log took it over; put back only
    // when the log stream itself is destroyed, so that no stream is ever left
    // writing into freed memory.
    std::streambuf* consoleBuffer;
    // Owned; standard output's buffer while the log file is open.
    LogBuffer* logBuffer;

    void releaseLogStream();
};

}  // namespace korvel
