// The game as a player runs it: real executables on the test display, each in
// a directory of its own with its own path.def, data and config.def, driven by
// keys and clicks sent through xdotool. Every wait is on a line of a log, a
// window or the end of a process.

#include "app/ApplicationQuorbane.h"
#include "network/NetTestSupport.h"
#include "scene/World.h"
#include "support/ProgramRunTesting.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
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

void writeFile(const fs::path& file, const std::string& text)
{
    std::ofstream(file) << text;
}

int countOf(const std::string& text, const std::string& line)
{
    int count = 0;
    for (std::size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) {
        ++count;
    }
    return count;
}

std::string lastLine(const std::string& text)
{
    const std::string trimmed = text.substr(0, text.find_last_not_of('\n') + 1);
    return trimmed.substr(trimmed.find_last_of('\n') + 1);
}

bool hasErrorLine(const std::string& text)
{
    return ("\n" + text).find("\n[ERROR]") != std::string::npos || ("\n" + text).find("\n[Error]") != std::string::npos;
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
    nettest::RawUdp stranger;
    std::mt19937 random(99);
    for (int i = 0; i < count; ++i) {
        const bool framed = i % 3 != 0;
        nettest::Bytes bytes(framed ? (i % 2 == 0 ? 64 : 48) : random() % 100);
        for (unsigned char& b : bytes) {
            b = static_cast<unsigned char>(random());
        }
        if (framed) {
            // Payload, code, id, type 0: a request as a client frames it.
            const short code = static_cast<short>(i % 5 == 0 ? random() : (i % 2 == 0 ? 1 : 0));
            bytes.resize(bytes.size() + 2);
            std::memcpy(bytes.data() + bytes.size() - 2, &code, 2);
            bytes = nettest::framed(bytes, static_cast<uint64_t>(i), 0);
        }
        stranger.sendTo(port, bytes);
    }
}

// One instance of the game in a directory of its own: the shaders copied (a
// test may break them), the rest of the game's data linked.
class Game {
public:
    explicit Game(const std::string& config = "")
    {
        char pattern[] = "/tmp/quorbane-game-XXXXXX";
        root = mkdtemp(pattern);
        bin = root / "bin";
        data = root / "data";
        fs::create_directories(bin);
        fs::create_directories(data);
        fs::copy(fs::path(KORVEL_BINARY_DIR) / "quorbane", bin / "quorbane");
        const fs::path shared = (fs::path(KORVEL_TEST_DATA) / "../../../data").lexically_normal();
        for (const auto& entry : fs::directory_iterator(shared)) {
            const std::string name = entry.path().filename().string();
            if (name == "Shaders") {
                fs::copy(entry.path(), data / name, fs::copy_options::recursive);
            } else if (name != "config.def" && entry.path().extension() != ".log" && name.rfind("Quorbane", 0) != 0) {
                fs::create_symlink(entry.path(), data / name);
            }
        }
        writeFile(bin / "path.def", "<Path>\n<Absolute>" + data.string() + "/</Absolute>\n</Path>\n");
        if (!config.empty()) {
            writeFile(data / "config.def", config);
        }
    }
    ~Game()
    {
        kill9();
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    Game(const Game&) = delete;
    Game& operator=(const Game&) = delete;

    // Starts it in this environment less `unset`, with `added` set, and waits for its window if it is to
    // have one.
    bool start(bool withWindow = true)
    {
        std::vector<std::string> words = {"env"};
        for (const std::string& name : unset) {
            words.insert(words.end(), {"-u", name});
        }
        words.insert(words.end(), added.begin(), added.end());
        words.push_back((bin / "quorbane").string());
        std::vector<char*> argv;
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        pid = fork();
        if (pid == 0) {
            const int fd = ::open((root / "console.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            close(fd);
            execv("/usr/bin/env", argv.data());  // which execs the game in the same process
            _exit(127);
        }
        if (!withWindow) {
            return true;
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
        const std::string log = logName();
        return readFile(root / "console.txt") + (log.empty() ? std::string() : readFile(data / log));
    }

    std::string logName() const
    {
        for (const auto& entry : fs::directory_iterator(data)) {
            if (entry.is_regular_file() && entry.path().extension() == ".log") {
                return entry.path().filename().string();
            }
        }
        return std::string();
    }

    // "WxH" as the X server sees it.
    std::string windowSize() const
    {
        return shell("xdotool getwindowgeometry " + window + " | sed -n 's/.*Geometry: //p'");
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

    // Escape (when it has a window) until it ends; its exit status, -1 when
    // it had to be killed.
    int quit()
    {
        int status = 0;
        for (int tick = 0; waitpid(pid, &status, WNOHANG) != pid; ++tick) {
            if (tick == 900) {
                kill9();
                return -1;
            }
            if (tick % 30 == 0 && !window.empty()) {
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
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        pid = -1;
    }

    fs::path root;
    fs::path bin;
    fs::path data;
    std::vector<std::string> unset;  // names
    std::vector<std::string> added;  // "NAME=value"
    pid_t pid = -1;
    std::string window;
};

const std::string smallView = "<View><Width>320</Width><Height>240</Height><Start>1</Start><End>300</End></View>\n";

TEST(ApplicationQuorbaneGLTest, AloneItStartsInOrderFliesFiresAndEndsOnEscapeLeavingOnlyTheLongLivedObjects)
{
    Game game("<View>\n<Width>640</Width>\n<Height>480</Height>\n<Start>1</Start>\n<End>200</End>\n</View>\n"
              "<Picking><Verbose>1</Verbose></Picking>\n<Models><Verbose>1</Verbose></Models>\n"
              "<Shaders><SourceVerbose>1</SourceVerbose></Shaders>\n<Memory><Verbose>1</Verbose></Memory>\n");
    ASSERT_TRUE(game.start());
    EXPECT_EQ(game.windowSize(), "640x480");
    ASSERT_TRUE(game.waitFor("[Success] world initialized"));
    game.key("z z Right Up s");
    for (int shot = 0; shot < 3; ++shot) {
        game.click(160, 120);
    }
    ASSERT_TRUE(game.waitFor("[information] Position in world: ", 10));
    EXPECT_EQ(game.quit(), 0);
    const std::string text = game.text();
    const std::string logName = game.logName();
    EXPECT_TRUE(std::regex_match(logName, std::regex("Quorbane_\\d{4}(_\\d{2}){3}(-\\d{2}){2}\\.log"))) << logName;
    const std::string dir = game.data.string() + "/";
    EXPECT_TRUE(linesInOrder(
        text,
        {"Buffer size: 8082", "COUNT_Enemies: 50", "COUNT_Bullets: 50", "COUNT_Explosions: 20",
         "[information] Executable Path: " + (game.bin / "quorbane").string(), "[information] Path directory: " + dir,
         "Path changed: " + dir, "[information] log is now directed to file " + dir + logName,
         "[information] Start logging events on 'out' flow stream", "[Information] Author: ",
         "[Information] Application: Quorbane", "[Information] Version: ", "<View>",
         "[Success] configuration retrieved", "[Success] GLFW initialized", "[information] screen size, width: ",
         "[Information] Width for view changed:640", "[Information] Height for view changed:480",
         "[Success] Window created", "[Success] OpenGL functions initiated",
         "[Information] Picking is now verbose", "[Success] events set", "[Information] shader source is now verbose",
         "[Information] creating program for Wood", "[Success] shader program established",
         "[Success] openGL variables set", "[Information] Start base for view changed:1",
         "[Information] End base for view changed:200", "[Success] view initiated", "[Success] texture manager ready",
         "[Information] Model Manager is now verbose", "[Information] found models list: 4 item(s)",
         "[Success] model retrieved", "[Information] Joystick information: 0", "[Success] world initialized",
         "[information] Position in world: ", "[Information] shader source is now verbose",
         "[information] launch of delete world", "[information] end of delete world",
         "[information] start of model manager clean up", "[information] end of model manager clean up",
         "Count of initialized Objects: ", "Object ID: "}));
    EXPECT_EQ(lastLine(text), "[information] End logging events");
    EXPECT_FALSE(hasErrorLine(text)) << text;
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

// Not called at start-up, but whole: the role banner and the beam, alive with
// its incarnation.
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
    EXPECT_NE(game.getFusion().getIncarnation(), nullptr);
    EXPECT_TRUE(game.releaseAll());
}

TEST(ApplicationQuorbaneGLTest, TwoInstancesPlayTogetherOverLoopbackShrugOffAStrangerAndTheClientOutlivesTheServer)
{
    const int port = nettest::RawUdp().port();  // free right now
    const std::string serve = smallView + "<isServer><port>" + std::to_string(port) + "</port></isServer>\n";
    const std::string join =
        smallView + "<server><address>127.0.0.1</address><port>" + std::to_string(port) + "</port></server>\n";
    auto server = std::make_unique<Game>(serve);
    ASSERT_TRUE(server->start());
    ASSERT_TRUE(server->waitFor("[Success] server is now reading in pool the messages !"));
    Game client(join);
    ASSERT_TRUE(client.start());
    // Out of the corner where the other tests' windows open.
    shell("xdotool windowmove " + client.window + " 940 460");
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

// The name of the log of a run started at that time.
std::string logNameAt(std::time_t at)
{
    std::tm local{};
    localtime_r(&at, &local);
    std::ostringstream name;
    name << "Quorbane_" << std::put_time(&local, "%Y_%m_%d_%H-%M-%S") << ".log";
    return name.str();
}


// Failures that start-up reports and survives (status 0, closed by Escape) or
// ends on (status 1, by itself). In what the run wrote, the sandbox directory
// reads <root>; in the window size, the screen's size reads <screen>.
struct Failure {
    const char* name;
    std::function<void(Game&)> prepare;
    int status;
    std::vector<std::string> lines;  // in this order, console then log
    std::string absent;              // never written
    std::string window;              // the window size starts with it
};

void PrintTo(const Failure& failure, std::ostream* out)
{
    *out << failure.name;
}

class ApplicationFailureGLTest : public ::testing::TestWithParam<Failure> {};

TEST_P(ApplicationFailureGLTest, IsReportedAndEndsAsExpected)
{
    const Failure& failure = GetParam();
    Game game;
    failure.prepare(game);
    ASSERT_TRUE(game.start(failure.status == 0));
    const std::string screen = shell("xdotool getdisplaygeometry | tr ' ' x");
    const std::string size = std::regex_replace(game.windowSize(), std::regex(screen), "<screen>");
    EXPECT_EQ(game.quit(), failure.status);
    const std::string text = std::regex_replace(game.text(), std::regex(game.root.string()), "<root>");
    EXPECT_TRUE(linesInOrder(text, failure.lines));
    EXPECT_EQ(lastLine(text), failure.status == 0 ? "[information] End logging events" : failure.lines.back());
    EXPECT_EQ(text.find(failure.absent), std::string::npos) << text;
    EXPECT_EQ(size.rfind(failure.window, 0), 0u) << size;
}

const std::string unparsed = "<View>\n<Width>640</Width>\n<Height>480</Heigth>\n</View>\n";
const Failure failures[] = {
    // The window fills the screen, and the projection keeps 0.5 and 300.
    {"NoConfiguration", [](Game&) {}, 0,
     {"[Warning] configuration not found, default values applied", "[Success] Window created",
      "[Success] view initiated"},
     "for view changed", "<screen>"},
    // What was read before the error is kept.
    {"ConfigurationThatDoesNotParse", [](Game& box) { writeFile(box.data / "config.def", unparsed); }, 0,
     {"[ERROR] end name is wrong: Heigth", "[Warning] config.def not entirely understood",
      "[Success] configuration retrieved", "[Information] Width for view changed:640", "[Success] world initialized"},
     "configuration not found", "640x"},
    {"MissingShader", [](Game& box) { fs::remove(box.data / "Shaders/shaderFLaser.glsl"); }, 1,
     {"[Success] events set", "[ERROR] unable to open source file", "[ERROR] Shader program not loadable !",
      "[ERROR] unable to establish shader program"},
     "[Success] shader program established", ""},
    {"BrokenShader",
     [](Game& box) { writeFile(box.data / "Shaders/shaderFWood.glsl", "#version 330\nvoid main() { no }\n"); },
     1,
     {"[ERROR] Failed to compile fragment shader", "[ERROR] OPENGL ERROR type shader: ",
      "[ERROR] Shader program not makable !", "[ERROR] unable to establish shader program"},
     "[Success] shader program established", ""},
    // The executable's own path.def gives no value: its parent's is used,
    // where Relative wins over Absolute.
    {"PathDefinitionInTheParent",
     [](Game& box) {
         writeFile(box.bin / "path.def", "<Path>\n<Elsewhere>/nowhere/</Elsewhere>\n</Path>\n");
         writeFile(box.root / "path.def", "<Path><Absolute>/nowhere/</Absolute><Relative>data/</Relative></Path>\n");
     },
     0, {"[information] Path directory: <root>/bin/../data/", "Path changed: <root>/bin/../data/",
         "[information] log is now directed to file <root>/bin/../data/Quorbane_", "[Success] world initialized"},
     "[ERROR]", ""},
    // Start-up steps that end the program: GLFW without a display, a window
    // without a GL driver, a window size that is not positive, no models list.
    {"NoDisplay", [](Game& box) { box.unset = {"DISPLAY", "WAYLAND_DISPLAY"}; }, 1,
     {"[Warning] configuration not found", "[ERROR] Unable to initialize GLFW"}, "[Success] GLFW initialized", ""},
    {"NoGLDriver", [](Game& box) { box.added = {"LIBGL_DRIVERS_PATH=/nonexistent"}; }, 1,
     {"[Success] GLFW initialized", "[ERROR] Unable to initialize Windows"}, "[Success] Window created", ""},
    {"WindowWidthZero",
     [](Game& box) { writeFile(box.data / "config.def", "<View>\n<Width>0</Width>\n</View>\n"); }, 1,
     {"[Information] Width for view changed:0", "[ERROR] window size must be positive",
      "[ERROR] Unable to initialize Windows"},
     "[Success] Window created", ""},
    {"NoModelsList", [](Game& box) { fs::remove(box.data / "models.txt"); }, 1,
     {"[Success] texture manager ready", "[ERROR] model descriptor not found", "[ERROR] unable to init Model manager"},
     "[Success] model retrieved", ""},
    // A directory in the way of every name the log could take in the next
    // minute: opening it for writing fails even for root.
    {"LogFileThatCannotBeCreated",
     [](Game& box) {
         for (std::time_t at = std::time(nullptr), end = at + 60; at < end; ++at) {
             fs::create_directory(box.data / logNameAt(at));
         }
     },
     0,
     {"[information] log is now directed to file <root>/data/", "[Information] Application: Quorbane",
      "[Success] world initialized"},
     "Start logging events", ""},
};

INSTANTIATE_TEST_SUITE_P(StartUp, ApplicationFailureGLTest, ::testing::ValuesIn(failures),
                         [](const ::testing::TestParamInfo<Failure>& info) { return std::string(info.param.name); });

}  // namespace
