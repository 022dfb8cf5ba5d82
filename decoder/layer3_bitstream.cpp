// Layer III from the frame's bytes to 576 values a granule and channel: ISO/IEC 11172-3 clauses
// 2.4.1.7 and 2.4.3.4.1 to 2.4.3.4.6, ISO/IEC 13818-3 for the lower sampling frequencies.

#include <algorithm>
#include <bit>
#include <cstring>

#include "decoder/bit_reader.h"
#include "decoder/header_tables.h"
#include "decoder/huffman_lookup.h"
#include "decoder/layer3_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

// The next bits of a buffer in a register.  Taking bits and refilling have no branch: which way one
// would go depends on the music, and each wrong guess costs as much as two values.
class BitWindow {
 public:
  BitWindow(const unsigned char* base, int cursor) : base_(base), next_(base + (cursor >> 3)) {
    Refill();
    Drop(cursor & 7);
  }

  // After this 56 bits at least are there: enough for four pairs of the table, or for one that is
  // left, which has 47 at most with its signs and linbits.
  void Refill() {
    window_ |= PeekBits(next_, 0) >> valid_;
    next_ += (63 - valid_) >> 3;
    valid_ |= 56;
  }
  std::uint64_t Top() const { return window_; }
  void Drop(int bits) {
    window_ <<= bits;
    valid_ -= bits;
  }
  int Take(int bits) {
    const int value = static_cast<int>(window_ >> 1 >> (63 - bits));
    Drop(bits);
    return value;
  }
  int Cursor() const { return static_cast<int>(next_ - base_) * 8 - valid_; }

 private:
  const unsigned char* base_;
  const unsigned char* next_;
  std::uint64_t window_ = 0;
  int valid_ = 0;
};

typedef double TwoDoubles __attribute__((vector_size(2 * sizeof(double))));
typedef float TwoFloats __attribute__((vector_size(2 * sizeof(float))));
typedef std::int32_t TwoWords __attribute__((vector_size(2 * sizeof(std::int32_t))));
typedef float FourFloats __attribute__((vector_size(4 * sizeof(float))));

// What the codes stand for.
struct CodedValues {
  TwoDoubles pairs[256];  // the magnitudes of both values to the power 4/3
  // By which values have a sign (PairLookup::Entry::signs) and by the two bits behind the code
  // word, of which a value without a sign takes none.
  TwoWords signs[16];
  FourFloats quads[256];  // by pattern
};

const CodedValues& GetCodedValues() {
  static const CodedValues values = [] {
    constexpr std::int32_t kSign = INT32_MIN;
    const float* pow43 = GetLayer3Tables().pow43;
    CodedValues built{};
    for (int pair = 0; pair < 256; ++pair)
      built.pairs[pair] = TwoDoubles{pow43[pair >> 4], pow43[pair & 15]};
    for (int i = 0; i < 16; ++i) {
      const bool first = i & 4, second = i & 8;
      const int ofFirst = i >> 1 & 1, ofSecond = first ? i & 1 : ofFirst;
      built.signs[i] = TwoWords{first && ofFirst ? kSign : 0, second && ofSecond ? kSign : 0};
    }
    constexpr float kOfPattern[4] = {0, 1, -1, 0};
    for (int i = 0; i < 256; ++i)
      built.quads[i] = FourFloats{kOfPattern[i >> 6], kOfPattern[i >> 4 & 3],
                                  kOfPattern[i >> 2 & 3], kOfPattern[i & 3]};
    return built;
  }();
  return values;
}

// One value of a pair with linbits, without a branch that the music would decide.
float TakeValue(BitWindow& bits, int value, int linbits, double factor) {
  value += bits.Take(value == 15 ? linbits : 0);
  const auto magnitude = static_cast<float>(GetLayer3Tables().pow43[value] * factor);
  const std::uint32_t coded = value != 0;
  const auto sign = static_cast<std::uint32_t>(bits.Top() >> 32) & coded << 31;
  bits.Drop(static_cast<int>(coded));
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(magnitude) | sign);
}

void StorePair(BitWindow& bits, const PairLookup::Entry& entry, const CodedValues& coded,
               double factor, float* out) {
  const std::uint64_t behind = bits.Top() << entry.codeBits;
  bits.Drop(entry.bits);
  const auto values = __builtin_convertvector(coded.pairs[entry.pair] * factor, TwoFloats);
  TwoWords words;
  std::memcpy(&words, &values, sizeof words);
  words |= coded.signs[entry.signs | behind >> 62];
  std::memcpy(out, &words, sizeof words);
}

// A pair that takes more bits than a quarter of the window.
void TakeLongPair(BitWindow& bits, const PairLookup& pairs, PairLookup::Entry entry,
                  const CodedValues& coded, double factor, float* out) {
  bits.Refill();
  if (entry.codeBits == PairLookup::kFurther) entry = pairs.Next(entry, bits.Top());
  if (entry.codeBits == PairLookup::kEscaped) {
    bits.Drop(entry.bits);
    out[0] = TakeValue(bits, entry.pair >> 4, pairs.linbits, factor);
    out[1] = TakeValue(bits, entry.pair & 15, pairs.linbits, factor);
  } else {
    StorePair(bits, entry, coded, factor, out);
  }
  bits.Refill();
}

inline __attribute__((always_inline)) void TakePair(BitWindow& bits, const PairLookup& pairs,
                                                    const CodedValues& coded, double factor,
                                                    float* out) {
  const PairLookup::Entry entry = pairs.entries[bits.Top() >> (64 - PairLookup::kIndexBits)];
  if (entry.codeBits >= PairLookup::kFurther) {
    TakeLongPair(bits, pairs, entry, coded, factor, out);
  } else {
    StorePair(bits, entry, coded, factor, out);
  }
}

// The lines from `i` to `end`, of which `factors` has one for each two.
void TakePairs(BitWindow& bits, const PairLookup& pairs, const double* factors, int i, int end,
               float* lines) {
  const CodedValues& coded = GetCodedValues();
  for (; i + 8 <= end; i += 8) {
    bits.Refill();
    for (int k = 0; k < 8; k += 2)
      TakePair(bits, pairs, coded, factors[(i + k) / 2], lines + i + k);
  }
  for (; i < end; i += 2) {
    bits.Refill();
    TakePair(bits, pairs, coded, factors[i / 2], lines + i);
  }
}

// Bit lengths and the partition group of a granule's scale factors.
struct ScaleFactorForm {
  int slen[4];
  int group;
};

ScaleFactorForm FormOf(int compress, bool lsf, bool intensityChannel) {
  const int c = compress;
  if (!lsf) return {{kSlen[0][c], kSlen[0][c], kSlen[1][c], kSlen[1][c]}, 6};
  if (intensityChannel) {
    if (c < 180) return {{c / 36, c % 36 / 6, c % 6, 0}, 3};
    const int d = c < 244 ? c - 180 : c - 244;
    if (c < 244) return {{d / 16, d / 4 % 4, d % 4, 0}, 4};
    return {{d / 3, d % 3, 0, 0}, 5};
  }
  if (c < 400) return {{c / 16 / 5, c / 16 % 5, c / 4 % 4, c % 4}, 0};
  const int d = c < 500 ? c - 400 : c - 500;
  if (c < 500) return {{d / 4 / 5, d / 4 % 5, d % 4, 0}, 1};
  return {{d / 3, d % 3, 0, 0}, 2};
}

}  // namespace

void MpegDecoder::InitLayer3() {
  const short* edges = kShortBands[first_.refVersion * 3 + first_.refSampleRateIndex];
  for (int band = 0; band < 13; ++band) {
    const int start = edges[band];
    const int width = (edges[band + 1] - start) / 3;
    for (int window = 0; window < 3; ++window) {
      for (int k = 0; k < width; ++k) {
        const int p = start + window * width + k;
        const int interleaved = start + 3 * k + window;
        layer3_.lineIndex[0][p] = static_cast<std::int16_t>(p);
        layer3_.lineIndex[1][p] = static_cast<std::int16_t>(interleaved);
        layer3_.lineIndex[2][p] = static_cast<std::int16_t>(band < 3 ? p : interleaved);
      }
    }
  }
  layer3_.mainDataBytes = 0;
  std::memset(mainData, 0, sizeof mainData);
  std::memset(layer3_.scaleFactors, 0, sizeof layer3_.scaleFactors);
  std::memset(overlap, 0, sizeof overlap);
}

void MpegDecoder::DecodeLayer3() {
  int granulesDone = 0;
  for (int frame = 0; frame < (first_.refVersion == MPEG_VERSION_1 ? 1 : 2); ++frame) {
    if (frame == 1) ReadFrameHeader(0);
    if (frame_.bitRateIndex == 0) {
      RingOut(frame);
      return;
    }
    GranuleInfo records[2][2];
    ReadSideInfo(records);
    for (int granule = 0; granule < (Lsf() ? 1 : 2); ++granule) {
      for (int channel = 0; channel < ChannelsNow(); ++channel) {
        const GranuleInfo& record = records[channel][granule];
        ReadScaleFactors(record, layer3_.scaleFactors[channel]);
        double factors[kLines / 2 + kPastEnd];
        FindFactors(record, layer3_.scaleFactors[channel], factors);
        layer3_.activeLines[channel] = ReadHuffmanData(record, factors, spectrum[channel]);
      }
      if (frame_.mode == MODE_JOINT_STEREO)
        StereoProcess(records[1][granule], layer3_.scaleFactors[1]);
      if (effects_.enhancerValue) EnhanceTreble();
      if (effects_.vocalOn) ReduceVocals();
      for (int channel = 0; channel < ChannelsNow(); ++channel)
        HybridSynthesis(records[channel][granule], channel, kGranuleSlots * granulesDone);
      ++granulesDone;
    }
  }
}

void MpegDecoder::ReadSideInfo(GranuleInfo (*records)[2]) {
  const int channels = ChannelsNow();
  const int granules = Lsf() ? 1 : 2;
  const int mainDataBegin = GetBits(Lsf() ? 8 : 9);
  GetBits(Lsf() ? (channels == 2 ? 2 : 1) : (channels == 2 ? 3 : 5));
  for (int granule = 0; granule < granules; ++granule) {
    for (int channel = 0; channel < channels; ++channel) {
      GranuleInfo& record = records[channel][granule];
      record.granule = granule;
      record.channel = channel;
      ReadScfsi(record);
    }
  }
  int running = 0;
  for (int granule = 0; granule < granules; ++granule)
    for (int channel = 0; channel < channels; ++channel)
      running = ReadGranuleInfo(records[channel][granule], running);
  FillReservoir(mainDataBegin);
}

void MpegDecoder::ReadScfsi(GranuleInfo& record) {
  for (int& flag : record.scfsi) flag = record.granule == 0 ? 0 : GetBits(1);
}

int MpegDecoder::ReadGranuleInfo(GranuleInfo& record, int running) {
  const short* longBands = kLongBands[BandRow()];
  record.part2Start = running;
  record.part23End = running + GetBits(12);
  // The field can ask for more lines than there are; what lies beyond is not decoded.
  record.bigValueLines = std::min(GetBits(9) * 2, kLines);
  record.globalGain = GetBits(8);
  record.intensityScale = 2;
  if (Lsf() && IntensityChannel(record.channel)) {
    record.scalefacCompress = GetBits(8);
    record.intensityScale = GetBits(1);
  } else {
    record.scalefacCompress = GetBits(Lsf() ? 9 : 4);
  }
  if (GetBits(1)) {
    record.blockType = GetBits(2);
    record.mixedBlock = GetBits(1);
    record.tableSelect[0] = GetBits(5);
    record.tableSelect[1] = GetBits(5);
    record.tableSelect[2] = 0;
    for (int& gain : record.subblockGain) gain = GetBits(3) * 4;
    record.region0End = record.blockType == BLOCK_SHORT ? kShortBands[BandRow()][3] : longBands[8];
    record.region1End = kLines;
  } else {
    record.blockType = record.mixedBlock = 0;
    for (int& table : record.tableSelect) table = GetBits(5);
    for (int& gain : record.subblockGain) gain = 0;
    const int region0Count = GetBits(4);
    const int region1Count = GetBits(3);
    record.region0End = longBands[std::min(region0Count + 1, 22)];
    record.region1End = longBands[std::min(region0Count + region1Count + 2, 22)];
  }
  record.region0End = std::min(record.region0End, record.bigValueLines);
  record.region1End = std::min(record.region1End, record.bigValueLines);
  record.preflag = Lsf() ? record.scalefacCompress >= 500 : GetBits(1);
  record.scalefacScale = GetBits(1);
  record.count1Table = GetBits(1) ? 33 : 32;
  if (record.blockType == BLOCK_SHORT)
    for (int& flag : record.scfsi) flag = 0;
  return record.part23End;
}

// Moves the old bytes that the frame refers to in front, copies the frame's own behind them, and
// turns the bit reader to them.  The input reader is left at the frame's computed end.
void MpegDecoder::FillReservoir(int mainDataBegin) {
  const int bitRate = kBitRates[frame_.layerIndex + (Lsf() ? 3 : 0)][frame_.bitRateIndex] * 1000;
  const int rate = kSampleRates[frame_.sampleRateIndex] >> frame_.versionIndex;
  const int sideBytes = Lsf() ? (ChannelsNow() == 2 ? 17 : 9) : (ChannelsNow() == 2 ? 32 : 17);
  const int payload = bitRate / 1000 * (Lsf() ? 72000 : 144000) / rate -
                      (frame_.crcPresent ? 2 : 0) + frame_.paddingBit - sideBytes - 4;
  layer3_.mainDataBytes = std::max(layer3_.mainDataBytes, mainDataBegin);
  std::memmove(mainData, mainData + layer3_.mainDataBytes - mainDataBegin,
               static_cast<std::size_t>(mainDataBegin));
  CopyFrameBytes(mainData + mainDataBegin, payload);
  layer3_.mainDataBytes = mainDataBegin + payload;
  bits_.bitBase = mainData;
  bits_.bitCursor = &layer3_.mainDataBit;
}

void MpegDecoder::ReadScaleFactors(const GranuleInfo& record, int* store) {
  *bits_.bitCursor = record.part2Start;
  const ScaleFactorForm form =
      FormOf(record.scalefacCompress, Lsf(), IntensityChannel(record.channel));
  const int blockKind = record.blockType != BLOCK_SHORT ? 0 : record.mixedBlock ? 2 : 1;
  const unsigned char* ends = kPartitions[form.group][blockKind];
  for (int part = 0; part < 4; ++part) {
    const int count = ends[part + 1] - ends[part];
    // A flag keeps what the granule before has read.
    if (!record.scfsi[part])
      for (int i = 0; i < count; ++i) store[i] = GetBits(form.slen[part]);
    store += count;
  }
  store[0] = store[1] = store[2] = 0;
}

// Fills all values, requantised, and gives how many lines from 0 on can be other than zero.
// `factors` has one for each two lines, in the order in which they are coded; `values` has room for
// the end of a last quad.
int MpegDecoder::ReadHuffmanData(const GranuleInfo& record, const double* factors, float* values) {
  float mixed[kLines + kPastEnd];
  float* lines = record.blockType == BLOCK_SHORT ? mixed : values;
  BitWindow bits(bits_.bitBase, *bits_.bitCursor);
  const int regionEnds[3] = {record.region0End, record.region1End, record.bigValueLines};
  int i = 0;
  for (int region = 0; region < 3; ++region) {
    TakePairs(bits, GetPairLookup(record.tableSelect[region]), factors, i, regionEnds[region],
              lines);
    i = std::max(i, regionEnds[region]);
  }
  const QuadLookup& quads = GetQuadLookup(record.count1Table);
  const CodedValues& coded = GetCodedValues();
  for (; bits.Cursor() < record.part23End && i < kLines; i += 4) {
    bits.Refill();
    const QuadLookup::Entry entry = quads.entries[bits.Top() >> (64 - QuadLookup::kIndexBits)];
    bits.Drop(entry.bits);
    const auto first = static_cast<float>(factors[i / 2]);
    const auto second = static_cast<float>(factors[i / 2 + 1]);
    const FourFloats four = coded.quads[entry.pattern] * FourFloats{first, first, second, second};
    std::memcpy(lines + i, &four, sizeof four);
  }
  // The last four values lie behind the part's end, or are big values that ran past it.
  if (bits.Cursor() > record.part23End) i -= 4;
  i = std::clamp(i, 0, kLines);
  *bits_.bitCursor = bits.Cursor();
  std::fill(lines + i, lines + kLines, 0.0f);
  return record.blockType == BLOCK_SHORT ? PlaceLines(record, lines, i, values) : i;
}

// Puts the lines of short blocks from the order in which they are coded into that of the spectrum.
// Those below the highest band that holds one of the first `count` are mixed with others.
int MpegDecoder::PlaceLines(const GranuleInfo& record, const float* lines, int count,
                            float* values) const {
  const std::int16_t* place = layer3_.lineIndex[record.mixedBlock ? 2 : 1];
  for (int i = 0; i < kLines; ++i) values[place[i]] = lines[i];
  const short* edges = kShortBands[BandRow()];
  int band = 0;
  while (edges[band] < count) ++band;
  return edges[band];
}

}  // namespace kwo
