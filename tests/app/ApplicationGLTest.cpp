// Whole-program runs of the game executable under the test display: each run
// copies the executable into a sandbox with its own path.def and data
// directory, starts it as a real process, closes it with Escape sent through
// xdotool, and reads its console output and log file.

#include "support/ProgramRunTesting.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iterator>
#include <regex>
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

// The name of the log of a run started at that time.
std::string logNameAt(std::time_t at)
{
    std::tm local{};
    localtime_r(&at, &local);
    std::ostringstream name;
    name << "Quorbane_" << std::put_time(&local, "%Y_%m_%d_%H-%M-%S") << ".log";
    return name.str();
}

struct GameRun {
    int status = -1;         // exit status, -1 when it had to be killed
    std::string console;     // standard output and error
    std::string log;         // the log file, empty when none was written
    std::string logName;
    std::string windowSize;  // "WxH" as the X server saw it

    std::string all() const { return console + log; }
};

std::string lastLine(const std::string& text)
{
    const std::string trimmed = text.substr(0, text.find_last_not_of('\n') + 1);
    return trimmed.substr(trimmed.find_last_of('\n') + 1);
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
        // KORVEL_TEST_DATA is <repository>/tests/app/data/, which need not exist.
        fs::copy((fs::path(KORVEL_TEST_DATA) / "../../../data/Shaders").lexically_normal(), data / "Shaders",
                 fs::copy_options::recursive);
        // The game's own models: it cannot start without its rocks and ship.
        const fs::path models = (fs::path(KORVEL_TEST_DATA) / "../../../data").lexically_normal();
        for (const auto& entry : fs::directory_iterator(models)) {
            const std::string name = entry.path().filename().string();
            const std::string extension = entry.path().extension().string();
            if (extension == ".obj" || extension == ".mtl" || name == "models.txt" || name == "cargo.png") {
                fs::copy(entry.path(), data / entry.path().filename());
            }
        }
        writeFile(bin / "path.def", "<Path>\n<Absolute>" + data.string() + "/</Absolute>\n</Path>\n");
    }
    ~Sandbox()
    {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }

    // Runs the game; once its window shows, presses Escape, and again every
    // few seconds in case a press came before the game listened.
    GameRun run(bool escape)
    {
        GameRun result;
        // The game's environment: this one, less the variables unset, with
        // the variables added in place of any of the same name.
        std::vector<std::string> variables;
        for (char** v = environ; *v != nullptr; ++v) {
            const std::string variable = *v;
            const std::string name = variable.substr(0, variable.find('=') + 1);
            const bool replaced = std::any_of(added.begin(), added.end(),
                                              [&](const std::string& a) { return a.rfind(name, 0) == 0; });
            if (!replaced && std::find(unset.begin(), unset.end(), name.substr(0, name.size() - 1)) == unset.end()) {
                variables.push_back(variable);
            }
        }
        variables.insert(variables.end(), added.begin(), added.end());
        std::vector<char*> environment;
        for (std::string& variable : variables) {
            environment.push_back(variable.data());
        }
        environment.push_back(nullptr);
        const std::string exe = (bin / "quorbane").string();
        const pid_t pid = fork();
        if (pid == 0) {
            const int fd = ::open((root / "console.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            close(fd);
            execle(exe.c_str(), exe.c_str(), static_cast<char*>(nullptr), environment.data());
            _exit(127);
        }
        std::string window;
        if (escape) {
            window = program_run::windowOf(pid);
            result.windowSize = shell("xdotool getwindowgeometry " + window + " | sed -n 's/.*Geometry: //p'");
            // The new window took the focus, so xdotool would type through the
            // server's own keyboard and, once Escape has closed the window,
            // never release the key: it would stay down and repeat into the
            // next window. With the focus on the root, keys are sent to the
            // window as events instead.
            shell("xdotool windowfocus $(xdotool search --maxdepth 0 '' | head -n 1)");
        }
        int waitStatus = 0;
        for (int tick = 0; waitpid(pid, &waitStatus, WNOHANG) != pid; ++tick) {
            if (tick == 900) {  // 90 s: it hangs
                kill(pid, SIGKILL);
                waitpid(pid, &waitStatus, 0);
                break;
            }
            if (escape && tick % 30 == 5) {
                shell("xdotool key --window " + window + " Escape");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        result.status = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : -1;
        result.console = readFile(root / "console.txt");
        for (const auto& entry : fs::directory_iterator(data)) {
            if (entry.is_regular_file() && entry.path().extension() == ".log") {
                result.logName = entry.path().filename().string();
                result.log = readFile(entry.path());
            }
        }
        return result;
    }

    fs::path root;
    fs::path bin;
    fs::path data;
    std::vector<std::string> unset;  // names
    std::vector<std::string> added;  // "NAME=value"
};

TEST(ApplicationGLTest, NormalRunLogsItsStartUpInOrderAndEscapeEndsItCleanly)
{
    Sandbox box;
    writeFile(box.data / "config.def",
              "<View>\n<Width>640</Width>\n<Height>480</Height>\n<Start>1</Start>\n<End>200</End>\n</View>\n"
              "<Picking><Verbose>1</Verbose></Picking>\n<Models><Verbose>1</Verbose></Models>\n"
              "<Shaders><SourceVerbose>1</SourceVerbose></Shaders>\n<Memory><Verbose>1</Verbose></Memory>\n");
    const GameRun run = box.run(true);
    EXPECT_EQ(run.status, 0) << run.all();
    EXPECT_EQ(run.windowSize, "640x480");
    EXPECT_TRUE(std::regex_match(run.logName, std::regex("Quorbane_\\d{4}(_\\d{2}){3}(-\\d{2}){2}\\.log")))
        << run.logName;

    const std::string dir = box.data.string() + "/";
    EXPECT_TRUE(linesInOrder(
        run.all(),
        {"[information] Executable Path: " + (box.bin / "quorbane").string(), "[information] Path directory: " + dir,
         "Path changed: " + dir, "[information] log is now directed to file " + dir + run.logName,
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
         "[Success] model retrieved", "[Success] world initialized",
         // Escape's press, through the window's key callback.
         "[information] Position in world: ", "[Information] shader source is now verbose",
         "[information] launch of delete world", "[information] end of delete world",
         "[information] start of model manager clean up", "[information] end of model manager clean up",
         "Count of initialized Objects: ", "Object ID: "}));
    EXPECT_EQ(lastLine(run.all()), "[information] End logging events");
    EXPECT_EQ(("\n" + run.all()).find("\n[ERROR]"), std::string::npos) << run.all();
    EXPECT_EQ(("\n" + run.all()).find("\n[Error]"), std::string::npos) << run.all();
}

// Failures that start-up reports and survives (status 0, closed by Escape) or
// ends on (status 1, by itself). In what the run wrote, the sandbox directory
// reads <root>; in the window size, the screen's size reads <screen>.
struct Failure {
    const char* name;
    std::function<void(Sandbox&)> prepare;
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
    Sandbox box;
    failure.prepare(box);
    const GameRun run = box.run(failure.status == 0);
    const std::string text = std::regex_replace(run.all(), std::regex(box.root.string()), "<root>");
    const std::string screen = shell("xdotool getdisplaygeometry | tr ' ' x");
    EXPECT_EQ(run.status, failure.status) << text;
    EXPECT_TRUE(linesInOrder(text, failure.lines));
    EXPECT_EQ(lastLine(text), failure.status == 0 ? "[information] End logging events" : failure.lines.back());
    EXPECT_EQ(text.find(failure.absent), std::string::npos) << text;
    EXPECT_EQ(std::regex_replace(run.windowSize, std::regex(screen), "<screen>").rfind(failure.window, 0), 0u)
        << run.windowSize;
}

const std::string unparsed = "<View>\n<Width>640</Width>\n<Height>480</Heigth>\n</View>\n";
const Failure failures[] = {
    // The window fills the screen, and the projection keeps 0.5 and 300.
    {"NoConfiguration", [](Sandbox&) {}, 0,
     {"[Warning] configuration not found, default values applied", "[Success] Window created",
      "[Success] view initiated"},
     "for view changed", "<screen>"},
    // What was read before the error is kept.
    {"ConfigurationThatDoesNotParse", [](Sandbox& box) { writeFile(box.data / "config.def", unparsed); }, 0,
     {"[ERROR] end name is wrong: Heigth", "[Warning] config.def not entirely understood",
      "[Success] configuration retrieved", "[Information] Width for view changed:640", "[Success] world initialized"},
     "configuration not found", "640x"},
    {"MissingShader", [](Sandbox& box) { fs::remove(box.data / "Shaders/shaderFLaser.glsl"); }, 1,
     {"[Success] events set", "[ERROR] unable to open source file", "[ERROR] Shader program not loadable !",
      "[ERROR] unable to establish shader program"},
     "[Success] shader program established", ""},
    {"BrokenShader",
     [](Sandbox& box) { writeFile(box.data / "Shaders/shaderFWood.glsl", "#version 330\nvoid main() { no }\n"); },
     1,
     {"[ERROR] Failed to compile fragment shader", "[ERROR] OPENGL ERROR type shader: ",
      "[ERROR] Shader program not makable !", "[ERROR] unable to establish shader program"},
     "[Success] shader program established", ""},
    // The executable's own path.def gives no value: its parent's is used,
    // where Relative wins over Absolute.
    {"PathDefinitionInTheParent",
     [](Sandbox& box) {
         writeFile(box.bin / "path.def", "<Path>\n<Elsewhere>/nowhere/</Elsewhere>\n</Path>\n");
         writeFile(box.root / "path.def", "<Path><Absolute>/nowhere/</Absolute><Relative>data/</Relative></Path>\n");
     },
     0, {"[information] Path directory: <root>/bin/../data/", "Path changed: <root>/bin/../data/",
         "[information] log is now directed to file <root>/bin/../data/Quorbane_", "[Success] world initialized"},
     "[ERROR]", ""},
    // Start-up steps that end the program: GLFW without a display, a window
    // without a GL driver, a window size that is not positive, no models list.
    {"NoDisplay", [](Sandbox& box) { box.unset = {"DISPLAY", "WAYLAND_DISPLAY"}; }, 1,
     {"[Warning] configuration not found", "[ERROR] Unable to initialize GLFW"}, "[Success] GLFW initialized", ""},
    {"NoGLDriver", [](Sandbox& box) { box.added = {"LIBGL_DRIVERS_PATH=/nonexistent"}; }, 1,
     {"[Success] GLFW initialized", "[ERROR] Unable to initialize Windows"}, "[Success] Window created", ""},
    {"WindowWidthZero",
     [](Sandbox& box) { writeFile(box.data / "config.def", "<View>\n<Width>0</Width>\n</View>\n"); }, 1,
     {"[Information] Width for view changed:0", "[ERROR] window size must be positive",
      "[ERROR] Unable to initialize Windows"},
     "[Success] Window created", ""},
    {"NoModelsList", [](Sandbox& box) { fs::remove(box.data / "models.txt"); }, 1,
     {"[Success] texture manager ready", "[ERROR] model descriptor not found", "[ERROR] unable to init Model manager"},
     "[Success] model retrieved", ""},
    // A directory in the way of every name the log could take in the next
    // minute: opening it for writing fails even for root.
    {"LogFileThatCannotBeCreated",
     [](Sandbox& box) {
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
