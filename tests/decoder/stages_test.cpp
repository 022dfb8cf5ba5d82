// Stages of the decoder against a direct computation in double precision.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <set>

#include "decoder/huffman_lookup.h"
#include "tests/decoder/decoder_probe.h"

namespace kwo {
#ifdef KWO_X86_KERNELS
namespace kernels_eight_lanes {
extern const DecoderKernels kernels;
}
#endif
namespace {

constexpr double kPi = std::numbers::pi;

double Prototype(double n) {
  const double c[8] = {0.5,
                       -std::sqrt(0.9999277960573325),
                       std::sqrt(0.9924951124314516),
                       -std::sqrt(0.8832327678591261),
                       std::sqrt(0.5),
                       -0.341712207,
                       0.0866307542,
                       -0.00849729031};
  double sum = 0;
  for (int j = 0; j < 8; ++j) sum += c[j] * std::cos(2 * kPi * j * n / 512);
  return 8192 * sum;
}

std::vector<float> RandomFloats(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> distribution(-1, 1);
  std::vector<float> values(count);
  for (auto& value : values) value = distribution(random);
  return values;
}

TEST(Synthesis, ImpulseResponseIsTheWindowedCosineAtAllRates) {
  EXPECT_NEAR(37519, Prototype(256), 1);
  for (int decimation = 0; decimation < 3; ++decimation) {
    const int m = 1 << decimation;
    for (int band = 0; band < kSubbands / m; ++band) {
      auto decoder = std::make_unique<MpegDecoder>();
      DecoderProbe probe(*decoder);
      probe.SetUpSynthesis(1, 0, decimation);
      probe.Subbands(0)[band] = 1.0f;
      float pcm[kFrameSamples];
      probe.Synthesize(pcm);
      for (int t = 0; t < kFrameSamples / m; ++t) {
        const double expected =
            t * m < 512 ? -Prototype(t * m) * std::cos((2 * band + 1) * (t * m + 16) * kPi / 64)
                        : 0.0;
        ASSERT_NEAR(expected, pcm[t], 0.02) << decimation << ' ' << band << ' ' << t;
      }
    }
  }
}

TEST(Kernels, AllGiveTheSame) {
  const auto subbands = RandomFloats(kFrameSlots * kSubbands, 3), lines = RandomFloats(kLines, 11);
  const auto turns = RandomFloats(8, 6), sines = RandomFloats(8, 5);
  std::vector<double> secants;
  for (const float value : RandomFloats(32, 5)) secants.push_back(value);
  auto weights = std::make_unique<SynthesisWeights>();
  for (auto& row : weights->front) std::fill(std::begin(row), std::end(row), 0.25f);
  for (auto& row : weights->rear) std::fill(std::begin(row), std::end(row), -0.5f);
  std::vector<const DecoderKernels*> all;
  for (auto kernels = AllKernels(); *kernels; ++kernels) all.push_back(*kernels);
#ifdef KWO_X86_KERNELS
  // The source of eight lanes by the instructions of four: few machines have those of eight.
  if (all.size() > 1) all.push_back(&kernels_eight_lanes::kernels);
#endif
  std::vector<float> first;
  for (const DecoderKernels* kernels : all) {
    auto history = std::make_unique<SynthesisHistory>();
    std::vector<float> given(3 * kFrameSamples);
    for (int decimation : {0, 1, 2})
      kernels->synthesize(given.data() + decimation * kFrameSamples, subbands.data(), *history,
                          *weights, secants.data(), decimation);
    std::vector<float> left = lines, right = RandomFloats(kLines, 12);
    kernels->scaleLines(left.data(), kLines - 3, 1.25);
    kernels->applyGains(left.data(), right.data(), kLines - 5);
    kernels->midSide(left.data(), right.data(), kLines - 7);
    kernels->reduceAliases(left.data(), 30, turns.data(), sines.data());
    for (const auto* side : {&left, &right}) given.insert(given.end(), side->begin(), side->end());
    float overlap[18][kSubbands] = {}, bands[18][kSubbands];
    for (int blockType : {0, 1, 2, 3}) {
      kernels->imdct(bands[0], lines.data(), overlap[0], blockType);
      for (const auto& slot : bands) given.insert(given.end(), slot, slot + 8);
    }
    if (first.empty()) first = given;
    for (std::size_t i = 0; i < given.size(); ++i) ASSERT_NEAR(first[i], given[i], 2e-5f) << i;
  }
}

// The walk bit by bit that the lookup stands for.
int WalkTree(const HuffmanTree& tree, std::uint64_t window, int& length) {
  const std::int16_t* entry = tree.entries;
  length = 0;
  while (*entry < 0) {
    const bool one = window >> (63 - length++) & 1;
    entry += one ? 1 - *entry : 1;
  }
  return *entry;
}

TEST(Huffman, EveryTreeIsCompleteAndItsLookupGivesTheWalk) {
  std::mt19937_64 random(2);
  for (int table = 0; table < 34; ++table) {
    const HuffmanTree& tree = kHuffmanTrees[table];
    std::set<int> leaves;
    for (std::size_t i = 0; i < tree.size; ++i)
      if (tree.entries[i] >= 0) leaves.insert(tree.entries[i]);
    const std::size_t values = (tree.size + 1) / 2;
    EXPECT_EQ(values, leaves.size()) << "each leaf once, table " << table;
    for (int i = 0; i < 100000; ++i) {
      const std::uint64_t window = random() & (i % 2 ? ~std::uint64_t{0} : random() & random());
      int walked, found;
      const int expected = WalkTree(tree, window, walked);
      ASSERT_EQ(expected, GetHuffmanLookup(table).Find(window, found));
      ASSERT_EQ(walked, found);
      if (table >= 32) {
        const auto quad = GetQuadLookup(table).entries[window >> 54];
        int pattern = 0, bits = walked;
        for (int value = 8; value > 0; value /= 2)
          pattern = pattern * 4 + (expected & value ? 1 + int(window << bits++ >> 63) : 0);
        ASSERT_EQ(std::pair(bits, pattern), std::pair(int{quad.bits}, int{quad.pattern}));
        continue;
      }
      const PairLookup& pairs = GetPairLookup(table);
      PairLookup::Entry pair = pairs.entries[window >> 54];
      if (pair.codeBits == PairLookup::kFurther) pair = pairs.Next(pair, window);
      ASSERT_EQ(expected, pair.pair);
      const bool first = expected >> 4, second = expected & 15;
      const bool escaped = tree.linbits && (expected >> 4 == 15 || (expected & 15) == 15);
      ASSERT_EQ(escaped, pair.codeBits == PairLookup::kEscaped);
      ASSERT_EQ(walked + (escaped ? 0 : first + second), pair.bits);
      ASSERT_EQ(4 * first + 8 * second, pair.signs);
    }
  }
}

// Synthesises one frame of random subbands and gives it as floats.
std::vector<float> SynthesizeRandom(DecoderProbe& probe, int channels) {
  for (int channel = 0; channel < channels; ++channel) {
    const auto values = RandomFloats(kFrameSlots * kSubbands, 7u + static_cast<unsigned>(channel));
    std::copy(values.begin(), values.end(), probe.Subbands(channel));
  }
  std::vector<float> pcm(2 * kFrameSamples);
  probe.Synthesize(pcm.data());
  return pcm;
}

TEST(Synthesis, BandGainsFoldToTheRate) {
  float gains[32];
  std::fill_n(gains, 32, 1.0f);
  gains[0] = 3.0f;
  for (int decimation = 0; decimation < 3; ++decimation) {
    auto decoder = std::make_unique<MpegDecoder>();
    DecoderProbe probe(*decoder);
    const auto synthesized = [&](bool changed) {
      probe.SetUpSynthesis(1, 0, decimation);
      if (changed) decoder->Control(CTL_SUBBAND_GAINS, gains);
      probe.Subbands(0)[0] = 1.0f;
      std::vector<float> pcm(kFrameSamples);
      probe.Synthesize(pcm.data());
      return pcm;
    };
    const auto plain = synthesized(false), changed = synthesized(true);
    for (std::size_t i = 0; i < plain.size() >> decimation; ++i)
      ASSERT_NEAR((1.0 + 2.0 / (1 << decimation)) * plain[i], changed[i], 0.02);
  }
}

TEST(Synthesis, ChannelsMixAsTheirMatrixSays) {
  constexpr float kNeutral[] = {1, -0.0f, 1, 0, 1, 1, 0.5f, 0.5f, 1};
  constexpr float kCrossed[] = {0, 1, 2, 0.5f, 0, 3, 0.25f, 0.5f, 4};
  const struct {
    int channels, outputs;
    const float* matrix;
    int wide;
    double left[2], right[2];  // shares of both channels in either side
  } kRows[] = {
      {2, 0, nullptr, 0, {1, 0}, {0, 1}},
      {2, 1, nullptr, 0, {0.5, 0.5}, {}},
      {2, -2, nullptr, 0, {0.5, 0.5}, {0.5, 0.5}},
      {1, 2, nullptr, 0, {1, 0}, {1, 0}},
      {2, 0, kNeutral, 0, {1, 0}, {0, 1}},
      {2, 0, kCrossed, 0, {0, 1}, {0.5, 0}},
      {1, 2, kCrossed, 0, {4 * 2, 0}, {4 * 3, 0}},  // its own factor, and one for either side
      {2, 0, nullptr, 1, {-1, 0}, {0, 1}},
      {2, 1, nullptr, 1, {0.5, 0.5}, {}},
      {1, 1, nullptr, 1, {1, 0}, {}},
      {2, 0, kCrossed, 1, {0, -1}, {0.5, 0}},
  };
  std::vector<float> plain;
  for (const auto& row : kRows) {
    const auto decoder = std::make_unique<MpegDecoder>();
    DecoderProbe probe(*decoder);
    probe.SetUpSynthesis(row.channels, row.outputs, 0);
    if (row.matrix) decoder->Control(CTL_OUTPUT_MATRIX, const_cast<float*>(row.matrix));
    EXPECT_EQ(row.matrix == kCrossed, probe.MatrixOn());
    for (int wide : {1, 0, row.wide, row.wide}) decoder->SetWideStereo(wide);
    const std::vector<float> mixed = SynthesizeRandom(probe, row.channels);
    if (plain.empty()) plain = mixed;
    const std::size_t sides = probe.OutputChannels() == 1 ? 1 : 2;
    for (std::size_t i = 0; i < sides * kFrameSamples; ++i) {
      const double* share = i % sides == 0 ? row.left : row.right;
      const std::size_t at = i / sides * 2;
      ASSERT_NEAR(share[0] * plain[at] + share[1] * plain[at + 1], mixed[i], 0.2)
          << &row - kRows << ' ' << i;
    }
  }
}

// The standard's 36 windowed values of one block, 2.4.3.4.10.
std::vector<double> StandardImdct(const double* lines, int blockType) {
  std::vector<double> result(36);
  if (blockType == 2) {
    for (int window = 0; window < 3; ++window) {
      for (int i = 0; i < 12; ++i) {
        double sum = 0;
        for (int k = 0; k < 6; ++k)
          sum += lines[window + 3 * k] * std::cos(kPi / 24 * (2 * i + 7) * (2 * k + 1));
        result[static_cast<std::size_t>(6 + 6 * window + i)] +=
            sum * std::sin(kPi / 12 * (i + 0.5));
      }
    }
    return result;
  }
  for (int i = 0; i < 36; ++i) {
    double window = std::sin(kPi / 36 * (i + 0.5));
    if (blockType == 1 && i >= 18)
      window = i < 24 ? 1.0 : i < 30 ? std::sin(kPi / 12 * (i - 18 + 0.5)) : 0.0;
    if (blockType == 3 && i < 18)
      window = i < 6 ? 0.0 : i < 12 ? std::sin(kPi / 12 * (i - 6 + 0.5)) : 1.0;
    double sum = 0;
    for (int k = 0; k < 18; ++k) sum += lines[k] * std::cos(kPi / 72 * (2 * i + 19) * (2 * k + 1));
    result[static_cast<std::size_t>(i)] = sum * window;
  }
  return result;
}

GranuleInfo PlainGranule(int channel = 0) {
  GranuleInfo record{};
  record.channel = channel;
  record.intensityScale = 2;
  record.globalGain = 210;
  return record;
}

TEST(Huffman, ValuesThatRunBeyondTheirPartAreDropped) {
  auto decoder = std::make_unique<MpegDecoder>();
  DecoderProbe probe(*decoder);
  probe.SetUpLayer3(0, 0, 3, 0);
  // In the second table of quads four zeros stand for four ones, and the four signs follow.
  const std::vector<unsigned char> data(DecoderProbe::kReservoir, 0x0F);
  GranuleInfo record = PlainGranule();
  record.count1Table = 33;
  for (record.part23End = 0; record.part23End < 1200; ++record.part23End) {
    float values[kLines];
    const int lines = probe.Huffman(data.data(), record, values);
    const int whole = std::min(record.part23End / 8 * 4, kLines);
    ASSERT_GE(lines, whole);
    for (int i = 0; i < kLines; ++i)
      ASSERT_EQ(i < whole ? -1.0f : 0.0f, values[i]) << record.part23End << ' ' << i;
  }
}

TEST(Stereo, ShortBlocksTakeAPositionForEachWindow) {
  for (const bool mixed : {false, true}) {
    auto decoder = std::make_unique<MpegDecoder>();
    DecoderProbe probe(*decoder);
    probe.SetUpLayer3(0, 0, 1, 1);
    std::fill_n(probe.Lines(0), kLines, 1.0f);
    std::fill_n(probe.Lines(1), kLines, 0.0f);
    const short* edges = kShortBands[0];
    probe.Lines(1)[edges[5] + 1] = 0.5f;  // window 1 reaches into band 5
    probe.SetActive(kLines, kLines);
    GranuleInfo record = PlainGranule(1);
    record.blockType = 2;
    record.mixedBlock = mixed;
    int store[39];
    for (int i = 0; i < 39; ++i) store[i] = i % 7;
    probe.Stereo(record, store);
    // In a mixed block, 8 positions of long bands come first, and what stands there is plain as
    // soon as a short band has values.
    const int first = mixed ? 3 : 0, longBands = mixed ? 8 : 0;
    for (int line = 0; line < edges[first]; ++line) ASSERT_EQ(1.0f, probe.Lines(0)[line]);
    for (int band = first; band < 13; ++band) {
      for (int w = 0; w < 3; ++w) {
        const int line = edges[band] + w + 3;
        const int position = store[longBands + 3 * (std::min(band, 11) - first) + w];
        const double t = std::tan(position * kPi / 12);
        const bool plain = w == 1 && band <= 5;
        const double expected = plain ? 1.0 : position == 6 ? 1.0 : t / (1 + t);
        ASSERT_NEAR(expected, probe.Lines(0)[line], 1e-6) << mixed << ' ' << band << ' ' << w;
      }
    }
  }
}

TEST(Hybrid, AliasReductionAndMixedWindowsFollowTheBlockType) {
  for (const int round : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
    const int blockType = round % 4, mixed = round / 4 % 2;
    const bool crystal = round == 8;
    auto decoder = std::make_unique<MpegDecoder>();
    DecoderProbe probe(*decoder);
    probe.SetUpLayer3(0, 0, 0, 0);
    decoder->SetCrystalizer(crystal);
    const auto lines = RandomFloats(kLines, 21);
    std::copy(lines.begin(), lines.end(), probe.Lines(0));
    probe.SetActive(kLines, 0);
    GranuleInfo record = PlainGranule();
    record.blockType = blockType;
    record.mixedBlock = mixed;
    probe.Hybrid(record, 0);
    std::vector<double> x(lines.begin(), lines.end());
    const double c[8] = {-0.6, -0.535, -0.33, -0.185, -0.095, -0.041, -0.0142, -0.0037};
    const int bands = blockType != 2 ? 32 : mixed ? 2 : 0;
    for (int boundary = 1; boundary < bands; ++boundary) {
      for (int i = 0; i < 8; ++i) {
        double& u = x[static_cast<std::size_t>(18 * boundary - 1 - i)];
        double& d = x[static_cast<std::size_t>(18 * boundary + i)];
        const double cs = (crystal ? 1.38 : 1) / std::sqrt(1 + c[i] * c[i]), ca = cs * c[i];
        const double oldU = u;
        u = u * cs - d * ca;
        d = d * cs + oldU * ca;
      }
    }
    for (int band = 0; band < 32; ++band) {
      const auto expected = StandardImdct(x.data() + 18 * band, mixed && band < 2 ? 0 : blockType);
      for (int slot = 0; slot < 18; ++slot)
        ASSERT_NEAR(expected[static_cast<std::size_t>(slot)] * (band & slot & 1 ? -1 : 1),
                    probe.Subbands(0)[32 * slot + band], 3e-5)
            << round << ' ' << band << ' ' << slot;
    }
  }
  MpegDecoder().SetCrystalizer(0);
}

TEST(Effects, EnhancerBuildsItsEchoOverTheUpperLines) {
  const double weights[3][4] = {{}, {0.5, 0.2, 0, 0}, {0.75, 0.5, 0.25, 0.125}};
  for (int value : {1, 2}) {
    auto decoder = std::make_unique<MpegDecoder>();
    DecoderProbe probe(*decoder);
    probe.SetUpLayer3(0, 0, 0, 0);
    decoder->SetEnhancer(value);
    for (int granule = 0, first = 0; granule < 12; ++granule) {
      if (granule == 8) {
        decoder->SetEnhancer(value);  // any change begins the echo afresh
        first = granule;
      }
      for (int channel = 0; channel < 2; ++channel)
        std::fill_n(probe.Lines(channel), kLines, static_cast<float>(granule + 1 + channel));
      probe.Enhance();
      for (int channel = 0; channel < 2; ++channel) {
        double expected = granule + 1 + channel;
        for (int echo = 0; echo < 4; ++echo)
          if (granule - first > echo) expected += weights[value][echo] * (granule - echo + channel);
        EXPECT_EQ(static_cast<float>(granule + 1 + channel), probe.Lines(channel)[98]);
        EXPECT_NEAR(expected, probe.Lines(channel)[99], 1e-4);
        EXPECT_NEAR(expected, probe.Lines(channel)[575], 1e-4);
      }
    }
  }
}

TEST(Effects, VocalReducerTakesTheMiddleOutOfItsLines) {
  const auto decoder = std::make_unique<MpegDecoder>();
  DecoderProbe probe(*decoder);
  for (const int channels : {2, 1}) {  // a single channel has nothing to take out
    probe.SetUpLayer3(0, 0, channels == 2 ? 0 : 3, 0);
    std::fill_n(probe.Lines(0), kLines, 3.0f);
    std::fill_n(probe.Lines(1), kLines, 1.0f);
    probe.ReduceVocals();
    for (int line = 0; line < kLines; ++line) {
      const bool taken = channels == 2 && line >= 15 && line <= 251;
      ASSERT_EQ(taken ? 2.0f : 3.0f, probe.Lines(0)[line]) << line;
      ASSERT_EQ(taken ? -2.0f : 1.0f, probe.Lines(1)[line]) << line;
    }
  }
}

}  // namespace
}  // namespace kwo
