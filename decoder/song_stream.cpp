#include "decoder/song_stream.h"

#include <algorithm>
#include <cstring>

#include "decoder/song_tags.h"

namespace kwo {
namespace {

constexpr std::int64_t kLongestSearch = 2 << 20;
constexpr std::int64_t kEndSearch = 16384;
constexpr int kEarlyPadding = 4;

// The last free format headers.  Three of one stream at one distance, but for their padding, are a
// song; single ones turn up in any music.
class FreeFormatWatch {
 public:
  /// Notes a header; true if it is the third of a row.
  bool Note(std::int64_t offset, const FrameHeader& header) {
    const Seen late = {offset, header};
    bool third = false;
    for (const Seen& middle : seen_)
      for (const Seen& early : seen_)
        third = third || (middle.offset >= 0 && early.offset >= 0 &&
                          FrameBytes(early, middle) > kShortestFrame &&
                          FrameBytes(early, middle) < kLongestFrame &&
                          FrameBytes(early, middle) == FrameBytes(middle, late) &&
                          early.header.SameStream(header) && middle.header.SameStream(header));
    seen_[next_++ % kKept] = late;
    return third;
  }

 private:
  struct Seen {
    std::int64_t offset = -1;
    FrameHeader header = {};
  };
  static constexpr int kKept = 6;
  static constexpr std::int64_t kShortestFrame = 16;
  static constexpr std::int64_t kLongestFrame = 8192;

  // Without its padding.
  static std::int64_t FrameBytes(const Seen& seen, const Seen& next) {
    return next.offset - seen.offset - seen.header.padding * seen.header.SlotBytes();
  }

  Seen seen_[kKept];
  unsigned next_ = 0;
};

}  // namespace

void SongStream::Open(InputStream* file) {
  Shutdown();
  window.Begin(file, file->Control(CTL_LENGTH));
  begin = SkipTagsInFront(window, 0);
  window.SetEnd(FindTagsBehind(window, begin));
  const Found found = FindBegin();
  framesKnown = found == Found::kFrame;
  if (found == Found::kFreeFormat) window.SetEnd(begin);
  if (framesKnown) window.SetEnd(FindEnd());
  BeginStream(STREAM_READABLE | STREAM_SEEKABLE, 0, window.End() - begin);
  GoTo(begin);
}

bool SongStream::HeaderAt(std::int64_t offset, FrameHeader& header) {
  const unsigned char* bytes = window.Look(offset, FrameHeader::kBytes);
  return bytes && ParseFrameHeader(bytes, header);
}

// Whether a frame stands there: another follows it, or the song ends with it.
bool SongStream::Confirmed(std::int64_t offset, FrameHeader& header) {
  if (!HeaderAt(offset, header) || header.FreeFormat()) return false;
  const std::int64_t next = offset + header.FrameBytes();
  if (next == window.End()) return true;
  FrameHeader following;
  // Both in one look, so that the window does not go to and fro.
  return window.Look(offset, header.FrameBytes() + FrameHeader::kBytes) &&
         HeaderAt(next, following) && following.SameKind(header) && !following.FreeFormat();
}

// The next place from `from` on, in front of `limit`, where a header may stand; `limit` for none.
std::int64_t SongStream::NextSync(std::int64_t from, std::int64_t limit) {
  while (from < limit) {
    const unsigned char* bytes = window.Look(from, 1);
    if (!bytes) return limit;
    const int count = window.BytesFrom(from);
    if (const void* at = std::memchr(bytes, 0xFF, static_cast<std::size_t>(count)))
      return std::min(limit, from + (static_cast<const unsigned char*>(at) - bytes));
    from += count;
  }
  return limit;
}

// Moves `begin` to the first frame.
SongStream::Found SongStream::FindBegin() {
  FreeFormatWatch freeFormat;
  const std::int64_t limit = std::min(window.End(), begin + kLongestSearch);
  for (std::int64_t at = NextSync(begin, limit); at < limit; at = NextSync(at + 1, limit)) {
    FrameHeader header;
    if (!HeaderAt(at, header)) continue;
    if (header.FreeFormat()) {
      if (freeFormat.Note(at, header)) return Found::kFreeFormat;
    } else if (Confirmed(at, header)) {
      first = header;
      begin = at;
      return Found::kFrame;
    }
  }
  return Found::kNothing;
}

// The next frame of the song from `from` on; the song's end if there is none.
std::int64_t SongStream::FindFrame(std::int64_t from) {
  const std::int64_t limit = std::min(window.End(), from + kLongestSearch);
  for (std::int64_t at = NextSync(from, limit); at < limit; at = NextSync(at + 1, limit)) {
    FrameHeader header;
    if (Confirmed(at, header) && header.SameStream(first)) return at;
  }
  return window.End();
}

// Whether a frame of the song stands there, where the one before it has ended.
bool SongStream::FrameAt(std::int64_t offset, FrameHeader& header) {
  return HeaderAt(offset, header) && !header.FreeFormat() && header.SameStream(first) &&
         offset + header.FrameBytes() <= window.End();
}

// Whether that frame has all its bytes: what stands at its end is a header, a tag, or the song's
// end.
bool SongStream::EndsWell(std::int64_t offset, const FrameHeader& header) {
  const std::int64_t next = offset + header.FrameBytes();
  // In memory up to the next header, so that the window does not go to and fro.
  window.Look(offset, header.FrameBytes() + FrameHeader::kBytes);
  FrameHeader following;
  return next == window.End() || HeaderAt(next, following) || SkipTagsInFront(window, next) != next;
}

// Where the last whole frame ends; found by the last frames alone.
std::int64_t SongStream::FindEnd() {
  std::int64_t end = window.End();
  std::int64_t at = FindFrame(std::max(begin, end - kEndSearch));
  FrameHeader header;
  while (at < window.End()) {
    if (FrameAt(at, header)) {
      at += header.FrameBytes();
      end = at;
    } else {
      at = FindFrame(at);
    }
  }
  return end;
}

void SongStream::GoTo(std::int64_t offset) {
  place = pieceEnd = offset;
  reservoir = 0;
}

int SongStream::RawRead(void* buffer, int count) {
  auto* out = static_cast<unsigned char*>(buffer);
  int delivered = 0;
  while (delivered < count && place < window.End()) {
    if (place == pieceEnd) {
      NextPiece();
      continue;
    }
    const int piece = static_cast<int>(
        std::min<std::int64_t>({count - delivered, pieceEnd - place, ByteWindow::kCapacity}));
    const auto size = static_cast<std::size_t>(piece);
    if (inGap) {
      std::memset(out + delivered, 0, size);
    } else if (const unsigned char* bytes = window.Look(place, piece)) {
      std::memcpy(out + delivered, bytes, size);
    } else {
      break;
    }
    place += piece;
    delivered += piece;
  }
  return delivered;
}

// Sees what begins at `place`: a frame, a gap up to the next one, or the end of the song.
void SongStream::NextPiece() {
  FrameHeader header;
  inGap = false;
  if (!framesKnown) {
    pieceEnd = window.End();
  } else if (FrameAt(place, header) && EndsWell(place, header)) {
    pieceEnd = place + header.FrameBytes();
    if (header.layerIndex == 2) KeepReservoir(header);
  } else {
    pieceEnd = FindFrame(SkipTagsInFront(window, place));
    inGap = true;
    reservoir = 0;
    if (pieceEnd == window.End()) {
      window.SetEnd(place);
      length = place - begin;
    }
  }
}

// A Layer III frame's granules may begin in the frames before it.  Where these have not been shown,
// the decoder would take whatever it holds for them, and shriek; so the frame is given side
// information that says silence, and keeps its bytes for the frames behind it.
void SongStream::KeepReservoir(const FrameHeader& header) {
  const int sideBytes = header.SideInfoBytes();
  unsigned char* side = window.Look(place, header.SideInfoOffset() + sideBytes);
  if (!side) return;
  side += header.SideInfoOffset();
  // main_data_begin, 9 bits or 8.
  int mainDataBegin = header.Lsf() ? side[0] : side[0] << 1 | side[1] >> 7;
  if (mainDataBegin > reservoir) {
    mainDataBegin = reservoir;
    std::memset(side, 0, static_cast<std::size_t>(sideBytes));
    side[0] = static_cast<unsigned char>(header.Lsf() ? reservoir : reservoir >> 1);
    if (!header.Lsf()) side[1] = static_cast<unsigned char>(reservoir << 7);
  }
  reservoir = mainDataBegin + header.PayloadBytes(header.BitRate()) + header.padding;
}

std::int64_t SongStream::RawSeek(std::int64_t target) {
  std::int64_t offset = begin + std::clamp<std::int64_t>(target, 0, length);
  // The bytes of silenced frames are read anew: from here they may be whole.
  window.Forget();
  if (framesKnown && offset > begin) offset = FindFrame(std::max(begin, offset - kEarlyPadding));
  GoTo(offset);
  return offset - begin;
}

}  // namespace kwo
