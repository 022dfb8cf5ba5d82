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
  input_.inputBytes = input_.inputBitPosition = 0;
  input_.endOfInput = 0;
}

// Keeps a whole frame ahead of the reader for as long as the file has one: the layers read without
// looking at the buffer's end, and a frame that the file cuts off reads on in zeros.
void MpegDecoder::RefillInput() {
  input_.inputBitPosition = std::min(input_.inputBitPosition, input_.inputBytes * 8);
  const int dropped = input_.inputBitPosition / 8;
  if (input_.inputBytes - dropped > input_.refillThreshold) return;
  input_.inputBytes -= dropped;
  input_.inputBitPosition &= 7;
  std::memmove(inputBuffer, inputBuffer + dropped, static_cast<std::size_t>(input_.inputBytes));
  while (input_.source->Control(CTL_READ_AT_END) == 0 && input_.inputBytes < kLongestFrame) {
    const int delivered =
        input_.source->Read(inputBuffer + input_.inputBytes, kInputCapacity - input_.inputBytes);
    if (delivered == 0) break;
    input_.inputBytes += delivered;
  }
  std::memset(inputBuffer + input_.inputBytes, 0,
              static_cast<std::size_t>(kInputCapacity - input_.inputBytes));
}

// Leaves the position on the first bit behind the 11 sync bits.
int MpegDecoder::FindSync() {
  input_.inputBitPosition = (input_.inputBitPosition + 7) & ~7;
  int at;
  do {
    RefillInput();
    if (input_.inputBytes < 4) return 0;
    at = input_.inputBitPosition / 8;
    while (input_.inputBytes - at >= 2 && !IsSync(inputBuffer + at)) ++at;
    // A run of 0xFF bytes resolves to its last member.
    while (input_.inputBytes - at >= 2 && IsSync(inputBuffer + at)) ++at;
    input_.inputBitPosition = at * 8;
  } while (at == input_.inputBytes);
  input_.inputBitPosition += 3;
  RefillInput();
  return 1;
}

void MpegDecoder::ReadHeaderFields() {
  bits_.bitBase = inputBuffer;
  bits_.bitCursor = &input_.inputBitPosition;
  frame_.versionIndex = kVersionMap[GetBits(2)];
  frame_.layerIndex = 3 - GetBits(2);
  frame_.crcPresent = GetBits(1) == 0;
  frame_.bitRateIndex = GetBits(4);
  frame_.sampleRateIndex = GetBits(2);
  frame_.paddingBit = GetBits(1);
  GetBits(1);
  frame_.mode = GetBits(2);
  frame_.modeExtension = GetBits(2);
  GetBits(4);
}

int MpegDecoder::ReadFrameHeader(int first) {
  while (FindSync()) {
    ReadHeaderFields();
    const int channelClass = ChannelClass(frame_.mode);
    if (first) {
      first_.refVersion = frame_.versionIndex;
      first_.refLayer = frame_.layerIndex;
      first_.refSampleRateIndex = frame_.sampleRateIndex;
      first_.refMode = channelClass;
    }
    if (frame_.versionIndex == first_.refVersion && frame_.layerIndex == first_.refLayer &&
        frame_.bitRateIndex != 0 && frame_.bitRateIndex != 15 &&
        frame_.sampleRateIndex == first_.refSampleRateIndex && channelClass == first_.refMode) {
      if (frame_.crcPresent) GetBits(16);
      return 1;
    }
    // Back into the second header byte: the search goes on at the third.
    input_.inputBitPosition -= 20;
  }
  frame_.bitRateIndex = 0;
  return 0;
}

int MpegDecoder::FindFirstHeader(int* bitRate) {
  unsigned char block[kFirstSearch];
  input_.source->Seek(0);
  const int available = input_.source->Read(block, kFirstSearch);
  FrameHeader header;
  int at = 0;
  while (at + FrameHeader::kBytes <= available && !IsFirstHeader(block + at, header)) ++at;
  streamInfo = StreamInfo();
  hasXingHeader = 0;
  if (at + FrameHeader::kBytes > available) {
    input_.source->Seek(0);
    return 0;
  }
  input_.source->Seek(at);
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
