#pragma once

#include <string>

/// The editing of a preset's name: the window's hidden edit takes the typing, and the redraw
/// thread's tick shows it, with a mark at the caret.  Main thread, but for what says otherwise.
namespace kwo {

/// Shows "number. name" for the current preset.  Any thread.
void ShowPresetName(const char* name);
/// "number. name" of the current preset.
std::string PresetLabel();

void BeginNameEdit();
/// Keeps the name as it stands, cut to what a preset holds.  Nothing if none is being edited.
void EndNameEdit();
/// Shows the text as it stands.  Redraw thread, on its tick.
void ShowNameEdit();

}  // namespace kwo
