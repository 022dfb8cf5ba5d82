#pragma once

#include <string>
#include <vector>

/// What the desktop asks the user for.  Main thread.
namespace kwo::platform {

/// Lets the user choose files.  `filter` is pairs of a name and its patterns, each closed by NUL,
/// with one more NUL behind the last.  The dialog opens in `folder`; when the user has chosen, the
/// folder that it then shows is the current one.  False if nothing was chosen.
bool ChooseFiles(const char* filter, const char* folder, std::vector<std::string>& paths);

/// Lets the user choose a folder; false if none was chosen.
bool ChooseFolder(const char* title, std::string& folder);

}  // namespace kwo::platform
