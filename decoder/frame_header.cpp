#include "decoder/frame_header.h"

#include "decoder/header_tables.h"

namespace kwo {

int FrameHeader::SampleRate() const {
  return kSampleRates[sampleRateIndex] >> versionIndex;
}

int FrameHeader::BitRateAt(int index) const {
  return kBitRates[layerIndex + (Lsf() ? 3 : 0)][index] * 1000;
}

int FrameHeader::BitRate() const {
  return BitRateAt(bitRateIndex);
}

int FrameHeader::Samples() const {
  if (layerIndex == MPEG_LAYER_1) return 384;
  return layerIndex == MPEG_LAYER_3 && Lsf() ? 576 : 1152;
}

int FrameHeader::FrameBytes() const {
  const int slotSamples = Samples() / (8 * SlotBytes());
  return (slotSamples * BitRate() / SampleRate() + padding) * SlotBytes();
}

int FrameHeader::SideInfoBytes() const {
  if (Lsf()) return Channels() == 2 ? 17 : 9;
  return Channels() == 2 ? 32 : 17;
}

int FrameHeader::PayloadBytes(int bitRate) const {
  return Samples() / 8 * bitRate / SampleRate() - SideInfoOffset() - SideInfoBytes();
}

bool FrameHeader::SameKind(const FrameHeader& other) const {
  return versionIndex == other.versionIndex && layerIndex == other.layerIndex &&
         sampleRateIndex == other.sampleRateIndex;
}

bool FrameHeader::SameStream(const FrameHeader& other) const {
  return SameKind(other) && ChannelClass(mode) == ChannelClass(other.mode);
}

bool ParseFrameHeader(const unsigned char* bytes, FrameHeader& header) {
  if (bytes[0] != 0xFF || bytes[1] < 0xE0 || bytes[1] == 0xFF) return false;
  header.versionIndex = kVersionMap[bytes[1] >> 3 & 3];
  header.layerIndex = 3 - (bytes[1] >> 1 & 3);
  header.hasCrc = (bytes[1] & 1) == 0;
  header.bitRateIndex = bytes[2] >> 4;
  header.sampleRateIndex = bytes[2] >> 2 & 3;
  header.padding = bytes[2] >> 1 & 1;
  header.mode = bytes[3] >> 6;
  constexpr int kNoLayer = 3, kBadBitRate = 15, kNoRate = 3;
  if (header.versionIndex == kReservedVersion || header.layerIndex == kNoLayer) return false;
  // MPEG-2.5 has Layer III alone.
  if (header.versionIndex == MPEG_VERSION_2_5 && header.layerIndex != MPEG_LAYER_3) return false;
  return header.bitRateIndex != kBadBitRate && header.sampleRateIndex != kNoRate;
}

}  // namespace kwo
