// The game as a player runs it: real executables on the test display, each in
// a directory of its own with its own path.def, data and config.def, driven by
// keys and clicks sent through xdotool. Every wait is on a line of a log, a
// window or the end of a process.

#include "app/ApplicationQuorbane.h"
#include "scene/World.h"
#include "support/ProgramRunTesting.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

using program_run::linesInOrder;
using program_run::readFile;
using program_run::shell;

// A UDP port that nothing holds right now.
int freePort()
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof a;
    ::bind(fd, reinterpret_cast<sockaddr*>(&a), length);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &length);
    ::close(fd);
    return ntohs(a.sin_port);
}

int countOf(const std::string& text, const std::string& line)
{
    int count = 0;
    for (std::size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) {
        ++count;
    }
    return count;
}

// The ids after "[Information] Server message Id: ", in log order.
std::vector<unsigned long long> shownIds(const std::string& log)
{
    std::vector<unsigned long long> ids;
    const std::regex id("\\[Information\\] Server message Id: (\\d+)");
    for (auto m = std::sregex_iterator(log.begin(), log.end(), id); m != std::sregex_iterator(); ++m) {
        ids.push_back(std::stoull((*m)[1]));
    }
    return ids;
}

// Datagrams from a stranger: random bytes, and framed requests (move or shot,
// or any code) carrying random values, NaN and infinities included.
void hostileDatagrams(int port, int count)
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::mt19937 random(99);
    for (int i = 0; i < count; ++i) {
        const bool framed = i % 3 != 0;
        std::vector<unsigned char> bytes(framed ? (i % 2 == 0 ? 64 : 48) : random() % 100);
        for (unsigned char& b : bytes) {
            b = static_cast<unsigned char>(random());
        }
        if (framed) {
            // Payload, code, id, type 0: a request as a client frames it.
            const short code = static_cast<short>(i % 5 == 0 ? random() : (i % 2 == 0 ? 1 : 0));
            const uint64_t id = static_cast<uint64_t>(i);
            const short type = 0;
            const std::size_t at = bytes.size();
            bytes.resize(at + 12);
            std::memcpy(bytes.data() + at, &code, 2);
            std::memcpy(bytes.data() + at + 2, &id, 8);
            std::memcpy(bytes.data() + at + 10, &type, 2);
        }
        ::sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
    ::close(fd);
}

// One instance of the game in a directory of its own.
class Game {
public:
    explicit Game(const std::string& config)
    {
        char pattern[] = "/tmp/quorbane-game-XXXXXX";
        root = mkdtemp(pattern);
        data = root / "data";
        fs::create_directories(root / "bin");
        fs::create_directories(data);
        fs::copy(fs::path(KORVEL_BINARY_DIR) / "quorbane", root / "bin" / "quorbane");
        const fs::path shared = (fs::path(KORVEL_TEST_DATA) / "../../../data").lexically_normal();
        for (const auto& entry : fs::directory_iterator(shared)) {
            const std::string name = entry.path().filename().string();
            if (name != "config.def" && entry.path().extension() != ".log" && name.rfind("Quorbane", 0) != 0) {
                fs::create_symlink(entry.path(), data / name);
            }
        }
        std::ofstream(root / "bin" / "path.def") << "<Path><Absolute>" << data.string() << "/</Absolute></Path>\n";
        std::ofstream(data / "config.def") << config;
    }
    ~Game()
    {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    Game(const Game&) = delete;
    Game& operator=(const Game&) = delete;

    // Starts it and waits for its window.
    bool start()
    {
        pid = fork();
        if (pid == 0) {
            const int fd = ::open((root / "console.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            close(fd);
            const std::string exe = (root / "bin" / "quorbane").string();
            execl(exe.c_str(), exe.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        window = program_run::windowOf(pid);
        // Keys go to the window as events, not through the server's keyboard
        // (a key held there would repeat into the next window).
        shell("xdotool windowfocus $(xdotool search --maxdepth 0 '' | head -n 1)");
        return !window.empty();
    }

    // The console (before the log takes over) and the log file.
    std::string text() const
    {
        std::string all = readFile(root / "console.txt");
        for (const auto& entry : fs::directory_iterator(data)) {
            if (entry.path().extension() == ".log") {
                all += readFile(entry.path());
            }
        }
        return all;
    }

    // Waits until the text holds `line` at least `count` times.
    bool waitFor(const std::string& line, int count = 1, int limitSeconds = 60) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(limitSeconds);
        while (countOf(text(), line) < count) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return true;
    }

    void key(const std::string& keys) const { shell("xdotool key --window " + window + " " + keys); }

    // A pointer move inside the window (on top, so that it gets the motion)
    // and a click sent to it.
    void click(int x, int y) const
    {
        shell("xdotool windowraise " + window + " mousemove --window " + window + " " + std::to_string(x) + " " +
              std::to_string(y) + " click --window " + window + " 1");
    }

    void moveWindow(int x, int y) const
    {
        shell("xdotool windowmove " + window + " " + std::to_string(x) + " " + std::to_string(y));
    }

    // Does `act` until `other` has written `line` `more` times more than
    // before: an event sent while the display is busy with other tests'
    // windows may be lost, so it is sent again a few times.
    bool until(const std::function<void()>& act, const Game& other, const std::string& line, int more) const
    {
        const int target = countOf(other.text(), line) + more;
        for (int attempt = 0; attempt < 4; ++attempt) {
            act();
            if (other.waitFor(line, target, 15)) {
                return true;
            }
        }
        return false;
    }

    // Escape until it ends; its exit status, -1 when it had to be killed.
    int quit()
    {
        int status = 0;
        for (int tick = 0; waitpid(pid, &status, WNOHANG) != pid; ++tick) {
            if (tick == 600) {
                kill(pid, SIGKILL);
                waitpid(pid, &status, 0);
                pid = -1;
                return -1;
            }
            if (tick % 30 == 0) {
                key("Escape");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Ends it at once, as a crash or a pulled cable would.
    void kill9()
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        pid = -1;
    }

    fs::path root;
    fs::path data;
    pid_t pid = -1;
    std::string window;
};

const std::string smallView = "<View><Width>320</Width><Height>240</Height><Start>1</Start><End>300</End></View>\n";

TEST(ApplicationQuorbaneGLTest, AloneItStartsFliesFiresAndEndsOnEscapeLeavingOnlyTheLongLivedObjects)
{
    Game game(smallView + "<Memory><Verbose>1</Verbose></Memory>\n");
    ASSERT_TRUE(game.start());
    ASSERT_TRUE(game.waitFor("[Success] world initialized"));
    game.key("z z Right Up s");
    for (int shot = 0; shot < 3; ++shot) {
        game.click(160, 120);
    }
    ASSERT_TRUE(game.waitFor("[information] Position in world: ", 10));
    EXPECT_EQ(game.quit(), 0);
    const std::string text = game.text();
    EXPECT_TRUE(linesInOrder(
        text, {"Buffer size: 8082", "COUNT_Enemies: 50", "COUNT_Bullets: 50", "COUNT_Explosions: 20",
               "[information] log is now directed to file ", "[Success] configuration retrieved",
               "[Success] model retrieved", "[Information] Joystick information: 0", "[Success] world initialized",
               "[information] Position in world: ", "[information] launch of delete world",
               "Count of initialized Objects: ", "Object ID: ", "[information] End logging events"}));
    EXPECT_EQ(("\n" + text).find("\n[ERROR]"), std::string::npos) << text;
    EXPECT_EQ(("\n" + text).find("\n[Error]"), std::string::npos) << text;
    EXPECT_EQ(text.find("application is server"), std::string::npos);

    // What outlives the world: the application with the bodies it holds by
    // value, and the managers with what they own. No scene object, shape,
    // buffer or stray force.
    std::map<std::string, int> live;
    const std::regex listed("Object ID: \\d+ / instance of class: (\\w+)");
    for (auto m = std::sregex_iterator(text.begin(), text.end(), listed); m != std::sregex_iterator(); ++m) {
        ++live[(*m)[1]];
    }
    // Bodies are scene objects, listed twice each (two object roots), each
    // with its boundary shape; the application keeps one pick triangle.
    const std::map<std::string, int> bodies = {
        {"Enemy", 100},     {"Bullet", 100},     {"Explosion", 40},      {"Fusion", 2},
        {"PhysicalObject", 2}, {"ForceBlow", 150}, {"ForceField", 1},    {"IncarnationObserver", 122},
        {"Shape", 122},     {"Triangle", 1},     {"ApplicationQuorbane", 1}};
    const std::set<std::string> managers = {
        "ApplicationManager3D", "ShaderProgramManagerBase", "ShaderProgramBase", "ShaderVertex", "ShaderFragment",
        "TextureManager",       "TextureBase",              "Texture",           "ModelManager", "FactoryManager",
        "IFactory",             "LogBuffer",                "OpenGLError",       "NetworkManager"};
    for (const auto& [name, count] : live) {
        const auto body = bodies.find(name);
        if (body != bodies.end()) {
            EXPECT_EQ(count, body->second) << name;
        } else {
            EXPECT_EQ(managers.count(name), 1u) << name << " x" << count << " still alive";
        }
    }
}

// Not called at start-up, but whole: the role banner above the eye, readable,
// and the beam, alive with its incarnation.
TEST(ApplicationQuorbaneGLTest, TheBannerAndTheBeamCanBeAddedToARunningGame)
{
    Game files(smallView);
    korvel::ApplicationQuorbane game;
    game.setPath(files.data.string() + "/");
    game.setApplicationName("Quorbane");
    ASSERT_TRUE(game.init());
    korvel::World& world = *game.getWorld();
    const std::size_t before = world.countElements();
    ASSERT_TRUE(game.initTextBanner());
    ASSERT_TRUE(game.initWorldFusion());
    EXPECT_EQ(world.countElements(), before + 2);
    EXPECT_TRUE(game.getFusion().isAlive);
    ASSERT_NE(game.getFusion().getIncarnation(), nullptr);

    // The banner stands 2 up and 2 ahead of the eye: looking up at it, its
    // letters fill a band across the middle of the window.
    world.rotX(-0.7853982f);
    world.update();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    world.draw();
    std::vector<unsigned char> pixels(320 * 240 * 4);
    glReadPixels(0, 0, 320, 240, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    // Rows from the bottom; the ship (15, 10, -20) shows lower right.
    int band = 0;
    int above = 0;
    for (int y = 0; y < 240; ++y) {
        for (int x = 0; x < 240; ++x) {
            const unsigned char* p = &pixels[4 * (y * 320 + x)];
            const bool lit = p[0] + p[1] + p[2] > 200;
            band += lit && y > 105 && y < 135 ? 1 : 0;
            above += lit && y > 150 ? 1 : 0;
        }
    }
    EXPECT_GT(band, 150) << "the banner's letters";
    EXPECT_EQ(above, 0);
    EXPECT_TRUE(game.releaseAll());
}

TEST(ApplicationQuorbaneGLTest, TwoInstancesPlayTogetherOverLoopbackShrugOffAStrangerAndTheClientOutlivesTheServer)
{
    const int port = freePort();
    const std::string serve = smallView + "<isServer><port>" + std::to_string(port) + "</port></isServer>\n";
    const std::string join =
        smallView + "<server><address>127.0.0.1</address><port>" + std::to_string(port) + "</port></server>\n";
    auto server = std::make_unique<Game>(serve);
    ASSERT_TRUE(server->start());
    ASSERT_TRUE(server->waitFor("[Success] server is now reading in pool the messages !"));
    Game client(join);
    ASSERT_TRUE(client.start());
    // Out of the corner where the other tests' windows open.
    client.moveWindow(940, 460);
    ASSERT_TRUE(client.waitFor("[Success] client is now reading in pool the messages !"));

    // Until the client speaks, the server does not know where to send.
    const std::string moved = "[Information] avatar moved by the client to: ";
    ASSERT_TRUE(client.until([&] { client.key("z"); }, *server, moved, 1));
    ASSERT_TRUE(client.waitFor("[Information] Server message Id: ", 20));
    const std::vector<unsigned long long> ids = shownIds(client.text());
    ASSERT_GE(ids.size(), 20u);
    EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()), ids.end()) << "ids must rise";

    // A key on the client moves the server's avatar; a click arms it.
    ASSERT_TRUE(client.until([&] { client.key("Right"); }, *server, moved, 2));
    const std::string fired = "[Information] bullet fired for the client: ";
    ASSERT_TRUE(client.until([&] { client.click(160, 120); }, *server, fired, 1));

    // A stranger floods the server's port: garbage, requests with any code
    // and any values. The server serves or refuses each and plays on.
    const int served = countOf(server->text(), "Manager request - ");
    hostileDatagrams(port, 300);
    ASSERT_TRUE(server->waitFor("Manager request - ", served + 200));
    const std::size_t shownBefore = shownIds(client.text()).size();
    ASSERT_TRUE(client.waitFor("[Information] Server message Id: ", static_cast<int>(shownBefore) + 20));

    // The server goes: the client says so and keeps running.
    server->kill9();
    const int missing = countOf(client.text(), "[Information] No update from server !");
    ASSERT_TRUE(client.waitFor("[Information] No update from server !", missing + 50));

    // A new server on the same port: it learns of the client at its next
    // key, and its first updates carry ids the client has already passed.
    const std::vector<unsigned long long> before = shownIds(client.text());
    server = std::make_unique<Game>(serve);
    ASSERT_TRUE(server->start());
    ASSERT_TRUE(server->waitFor("[Success] server is now reading in pool the messages !"));
    ASSERT_TRUE(client.until([&] { client.key("Left"); }, *server, moved, 1));
    // Shown again once the new server's ids pass the old ones.
    ASSERT_TRUE(client.waitFor("[Information] Server message Id: ", static_cast<int>(before.size()) + 10, 90));
    const std::vector<unsigned long long> after = shownIds(client.text());
    EXPECT_GT(after[before.size()], before.back());

    EXPECT_EQ(client.quit(), 0);
    EXPECT_EQ(server->quit(), 0);
    for (const std::string& text : {client.text(), server->text()}) {
        EXPECT_EQ(("\n" + text).find("\n[ERROR]"), std::string::npos) << text;
    }
}

}  // namespace
