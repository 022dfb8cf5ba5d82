// The whole program without a desktop, and a user before it who follows a script.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tools/drive_script.h"

namespace kwo::tools {
namespace {

constexpr char kUsage[] =
    "usage: drive_window SCRIPT [--out DIR] [--program DIR]\n"
    "Runs the whole program without a desktop, and a user before it who follows the script.\n"
    "  --out DIR      where the shots go; the current folder by default\n"
    "  --program DIR  the program's folder, which holds skin/ and gets HISTORY.PLA and EQ.SET;\n"
    "                 by default one of its own that is removed at the end\n"
    "A line of the script is a command; an empty one, or one that begins with #, is nothing.\n"
    "Places are pixels of the window; times are milliseconds of the program's own clock.\n";

int Usage(std::FILE* to) {
  std::fputs(kUsage, to);
  std::fputs(kScriptCommands, to);
  return to == stdout ? 0 : 2;
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "drive_window: %s\n", message.c_str());
  return 1;
}

int Drive(const std::string& path, const std::string& out, std::string program) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return Fail(path + " can't be read");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::vector<ScriptStep> steps;
  std::string error;
  if (!ParseScript(text, steps, error)) return Fail(path + ":" + error);
  const bool own = program.empty();
  if (own) program = MakeProgramFolder();
  if (program.empty()) return Fail("no temporary folder can be made");
  const bool ran = RunScript(steps, program, out, error);
  if (own) std::filesystem::remove_all(program);
  return ran ? 0 : Fail(path + ": " + error);
}

}  // namespace
}  // namespace kwo::tools

int main(int count, char** arguments) {
  using namespace kwo::tools;
  std::string path, out = ".", program;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument == "-h" || argument == "--help") return Usage(stdout);
    if (argument == "--out" && i + 1 < count) {
      out = arguments[++i];
    } else if (argument == "--program" && i + 1 < count) {
      program = arguments[++i];
    } else if (path.empty() && argument[0] != '-') {
      path = argument;
    } else {
      return Usage(stderr);
    }
  }
  return path.empty() ? Usage(stderr) : Drive(path, out, program);
}
