// The playlist file reader; what it has read is saved and read again, and must be the same.

#include "playlist/playlist.h"

#include <cstdlib>

#include "fuzz/temp_file.h"
#include "playlist/playlist_files.h"

namespace {

// The list as a file.
std::string Saved(const kwo::fuzz::TempFile& file) {
  kwo::SavePlaylistFile(file.path.c_str());
  return kwo::test::ReadBytes(file.path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const kwo::fuzz::TempFile file("read.pla"), saved("saved.pla");
  kwo::RemoveAll();
  // Names stay inside the folder: a walk of the whole disk finds nothing.
  std::string text(reinterpret_cast<const char*>(data), size);
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] == '/' || text[i] == '\\' || (text[i] == '.' && i > 0 && text[i - 1] == '.'))
      text[i] = '_';
  kwo::test::WriteBytes(file.path, text);
  kwo::LoadPlaylistFile(file.path.c_str());
  const std::string before = Saved(saved);
  kwo::RemoveAll();
  kwo::LoadPlaylistFile(saved.path.c_str());
  if (Saved(saved) != before) std::abort();
  return 0;
}
