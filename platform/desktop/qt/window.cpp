#include "platform/window.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "platform/desktop/config_folder.h"
#include "platform/desktop/qt/accessibility.h"
#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/startup_token.h"
#include "platform/desktop/sound_watch.h"
#include "platform/posix/screens_note.h"

namespace kwo::platform {
namespace {

Density CurrentDensity() {
  return mainWindow ? mainWindow->density : Density(Density::kWhole);
}

Point ToOwn(QPoint screen) {
  return CurrentDensity().ToOwn(Point{screen.x(), screen.y()});
}

QPoint ToScreen(Point own) {
  const Point screen = CurrentDensity().ToScreen(own);
  return {screen.x, screen.y};
}

void SetPointerShape() {
  if (mainWindow->pointerHides > 0) {
    mainWindow->setCursor(Qt::BlankCursor);
  } else {
    mainWindow->unsetCursor();
  }
}

void TellOfScreens() {
  mainWindow->Rescale();
  PostMessage({kMessageDisplayChange, 0, 0});
}

void WatchScreen(QScreen* screen) {
  QObject::connect(screen, &QScreen::geometryChanged, mainWindow.get(), TellOfScreens);
  QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, mainWindow.get(), TellOfScreens);
}

void WatchScreens() {
  for (QScreen* screen : QGuiApplication::screens()) WatchScreen(screen);
  QObject::connect(qApp, &QGuiApplication::screenAdded, mainWindow.get(), [](QScreen* screen) {
    WatchScreen(screen);
    TellOfScreens();
  });
  QObject::connect(qApp, &QGuiApplication::screenRemoved, mainWindow.get(), TellOfScreens);
  QObject::connect(qApp, &QGuiApplication::primaryScreenChanged, mainWindow.get(), TellOfScreens);
}

}  // namespace

bool CreateMainWindow(WindowProcedure procedure, void* owner) {
  if (!qApp) return false;
  MakeWindowReadable();
  mainWindow = std::make_unique<MainWindow>(procedure, owner);
  WatchScreens();
  mainWindow->winId();  // The native window, which is asked to stay on top before it is shown.
  return true;
}

bool MainWindowExists() {
  return mainWindow != nullptr;
}

void DispatchMessage(const Message& message) {
  if (mainWindow) mainWindow->procedure(mainWindow->owner, message);
}

Rectangle WindowRectangle() {
  if (!mainWindow) return {0, 0, 0, 0};
  const Point place = ToOwn(mainWindow->pos());
  return {place.x, place.y, mainWindow->size.width, mainWindow->size.height};
}

void MoveWindow(Point place) {
  if (mainWindow) mainWindow->move(ToScreen(place));
}

void ResizeWindow(Size size) {
  if (mainWindow &&
      (size.width != mainWindow->size.width || size.height != mainWindow->size.height))
    mainWindow->Resize(size);
}

void SetWindowShape(const std::vector<Rectangle>& runs) {
  if (mainWindow) mainWindow->Shape(runs);
}

void SetTopmost(bool topmost) {
  if (!mainWindow || mainWindow->topmost == topmost) return;
  mainWindow->topmost = topmost;
  mainWindow->windowHandle()->setFlag(Qt::WindowStaysOnTopHint, topmost);
}

void ShowWindow(WindowShow show) {
  if (!mainWindow) return;
  MainWindow& window = *mainWindow;
  const ShowState::Change change = window.show.Apply(show);
  soundIsWatched = window.show.OnScreen();
  if (change.hidden) window.hide();
  if (change.minimised) window.showMinimized();
  if (change.restored) window.showNormal();
  if (change.shown && !window.show.minimised) window.QWidget::show();
  window.FollowNativeWindow();
  if (change.shown || change.restored) PostMessage({kMessagePaint, 0, 0});
  SendChange(change, window.procedure, window.owner);
}

bool WindowMinimised() {
  return mainWindow && mainWindow->show.minimised;
}

void ActivateWindow() {
  if (!mainWindow) return;
  mainWindow->raise();
  mainWindow->activateWindow();
  EndStartup(*mainWindow->windowHandle(), TakeStartupToken());
}

void SetCapture() {
  if (mainWindow) mainWindow->captured = true;
}

void ReleaseCapture() {
  if (mainWindow) mainWindow->captured = false;
}

void ShowPointer(bool show) {
  if (!mainWindow) return;
  mainWindow->pointerHides = std::max(0, mainWindow->pointerHides + (show ? -1 : 1));
  SetPointerShape();
}

Point PointerPosition() {
  return ToOwn(QCursor::pos());
}

void SetPointerPosition(Point place) {
  QCursor::setPos(ToScreen(place));
}

std::vector<Rectangle> Screens() {
  std::vector<Rectangle> screens;
  for (const QScreen* screen : QGuiApplication::screens()) {
    // A last pixel that lies half on the screen counts: the pointer rests in it in a corner.
    const Point first = ToOwn(screen->geometry().topLeft());
    const Point last = ToOwn(screen->geometry().bottomRight());
    const Rectangle told{first.x, first.y, last.x + 1 - first.x, last.y + 1 - first.y};
    screens.insert(screen == QGuiApplication::primaryScreen() ? screens.begin() : screens.end(),
                   told);
  }
  return screens;
}

bool ScreensAreNew() {
  const std::string folder = ConfigFolder();
  return !folder.empty() && NoteScreens(folder + "/screens", Screens());
}

void SetTimer(int id, int milliseconds) {
  if (!mainWindow) return;
  KillTimer(id);
  auto* timer = new QTimer(mainWindow.get());
  QObject::connect(timer, &QTimer::timeout, [id] { PostMessage({kMessageTimer, id, 0}); });
  timer->start(milliseconds);
  mainWindow->timers[id] = timer;
}

void KillTimer(int id) {
  if (!mainWindow) return;
  const auto found = mainWindow->timers.find(id);
  if (found == mainWindow->timers.end()) return;
  delete found->second;
  mainWindow->timers.erase(found);
}

void CreateInputEdit(const char* name) {
  if (mainWindow && !mainWindow->edit) {
    mainWindow->edit = new InputEdit(mainWindow.get());
    mainWindow->edit->setAccessibleName(FromBytes(name));
    mainWindow->edit->show();
  }
}

void SetEditText(const char* text) {
  if (mainWindow && mainWindow->edit) mainWindow->edit->setText(FromBytes(text));
}

void GetEditText(char* text, int size) {
  QByteArray bytes;
  if (mainWindow && mainWindow->edit) bytes = mainWindow->edit->text().toUtf8();
  qsizetype length = std::min<qsizetype>(bytes.size(), size - 1);
  std::copy_n(bytes.constData(), length, text);
  text[length] = 0;
}

// Who asked for it by an assistive program may have left another window active.
void FocusEdit() {
  if (!mainWindow || !mainWindow->edit) return;
  if (!mainWindow->isActiveWindow()) mainWindow->activateWindow();
  mainWindow->edit->setFocus();
}

void FocusWindow() {
  if (mainWindow) mainWindow->setFocus();
}

bool EditHasFocus() {
  return mainWindow && mainWindow->edit && mainWindow->edit->hasFocus();
}

}  // namespace kwo::platform
