#include "viewer/ApplicationViewer.h"

#include "geometry/Shape.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "render/TextFont.h"
#include "render/TextProvider.h"
#include "scene/Compound3D.h"
#include "scene/IHandler3D.h"
#include "scene/IModel3D.h"
#include "scene/Joint3D.h"
#include "scene/ModelManager.h"
#include "scene/Shape3D.h"
#include "scene/World.h"

#include <GLFW/glfw3.h>
#include <lodepng.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace korvel {

const char* ApplicationViewer::className = "ApplicationViewer";

namespace {

constexpr float firstYaw = 0.6f;
constexpr float firstPitch = 0.35f;
// Short of a quarter turn: the camera never looks straight down, where its
// up direction would flip.
constexpr float pitchLimit = 1.5f;
constexpr float dragRadiansPerPixel = 0.01f;
constexpr float keyRadians = 0.1f;
// Share of the screen height a line of text takes.
constexpr float textLineShare = 0.045f;

const char* const helpText = "P/M model   L/K level   drag/arrows orbit   wheel/Z/S zoom   R reset   F12 shot   Esc quit";
// The help line is smaller than the description.
constexpr float helpShare = 0.7f;

}  // namespace

ApplicationViewer::ApplicationViewer()
    : shown(nullptr),
      levelIndex(0),
      modelIndex(0),
      radius(1.0f),
      centre{0.0f, 0.0f, 0.0f},
      yaw(firstYaw),
      pitch(firstPitch),
      distance(5.0f),
      orbitChanged(true),
      dragging(false),
      dragX(0.0),
      dragY(0.0),
      info(nullptr),
      help(nullptr),
      screenshotWanted(false),
      screenshotCount(0)
{
    // White text reads best on a dark background.
    backgroundColour = Vector4D(0.08f, 0.09f, 0.12f, 1.0f);
}

ApplicationViewer::~ApplicationViewer() = default;

bool ApplicationViewer::initView()
{
    const bool ready = Application3D::initView();
    for (const auto& entry : ShaderProgramManager::getInstance()->getPrograms()) {
        programsAtSetup.insert(entry.second);
    }
    return ready;
}

bool ApplicationViewer::initWorld()
{
    // Models are seen whole at any zoom: no fog before the far plane.
    world->setFogStart(viewEnd);
    world->setFogEnd(2.0f * viewEnd);
    world->setFogColor(backgroundColour);
    auto* text = dynamic_cast<ShaderProgramBase*>(ShaderProgramManager::getInstance()->getProgram("Text"));
    font = std::make_unique<TextFont>();
    font->setShaderProgram(text);
    if (text == nullptr || !font->importOFT(path + "Arial")) {
        std::cout << "[Warning] Viewer writes no text: font Arial or program Text not available" << std::endl;
        font.reset();
    } else {
        provider = std::make_unique<TextProvider>(font.get());
    }
    initializeLatePrograms();
    createText();
    showModel();
    return true;
}

void ApplicationViewer::initializeLatePrograms()
{
    for (const auto& entry : ShaderProgramManager::getInstance()->getPrograms()) {
        auto* program = dynamic_cast<ShaderProgramBase*>(entry.second);
        if (program != nullptr && programsAtSetup.count(program) == 0) {
            world->initializeShaderProgram(program);
        }
    }
}

// ---- the shown model ---------------------------------------------------------

std::size_t ApplicationViewer::countTriangles(const IObject3D* object)
{
    if (const auto* shape = dynamic_cast<const Shape3D*>(object)) {
        return shape->getShape() != nullptr ? shape->getShape()->getTriangleCount() : 0;
    }
    std::size_t count = 0;
    if (const auto* compound = dynamic_cast<const Compound3D*>(object)) {
        for (const auto& joint : compound->getJoints()) {
            count += joint.second != nullptr ? countTriangles(joint.second->getComponent()) : 0;
        }
    }
    return count;
}

void ApplicationViewer::dropModel()
{
    if (shown == nullptr) {
        return;
    }
    world->removeRelatedElements(shown);
    world->removeElement(shown);
    delete shown;
    shown = nullptr;
}

void ApplicationViewer::showModel()
{
    dropModel();
    levels.clear();
    levelIndex = 0;
    modelName = modelManager != nullptr ? modelManager->getCurrentModelName() : std::string();
    IModel3D* model = modelName.empty() ? nullptr : modelManager->getModel(modelName);
    if (model != nullptr) {
        shown = new IHandler3D();
        // Level 0 is the browsing position's own clone; the others exist
        // when the model could be reduced.
        shown->setRepresentative(0, modelManager->createCurrentClone());
        levels.push_back(0);
        for (short lod = 1; lod < IModel3D::levelCount; ++lod) {
            if (model->getObject(lod) != nullptr) {
                shown->setRepresentative(lod, model->createClone(lod));
                levels.push_back(lod);
            }
        }
        shown->setLOD(0);
        frame(*shown->getRepresentative(0));
        world->addElement("model", shown);
    }
    resetOrbit();
    updateText();
}

void ApplicationViewer::frame(IObject3D& object)
{
    object.updateLimits();
    const Vector4D& low = object.getLocalMin();
    const Vector4D& high = object.getLocalMax();
    centre[0] = (low.x + high.x) / 2.0f;
    centre[1] = (low.y + high.y) / 2.0f;
    centre[2] = (low.z + high.z) / 2.0f;
    const Vector4D half((high.x - low.x) / 2.0f, (high.y - low.y) / 2.0f, (high.z - low.z) / 2.0f, 0.0f);
    radius = std::max(half.norm3D(), 0.01f);
}

void ApplicationViewer::stepLevel(int step)
{
    if (shown == nullptr || levels.empty()) {
        return;
    }
    const std::size_t count = levels.size();
    levelIndex = (levelIndex + (step > 0 ? 1 : count - 1)) % count;
    shown->setLOD(levels[levelIndex]);
    updateText();
}

std::string ApplicationViewer::describe() const
{
    if (shown == nullptr) {
        return "No model to show: models.txt lists none that loaded";
    }
    const short lod = levels[levelIndex];
    std::ostringstream text;
    text << "Model: " << modelName << " (" << modelIndex + 1 << "/" << modelManager->countModels() << ")\n"
         << "Level of detail: " << lod << " (" << levelIndex + 1 << "/" << levels.size() << ")\n"
         << "Triangles: " << countTriangles(modelManager->getObject3D(modelName, lod));
    return text.str();
}

// ---- camera ------------------------------------------------------------------

void ApplicationViewer::resetOrbit()
{
    yaw = firstYaw;
    pitch = firstPitch;
    // The sphere around the bounding box (wider than the model itself)
    // nearly fits the narrower side of the view.
    const Matrix4D& projection = world->getProjection();
    const float widest = std::max(std::fabs(projection.m[0]), std::fabs(projection.m[5]));
    distance = std::max(0.95f * radius * std::sqrt(1.0f + widest * widest), closestDistance());
    orbitChanged = true;
}

float ApplicationViewer::closestDistance() const
{
    // The model's sphere stays beyond the near plane, so it is never cut
    // open, and beyond the text's plane: the text is drawn after the model
    // with the depth test on.
    return std::max(radius * 1.05f, radius + 1.1f * viewStart);
}

void ApplicationViewer::orbit(float yawStep, float pitchStep)
{
    yaw += yawStep;
    pitch = std::clamp(pitch + pitchStep, -pitchLimit, pitchLimit);
    orbitChanged = true;
}

void ApplicationViewer::zoom(float factor)
{
    // Never inside the model's sphere or past the text, never beyond most of
    // the far plane.
    distance = std::clamp(distance * factor, closestDistance(), std::max(closestDistance(), viewEnd * 0.8f));
    orbitChanged = true;
}

Matrix4D ApplicationViewer::orbitView() const
{
    Matrix4D view = Matrix4D::getI4();
    view.setPosition(-centre[0], -centre[1], -centre[2]);
    view.rotY(yaw);
    view.rotX(pitch);
    view.m[14] -= distance;
    return view;
}

bool ApplicationViewer::updatePointOfView()
{
    if (orbitChanged) {
        world->setView(orbitView());
        orbitChanged = false;
    }
    placeTexts();
    return Application3D::updatePointOfView();
}

// ---- drawing -----------------------------------------------------------------

bool ApplicationViewer::updateView()
{
    Application3D::updateView();
    if (screenshotWanted) {
        screenshotWanted = false;
        saveScreenshot();
    }
    return true;
}

float ApplicationViewer::textDistance() const
{
    // Just past the near plane, where nothing else comes.
    return 1.02f * viewStart;
}

float ApplicationViewer::textLine() const
{
    return textLineShare * 2.0f * textDistance() / world->getProjection().m[5];
}

void ApplicationViewer::createText()
{
    if (provider == nullptr) {
        return;
    }
    provider->setLineHeight(helpShare * textLine());
    help = provider->createMessage(helpText);
    provider->setLineHeight(textLine());
    info = provider->createMessage(describe());
    if (help != nullptr) {
        world->addElement("text-help", help);
    }
    if (info != nullptr) {
        world->addElement("text-info", info);
    }
}

void ApplicationViewer::updateText()
{
    const std::string description = describe();
    std::string oneLine;
    for (char c : description) {
        oneLine += c == '\n' ? std::string(", ") : std::string(1, c);
    }
    std::cout << "[Information] Viewer shows " << oneLine << std::endl;
    if (provider != nullptr && info != nullptr) {
        provider->setLineHeight(textLine());
        provider->updateMessage(*info, description);
    }
}

void ApplicationViewer::placeText(Shape3D& text, float x, float y)
{
    Matrix4D camera;
    if (!world->getView().invert(camera)) {
        return;
    }
    Matrix4D ahead = Matrix4D::getI4();
    ahead.setPosition(x, y, -textDistance());
    *text.getMatrixObjectChange() = camera * ahead;
    text.changeMatrixObject();
}

void ApplicationViewer::placeTexts()
{
    // The half sizes of the screen on the text's plane.
    const float halfWidth = textDistance() / world->getProjection().m[0];
    const float halfHeight = textDistance() / world->getProjection().m[5];
    const float line = textLine();
    if (info != nullptr) {
        placeText(*info, -halfWidth + 0.6f * line, halfHeight - 1.2f * line);
    }
    if (help != nullptr) {
        placeText(*help, -halfWidth + 0.6f * line, -halfHeight + 0.6f * line);
    }
}

bool ApplicationViewer::saveScreenshot()
{
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    // GL's first row is the bottom one, a PNG's the top one.
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    std::vector<unsigned char> image(pixels.size());
    for (int y = 0; y < height; ++y) {
        std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(row * static_cast<std::size_t>(height - 1 - y)), row,
                    image.begin() + static_cast<std::ptrdiff_t>(row * static_cast<std::size_t>(y)));
    }
    for (std::size_t alpha = 3; alpha < image.size(); alpha += 4) {
        image[alpha] = 255;  // the clear colour leaves alpha at 0
    }
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::ostringstream file;
    // Named like the logs, so that it is kept out of the repository alike.
    file << path << applicationName << '_' << std::put_time(&local, "%Y_%m_%d_%H-%M-%S") << "_shot"
         << std::setfill('0') << std::setw(3) << screenshotCount++ << ".png";
    const unsigned error = lodepng::encode(file.str(), image, static_cast<unsigned>(width), static_cast<unsigned>(height));
    if (error != 0) {
        std::cout << "[ERROR] Screenshot not saved: " << file.str() << ": " << lodepng_error_text(error) << std::endl;
        return false;
    }
    std::cout << "[Information] Screenshot saved: " << file.str() << std::endl;
    return true;
}

// ---- input -------------------------------------------------------------------

void ApplicationViewer::manageKey(GLFWwindow* eventWindow, int key, int scancode, int action, int mods)
{
    const bool pressed = action != GLFW_RELEASE;
    const std::size_t count = modelManager != nullptr ? modelManager->countModels() : 0;
    switch (key) {
    case GLFW_KEY_P:
    case GLFW_KEY_M:
        if (pressed && count > 0) {
            const bool next = key == GLFW_KEY_P;
            next ? modelManager->modelNext() : modelManager->modelPrevious();
            modelIndex = (modelIndex + (next ? 1 : count - 1)) % count;
            showModel();
        }
        return;
    case GLFW_KEY_L:
    case GLFW_KEY_K:
        if (pressed) {
            stepLevel(key == GLFW_KEY_L ? 1 : -1);
        }
        return;
    case GLFW_KEY_LEFT:
    case GLFW_KEY_RIGHT:
        if (pressed) {
            orbit(key == GLFW_KEY_RIGHT ? keyRadians : -keyRadians, 0.0f);
        }
        return;
    case GLFW_KEY_UP:
    case GLFW_KEY_DOWN:
        if (pressed) {
            orbit(0.0f, key == GLFW_KEY_DOWN ? keyRadians : -keyRadians);
        }
        return;
    case GLFW_KEY_Z:
    case GLFW_KEY_S:
        if (pressed) {
            zoom(key == GLFW_KEY_Z ? 0.9f : 1.0f / 0.9f);
        }
        return;
    case GLFW_KEY_R:
        if (pressed) {
            resetOrbit();
        }
        return;
    case GLFW_KEY_F12:
        screenshotWanted = screenshotWanted || pressed;
        return;
    default:
        // Escape and the rest: the frame's.
        Application3D::manageKey(eventWindow, key, scancode, action, mods);
    }
}

void ApplicationViewer::manageButton(GLFWwindow* eventWindow, int button, int action, int mods)
{
    (void)eventWindow;
    (void)mods;
    if (button == GLFW_MOUSE_BUTTON_LEFT) {
        dragging = action == GLFW_PRESS;
        dragX = cursorX;
        dragY = cursorY;
    }
}

void ApplicationViewer::manageCursorPos(GLFWwindow* eventWindow, double x, double y)
{
    (void)eventWindow;
    // Not the frame's handler: the viewer picks nothing, so the world's
    // selection beam (which the frame points at the cursor) stays hidden.
    cursorX = x;
    cursorY = y;
    if (dragging) {
        orbit(static_cast<float>(x - dragX) * dragRadiansPerPixel, static_cast<float>(y - dragY) * dragRadiansPerPixel);
        dragX = x;
        dragY = y;
    }
}

void ApplicationViewer::manageScroll(GLFWwindow* eventWindow, double xOffset, double yOffset)
{
    (void)eventWindow;
    (void)xOffset;
    zoom(std::pow(0.85f, static_cast<float>(yOffset)));
}

// ---- release -----------------------------------------------------------------

bool ApplicationViewer::releaseAll()
{
    // The world deletes the model and the texts with itself, before the
    // models the clones draw on.
    shown = nullptr;
    info = nullptr;
    help = nullptr;
    provider.reset();
    font.reset();
    return Application3D::releaseAll();
}

}  // namespace korvel
