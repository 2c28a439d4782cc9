#include "app/ApplicationQuorbane.h"

#include "core/Random.h"
#include "geometry/Cylinder.h"
#include "geometry/Shape.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/Sphere.h"
#include "network/Client.h"
#include "network/NetworkLog.h"
#include "network/NetworkManager.h"
#include "network/Server.h"
#include "parser/BaseParserElement.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "render/TextFont.h"
#include "render/TextProvider.h"
#include "render/TextureManager.h"
#include "scene/ModelManager.h"
#include "scene/Shape3D.h"
#include "scene/ShapeIndexed3D.h"
#include "scene/World.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <cstring>
#include <iostream>

namespace korvel {

const char* ApplicationQuorbane::className = "ApplicationQuorbane";

namespace {

const char* const enemyModels[2] = {"asteroid", "asteroid2"};

ShaderProgramBase* fetchProgram(const char* name)
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    auto* program = manager != nullptr ? dynamic_cast<ShaderProgramBase*>(manager->getProgram(name)) : nullptr;
    if (program == nullptr) {
        std::cout << "[ERROR] game shader program not available: " << name << std::endl;
    }
    return program;
}

// Identity, then placed at p.
void placeAt(IObject3D& object, const Vector4D& p)
{
    Matrix4D* matrix = object.getMatrixObjectChange();
    if (matrix != nullptr) {
        matrix->setI4();
        matrix->setPosition(p.x, p.y, p.z);
    }
}

}  // namespace

ApplicationQuorbane::ApplicationQuorbane()
    : bufferSize(8082),
      bulletSlots{},
      enemySlots{},
      player(&avatar),
      isServer(false),
      isClient(false),
      isConnected(false),
      client(nullptr),
      server(nullptr),
      port(0),
      joystickFireDown(false)
{
    std::cout << "Buffer size: " << bufferSize << std::endl;
    // The colour of space behind everything.
    backgroundColour = Vector4D(0.01f, 0.01f, 0.05f, 1.0f);
    std::cout << "COUNT_Enemies: " << countEnemies << std::endl;
    std::cout << "COUNT_Bullets: " << countBullets << std::endl;
    std::cout << "COUNT_Explosions: " << countExplosions << std::endl;
}

ApplicationQuorbane::~ApplicationQuorbane()
{
    delete client;
    client = nullptr;
    delete server;
    server = nullptr;
}

bool ApplicationQuorbane::initGL()
{
    return true;
}

bool ApplicationQuorbane::initPhysic()
{
    pointSlotsAtBodies();
    return true;
}

void ApplicationQuorbane::pointSlotsAtBodies()
{
    for (int i = 0; i < countBullets; ++i) {
        bulletSlots[i] = &bullets[i];
    }
    for (int i = 0; i < countEnemies; ++i) {
        enemySlots[i] = &enemies[i];
    }
    player = &avatar;
}

bool ApplicationQuorbane::initWorld()
{
    initLocalShaders();
    pointSlotsAtBodies();
    if (getNetworkConfiguration() && NetworkManager::getInstance().init()) {
        if (isServer) {
            initServer();
        } else {
            initClient();
        }
    }
    playAloneUnlessConnected();
    const int joystick = window != nullptr ? glfwJoystickPresent(GLFW_JOYSTICK_1) : 0;
    std::cout << "[Information] Joystick information: " << joystick << std::endl;
    setCulling(true);
    if (!initWorldEnemies() || !initWorldBullets() || !initWorldExplosions()) {
        return false;
    }
    if (!initWorldAvatars()) {
        return false;
    }
    updateFrequency = 50.0f;
    return true;
}

void ApplicationQuorbane::playAloneUnlessConnected()
{
    if ((isServer || isClient) && !isConnected) {
        std::cout << "[Warning] network role not taken up, the game is played alone" << std::endl;
        isServer = false;
        isClient = false;
    }
}

ShaderProgramBase* ApplicationQuorbane::registerProgram(const char* name)
{
    ShaderProgramBase* program = fetchProgram(name);
    if (program != nullptr && world != nullptr) {
        world->initializeShaderProgram(program);
    }
    return world != nullptr ? program : nullptr;
}

bool ApplicationQuorbane::initLocalShaders()
{
    registerProgram("MapTextured");
    if (world == nullptr) {
        return true;
    }
    // Space fades into its own colour, over the far half of the view, rather
    // than into a white fog.
    world->setFogColor(backgroundColour);
    world->setFogStart(viewEnd * 0.5f);
    world->setFogEnd(viewEnd);
    return true;
}

// ---- population -----------------------------------------------------------------

bool ApplicationQuorbane::initWorldEnemies()
{
    for (Enemy& enemy : enemies) {
        int index = static_cast<int>(Random::aleaFloatZeroRange(2.0f));
        if (index == 2) {
            index = 1;
        }
        IObject3D* clone = ModelManager::getInstance()->createClone(enemyModels[index]);
        if (clone == nullptr) {
            std::cout << "[ERROR] enemy model not available: " << enemyModels[index] << std::endl;
            return false;
        }
        world->addElement(clone);
        placeAt(*clone, Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
        enemy.setIncarnation(clone);
        // Enemies start dead, so unseen until range keeping places them.
        clone->hide();
    }
    return true;
}

bool ApplicationQuorbane::initWorldBullets()
{
    ShaderProgramBase* laser = fetchProgram("Laser");
    if (laser == nullptr) {
        return false;
    }
    Matrix4D quarterTurn = Matrix4D::getI4();
    quarterTurn.rotX(1.5707964f);
    for (Bullet& bullet : bullets) {
        auto* shape = new ShapeIndexed();
        Cylinder(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), 2.0f, 0.15f).includeShape(shape, nullptr);
        shape->transform(quarterTurn);
        auto* object = new ShapeIndexed3D();
        object->setElementKind(IObject3D::kindBlended);
        object->setShape(shape);
        object->setShaderProgram(laser);
        placeAt(*object, Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
        object->changeMatrixObject();
        object->make();
        bullet.setIncarnation(object);
        bullet.radius = 1.0f;
        object->hide();
        world->addElement(object);
    }
    return true;
}

bool ApplicationQuorbane::initWorldExplosions()
{
    ShaderProgramBase* flash = fetchProgram("Explosion");
    if (flash == nullptr) {
        return false;
    }
    for (Explosion& explosion : explosions) {
        auto* shape = new ShapeIndexed();
        Sphere sphere(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), 0.01f);
        sphere.setDivision(20);
        sphere.includeShape(shape, nullptr);
        auto* object = new ShapeIndexed3D();
        object->setShape(shape);
        object->setShaderProgram(flash);
        object->setElementKind(IObject3D::kindBlended);
        object->hide();
        placeAt(*object, Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
        // Not made, nothing would be drawn.
        object->make();
        explosion.setIncarnation(object);
        explosion.radius = 0.1f;
        world->addElement(object);
    }
    return true;
}

bool ApplicationQuorbane::initWorldAvatars()
{
    IObject3D* ship = ModelManager::getInstance()->createClone("spaceship");
    if (ship == nullptr) {
        std::cout << "[ERROR] avatar model not available: spaceship" << std::endl;
        return false;
    }
    world->addElement(ship);
    avatar.setIncarnation(ship);
    placeAt(avatar, Vector4D(15.0f, 10.0f, -20.0f, 1.0f));
    // The lifetime is written twice; the second one stays.
    avatar.lifetime = 1e26f;
    avatar.radius = 2.0f;
    avatar.changeMatrixObject();
    avatar.lifetime = 1e21f;
    avatar.mass = 50.0f;
    avatar.momentOfInertia = 15.0f;
    avatar.alive();
    return true;
}

bool ApplicationQuorbane::initWorldFusion()
{
    ShaderProgramBase* program = registerProgram("Fusion");
    if (program == nullptr) {
        return false;
    }
    Cylinder cylinder(Vector4D(0.0f, 0.0f, 0.0f, 1.0f), Vector4D(0.0f, 0.0f, 10.0f, 1.0f), 1.0f, 3.0f, false);
    cylinder.setDivision(20);
    auto* shape = new Shape();
    cylinder.includeShape(shape, nullptr);
    auto* beam = new Shape3D();
    beam->setShape(shape);
    beam->setShaderProgram(program);
    beam->setElementKind(IObject3D::kindBlended);
    beam->make();
    world->addElement(beam);
    placeAt(*beam, Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
    fusion.setIncarnation(beam);
    fusion.alive();
    return true;
}

bool ApplicationQuorbane::initTextBanner()
{
    ShaderProgramBase* program = registerProgram("Text");
    if (program == nullptr) {
        return false;
    }
    std::cout << "[Information] path: " << TextureManager::getInstance()->getPath() << std::endl;
    // The message keeps the atlas and the program, not the font.
    TextFont font;
    font.setShaderProgram(program);
    if (!font.importOFT(path + "Arial")) {
        std::cout << "[ERROR] Texture Arial ill formed !" << std::endl;
        return false;
    }
    TextProvider provider(&font, 0.2f);
    provider.setAlignment(TextProvider::Alignment::centre);
    std::cout << "creation message banner" << std::endl;
    const char* text = "Application is not connected to a network !";
    if (isConnected && isServer) {
        text = "Application behaves as server !";
    } else if (isConnected && isClient) {
        text = "Application behaves as client !";
    }
    Shape3D* banner = provider.createMessage(text);
    if (banner == nullptr) {
        return false;
    }
    placeAt(*banner, Vector4D(0.0f, 2.0f, -2.0f, 1.0f));
    banner->changeMatrixObject();
    banner->setElementKind(IObject3D::kindBlended);
    world->addElement(banner);
    return true;
}

// ---- network role ---------------------------------------------------------------

bool ApplicationQuorbane::getNetworkConfiguration()
{
    if (configuration == nullptr) {
        return false;
    }
    configuration->startAttributes();
    BaseParserElement* element = configuration->getNextAttribute("server");
    if (element != nullptr) {
        isServer = false;
        isClient = true;
        element->startAttributes();
        if (!element->getNextAttributeValueString("address", serverAddress)) {
            return false;
        }
        element->startAttributes();
        return element->getNextAttributeValueInt("port", port);
    }
    configuration->startAttributes();
    element = configuration->getNextAttribute("isServer");
    if (element == nullptr) {
        return false;
    }
    std::cout << "[Information] application is server" << std::endl;
    element->startAttributes();
    if (element->getNextAttributeValueInt("port", port)) {
        isServer = true;
        isClient = false;
        std::cout << "Port: " << port << std::endl;
        return true;
    }
    std::cout << "[ERROR] Port not defined!" << std::endl;
    return false;
}

bool ApplicationQuorbane::initNetwork()
{
    if (!getNetworkConfiguration() || !NetworkManager::getInstance().init()) {
        return false;
    }
    return isServer ? initServer() : initClient();
}

bool ApplicationQuorbane::initServer()
{
    if (server != nullptr) {
        std::cout << "[ERROR] server is already instantiated !" << std::endl;
        return false;
    }
    server = new Server(1);
    server->setBufferSize(static_cast<uint64_t>(bufferSize));
    server->setPort(port);
    isConnected = server->initConnection();
    if (!isConnected) {
        std::cout << "[ERROR] server is not connecting !" << std::endl;
        return false;
    }
    std::cout << "[Success] server is now connected before accepting potential clients!" << std::endl;
    if (server->initReadPoolClients()) {
        std::cout << "[Success] server is now reading in pool the messages !" << std::endl;
        isServer = true;
        return true;
    }
    isServer = false;
    std::cout << "[ERROR] server cannot read pool of messages" << std::endl;
    return false;
}

bool ApplicationQuorbane::initClient()
{
    if (client != nullptr) {
        // The server's words, for the client too.
        std::cout << "[ERROR] server is already instantiated !" << std::endl;
        return false;
    }
    client = new Client();
    client->setBufferSize(static_cast<uint64_t>(bufferSize));
    return connectToServer();
}

bool ApplicationQuorbane::connectToServer()
{
    if (client == nullptr) {
        std::cout << "[ERROR] client is not instantiated !" << std::endl;
        return false;
    }
    client->setServerAddress(serverAddress);
    client->setPort(port);
    if (!client->initConnection()) {
        std::cout << "[ERROR] client couldn't connect !" << std::endl;
        return false;
    }
    isConnected = true;
    if (client->initReadPoolLastServer()) {
        std::cout << "[Success] client is now reading in pool the messages !" << std::endl;
        isClient = true;
        return true;
    }
    isClient = false;
    std::cout << "[ERROR] client cannot read pool of messages" << std::endl;
    return false;
}

}  // namespace korvel
