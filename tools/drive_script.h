#pragma once

#include <string>
#include <vector>

/// A user's script for the whole program on the headless platform.
namespace kwo::tools {

struct ScriptCommand;

/// One command with its arguments, checked.
struct ScriptStep {
  const ScriptCommand* command;
  std::vector<int> numbers;
  std::string text;
  std::vector<std::string> paths;
};

/// What a script may say, a line or more for each command.
extern const char kScriptCommands[];

/// Reads a whole script.  On failure gives false and, in `error`, the line's number and what is
/// wrong with it.
bool ParseScript(const std::string& text, std::vector<ScriptStep>& steps, std::string& error);

/// The same, but for what shots and prints would leave behind: for scripts that nobody has read.
/// Their paths become `song`.  Gives the milliseconds that the script takes by itself.
int MakeHarmless(std::vector<ScriptStep>& steps, const std::string& song);

/// A new folder for the program, with links to its data; empty if that fails.  The caller removes
/// it.
std::string MakeProgramFolder();

/// Runs the program in its folder from start to end, with a user before it who follows the script.
/// Shots go to the folder `shots`.  On failure gives false and says in `error` what failed.
bool RunScript(const std::vector<ScriptStep>& steps, const std::string& programFolder,
               const std::string& shots, std::string& error);

}  // namespace kwo::tools
