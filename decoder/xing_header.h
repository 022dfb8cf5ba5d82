#pragma once

namespace kwo {

/// What encoders tell of a song in a first frame that holds no music: its length, where its parts
/// lie, and how much of the sound is not the music's.
struct XingHeader {
  enum Flags { kFrames = 1, kBytes = 2, kToc = 4, kScale = 8 };

  bool variableRate;  ///< "Xing"; otherwise "Info", in songs of a constant bit rate
  int headerId;       ///< 1 in MPEG-1, else 0
  int sampleRateField;
  int xingFlags;   ///< which of the four fields below are there
  int xingFrames;  ///< MPEG frames, without this one
  int xingBytes;   ///< of the song, with this frame
  int vbrScale;
  unsigned char toc[100];

  /// Samples that the encoder has put in front of the music and behind it; both 0 if it does not
  /// tell.
  int delay;
  int padding;

  bool Has(Flags field) const { return (xingFlags & field) != 0; }
};

/// Reads the header out of a frame of which `available` bytes are at hand; false if there is none.
bool ParseXingHeader(const unsigned char* frame, int available, XingHeader& xing);

}  // namespace kwo
