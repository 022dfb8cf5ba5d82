#include "platform/shell.h"

#include <deque>

#include "platform/files.h"
#include "platform/headless/headless.h"

namespace kwo {
namespace {

std::deque<headless::DialogAnswer> answers;
std::string lastFolder;

bool TakeAnswer(headless::DialogAnswer& answer) {
  if (answers.empty()) return false;
  answer = answers.front();
  answers.pop_front();
  return !answer.paths.empty();
}

}  // namespace

namespace platform {

bool ChooseFiles(const char*, const char* folder, std::vector<std::string>& paths) {
  lastFolder = folder;
  headless::DialogAnswer answer;
  if (!TakeAnswer(answer)) return false;
  paths = answer.paths;
  SetCurrentFolder(answer.folder.c_str());
  return true;
}

bool ChooseFolder(const char*, std::string& folder) {
  headless::DialogAnswer answer;
  if (!TakeAnswer(answer)) return false;
  folder = answer.paths[0];
  return true;
}

}  // namespace platform

namespace headless {

void AnswerDialog(const DialogAnswer& answer) {
  answers.push_back(answer);
}

std::string LastDialogFolder() {
  return lastFolder;
}

}  // namespace headless
}  // namespace kwo
