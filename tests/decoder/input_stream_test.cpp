#include "decoder/input_stream.h"

#include <gtest/gtest.h>

#include <random>

#include "decoder/file_input_stream.h"
#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

using test::BytesStream;
using test::kEditor;

TEST(InputStream, ClosedOrUnfitOperationsGiveZeroAndChangeNothing) {
  BytesStream reader("abc", STREAM_READABLE);
  char byte;
  EXPECT_EQ(0, reader.Write("x", 1));
  EXPECT_EQ(0, reader.Seek(2));
  EXPECT_EQ(1, reader.Control(CTL_WRITE_AT_END));
  for (int count : {0, -5}) EXPECT_EQ(0, reader.Read(&byte, count));
  EXPECT_EQ(0, reader.Control(CTL_READ_SHORT));
  for (int unknown : {-1, 52}) EXPECT_EQ(0, reader.Control(unknown));
  for (int times : {1, 2}) EXPECT_EQ(0, reader.Shutdown()) << times;
  EXPECT_EQ(0, reader.Read(&byte, 1));
  EXPECT_EQ(1, reader.Control(CTL_READ_AT_END));
}

// A plain string and a place in it are what a stream shall be, whatever its buffer.
TEST(InputStream, AnyRowOfOperationsDoesTheSameWithAnyBuffer) {
  for (int size : {0, 1, 8, 9, 64}) {
    std::mt19937 random(5);
    std::string whole = "0123456789abcdefghij";
    std::size_t at = 0;
    BytesStream stream(whole, kEditor);
    ASSERT_EQ(1, stream.Control(CTL_SET_READ_BUFFER, nullptr, size));
    ASSERT_EQ(size, stream.Control(CTL_READ_BUFFER_SIZE));
    ASSERT_EQ(-1, stream.Control(CTL_SET_FILL, nullptr, 0x141));
    for (int i = 0; i < 3000; ++i) {
      const int count = static_cast<int>(1 + random() % 24);
      const std::string there = whole.substr(at, count);
      const auto operation = random() % 5;
      if (operation < 2) {
        char bytes[24];
        const int got = operation ? stream.Read(bytes, count) : stream.Peek(bytes, count);
        ASSERT_EQ(there + std::string(count - got, 'A'), std::string(bytes, count));
        ASSERT_EQ(got < count, stream.Control(CTL_TAKE_READ_SHORT));
        at += operation ? got : 0;
      } else if (operation == 2) {
        const std::string bytes(count, static_cast<char>(random()));
        ASSERT_EQ(count, stream.Write(bytes.data(), count));
        whole.replace(at, count, bytes);
        at += count;
      } else if (operation == 3) {
        at = random() % (whole.size() + 1);
        ASSERT_EQ(at, stream.Seek(at));
      } else {
        ASSERT_EQ(1, stream.Control(CTL_SYNC));
        ASSERT_EQ(whole, stream.bytes);
      }
      ASSERT_EQ(at, stream.Control(CTL_READ_POSITION));
      ASSERT_EQ(whole.size() - at, stream.Control(CTL_REMAINING));
      ASSERT_EQ(whole.size() == at, stream.Control(CTL_READ_AT_END));
    }
    stream.Shutdown();
    EXPECT_EQ(whole, stream.bytes) << size;
  }
}

TEST(InputStream, SeekInsideTheBufferReadsNothingAnew) {
  BytesStream stream("0123456789abcdef");
  stream.Control(CTL_SET_READ_BUFFER, nullptr, 12);
  EXPECT_EQ('0', stream.ReadByte());
  for (int place : {1, 11}) EXPECT_EQ(place, stream.Seek(place));
  EXPECT_EQ('b', stream.ReadByte());
  EXPECT_EQ(12, stream.bytesRead);
  EXPECT_EQ(16, stream.Seek(99));
  EXPECT_EQ(0, stream.Seek(-4));
}

TEST(InputStream, SkipsInPiecesAndCopiesToTheTee) {
  const std::string text = std::string(600, 'x') + "end";
  BytesStream stream(text), copy("", kEditor);
  stream.Control(CTL_SET_TEE, &copy);
  EXPECT_EQ(600, stream.Read(nullptr, 600));
  EXPECT_EQ(3, stream.Read(nullptr, 500));
  EXPECT_EQ(text, copy.bytes);
  stream.Seek(5);
  EXPECT_EQ(5, copy.Control(CTL_READ_POSITION));
}

TEST(InputStream, ForwardWriterKeepsWhatDidNotFit) {
  BytesStream stream("", STREAM_WRITABLE);
  stream.Control(CTL_SET_BUFFER, nullptr, 4);
  EXPECT_EQ(6, stream.Write("abcdef", 6));
  EXPECT_EQ("abcd", stream.bytes);
  stream.writeLimit = 1;
  for (int done : {0, 1}) EXPECT_EQ(done, stream.Control(CTL_FLUSH));
  EXPECT_EQ("abcdef", stream.bytes);
  EXPECT_EQ(6, stream.Control(CTL_WRITE_POSITION));
}

TEST(InputStream, WritesBitsInBothOrders) {
  for (int flags : {kEditor, int{STREAM_WRITABLE}}) {
    // What a forward writer pads with is what the other finds in its place.
    BytesStream stream(flags == kEditor ? "\xff\xff\xff\xff" : "", flags);
    stream.Control(CTL_SET_PAD_BITS, nullptr, 1);
    for (int order : {1, 0}) {
      stream.Control(CTL_SET_WRITE_BIT_ORDER, nullptr, order);
      EXPECT_EQ(1, stream.WriteBits(5, 3));
      EXPECT_EQ(1, stream.WriteBits(0x1fe, 9));
      EXPECT_EQ(1, stream.FinishBits());
    }
    EXPECT_EQ(4, stream.Control(CTL_WRITE_POSITION));
    EXPECT_EQ("\xbf\xef\xf5\xff", stream.bytes);
  }
}

TEST(FileInputStream, OpensByItsModes) {
  test::TempFolder folder;
  const std::string path = folder.File("song");
  FileInputStream file;
  EXPECT_EQ(-1, file.Open(path.c_str(), 2));
  EXPECT_EQ(0, file.Open(path.c_str(), 3 | 3 << 2));
  EXPECT_EQ(5, file.Write("hello", 5));
  EXPECT_EQ(-1, file.Open(path.c_str(), 3 | 3 << 2)) << "exclusive creation";
  EXPECT_EQ(0, file.Open(path.c_str(), 1));
  file.Write("!", 1);
  EXPECT_EQ(0, file.Open(path.c_str(), 2)) << "an open file is closed first";
  EXPECT_EQ(6, file.Control(CTL_LENGTH));
  EXPECT_EQ("hello!", test::ReadAll(file, 4));
  EXPECT_EQ(0, file.Control(CTL_SET_TRUNCATE_ON_CLOSE, nullptr, 1));
  EXPECT_EQ(0, file.Control(CTL_TRUNCATE_ON_CLOSE)) << "only where writing extends the stream";
  for (int size : {0, 6}) {
    char bytes[4] = {};
    EXPECT_EQ(0, file.Open(path.c_str(), 0));
    file.Control(CTL_SET_READ_BUFFER, nullptr, size);
    EXPECT_EQ('h', file.ReadByte());
    EXPECT_EQ(3, file.Peek(bytes, 3));
    EXPECT_STREQ("ell", bytes);
    EXPECT_EQ("ello!", test::ReadAll(file, 5)) << "a forward peek leaves the position";
  }
  EXPECT_EQ(0, file.Open(path.c_str(), 3));
  file.Control(CTL_SET_TRUNCATE_ON_CLOSE, nullptr, 1);
  file.Seek(2);
  file.Shutdown();
  EXPECT_EQ("he", test::ReadBytes(path));
  EXPECT_EQ(-1, file.Open(folder.Path().c_str(), 2)) << "a folder is no file";
}

}  // namespace
}  // namespace kwo
