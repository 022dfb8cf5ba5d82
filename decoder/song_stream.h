#pragma once

#include "decoder/byte_window.h"
#include "decoder/frame_header.h"
#include "decoder/input_stream.h"

namespace kwo {

/// The song in its file: the frames alone, without the tags around them, rubbish, and what is cut
/// off at either end.  Whoever decodes it meets no false sync word and counts no foreign byte.
///
/// The song begins with the first header that is confirmed: another of its kind, or the song's end,
/// stands where its frame ends.  Its end is found from behind, so opening costs the same for any
/// song.  What lies between frames reads as zeros, and so does a frame that lacks its end.  A Layer
/// III frame that refers to bytes which have not been shown is shown as a frame of silence.
///
/// One thread at a time, like every stream.  Nothing is allocated; a read walks at most 2 MB.
class SongStream : public InputStream {
 public:
  /// Finds the song in `file`, an open and seekable stream that stays the caller's.  Free format,
  /// which nobody here can play, gives an empty song; a file with no two frames in a row gives all
  /// that lies between the tags as it stands.
  void Open(InputStream* file);

  int RawRead(void* buffer, int count) override;
  /// Goes to the frame that begins at `target` or up to 4 bytes in front of it, since encoders pad
  /// a byte early as often as not; else to the next frame behind.
  std::int64_t RawSeek(std::int64_t target) override;

 private:
  enum class Found { kNothing, kFrame, kFreeFormat };

  bool HeaderAt(std::int64_t offset, FrameHeader& header);
  bool FrameAt(std::int64_t offset, FrameHeader& header);
  bool EndsWell(std::int64_t offset, const FrameHeader& header);
  bool Confirmed(std::int64_t offset, FrameHeader& header);
  std::int64_t NextSync(std::int64_t from, std::int64_t limit);
  Found FindBegin();
  std::int64_t FindFrame(std::int64_t from);
  std::int64_t FindEnd();
  void GoTo(std::int64_t offset);
  void NextPiece();
  void KeepReservoir(const FrameHeader& header);

  ByteWindow window;
  bool framesKnown = false;  // otherwise all is shown as it stands
  FrameHeader first = {};    // all frames are of its kind
  std::int64_t begin = 0;    // in the file, as are the places below
  std::int64_t place = 0;
  std::int64_t pieceEnd = 0;  // the frame or the gap that `place` lies in ends here
  bool inGap = false;
  int reservoir = 0;  // bytes that the next Layer III frame may refer to
};

}  // namespace kwo
