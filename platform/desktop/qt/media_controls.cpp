#include "platform/media_controls.h"

#include <unistd.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <cmath>
#include <memory>

#include "platform/desktop/qt/bus.h"
#include "platform/desktop/qt/desktop_request.h"
#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/song_uris.h"
#include "platform/posix/file_uri.h"

namespace kwo::platform {
namespace {

constexpr char kName[] = "org.mpris.MediaPlayer2.kwo", kPath[] = "/org/mpris/MediaPlayer2";
constexpr char kRoot[] = "org.mpris.MediaPlayer2", kPlayer[] = "org.mpris.MediaPlayer2.Player";
constexpr char kSongs[] = "/com/tavarine/kwo/song/";
constexpr char kNoTrack[] = "/org/mpris/MediaPlayer2/TrackList/NoTrack";
constexpr char kNoNumber[] = "that is no number";
constexpr double kMicroseconds = 1e6;
// Of the bus: a name that is taken is not waited for; the answer of one that is had.
constexpr unsigned kDoNotQueue = 4, kOwner = 1;

MediaState shown;
QVariantMap told;  // the player's properties, as they were told last
double (*positionOf)() = nullptr;

qlonglong Position() {
  return positionOf ? std::llround(positionOf() * kMicroseconds) : 0;
}

QVariantMap Metadata() {
  if (shown.song == 0) return {{"mpris:trackid", QVariant::fromValue(QDBusObjectPath(kNoTrack))}};
  QVariantMap facts{{"mpris:trackid",
                     QVariant::fromValue(QDBusObjectPath(kSongs + QString::number(shown.song)))}};
  const auto add = [&facts](const char* name, const std::string& text, auto asValue) {
    if (!text.empty()) facts[name] = asValue(FromBytes(text.c_str()));
  };
  const auto asText = [](const QString& text) { return QVariant(text); };
  add("xesam:title", shown.title, asText);
  add("xesam:artist", shown.artist,
      [](const QString& text) { return QVariant(QStringList{text}); });
  add("xesam:album", shown.album, asText);
  facts["xesam:url"] = QString::fromStdString(FileUriOf(shown.path));
  if (shown.seconds > 0)
    facts["mpris:length"] =
        static_cast<qlonglong>(shown.seconds) * static_cast<qlonglong>(kMicroseconds);
  return facts;
}

const char* Quit(const QVariantList&) {
  PostQuitMessage(0);
  CloseDialogs();
  return nullptr;
}

template <Ask ask>
const char* Simply(const QVariantList&) {
  PostDesktopRequest({.ask = ask});
  return nullptr;
}

const char* Seek(const QVariantList& arguments) {
  PostDesktopRequest({.ask = Ask::kSeekBy, .microseconds = arguments[0].toLongLong()});
  return nullptr;
}

const char* SetPosition(const QVariantList& arguments) {
  QString song = arguments[0].value<QDBusObjectPath>().path();
  if (!song.startsWith(kSongs)) return nullptr;
  PostDesktopRequest({.ask = Ask::kSeekTo,
                      .microseconds = arguments[1].toLongLong(),
                      .song = song.remove(0, QString(kSongs).size()).toUInt()});
  return nullptr;
}

const char* OpenUri(const QVariantList& arguments) {
  const std::vector<std::string> paths = PathsOf({arguments[0].toString().toUtf8()});
  if (!paths.empty()) PostDesktopRequest({.ask = Ask::kOpen, .paths = paths});
  return nullptr;
}

template <Ask ask>
const char* SetNumber(const QVariant& value) {
  const double number = value.toDouble();
  if (std::isnan(number)) return kNoNumber;
  PostDesktopRequest({.ask = ask, .value = number});
  return nullptr;
}

const char* SetLoopStatus(const QVariant& value) {
  const QString status = value.toString();
  if (status != "None" && status != "Playlist") return "only the whole list can be repeated";
  PostDesktopRequest({.ask = Ask::kRepeat, .value = status == "Playlist" ? 1.0 : 0.0});
  return nullptr;
}

const char* SetShuffle(const QVariant& value) {
  PostDesktopRequest({.ask = Ask::kShuffle, .value = value.toBool() ? 1.0 : 0.0});
  return nullptr;
}

QVariant PlaybackStatus() {
  switch (shown.playback) {
    case Playback::kPlaying:
      return "Playing";
    case Playback::kPaused:
      return "Paused";
    default:
      return "Stopped";
  }
}

QVariant AnySong() {
  return shown.anySong;
}

constexpr BusMethod kMethods[] = {
    {kRoot, "Raise", "", Simply<Ask::kRaise>},
    {kRoot, "Quit", "", Quit},
    {kPlayer, "Play", "", Simply<Ask::kPlay>},
    {kPlayer, "Pause", "", Simply<Ask::kPause>},
    {kPlayer, "PlayPause", "", Simply<Ask::kPlayPause>},
    {kPlayer, "Stop", "", Simply<Ask::kStop>},
    {kPlayer, "Next", "", Simply<Ask::kNext>},
    {kPlayer, "Previous", "", Simply<Ask::kPrevious>},
    {kPlayer, "Seek", "x", Seek},
    {kPlayer, "SetPosition", "o x", SetPosition},
    {kPlayer, "OpenUri", "s", OpenUri},
};

constexpr BusProperty kProperties[] = {
    {kRoot, "CanQuit", "b", [] { return QVariant(true); }},
    {kRoot, "CanRaise", "b", [] { return QVariant(true); }},
    {kRoot, "CanSetFullscreen", "b", [] { return QVariant(false); }},
    {kRoot, "HasTrackList", "b", [] { return QVariant(false); }},
    {kRoot, "Identity", "s", [] { return QVariant("KWO"); }},
    {kRoot, "DesktopEntry", "s", [] { return QVariant("com.tavarine.kwo"); }},
    {kRoot, "SupportedUriSchemes", "as", [] { return QVariant(QStringList{"file"}); }},
    {kRoot, "SupportedMimeTypes", "as",
     [] {
       return QVariant(QStringList{"audio/mpeg", "audio/mp2"});
     }},
    {kPlayer, "PlaybackStatus", "s", PlaybackStatus},
    {kPlayer, "LoopStatus", "s", [] { return QVariant(shown.repeat ? "Playlist" : "None"); },
     SetLoopStatus},
    {kPlayer, "Rate", "d", [] { return QVariant(shown.speed); }, SetNumber<Ask::kSpeed>},
    {kPlayer, "MinimumRate", "d", [] { return QVariant(0.75); }},
    {kPlayer, "MaximumRate", "d", [] { return QVariant(1.25); }},
    {kPlayer, "Shuffle", "b", [] { return QVariant(shown.shuffle); }, SetShuffle},
    {kPlayer, "Metadata", "a{sv}", [] { return QVariant(Metadata()); }},
    {kPlayer, "Volume", "d", [] { return QVariant(shown.volume); }, SetNumber<Ask::kVolume>},
    {kPlayer, "Position", "x", [] { return QVariant(Position()); }},
    {kPlayer, "CanGoNext", "b", AnySong},
    {kPlayer, "CanGoPrevious", "b", AnySong},
    {kPlayer, "CanPlay", "b", AnySong},
    {kPlayer, "CanPause", "b", AnySong},
    {kPlayer, "CanSeek", "b", [] { return QVariant(shown.song != 0 && shown.seconds > 0); }},
    {kPlayer, "CanControl", "b", [] { return QVariant(true); }},
};

constexpr BusSignal kSignals[] = {{kPlayer, "Seeked", "x"}};

std::unique_ptr<BusObject> player;
QString ownName;

// Where another player has the name, each has one with its process's number.
void TakeName() {
  ownName = kName;
  QDBusConnection bus = QDBusConnection::sessionBus();
  QDBusMessage request = BusCall("RequestName");
  request << kName << kDoNotQueue;
  auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(request), player.get());
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, [](QDBusPendingCallWatcher* self) {
    const QDBusPendingReply<unsigned> reply = *self;
    self->deleteLater();
    if (reply.isError() || reply.value() == kOwner) return;
    ownName = QString("%1.instance%2").arg(kName).arg(getpid());
    QDBusMessage second = BusCall("RequestName");
    second << ownName << kDoNotQueue;
    QDBusConnection::sessionBus().send(second);
  });
}

QVariantMap ToldProperties() {
  QVariantMap properties = player->Properties(kPlayer);
  properties.remove("Position");
  return properties;
}

void TellChanges() {
  QVariantMap now = ToldProperties(), changed;
  for (auto entry = now.cbegin(); entry != now.cend(); ++entry)
    if (told.value(entry.key()) != entry.value()) changed[entry.key()] = entry.value();
  told = std::move(now);
  if (changed.isEmpty()) return;
  QDBusMessage message =
      QDBusMessage::createSignal(kPath, "org.freedesktop.DBus.Properties", "PropertiesChanged");
  message << kPlayer << changed << QStringList();
  QDBusConnection::sessionBus().send(message);
}

void TellJump() {
  QDBusMessage message = QDBusMessage::createSignal(kPath, kPlayer, "Seeked");
  message << Position();
  QDBusConnection::sessionBus().send(message);
}

}  // namespace

void OpenMediaControls(double (*position)()) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  auto object = std::make_unique<BusObject>(kMethods, kProperties, kSignals);
  if (!bus.registerVirtualObject(kPath, object.get())) return;
  player = std::move(object);
  positionOf = position;
  told = ToldProperties();
  TakeName();
}

void ShowMediaState(const MediaState& state) {
  if (!player || state == shown) return;
  const bool jumped = state.jumps != shown.jumps;
  shown = state;
  TellChanges();
  if (jumped) TellJump();
}

void CloseMediaControls() {
  if (!player) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  QDBusMessage release = BusCall("ReleaseName");
  release << ownName;
  bus.send(release);
  bus.unregisterObject(kPath);
  player.reset();
  positionOf = nullptr;
  shown = {};
  told.clear();
}

}  // namespace kwo::platform
