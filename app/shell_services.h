#pragma once

#include <cstddef>
#include <string>

/// The program's contacts with the desktop's shell.  Main thread; failures leave no trace.
namespace kwo {

void AddTrayIcon();
void RemoveTrayIcon();

/// Finds the command line that opens a page in the user's browser; 0 or a negative error code.
int FindBrowser(std::string& command);
/// Opens a file or a page in the user's browser; 0 or a negative error code.
int OpenInBrowser(const std::string& target);

void OpenHelp();
void OpenHomePage();

}  // namespace kwo
