// The playlist file reader; what it has read is saved and read again, and must be the same.

#include "playlist/playlist.h"

#include <cstdlib>
#include <cstring>

#include "fuzz/temp_file.h"
#include "playlist/playlist_files.h"

namespace {

std::string ListText() {
  std::string text;
  const kwo::PlaylistReader reader;
  for (int i = 0; i < kwo::playlist.count; ++i) {
    const kwo::PlaylistEntry& entry = *reader.Entry(i);
    text += std::string(entry.path) + (entry.selected ? "+\n" : "-\n");
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kwo::fuzz::TempFile file(".pla"), saved(".pla");
  kwo::RemoveAll();
  // Names stay inside the folder: a walk of the whole disk finds nothing.
  std::string text(reinterpret_cast<const char*>(data), size);
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] == '/' || text[i] == '\\' || (text[i] == '.' && i > 0 && text[i - 1] == '.'))
      text[i] = '_';
  kwo::LoadPlaylistFile(file.Fill(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
  const std::string before = ListText();
  const char* path = saved.Fill(data, 0);
  kwo::SavePlaylistFile(path);
  kwo::RemoveAll();
  kwo::LoadPlaylistFile(path);
  if (ListText() != before) std::abort();
  return 0;
}
