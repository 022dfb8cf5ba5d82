#include "base/hooks.h"

namespace kwo {

Hooks hooks;

void RefreshDisplays() {
  if (hooks.refreshSongLine) hooks.refreshSongLine();
  if (hooks.refreshPlaylistPage) hooks.refreshPlaylistPage();
}

void SongChanged() {
  if (hooks.followSong) hooks.followSong();
  RefreshDisplays();
}

}  // namespace kwo
