#include "decoder/byte_window.h"

#include <algorithm>
#include <cstring>

namespace kwo {

void ByteWindow::Begin(InputStream* seekable, std::int64_t end) {
  source_ = seekable;
  end_ = end;
  start_ = bytes_ = 0;
}

unsigned char* ByteWindow::Look(std::int64_t offset, int wanted) {
  if (offset < 0 || wanted > kCapacity || offset + wanted > end_) return nullptr;
  if (offset < start_ || offset + wanted > start_ + bytes_) {
    const bool overlaps = offset >= start_ && offset < start_ + bytes_;
    const int kept = overlaps ? BytesFrom(offset) : 0;
    if (overlaps) std::memmove(data_, data_ + (offset - start_), static_cast<std::size_t>(kept));
    start_ = offset;
    const std::int64_t more = std::min<std::int64_t>(kCapacity, end_ - offset) - kept;
    source_->Seek(offset + kept);
    bytes_ = kept + source_->Read(data_ + kept, static_cast<int>(more));
    if (bytes_ < wanted) return nullptr;
  }
  return data_ + (offset - start_);
}

}  // namespace kwo
