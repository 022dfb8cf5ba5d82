#include "base/hooks.h"

namespace kwo {

Hooks hooks;

void RefreshDisplays() {
  hooks.refreshSongLine();
  hooks.refreshPlaylistPage();
  hooks.stateChanged();
}

void SongChanged() {
  hooks.followSong();
  RefreshDisplays();
}

}  // namespace kwo
