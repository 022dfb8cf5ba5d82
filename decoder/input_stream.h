#pragma once

#include <cstdint>

namespace kwo {

/// Stream flags; zero means not open.
enum StreamFlag : int {
  STREAM_OPEN = 1,
  STREAM_READABLE = 2,
  STREAM_WRITABLE = 4,
  STREAM_SEEKABLE = 8,    ///< the stream has positions; one buffer serves reading and writing
  STREAM_RESIZABLE = 16,  ///< writing at the end extends the stream
};

/// Numbered requests of `InputStream::Control`.
enum ControlCode : int {
  CTL_READ_POSITION = 0,
  CTL_WRITE_POSITION = 1,
  CTL_READ_AT_END = 2,
  CTL_WRITE_AT_END = 3,
  CTL_LENGTH = 4,
  CTL_READ_SHORT = 9,
  CTL_TAKE_READ_SHORT = 10,
  CTL_WRITE_SHORT = 11,
  CTL_TAKE_WRITE_SHORT = 12,
  CTL_REMAINING = 13,
  CTL_REMAINING_TOO = 14,
  CTL_SET_READ_BUFFER = 15,
  CTL_READ_BUFFER_SIZE = 16,
  CTL_READ_BUFFERED = 17,
  CTL_SET_BUFFER = 18,
  CTL_BUFFER_SIZE = 19,
  CTL_BUFFER_OFFSET = 20,
  CTL_SET_FILL = 21,
  CTL_FILL = 22,
  CTL_SET_READ_BIT_ORDER = 23,
  CTL_READ_BIT_ORDER = 24,
  CTL_SET_WRITE_BIT_ORDER = 25,
  CTL_WRITE_BIT_ORDER = 26,
  CTL_SET_PAD_BITS = 27,
  CTL_PAD_BITS = 28,
  CTL_SYNC = 29,   ///< 29, 30, 31: by SyncMode
  CTL_FLUSH = 32,  ///< 32, 33, 34: by SyncMode
  CTL_SET_TRUNCATE_ON_CLOSE = 36,
  CTL_TRUNCATE_ON_CLOSE = 37,
  CTL_FINISH_READING = 42,
  CTL_FINISH_WRITING = 43,
  CTL_ABORT_WRITING = 44,
  CTL_POSITION_AT_END = 49,
  CTL_WRITE_BLOCKED = 50,
  CTL_SET_TEE = 51,
  CTL_OUTPUT_MATRIX = 4097,
  CTL_SUBBAND_GAINS = 4098,
  CTL_LINE_GAINS = 4099,
};

/// What `Control` is to do with bytes that can't be written when buffers are emptied.
enum SyncMode : int {
  SYNC_KEEP = 0,   ///< they stay, for another try
  SYNC_LOSE = 1,   ///< they are lost
  SYNC_EMPTY = 2,  ///< and so is what has been read ahead or waits
};

/// The one byte stream of the audio engine: a file, or the PCM that a decoder makes of one.  A
/// derived class moves bytes by the `Raw` operations; the base class holds position and length,
/// optional buffers, the flags for short transfers, a fill byte, a tee and bit positioning.
///
/// Counts are bytes in 32 bits, positions and lengths in 64: some hours of PCM are more than 2 GiB.
/// An operation that the flags do not allow gives 0 and changes nothing.  One stream is used by one
/// thread at a time.
class InputStream {
 public:
  InputStream() = default;
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;

  /// Closes the stream's own resources; 0, or a negative failure that leaves it open.
  virtual int Close();
  /// Moves up to `count` bytes and gives the bytes moved.
  virtual int RawRead(void* buffer, int count);
  /// As `RawRead`, without consuming.
  virtual int RawPeek(void* buffer, int count);
  virtual int RawWrite(const void* buffer, int count);
  /// Moves to an absolute position and gives the new position.
  virtual std::int64_t RawSeek(std::int64_t position);
  /// A numbered request; unknown codes give 0.
  virtual std::int64_t Control(int code, void* pointer = nullptr, int value = 0);
  /// Does not close a derived stream: the owner calls `Shutdown` first.
  virtual ~InputStream();

  /// Gives the bytes delivered; a null `buffer` skips.
  int Read(void* buffer, int count);
  /// As `Read`, with the position unchanged.
  int Peek(void* buffer, int count);
  /// Gives the bytes taken.
  int Write(const void* buffer, int count);
  /// Gives the resulting position.
  std::int64_t Seek(std::int64_t position);
  std::int64_t SeekBy(std::int64_t delta);
  int Flags() const { return flags; }
  /// The next byte, 0 if there is none.
  int ReadByte();

  void SkipBits(int bits);
  /// Moves up to the next whole byte.
  void AlignBits();
  /// Writes the low `bits` (1 to 32) of `value`; 1 when all whole bytes were written.
  int WriteBits(unsigned value, int bits);
  /// Completes a partly written byte; 1 on success.
  int FinishBits();

  /// Closes the stream and makes the object reusable; 0, or the negative result of `Close`.
  int Shutdown();

 protected:
  void BeginStream(int streamFlags, std::int64_t streamPosition, std::int64_t streamLength);
  void CloseBase();

  std::int64_t position = 0;
  std::int64_t length = 0;

 private:
  int ReadBuffered(void* destination, int count);
  int RefillAndRead(unsigned char* destination, int rest);
  void NoteShortRead(unsigned char* missing, int count);
  int PeekForward(unsigned char* destination, int count);
  int WriteSeekable(const unsigned char* bytes, int count);
  int WriteForward(const unsigned char* bytes, int count);
  int CopyIntoBuffer(const unsigned char* bytes, int count);
  int SyncBuffer(int mode);
  int WriteBack(int mode);
  int FlushWriteBuffer(int mode);
  int SetReadBuffer(int size);
  int SetWriteBuffer(int size);
  int WriteBitsSeekable(unsigned value, int bits);
  int WriteBitsForward(unsigned value, int bits);
  bool Seekable() const { return (flags & STREAM_SEEKABLE) != 0; }

  unsigned char readInline[8];  // storage of a read buffer of 1 to 8 bytes
  unsigned char* readBuffer = nullptr;
  int readCapacity = 0;
  int readValid = 0;
  int readOffset = 0;
  std::int64_t bufferBase = 0;  // stream position of the first buffer byte
  int bufferDirty = 0;
  unsigned char writeInline[8];
  unsigned char* writeBuffer = nullptr;
  int writeCapacity = 0;
  int writePending = 0;
  int readBitOrder = 0;  // 1: the most significant bit of a byte comes first
  int readBitOffset = 0;
  int readBitByte = 0;
  int writeBitOrder = 0;
  int writeBitCount = 0;
  int writeBitHeld = 0;
  int padBits = 0;    // 0 or -1
  int fillByte = -1;  // -1 for none
  int readShort = 0;
  int writeShort = 0;
  int writeCount = 0;
  InputStream* teeStream = nullptr;
  int flags = 0;
};

}  // namespace kwo
