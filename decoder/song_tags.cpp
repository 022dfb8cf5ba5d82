#include "decoder/song_tags.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kwo {
namespace {

constexpr int kId3v1Bytes = 128;
constexpr int kId3v1MoreBytes = 227;  // an extension in front of an ID3v1 tag
constexpr int kId3v2HeaderBytes = 10;
constexpr int kApeHeaderBytes = 32;
constexpr std::string_view kLyricsBegin = "LYRICSBEGIN";
constexpr std::string_view kLyrics1End = "LYRICSEND";
constexpr std::string_view kLyrics2End = "LYRICS200";
constexpr int kLyrics2Digits = 6;
constexpr int kLyrics1Bytes = 5100;  // the first version's text is no longer

bool Stands(ByteWindow& window, std::int64_t offset, std::string_view text) {
  const unsigned char* at = window.Look(offset, static_cast<int>(text.size()));
  return at && std::memcmp(at, text.data(), text.size()) == 0;
}

std::uint32_t LittleEndian32(const unsigned char* at) {
  return static_cast<std::uint32_t>(at[0] | at[1] << 8 | at[2] << 16) |
         static_cast<std::uint32_t>(at[3]) << 24;
}

// The bytes of an ID3v2 tag without header and footer, which both have this form; -1 where it can't
// be true.
std::int64_t Id3v2Body(const unsigned char* at) {
  std::int64_t size = 0;
  for (int i = 6; i < 10; ++i) {
    if (at[i] & 0x80) return -1;
    size = size << 7 | at[i];
  }
  return size;
}

std::int64_t Id3v2Bytes(ByteWindow& window, std::int64_t offset) {
  if (!Stands(window, offset, "ID3")) return 0;
  const unsigned char* header = window.Look(offset, kId3v2HeaderBytes);
  if (!header || header[3] == 0xFF || header[4] == 0xFF) return 0;
  constexpr int kHasFooter = 0x10;
  const std::int64_t body = Id3v2Body(header);
  return body < 0 ? 0 : body + kId3v2HeaderBytes * (header[5] & kHasFooter ? 2 : 1);
}

// All of an APEv2 tag, told by its header or its footer.
std::int64_t ApeBytes(const unsigned char* at) {
  constexpr std::uint32_t kHasHeader = 1u << 31;
  const std::int64_t size = LittleEndian32(at + 12);
  return size + (LittleEndian32(at + 20) & kHasHeader ? kApeHeaderBytes : 0);
}

std::int64_t ApeInFront(ByteWindow& window, std::int64_t offset) {
  const unsigned char* header = window.Look(offset, kApeHeaderBytes);
  return header && std::memcmp(header, "APETAGEX", 8) == 0 ? ApeBytes(header) : 0;
}

// Whether an item stands there: a size, flags, and a key of printable characters.
bool IsApeItem(ByteWindow& window, std::int64_t offset, std::int64_t tagBytes) {
  constexpr int kKeyOffset = 8, kShortestKey = 2;
  const unsigned char* item = window.Look(offset, kKeyOffset + kShortestKey);
  return item && LittleEndian32(item) < tagBytes && item[kKeyOffset] >= 0x20 &&
         item[kKeyOffset] < 0x7F && item[kKeyOffset + 1] >= 0x20 && item[kKeyOffset + 1] < 0x7F;
}

std::int64_t ApeBehind(ByteWindow& window, std::int64_t end) {
  const unsigned char* footer = window.Look(end - kApeHeaderBytes, kApeHeaderBytes);
  if (!footer || std::memcmp(footer, "APETAGEX", 8) != 0) return 0;
  const std::int64_t bytes = ApeBytes(footer);
  const std::int64_t begin = end - bytes;
  const bool empty =
      LittleEndian32(footer + 16) == 0 && LittleEndian32(footer + 12) == kApeHeaderBytes;
  return empty || ApeInFront(window, begin) == bytes || IsApeItem(window, begin, bytes) ? bytes : 0;
}

std::int64_t Id3v1Behind(ByteWindow& window, std::int64_t end) {
  if (!Stands(window, end - kId3v1Bytes, "TAG")) return 0;
  const bool more = Stands(window, end - kId3v1Bytes - kId3v1MoreBytes, "TAG+");
  return kId3v1Bytes + (more ? kId3v1MoreBytes : 0);
}

std::int64_t Id3v2Behind(ByteWindow& window, std::int64_t end) {
  const unsigned char* footer = window.Look(end - kId3v2HeaderBytes, kId3v2HeaderBytes);
  if (!footer || std::memcmp(footer, "3DI", 3) != 0) return 0;
  const std::int64_t body = Id3v2Body(footer);
  const std::int64_t bytes = body + 2 * kId3v2HeaderBytes;
  return body >= 0 && Stands(window, end - bytes, "ID3") ? bytes : 0;
}

// The second version tells its size in digits in front of its end mark.
std::int64_t Lyrics2Behind(ByteWindow& window, std::int64_t end) {
  const int markBytes = static_cast<int>(kLyrics2End.size());
  if (!Stands(window, end - markBytes, kLyrics2End)) return 0;
  const unsigned char* digits = window.Look(end - markBytes - kLyrics2Digits, kLyrics2Digits);
  if (!digits) return 0;
  std::int64_t size = 0;
  for (int i = 0; i < kLyrics2Digits; ++i) {
    if (digits[i] < '0' || digits[i] > '9') return 0;
    size = 10 * size + digits[i] - '0';
  }
  size += kLyrics2Digits + markBytes;
  return Stands(window, end - size, kLyricsBegin) ? size : 0;
}

std::int64_t Lyrics1Behind(ByteWindow& window, std::int64_t end) {
  const int markBytes = static_cast<int>(kLyrics1End.size());
  if (!Stands(window, end - markBytes, kLyrics1End)) return 0;
  const std::int64_t first =
      std::max<std::int64_t>(0, end - kLyrics1Bytes - markBytes - kLyricsBegin.size());
  const unsigned char* text = window.Look(first, static_cast<int>(end - first));
  if (!text) return 0;
  const std::string_view view(reinterpret_cast<const char*>(text),
                              static_cast<std::size_t>(end - first));
  const std::size_t at = view.rfind(kLyricsBegin);
  return at == std::string_view::npos ? 0 : static_cast<std::int64_t>(view.size() - at);
}

std::int64_t Id3v1InFront(ByteWindow& window, std::int64_t offset) {
  return Stands(window, offset, "TAG") ? kId3v1Bytes : 0;
}

using TagBytes = std::int64_t (*)(ByteWindow& window, std::int64_t offset);
constexpr TagBytes kInFront[] = {Id3v2Bytes, ApeInFront, Id3v1InFront};
constexpr TagBytes kBehind[] = {Id3v1Behind, ApeBehind, Lyrics2Behind, Lyrics1Behind, Id3v2Behind};

// No tagger writes more; a file of nothing but tags must not be walked for ever.
constexpr int kMostTags = 32;

}  // namespace

std::int64_t SkipTagsInFront(ByteWindow& window, std::int64_t offset) {
  for (int tags = 0; tags < kMostTags; ++tags) {
    const std::int64_t before = offset;
    for (const TagBytes bytesOf : kInFront) {
      const std::int64_t bytes = bytesOf(window, offset);
      if (offset + bytes <= window.End()) offset += bytes;
    }
    if (offset == before) break;
  }
  return offset;
}

std::int64_t FindTagsBehind(ByteWindow& window, std::int64_t begin) {
  std::int64_t end = window.End();
  for (int tags = 0; tags < kMostTags; ++tags) {
    const std::int64_t before = end;
    for (const TagBytes bytesOf : kBehind) {
      const std::int64_t bytes = bytesOf(window, end);
      if (end - bytes >= begin) end -= bytes;
    }
    if (end == before) break;
  }
  return end;
}

}  // namespace kwo
