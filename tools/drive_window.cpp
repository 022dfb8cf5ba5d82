#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/application.h"
#include "engine/transport.h"
#include "panels/application_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/threads.h"
#include "playlist/playlist.h"
#include "tools/window_hands.h"

namespace kwo::tools {
namespace {

constexpr char kUsage[] =
    "usage: drive_window SCRIPT [--out DIR] [--program DIR]\n"
    "Runs the whole program without a desktop, and a user before it who follows the script.\n"
    "  --out DIR      where the shots go; the current folder by default\n"
    "  --program DIR  the program's folder, which holds skin/ and gets HISTORY.PLA and EQ.SET;\n"
    "                 by default one of its own that is removed at the end\n"
    "A line of the script is a command; an empty one, or one that begins with #, is nothing.\n"
    "Places are pixels of the window; times are milliseconds of the program's own clock.\n"
    "  wait MS            shot FILE.png       print\n"
    "  move X Y           press X Y           rightpress X Y       doublepress X Y\n"
    "  down  up           drag X Y X Y        rightdrag X Y X Y\n"
    "  menu COMMAND       the choice in the next menu; 0 dismisses it\n"
    "  dialog PATH...     the answer to the next dialog\n"
    "  drop PATH...       shiftdrop PATH...\n"
    "  type TEXT          backspace           caret POSITION\n"
    "  shift on|off       control on|off      tray left|right\n"
    "  minimise  restore  deactivate  activate  close\n";

struct Script {
  std::string path, out = ".";
  std::vector<std::string> lines;
  int failedLine = 0;
  std::string error;
};

Script script;

// What one line is made of.
class Arguments {
 public:
  explicit Arguments(const std::string& line) : stream_(line) { stream_ >> command; }
  int Number() {
    int value = 0;
    if (!(stream_ >> value)) failed = true;
    return value;
  }
  std::string Word() {
    std::string word;
    if (!(stream_ >> word)) failed = true;
    return word;
  }
  std::string Rest() {
    std::string rest;
    std::getline(stream_ >> std::ws, rest);
    return rest;
  }
  std::vector<std::string> Paths() {
    std::vector<std::string> paths;
    for (std::string word; stream_ >> word;)
      paths.push_back(platform::FromMachinePath(std::filesystem::absolute(word).c_str()));
    return paths;
  }
  std::string command;
  bool failed = false;

 private:
  std::istringstream stream_;
};

void PrintState() {
  const headless::WindowState window = headless::Window();
  std::printf("caption \"%s\", page %d, song %d of %d, playing %d, window %d,%d %dx%d%s%s\n",
              window.caption.c_str(), int{CurrentPage}, playlist.currentSong + 1,
              int{playlist.count}, int{playing}, window.place.x, window.place.y, window.place.width,
              window.place.height, window.visible ? "" : ", hidden",
              window.minimised ? ", minimised" : "");
}

struct Command {
  const char* name;
  void (*run)(const Hands& hands, Arguments& arguments);
};

using enum headless::Button;

void Drag(const Hands& hands, Arguments& a, headless::Button button) {
  const int fromX = a.Number(), fromY = a.Number(), toX = a.Number(), toY = a.Number();
  if (!a.failed) hands.Drag(fromX, fromY, toX, toY, button);
}

template <typename Act>
void AtPlace(Arguments& a, Act act) {
  const int x = a.Number(), y = a.Number();
  if (!a.failed) act(x, y);
}

constexpr Command kCommands[] = {
    {"wait", [](const Hands& h, Arguments& a) { h.Wait(a.Number()); }},
    {"shot",
     [](const Hands&, Arguments& a) {
       const std::string file = script.out + "/" + a.Word();
       if (!a.failed && !SaveWindow(file)) script.error = file + " can't be written";
     }},
    {"print", [](const Hands&, Arguments&) { PrintState(); }},
    {"move", [](const Hands& h, Arguments& a) { AtPlace(a, [&](int x, int y) { h.Move(x, y); }); }},
    {"press",
     [](const Hands& h, Arguments& a) { AtPlace(a, [&](int x, int y) { h.Press(x, y); }); }},
    {"rightpress", [](const Hands& h,
                      Arguments& a) { AtPlace(a, [&](int x, int y) { h.Press(x, y, kRight); }); }},
    {"doublepress",
     [](const Hands& h, Arguments& a) { AtPlace(a, [&](int x, int y) { h.DoublePress(x, y); }); }},
    {"down", [](const Hands& h, Arguments&) { h.Down(); }},
    {"up", [](const Hands& h, Arguments&) { h.Up(); }},
    {"drag", [](const Hands& h, Arguments& a) { Drag(h, a, kLeft); }},
    {"rightdrag", [](const Hands& h, Arguments& a) { Drag(h, a, kRight); }},
    {"menu", [](const Hands&, Arguments& a) { headless::AnswerMenu(a.Number()); }},
    {"dialog",
     [](const Hands&, Arguments& a) {
       headless::AnswerDialog({platform::CurrentFolder(), a.Paths()});
     }},
    {"drop", [](const Hands& h, Arguments& a) { h.Drop(a.Paths()); }},
    {"shiftdrop", [](const Hands& h, Arguments& a) { h.Drop(a.Paths(), true); }},
    {"type",
     [](const Hands& h, Arguments& a) {
       headless::TypeText(a.Rest());
       h.Wait(100);
     }},
    {"backspace",
     [](const Hands& h, Arguments&) {
       headless::TypeText("\b");
       h.Wait(100);
     }},
    {"caret", [](const Hands&, Arguments& a) { headless::MoveCaret(a.Number()); }},
    {"shift",
     [](const Hands&, Arguments& a) { headless::SetKey(platform::Key::kShift, a.Word() == "on"); }},
    {"control", [](const Hands&,
                   Arguments& a) { headless::SetKey(platform::Key::kControl, a.Word() == "on"); }},
    {"tray",
     [](const Hands& h, Arguments& a) {
       headless::PressTray(a.Word() == "right" ? kRight : kLeft);
       h.Wait(100);
     }},
    {"minimise", [](const Hands&, Arguments&) { headless::MinimiseByUser(); }},
    {"restore", [](const Hands&, Arguments&) { headless::RestoreByUser(); }},
    {"deactivate", [](const Hands&, Arguments&) { headless::SetWindowActive(false); }},
    {"activate", [](const Hands&, Arguments&) { headless::SetWindowActive(true); }},
    {"close", [](const Hands&, Arguments&) { headless::CloseByUser(); }},
};

void RunLine(const std::string& line) {
  Arguments arguments(line);
  if (arguments.command.empty() || arguments.command[0] == '#') return;
  for (const Command& command : kCommands) {
    if (arguments.command != command.name) continue;
    command.run(Hands(), arguments);
    if (arguments.failed) script.error = "too few arguments for " + arguments.command;
    return;
  }
  script.error = "unknown command " + arguments.command;
}

void FollowScript(void*) {
  while (!AppReady) platform::Sleep(10);
  for (std::size_t i = 0; i < script.lines.size() && AppReady; ++i) {
    RunLine(script.lines[i]);
    if (script.error.empty()) continue;
    script.failedLine = static_cast<int>(i) + 1;
    break;
  }
  platform::PostQuitMessage(0);
}

// A program folder of its own, with links to the data.
std::filesystem::path MakeProgramFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "kwo-drive-XXXXXX").string();
  if (!mkdtemp(name.data())) return {};
  for (const char* data : {"skin", "help", "music"})
    std::filesystem::create_directory_symlink(std::filesystem::path(KWO_DATA) / data,
                                              std::filesystem::path(name) / data);
  return name;
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "drive_window: %s\n", message.c_str());
  return 1;
}

int Drive(std::string program) {
  const bool own = program.empty();
  if (own) program = MakeProgramFolder().string();
  if (program.empty()) return Fail("no temporary folder can be made");
  std::ifstream file(script.path);
  if (!file) return Fail(script.path + " can't be read");
  for (std::string line; std::getline(file, line);) script.lines.push_back(line);

  headless::SetExecutablePath((std::filesystem::absolute(program) / "kwo").string());
  platform::Thread* user = platform::StartThread(FollowScript, nullptr);
  int result = 1;
  if (StartUp()) {
    platform::Message message;
    while (platform::GetMessage(message)) platform::DispatchMessage(message);
    result = 0;
  } else {
    // Lets the user go, who waits for the program to come up.
    script.lines.clear();
    AppReady = 1;
  }
  ShutDown();
  platform::JoinThread(user);
  if (own) std::filesystem::remove_all(program);
  if (!script.error.empty())
    return Fail(script.path + ":" + std::to_string(script.failedLine) + ": " + script.error);
  return result;
}

}  // namespace
}  // namespace kwo::tools

int main(int count, char** arguments) {
  using namespace kwo::tools;
  std::string program;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (argument == "--out" && i + 1 < count) {
      script.out = arguments[++i];
    } else if (argument == "--program" && i + 1 < count) {
      program = arguments[++i];
    } else if (script.path.empty() && argument[0] != '-') {
      script.path = argument;
    } else {
      std::fputs(kUsage, stderr);
      return 1;
    }
  }
  if (script.path.empty()) {
    std::fputs(kUsage, stderr);
    return 1;
  }
  return Drive(program);
}
