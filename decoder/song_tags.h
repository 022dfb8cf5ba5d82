#pragma once

#include <cstdint>

#include "decoder/byte_window.h"

/// What taggers put around the frames of a song.  Tags are passed over by the sizes that they tell;
/// a size that can't be true is ignored, and the tag with it.
namespace kwo {

/// The place behind all tags that begin at `offset`, which is `offset` where none does: ID3v2 with
/// and without footer, APEv2 with header, and ID3v1, as left over where files were joined.
std::int64_t SkipTagsInFront(ByteWindow& window, std::int64_t offset);

/// The place where the tags begin that end at the window's end: ID3v1, APEv2, Lyrics3 and ID3v2
/// with footer, in any order.  Not in front of `begin`.
std::int64_t FindTagsBehind(ByteWindow& window, std::int64_t begin);

}  // namespace kwo
