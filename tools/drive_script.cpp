#include "tools/drive_script.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <sstream>

#include "app/application.h"
#include "engine/transport.h"
#include "panels/application_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/threads.h"
#include "playlist/playlist.h"
#include "tools/window_hands.h"

namespace kwo::tools {

const char kScriptCommands[] =
    "  wait MS            shot FILE.png       print\n"
    "  move X Y           press X Y           rightpress X Y       doublepress X Y\n"
    "  down  up           drag X Y X Y        rightdrag X Y X Y\n"
    "  menu TEXT          the item chosen in the next menu; without a text it is dismissed\n"
    "  dialog PATH...     the answer to the next dialog; without a path it is cancelled\n"
    "  drop PATH...       shiftdrop PATH...\n"
    "  type TEXT          backspace           caret POSITION\n"
    "  shift on|off       control on|off      tray left|right\n"
    "  minimise  restore  deactivate  activate  close          sound on|off\n"
    "A path or file name with blanks stands in double quotes.\n";

// The form has a letter for each argument: t a time, x a coordinate, n a number, b "on" or "off",
// s "left" or "right", f a file name, r the rest of the line, p any number of paths.
struct ScriptCommand {
  const char* name;
  const char* form;
  bool (*run)(const ScriptStep& step, const std::string& shots);
};

namespace {

using enum headless::Button;

constexpr int kLongestWait = 24 * 3600 * 1000;
constexpr int kFarthestPlace = 10000;
constexpr int kTouchMilliseconds = 100;

bool Shot(const ScriptStep& step, const std::string& shots) {
  return SaveWindow(shots + "/" + step.text);
}

bool Print(const ScriptStep&, const std::string&) {
  const headless::WindowState window = headless::Window();
  std::printf("caption \"%s\", page %d, song %d of %d, playing %d, window %d,%d %dx%d%s%s\n",
              window.caption.c_str(), int{CurrentPage}, playlist.currentSong + 1,
              int{playlist.count}, int{transport.playing}, window.place.x, window.place.y,
              window.place.width, window.place.height, window.visible ? "" : ", hidden",
              window.minimised ? ", minimised" : "");
  return true;
}

// A command that can't fail and does `act` with the hands and the step.
template <auto act>
bool Do(const ScriptStep& step, const std::string&) {
  act(Hands(), step);
  return true;
}

using Step = const ScriptStep&;
using With = const Hands&;

constexpr ScriptCommand kCommands[] = {
    {"wait", "t", Do<[](With h, Step s) { h.Wait(s.numbers[0]); }>},
    {"shot", "f", Shot},
    {"print", "", Print},
    {"move", "xx", Do<[](With h, Step s) { h.Move(s.numbers[0], s.numbers[1]); }>},
    {"press", "xx", Do<[](With h, Step s) { h.Press(s.numbers[0], s.numbers[1]); }>},
    {"rightpress", "xx", Do<[](With h, Step s) { h.Press(s.numbers[0], s.numbers[1], kRight); }>},
    {"doublepress", "xx", Do<[](With h, Step s) { h.DoublePress(s.numbers[0], s.numbers[1]); }>},
    {"down", "", Do<[](With h, Step) { h.Down(); }>},
    {"up", "", Do<[](With h, Step) { h.Up(); }>},
    {"drag", "xxxx",
     Do<[](With h, Step s) { h.Drag(s.numbers[0], s.numbers[1], s.numbers[2], s.numbers[3]); }>},
    {"rightdrag", "xxxx", Do<[](With h, Step s) {
       h.Drag(s.numbers[0], s.numbers[1], s.numbers[2], s.numbers[3], kRight);
     }>},
    {"menu", "r", Do<[](With, Step s) { headless::AnswerMenu(s.text); }>},
    {"dialog", "p", Do<[](With, Step s) {
       headless::AnswerDialog({platform::CurrentFolder(), s.paths});
     }>},
    {"drop", "p", Do<[](With h, Step s) { h.Drop(s.paths); }>},
    {"shiftdrop", "p", Do<[](With h, Step s) { h.Drop(s.paths, true); }>},
    {"type", "r", Do<[](With h, Step s) {
       headless::TypeText(s.text);
       h.Wait(kTouchMilliseconds);
     }>},
    {"backspace", "", Do<[](With h, Step) {
       headless::TypeText("\b");
       h.Wait(kTouchMilliseconds);
     }>},
    {"caret", "n", Do<[](With, Step s) { headless::MoveCaret(s.numbers[0]); }>},
    {"shift", "b", Do<[](With, Step s) { headless::SetKey(platform::Key::kShift, s.numbers[0]); }>},
    {"control", "b",
     Do<[](With, Step s) { headless::SetKey(platform::Key::kControl, s.numbers[0]); }>},
    {"tray", "s", Do<[](With h, Step s) {
       headless::PressTray(s.numbers[0] ? kRight : kLeft);
       h.Wait(kTouchMilliseconds);
     }>},
    {"sound", "b", Do<[](With, Step s) { headless::SetWaveDevicePresent(s.numbers[0]); }>},
    {"minimise", "", Do<[](With, Step) { headless::MinimiseByUser(); }>},
    {"restore", "", Do<[](With, Step) { headless::RestoreByUser(); }>},
    {"deactivate", "", Do<[](With, Step) { headless::SetWindowActive(false); }>},
    {"activate", "", Do<[](With, Step) { headless::SetWindowActive(true); }>},
    {"close", "", Do<[](With, Step) { headless::CloseByUser(); }>},
};

std::string Word(std::istream& line) {
  std::string word;
  line >> std::quoted(word);
  return word;
}

bool ParseNumber(std::istream& line, int least, int most, ScriptStep& step) {
  int number;
  if (!(line >> number) || number < least || number > most) return false;
  step.numbers.push_back(number);
  return true;
}

bool ParseChoice(std::istream& line, const char* no, const char* yes, ScriptStep& step) {
  const std::string word = Word(line);
  step.numbers.push_back(word == yes);
  return word == yes || word == no;
}

bool ParseArgument(std::istream& line, char form, ScriptStep& step) {
  switch (form) {
    case 't':
      return ParseNumber(line, 0, kLongestWait, step);
    case 'x':
      return ParseNumber(line, -kFarthestPlace, kFarthestPlace, step);
    case 'n':
      return ParseNumber(line, INT_MIN, INT_MAX, step);
    case 'b':
      return ParseChoice(line, "off", "on", step);
    case 's':
      return ParseChoice(line, "left", "right", step);
    case 'f':
      step.text = Word(line);
      return !step.text.empty();
    case 'r':
      std::getline(line >> std::ws, step.text);
      return true;
    default:
      for (std::string path; !(path = Word(line)).empty();)
        step.paths.push_back(
            platform::FromMachinePath(std::filesystem::absolute(path).string().c_str()));
      return true;
  }
}

// Empty, or what is wrong with the line.
std::string ParseLine(const std::string& text, std::vector<ScriptStep>& steps) {
  std::istringstream line(text);
  std::string name;
  if (!(line >> name) || name[0] == '#') return "";
  for (const ScriptCommand& command : kCommands) {
    if (name != command.name) continue;
    ScriptStep step{&command, {}, "", {}};
    for (const char* form = command.form; *form; ++form)
      if (!ParseArgument(line, *form, step)) return "wrong arguments for " + name;
    if (!(line >> std::ws).eof() && *command.form != 'p') return "too many arguments for " + name;
    steps.push_back(std::move(step));
    return "";
  }
  return "unknown command " + name;
}

// The data of the source tree, or of the player that is installed beside this program.
std::filesystem::path DataFolder() {
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::path(KWO_DATA) / "skin", ignored)) return KWO_DATA;
  return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / "../lib/kwo";
}

// The user's thread and what it needs.
struct User {
  const std::vector<ScriptStep>& steps;
  const std::string& shots;
  Shared<int> ended;  // the program
  std::string error;
};

void FollowScript(void* argument) {
  auto& user = *static_cast<User*>(argument);
  while (!AppReady && !user.ended) platform::Sleep(10);
  for (const ScriptStep& step : user.steps) {
    if (!AppReady) return;
    if (step.command->run(step, user.shots)) continue;
    user.error = std::string(step.command->name) + " " + step.text + " failed";
    break;
  }
  platform::PostQuitMessage(0);
}

}  // namespace

bool ParseScript(const std::string& text, std::vector<ScriptStep>& steps, std::string& error) {
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    const std::string wrong = ParseLine(line, steps);
    if (wrong.empty()) continue;
    error = std::to_string(number) + ": " + wrong;
    return false;
  }
  return true;
}

int MakeHarmless(std::vector<ScriptStep>& steps, const std::string& song) {
  std::erase_if(steps, [](const ScriptStep& step) {
    return step.command->run == Shot || step.command->run == Print;
  });
  std::int64_t wait = 0;
  for (ScriptStep& step : steps) {
    for (std::string& path : step.paths) path = song;
    if (*step.command->form == 't') wait += step.numbers[0];
  }
  return static_cast<int>(std::min<std::int64_t>(wait, INT_MAX));
}

std::string MakeProgramFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "kwo-drive-XXXXXX").string();
  if (!mkdtemp(name.data())) return "";
  for (const char* data : {"skin", "help", "music"})
    std::filesystem::create_directory_symlink(DataFolder() / data,
                                              std::filesystem::path(name) / data);
  return name;
}

bool RunScript(const std::vector<ScriptStep>& steps, const std::string& programFolder,
               const std::string& shots, std::string& error) {
  headless::SetExecutablePath((std::filesystem::absolute(programFolder) / "kwo").string());
  User user{steps, shots, {}, ""};
  platform::Thread* thread = platform::StartThread(FollowScript, &user, "user");
  const int result = RunApplication();
  user.ended = 1;
  platform::JoinThread(thread);
  headless::ForgetMessages();
  error = user.error;
  if (result != 0) error = "the program does not start";
  return error.empty();
}

}  // namespace kwo::tools
