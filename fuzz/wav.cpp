// The WAV reader, through a voice.

#include "engine/mixer.h"
#include "fuzz/temp_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kwo::fuzz::TempFile file("fuzz.wav");
  if (size < 1) return 0;
  kwo::Mixer mixer;
  mixer.Init(4608, 44100, 2, nullptr);
  mixer.CreateVoice(0, 4608);
  mixer.limiter = 1;
  mixer.speed = 0.75f + static_cast<float>(data[0]) / 512;
  kwo::Voice& voice = *mixer.Slot(0);
  voice.Open(file.Fill(data + 1, size - 1));
  voice.Start();
  for (int i = 0; i < 4 && mixer.RenderBlock(); ++i) voice.Seek(static_cast<float>(data[0] % 4));
  return 0;
}
