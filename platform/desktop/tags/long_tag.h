#pragma once

#include <string>
#include <string_view>

#include "platform/song_tag.h"

namespace kwo::platform {

/// Turns the bytes of a frame that claims to be Latin-1, as most wrong ones do, into UTF-8.
using DecodeBytes = std::string (*)(std::string_view bytes);

/// What the module of the tag library offers under `kLongTagReader`: takes a path of the machine,
/// fills an empty tag, and throws nothing.
using LongTagReader = void (*)(const char* machinePath, DecodeBytes decode, SongTag& tag);
constexpr char kLongTagReader[] = "KwoReadLongTag";
constexpr char kLongTagModule[] = "modules/kwo-tags.so";  ///< in the program's folder

}  // namespace kwo::platform
