#include "platform/desktop/qt/startup_token.h"

#include <xcb/xcb.h>

#include <QDBusArgument>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QWindow>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace kwo::platform {
namespace {

constexpr qsizetype kLongestToken = 512;
constexpr int kEventBytes = 20;

QString noted;

// A launch's messages are text, in which some characters would need a quoting that not every
// desktop reads; no desktop makes tokens of them.
bool IsPlain(const QString& token) {
  static const QRegularExpression plain("\\A[!#-\\[\\]-~]+\\z");
  return token.size() <= kLongestToken && plain.match(token).hasMatch();
}

xcb_atom_t Atom(xcb_connection_t* display, const char* name) {
  const auto asked =
      xcb_intern_atom(display, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> got(
      xcb_intern_atom_reply(display, asked, nullptr), &std::free);
  return got ? got->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void SendToRoot(xcb_connection_t* display, std::uint32_t mask, xcb_client_message_event_t event) {
  event.response_type = XCB_CLIENT_MESSAGE;
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
  xcb_send_event(display, 0, screen->root, mask, reinterpret_cast<const char*>(&event));
}

// Asks for the focus with the time of the user's press in the launcher, which the token bears.
void Activate(xcb_connection_t* display, xcb_window_t window, const QString& token) {
  const qsizetype place = token.lastIndexOf("_TIME");
  bool isNumber = false;
  const std::uint32_t time = place < 0 ? 0 : token.sliced(place + 5).toUInt(&isNumber);
  if (!isNumber) return;
  xcb_client_message_event_t event{};
  event.format = 32;
  event.window = window;
  event.type = Atom(display, "_NET_ACTIVE_WINDOW");
  event.data.data32[0] = 1;  // an application asks
  event.data.data32[1] = time;
  SendToRoot(display, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
             event);
}

// In pieces of 20 bytes, the last one with a NUL.
void TellEnd(xcb_connection_t* display, xcb_window_t window, const QString& token) {
  QByteArray text = "remove: ID=\"" + token.toLatin1() + "\"";
  text.append('\0');
  xcb_client_message_event_t event{};
  event.format = 8;
  event.window = window;
  event.type = Atom(display, "_NET_STARTUP_INFO_BEGIN");
  const xcb_atom_t further = Atom(display, "_NET_STARTUP_INFO");
  for (qsizetype at = 0; at < text.size(); at += kEventBytes) {
    std::memset(event.data.data8, 0, kEventBytes);
    std::memcpy(event.data.data8, text.constData() + at,
                static_cast<std::size_t>(std::min<qsizetype>(kEventBytes, text.size() - at)));
    SendToRoot(display, XCB_EVENT_MASK_PROPERTY_CHANGE, event);
    event.type = further;
  }
}

}  // namespace

void NoteStartupToken(const QVariant& platformData) {
  const auto values = qdbus_cast<QVariantMap>(platformData);
  for (const char* name : {"activation-token", "desktop-startup-id"}) {
    const QString token = values.value(name).toString();
    if (IsPlain(token)) noted = token;
  }
}

QString TakeStartupToken() {
  return std::exchange(noted, {});
}

void EndStartup(const QWindow& window, const QString& token) {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (token.isEmpty() || !x11) return;
  xcb_connection_t* display = x11->connection();
  const auto id = static_cast<xcb_window_t>(window.winId());
  const QByteArray bytes = token.toLatin1();
  xcb_change_property(display, XCB_PROP_MODE_REPLACE, id, Atom(display, "_NET_STARTUP_ID"),
                      Atom(display, "UTF8_STRING"), 8, static_cast<std::uint32_t>(bytes.size()),
                      bytes.constData());
  Activate(display, id, token);
  TellEnd(display, id, token);
  xcb_flush(display);
}

}  // namespace kwo::platform
