// The WAV reader, through a voice.

#include <cstdint>
#include <cstdio>
#include <string>

#include "engine/mixer.h"
#include "platform/files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = std::string(std::tmpnam(nullptr)) + ".wav";
  if (size < 1) return 0;
  kwo::platform::ReplaceFile(path.c_str(), {reinterpret_cast<const char*>(data) + 1, size - 1});
  kwo::Mixer mixer;
  mixer.Init(4608, 44100, 2, nullptr);
  mixer.CreateVoice(0, 4608);
  mixer.limiter = 1;
  mixer.speed = 0.75f + static_cast<float>(data[0]) / 512;
  kwo::Voice& voice = *mixer.Slot(0);
  voice.Open(path.c_str());
  voice.Start();
  for (int i = 0; i < 4 && mixer.RenderBlock(); ++i) voice.Seek(static_cast<float>(data[0] % 4));
  std::remove(path.c_str());
  return 0;
}
