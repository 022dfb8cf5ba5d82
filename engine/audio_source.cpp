#include "engine/audio_source.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "base/upper_cased.h"
#include "engine/equaliser.h"

namespace kwo {
namespace {

// The last four characters decide, whatever the case; nothing looks into the file.
SourceKind KindOfName(const char* name) {
  const std::size_t length = std::strlen(name);
  if (length < 4) return SourceKind::kNothing;
  const std::string ending = UpperCased(name + length - 4);
  if (ending == ".MP3" || ending == ".MP2") return SourceKind::kMpeg;
  return ending == ".WAV" ? SourceKind::kWav : SourceKind::kNothing;
}

}  // namespace

AudioSource::~AudioSource() {
  Close();
}

int AudioSource::Open(const char* name) {
  Close();
  for (auto& word : info) word = 0;
  kind = SourceKind::kNothing;
  const std::size_t length = std::strlen(name);
  // A name that was cut would be another file's.
  if (length >= sizeof path) return 0;
  std::memcpy(path, name, length + 1);
  kind = KindOfName(path);
  if (kind == SourceKind::kMpeg) return OpenMpeg();
  return kind == SourceKind::kWav ? OpenWav() : 1;
}

int AudioSource::OpenMpeg() {
  decoder.reset(new (std::nothrow) MpegDecoder);
  if (!decoder || fileStream.Open(path, 2) != 0) return 0;
  songStream.Open(&fileStream);
  if (musicStream.Open(decoder.get(), &songStream, &sampleRate, &channels, decimation,
                       outputChannels) != 0)
    return 0;
  const StreamInfo& stream = decoder->Info();
  info[INFO_KIND] = static_cast<int>(kind);
  info[INFO_MPEG_VERSION] = stream.mpegVersion;
  info[INFO_LAYER] = stream.layerNumber;
  info[INFO_BIT_RATE] = decoder->HasXingHeader() ? 0 : stream.bitRate;
  info[INFO_CHANNELS] = stream.channelCount;
  info[INFO_SAMPLE_RATE] = stream.sampleRateHz;
  NoteSeconds();
  return 1;
}

int AudioSource::OpenWav() {
  wavReader.reset(new (std::nothrow) WavReader);
  if (!wavReader || !wavReader->Open(path, &sampleRate, &channels)) return 0;
  info[INFO_KIND] = static_cast<int>(kind);
  info[INFO_CHANNELS] = channels;
  info[INFO_SAMPLE_RATE] = sampleRate;
  NoteSeconds();
  return 1;
}

void AudioSource::NoteSeconds() {
  const std::int64_t second = std::int64_t{sampleRate} * channels * 4;
  info[INFO_SECONDS] = static_cast<int>(std::min<std::int64_t>(Length() / second, INT32_MAX));
}

void AudioSource::Close() {
  musicStream.Shutdown();
  if (decoder) decoder->Shutdown();
  songStream.Shutdown();
  fileStream.Shutdown();
  decoder.reset();
  wavReader.reset();
}

int AudioSource::Read(float* buffer, int size) {
  if (decoder) return musicStream.Read(buffer, size);
  return wavReader ? wavReader->Read(buffer, size) : 0;
}

std::int64_t AudioSource::Seek(int seconds) {
  const std::int64_t target = std::int64_t{sampleRate} * channels * seconds * 4;
  if (decoder) return musicStream.Seek(target);
  return wavReader ? wavReader->Seek(target) : 0;
}

std::int64_t AudioSource::Length() {
  if (decoder) return musicStream.Control(CTL_LENGTH);
  return wavReader ? wavReader->Length() : 0;
}

std::int64_t AudioSource::Position() {
  if (decoder) return musicStream.Control(CTL_READ_POSITION);
  return wavReader ? wavReader->Position() : 0;
}

void AudioSource::SetCrystalizer(int value) {
  if (decoder) decoder->SetCrystalizer(value);
}

void AudioSource::SetEnhancer(int value) {
  if (decoder) decoder->SetEnhancer(value);
}

void AudioSource::SetVocalReducer(int value) {
  if (decoder) decoder->SetVocalReducer(value);
}

void AudioSource::SetWideStereo(int value) {
  if (decoder) decoder->SetWideStereo(value);
}

void AudioSource::SetEqualiserSwitch(int value) {
  if (!decoder) return;
  eqSwitch = value;
  decoder->SetEqualiserSwitch(value);
}

void AudioSource::SetEqualiserCurve(const float* values) {
  if (!decoder) return;
  std::copy_n(values, kEqualiserValues, eqValues);
  float gains[kLines];
  EqualiserLineGains(values, gains);
  eqCompensation = static_cast<float>((1.0 - values[kEqualiserBands]) * 2.0 + 1.0);
  decoder->SetLineGains(gains);
}

}  // namespace kwo
