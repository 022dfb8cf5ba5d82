#pragma once

#include "base/shared.h"
#include "base/shared_text.h"
#include "platform/decoding.h"
#include "toolkit/skin_host.h"

/// The process-wide variables of the program.  Main thread, but for the words marked as shared.
namespace kwo {

/// Folder of the executable, with its trailing backslash.
extern char AppDir[platform::kMostBytes + 1];

/// Name of the skin folder under `skin\`.
extern char SkinName[256];

/// Mirror of the text in the hidden edit.  The redraw thread reads it while a name is edited.
constexpr int kInputTextSize = 256;
extern SharedText InputText;

/// The page in front.
enum Page : int {
  PAGE_MAIN,
  PAGE_PLAYLIST,
  PAGE_MIXER,
  PAGE_INFO,
  PAGE_CONFIG,
  PAGE_WINDOW,
  PAGE_COUNT
};
extern Shared<int> CurrentPage;

/// Sub-page of the mixer page: 0 sliders, 1 equaliser, 2 effects, 3 DJ.
extern int MixerSubPage;

/// Bits 0 and 1: the auto mode; bit 2: always on top.
extern int WindowFlags;
enum AutoMode : int { AUTO_OFF = 0, AUTO_HIDE = 1, AUTO_MINIMISE = 2 };
inline int CurrentAutoMode() {
  return WindowFlags & 3;
}

/// 1 from the very end of start-up until the first step of shutdown.
extern Shared<int> AppReady;

}  // namespace kwo
