#include "platform/song_tag.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "platform/decoding.h"
#include "platform/desktop/tags/long_tag.h"
#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr int kHeaderBytes = 10;
constexpr unsigned kLargestTag = 32u << 20;

// Whether the file begins with a tag that is not too large.
bool BeginsWithTag(const char* path) {
  const int file = OpenFile(path, FileAccess::kRead, FileCreate::kNever);
  if (file < 0) return false;
  unsigned char header[kHeaderBytes];
  const int got = ReadFile(file, header, kHeaderBytes);
  CloseFile(file);
  if (got < kHeaderBytes || std::memcmp(header, "ID3", 3) != 0) return false;
  unsigned size = 0;
  for (int i = 6; i < kHeaderBytes; ++i) size = size << 7 | (header[i] & 0x7F);
  return size <= kLargestTag;
}

std::string FolderOfProgram() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
  return program.substr(0, program.rfind('/') + 1);
}

LongTagReader LoadReader() {
  void* module = dlopen((FolderOfProgram() + kLongTagModule).c_str(), RTLD_NOW | RTLD_LOCAL);
  return module ? reinterpret_cast<LongTagReader>(dlsym(module, kLongTagReader)) : nullptr;
}

}  // namespace

SongTag ReadLongTag(const char* path) {
  if (!BeginsWithTag(path)) return {};
  // Loaded when it is first needed: most libraries of songs have the short tag in every file.
  static const LongTagReader reader = LoadReader();
  SongTag tag;
  if (reader) reader(ToMachinePath(path).c_str(), Decoded, tag);
  return tag;
}

}  // namespace kwo::platform
