#include "scene/World.h"

#include "render/ShaderProgram.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"

#include <GL/gl.h>

#include <iostream>

namespace korvel {

const char* World::className = "World";

namespace {

// Walks the manager's programs in name order, making each current and
// handing it to apply; the last one walked is then made current through the
// manager so that its cache agrees with the GL state. Entries left null by a
// failed build are skipped.
template <typename Apply>
void forEachProgram(Apply apply)
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager == nullptr) {
        return;
    }
    ShaderProgram* last = nullptr;
    for (auto& entry : manager->getPrograms()) {
        auto* program = dynamic_cast<ShaderProgramBase*>(entry.second);
        if (program == nullptr) {
            continue;
        }
        program->use();
        apply(*program);
        last = program;
    }
    if (last != nullptr) {
        manager->useProgram(last);
    }
}

}  // namespace

World::World()
    : generatedNameCounter(0),
      selected(nullptr),
      secondSelected(nullptr),
      selectionDisabled(true),
      selectionShown(false),
      beamShown(false),
      beamOrigin(0.0f, 0.0f, 0.0f, 1.0f),
      beamDirection(0.0f, 0.0f, -1.0f, 0.0f),
      projection(Matrix4D::getI4()),
      view(Matrix4D::getI4()),
      width(0),
      height(0),
      nearDistance(0.0f),
      farDistance(0.0f),
      angle(0.0f),
      viewChanged(false),
      cameraPosition(0.0f, 0.0f, 0.0f, 1.0f),
      cameraDirection(0.0f, 0.0f, -1.0f, 0.0f),
      mainLight(0.0f, -1.0f, 0.0f, 1.0f),
      fogColor(1.0f, 1.0f, 1.0f, 1.0f),
      sceneChanged(false),
      fogStart(20.0f),
      fogEnd(100.0f)
{
}

World::~World()
{
    releaseObjects();
}

void World::releaseObjects()
{
    if (verbose) {
        std::cout << "World clean up objects" << std::endl;
    }
    // The world only registers its objects; their owners (models, game
    // arrays) delete them.
    elements.clear();
    blended.clear();
    plainLeaves.clear();
    blendedLeaves.clear();
    selected = nullptr;
    secondSelected = nullptr;
}

// ---- programs ----------------------------------------------------------------

bool World::setup()
{
    mainLight.normalize3D();
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager != nullptr) {
        const auto& programs = manager->getPrograms();
        const auto laser = programs.find("Laser");
        if (laser != programs.end() && laser->second != nullptr) {
            selectionDisabled = false;
        }
    }
    forEachProgram([this](ShaderProgramBase& program) {
        program.setMatrixProjection(&projection);
        program.setMatrixView(&view);
        program.setLight(&mainLight);
        program.setCamera(&cameraPosition);
        program.setPhong(&phong);
        program.setFogColor(&fogColor);
        program.setFogEnd(fogEnd);
        program.setFogStart(fogStart);
    });
    return true;
}

void World::update()
{
    updateViewParameters();
}

void World::updateViewParameters()
{
    if (!viewChanged && !sceneChanged) {
        return;
    }
    forEachProgram([this](ShaderProgramBase& program) {
        if (viewChanged) {
            program.updateView();
            program.setCamera(&cameraPosition);
        }
        if (sceneChanged) {
            program.setFogColor(&fogColor);
            program.setFogStart(fogStart);
            program.setFogEnd(fogEnd);
            program.setLight(&mainLight);
            program.setPhong(&phong);
            program.setMatrixProjection(&projection);
        }
    });
    // viewChanged stays set on purpose: once the camera has moved, every
    // update re-sends the view, which also covers programs created later.
    sceneChanged = false;
}

void World::draw()
{
    blended.clear();
    drawBlended();
}

void World::drawBlended()
{
    glEnable(GL_BLEND);
    glDisable(GL_BLEND);
}

// ---- camera --------------------------------------------------------------------

bool World::inverseView(Matrix4D& inverse, const char* failure) const
{
    if (view.invert(inverse)) {
        return true;
    }
    if (failure != nullptr) {
        std::cout << failure << std::endl;
    }
    return false;
}

void World::setView(const Matrix4D& newView)
{
    view = newView;
    viewChanged = true;
    Matrix4D inverse;
    if (inverseView(inverse, nullptr)) {
        cameraPosition = inverse * Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
        cameraDirection = inverse * Vector4D(0.0f, 0.0f, -1.0f, 0.0f);
    }
}

void World::moveIn(float step)
{
    view.translate3D(Vector4D(0.0f, 0.0f, step, 0.0f));
    Matrix4D inverse;
    if (!inverseView(inverse, "[Error] Move in World view not invertible")) {
        return;
    }
    cameraPosition = inverse * Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
    viewChanged = true;
}

void World::rotX(float a)
{
    view.rotX(a);
    viewChanged = true;
    updateCameraDirection();
}

void World::rotY(float a)
{
    view.rotY(a);
    viewChanged = true;
    updateCameraDirection();
}

void World::rotZ(float a)
{
    view.rotZ(a);
    viewChanged = true;
    updateCameraDirection();
}

void World::updateCameraDirection()
{
    Matrix4D inverse;
    if (!inverseView(inverse, "[Error] Move camera direction in World view not invertible")) {
        return;
    }
    cameraDirection = inverse * Vector4D(0.0f, 0.0f, -1.0f, 0.0f);
}

// ---- projection, light, fog --------------------------------------------------

void World::setProjection(const Matrix4D& newProjection)
{
    projection = newProjection;
    sceneChanged = true;
}

void World::setProjection(float newAngle, int newWidth, int newHeight, float newNear, float newFar)
{
    width = newWidth;
    height = newHeight;
    nearDistance = newNear;
    farDistance = newFar;
    angle = newAngle;
    float ratio = 1.0f;
    if (newHeight != 0) {
        ratio = static_cast<float>(newWidth) / static_cast<float>(newHeight);
    } else {
        std::cout << "[Warning] projection height is 0, square ratio used" << std::endl;
    }
    projection.setProjection(newAngle, ratio, newNear, newFar);
    sceneChanged = true;
}

void World::setMainLight(const Vector4D& light)
{
    mainLight = light;
    sceneChanged = true;
}

void World::setPhong(const Vector4D& coefficients)
{
    phong = coefficients;
    sceneChanged = true;
}

void World::setFogColor(const Vector4D& colour)
{
    fogColor = colour;
    sceneChanged = true;
}

void World::setFogStart(float start)
{
    fogStart = start;
    sceneChanged = true;
}

void World::setFogEnd(float end)
{
    fogEnd = end;
    sceneChanged = true;
}

// ---- picking and selection -----------------------------------------------------

bool World::computePick(int x, int y, Vector4D& origin, Vector4D& direction, Vector4D& up)
{
    const float w = static_cast<float>(width);
    const float h = static_cast<float>(height);
    direction = Vector4D((2.0f * static_cast<float>(x) / w - 1.0f) / projection.m[0],
                         (1.0f - 2.0f * static_cast<float>(y) / h) / projection.m[5], -1.0f, 0.0f);
    origin = Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
    up = Vector4D(0.0f, 1.0f, 0.0f, 0.0f);
    Matrix4D inverse;
    if (!inverseView(inverse, "[Error] ComputePick in World view not invertible")) {
        return false;
    }
    origin = inverse * origin;
    direction = inverse * direction;
    up = inverse * up;
    direction.normalize3D();
    if (verbose) {
        std::cout << "Origin:" << origin << " / Direction:" << direction << std::endl;
    }
    return true;
}

IObject3D* World::pickObject(int x, int y, Triangle& triangle)
{
    (void)triangle;
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    if (!computePick(x, y, origin, direction, up)) {
        return nullptr;
    }
    // Nothing can be hit while the scene holds no objects.
    return nullptr;
}

void World::rotSelection(float a)
{
    (void)a;
    if (selected == nullptr) {
        return;
    }
}

void World::deleteSelection()
{
    if (selected == nullptr) {
        return;
    }
}

void World::addSelection()
{
    if (selected == nullptr) {
        return;
    }
}

void World::subtractSelection()
{
    if (selected == nullptr) {
        return;
    }
}

void World::moveSelectionBeam(int x, int y)
{
    if (selectionDisabled || width <= 0 || height <= 0) {
        return;
    }
    Vector4D up;
    computePick(x, y, beamOrigin, beamDirection, up);
}

}  // namespace korvel
