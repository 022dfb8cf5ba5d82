#include "decoder/input_stream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace kwo {
namespace {

constexpr int kSkipPiece = 256;
constexpr int kInlineBuffer = 8;

// Replaces a buffer by one of `size` bytes; small ones use `inlineStorage`.  Gives its capacity.
int ReplaceBuffer(unsigned char*& buffer, unsigned char* inlineStorage, int size) {
  if (buffer != inlineStorage) delete[] buffer;
  buffer = nullptr;
  if (size <= 0) return 0;
  buffer = size <= kInlineBuffer ? inlineStorage : new (std::nothrow) unsigned char[size];
  return buffer ? size : 0;
}

int Exchange(int& field, int value) {
  const int old = field;
  field = value;
  return old;
}

}  // namespace

InputStream::~InputStream() {
  Shutdown();
}

void InputStream::BeginStream(int streamFlags, std::int64_t streamPosition,
                              std::int64_t streamLength) {
  position = streamPosition;
  length = streamLength;
  flags = streamFlags | STREAM_OPEN;
  readBuffer = writeBuffer = nullptr;
  readCapacity = readValid = readOffset = bufferDirty = 0;
  bufferBase = 0;
  writeCapacity = writePending = writeCount = 0;
  readBitOrder = readBitOffset = readBitByte = 0;
  writeBitOrder = writeBitCount = writeBitHeld = padBits = 0;
  readShort = writeShort = 0;
  teeStream = nullptr;
  fillByte = -1;
}

void InputStream::CloseBase() {
  FinishBits();
  SyncBuffer(SYNC_LOSE);
  readValid = 0;
  SetReadBuffer(0);
  if (Seekable()) {
    RawSeek(position);
  } else {
    FlushWriteBuffer(SYNC_LOSE);
    SetWriteBuffer(0);
  }
}

int InputStream::Shutdown() {
  if (flags == 0) return 0;
  const int result = Close();
  if (result >= 0) {
    flags = 0;
    position = length = 0;
  }
  return result < 0 ? result : 0;
}

int InputStream::Close() {
  CloseBase();
  return 0;
}

int InputStream::RawRead(void*, int) {
  return 0;
}

int InputStream::RawPeek(void*, int) {
  return 0;
}

int InputStream::RawWrite(const void*, int) {
  return 0;
}

std::int64_t InputStream::RawSeek(std::int64_t) {
  return 0;
}

int InputStream::Read(void* buffer, int count) {
  if (!(flags & STREAM_READABLE) || count < 1) return 0;
  if (buffer) {
    const int delivered = ReadBuffered(buffer, count);
    if (teeStream) teeStream->Write(buffer, delivered);
    return delivered;
  }
  unsigned char scratch[kSkipPiece];
  int skipped = 0;
  while (skipped < count) {
    const int piece = std::min(count - skipped, kSkipPiece);
    const int delivered = ReadBuffered(scratch, piece);
    if (teeStream) teeStream->Write(scratch, delivered);
    skipped += delivered;
    if (delivered < kSkipPiece) break;
  }
  return skipped;
}

void InputStream::NoteShortRead(unsigned char* missing, int count) {
  readShort = 1;
  if (fillByte != -1) std::memset(missing, fillByte & 255, static_cast<std::size_t>(count));
}

int InputStream::ReadBuffered(void* destination, int count) {
  auto* bytes = static_cast<unsigned char*>(destination);
  if (!readBuffer) {
    const int delivered = RawRead(bytes, count);
    position += delivered;
    if (delivered < count) NoteShortRead(bytes + delivered, count - delivered);
    return delivered;
  }
  if (readValid - readOffset < count && readValid < readCapacity) {
    if (bufferDirty) RawSeek(bufferBase + readValid);
    readValid += RawRead(readBuffer + readValid, readCapacity - readValid);
  }
  const int take = std::min(count, readValid - readOffset);
  std::memcpy(bytes, readBuffer + readOffset, static_cast<std::size_t>(take));
  readOffset += take;
  position += take;
  if (take == count) return take;
  SyncBuffer(SYNC_KEEP);
  const int rest = count - take;
  const int delivered = readOffset == 0 ? RefillAndRead(bytes + take, rest) : 0;
  if (delivered < rest) NoteShortRead(bytes + take + delivered, rest - delivered);
  position += delivered;
  return take + delivered;
}

// Serves the rest of a read from an empty buffer, or past it when the buffer is no larger.
int InputStream::RefillAndRead(unsigned char* destination, int rest) {
  if (readCapacity <= rest) {
    const int delivered = RawRead(destination, rest);
    bufferBase += delivered;
    return delivered;
  }
  readValid = RawRead(readBuffer, readCapacity);
  const int delivered = std::min(rest, readValid);
  std::memcpy(destination, readBuffer, static_cast<std::size_t>(delivered));
  readOffset += delivered;
  return delivered;
}

int InputStream::Peek(void* buffer, int count) {
  if (!(flags & STREAM_READABLE) || count < 1) return 0;
  auto* bytes = static_cast<unsigned char*>(buffer);
  if (Seekable()) {
    const int delivered = ReadBuffered(bytes, count);
    SeekBy(-delivered);
    return delivered;
  }
  return PeekForward(bytes, count);
}

int InputStream::PeekForward(unsigned char* destination, int count) {
  if (!readBuffer) {
    const int delivered = RawPeek(destination, count);
    if (delivered < count) NoteShortRead(destination + delivered, count - delivered);
    return delivered;
  }
  if (readValid - readOffset < count) {
    readValid -= readOffset;
    std::memmove(readBuffer, readBuffer + readOffset, static_cast<std::size_t>(readValid));
    readOffset = 0;
    readValid += RawRead(readBuffer + readValid, readCapacity - readValid);
    if (readValid < count) {
      NoteShortRead(destination + readValid, count - readValid);
      count = readValid;
    }
  }
  std::memcpy(destination, readBuffer + readOffset, static_cast<std::size_t>(count));
  return count;
}

std::int64_t InputStream::Seek(std::int64_t target) {
  if (!Seekable() || target == position) return position;
  target = std::max<std::int64_t>(target, 0);
  if (!readBuffer) {
    position = RawSeek(target);
  } else if (target >= bufferBase && target < bufferBase + readValid) {
    readOffset = static_cast<int>(target - bufferBase);
    position = target;
  } else {
    SyncBuffer(SYNC_LOSE);
    position = bufferBase = RawSeek(std::min(target, length));
  }
  if (teeStream) teeStream->Seek(position);
  return position;
}

std::int64_t InputStream::SeekBy(std::int64_t delta) {
  return Seek(position + delta);
}

int InputStream::ReadByte() {
  unsigned char byte = 0;
  return Read(&byte, 1) == 1 ? byte : 0;
}

int InputStream::Write(const void* buffer, int count) {
  if (!(flags & STREAM_WRITABLE) || count < 1) return 0;
  auto* bytes = static_cast<const unsigned char*>(buffer);
  const int taken = Seekable() ? WriteSeekable(bytes, count) : WriteForward(bytes, count);
  if (taken < count) writeShort = 1;
  return taken;
}

// As much as fits behind `readOffset`; the bytes stay dirty until the buffer is synchronised.
int InputStream::CopyIntoBuffer(const unsigned char* bytes, int count) {
  const int fits = std::min(count, readCapacity - readOffset);
  std::memcpy(readBuffer + readOffset, bytes, static_cast<std::size_t>(fits));
  readOffset += fits;
  position += fits;
  readValid = std::max(readValid, readOffset);
  if (fits > 0) bufferDirty = 1;
  length = std::max(length, position);
  return fits;
}

int InputStream::WriteSeekable(const unsigned char* bytes, int count) {
  if (!readBuffer) {
    const int taken = RawWrite(bytes, count);
    position += taken;
    length = std::max(length, position);
    return taken;
  }
  int taken = 0;
  if (count < readCapacity) {
    if (count > readCapacity - readOffset && !bufferDirty) SyncBuffer(SYNC_KEEP);
    taken = CopyIntoBuffer(bytes, count);
    if (taken == count) return taken;
  }
  SyncBuffer(SYNC_KEEP);
  const int rest = count - taken;
  if (readOffset != 0 || rest < readCapacity) return taken + CopyIntoBuffer(bytes + taken, rest);
  const int direct = RawWrite(bytes + taken, rest);
  bufferBase += direct;
  position += direct;
  length = std::max(length, position);
  return taken + direct;
}

int InputStream::WriteForward(const unsigned char* bytes, int count) {
  if (!writeBuffer) {
    const int taken = RawWrite(bytes, count);
    writeCount += taken;
    return taken;
  }
  auto buffered = [this](const unsigned char* from, int wanted) {
    const int fits = std::min(wanted, writeCapacity - writePending);
    std::memcpy(writeBuffer + writePending, from, static_cast<std::size_t>(fits));
    writePending += fits;
    writeCount += fits;
    return fits;
  };
  int taken = buffered(bytes, count);
  if (taken == count) return taken;
  FlushWriteBuffer(SYNC_KEEP);
  if (writePending == 0 && count - taken > writeCapacity) {
    const int direct = RawWrite(bytes + taken, count - taken);
    writeCount += direct;
    return taken + direct;
  }
  return taken + buffered(bytes + taken, count - taken);
}

// Writes a dirty buffer back.  With SYNC_KEEP a short write keeps what is left; otherwise it is
// lost.
int InputStream::WriteBack(int mode) {
  RawSeek(bufferBase);
  const int written = RawWrite(readBuffer, readValid);
  if (written == readValid) {
    bufferDirty = 0;
    return 1;
  }
  if (mode == SYNC_KEEP) {
    std::memmove(readBuffer, readBuffer + written, static_cast<std::size_t>(readValid - written));
    readValid -= written;
    readOffset = std::max(readOffset - written, 0);
    bufferBase += written;
    return 0;
  }
  writeShort = 1;
  if (bufferBase + readValid >= length) {
    length = bufferBase + written;
    position = std::min(position, length);
  }
  bufferDirty = 0;
  return 0;
}

int InputStream::SyncBuffer(int mode) {
  int result = 1;
  if (bufferDirty) {
    result = WriteBack(mode);
    if (bufferDirty) return 0;
  }
  if (!Seekable()) {
    const int empty = readValid == 0;
    if (mode != SYNC_EMPTY) return empty;
    result = empty;
  } else if (readBuffer && bufferBase + readValid != position) {
    // The next transfer starts at the logical position, not behind the bytes read ahead.
    RawSeek(position);
  }
  bufferBase = position;
  readOffset = readValid = 0;
  return result;
}

int InputStream::FlushWriteBuffer(int mode) {
  if (Seekable()) return SyncBuffer(mode);
  if (writePending == 0) return 1;
  if (mode == SYNC_EMPTY) {
    writePending = 0;
    return 0;
  }
  const int written = RawWrite(writeBuffer, writePending);
  const int left = writePending - written;
  std::memmove(writeBuffer, writeBuffer + written, static_cast<std::size_t>(left));
  writePending = mode == SYNC_KEEP ? left : 0;
  return left == 0;
}

int InputStream::SetReadBuffer(int size) {
  SyncBuffer(SYNC_KEEP);
  if (bufferDirty || readValid > 0) return 0;
  readCapacity = ReplaceBuffer(readBuffer, readInline, size);
  readOffset = 0;
  bufferBase = position;
  return readCapacity == std::max(size, 0);
}

int InputStream::SetWriteBuffer(int size) {
  FlushWriteBuffer(SYNC_KEEP);
  if (writePending > 0) return 0;
  writeCapacity = ReplaceBuffer(writeBuffer, writeInline, size);
  return writeCapacity == std::max(size, 0);
}

void InputStream::SkipBits(int bits) {
  const int old = readBitOffset;
  const int sum = old + bits;
  readBitOffset = sum & 7;
  if (Seekable()) {
    SeekBy(sum >> 3);
    return;
  }
  const int bytes = (sum >> 3) + (old == 0 ? 1 : 0);
  if (bytes <= 0) return;
  if (bytes > 1) Read(nullptr, bytes - 1);
  if (readBitOffset != 0) readBitByte = ReadByte();
}

void InputStream::AlignBits() {
  SkipBits(-readBitOffset & 7);
}

int InputStream::WriteBits(unsigned value, int bits) {
  if (bits < 1 || bits > 32) return bits == 0;
  if (bits < 32) value &= (1u << bits) - 1;
  return Seekable() ? WriteBitsSeekable(value, bits) : WriteBitsForward(value, bits);
}

// Merges the bits into the bytes that they touch.
int InputStream::WriteBitsSeekable(unsigned value, int bits) {
  unsigned char bytes[5] = {};
  const int touched = (readBitOffset + bits + 7) / 8;
  const int oldFill = Exchange(fillByte, padBits & 255);
  Peek(bytes, touched);
  fillByte = oldFill;
  for (int i = 0; i < bits; ++i) {
    const int at = readBitOffset + i;
    const unsigned bit = readBitOrder ? value >> (bits - 1 - i) & 1 : value >> i & 1;
    const int shift = readBitOrder ? 7 - at % 8 : at % 8;
    bytes[at / 8] = static_cast<unsigned char>((bytes[at / 8] & ~(1 << shift)) | bit << shift);
  }
  const int written = Write(bytes, touched);
  readBitOffset = (readBitOffset + bits) & 7;
  if (readBitOffset != 0) SeekBy(-1);
  return written == touched;
}

int InputStream::WriteBitsForward(unsigned value, int bits) {
  int result = 1;
  for (int i = 0; i < bits; ++i) {
    const unsigned bit = writeBitOrder ? value >> (bits - 1 - i) & 1 : value >> i & 1;
    writeBitHeld |= static_cast<int>(bit << (writeBitOrder ? 7 - writeBitCount : writeBitCount));
    if (++writeBitCount < 8) continue;
    const auto byte = static_cast<unsigned char>(writeBitHeld);
    writeBitCount = writeBitHeld = 0;
    if (Write(&byte, 1) != 1) result = 0;
  }
  return result;
}

int InputStream::FinishBits() {
  if (Seekable()) {
    if (readBitOffset == 0) return 1;
    readBitOffset = 0;
    SeekBy(1);
    return 1;
  }
  if (writeBitCount == 0) return 1;
  return WriteBitsForward(static_cast<unsigned>(padBits), 8 - writeBitCount);
}

std::int64_t InputStream::Control(int code, void* pointer, int value) {
  switch (code) {
    case CTL_READ_POSITION:
      return position;
    case CTL_WRITE_POSITION:
      return Seekable() ? position : writeCount;
    case CTL_READ_AT_END:
      if (!(flags & STREAM_READABLE)) return 1;
      return Control(CTL_READ_BUFFERED) != 0 ? 0 : Control(CTL_POSITION_AT_END);
    case CTL_WRITE_AT_END:
      if (!(flags & STREAM_WRITABLE)) return 1;
      if (!Seekable()) return Control(CTL_WRITE_BLOCKED);
      return length <= position && !(flags & STREAM_RESIZABLE);
    case CTL_LENGTH:
      return length;
    case CTL_READ_SHORT:
      return readShort;
    case CTL_TAKE_READ_SHORT:
      return Exchange(readShort, 0);
    case CTL_WRITE_SHORT:
      return writeShort;
    case CTL_TAKE_WRITE_SHORT:
      return Exchange(writeShort, 0);
    case CTL_REMAINING:
    case CTL_REMAINING_TOO:
      return length - position;
    case CTL_SET_READ_BUFFER:
      return SetReadBuffer(value);
    case CTL_READ_BUFFER_SIZE:
      return readCapacity;
    case CTL_READ_BUFFERED:
      return readValid - readOffset;
    case CTL_SET_BUFFER:
      return Seekable() ? SetReadBuffer(value) : SetWriteBuffer(value);
    case CTL_BUFFER_SIZE:
      return Seekable() ? readCapacity : writeCapacity;
    case CTL_BUFFER_OFFSET:
      return readOffset;
    case CTL_SET_FILL:
      return Exchange(fillByte, value);
    case CTL_FILL:
      return fillByte;
    case CTL_SET_READ_BIT_ORDER:
      return Exchange(readBitOrder, value != 0);
    case CTL_READ_BIT_ORDER:
      return readBitOrder;
    case CTL_SET_WRITE_BIT_ORDER:
      return Exchange(Seekable() ? readBitOrder : writeBitOrder, value != 0);
    case CTL_WRITE_BIT_ORDER:
      return Seekable() ? readBitOrder : writeBitOrder;
    case CTL_SET_PAD_BITS:
      return Exchange(padBits, value != 0 ? -1 : 0);
    case CTL_PAD_BITS:
      return padBits;
    case CTL_SYNC:
    case CTL_SYNC + 1:
    case CTL_SYNC + 2:
      return SyncBuffer(code - CTL_SYNC);
    case CTL_FLUSH:
    case CTL_FLUSH + 1:
    case CTL_FLUSH + 2:
      return FlushWriteBuffer(code - CTL_FLUSH);
    case CTL_FINISH_READING:
      if (!(flags & STREAM_READABLE)) return 1;
      AlignBits();
      if (Control(CTL_SYNC + 2) == 0) return 0;
      if (!Seekable()) flags &= ~STREAM_READABLE;
      return 1;
    case CTL_FINISH_WRITING:
      if (!(flags & STREAM_WRITABLE)) return 1;
      if (FinishBits() == 0 || Control(CTL_FLUSH) == 0) return 0;
      flags &= ~STREAM_WRITABLE;
      return 1;
    case CTL_ABORT_WRITING:
      if (!(flags & STREAM_WRITABLE)) return 1;
      FinishBits();
      Control(CTL_FLUSH + 1);
      return 1;
    case CTL_POSITION_AT_END:
      return length <= position;
    case CTL_SET_TEE:
      teeStream = static_cast<InputStream*>(pointer);
      return 0;
    default:
      return 0;
  }
}

}  // namespace kwo
