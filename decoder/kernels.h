#pragma once

namespace kwo {

constexpr int kGranuleSlots = 18;  ///< samples of a subband in a granule
constexpr int kSubbandLines = 18;  ///< spectral lines of a subband in a granule

/// How a granule's lines become samples, by its window.
enum BlockType : int { BLOCK_NORMAL = 0, BLOCK_START = 1, BLOCK_SHORT = 2, BLOCK_STOP = 3 };

/// The last transform results of one channel, a row per output of the cosine transform and in each
/// row one value per time slot: 16 old ones, then those of the frame under way.
struct SynthesisHistory {
  static constexpr int kOldSlots = 16;
  static constexpr int kRowLength = kOldSlots + 40;
  double rows[32][kRowLength];
};

/// The weights of the windowed sum, laid out for `DecoderKernels::synthesize`: 16 for the front
/// sample of row r, 16 for its mirror.  Even entries belong to the values of the slots 0, 2, 4, ...
/// back from row R + r, odd ones to those of the slots 1, 3, 5, ... back from row R - r.
struct SynthesisWeights {
  double front[17][16];
  double rear[17][16];
};

/// The decoder's inner loops, compiled for several instruction sets.  All give the same results up
/// to rounding.  Values are stored as 32-bit floats; products and sums are carried in double.
struct DecoderKernels {
  /// values[i] *= factor.
  void (*scaleLines)(float* values, int count, double factor);

  /// values[i] *= gains[i].
  void (*applyGains)(float* values, const float* gains, int count);

  /// left = (right + left) * sqrt(1/2), right = (left - right) * sqrt(1/2).
  void (*midSide)(float* left, float* right, int count);

  /// Alias reduction at the subband boundaries 1 to `boundaries`, with eight butterflies each.
  void (*reduceAliases)(float* values, int boundaries, const float* cs, const float* ca);

  /// The inverse transform, window and overlap-add of eight neighbouring subbands: 8 x 18 `lines`
  /// in, 18 rows of eight samples out, each row 32 floats behind the one before.  `overlap` has the
  /// form of `out`.  Odd subbands come out negated in odd rows.
  void (*imdct)(float* out, const float* lines, float* overlap, int blockType);

  /// The windowed synthesis of 36 slots of 32 subbands at full (`decimation` 0), half (1) or
  /// quarter rate (2): 36 x (32 >> decimation) samples into `pcm`.
  void (*synthesize)(float* pcm, const float* subbands, SynthesisHistory& history,
                     const SynthesisWeights& weights, const double* secants, int decimation);
};

/// The kernels for this machine.
const DecoderKernels& Kernels();

/// All kernels that this machine can run, the plain ones first; ends with null.
const DecoderKernels* const* AllKernels();

}  // namespace kwo
