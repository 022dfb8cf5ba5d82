#include "panels/preset_name_edit.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>

#include "base/handshake.h"
#include "panels/equaliser_presets.h"
#include "panels/panel_tools.h"
#include "platform/clock.h"

namespace kwo {
namespace {

constexpr char kCaretMark[] = "|";
constexpr int kBusyMilliseconds = 100;

// The redraw thread is inside ShowNameEdit: its hand-shake with InputActiveTick, so that no tick
// paints over the final name.
std::atomic<int> NameTickBusy = 0;

bool IsContinuation(char byte) {
  return (byte & 0xC0) == 0x80;
}

std::string Numbered(const std::string& name) {
  return std::to_string(EffectEQCurrent + 1) + ". " + name;
}

// The text with its mark at the caret, from the first letter on with which the mark still stands in
// the name's field.
std::string MarkedText(const std::string& text, std::size_t caret) {
  const SkinHost& host = *TheSkinHost;
  const std::string front = text.substr(0, caret) + kCaretMark;
  const auto fits = [&](std::size_t start) {
    return platform::TextWidth(Numbered(front.substr(start)).c_str(), *host.font) <=
           Find(WIDGET_PRESET_NAME)->width;
  };
  // From the caret back, so that a long text costs no more than what is shown of it.
  std::size_t start = host.font ? caret : 0;
  for (std::size_t letter = start; letter > 0 && fits(start);) {
    do {
      --letter;
    } while (letter > 0 && IsContinuation(front[letter]));
    if (!fits(letter)) break;
    start = letter;
  }
  return front.substr(start) + text.substr(caret);
}

// The longest front of a text that fits a preset and does not cut a character in two.
std::size_t FittingLength(const char* text) {
  std::size_t length = std::strlen(text);
  if (length < kPresetNameSize) return length;
  length = kPresetNameSize - 1;
  while (length > 0 && IsContinuation(text[length])) --length;
  return length;
}

}  // namespace

void ShowPresetName(const char* name) {
  Label(WIDGET_PRESET_NAME, Numbered(name).c_str());
}

std::string PresetLabel() {
  return Numbered(EqPresetNames[EffectEQCurrent]);
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
  AwaitTurnsEnd(NameTickBusy, [] { platform::Sleep(kBusyMilliseconds); });
  char text[kInputTextSize];
  InputText.Load(text);
  char* name = EqPresetNames[EffectEQCurrent];
  const std::size_t length = FittingLength(text);
  std::memset(name, 0, kPresetNameSize);
  std::memcpy(name, text, length);
  ShowPresetName(name);
}

void ShowNameEdit() {
  if (!EnterTurn(NameTickBusy, TheSkinHost->InputActiveTick, 1)) return;
  char text[kInputTextSize];
  const auto length = static_cast<int>(InputText.Load(text));
  // The caret is a newer one than the text, or an older: it must not part a character.
  int caret = std::clamp(platform::EditCaret(), 0, length);
  while (caret > 0 && IsContinuation(text[caret])) --caret;
  ShowPresetName(MarkedText(text, static_cast<std::size_t>(caret)).c_str());
  LeaveTurn(NameTickBusy);
}

}  // namespace kwo
