// The tag reader and the names that come of it.

#include "fuzz/temp_file.h"
#include "playlist/playlist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kwo::fuzz::TempFile file("fuzz.mp3");
  kwo::RemoveAll();
  kwo::AddSong(file.Fill(data, size));
  kwo::AddSong("other.mp3");
  for (int mode = -1; mode < 6; ++mode) {
    kwo::playlist.displayMode = mode;
    kwo::BuildDisplayNames();
    kwo::SortList();
  }
  return 0;
}
