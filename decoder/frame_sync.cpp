// The road from the compressed file to a frame header: input buffer, sync words, the first header
// and the length header.

#include <algorithm>
#include <cstring>

#include "decoder/frame_header.h"
#include "decoder/header_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

constexpr int kLongestFrame = 2048;
constexpr int kFirstSearch = 32768;

bool IsSync(const unsigned char* bytes) {
  return bytes[0] == 0xFF && bytes[1] >= 0xE0;
}

bool IsFirstHeader(const unsigned char* bytes, FrameHeader& header) {
  return ParseFrameHeader(bytes, header) && !header.FreeFormat();
}

}  // namespace

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
    const int channelClass = ChannelClass(mode);
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
  FrameHeader header;
  int at = 0;
  while (at + FrameHeader::kBytes <= available && !IsFirstHeader(block + at, header)) ++at;
  streamInfo = StreamInfo();
  hasXingHeader = 0;
  if (at + FrameHeader::kBytes > available) {
    source->Seek(0);
    return 0;
  }
  source->Seek(at);
  streamInfo.mpegVersion = header.Lsf() ? 2 : 1;
  streamInfo.layerNumber = header.layerIndex + 1;
  streamInfo.bitRate = header.BitRate();
  streamInfo.channelCount = header.Channels();
  streamInfo.sampleRateHz = header.SampleRate();
  hasXingHeader = ParseXingHeader(block + at, available - at, xing) && xing.variableRate;
  *bitRate = streamInfo.bitRate;
  return 1;
}

}  // namespace kwo
