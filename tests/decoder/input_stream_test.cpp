#include "decoder/input_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "decoder/file_input_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

// A stream over a string, which counts what reaches the raw operations.
class MemoryStream : public InputStream {
 public:
  MemoryStream(std::string bytes, int streamFlags) : bytes_(std::move(bytes)) {
    BeginStream(streamFlags, 0, static_cast<std::int64_t>(bytes_.size()));
  }
  ~MemoryStream() override { Shutdown(); }

  int RawRead(void* buffer, int count) override {
    ++rawReads;
    const int got = std::clamp(static_cast<int>(bytes_.size()) - at_, 0, count);
    std::memcpy(buffer, bytes_.data() + at_, static_cast<std::size_t>(got));
    at_ += got;
    return got;
  }
  int RawPeek(void* buffer, int count) override {
    const int got = RawRead(buffer, count);
    at_ -= got;
    return got;
  }
  int RawWrite(const void* buffer, int count) override {
    const int taken = std::min(count, writeLimit);
    if (at_ + taken > static_cast<int>(bytes_.size()))
      bytes_.resize(static_cast<std::size_t>(at_ + taken));
    bytes_.replace(static_cast<std::size_t>(at_), static_cast<std::size_t>(taken),
                   static_cast<const char*>(buffer), static_cast<std::size_t>(taken));
    at_ += taken;
    return taken;
  }
  std::int64_t RawSeek(std::int64_t target) override {
    ++rawSeeks;
    at_ = static_cast<int>(target);
    return target;
  }
  const std::string& Bytes() const { return bytes_; }

  int rawReads = 0;
  int rawSeeks = 0;
  int writeLimit = 1 << 20;

 private:
  std::string bytes_;
  int at_ = 0;
};

constexpr int kReader = STREAM_READABLE | STREAM_SEEKABLE;
constexpr int kEditor = kReader | STREAM_WRITABLE | STREAM_RESIZABLE;

std::string ReadAll(InputStream& stream, int piece) {
  std::string all(1000, 0);
  int got, total = 0;
  while ((got = stream.Read(all.data() + total, piece)) > 0) total += got;
  return all.substr(0, static_cast<std::size_t>(total));
}

TEST(InputStream, ClosedOrUnfitOperationsGiveZeroAndChangeNothing) {
  MemoryStream reader("abc", STREAM_READABLE);
  char byte;
  EXPECT_EQ(0, reader.Write("x", 1));
  EXPECT_EQ(0, reader.Seek(2));
  EXPECT_EQ(1, reader.Control(CTL_WRITE_AT_END));
  EXPECT_EQ(0, reader.Read(&byte, 0));
  EXPECT_EQ(0, reader.Read(&byte, -5));
  EXPECT_EQ(0, reader.Control(CTL_READ_SHORT));
  EXPECT_EQ(0, reader.Control(52));
  EXPECT_EQ(0, reader.Control(-1));
  EXPECT_EQ(0, reader.Shutdown());
  EXPECT_EQ(0, reader.Shutdown());
  EXPECT_EQ(0, reader.Read(&byte, 1));
  EXPECT_EQ(1, reader.Control(CTL_READ_AT_END));
}

TEST(InputStream, ShortReadIsNotedAndFilled) {
  MemoryStream stream("abc", kReader);
  EXPECT_EQ(-1, stream.Control(CTL_SET_FILL, nullptr, 0x141));
  char bytes[6] = {};
  EXPECT_EQ(3, stream.Read(bytes, 5));
  EXPECT_STREQ("abcAA", bytes);
  EXPECT_EQ(1, stream.Control(CTL_TAKE_READ_SHORT));
  EXPECT_EQ(0, stream.Control(CTL_READ_SHORT));
  EXPECT_EQ(1, stream.Control(CTL_READ_AT_END));
  EXPECT_EQ(0, stream.Control(CTL_REMAINING));
}

TEST(InputStream, BufferedReadsGiveTheSameBytesAsPlainOnes) {
  std::string text;
  for (int i = 0; i < 700; ++i) text += static_cast<char>(i * 7);
  for (int size : {0, 1, 8, 9, 64, 1000}) {
    for (int piece : {1, 3, 64, 100, 900}) {
      MemoryStream stream(text, kReader);
      ASSERT_EQ(1, stream.Control(CTL_SET_READ_BUFFER, nullptr, size));
      EXPECT_EQ(size, stream.Control(CTL_READ_BUFFER_SIZE));
      EXPECT_EQ(text, ReadAll(stream, piece)) << size << ' ' << piece;
      EXPECT_EQ(700, stream.Control(CTL_READ_POSITION));
    }
  }
}

TEST(InputStream, SeekInsideTheBufferTouchesNoFile) {
  MemoryStream stream("0123456789abcdef", kReader);
  stream.Control(CTL_SET_READ_BUFFER, nullptr, 12);
  EXPECT_EQ('0', stream.ReadByte());
  stream.rawSeeks = 0;
  EXPECT_EQ(1, stream.Seek(1));
  EXPECT_EQ(9, stream.Seek(9));
  EXPECT_EQ('9', stream.ReadByte());
  EXPECT_EQ(0, stream.rawSeeks);
  EXPECT_EQ(16, stream.Seek(99));
  EXPECT_EQ(0, stream.Seek(-4));
  EXPECT_EQ('0', stream.ReadByte());
}

TEST(InputStream, PeekLeavesThePosition) {
  for (int flags : {kReader, int{STREAM_READABLE}}) {
    for (int size : {0, 6}) {
      MemoryStream stream("abcdef", flags);
      stream.Control(CTL_SET_READ_BUFFER, nullptr, size);
      stream.ReadByte();
      char bytes[4] = {};
      EXPECT_EQ(3, stream.Peek(bytes, 3));
      EXPECT_STREQ("bcd", bytes);
      EXPECT_EQ('b', stream.ReadByte());
    }
  }
}

TEST(InputStream, SkipsInPiecesAndCopiesToTheTee) {
  std::string text(600, 'x');
  text += "end";
  MemoryStream stream(text, kReader), copy("", kEditor);
  stream.Control(CTL_SET_TEE, &copy);
  EXPECT_EQ(600, stream.Read(nullptr, 600));
  EXPECT_EQ(3, stream.Read(nullptr, 500));
  EXPECT_EQ(text, copy.Bytes());
  stream.Seek(5);
  EXPECT_EQ(5, copy.Control(CTL_READ_POSITION));
}

TEST(InputStream, BufferedWritesReachTheStreamWhole) {
  for (int size : {0, 4, 64}) {
    MemoryStream stream("..........", kEditor);
    stream.Control(CTL_SET_BUFFER, nullptr, size);
    stream.Seek(2);
    EXPECT_EQ(3, stream.Write("abc", 3));
    EXPECT_EQ(9, stream.Write("defghijkl", 9));
    EXPECT_EQ(14, stream.Control(CTL_LENGTH));
    stream.Seek(3);
    EXPECT_EQ('b', stream.ReadByte());
    stream.Write("Z", 1);
    EXPECT_EQ(1, stream.Control(CTL_SYNC));
    EXPECT_EQ("..abZdefghijkl", stream.Bytes()) << size;
  }
}

TEST(InputStream, ForwardWriterKeepsWhatDidNotFit) {
  MemoryStream stream("", STREAM_WRITABLE);
  stream.Control(CTL_SET_BUFFER, nullptr, 4);
  EXPECT_EQ(6, stream.Write("abcdef", 6));
  EXPECT_EQ("abcd", stream.Bytes());
  stream.writeLimit = 1;
  EXPECT_EQ(0, stream.Control(CTL_FLUSH));
  EXPECT_EQ(1, stream.Control(CTL_FLUSH));
  EXPECT_EQ("abcdef", stream.Bytes());
  EXPECT_EQ(6, stream.Control(CTL_WRITE_POSITION));
}

TEST(InputStream, WritesBitsInBothOrders) {
  MemoryStream stream(std::string(4, 0), kEditor);
  stream.Control(CTL_SET_WRITE_BIT_ORDER, nullptr, 1);
  EXPECT_EQ(1, stream.WriteBits(5, 3));
  EXPECT_EQ(1, stream.WriteBits(0x1ff, 9));
  stream.FinishBits();
  EXPECT_EQ(2, stream.Control(CTL_READ_POSITION));
  stream.Control(CTL_SET_WRITE_BIT_ORDER, nullptr, 0);
  stream.WriteBits(5, 3);
  EXPECT_EQ(std::string("\xBF\xF0\x05\0", 4), stream.Bytes());
  MemoryStream forward("", STREAM_WRITABLE);
  forward.Control(CTL_SET_WRITE_BIT_ORDER, nullptr, 1);
  forward.Control(CTL_SET_PAD_BITS, nullptr, 1);
  forward.WriteBits(0, 3);
  forward.FinishBits();
  EXPECT_EQ("\x1f", forward.Bytes());
}

TEST(FileInputStream, OpensByItsModes) {
  test::TempFolder folder;
  const std::string path = folder.File("song");
  FileInputStream file;
  EXPECT_EQ(-1, file.Open(path.c_str(), 2));
  EXPECT_EQ(0, file.Flags());
  EXPECT_EQ(0, file.Open(path.c_str(), 3 | 3 << 2));
  EXPECT_EQ(5, file.Write("hello", 5));
  EXPECT_EQ(-1, file.Open(path.c_str(), 3 | 3 << 2)) << "exclusive creation";
  EXPECT_EQ(0, file.Open(path.c_str(), 1));
  file.Write("!", 1);
  EXPECT_EQ(0, file.Open(path.c_str(), 2)) << "an open file is closed first";
  EXPECT_EQ(6, file.Control(CTL_LENGTH));
  EXPECT_EQ("hello!", ReadAll(file, 4));
  EXPECT_EQ(0, file.Control(CTL_SET_TRUNCATE_ON_CLOSE, nullptr, 1));
  EXPECT_EQ(0, file.Control(CTL_TRUNCATE_ON_CLOSE)) << "only where writing extends the stream";
  EXPECT_EQ(0, file.Open(path.c_str(), 3));
  file.Control(CTL_SET_TRUNCATE_ON_CLOSE, nullptr, 1);
  file.Seek(2);
  file.Shutdown();
  EXPECT_EQ("he", test::ReadBytes(path));
  EXPECT_EQ(-1, file.Open(folder.Path().c_str(), 2)) << "a folder is no file";
}

}  // namespace
}  // namespace kwo
