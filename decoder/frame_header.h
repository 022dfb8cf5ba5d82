#pragma once

namespace kwo {

/// A frame header of MPEG audio, ISO/IEC 11172-3 clause 2.4.1.3 and ISO/IEC 13818-3.
struct FrameHeader {
  static constexpr int kBytes = 4;

  int versionIndex;  ///< 0 MPEG-1, 1 MPEG-2, 2 MPEG-2.5
  int layerIndex;    ///< 0 to 2
  bool hasCrc;
  int bitRateIndex;  ///< 0 to 14; 0 is free format
  int sampleRateIndex;
  int padding;
  int mode;  ///< 0 stereo, 1 joint stereo, 2 dual channel, 3 single channel

  bool Lsf() const { return versionIndex != 0; }
  bool FreeFormat() const { return bitRateIndex == 0; }
  int Channels() const { return mode == 3 ? 1 : 2; }
  int SampleRate() const;  ///< Hz
  int BitRate() const;     ///< bits per second; 0 in free format
  /// The same for another bit rate index of this version and layer.
  int BitRateAt(int index) const;
  int Samples() const;  ///< of each channel
  /// From this header to the next; meaningless in free format.
  int FrameBytes() const;
  int SlotBytes() const { return layerIndex == 0 ? 4 : 1; }

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
