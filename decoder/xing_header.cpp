#include "decoder/xing_header.h"

#include <cstring>

namespace kwo {
namespace {

int BigEndian32(const unsigned char* bytes) {
  return static_cast<int>(static_cast<unsigned>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 |
                          bytes[3]);
}

bool IsOneOf(const unsigned char* at, const char* a, const char* b, const char* c = nullptr) {
  return std::memcmp(at, a, 4) == 0 || std::memcmp(at, b, 4) == 0 ||
         (c && std::memcmp(at, c, 4) == 0);
}

}  // namespace

bool ParseXingHeader(const unsigned char* frame, int available, XingHeader& xing) {
  const int headerId = frame[1] >> 3 & 1;
  const bool single = frame[3] >> 6 == 3;
  const int offset = headerId ? (single ? 21 : 36) : (single ? 13 : 21);
  const unsigned char* at = frame + offset;
  const unsigned char* end = frame + available;
  if (end - at < 8 || !IsOneOf(at, "Xing", "Info")) return false;
  static constexpr int kRates[] = {44100, 48000, 32000, 99999};
  const int rate = kRates[frame[2] >> 2 & 3];
  xing = XingHeader();
  xing.variableRate = *at == 'X';
  xing.headerId = headerId;
  xing.sampleRateField = headerId ? rate : rate / 2;
  xing.vbrScale = -1;
  const int present = BigEndian32(at + 4);
  at += 8;
  // A field that the end cuts off counts as absent.
  const auto take = [&](int flag, int size) -> const unsigned char* {
    if (!(present & flag) || end - at < size) return nullptr;
    const unsigned char* field = at;
    at += size;
    xing.xingFlags |= flag;
    return field;
  };
  if (auto* frames = take(XingHeader::kFrames, 4)) xing.xingFrames = BigEndian32(frames);
  if (auto* bytes = take(XingHeader::kBytes, 4)) xing.xingBytes = BigEndian32(bytes);
  if (auto* toc = take(XingHeader::kToc, 100)) std::memcpy(xing.toc, toc, sizeof xing.toc);
  if (auto* scale = take(XingHeader::kScale, 4)) xing.vbrScale = BigEndian32(scale);
  // The encoder's name and settings follow, with delay and padding in 12 bits each.
  constexpr int kDelays = 21;
  if (end - at >= kDelays + 3 && IsOneOf(at, "LAME", "Lavc", "Lavf")) {
    xing.delay = at[kDelays] << 4 | at[kDelays + 1] >> 4;
    xing.padding = (at[kDelays + 1] & 15) << 8 | at[kDelays + 2];
  }
  return true;
}

}  // namespace kwo
