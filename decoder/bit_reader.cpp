#include "decoder/bit_reader.h"

#include "decoder/mpeg_decoder.h"

namespace kwo {

int MpegDecoder::GetBits(int count) {
  if (count == 0) return 0;
  const std::uint64_t bits = PeekBits(bits_.bitBase, *bits_.bitCursor);
  *bits_.bitCursor += count;
  return static_cast<int>(bits >> (64 - count));
}

void MpegDecoder::CopyFrameBytes(unsigned char* destination, int count) {
  std::memcpy(destination, bits_.bitBase + *bits_.bitCursor / 8, static_cast<std::size_t>(count));
  *bits_.bitCursor += 8 * count;
}

}  // namespace kwo
