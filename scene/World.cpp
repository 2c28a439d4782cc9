#include "scene/World.h"

#include "geometry/Shape.h"
#include "render/ShaderProgram.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "core/FactoryManager.h"
#include "scene/IObject3D.h"
#include "scene/SceneFactories.h"

#include <GL/gl.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <set>

namespace korvel {

const char* World::className = "World";
const char* const World::rootName = "<RootName>";

namespace {

// The marker floats this far above the marked face, so that it is not lost
// in the face's own depth.
constexpr float markerLift = 0.01f;
// The beam leaves from beside and below the eye (a beam through the eye
// would be seen end-on, as a dot): from this far right and down on the
// screen, in half screens, so from off its lower right corner. Its
// thickness is a part of its distance where it leaves.
constexpr float beamSide = 0.6f;
constexpr float beamDrop = 1.2f;
constexpr float beamThickness = 0.02f;

// Walks the manager's programs in name order, making each current through
// the manager and handing it to apply. Entries left null by a failed build,
// or of another program kind, are skipped.
template <typename Apply>
void forEachProgram(Apply apply)
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager == nullptr) {
        return;
    }
    for (auto& entry : manager->getPrograms()) {
        auto* program = dynamic_cast<ShaderProgramBase*>(entry.second);
        if (program != nullptr) {
            manager->useProgram(program);
            apply(*program);
        }
    }
}

}  // namespace

World::World()
    : generatedNameCounter(0),
      selected(nullptr),
      lastPicked(nullptr),
      selectionDisabled(true),
      selectionShown(false),
      markerTriangle(nullptr),
      markerChanged(true),
      markerFollows(false),
      beamShown(false),
      beamMade(false),
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
    createSelection();
    createBeam();
}

World::~World()
{
    releaseObjects();
}

// ---- elements ------------------------------------------------------------------

std::string World::addElement(IObject3D* object)
{
    return addElement(object != nullptr ? object->getName() : std::string(), object);
}

std::string World::addElement(const std::string& name, IObject3D* object)
{
    if (object == nullptr) {
        std::cout << "[Error] World cannot add a null element" << std::endl;
        return std::string();
    }
    std::string free = name.empty() ? std::string(rootName) : name;
    while (elements.count(free) != 0) {
        free = rootName + std::to_string(generatedNameCounter++);
    }
    // Visibility and picking go by the limits: take them from what the
    // object holds now, for those filled without being told.
    object->updateLimits();
    elements[free] = object;
    collectLeaves(object);
    return free;
}

bool World::removeElement(IObject3D* object)
{
    for (auto entry = elements.begin(); entry != elements.end(); ++entry) {
        if (entry->second != object) {
            continue;
        }
        elements.erase(entry);
        for (const auto& other : elements) {
            if (other.second == object) {
                return true;  // still registered under another name
            }
        }
        blended.remove(object);
        if (selected == object) {
            releaseSelection();
        }
        if (lastPicked == object) {
            lastPicked = nullptr;
        }
        return true;
    }
    return false;
}

void World::removeRelatedElements(IObject3D* object)
{
    if (object == nullptr) {
        return;
    }
    std::list<IObject3D*> leaves;
    object->supplyElements(leaves, IObject3D::kindPlain | IObject3D::kindBlended);
    for (IObject3D* leaf : leaves) {
        if (leaf->getElementKind() == IObject3D::kindBlended) {
            blendedLeaves.remove(leaf);
        } else if (leaf->getElementKind() == IObject3D::kindPlain) {
            plainLeaves.remove(leaf);
        } else {
            std::cout << "[ERROR] World removing element neither strictly BLENDED nor PLAIN" << std::endl;
        }
    }
}

void World::collectLeaves(IObject3D* object)
{
    object->supplyElements(plainLeaves, IObject3D::kindPlain);
    object->supplyElements(blendedLeaves, IObject3D::kindBlended);
}

bool World::forgetObject(IObject3D* object)
{
    bool registered = false;
    while (removeElement(object)) {
        registered = true;
    }
    std::list<IObject3D*> leaves;
    object->supplyElements(leaves, -1);
    leaves.push_back(object);
    for (IObject3D* leaf : leaves) {
        plainLeaves.remove(leaf);
        blendedLeaves.remove(leaf);
    }
    return registered;
}

void World::releaseObjects()
{
    std::cout << "World clean up objects" << std::endl;
    // One object may stand under several names: it is deleted once.
    std::set<IObject3D*> deleted;
    for (const auto& [name, object] : elements) {
        if (deleted.insert(object).second) {
            if (verbose) {
                std::cout << "[information] World deletes " << name << std::endl;
            }
            delete object;
        }
    }
    elements.clear();
    blended.clear();
    plainLeaves.clear();
    blendedLeaves.clear();
    releaseSelection();
    lastPicked = nullptr;
}

bool World::linkObjects()
{
    plainLeaves.clear();
    blendedLeaves.clear();
    bool made = true;
    for (const auto& [name, object] : elements) {
        collectLeaves(object);
        if (!object->isMade() && !object->make()) {
            std::cout << "[Warning] World object could not be made: " << name << std::endl;
            made = false;
        }
    }
    return made;
}

int World::getSizeSerializableObjects()
{
    int count = 0;
    for (const auto& entry : elements) {
        count += entry.second->isSerializable() ? 1 : 0;
    }
    return count;
}

IObject3D* World::getElement(const std::string& name) const
{
    const auto found = elements.find(name);
    return found != elements.end() ? found->second : nullptr;
}

// ---- programs ----------------------------------------------------------------

bool World::setup()
{
    mainLight.normalize3D();
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager != nullptr) {
        // Looked up, not asked for: asking would try to build it.
        const auto& programs = manager->getPrograms();
        const auto laser = programs.find("Laser");
        auto* program = laser != programs.end() ? dynamic_cast<ShaderProgramBase*>(laser->second) : nullptr;
        if (program != nullptr) {
            selectionDisabled = false;
            selectionMarker.setShaderProgram(program);
            selectionBeam.setShaderProgram(program);
        }
    }
    initializeShaderProgramManager();
    return true;
}

void World::initializeShaderProgramManager()
{
    forEachProgram([this](ShaderProgramBase& program) { initializeShaderProgram(&program); });
}

bool World::initializeShaderProgram(ShaderProgramBase* program)
{
    if (program == nullptr) {
        std::cout << "[Error] World cannot initialize a null shader program" << std::endl;
        return false;
    }
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager != nullptr) {
        manager->useProgram(program);
    } else {
        program->use();
    }
    program->setMatrixProjection(&projection);
    program->setMatrixView(&view);
    program->setLight(&mainLight);
    program->setCamera(&cameraPosition);
    program->setPhong(&phong);
    program->setFogColor(&fogColor);
    program->setFogEnd(fogEnd);
    program->setFogStart(fogStart);
    return true;
}

void World::update()
{
    updateViewParameters();
    updateObjectView();
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

void World::updateObjectView()
{
    for (const auto& entry : elements) {
        entry.second->changeView(view);
    }
    // Blended faces blend correctly only when drawn from the farthest. The
    // blended leaves are kept listed as elements come and go, so a frame
    // need not ask every element for them again.
    for (IObject3D* leaf : blendedLeaves) {
        auto* shape = leaf->isVisible() ? dynamic_cast<Shape3D*>(leaf) : nullptr;
        if (shape != nullptr) {
            shape->reorganize(view);
        }
    }
}

// ---- drawing -------------------------------------------------------------------

bool World::shouldDraw(IObject3D* object) const
{
    if (object == nullptr) {
        return false;
    }
    // Two corners only, no frustum planes: cheap, and coarse on purpose.
    Vector4D low = object->getWorldMin() - cameraPosition;
    Vector4D high = object->getWorldMax() - cameraPosition;
    if (low.norm3D() > farDistance && high.norm3D() > farDistance) {
        return false;
    }
    low.normalize3D();
    high.normalize3D();
    return !(low.scal3D(cameraDirection) < -0.2f && high.scal3D(cameraDirection) < -0.2f);
}

void World::draw()
{
    drawPlain();
    drawBlended();
}

void World::drawPlain()
{
    IObject3D::drawPlainListBlended(elements, [this](IObject3D* object) { return shouldDraw(object); }, blended);
}

void World::drawBlended()
{
    glEnable(GL_BLEND);
    for (IObject3D* object : blended) {
        object->draw();
    }
    if (!selectionDisabled) {
        if (selectionShown) {
            prepareMarker();
            selectionMarker.draw();
        }
        if (beamShown) {
            prepareBeam();
            selectionBeam.draw();
        }
    }
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

void World::placeCamera(const char* failure)
{
    Matrix4D inverse;
    if (!inverseView(inverse, failure)) {
        return;
    }
    cameraPosition = inverse * Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
    viewChanged = true;
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

void World::setCamera(const Vector4D& position)
{
    // The eye is where the view sends to the origin: translation = -R p.
    const Vector4D turned = view * Vector4D(position.x, position.y, position.z, 0.0f);
    view.setPosition(-turned.x, -turned.y, -turned.z);
    placeCamera("[Error] Set camera in World view not invertible");
}

void World::moveIn(float step)
{
    view.translate3D(Vector4D(0.0f, 0.0f, step, 0.0f));
    placeCamera("[Error] Move in World view not invertible");
}

void World::moveToWorld(float dx, float dy, float dz)
{
    const Vector4D turned = view * Vector4D(dx, dy, dz, 0.0f);
    view.translate3D(turned * -1.0f);
    placeCamera("[Error] Move to world in World view not invertible");
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

// ---- picking -------------------------------------------------------------------

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

IObject3D* World::pickObject(const Vector4D& origin, const Vector4D& direction, Triangle& triangle)
{
    // The box test is cheap and rules most objects out before their
    // triangles are looked at.
    std::list<IObject3D*> candidates;
    for (const auto& [name, object] : elements) {
        if (object->isIntersectingBoundariesLine(origin, direction)) {
            candidates.push_back(object);
            if (verbose) {
                std::cout << "Object has been preselected: " << name << std::endl;
            }
        }
    }
    IObject3D* picked = nullptr;
    float pickedDistance = 0.0f;
    Triangle hit;
    for (IObject3D* candidate : candidates) {
        if (!candidate->getIntersectingLine(origin, direction, hit)) {
            continue;
        }
        const float distance = (hit.getIsoBaryCenter() - origin).norm3D();
        if (picked == nullptr || distance < pickedDistance) {
            picked = candidate;
            pickedDistance = distance;
            triangle = hit;
        }
    }
    lastPicked = picked;
    return picked;
}

IObject3D* World::pickObject(int x, int y, Triangle& triangle)
{
    Vector4D origin;
    Vector4D direction;
    Vector4D up;
    if (!computePick(x, y, origin, direction, up)) {
        return nullptr;
    }
    return pickObject(origin, direction, triangle);
}

IObject3D* World::pickObject(int x, int y)
{
    return pickObject(x, y, pickTriangle);
}

// ---- selection -----------------------------------------------------------------

void World::createSelection()
{
    selected = nullptr;
    auto* shape = new Shape();
    markerTriangle = new Triangle(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), Vector4D(1.0f, 0.0f, 0.0f, 1.0f),
                                  Vector4D(0.0f, 1.0f, 0.0f, 1.0f));
    shape->addTriangle(markerTriangle);
    selectionMarker.setShape(shape);
    selectionMarker.setMatriceObjectOwned(new Matrix4D(Matrix4D::getI4()));
    selectionMarker.setElementKind(IObject3D::kindBlended);
    selectionMarker.drawBothFaces = true;
    pickTriangle = Triangle();
    markerChanged = true;
    markerFollows = false;
    selectionShown = false;
    selectionDisabled = true;
}

void World::createBeam()
{
    auto* shape = new Shape();
    auto at = [](float x, float y, float z) { return Vector4D(x, y, z, 1.0f); };
    const float h = 0.5f;
    // A square bar from x = 0 to x = 1; its matrix stretches and places it.
    shape->addQuad(at(0, -h, -h), at(1, -h, -h), at(1, h, -h), at(0, h, -h));
    shape->addQuad(at(0, -h, h), at(0, h, h), at(1, h, h), at(1, -h, h));
    shape->addQuad(at(0, -h, -h), at(0, -h, h), at(1, -h, h), at(1, -h, -h));
    shape->addQuad(at(0, h, -h), at(1, h, -h), at(1, h, h), at(0, h, h));
    shape->addQuad(at(1, -h, -h), at(1, -h, h), at(1, h, h), at(1, h, -h));
    selectionBeam.setShape(shape);
    selectionBeam.setMatriceObjectOwned(new Matrix4D(Matrix4D::getI4()));
    selectionBeam.setElementKind(IObject3D::kindBlended);
    selectionBeam.drawBothFaces = true;
    beamMade = false;
    beamShown = false;
}

void World::setSelection(IObject3D* object, const Triangle& triangle)
{
    if (object == nullptr) {
        releaseSelection();
        return;
    }
    selected = object;
    pickTriangle = triangle;
    Vector4D lift = triangle.getNormal();
    lift.normalize3D();
    lift *= markerLift;
    // Kept in the object's own frame, the marker rides along when the object
    // moves; an object that cannot be undone from its matrix is marked where
    // it stands.
    const Matrix4D* placement = object->getMatrixObject();
    Matrix4D toObject;
    markerFollows = placement != nullptr && placement->invert(toObject);
    for (int i = 0; i < 3; ++i) {
        Vector4D p = *triangle.points[i] + lift;
        p.w = 1.0f;
        *markerTriangle->points[i] = markerFollows ? toObject * p : p;
    }
    *selectionMarker.getMatrixObjectChange() = markerFollows ? *placement : Matrix4D::getI4();
    selectionMarker.changeMatrixObject();
    markerChanged = true;
    selectionShown = true;
}

void World::releaseSelection()
{
    selected = nullptr;
    selectionShown = false;
}

void World::prepareMarker()
{
    if (markerChanged) {
        selectionMarker.make();
        markerChanged = false;
    }
    if (markerFollows && selected != nullptr && selected->getMatrixObject() != nullptr) {
        *selectionMarker.getMatrixObjectChange() = *selected->getMatrixObject();
    }
}

void World::prepareBeam()
{
    if (!beamMade) {
        selectionBeam.make();
        beamMade = true;
    }
}

void World::rotSelection(float a)
{
    Matrix4D* placement = selected != nullptr ? selected->getMatrixObjectChange() : nullptr;
    if (placement == nullptr) {
        return;
    }
    // About the vertical through the object's own position.
    const Vector4D position = placement->getPosition();
    placement->setPosition(0.0f, 0.0f, 0.0f);
    placement->rotY(a);
    placement->setPosition(position.x, position.y, position.z);
    selected->changeMatrixObject();
}

void World::scaleSelection(float factor)
{
    Matrix4D* placement = selected != nullptr ? selected->getMatrixObjectChange() : nullptr;
    if (placement == nullptr) {
        return;
    }
    placement->enlarge(factor);
    selected->changeMatrixObject();
}

void World::addSelection()
{
    scaleSelection(selectionScaleStep);
}

void World::subtractSelection()
{
    scaleSelection(1.0f / selectionScaleStep);
}

void World::deleteSelection()
{
    IObject3D* victim = selected;
    if (victim == nullptr) {
        return;
    }
    const bool owned = forgetObject(victim);
    releaseSelection();
    // Only what the world owns is deleted; a selection made from outside
    // the world is merely let go.
    if (owned) {
        delete victim;
    }
}

void World::moveSelectionBeam(int x, int y)
{
    if (selectionDisabled || width <= 0 || height <= 0 || projection.m[0] == 0.0f || projection.m[5] == 0.0f) {
        return;
    }
    Vector4D up;
    if (!computePick(x, y, beamOrigin, beamDirection, up)) {
        return;
    }
    up.normalize3D();
    Vector4D right = beamDirection.pvect3D(up);
    right.normalize3D();
    // From the lower right corner of the screen, just past the near plane,
    // to the point under the cursor far ahead.
    const float depth = nearDistance > 0.0f ? 2.0f * nearDistance : 1.0f;
    Vector4D start = beamOrigin + beamDirection * depth + right * (beamSide * depth / projection.m[0])
        - up * (beamDrop * depth / projection.m[5]);
    start.w = 1.0f;
    const float reach = farDistance > 0.0f ? 0.5f * farDistance : 50.0f;
    Vector4D along = beamOrigin + beamDirection * reach - start;
    along.w = 0.0f;
    Matrix4D placement;
    if (!placement.setBaseMatrixXAxis(along)) {
        return;
    }
    placement.setColumn(0, placement.getColumn(0) * along.norm3D());
    placement.setColumn(1, placement.getColumn(1) * (beamThickness * depth));
    placement.setColumn(2, placement.getColumn(2) * (beamThickness * depth));
    placement.setPosition(start);
    *selectionBeam.getMatrixObjectChange() = placement;
    selectionBeam.changeMatrixObject();
    beamShown = true;
}

// ---- persistence -----------------------------------------------------------------

struct World::Context {
    Matrix4D view;
    Matrix4D projection;
    float angle = 0.0f;
    int32_t width = 0;
    int32_t height = 0;
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    Vector4D camera;
    Vector4D direction;
    Vector4D light;
    Vector4D phong;
    Vector4D fogColor;
    float fogStart = 0.0f;
    float fogEnd = 0.0f;
};

namespace {

// Nine significant digits while a world is written: every float then reads
// back to the very value it was.
class FullPrecision {
public:
    explicit FullPrecision(std::ostream& stream) : out(stream), old(stream.precision(9)) {}
    ~FullPrecision() { out.precision(old); }
    FullPrecision(const FullPrecision&) = delete;
    FullPrecision& operator=(const FullPrecision&) = delete;

private:
    std::ostream& out;
    std::streamsize old;
};

void writeFloats(std::ostream& out, const char* word, const float* values, int count)
{
    out << word;
    for (int i = 0; i < count; ++i) {
        out << ' ' << values[i];
    }
    out << '\n';
}

void writeVector(std::ostream& out, const char* word, const Vector4D& v)
{
    const float values[4] = {v.x, v.y, v.z, v.w};
    writeFloats(out, word, values, 4);
}

// A token quoted in a message, cut short when it is long (garbage often is).
std::string shown(const std::string& token)
{
    return token.size() > 40 ? token.substr(0, 40) + "..." : token;
}

bool fail(const std::string& why)
{
    std::cout << "[Error] World file " << why << std::endl;
    return false;
}

bool readToken(std::istream& in, std::string& token, const char* what)
{
    if (in >> token) {
        return true;
    }
    return fail(std::string("ends before ") + what);
}

bool expectWord(std::istream& in, const char* word)
{
    std::string token;
    if (!readToken(in, token, word)) {
        return false;
    }
    if (token != word) {
        return fail(std::string("ill-formed: ") + word + " expected, found " + shown(token));
    }
    return true;
}

// Reads the token whole, so that "nan" or "1e99" are named as what they are
// rather than stopping the stream somewhere inside them.
bool readFloat(std::istream& in, float& value, const char* what)
{
    std::string token;
    if (!readToken(in, token, what)) {
        return false;
    }
    char* end = nullptr;
    const float parsed = std::strtof(token.c_str(), &end);
    if (end == token.c_str() || *end != '\0') {
        return fail(std::string("ill-formed: ") + what + " holds " + shown(token));
    }
    if (!std::isfinite(parsed)) {
        return fail(std::string("holds a value that is not a finite number in ") + what + ": " + shown(token));
    }
    value = parsed;
    return true;
}

bool readFloats(std::istream& in, const char* word, float* values, int count)
{
    if (!expectWord(in, word)) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        if (!readFloat(in, values[i], word)) {
            return false;
        }
    }
    return true;
}

bool readVector(std::istream& in, const char* word, Vector4D& v)
{
    float values[4] = {};
    if (!readFloats(in, word, values, 4)) {
        return false;
    }
    v = Vector4D(values[0], values[1], values[2], values[3]);
    return true;
}

bool readInteger(std::istream& in, long long& value, long long min, long long max, const char* what)
{
    std::string token;
    if (!readToken(in, token, what)) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    const long long parsed = std::strtoll(token.c_str(), &end, 10);
    if (end == token.c_str() || *end != '\0' || errno == ERANGE || parsed < min || parsed > max) {
        return fail(std::string("ill-formed: ") + what + " holds " + shown(token));
    }
    value = parsed;
    return true;
}

}  // namespace

bool World::saveContext(std::ostream& out)
{
    FullPrecision precise(out);
    out << "Context\n";
    writeFloats(out, "View", view.m, 16);
    writeFloats(out, "Projection", projection.m, 16);
    out << "Frustum " << angle << ' ' << width << ' ' << height << ' ' << nearDistance << ' ' << farDistance
        << '\n';
    writeVector(out, "Camera", cameraPosition);
    writeVector(out, "Direction", cameraDirection);
    writeVector(out, "Light", mainLight);
    writeVector(out, "Phong", phong);
    writeVector(out, "FogColor", fogColor);
    const float fog[2] = {fogStart, fogEnd};
    writeFloats(out, "Fog", fog, 2);
    return out.good();
}

bool World::saveObjects(std::ostream& out)
{
    FullPrecision precise(out);
    bool result = true;
    out << "Objects " << getSizeSerializableObjects() << '\n';
    for (const auto& [name, object] : elements) {
        if (!object->isSerializable()) {
            std::cout << "[Warning] World object of a kind that cannot be saved left out: " << name << std::endl;
            continue;
        }
        out << "Element " << std::quoted(name) << ' ' << (object->isVisible() ? 1 : 0) << '\n';
        const Matrix4D* placement = object->getMatrixObject();
        writeFloats(out, "Placement", placement != nullptr ? placement->m : Matrix4D::getI4().m, 16);
        result = object->save(out) && result;
    }
    return result && out.good();
}

bool World::save(std::ostream& out)
{
    out << className << '\n';
    const bool context = saveContext(out);
    const bool objects = saveObjects(out);
    return context && objects;
}

bool World::readContext(std::istream& in, Context& c) const
{
    long long w = 0;
    long long h = 0;
    const bool read = expectWord(in, "Context") && readFloats(in, "View", c.view.m, 16)
        && readFloats(in, "Projection", c.projection.m, 16) && expectWord(in, "Frustum")
        && readFloat(in, c.angle, "Frustum") && readInteger(in, w, 0, INT32_MAX, "Frustum")
        && readInteger(in, h, 0, INT32_MAX, "Frustum") && readFloat(in, c.nearDistance, "Frustum")
        && readFloat(in, c.farDistance, "Frustum") && readVector(in, "Camera", c.camera)
        && readVector(in, "Direction", c.direction) && readVector(in, "Light", c.light)
        && readVector(in, "Phong", c.phong) && readVector(in, "FogColor", c.fogColor) && expectWord(in, "Fog")
        && readFloat(in, c.fogStart, "Fog") && readFloat(in, c.fogEnd, "Fog");
    c.width = static_cast<int32_t>(w);
    c.height = static_cast<int32_t>(h);
    return read;
}

void World::applyContext(const Context& c)
{
    view = c.view;
    projection = c.projection;
    angle = c.angle;
    width = c.width;
    height = c.height;
    nearDistance = c.nearDistance;
    farDistance = c.farDistance;
    cameraPosition = c.camera;
    cameraDirection = c.direction;
    mainLight = c.light;
    phong = c.phong;
    fogColor = c.fogColor;
    fogStart = c.fogStart;
    fogEnd = c.fogEnd;
    viewChanged = true;
    sceneChanged = true;
}

bool World::readObjects(std::istream& in, std::list<std::pair<std::string, IObject3D*>>& loaded) const
{
    long long count = 0;
    if (!expectWord(in, "Objects") || !readInteger(in, count, 0, INT32_MAX, "Objects")) {
        return false;
    }
    registerSceneFactories();
    for (long long i = 0; i < count; ++i) {
        std::string name;
        long long visibleFlag = 0;
        Matrix4D placement;
        std::string kind;
        if (!expectWord(in, "Element")) {
            return false;
        }
        if (!(in >> std::quoted(name)) || !readInteger(in, visibleFlag, 0, 1, "Element")
            || !readFloats(in, "Placement", placement.m, 16) || !readToken(in, kind, "an object's class")) {
            return in ? false : fail("ends inside an element");
        }
        ISerializable* created = FactoryManager::getInstance()->createObject(kind);
        auto* object = dynamic_cast<IObject3D*>(created);
        if (object == nullptr) {
            delete created;
            std::cout << "[Error] Factory creation error in World !" << std::endl;
            return false;
        }
        loaded.emplace_back(name, object);
        if (!object->load(in)) {
            return fail("holds an object that could not be loaded: " + shown(name));
        }
        if (object->getMatrixObject() == nullptr) {
            object->setMatriceObjectOwned(new Matrix4D(placement));
        }
        *object->getMatrixObjectChange() = placement;
        if (visibleFlag == 0) {
            object->hide();
        } else {
            object->show();
        }
        object->updateLimits();
        object->changeMatrixObject();
        if (!object->getWorldMin().isFinite() || !object->getWorldMax().isFinite()) {
            return fail("holds an object whose limits are not finite numbers: " + shown(name));
        }
        object->setName(name);
    }
    return true;
}

bool World::adoptObjects(std::list<std::pair<std::string, IObject3D*>>& loaded)
{
    for (auto& [name, object] : loaded) {
        addElement(name, object);
    }
    loaded.clear();
    // Loaded objects are not made yet; without a GL context a shape cannot
    // be, which is reported but keeps the load.
    linkObjects();
    return true;
}

bool World::loadContext(std::istream& in)
{
    Context context;
    if (!readContext(in, context)) {
        return false;
    }
    applyContext(context);
    return true;
}

bool World::loadObjects(std::istream& in)
{
    std::list<std::pair<std::string, IObject3D*>> loaded;
    if (!readObjects(in, loaded)) {
        for (auto& entry : loaded) {
            delete entry.second;
        }
        return false;
    }
    return adoptObjects(loaded);
}

bool World::load(std::istream& in)
{
    Context context;
    std::list<std::pair<std::string, IObject3D*>> loaded;
    if (!expectWord(in, className) || !readContext(in, context) || !readObjects(in, loaded)) {
        for (auto& entry : loaded) {
            delete entry.second;
        }
        return false;
    }
    applyContext(context);
    return adoptObjects(loaded);
}

}  // namespace korvel
