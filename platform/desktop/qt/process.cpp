#include "platform/process.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QCollator>
#include <QEventLoop>
#include <QIcon>
#include <QLocale>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "platform/desktop/end_watch.h"
#include "platform/desktop/main_loop.h"
#include "platform/desktop/qt/desktop_request.h"
#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/sound_name.h"
#include "platform/files.h"
#include "platform/messages.h"
#include "platform/posix/executable.h"
#include "platform/posix/language.h"

namespace kwo::platform {
namespace {

// Written by any thread, read by the main thread's event loop.
int wakeEvent = -1;
std::thread::id mainThread;
void (*saveEverything)() = nullptr;

void Wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(wakeEvent, &one, sizeof one);
}

// Whoever ends the program from outside may cut it off before it has ended in order.
void EndProgram() {
  if (saveEverything) saveEverything();
  EndServed();
  DropDesktopRequests();
  PostQuitMessage(0);
  CloseDialogs();
}

// The desktop toolkit calls exit when the display goes.  Other threads still run then, so that
// nothing more than saving may happen.
void OnExit() {
  if (!saveEverything) return;
  void (*const save)() = saveEverything;
  saveEverything = nullptr;
  save();
  std::_Exit(1);
}

void OnWake() {
  std::uint64_t count;
  [[maybe_unused]] const ssize_t got = read(wakeEvent, &count, sizeof count);
  if (EndSignalled()) EndProgram();
  if (TakeStateChanged()) DispatchMessage({kMessageStateChanged, 0, 0});
  ServeBesideDialog();
  ServeWindow();
}

void WaitForEvents() {
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void SleepAlive(int milliseconds) {
  QEventLoop loop;
  QTimer timer;
  timer.setSingleShot(true);
  timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
  timer.start(milliseconds);
  loop.exec(QEventLoop::ExcludeUserInputEvents);
}

bool OnMainThread() {
  return std::this_thread::get_id() == mainThread;
}

QIcon ProgramIcon() {
  QIcon icon;
  for (const char* file : {":/kwo-16.png", ":/kwo-32.png", ":/kwo-48.png", ":/kwo-128.png"})
    icon.addFile(file);
  return icon;
}

// The folder in which a user keeps data; empty for one without a home.
std::string UserDataFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  if (data && *data == '/') return data;
  return home && *home == '/' ? std::string(home) + "/.local/share" : std::string();
}

// The program keeps its list and presets beside itself.  Where it may not write there, as after an
// installation for all users, each user gets a folder of his own with links to the data, and the
// program is told that it lies in that.
void FindProgramFolder() {
  const std::string program = ToMachinePath(ExecutablePath().c_str());
  const std::filesystem::path shared = std::filesystem::path(program).parent_path();
  if (access(shared.c_str(), W_OK) == 0 || UserDataFolder().empty()) return;
  const std::filesystem::path own = UserDataFolder() + "/kwo";
  std::error_code error;
  std::filesystem::create_directories(own, error);
  for (const char* data : {"skin", "help", "music"}) {
    // A link of an earlier installation may lead nowhere by now; a folder of the user's own stays.
    if (std::filesystem::is_symlink(own / data, error)) std::filesystem::remove(own / data, error);
    std::filesystem::create_directory_symlink(shared / data, own / data, error);
  }
  if (access(own.c_str(), W_OK) == 0) TellExecutablePath(FromMachinePath((own / "kwo").c_str()));
}

int NoDesktop() {
  const char* display = std::getenv("DISPLAY");
  if (display && *display) {
    std::fprintf(stderr, "kwo: the display %s can't be opened\n", display);
  } else if (std::getenv("WAYLAND_DISPLAY")) {
    std::fputs("kwo: there is no X display; Wayland's desktops have one by XWayland\n", stderr);
  } else {
    std::fputs("kwo: there is no desktop to open the window on\n", stderr);
  }
  return 1;
}

// How the desktop's volume control shows the sound, by its two servers.
void NameSound() {
  setenv(kPulseName, "application.name=KWO application.icon_name=kwo media.role=music", 0);
  setenv(kPipeWireName, "{ application.name = KWO application.icon-name = kwo media.role = Music }",
         0);
}

int NoMeans(const char* what) {
  std::fprintf(stderr, "kwo: the system gives no further %s\n", what);
  return 1;
}

std::vector<std::size_t> SortByLanguage(const std::vector<std::string>& names) {
  // Where there is no language, as with "C", letters sort as everywhere.
  const QLocale system = QLocale::system();
  const QLocale user = system.language() == QLocale::C ? QLocale(QLocale::English) : system;
  QCollator collator(user);
  std::vector<QCollatorSortKey> keys;
  keys.reserve(names.size());
  for (const std::string& name : names) keys.push_back(collator.sortKey(FromBytes(name.c_str())));
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t i, std::size_t j) { return keys[i] < keys[j]; });
  return order;
}

// The toolkit ends the process by an abort where the display can't be reached; everything else that
// it has to say is of no use to a user.
void OnToolkitMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type == QtFatalMsg) std::_Exit(NoDesktop());
}

}  // namespace

void CloseDialogs() {
  while (QWidget* popup = QApplication::activePopupWidget())
    if (!popup->close()) break;
  while (QWidget* dialog = QApplication::activeModalWidget())
    if (!dialog->close()) break;
}

int RunProcess(int count, char** arguments, int (*body)(), void (*save)(), void (*finish)()) {
  const bool hasX = std::getenv("DISPLAY") && *std::getenv("DISPLAY");
  if (!hasX && !std::getenv("WAYLAND_DISPLAY") && !std::getenv("QT_QPA_PLATFORM"))
    return NoDesktop();
  // Placement, staying on top and moving the pointer exist on X alone, which Wayland's desktops
  // serve too; and the window's own scaling is by whole steps.
  if (hasX) setenv("QT_QPA_PLATFORM", "xcb", 0);
  setenv("QT_ENABLE_HIGHDPI_SCALING", "0", 1);
  // One heap: each thread's own would cost 0.2 MiB in all.  Of those in a hurry only the sound
  // device asks for memory, and it has a second in hand.
  mallopt(M_ARENA_MAX, 1);
  FindProgramFolder();
  NameSound();
  mainThread = std::this_thread::get_id();
  wakeEvent = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  if (wakeEvent < 0) return NoMeans("file descriptor");
  if (!WatchForEnd(Wake, finish)) return NoMeans("thread");
  qInstallMessageHandler(OnToolkitMessage);
  // Our own name alone: the toolkit reads no options.
  int own = std::min(count, 1);
  QApplication application(own, arguments);
  TellLanguage(QLocale::system().name().toStdString());
  TellCollation(SortByLanguage);
  QApplication::setApplicationName("kwo");
  QApplication::setDesktopFileName("com.tavarine.kwo");
  QApplication::setWindowIcon(ProgramIcon());
  QApplication::setQuitOnLastWindowClosed(false);
  QObject::connect(&application, &QGuiApplication::commitDataRequest,
                   [](QSessionManager&) { EndProgram(); });
  QSocketNotifier notifier(wakeEvent, QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, OnWake);
  mainLoop = {WaitForEvents, Wake, SleepAlive, OnMainThread};
  saveEverything = save;
  std::atexit(OnExit);
  const int result = body();
  saveEverything = nullptr;
  DestroyMainWindow();
  mainLoop = {};
  return result;
}

}  // namespace kwo::platform
