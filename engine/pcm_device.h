#pragma once

#include "base/shared.h"

/// The ring of buffers between the render thread and the wave output.  There is one device for the
/// process; its state is process-wide.  All three operations belong to the render thread.
namespace kwo::PcmDevice {

/// Opens the default device, closing an open one first.  1, or 0 if it is absent or busy.
int Open(int rate, unsigned short channels, unsigned short bits, int bufferBytes, int bufferCount);

/// Closes the device, which plays by itself what it was handed, and waits for nothing.
void Close();

/// Copies `bytes` into the ring and hands over every full buffer; sleeps while none is free.  Gives
/// the bytes taken: all of them, unless `wanted` is 0 and the device has stood still for a second,
/// as one does that was unplugged.
int Write(const void* data, int bytes, const Shared<int>& wanted);

}  // namespace kwo::PcmDevice
