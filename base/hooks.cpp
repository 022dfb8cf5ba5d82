#include "base/hooks.h"

namespace kwo {

Hooks hooks;

void RefreshDisplays() {
  hooks.refreshSongLine();
  hooks.refreshPlaylistPage();
}

void SongChanged() {
  hooks.followSong();
  RefreshDisplays();
}

}  // namespace kwo
