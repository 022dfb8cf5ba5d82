#include "platform/posix/screens_note.h"

#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr std::size_t kLargestNote = 1 << 16;

}  // namespace

bool NoteScreens(const std::string& path, const std::vector<Rectangle>& screens) {
  std::string now, before;
  for (const Rectangle& screen : screens)
    now += std::to_string(screen.x) + ' ' + std::to_string(screen.y) + ' ' +
           std::to_string(screen.width) + ' ' + std::to_string(screen.height) + '\n';
  const bool noted = ReadWholeFile(path.c_str(), before, kLargestNote);
  if (noted && before == now) return false;
  ReplaceFile(path.c_str(), now);
  return noted;
}

}  // namespace kwo::platform
