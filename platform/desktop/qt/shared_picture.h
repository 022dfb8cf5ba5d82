#pragma once

#include <cstdint>
#include <memory>

#include "platform/window.h"

class QWindow;
struct xcb_connection_t;

namespace kwo::platform {

/// A picture in memory that the display's server reads: it comes to the window by a message of some
/// bytes, with no copy and no answer to wait for.
class SharedPicture {
 public:
  /// Null where the display can't read our memory, as over a network, or has other pixels.  Main
  /// thread.
  static std::unique_ptr<SharedPicture> Create(const QWindow& window, Size size);
  ~SharedPicture();
  SharedPicture(const SharedPicture&) = delete;
  SharedPicture& operator=(const SharedPicture&) = delete;

  /// 0xFFRRGGBB by rows from the top; the highest byte counts where the window has alpha.  Any
  /// thread may write them; the server may be reading.
  std::uint32_t* Pixels() const { return static_cast<std::uint32_t*>(memory_); }
  /// From now on it shows in a window that has taken the place of its own.  Main thread, while
  /// nobody else shows rows.
  void Follow(const QWindow& window);
  /// Shows so many rows.  Any thread.
  void Show(int first, int count) const;

 private:
  SharedPicture() = default;

  xcb_connection_t* display_ = nullptr;
  void* memory_ = nullptr;
  Size size_{0, 0};
  std::uint8_t depth_ = 0;
  std::uint32_t window_ = 0, context_ = 0, segment_ = 0;
};

}  // namespace kwo::platform
