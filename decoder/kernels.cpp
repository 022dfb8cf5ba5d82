// Compiled once for each instruction set; KWO_KERNELS names the namespace of this compilation.
// Nothing from another header is instantiated here but plain arithmetic, since the linker keeps one
// copy of an inline function and it must not be one with instructions that a machine lacks.

#include "decoder/kernels.h"

#include "decoder/imdct_tables.h"
#include "decoder/lanes.h"

namespace kwo {
inline namespace KWO_KERNELS {

extern const DecoderKernels kernels;

namespace {

constexpr int kRow = 32;  // floats from one time slot to the next

Lanes LoadDoubles(const double* from) {
  return LoadVector<Lanes>(from);
}

Lanes LoadFloats(const float* from) {
  return Widened(LoadVector<FloatLanes>(from));
}

void StoreFloats(const Lanes& lanes, float* to) {
  StoreVector(Rounded(lanes), to);
}

void ScaleLines(float* values, int count, double factor) {
  for (int i = 0; i < count; ++i) values[i] = static_cast<float>(values[i] * factor);
}

void ApplyGains(float* values, const float* gains, int count) {
  for (int i = 0; i < count; ++i) values[i] *= gains[i];
}

void MidSide(float* left, float* right, int count) {
  const double factor = kMsFactor;
  for (int i = 0; i < count; ++i) {
    const double l = left[i], r = right[i];
    left[i] = static_cast<float>((r + l) * factor);
    right[i] = static_cast<float>((l - r) * factor);
  }
}

void ReduceAliases(float* values, int boundaries, const float* cs, const float* ca) {
  constexpr int kParts = 8 / kLanes;
  Lanes cosines[kParts], sines[kParts];
  for (int part = 0; part < kParts; ++part) {
    cosines[part] = LoadFloats(cs + kLanes * part);
    sines[part] = LoadFloats(ca + kLanes * part);
  }
  for (int boundary = 1; boundary <= boundaries; ++boundary) {
    for (int part = 0; part < kParts; ++part) {
      float* up = values + kSubbandLines * boundary - kLanes * (part + 1);
      float* down = values + kSubbandLines * boundary + kLanes * part;
      const Lanes u = Widened(Reversed(LoadVector<FloatLanes>(up))), d = LoadFloats(down);
      StoreVector(Reversed(Rounded(u * cosines[part] - d * sines[part])), up);
      StoreFloats(d * cosines[part] + u * sines[part], down);
    }
  }
}

// e[k] = x[0] + sum of x[2j] cos(j (2k + 1) pi / 18) for k = 0 to 8: sums over even and odd j, of
// which the second half of the results takes the difference.
inline __attribute__((always_inline)) void CosineTransform9(const Lanes* x, Lanes* e) {
  const double* c = kCosines9;
  const Lanes a0 = x[0], a1 = x[2], a2 = x[4], a3 = x[6], a4 = x[8];
  const Lanes a5 = x[10], a6 = x[12], a7 = x[14], a8 = x[16];
  const Lanes base = a0 + c[6] * a6;
  const Lanes even[4] = {
      base + c[2] * a2 + c[4] * a4 + c[8] * a8,
      a0 + c[6] * (a2 - a4 - a8) - a6,
      base - c[8] * a2 - c[2] * a4 + c[4] * a8,
      base - c[4] * a2 + c[8] * a4 - c[2] * a8,
  };
  const Lanes odd[4] = {
      c[1] * a1 + c[3] * a3 + c[5] * a5 + c[7] * a7,
      c[3] * (a1 - a5 - a7),
      c[5] * a1 - c[3] * a3 - c[7] * a5 + c[1] * a7,
      c[7] * a1 - c[3] * a3 + c[1] * a5 - c[5] * a7,
  };
  for (int k = 0; k < 4; ++k) {
    e[k] = even[k] + odd[k];
    e[8 - k] = even[k] - odd[k];
  }
  e[4] = a0 - a2 + a4 - a6 + a8;
}

// The 18 values of a long block before the last, window-shaping stage.
void TransformLong(Lanes* x, Lanes* t) {
  for (int i = 17; i > 0; --i) x[i] += x[i - 1];
  for (int i = 17; i > 1; i -= 2) x[i] += x[i - 2];
  Lanes e[9], o[9];
  CosineTransform9(x, e);
  CosineTransform9(x + 1, o);
  for (int i = 0; i < 9; ++i) {
    const Lanes w = o[i] * double{kTableA[i]};
    t[i] = (w + e[i]) * double{kTableB[i]};
    t[17 - i] = (w - e[i]) * double{kTableB[17 - i]};
  }
}

// The six values of one window of a short block, from every third of the 18 lines.
void TransformShort(const Lanes* lines, Lanes* u) {
  Lanes x[6];
  for (int i = 0; i < 6; ++i) x[i] = lines[3 * i];
  for (int i = 5; i > 0; --i) x[i] += x[i - 1];
  x[5] += x[3];
  x[3] += x[1];
  const double c = kCosines9[3];
  for (int part = 0; part < 2; ++part) {
    const Lanes middle = x[part] + 0.5 * x[4 + part];
    const Lanes side = c * x[2 + part];
    const Lanes third = x[part] - x[4 + part];
    x[part] = middle + side;
    x[2 + part] = third;
    x[4 + part] = middle - side;
  }
  for (int i = 0; i < 3; ++i) {
    const Lanes w = x[2 * i + 1] * double{kTableC[i]};
    u[i] = (w + x[2 * i]) * double{kTableD[i]};
    u[5 - i] = (w - x[2 * i]) * double{kTableD[5 - i]};
  }
}

// First half of the windowed block, which completes the overlap, and its second half, the new one.
void WindowNormalHead(const Lanes* t, Lanes* out) {
  for (int i = 0; i < 9; ++i) {
    out[i] = out[i] - t[9 + i];
    out[17 - i] += t[9 + i] * double{kTableE[i]};
  }
}

void WindowStopHead(const Lanes* t, Lanes* out) {
  for (int i = 0; i < 6; ++i) out[17 - i] += t[9 + i] * double{kTableF[i]};
  for (int j = 0; j < 3; ++j) {
    out[6 + j] = out[6 + j] - t[15 + j] * double{kTableH[2 - j]};
    out[11 - j] += t[15 + j] * double{kTableG[j]};
  }
}

void WindowNormalTail(const Lanes* t, Lanes* next) {
  for (int i = 0; i < 9; ++i) {
    next[i] = t[8 - i] * double{kTableE[i]};
    next[9 + i] = t[i];
  }
}

void WindowStartTail(const Lanes* t, Lanes* next) {
  for (int i = 0; i < 6; ++i) next[i] = t[8 - i] * double{kTableF[i]};
  for (int j = 0; j < 3; ++j) {
    next[6 + j] = t[2 - j] * double{kTableG[j]};
    next[9 + j] = t[j] * double{kTableH[j]};
  }
  for (int i = 12; i < kGranuleSlots; ++i) next[i] = Lanes{};
}

void WindowShort(const Lanes* u, Lanes* out, Lanes* next) {
  for (int j = 0; j < 3; ++j) {
    const double k = kTableK[j];
    out[6 + j] = out[6 + j] - u[3 + j];
    out[11 - j] += u[3 + j] * k;
    out[12 + j] += u[2 - j] * k - u[9 + j];
    out[17 - j] += u[9 + j] * k + u[2 - j];
    next[j] = u[8 - j] * k - u[15 + j];
    next[5 - j] = u[15 + j] * k + u[8 - j];
    next[6 + j] = u[14 - j] * k;
    next[9 + j] = u[12 + j];
  }
  for (int i = 12; i < kGranuleSlots; ++i) next[i] = Lanes{};
}

void ImdctLanes(float* out, const float* lines, float* overlap, int blockType) {
  Lanes x[kSubbandLines], result[kGranuleSlots], next[kGranuleSlots];
  // The last four columns begin among those before.
  for (int i = 0; i < 16; i += 4) LoadColumns(lines + i, kSubbandLines, x + i);
  LoadColumns(lines + 14, kSubbandLines, x + 14);
  for (int i = 0; i < kGranuleSlots; ++i) result[i] = LoadFloats(overlap + kRow * i);
  if (blockType == BLOCK_SHORT) {
    Lanes u[kGranuleSlots];
    for (int window = 0; window < 3; ++window) TransformShort(x + window, u + 6 * window);
    WindowShort(u, result, next);
  } else {
    Lanes t[kGranuleSlots];
    TransformLong(x, t);
    blockType == BLOCK_STOP ? WindowStopHead(t, result) : WindowNormalHead(t, result);
    blockType == BLOCK_START ? WindowStartTail(t, next) : WindowNormalTail(t, next);
  }
  Lanes oddRow;
  for (int lane = 0; lane < kLanes; ++lane) oddRow[lane] = lane % 2 ? -1.0 : 1.0;
  for (int i = 0; i < kGranuleSlots; ++i) {
    StoreFloats(i % 2 ? result[i] * oddRow : result[i], out + kRow * i);
    StoreFloats(next[i], overlap + kRow * i);
  }
}

void Imdct(float* out, const float* lines, float* overlap, int blockType) {
  for (int band = 0; band < 8; band += kLanes)
    ImdctLanes(out + band, lines + kSubbandLines * band, overlap + band, blockType);
}

// y[k] = sum of x[n] cos((2n + 1) k pi / 2N) without a factor, by halving; x is used up.
template <int N>
inline __attribute__((always_inline)) void CosineTransform(Lanes* x, Lanes* y, int stride,
                                                           const double* secants) {
  if constexpr (N == 1) {
    y[0] = x[0];
  } else {
    constexpr int kHalf = N / 2;
    Lanes a[kHalf], b[kHalf];
    for (int i = 0; i < kHalf; ++i) {
      a[i] = x[i] + x[N - 1 - i];
      b[i] = (x[i] - x[N - 1 - i]) * secants[kHalf + i];
    }
    CosineTransform<kHalf>(a, y, 2 * stride, secants);
    CosineTransform<kHalf>(b, y + stride, 2 * stride, secants);
    for (int k = 0; k < kHalf - 1; ++k) y[(2 * k + 1) * stride] += y[(2 * k + 3) * stride];
  }
}

// One batch of slots: R + R transform results go into the history's rows.
template <int R>
void TransformSlots(const float* subbands, SynthesisHistory& history, int slot,
                    const double* secants) {
  Lanes x[2 * R], y[2 * R];
  for (int band = 0; band < 2 * R; band += 4)
    LoadColumns(subbands + kRow * slot + band, kRow, x + band);
  CosineTransform<2 * R>(x, y, 1, secants);
  for (int row = 0; row < 2 * R; ++row)
    StoreVector(Widened(Rounded(y[row])), history.rows[row] + SynthesisHistory::kOldSlots + slot);
}

// So many batches of slots are summed side by side, so that a weight is loaded once for all.
constexpr int kTogether = kLanes == 8 ? 5 : 3;

// Where the lanes do not divide the slots, the last batch does some a second time.
constexpr int kSlots = 36;
constexpr int BatchAt(int slot) {
  return slot < kSlots - kLanes ? slot : kSlots - kLanes;
}

// The windowed sums of one row at some batches of slots: what the slots from `first` on, two apart,
// have in a row of the history.
inline __attribute__((always_inline)) void AddProducts(const double* values, const int* slots,
                                                       const double* weights, int first,
                                                       Lanes* sums) {
  for (int back = first; back < 16; back += 2)
    for (int batch = 0; batch < kTogether; ++batch)
      sums[batch] += LoadDoubles(values + slots[batch] - back) * weights[back];
}

inline __attribute__((always_inline)) void AddTwoProducts(const double* values, const int* slots,
                                                          const double* weights,
                                                          const double* mirrored, int first,
                                                          Lanes* sums, Lanes* mirroredSums) {
  for (int back = first; back < 16; back += 2) {
    for (int batch = 0; batch < kTogether; ++batch) {
      const Lanes value = LoadDoubles(values + slots[batch] - back);
      sums[batch] += value * weights[back];
      mirroredSums[batch] += value * mirrored[back];
    }
  }
}

// `samples` gets 2R rows: the sums of the rows 0 to R, then those of their mirrors.
template <int R>
void SumWindow(const SynthesisHistory& history, const SynthesisWeights& weights, const int* slots,
               FloatLanes (*samples)[2 * R]) {
  const auto rowAt = [&](int row) { return history.rows[row] + SynthesisHistory::kOldSlots; };
  const auto store = [&](int row, const Lanes* sums) {
    for (int batch = 0; batch < kTogether; ++batch) samples[batch][row] = Rounded(sums[batch]);
  };
  Lanes lowest[kTogether] = {}, highest[kTogether] = {};
  AddProducts(rowAt(R), slots, weights.front[0], 0, lowest);
  AddProducts(rowAt(R), slots, weights.front[0], 1, lowest);
  store(0, lowest);
  AddProducts(rowAt(0), slots, weights.front[R], 1, highest);
  store(R, highest);
  for (int row = 1; row < R; ++row) {
    Lanes front[kTogether] = {}, rear[kTogether] = {};
    AddTwoProducts(rowAt(R + row), slots, weights.front[row], weights.rear[row], 0, front, rear);
    AddTwoProducts(rowAt(R - row), slots, weights.front[row], weights.rear[row], 1, front, rear);
    store(row, front);
    store(2 * R - row, rear);
  }
}

template <int R>
void SynthesizeRows(float* pcm, const float* subbands, SynthesisHistory& history,
                    const SynthesisWeights& weights, const double* secants) {
  for (int slot = 0; slot < kSlots; slot += kLanes)
    TransformSlots<R>(subbands, history, BatchAt(slot), secants);
  for (int begin = 0; begin < kSlots; begin += kTogether * kLanes) {
    int slots[kTogether];
    for (int batch = 0; batch < kTogether; ++batch) slots[batch] = BatchAt(begin + kLanes * batch);
    FloatLanes samples[kTogether][2 * R];
    SumWindow<R>(history, weights, slots, samples);
    for (int batch = 0; batch < kTogether; ++batch)
      for (int row = 0; row < 2 * R; row += 4)
        StoreColumns(samples[batch] + row, pcm + 2 * R * slots[batch] + row, 2 * R);
  }
  for (int row = 0; row < 2 * R; ++row)
    std::memmove(history.rows[row], history.rows[row] + kSlots,
                 SynthesisHistory::kOldSlots * sizeof(double));
}

void Synthesize(float* pcm, const float* subbands, SynthesisHistory& history,
                const SynthesisWeights& weights, const double* secants, int decimation) {
  if (decimation == 0) {
    SynthesizeRows<16>(pcm, subbands, history, weights, secants);
  } else if (decimation == 1) {
    SynthesizeRows<8>(pcm, subbands, history, weights, secants);
  } else {
    SynthesizeRows<4>(pcm, subbands, history, weights, secants);
  }
}

}  // namespace

const DecoderKernels kernels = {ScaleLines, ApplyGains, MidSide, ReduceAliases, Imdct, Synthesize};

}  // namespace KWO_KERNELS
}  // namespace kwo
