#include "platform/desktop/qt/shared_picture.h"

#include <sys/shm.h>
#include <xcb/shm.h>

#include <QGuiApplication>
#include <QWindow>
#include <bit>
#include <cstdlib>

namespace kwo::platform {
namespace {

constexpr int kBitsPerPixel = 32;
// The server's own user, or root, reads it.
constexpr int kAccess = 0600;

xcb_connection_t* Display() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

template <typename Reply>
using Answer = std::unique_ptr<Reply, decltype(&std::free)>;

// Whether pixels of this depth are words as ours are, eight bits a channel.
bool HasOurPixels(const xcb_setup_t& setup, std::uint8_t depth) {
  constexpr std::uint8_t kOpaqueDepth = 24, kAlphaDepth = 32;
  if (depth != kOpaqueDepth && depth != kAlphaDepth) return false;
  const auto order = std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST
                                                                : XCB_IMAGE_ORDER_MSB_FIRST;
  if (setup.image_byte_order != order) return false;
  for (auto format = xcb_setup_pixmap_formats_iterator(&setup); format.rem;
       xcb_format_next(&format))
    if (format.data->depth == depth) return format.data->bits_per_pixel == kBitsPerPixel;
  return false;
}

}  // namespace

std::unique_ptr<SharedPicture> SharedPicture::Create(const QWindow& window, Size size) {
  xcb_connection_t* display = Display();
  if (!display || !xcb_get_extension_data(display, &xcb_shm_id)->present) return nullptr;
  const auto id = static_cast<xcb_window_t>(window.winId());
  const Answer<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(display, xcb_get_geometry(display, id), nullptr), &std::free);
  if (!geometry || !HasOurPixels(*xcb_get_setup(display), geometry->depth)) return nullptr;
  const int block = shmget(
      IPC_PRIVATE, 4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
      IPC_CREAT | kAccess);
  if (block < 0) return nullptr;
  void* memory = shmat(block, nullptr, 0);
  const std::uint32_t segment = xcb_generate_id(display);
  const bool attached =
      memory != reinterpret_cast<void*>(-1) &&
      !Answer<xcb_generic_error_t>(
          xcb_request_check(display, xcb_shm_attach_checked(display, segment,
                                                            static_cast<std::uint32_t>(block), 1)),
          &std::free);
  // It goes with its last user, however he ends.
  shmctl(block, IPC_RMID, nullptr);
  if (!attached) {
    if (memory != reinterpret_cast<void*>(-1)) shmdt(memory);
    return nullptr;
  }
  std::unique_ptr<SharedPicture> picture(new SharedPicture);
  picture->display_ = display;
  picture->memory_ = memory;
  picture->size_ = size;
  picture->depth_ = geometry->depth;
  picture->window_ = id;
  picture->segment_ = segment;
  picture->context_ = xcb_generate_id(display);
  xcb_create_gc(display, picture->context_, id, 0, nullptr);
  return picture;
}

SharedPicture::~SharedPicture() {
  if (xcb_connection_t* display = Display()) {
    xcb_free_gc(display, context_);
    xcb_shm_detach(display, segment_);
    xcb_flush(display);
  }
  shmdt(memory_);
}

void SharedPicture::Follow(const QWindow& window) {
  window_ = static_cast<xcb_window_t>(window.winId());
}

void SharedPicture::Show(int first, int count) const {
  if (count < 1) return;
  const auto width = static_cast<std::uint16_t>(size_.width);
  const auto row = static_cast<std::int16_t>(first);
  xcb_shm_put_image(display_, window_, context_, width, static_cast<std::uint16_t>(size_.height), 0,
                    static_cast<std::uint16_t>(first), width, static_cast<std::uint16_t>(count), 0,
                    row, depth_, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, segment_, 0);
  xcb_flush(display_);
}

}  // namespace kwo::platform
