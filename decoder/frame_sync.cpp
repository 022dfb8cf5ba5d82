// The road from the compressed file to a frame header: input buffer, sync words, the first header
// and the length header.

#include <algorithm>
#include <cstring>

#include "decoder/bit_reader.h"
#include "decoder/header_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

constexpr int kLongestFrame = 2048;
constexpr int kFirstSearch = 32768;

int BigEndian32(const unsigned char* bytes) {
  return static_cast<int>(static_cast<unsigned>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 |
                          bytes[3]);
}

bool IsSync(const unsigned char* bytes) {
  return bytes[0] == 0xFF && bytes[1] >= 0xE0;
}

// The row of kBitRates for a header's second byte, or -1 if the header is not one of ours.
int RateRow(const unsigned char* header) {
  const int version = kVersionMap[header[1] >> 3 & 3];
  const int layer = 3 - (header[1] >> 1 & 3);
  if (version == kReservedVersion || layer == 3) return -1;
  if (version == 2 && layer != 2) return -1;
  return layer + (version != 0 ? 3 : 0);
}

bool IsFirstHeader(const unsigned char* header) {
  if (!IsSync(header) || header[1] == 0xFF) return false;
  const int row = RateRow(header);
  return row >= 0 && kSampleRates[header[2] >> 2 & 3] != 0 && kBitRates[row][header[2] >> 4] != 0;
}

}  // namespace

int MpegDecoder::GetBits(int count) {
  if (count == 0) return 0;
  const std::uint64_t bits = PeekBits(bitBase, *bitCursor);
  *bitCursor += count;
  return static_cast<int>(bits >> (64 - count));
}

void MpegDecoder::CopyFrameBytes(unsigned char* destination, int count) {
  std::memcpy(destination, bitBase + *bitCursor / 8, static_cast<std::size_t>(count));
  *bitCursor += 8 * count;
}

void MpegDecoder::ResetInput() {
  inputBytes = inputBitPosition = 0;
  endOfInput = 0;
}

// Keeps a whole frame ahead of the reader for as long as the file has one: the layers read without
// looking at the buffer's end, and a frame that the file cuts off reads on in zeros.
void MpegDecoder::RefillInput() {
  inputBitPosition = std::min(inputBitPosition, inputBytes * 8);
  const int dropped = inputBitPosition / 8;
  if (inputBytes - dropped > refillThreshold) return;
  inputBytes -= dropped;
  inputBitPosition &= 7;
  std::memmove(inputBuffer, inputBuffer + dropped, static_cast<std::size_t>(inputBytes));
  while (source->Control(CTL_READ_AT_END) == 0 && inputBytes < kLongestFrame) {
    const int delivered = source->Read(inputBuffer + inputBytes, kInputCapacity - inputBytes);
    if (delivered == 0) break;
    inputBytes += delivered;
  }
  std::memset(inputBuffer + inputBytes, 0, static_cast<std::size_t>(kInputCapacity - inputBytes));
}

// Leaves the position on the first bit behind the 11 sync bits.
int MpegDecoder::FindSync() {
  inputBitPosition = (inputBitPosition + 7) & ~7;
  int at;
  do {
    RefillInput();
    if (inputBytes < 4) return 0;
    at = inputBitPosition / 8;
    while (inputBytes - at >= 2 && !IsSync(inputBuffer + at)) ++at;
    // A run of 0xFF bytes resolves to its last member.
    while (inputBytes - at >= 2 && IsSync(inputBuffer + at)) ++at;
    inputBitPosition = at * 8;
  } while (at == inputBytes);
  inputBitPosition += 3;
  RefillInput();
  return 1;
}

void MpegDecoder::ReadHeaderFields() {
  bitBase = inputBuffer;
  bitCursor = &inputBitPosition;
  versionIndex = kVersionMap[GetBits(2)];
  layerIndex = 3 - GetBits(2);
  crcPresent = GetBits(1) == 0;
  bitRateIndex = GetBits(4);
  sampleRateIndex = GetBits(2);
  paddingBit = GetBits(1);
  GetBits(1);
  mode = GetBits(2);
  modeExtension = GetBits(2);
  GetBits(4);
}

int MpegDecoder::ReadFrameHeader(int first) {
  while (FindSync()) {
    ReadHeaderFields();
    const int channelClass = mode == 1 ? 0 : mode;
    if (first) {
      refVersion = versionIndex;
      refLayer = layerIndex;
      refSampleRateIndex = sampleRateIndex;
      refMode = channelClass;
    }
    if (versionIndex == refVersion && layerIndex == refLayer && bitRateIndex != 0 &&
        bitRateIndex != 15 && sampleRateIndex == refSampleRateIndex && channelClass == refMode) {
      if (crcPresent) GetBits(16);
      return 1;
    }
    // Back into the second header byte: the search goes on at the third.
    inputBitPosition -= 20;
  }
  bitRateIndex = 0;
  return 0;
}

int MpegDecoder::FindFirstHeader(int* bitRate) {
  unsigned char block[kFirstSearch];
  source->Seek(0);
  const int available = source->Read(block, kFirstSearch);
  int at = 0;
  while (at + 4 <= available && !IsFirstHeader(block + at)) ++at;
  streamInfo = StreamInfo();
  hasXingHeader = 0;
  if (at + 4 > available) {
    source->Seek(0);
    return 0;
  }
  source->Seek(at);
  const unsigned char* header = block + at;
  const int version = kVersionMap[header[1] >> 3 & 3];
  streamInfo.mpegVersion = header[1] & 8 ? 1 : 2;
  streamInfo.layerNumber = 4 - (header[1] >> 1 & 3);
  streamInfo.bitRate = kBitRates[RateRow(header)][header[2] >> 4] * 1000;
  streamInfo.channelCount = header[3] >> 6 == 3 ? 1 : 2;
  streamInfo.sampleRateHz = kSampleRates[header[2] >> 2 & 3] >> version;
  hasXingHeader = ParseXingHeader(header, available - at);
  *bitRate = streamInfo.bitRate;
  return 1;
}

int MpegDecoder::ParseXingHeader(const unsigned char* header, int available) {
  xing.xingFlags = 0;
  const int headerId = header[1] >> 3 & 1;
  const bool single = header[3] >> 6 == 3;
  const int offset = headerId ? (single ? 21 : 36) : (single ? 13 : 21);
  const unsigned char* at = header + offset;
  const unsigned char* end = header + available;
  if (end - at < 8 || std::memcmp(at, "Xing", 4) != 0) return 0;
  static constexpr int kRates[] = {44100, 48000, 32000, 99999};
  const int rate = kRates[header[2] >> 2 & 3];
  xing.headerId = headerId;
  xing.sampleRateField = headerId ? rate : rate / 2;
  xing.vbrScale = -1;
  const int present = BigEndian32(at + 4);
  at += 8;
  // A field that the block cuts off counts as absent.
  auto take = [&](int flag, int size) -> const unsigned char* {
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
  return 1;
}

}  // namespace kwo
