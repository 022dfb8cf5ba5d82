#pragma once

/// The dialogs by which songs come into the list.  Main thread.
namespace kwo {

/// The dialogs of "Open Files" and "Open Directory" (`clearFirst` 1), "Add Files" and "Add
/// Directory" (0).
void OpenFilesDialog(int clearFirst);
void OpenDirectoryDialog(int clearFirst);

}  // namespace kwo
