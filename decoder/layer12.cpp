// Layers I and II: ISO/IEC 11172-3 clauses 2.4.1.5, 2.4.1.6, 2.4.3.2 and 2.4.3.3, ISO/IEC 13818-3
// for the lower sampling frequencies.

#include "decoder/layer12.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "decoder/bit_reader.h"
#include "decoder/header_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

// What each code word of three samples of so many levels holds, the codes beyond the last too.
template <int kLevels, int kBits>
constexpr auto GroupsOf() {
  std::array<FourFloats, std::size_t{1} << kBits> groups{};
  for (std::size_t i = 0; i < groups.size(); ++i) {
    float samples[3];
    int code = static_cast<int>(i);
    for (float& sample : samples) {
      sample = static_cast<float>(code % kLevels - kLevels / 2);
      code /= kLevels;
    }
    groups[i] = FourFloats{samples[0], samples[1], samples[2], 0};
  }
  return groups;
}

constexpr auto kGroups3 = GroupsOf<3, 5>();
constexpr auto kGroups5 = GroupsOf<5, 7>();
constexpr auto kGroups9 = GroupsOf<9, 10>();

constexpr QuantClass Plain(int bits) {
  return {nullptr, bits, (1 << (bits - 1)) - 1, static_cast<float>(2.0 / ((1 << bits) - 1))};
}

constexpr QuantClass k3 = {kGroups3.data(), 5, 0, static_cast<float>(2.0 / 3)};
constexpr QuantClass k5 = {kGroups5.data(), 7, 0, static_cast<float>(2.0 / 5)};
constexpr QuantClass k9 = {kGroups9.data(), 10, 0, static_cast<float>(2.0 / 9)};
constexpr QuantClass kPlain[17] = {{},        {},        {},        Plain(3),  Plain(4),  Plain(5),
                                   Plain(6),  Plain(7),  Plain(8),  Plain(9),  Plain(10), Plain(11),
                                   Plain(12), Plain(13), Plain(14), Plain(15), Plain(16)};

using ClassList = std::array<const QuantClass*, 16>;

// The class of each allocation value; the numbers of levels in the tables' own words.
constexpr ClassList kAllLevels = {  // 3, 7, 15, ... 65535
    nullptr,     &k3,         &kPlain[3],  &kPlain[4],  &kPlain[5],  &kPlain[6],
    &kPlain[7],  &kPlain[8],  &kPlain[9],  &kPlain[10], &kPlain[11], &kPlain[12],
    &kPlain[13], &kPlain[14], &kPlain[15], &kPlain[16]};
constexpr ClassList kGroupedFirst = {  // 3, 5, 7, 9, 15, ... 8191, 65535
    nullptr,     &k3,         &k5,         &kPlain[3], &k9,        &kPlain[4],
    &kPlain[5],  &kPlain[6],  &kPlain[7],  &kPlain[8], &kPlain[9], &kPlain[10],
    &kPlain[11], &kPlain[12], &kPlain[13], &kPlain[16]};
constexpr ClassList kThreeBits = {  // 3, 5, 7, 9, 15, 31, 65535
    nullptr, &k3, &k5, &kPlain[3], &k9, &kPlain[4], &kPlain[5], &kPlain[16]};
constexpr ClassList kTwoBits = {nullptr, &k3, &k5, &kPlain[16]};  // 3, 5, 65535
constexpr ClassList kLowRate = {                                  // 3, 5, 9, 15, ... 32767
    nullptr,     &k3,         &k5,         &k9,        &kPlain[4],  &kPlain[5],
    &kPlain[6],  &kPlain[7],  &kPlain[8],  &kPlain[9], &kPlain[10], &kPlain[11],
    &kPlain[12], &kPlain[13], &kPlain[14], &kPlain[15]};
constexpr ClassList kLsfLow = {  // 3, 5, 7, 9, 15, ... 16383
    nullptr,     &k3,         &k5,         &kPlain[3], &k9,        &kPlain[4],
    &kPlain[5],  &kPlain[6],  &kPlain[7],  &kPlain[8], &kPlain[9], &kPlain[10],
    &kPlain[11], &kPlain[12], &kPlain[13], &kPlain[14]};

struct Rows {
  SubbandAllocation rows[kSubbands] = {};
  // Subbands from `begin` to below `end`.
  void Set(int begin, int end, int bits, const ClassList& classes) {
    for (int band = begin; band < end; ++band) rows[band] = {bits, classes.data()};
  }
};

Rows HighRateRows() {
  Rows rows;
  rows.Set(0, 3, 4, kAllLevels);
  rows.Set(3, 11, 4, kGroupedFirst);
  rows.Set(11, 23, 3, kThreeBits);
  rows.Set(23, 30, 2, kTwoBits);
  return rows;
}

Rows LowRateRows() {
  Rows rows;
  rows.Set(0, 2, 4, kLowRate);
  rows.Set(2, 12, 3, kLowRate);
  return rows;
}

Rows LsfRows() {
  Rows rows;
  rows.Set(0, 4, 4, kLsfLow);
  rows.Set(4, 11, 3, kLowRate);
  rows.Set(11, 30, 2, kLowRate);
  return rows;
}

int SelectAllocation(int versionIndex, int ratePerChannel, int sampleRate) {
  if (versionIndex != MPEG_VERSION_1) return 4;
  if (ratePerChannel >= 56 && (sampleRate == 48000 || ratePerChannel <= 80)) return 0;
  if (sampleRate != 48000 && ratePerChannel >= 96) return 1;
  return sampleRate != 32000 && ratePerChannel <= 48 ? 2 : 3;
}

}  // namespace

const AllocationTable& GetAllocationTable(int selection) {
  static const Rows high = HighRateRows(), low = LowRateRows(), lsf = LsfRows();
  static const AllocationTable tables[5] = {
      {27, high.rows}, {30, high.rows}, {8, low.rows}, {12, low.rows}, {30, lsf.rows}};
  return tables[selection];
}

const float* GetScaleFactorTable() {
  static const auto table = [] {
    std::array<float, 64> built{};
    for (int i = 0; i < 63; ++i)
      built[static_cast<std::size_t>(i)] = static_cast<float>(std::exp2((3 - i) / 3.0));
    return built;
  }();
  return table.data();
}

int MpegDecoder::JointBound(int subbands) const {
  if (frame_.mode == MODE_SINGLE_CHANNEL) return 0;
  return frame_.mode == MODE_JOINT_STEREO ? std::min(frame_.modeExtension * 4 + 4, subbands)
                                          : subbands;
}

void MpegDecoder::DecodeLayer1() {
  constexpr int kSlots = kFrameSlots / 3;
  for (int frame = 0; frame < 3; ++frame) {
    if (frame > 0) ReadFrameHeader(0);
    auto* left = subbandSamples[0] + kSlots * frame;
    auto* right = subbandSamples[1] + kSlots * frame;
    if (frame_.bitRateIndex == 0) {
      std::memset(left, 0, kSlots * sizeof *left);
      std::memset(right, 0, kSlots * sizeof *right);
    } else {
      ReadLayer1Frame(left, right);
    }
  }
}

void MpegDecoder::ReadLayer1Frame(float (*left)[kSubbands], float (*right)[kSubbands]) {
  const int row = Lsf() ? 3 : 0;
  const int rate = kSampleRates[frame_.sampleRateIndex] >> frame_.versionIndex;
  const int end = (kBitRates[row][frame_.bitRateIndex] * 12000 / rate - 1) * 32 -
                  (frame_.crcPresent ? 16 : 0) + (frame_.paddingBit ? 32 : 0) + *bits_.bitCursor;
  const int channels = ChannelsNow();
  const int bound = JointBound(kSubbands);
  // In single channel the one set of samples is channel 0's own.
  auto sets = [&](int band) { return band < bound ? channels : 1; };
  for (int band = 0; band < kSubbands; ++band) {
    for (int channel = 0; channel < sets(band); ++channel)
      layer1_.layer1Alloc[channel][band] = GetBits(4);
    if (band >= bound) layer1_.layer1Alloc[1][band] = layer1_.layer1Alloc[0][band];
  }
  const float* scales = GetScaleFactorTable();
  for (int band = 0; band < kSubbands; ++band) {
    for (int channel = 0; channel < channels; ++channel) {
      const int alloc = layer1_.layer1Alloc[channel][band];
      if (alloc == 0) continue;
      const float step = static_cast<float>(2.0 / ((2 << alloc) - 1));
      layer1_.layer1Scale[channel][band] = step * scales[GetBits(6)];
    }
  }
  for (int slot = 0; slot < kFrameSlots / 3; ++slot) {
    for (int band = 0; band < kSubbands; ++band) {
      int sample = 0;
      for (int channel = 0; channel < channels; ++channel) {
        const int alloc = layer1_.layer1Alloc[channel][band];
        if (channel < sets(band)) sample = alloc ? GetBits(alloc + 1) - (1 << alloc) + 1 : 0;
        auto* out = channel == 0 ? left : right;
        out[slot][band] =
            alloc ? static_cast<float>(sample) * layer1_.layer1Scale[channel][band] : 0.0f;
      }
    }
  }
  *bits_.bitCursor = end;
}

void MpegDecoder::DecodeLayer2() {
  if (frame_.bitRateIndex == 0) {
    std::memset(subbandSamples, 0, sizeof subbandSamples);
    return;
  }
  const int rate = kSampleRates[frame_.sampleRateIndex] >> frame_.versionIndex;
  const int kbps = kBitRates[Lsf() ? 4 : 1][frame_.bitRateIndex];
  const int end = kbps * 144000 / rate * 8 - 32 - (frame_.crcPresent ? 16 : 0) +
                  (frame_.paddingBit ? 8 : 0) + *bits_.bitCursor;
  const int perChannel = kBitRates[1][frame_.bitRateIndex] / ChannelsNow();
  const AllocationTable& table = GetAllocationTable(
      SelectAllocation(frame_.versionIndex, perChannel, kSampleRates[frame_.sampleRateIndex]));
  const int bound = JointBound(table.subbands);
  ReadLayer2Allocation(table, bound);
  ReadLayer2Scales(table.subbands);
  std::memset(subbandSamples, 0, sizeof subbandSamples);
  CodedSubband coded[2 * kSubbands];
  const int count = ListCodedSubbands(table.subbands, bound, coded);
  for (int granule = 0; granule < 12; ++granule) ReadLayer2Granule(granule, coded, count);
  *bits_.bitCursor = end;
}

void MpegDecoder::ReadLayer2Allocation(const AllocationTable& table, int bound) {
  for (int band = 0; band < table.subbands; ++band) {
    const SubbandAllocation& row = table.rows[band];
    for (int channel = 0; channel < (band < bound ? ChannelsNow() : 1); ++channel)
      layer2_.layer2Alloc[channel][band] = row.classes[GetBits(row.bits)];
    if (band >= bound) layer2_.layer2Alloc[1][band] = layer2_.layer2Alloc[0][band];
  }
}

void MpegDecoder::ReadLayer2Scales(int subbands) {
  // Which of the codes read serves each of the three parts, by selection.
  static constexpr int kCodeOfPart[4][3] = {{0, 1, 2}, {0, 0, 1}, {0, 0, 0}, {0, 1, 1}};
  static constexpr int kCodes[4] = {3, 2, 1, 2};
  const int channels = ChannelsNow();
  for (int band = 0; band < subbands; ++band)
    for (int channel = 0; channel < channels; ++channel)
      if (layer2_.layer2Alloc[channel][band]) layer2_.layer2Scfsi[channel][band] = GetBits(2);
  const float* scales = GetScaleFactorTable();
  for (int band = 0; band < subbands; ++band) {
    for (int channel = 0; channel < channels; ++channel) {
      const QuantClass* quant = layer2_.layer2Alloc[channel][band];
      if (!quant) continue;
      const int selection = layer2_.layer2Scfsi[channel][band];
      int codes[3] = {};
      for (int i = 0; i < kCodes[selection]; ++i) codes[i] = GetBits(6);
      for (int part = 0; part < 3; ++part)
        layer2_.layer2Scale[channel][part][band] =
            scales[codes[kCodeOfPart[selection][part]]] * quant->step;
    }
  }
}

// The sets of samples that a granule holds, in their order.
int MpegDecoder::ListCodedSubbands(int subbands, int bound, CodedSubband* coded) const {
  int count = 0;
  for (int band = 0; band < subbands; ++band) {
    const bool shared = band >= bound;
    for (int channel = 0; channel < (shared ? 1 : ChannelsNow()); ++channel) {
      const QuantClass* quant = layer2_.layer2Alloc[channel][band];
      if (quant) coded[count++] = {quant, band, channel, shared ? ChannelsNow() - 1 : channel};
    }
  }
  return count;
}

// Three samples of each coded subband, into the time slots from 3 x `granule` on.
void MpegDecoder::ReadLayer2Granule(int granule, const CodedSubband* coded, int count) {
  const int part = granule / 4;
  int cursor = *bits_.bitCursor;
  for (const CodedSubband* set = coded; set < coded + count; ++set) {
    // The three take 48 bits at most.
    const std::uint64_t word = PeekBits(bits_.bitBase, cursor);
    const int bits = set->quant->bits;
    FourFloats samples;
    if (set->quant->groups) {
      samples = set->quant->groups[word >> (64 - bits)];
      cursor += bits;
    } else {
      const auto codes = static_cast<std::int64_t>(word >> (64 - 3 * bits));
      const auto mask = (std::int32_t{1} << bits) - 1;
      const FourWords words{static_cast<std::int32_t>(codes >> 2 * bits),
                            static_cast<std::int32_t>(codes >> bits) & mask,
                            static_cast<std::int32_t>(codes) & mask, 0};
      samples = __builtin_convertvector(words - set->quant->offset, FourFloats);
      cursor += 3 * bits;
    }
    for (int channel = set->channel; channel <= set->lastChannel; ++channel) {
      const FourFloats scaled = samples * layer2_.layer2Scale[channel][part][set->band];
      float* out = &subbandSamples[channel][3 * granule][set->band];
      for (int k = 0; k < 3; ++k) out[kSubbands * k] = scaled[k];
    }
  }
  *bits_.bitCursor = cursor;
}

}  // namespace kwo
