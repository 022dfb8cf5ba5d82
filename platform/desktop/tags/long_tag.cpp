#include "platform/desktop/tags/long_tag.h"

#include <id3v2framefactory.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <tfilestream.h>

#include <algorithm>
#include <atomic>

namespace kwo::platform {
namespace {

std::atomic<DecodeBytes> decoder = nullptr;

struct Latin1Handler : TagLib::ID3v2::Latin1StringHandler {
  TagLib::String parse(const TagLib::ByteVector& data) const override {
    const std::string text = decoder.load()(std::string(data.data(), data.size()).c_str());
    return {text, TagLib::String::UTF8};
  }
};

// One line, without what can't be seen at its ends.
std::string LineOf(const TagLib::String& text) {
  std::string line = text.to8Bit(true).c_str();
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
  line.erase(line.find_last_not_of(' ') + 1);
  return line.erase(0, line.find_first_not_of(' '));
}

SongTag Read(const char* machinePath) {
  TagLib::FileStream stream(machinePath, true);
  TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
  const TagLib::ID3v2::Tag* tag = file.isValid() ? file.ID3v2Tag() : nullptr;
  if (!tag) return {};
  return {LineOf(tag->title()), LineOf(tag->artist()), LineOf(tag->album())};
}

}  // namespace
}  // namespace kwo::platform

extern "C" __attribute__((visibility("default"))) void KwoReadLongTag(
    const char* machinePath, kwo::platform::DecodeBytes decode, kwo::platform::SongTag& tag) {
  using namespace kwo::platform;
  static const Latin1Handler handler;
  decoder = decode;
  TagLib::ID3v2::Tag::setLatin1StringHandler(&handler);
  try {
    tag = Read(machinePath);
  } catch (...) {
    // What such a tag says is not to be known.
  }
}
