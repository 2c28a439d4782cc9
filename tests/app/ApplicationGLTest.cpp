// Whole-program runs of the game executable under the test display: each test
// copies the executable into a sandbox with its own path.def and data
// directory, runs it as a real process, closes it with Escape sent through
// xdotool, and reads its console output and log file.

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

// KORVEL_TEST_DATA is <repository>/tests/app/data/, a folder that need not exist.
const std::string repositoryData =
    fs::path(KORVEL_TEST_DATA).parent_path().parent_path().parent_path().parent_path().string() + "/data/";

std::string readFile(const fs::path& file)
{
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const fs::path& file, const std::string& text)
{
    std::ofstream out(file);
    out << text;
}

std::string commandOutput(const std::string& command)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return output;
    }
    char buffer[256];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr) {
        output += buffer;
    }
    pclose(pipe);
    return output;
}

// Each expected entry must begin a line, in this order (other lines may
// interleave).
::testing::AssertionResult linesInOrder(const std::string& text, const std::vector<std::string>& lines)
{
    std::istringstream in(text);
    std::string line;
    std::size_t next = 0;
    while (next < lines.size() && std::getline(in, line)) {
        if (line.rfind(lines[next], 0) == 0) {
            ++next;
        }
    }
    if (next < lines.size()) {
        return ::testing::AssertionFailure() << "missing or out of order: \"" << lines[next] << "\"\n---\n" << text;
    }
    return ::testing::AssertionSuccess();
}

struct GameRun {
    int status = -1;        // exit status, or -1 when it did not exit by itself
    std::string console;    // standard output and error
    std::string log;        // the log file's content, empty when none
    std::string logName;    // the log file's name, without directory
    std::string windowSize; // "WxH" as the X server saw it
};

// The X server resets when its last client leaves, and refuses connections
// while it does: a game started right after the previous one ended could
// find no display. Holding a connection for the whole test prevents that.
void holdDisplay()
{
    static const bool held = glfwInit() == GLFW_TRUE;
    (void)held;
}

class Sandbox {
public:
    Sandbox()
    {
        char pattern[] = "/tmp/quorbane-app-XXXXXX";
        root = mkdtemp(pattern);
        bin = root / "bin";
        data = root / "data";
        fs::create_directories(bin);
        fs::create_directories(data);
        fs::copy(fs::path(KORVEL_BINARY_DIR) / "quorbane", bin / "quorbane");
        fs::copy(fs::path(repositoryData) / "Shaders", data / "Shaders", fs::copy_options::recursive);
        writeFile(data / "models.txt", "0\n");
        writeFile(bin / "path.def", "<Path>\n<Absolute>" + data.string() + "/</Absolute>\n</Path>\n");
    }
    ~Sandbox()
    {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Runs the game; once its window shows, sends the keys (xdotool names),
    // then Escape unless closeWithEscape is false.
    GameRun run(const std::vector<std::string>& keys = {}, bool closeWithEscape = true, bool withDisplay = true)
    {
        GameRun result;
        holdDisplay();
        removeLogs();
        const fs::path consoleFile = root / "console.txt";
        const pid_t pid = fork();
        if (pid == 0) {
            const int fd = ::open(consoleFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            if (!withDisplay) {
                unsetenv("DISPLAY");
                unsetenv("WAYLAND_DISPLAY");
            }
            const std::string exe = (bin / "quorbane").string();
            execl(exe.c_str(), exe.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(90);
        int waitStatus = 0;
        bool exited = false;
        std::string window;
        while (std::chrono::steady_clock::now() < deadline) {
            if (waitpid(pid, &waitStatus, WNOHANG) == pid) {
                exited = true;
                break;
            }
            if (window.empty()) {
                window = commandOutput("xdotool search --pid " + std::to_string(pid) + " 2>/dev/null | head -n 1");
                while (!window.empty() && (window.back() == '\n')) {
                    window.pop_back();
                }
                if (!window.empty()) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(500));
                    // The new window took the focus, so xdotool would type
                    // through the server's own keyboard and, once Escape has
                    // closed the window, never release the key: it would stay
                    // down and repeat into the next window. With the focus on
                    // the root, keys are sent to the window as events instead.
                    commandOutput("xdotool windowfocus $(xdotool search --maxdepth 0 '' | head -n 1) 2>/dev/null");
                    const std::string geometry = commandOutput("xdotool getwindowgeometry " + window + " 2>/dev/null");
                    std::smatch size;
                    if (std::regex_search(geometry, size, std::regex("Geometry: (\\d+x\\d+)"))) {
                        result.windowSize = size[1];
                    }
                    for (const std::string& key : keys) {
                        commandOutput("xdotool key --window " + window + " " + key + " 2>/dev/null");
                    }
                    if (closeWithEscape) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(300));
                        commandOutput("xdotool key --window " + window + " Escape 2>/dev/null");
                    }
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        if (!exited) {
            kill(pid, SIGKILL);
            waitpid(pid, &waitStatus, 0);
        } else if (WIFEXITED(waitStatus)) {
            result.status = WEXITSTATUS(waitStatus);
        }
        result.console = readFile(consoleFile);
        for (const auto& entry : fs::directory_iterator(data)) {
            if (entry.is_regular_file() && entry.path().extension() == ".log") {
                result.logName = entry.path().filename().string();
                result.log = readFile(entry.path());
            }
        }
        return result;
    }

    // Logs of earlier runs, wherever the data path pointed.
    void removeLogs() const
    {
        for (const fs::path& dir : {data, bin}) {
            for (const auto& entry : fs::directory_iterator(dir)) {
                if (entry.is_regular_file() && entry.path().extension() == ".log") {
                    fs::remove(entry.path());
                }
            }
        }
    }

    fs::path root;
    fs::path bin;
    fs::path data;
};

bool hasDisplay()
{
    return std::getenv("DISPLAY") != nullptr;
}

std::vector<std::string> errorLines(const std::string& text)
{
    std::vector<std::string> found;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("[ERROR]", 0) == 0 || line.rfind("[Error]", 0) == 0) {
            found.push_back(line);
        }
    }
    return found;
}

std::string lastLine(const std::string& text)
{
    std::string trimmed = text;
    while (!trimmed.empty() && trimmed.back() == '\n') {
        trimmed.pop_back();
    }
    return trimmed.substr(trimmed.find_last_of('\n') + 1);
}

TEST(ApplicationGLTest, NormalRunLogsItsStartUpInOrderAndEscapeEndsItCleanly)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    writeFile(box.data / "config.def",
              "<View>\n<Width>640</Width>\n<Height>480</Height>\n<Start>1</Start>\n<End>200</End>\n</View>\n"
              "<Picking><Verbose>1</Verbose></Picking>\n<Models><Verbose>1</Verbose></Models>\n"
              "<Shaders><SourceVerbose>1</SourceVerbose></Shaders>\n<Memory><Verbose>1</Verbose></Memory>\n");
    const std::time_t before = std::time(nullptr);
    const GameRun run = box.run({"z", "Right", "F5"});
    const std::time_t after = std::time(nullptr);

    EXPECT_EQ(run.status, 0) << run.console << run.log;
    EXPECT_EQ(run.windowSize, "640x480");

    // Name: application, then local date and time, zero padded.
    std::smatch stamp;
    ASSERT_TRUE(std::regex_match(run.logName, stamp,
                                 std::regex("Quorbane_(\\d{4})_(\\d{2})_(\\d{2})_(\\d{2})-(\\d{2})-(\\d{2})\\.log")))
        << run.logName;
    std::tm local{};
    local.tm_year = std::stoi(stamp[1]) - 1900;
    local.tm_mon = std::stoi(stamp[2]) - 1;
    local.tm_mday = std::stoi(stamp[3]);
    local.tm_hour = std::stoi(stamp[4]);
    local.tm_min = std::stoi(stamp[5]);
    local.tm_sec = std::stoi(stamp[6]);
    local.tm_isdst = -1;
    const std::time_t started = std::mktime(&local);
    EXPECT_GE(started, before);
    EXPECT_LE(started, after);

    const std::string dataDir = box.data.string() + "/";
    EXPECT_TRUE(linesInOrder(run.console, {"[information] Executable Path: " + (box.bin / "quorbane").string(),
                                           "[information] Path directory: " + dataDir,
                                           "Path changed: " + dataDir,
                                           "[information] log is now directed to file " + dataDir + run.logName}));
    EXPECT_TRUE(linesInOrder(run.log, {"[information] Start logging events on 'out' flow stream",
                                       "[Information] Author: ",
                                       "[Information] Application: Quorbane",
                                       "[Information] Version: ",
                                       "<View>",
                                       "[Success] configuration retrieved",
                                       "[Success] GLFW initialized",
                                       "[information] screen size, width: ",
                                       "[Information] Width for view changed:640",
                                       "[Information] Height for view changed:480",
                                       "[Success] Window created",
                                       "[Success] OpenGL functions initiated",
                                       "[Information] Picking is now verbose",
                                       "[Success] events set",
                                       "[Information] shader source is now verbose",
                                       "[Information] creating program for Wood",
                                       "[Success] shader program established",
                                       "[Success] openGL variables set",
                                       "[Information] Start base for view changed:1",
                                       "[Information] End base for view changed:200",
                                       "[Success] view initiated",
                                       "[Success] texture manager ready",
                                       "[Information] Model Manager is now verbose",
                                       "[Information] Attempting to open model descriptor: models.txt",
                                       "[Information] found models list: 0 item(s)",
                                       "[Success] model retrieved",
                                       "[Success] world initialized",
                                       "[Information] shader source is now verbose",
                                       "[information] launch of delete world",
                                       "World clean up objects",
                                       "[information] end of delete world",
                                       "[information] start of model manager clean up",
                                       "[information] end of model manager clean up",
                                       "Count of initialized Objects: ",
                                       "Object ID: ",
                                       "[information] End logging events"}));
    EXPECT_EQ(lastLine(run.log), "[information] End logging events");
    EXPECT_EQ(errorLines(run.log), std::vector<std::string>{});

    // Every key event writes the camera position, press and release alike,
    // unbound keys (F5) included: three keys, Escape's press at least.
    std::size_t positions = 0;
    for (std::size_t at = run.log.find("[information] Position in world: "); at != std::string::npos;
         at = run.log.find("[information] Position in world: ", at + 1)) {
        ++positions;
    }
    EXPECT_GE(positions, 7u);
}

TEST(ApplicationGLTest, WithoutConfigurationTheWindowFillsTheScreenAndDefaultsApply)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    const std::string screen = commandOutput("xdotool getdisplaygeometry 2>/dev/null");
    std::smatch size;
    ASSERT_TRUE(std::regex_search(screen, size, std::regex("(\\d+) (\\d+)")));
    const GameRun run = box.run();

    EXPECT_EQ(run.status, 0) << run.console << run.log;
    EXPECT_TRUE(linesInOrder(run.log, {"[Warning] configuration not found, default values applied",
                                       "[Success] GLFW initialized",
                                       "[information] screen size, width: " + size[1].str() +
                                           " / height: " + size[2].str(),
                                       "[Success] Window created", "[Success] view initiated",
                                       "[information] End logging events"}));
    EXPECT_EQ(run.windowSize, size[1].str() + "x" + size[2].str());
    EXPECT_EQ(run.log.find("for view changed"), std::string::npos);
    EXPECT_EQ(run.log.find("base for view changed"), std::string::npos);
    EXPECT_EQ(errorLines(run.log), std::vector<std::string>{});
}

TEST(ApplicationGLTest, ConfigurationThatDoesNotParseKeepsWhatWasReadBeforeTheError)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    writeFile(box.data / "config.def", "<View>\n<Width>640</Width>\n<Height>480</Heigth>\n</View>\n");
    const GameRun run = box.run();

    EXPECT_EQ(run.status, 0) << run.console << run.log;
    EXPECT_TRUE(linesInOrder(run.log, {"[ERROR] end name is wrong: Heigth", "[Warning] config.def not entirely understood",
                                       "[Success] configuration retrieved",
                                       "[Information] Width for view changed:640", "[Success] world initialized",
                                       "[information] End logging events"}));
    EXPECT_EQ(run.windowSize.rfind("640x", 0), 0u) << run.windowSize;

    writeFile(box.data / "config.def", "this is not a definition file\n");
    const GameRun garbage = box.run();
    EXPECT_EQ(garbage.status, 0) << garbage.log;
    EXPECT_TRUE(linesInOrder(garbage.log, {"[Warning] config.def not entirely understood",
                                           "[Success] configuration retrieved", "[Success] world initialized"}));
    EXPECT_EQ(garbage.log.find("for view changed"), std::string::npos);
}

TEST(ApplicationGLTest, MissingOrBrokenShaderStopsTheStartWithStatusOne)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    {
        Sandbox box;
        fs::remove(box.data / "Shaders" / "shaderLaser.gdef");
        fs::remove(box.data / "Shaders" / "shaderFLaser.glsl");
        const GameRun run = box.run({}, false);
        EXPECT_EQ(run.status, 1) << run.console << run.log;
        EXPECT_TRUE(linesInOrder(run.log, {"[Success] events set", "[ERROR] unable to open source file",
                                           "[ERROR] Shader program not loadable !",
                                           "[ERROR] unable to establish shader program"}));
        EXPECT_EQ(lastLine(run.log), "[ERROR] unable to establish shader program");
        EXPECT_EQ(run.log.find("[Success] shader program established"), std::string::npos);
    }
    {
        Sandbox box;
        fs::remove(box.data / "Shaders" / "shaderWood.gdef");
        writeFile(box.data / "Shaders" / "shaderVWood.glsl",
                  "#version 330\nin vec3 in_Position;\nuniform mat4 projection;\nuniform mat4 modelview;\n"
                  "uniform mat4 refObject;\nvoid main() { gl_Position = projection * modelview * refObject * "
                  "vec4(in_Position, 1.0); }\n");
        writeFile(box.data / "Shaders" / "shaderFWood.glsl", "#version 330\nvoid main() { this is not glsl }\n");
        const GameRun run = box.run({}, false);
        EXPECT_EQ(run.status, 1) << run.console << run.log;
        EXPECT_TRUE(linesInOrder(run.log, {"[ERROR] Failed to compile fragment shader"}));
        EXPECT_NE(run.log.find("[ERROR] OPENGL ERROR type shader: "), std::string::npos) << run.log;
        EXPECT_TRUE(linesInOrder(run.log, {"[ERROR] Shader program not makable !",
                                           "[ERROR] unable to establish shader program"}));
    }
}

TEST(ApplicationGLTest, EarlyStartUpFailuresEndWithTheirMessageAndStatusOne)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    const GameRun noDisplay = box.run({}, false, false);
    EXPECT_EQ(noDisplay.status, 1) << noDisplay.console;
    EXPECT_TRUE(linesInOrder(noDisplay.log, {"[Warning] configuration not found, default values applied",
                                             "[Error] GLFW error ", "[ERROR] Unable to initialize GLFW"}));
    EXPECT_EQ(lastLine(noDisplay.log), "[ERROR] Unable to initialize GLFW");

    writeFile(box.data / "config.def", "<View><Width>0</Width></View>\n");
    const GameRun noSize = box.run({}, false);
    EXPECT_EQ(noSize.status, 1) << noSize.console;
    EXPECT_EQ(lastLine(noSize.log), "[ERROR] Unable to initialize Windows");

    fs::remove(box.data / "config.def");
    fs::remove(box.data / "models.txt");
    const GameRun noModels = box.run({}, false);
    EXPECT_EQ(noModels.status, 1) << noModels.console;
    EXPECT_TRUE(linesInOrder(noModels.log, {"[Success] texture manager ready", "[ERROR] model descriptor not found",
                                            "[ERROR] unable to init Model manager"}));
    EXPECT_EQ(lastLine(noModels.log), "[ERROR] unable to init Model manager");
}

TEST(ApplicationGLTest, PathDefinitionInTheParentIsUsedWhenTheExecutablesOwnHasNoValue)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    writeFile(box.bin / "path.def", "<Path>\n<Elsewhere>/nowhere/</Elsewhere>\n</Path>\n");
    writeFile(box.root / "path.def", "<Path>\n<Relative>data/</Relative>\n</Path>\n");
    const GameRun run = box.run();

    const std::string expected = box.bin.string() + "/../data/";
    EXPECT_EQ(run.status, 0) << run.console << run.log;
    EXPECT_TRUE(linesInOrder(run.console, {"[information] Path directory: " + expected, "Path changed: " + expected}));
    EXPECT_FALSE(run.logName.empty());
    EXPECT_TRUE(linesInOrder(run.log, {"[Success] shader program established", "[information] End logging events"}));

    // With no path.def anywhere the executable's own directory is the data.
    fs::remove(box.bin / "path.def");
    fs::remove(box.root / "path.def");
    fs::copy(box.data / "Shaders", box.bin / "Shaders", fs::copy_options::recursive);
    fs::copy(box.data / "models.txt", box.bin / "models.txt");
    const GameRun own = box.run();
    EXPECT_EQ(own.status, 0) << own.console;
    EXPECT_TRUE(linesInOrder(own.console, {"[information] Path directory: " + box.bin.string() + "/",
                                           "Path changed: " + box.bin.string() + "/",
                                           "[information] log is now directed to file " + box.bin.string() +
                                               "/Quorbane_"}));
}

TEST(ApplicationGLTest, LogFileThatCannotBeCreatedLeavesLoggingOnTheConsole)
{
    if (!hasDisplay()) {
        GTEST_SKIP() << "needs a display";
    }
    Sandbox box;
    // A directory in the way of every name the log could take in the next
    // minute: opening it for writing fails even for root.
    const std::time_t now = std::time(nullptr);
    for (int second = 0; second < 60; ++second) {
        const std::time_t at = now + second;
        std::tm local{};
        localtime_r(&at, &local);
        char name[64];
        std::strftime(name, sizeof name, "Quorbane_%Y_%m_%d_%H-%M-%S.log", &local);
        fs::create_directory(box.data / name);
    }
    const GameRun run = box.run();

    EXPECT_EQ(run.status, 0) << run.console;
    EXPECT_TRUE(linesInOrder(run.console, {"[information] log is now directed to file ",
                                           "[Information] Application: Quorbane", "[Success] GLFW initialized",
                                           "[Success] world initialized", "[information] End logging events"}));
    EXPECT_EQ(run.console.find("Start logging events"), std::string::npos);
}

}  // namespace
