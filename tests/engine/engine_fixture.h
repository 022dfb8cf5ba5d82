#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/limiter.h"
#include "engine/mixer.h"
#include "tests/support.h"

/// A mixer with three voices and no device, for tests that render block by block.
namespace kwo {

constexpr int kBlock = kBlockValues;

struct Event {
  int code, a;
  bool operator==(const Event&) const = default;
};
inline std::vector<Event> events;
inline std::string nextSong;

inline int Record(Mixer*, int event, Voice* voice, int a, int, int) {
  events.push_back({event, a});
  if (event != EVENT_SOURCE_END || nextSong.empty()) return 0;
  voice->Open(nextSong.c_str());
  nextSong.clear();
  return 1;
}

class Engine : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    nextSong.clear();
    Limiter::Reset();
    mixer.Prepare(Record);
  }
  Voice& V(int slot = 0) { return *mixer.Slot(slot); }
  std::string Wav(const std::vector<std::int16_t>& values, int channels = 2, int rate = 44100) {
    const std::string path = folder.File("song" + std::to_string(++files) + ".wav");
    test::WriteBytes(path, test::WavBytes(channels, rate, 16, test::Raw16(values)));
    return path;
  }
  void Play(const std::string& path, int slot = 0) {
    V(slot).Open(path.c_str());
    V(slot).Start();
  }

  test::TempFolder folder;
  int files = 0;
  Mixer mixer;
};

}  // namespace kwo
