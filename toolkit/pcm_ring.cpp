#include "toolkit/pcm_ring.h"

namespace kwo {
namespace {

KWO_MAY_TEAR void MoveValues(const std::int16_t* from, std::int16_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = from[i];
}

}  // namespace

void PcmRing::Write(const std::int16_t* data, int count) {
  const int write = ringWrite;
  if (write + count < kValues) {
    MoveValues(data, samples + write, count);
    ringWrite = write + count;
    return;
  }
  const int first = kValues - write;
  MoveValues(data, samples + write, first);
  MoveValues(data + first, samples, count - first);
  ringWrite = write + count - kValues;
}

int PcmRing::Read(std::int16_t* values) {
  const int read = ringRead, write = ringWrite;
  ringRead = write;
  if (read < write) {
    MoveValues(samples + read, values, write - read);
    return write - read;
  }
  MoveValues(samples + read, values, kValues - read);
  MoveValues(samples, values + kValues - read, write);
  return kValues - read + write;
}

}  // namespace kwo
