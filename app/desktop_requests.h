#pragma once

#include <string>
#include <vector>

/// What the desktop asks of the player, carried out as a user's hands would, and what it is told of
/// him.  Main thread.
namespace kwo {

/// Offers the player to the desktop's media controls, as it stands.
void OpenToDesktop();

/// Adds the songs of a drop, behind those that are there with `keep`, else in their place; what
/// plays steps on to each.
void TakeSongs(std::vector<std::string> paths, bool keep);

void OnDesktopRequest(int number);

/// Tells the desktop how the player stands, if that has changed.
void ShowStateToDesktop();

}  // namespace kwo
