#pragma once

namespace kwo {

enum MpegVersion : int { MPEG_VERSION_1 = 0, MPEG_VERSION_2 = 1, MPEG_VERSION_2_5 = 2 };
enum MpegLayer : int { MPEG_LAYER_1 = 0, MPEG_LAYER_2 = 1, MPEG_LAYER_3 = 2 };
enum ChannelMode : int {
  MODE_STEREO = 0,
  MODE_JOINT_STEREO = 1,
  MODE_DUAL_CHANNEL = 2,
  MODE_SINGLE_CHANNEL = 3
};
/// Bits of Layer III's mode extension; for the other layers it tells the first joint subband.
enum ModeExtension : int { EXTENSION_INTENSITY = 1, EXTENSION_MS = 2 };

/// The mode by which frames of a stream are told from others': each may choose joint stereo anew.
constexpr int ChannelClass(int mode) {
  return mode == MODE_JOINT_STEREO ? MODE_STEREO : mode;
}

/// A frame header of MPEG audio, ISO/IEC 11172-3 clause 2.4.1.3 and ISO/IEC 13818-3.
struct FrameHeader {
  static constexpr int kBytes = 4;

  int versionIndex;  ///< an MpegVersion
  int layerIndex;    ///< an MpegLayer
  bool hasCrc;
  int bitRateIndex;  ///< 0 to 14; 0 is free format
  int sampleRateIndex;
  int padding;
  int mode;  ///< a ChannelMode

  bool Lsf() const { return versionIndex != MPEG_VERSION_1; }
  bool FreeFormat() const { return bitRateIndex == 0; }
  int Channels() const { return mode == MODE_SINGLE_CHANNEL ? 1 : 2; }
  int SampleRate() const;  ///< Hz
  int BitRate() const;     ///< bits per second; 0 in free format
  /// The same for another bit rate index of this version and layer.
  int BitRateAt(int index) const;
  int Samples() const;  ///< of each channel
  /// From this header to the next; meaningless in free format.
  int FrameBytes() const;
  int SlotBytes() const { return layerIndex == MPEG_LAYER_1 ? 4 : 1; }

  /// From the header to Layer III's side information, and the size of that.
  int SideInfoOffset() const { return kBytes + (hasCrc ? 2 : 0); }
  int SideInfoBytes() const;
  /// What is left of a Layer III frame of `bitRate` without padding for its main data.
  int PayloadBytes(int bitRate) const;

  /// Of one version, layer and rate, as all frames of a song are.
  bool SameKind(const FrameHeader& other) const;
  /// And with the same channels, which is what the decoder goes on with.
  bool SameStream(const FrameHeader& other) const;
};

/// Reads the four bytes of a header; false for anything that the decoder can't begin with.  Free
/// format is read too, though it can't be decoded.  The second byte 0xFF, of MPEG-1 Layer I without
/// CRC, is not told from a run of 0xFF.
bool ParseFrameHeader(const unsigned char* bytes, FrameHeader& header);

}  // namespace kwo
