#include "panels/preset_name_edit.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "panels/equaliser_presets.h"
#include "panels/mixer_page.h"
#include "panels/panel_tools.h"
#include "platform/clock.h"

namespace kwo {
namespace {

constexpr char kCaretMark[] = "|";
constexpr int kBusyMilliseconds = 100;

// The redraw thread is inside ShowNameEdit.  It sets this before it looks at InputActiveTick, and
// the main thread clears that before it looks at this, so that no tick paints over the final name.
std::atomic<int> NameTickBusy = 0;

// The longest front of a text that fits a preset and does not cut a character in two.
std::size_t FittingLength(const char* text) {
  std::size_t length = std::strlen(text);
  if (length < kPresetNameSize) return length;
  length = kPresetNameSize - 1;
  while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
  return length;
}

}  // namespace

void ShowPresetName(const char* name) {
  char text[kInputTextSize + 32];
  std::snprintf(text, sizeof text, "%d. %s", EffectEQCurrent + 1, name);
  Label(WIDGET_PRESET_NAME, text);
}

void BeginNameEdit() {
  const char* name = EqPresetNames[EffectEQCurrent];
  InputText.Store(name);
  platform::SetEditText(name);
  platform::FocusEdit();
  TheSkinHost->InputActiveTick = 1;
}

void EndNameEdit() {
  if (!TheSkinHost->InputActiveTick) return;
  platform::FocusWindow();
  TheSkinHost->InputActiveTick = 0;
  while (NameTickBusy) platform::Sleep(kBusyMilliseconds);
  char text[kInputTextSize];
  InputText.Load(text);
  char* name = EqPresetNames[EffectEQCurrent];
  const std::size_t length = FittingLength(text);
  std::memset(name, 0, kPresetNameSize);
  std::memcpy(name, text, length);
  ShowPresetName(name);
}

void ShowNameEdit() {
  NameTickBusy = 1;
  if (TheSkinHost->InputActiveTick) {
    char text[kInputTextSize], marked[kInputTextSize + 8];
    const auto length = static_cast<int>(InputText.Load(text));
    const int caret = std::clamp(platform::EditCaret(), 0, length);
    std::snprintf(marked, sizeof marked, "%.*s%s%s", caret, text, kCaretMark, text + caret);
    ShowPresetName(marked);
  }
  NameTickBusy = 0;
}

}  // namespace kwo
