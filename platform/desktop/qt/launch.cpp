#include "platform/launch.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QThread>
#include <memory>
#include <utility>

#include "platform/desktop/qt/bus.h"
#include "platform/desktop/qt/desktop_request.h"
#include "platform/desktop/qt/song_uris.h"
#include "platform/desktop/qt/start_program.h"
#include "platform/desktop/qt/startup_token.h"
#include "platform/posix/file_uri.h"

namespace kwo::platform {
namespace {

constexpr char kName[] = "com.tavarine.kwo", kPath[] = "/com/tavarine/kwo";
constexpr char kInterface[] = "org.freedesktop.Application";
constexpr int kReleaseMilliseconds = 1000, kStartMilliseconds = 10000, kPollMilliseconds = 50;

constexpr struct {
  const char* name;
  Ask ask;
} kActions[] = {
    {"play-pause", Ask::kPlayPause}, {"stop", Ask::kStop}, {"next", Ask::kNext},
    {"previous", Ask::kPrevious},    {"help", Ask::kHelp},
};

const char* Activate(const QVariantList& arguments) {
  NoteStartupToken(arguments[0]);
  PostDesktopRequest({.ask = Ask::kRaise});
  return nullptr;
}

const char* Open(const QVariantList& arguments) {
  NoteStartupToken(arguments[1]);
  QByteArrayList uris;
  for (const QString& uri : arguments[0].toStringList()) uris << uri.toUtf8();
  PostDesktopRequest({.ask = Ask::kOpen, .paths = PathsOf(uris)});
  return nullptr;
}

const char* ActivateAction(const QVariantList& arguments) {
  const QString name = arguments[0].toString();
  for (const auto& action : kActions) {
    if (name != action.name) continue;
    PostDesktopRequest({.ask = action.ask});
    return nullptr;
  }
  return "there is no such action";
}

constexpr BusMethod kMethods[] = {
    {kInterface, "Activate", "a{sv}", Activate},
    {kInterface, "Open", "as a{sv}", Open},
    {kInterface, "ActivateAction", "s av a{sv}", ActivateAction},
};

std::unique_ptr<BusObject> application;

QDBusMessage OpenCall(const DesktopRequest& request) {
  QStringList uris;
  for (const std::string& path : request.paths) uris << QString::fromStdString(FileUriOf(path));
  QVariantMap platformData;
  const QString token = TakeStartupToken();
  if (!token.isEmpty()) platformData["desktop-startup-id"] = token;
  QDBusMessage call = QDBusMessage::createMethodCall(kName, kPath, kInterface, "Open");
  call << uris << platformData;
  return call;
}

bool NameHasOwner(const QDBusConnection& bus) {
  QDBusMessage question = BusCall("NameHasOwner");
  question << kName;
  const QVariantList answer = bus.call(question, QDBus::Block, kStartMilliseconds).arguments();
  return !answer.isEmpty() && answer[0] == true;
}

// The bus starts the next player, if it knows the program; else it is started here, as soon as the
// bus has said that it does not.  By a connection of its own: on the other one the toolkit may take
// the name for this program's for a while still, and keep the call to itself.
void HandOn(const DesktopRequest& request) {
  const QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kName);
  const QDBusMessage open = OpenCall(request);
  const QDBusMessage answer = bus.call(open, QDBus::Block, kStartMilliseconds);
  if (answer.type() != QDBusMessage::ErrorMessage ||
      QDBusError(answer).type() != QDBusError::ServiceUnknown)
    return;
  if (!StartProgram(QCoreApplication::applicationFilePath(), {})) return;
  QElapsedTimer waited;
  waited.start();
  while (!NameHasOwner(bus) && waited.elapsed() < kStartMilliseconds)
    QThread::msleep(kPollMilliseconds);
  bus.call(open, QDBus::Block, kStartMilliseconds);
}

}  // namespace

void OpenLaunch() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  application = std::make_unique<BusObject>(kMethods);
  if (!bus.registerVirtualObject(kPath, application.get())) return;
  // Where another player has the name, the bus gives it to this one when that has gone.
  QDBusMessage request = BusCall("RequestName");
  request << kName << 0u;
  bus.send(request);
}

void CloseLaunch(bool handOn) {
  if (!application) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  QDBusMessage release = BusCall("ReleaseName");
  release << kName;
  bus.call(release, QDBus::Block, kReleaseMilliseconds);
  // What came in front of the bus's answer waits for the main thread.
  QCoreApplication::sendPostedEvents();
  bus.unregisterObject(kPath);
  application.reset();
  const std::optional<DesktopRequest> waiting = TakeWaitingBringUp();
  if (handOn && waiting) HandOn(*waiting);
}

}  // namespace kwo::platform
