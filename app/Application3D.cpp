#include "app/Application3D.h"
#include "app/LogBuffer.h"

#include "app/ApplicationManager3D.h"
#include "app/BaseGL.h"
#include "parser/TextFile.h"
#include "core/FactoryManager.h"
#include "core/Matrix4D.h"
#include "parser/BaseParserElement.h"
#include "parser/Parser.h"
#include "render/GLBaseStructure.h"
#include "render/OpenGLError.h"
#include "render/Shader.h"
#include "render/ShaderProgram.h"
#include "render/ShaderProgramManager.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/TextureManager.h"
#include "scene/ModelManager.h"
#include "scene/World.h"

#include <GLFW/glfw3.h>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace korvel {

const char* Application3D::className = "Application3D";

namespace {

// The programs every scene of the engine may draw with; loading them at
// start-up turns a broken shader into a start-up failure instead of a
// missing object later.
const char* const preloadedPrograms[] = {"Wood", "Soil", "Hull", "Explosion", "Selection", "Laser", "Leaf"};

#if defined(__SANITIZE_ADDRESS__)
#define KORVEL_LEAK_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVEL_LEAK_CHECKED 1
#endif
#endif

#ifdef KORVEL_LEAK_CHECKED
// The leak checker runs at exit, after glfwTerminate has unloaded the GL
// driver; what the driver keeps for the whole process would then show as
// leaks in an unknown module that no suppression can name. Pinned, it stays
// mapped and its frames keep their library's name.
int pinDriver(dl_phdr_info* info, std::size_t, void*)
{
    const std::string name = info->dlpi_name != nullptr ? info->dlpi_name : "";
    bool driver = false;
    for (const char* part : {"/dri/", "libgallium", "libGLX_mesa", "libglapi"}) {
        driver = driver || name.find(part) != std::string::npos;
    }
    if (driver) {
        dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    }
    return 0;
}

void keepGraphicsDriverLoaded()
{
    dl_iterate_phdr(&pinDriver, nullptr);
}
#else
void keepGraphicsDriverLoaded() {}
#endif

}  // namespace

Application3D::Application3D()
    : world(nullptr),
      applicationName("DefaultName"),
      log(nullptr),
      configuration(nullptr),
      window(nullptr),
      width(1900),
      height(1080),
      viewEnd(300.0f),
      viewStart(0.5f),
      cursorX(0.0),
      cursorY(0.0),
      selectionRotationStep(0.15f),
      moveStep(0.2f),
      updateFrequency(10.0f),
      lastUpdateTime(0.0f),
      modelManager(nullptr),
      loadModels(true),
      pickingVerbose(false),
      pickedObject(nullptr),
      selectionHandle(nullptr),
      keyEventCount(0),
      lightDirection(3.0f, -1.0f, -1.0f, 1.0f),
      phong(0.2f, 0.8f, 0.8f, 2.0f),
      backgroundColour(0.5f, 0.5f, 0.6f, 1.0f),
      consoleBuffer(nullptr),
      logBuffer(nullptr)
{
}

Application3D::~Application3D()
{
    FactoryManager::endService();
    delete selectionHandle;
    delete configuration;
    releaseLogStream();
    delete world;
}

void Application3D::setWorld(World* newWorld)
{
    if (newWorld != world) {
        delete world;
        world = newWorld;
    }
}

bool Application3D::init()
{
    if (world == nullptr) {
        world = new World();
    }
    if (!initPath()) {
        std::cout << "[ERROR] Unable to initialize paths" << std::endl;
        return false;
    }
    if (!initLog()) {
        std::cout << "[ERROR] log not available" << std::endl;
        return false;
    }
    std::cout << "[Information] Author: " << author << std::endl;
    std::cout << "[Information] Application: " << applicationName << std::endl;
    std::cout << "[Information] Version: " << version << std::endl;
    if (initConfig()) {
        std::cout << "[Success] configuration retrieved" << std::endl;
    } else {
        std::cout << "[Warning] configuration not found, default values applied" << std::endl;
    }
    glfwSetErrorCallback(&Application3D::reportGLFWError);
    if (glfwInit() == GLFW_FALSE) {
        std::cout << "[ERROR] Unable to initialize GLFW" << std::endl;
        return false;
    }
    std::cout << "[Success] GLFW initialized" << std::endl;
    if (!initWindow()) {
        std::cout << "[ERROR] Unable to initialize Windows" << std::endl;
        return false;
    }
    if (!initGraphicObject()) {
        std::cout << "[ERROR] unable to set GraphicObject context and init OpenGL functions" << std::endl;
        return false;
    }
    std::cout << "[Success] OpenGL functions initiated" << std::endl;
    if (!initEvents()) {
        std::cout << "[ERROR] unable to set events" << std::endl;
        return false;
    }
    std::cout << "[Success] events set" << std::endl;
    if (!initShaderProgram()) {
        std::cout << "[ERROR] unable to establish shader program" << std::endl;
        return false;
    }
    std::cout << "[Success] shader program established" << std::endl;
    if (!initOpenGLVariables()) {
        std::cout << "[ERROR] unable to set openGL variables" << std::endl;
        return false;
    }
    std::cout << "[Success] openGL variables set" << std::endl;
    if (!initView()) {
        std::cout << "[ERROR] unable to init view" << std::endl;
        return false;
    }
    std::cout << "[Success] view initiated" << std::endl;
    if (!initTextures()) {
        std::cout << "[ERROR] unable to init texture manager" << std::endl;
        return false;
    }
    std::cout << "[Success] texture manager ready" << std::endl;
    if (!initModels()) {
        std::cout << "[ERROR] unable to init Model manager" << std::endl;
        return false;
    }
    std::cout << "[Success] model retrieved" << std::endl;
    if (!initWorld()) {
        std::cout << "[ERROR] unable to initialize world" << std::endl;
        return false;
    }
    std::cout << "[Success] world initialized" << std::endl;
    glViewport(0, 0, width, height);
    // Only the colour of the background counts; the window itself is opaque.
    glClearColor(backgroundColour.x, backgroundColour.y, backgroundColour.z, 0.0f);
    return true;
}

void Application3D::reportGLFWError(int code, const char* description)
{
    std::cout << "[Error] GLFW error " << code << ": " << (description != nullptr ? description : "") << std::endl;
}

// ---- paths, log, configuration ---------------------------------------------

bool Application3D::initPath()
{
    if (!path.empty()) {
        setPath(path);
        return true;
    }
    std::string executable;
    std::string buffer(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length > 0 && static_cast<std::size_t>(length) < buffer.size()) {
        executable.assign(buffer.data(), static_cast<std::size_t>(length));
    }
    std::cout << "[information] Executable Path: " << executable << std::endl;

    std::string directory;
    const std::size_t cut = executable.find_last_of('/');
    if (cut == std::string::npos) {
        std::cout << "[Warning] executable directory unknown, current directory used" << std::endl;
        directory = "./";
    } else {
        directory = executable.substr(0, cut + 1);
    }
    for (char& c : directory) {
        if (c == '\\') {
            c = '/';
        }
    }

    std::string found;
    if (findPathDefinition(directory, found) || findPathDefinition(directory + "../", found)) {
        setPath(found);
    } else {
        setPath(directory);
    }
    std::cout << "[information] Path directory: " << path << std::endl;
    std::cout << "[information] Please note that shaders are to be in subdirectory 'Shaders'" << std::endl;
    std::cout << "[information] .log file record all information for debugging" << std::endl;
    return true;
}

bool Application3D::findPathDefinition(const std::string& directory, std::string& result)
{
    std::string text;
    if (!readTextLines(directory + "path.def", text)) {
        return false;
    }
    Parser parser;
    parser.parse(text);
    const Module* root = parser.getModule();
    if (root == nullptr || root->getAttributes().empty()) {
        return false;
    }
    bool found = false;
    std::string value;
    BaseParserElement* first = root->getAttributes().front();
    if (first != nullptr) {
        first->startAttributes();
        if (first->getNextAttributeValueString("Relative", value)) {
            value = directory + value;
            found = true;
        } else {
            first->startAttributes();
            found = first->getNextAttributeValueString("Absolute", value);
        }
    }
    if (!found) {
        return false;
    }
    // The value is taken as written; without a final "/" every data file
    // name glued to it would be wrong, so say so once.
    if (value.empty() || value.back() != '/') {
        std::cout << "[Warning] path.def directory does not end with '/': " << value << std::endl;
    }
    result = value;
    return true;
}

void Application3D::setPath(const std::string& newPath)
{
    path = newPath;
    if (world != nullptr) {
        world->setPath(path);
    }
    ModelManager::getInstance()->setPath(path);
}

bool Application3D::initLog()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::ostringstream name;
    name << path << applicationName << '_' << std::setfill('0') << std::setw(4) << (local.tm_year + 1900) << '_'
         << std::setw(2) << (local.tm_mon + 1) << '_' << std::setw(2) << local.tm_mday << '_' << std::setw(2)
         << local.tm_hour << '-' << std::setw(2) << local.tm_min << '-' << std::setw(2) << local.tm_sec << ".log";
    std::cout << "[information] log is now directed to file " << name.str() << std::endl;

    // A second call replaces the first log.
    releaseLogStream();
    log = new std::ofstream(name.str(), std::ios::out | std::ios::trunc);
    if (log->is_open()) {
        logBuffer = new LogBuffer(log->rdbuf());
        consoleBuffer = std::cout.rdbuf(logBuffer);
        std::cout << "[information] Start logging events on 'out' flow stream" << std::endl;
    }
    return true;
}

void Application3D::releaseLogStream()
{
    // Standard output must be back on the console before the buffers it
    // writes into are deleted.
    if (logBuffer != nullptr && std::cout.rdbuf() == logBuffer) {
        std::cout.rdbuf(consoleBuffer);
    }
    delete logBuffer;
    logBuffer = nullptr;
    delete log;
    log = nullptr;
}

bool Application3D::endLog()
{
    if (log == nullptr) {
        return false;
    }
    std::cout << "[information] End logging events" << std::endl;
    log->close();
    // Standard output stays on the closed file: later lines are dropped, as
    // the log has been handed over for good.
    return true;
}

bool Application3D::initConfig()
{
    std::string text;
    if (!readTextLines(path + "config.def", text)) {
        return false;
    }
    Parser parser;
    // A configuration that parses only in part is still used: the elements
    // read before the error keep their effect.
    if (!parser.parse(text)) {
        std::cout << "[Warning] config.def not entirely understood, only what was read before the error applies"
                  << std::endl;
    }
    delete configuration;
    configuration = parser.detachModule();
    if (configuration != nullptr) {
        configuration->dump();
    }
    return true;
}

bool Application3D::hasConfigAttribute(const char* element, const char* attribute)
{
    if (configuration == nullptr) {
        return false;
    }
    configuration->startAttributes();
    BaseParserElement* found = configuration->getNextAttribute(element);
    if (found == nullptr) {
        return false;
    }
    found->startAttributes();
    return found->getNextAttribute(attribute) != nullptr;
}

bool Application3D::readConfigInt(const char* element, const char* attribute, int& value)
{
    if (!hasConfigAttribute(element, attribute)) {
        return false;
    }
    configuration->startAttributes();
    BaseParserElement* found = configuration->getNextAttribute(element);
    found->startAttributes();
    int read = 0;
    if (!found->getNextAttributeValueInt(attribute, read)) {
        std::cout << "[Warning] configuration " << element << " " << attribute
                  << " is not an integer, default value kept" << std::endl;
        return false;
    }
    value = read;
    return true;
}

// ---- window and OpenGL -------------------------------------------------------

bool Application3D::initWindow()
{
    GLFWmonitor* monitor = glfwGetPrimaryMonitor();
    const GLFWvidmode* mode = monitor != nullptr ? glfwGetVideoMode(monitor) : nullptr;
    const int screenWidth = mode != nullptr ? mode->width : 0;
    const int screenHeight = mode != nullptr ? mode->height : 0;
    std::cout << "[information] screen size, width: " << screenWidth << " / height: " << screenHeight << std::endl;
    if (screenWidth > 0) {
        width = screenWidth;
    }
    if (screenHeight > 0) {
        height = screenHeight;
    }
    glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);

    int value = 0;
    if (readConfigInt("View", "Width", value)) {
        width = value;
        std::cout << "[Information] Width for view changed:" << width << std::endl;
    }
    if (readConfigInt("View", "Height", value)) {
        height = value;
        std::cout << "[Information] Height for view changed:" << height << std::endl;
    }
    if (width <= 0 || height <= 0) {
        std::cout << "[ERROR] window size must be positive, width: " << width << " / height: " << height
                  << std::endl;
        return false;
    }

    window = glfwCreateWindow(width, height, applicationName.c_str(), nullptr, nullptr);
    if (window == nullptr) {
        return false;
    }
    std::cout << "[Success] Window created" << std::endl;
    glfwMakeContextCurrent(window);
    keepGraphicsDriverLoaded();
    return true;
}

bool Application3D::initGraphicObject()
{
    return BaseGL::init() && Shader::init() && ShaderProgram::init() && OpenGLError::init() &&
           GLBaseStructure::init() && ShaderProgramManagerBase::init() && TextureManager::init();
}

bool Application3D::initEvents()
{
    ApplicationManager3D::getInstance()->syndicateWindow(window, this);
    if (hasConfigAttribute("Picking", "Verbose")) {
        pickingVerbose = true;
        std::cout << "[Information] Picking is now verbose" << std::endl;
    }
    return true;
}

bool Application3D::initShaderProgram()
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager == nullptr) {
        std::cout << "[ERROR] shader program manager not initialized" << std::endl;
        return false;
    }
    manager->setPath(path + "Shaders/");
    const bool sourceVerbose = hasConfigAttribute("Shaders", "SourceVerbose");
    if (sourceVerbose) {
        std::cout << "[Information] shader source is now verbose" << std::endl;
    }
    manager->setVerbose(sourceVerbose);
    // Every program is asked for, so that one run reports every broken one.
    bool allMade = true;
    for (const char* name : preloadedPrograms) {
        if (manager->getProgram(name) == nullptr) {
            std::cout << "[ERROR] shader program not available: " << name << std::endl;
            allMade = false;
        }
    }
    return allMade;
}

bool Application3D::initOpenGLVariables()
{
    glClearDepth(1.0);
    // 0x1D01 is GL_SMOOTH, a shading mode rather than a capability; the call
    // has always been made and only raises a GL error flag nobody reads.
    glEnable(0x1D01);
    glGetError();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    return true;
}

bool Application3D::initView()
{
    int value = 0;
    if (readConfigInt("View", "Start", value)) {
        viewStart = static_cast<float>(value);
        std::cout << "[Information] Start base for view changed:" << value << std::endl;
    }
    if (readConfigInt("View", "End", value)) {
        viewEnd = static_cast<float>(value);
        std::cout << "[Information] End base for view changed:" << value << std::endl;
    }
    world->setProjection(0.7853982f, width, height, viewStart, viewEnd);
    world->setView(Matrix4D::getI4());
    Vector4D light = lightDirection;
    light.normalize3D();
    lightDirection = light;
    world->setMainLight(lightDirection);
    world->setPhong(phong);
    return world->setup();
}

bool Application3D::initTextures()
{
    TextureManager::getInstance()->setPath(path);
    return true;
}

bool Application3D::initModels()
{
    modelManager = ModelManager::getInstance();
    if (hasConfigAttribute("Models", "Verbose")) {
        std::cout << "[Information] Model Manager is now verbose" << std::endl;
        modelManager->setVerbose(true);
    } else {
        modelManager->setVerbose(false);
    }
    modelManager->setPath(path);
    if (!loadModels) {
        return true;
    }
    return modelManager->loadModels("models.txt");
}

bool Application3D::initWorld()
{
    return true;
}

// ---- frame loop --------------------------------------------------------------

float Application3D::followKeyRate(float keyRate, float currentStep)
{
    if (keyRate == 0.0f) {
        return 0.2f;
    }
    if (keyRate <= 30.0f) {
        return 1.0f;
    }
    if (keyRate <= 70.0f) {
        return 5.0f;
    }
    return currentStep;
}

bool Application3D::loop()
{
    lastUpdateTime = static_cast<float>(glfwGetTime());
    while (glfwWindowShouldClose(window) == GLFW_FALSE) {
        updateView();
        glfwSwapBuffers(window);
        glfwPollEvents();

        const float now = static_cast<float>(glfwGetTime());
        const float rate = 1.0f / (now - lastUpdateTime);
        if (updateFrequency > rate) {
            updateWorld(static_cast<float>(glfwGetTime()) - lastUpdateTime);
            lastUpdateTime = static_cast<float>(glfwGetTime());
            const float keyRate = rate * static_cast<float>(keyEventCount);
            keyEventCount = 0;
            moveStep = followKeyRate(keyRate, moveStep);
        }
    }
    return true;
}

bool Application3D::updateView()
{
    // The stencil is cleared with the depth although nothing uses it: where
    // depth and stencil share one buffer, clearing depth alone has to keep
    // every stencil byte, and a software renderer then pays a read and a
    // write a pixel instead of a plain fill.
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    updatePointOfView();
    world->draw();
    return true;
}

bool Application3D::updatePointOfView()
{
    world->update();
    return true;
}

bool Application3D::updateWorld()
{
    return true;
}

bool Application3D::updateWorld(float elapsed)
{
    (void)elapsed;
    return updateWorld();
}

void Application3D::checkChangePointOfView() {}

// ---- release -----------------------------------------------------------------

bool Application3D::releaseAll()
{
    const bool memoryVerbose = hasConfigAttribute("Memory", "Verbose");
    if (memoryVerbose) {
        // The shader wording is the one this switch has always printed.
        std::cout << "[Information] shader source is now verbose" << std::endl;
    }
    std::cout << "[information] launch of delete world" << std::endl;
    if (world != nullptr) {
        world->setVerbose(memoryVerbose);
        delete world;
        world = nullptr;
    }
    std::cout << "[information] end of delete world" << std::endl;

    std::cout << "[information] start of model manager clean up" << std::endl;
    ModelManager* models = modelManager != nullptr ? modelManager : ModelManager::getInstance();
    models->setVerbose(memoryVerbose);
    models->cleanUp();
    std::cout << "[information] end of model manager clean up" << std::endl;

    delete configuration;
    configuration = nullptr;
    delete selectionHandle;
    selectionHandle = nullptr;

    if (memoryVerbose) {
        Object::dumpSizeInstances();
        Object::dumpInstances();
    }
    glfwTerminate();
    window = nullptr;
    if (!endLog()) {
        std::cout << "[ERROR] unable to close log file" << std::endl;
        return false;
    }
    return true;
}

bool Application3D::setup()
{
    if (!init()) {
        glfwTerminate();
        std::exit(1);
    }
    return true;
}

void Application3D::run()
{
    // The camera starts slightly turned and stepped in.
    world->rotX(1.0f);
    world->moveIn(0.1f);
    const bool ended = loop() && releaseAll();
    glfwTerminate();
    std::exit(ended ? 0 : 1);
}

// ---- input -------------------------------------------------------------------

void Application3D::manageKey(GLFWwindow* eventWindow, int key, int scancode, int action, int mods)
{
    (void)scancode;
    (void)action;
    (void)mods;
    ++keyEventCount;
    // Press, repeat and release all act alike: a tap acts twice.
    switch (key) {
    case GLFW_KEY_Z:
        world->moveIn(moveStep);
        checkChangePointOfView();
        break;
    case GLFW_KEY_S:
        world->moveIn(-moveStep);
        checkChangePointOfView();
        break;
    case GLFW_KEY_RIGHT:
        world->rotY(0.1f);
        break;
    case GLFW_KEY_LEFT:
        world->rotY(-0.1f);
        break;
    case GLFW_KEY_UP:
        world->rotX(0.1f);
        break;
    case GLFW_KEY_DOWN:
        world->rotX(-0.1f);
        break;
    case GLFW_KEY_O:
        moveAtSpawnPoint();
        break;
    case GLFW_KEY_P:
        ModelManager::getInstance()->modelNext();
        break;
    case GLFW_KEY_M:
        ModelManager::getInstance()->modelPrevious();
        break;
    case GLFW_KEY_PAGE_UP:
        world->rotSelection(selectionRotationStep);
        break;
    case GLFW_KEY_PAGE_DOWN:
        world->rotSelection(-selectionRotationStep);
        break;
    case GLFW_KEY_DELETE:
        if (pickedObject == world->getSelection()) {
            pickedObject = nullptr;  // deleted with the selection
        }
        world->deleteSelection();
        break;
    case GLFW_KEY_KP_SUBTRACT:
        world->subtractSelection();
        break;
    case GLFW_KEY_KP_ADD:
        world->addSelection();
        break;
    case GLFW_KEY_ESCAPE:
        if (eventWindow != nullptr) {
            glfwSetWindowShouldClose(eventWindow, GLFW_TRUE);
        }
        break;
    default:
        break;
    }
    std::cout << "[information] Position in world: " << world->getView().getPosition() << std::endl;
}

void Application3D::manageCursorPos(GLFWwindow* eventWindow, double x, double y)
{
    (void)eventWindow;
    cursorX = x;
    cursorY = y;
    world->moveSelectionBeam(static_cast<int>(x), static_cast<int>(y));
}

void Application3D::manageButton(GLFWwindow* eventWindow, int button, int action, int mods)
{
    (void)eventWindow;
    (void)mods;
    if (action != GLFW_RELEASE) {
        return;
    }
    if (button != GLFW_MOUSE_BUTTON_LEFT && button != GLFW_MOUSE_BUTTON_RIGHT) {
        return;
    }
    pickedObject = world->pickObject(static_cast<int>(cursorX), static_cast<int>(cursorY), pickTriangle);
    // The left button selects what it picks (or lets go of the selection
    // over empty space); the right one only picks.
    if (button == GLFW_MOUSE_BUTTON_LEFT) {
        world->setSelection(pickedObject, pickTriangle);
    }
    if (pickedObject != nullptr && pickingVerbose) {
        if (button == GLFW_MOUSE_BUTTON_LEFT) {
            std::cout << "[information] Release Left: Object found in Picking" << std::endl;
        } else {
            std::cout << "[information] Release right: Object found in Picking" << std::endl;
        }
    }
}

void Application3D::manageScroll(GLFWwindow* eventWindow, double xOffset, double yOffset)
{
    (void)eventWindow;
    (void)xOffset;
    (void)yOffset;
}

bool Application3D::moveAtSpawnPoint()
{
    Matrix4D view = world->getView();
    view.setPosition(0.0f, 0.0f, 0.0f);
    world->setView(view);
    return true;
}

void Application3D::setSceneParameters(int newWidth, int newHeight, float start, float end)
{
    width = newWidth;
    height = newHeight;
    viewStart = start;
    viewEnd = end;
}

void Application3D::setCulling(bool enabled)
{
    if (enabled) {
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
    } else {
        glDisable(GL_CULL_FACE);
    }
}

}  // namespace korvel
