#include "platform/window.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "platform/desktop/qt/main_window.h"

namespace kwo::platform {
namespace {

int Scale() {
  return mainWindow ? mainWindow->scale : 1;
}

void SetPointerShape() {
  if (mainWindow->pointerHides > 0) {
    mainWindow->setCursor(Qt::BlankCursor);
  } else {
    mainWindow->unsetCursor();
  }
}

int DivideDown(int value, int by) {
  return value >= 0 ? value / by : -((by - 1 - value) / by);
}

}  // namespace

bool CreateMainWindow(WindowProcedure procedure, void* owner) {
  if (!qApp) return false;
  mainWindow = std::make_unique<MainWindow>(procedure, owner);
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
  const QPoint place = mainWindow->pos();
  return {DivideDown(place.x(), Scale()), DivideDown(place.y(), Scale()), mainWindow->size.width,
          mainWindow->size.height};
}

void MoveWindow(Point place) {
  if (mainWindow) mainWindow->move(place.x * Scale(), place.y * Scale());
}

void ResizeWindow(Size size) {
  if (mainWindow &&
      (size.width != mainWindow->size.width || size.height != mainWindow->size.height))
    mainWindow->Resize(size);
}

void SetWindowShape(const std::vector<Rectangle>& runs) {
  if (!mainWindow) return;
  if (runs.empty()) {
    mainWindow->clearMask();
    return;
  }
  std::vector<QRect> rectangles;
  rectangles.reserve(runs.size());
  for (const Rectangle& run : runs)
    rectangles.emplace_back(run.x * Scale(), run.y * Scale(), run.width * Scale(),
                            run.height * Scale());
  QRegion region;
  region.setRects(rectangles.data(), static_cast<int>(rectangles.size()));
  mainWindow->setMask(region);
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
  if (change.hidden) window.hide();
  if (change.minimised) window.showMinimized();
  if (change.restored) window.showNormal();
  if (change.shown && !window.show.minimised) window.QWidget::show();
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
  const QPoint place = QCursor::pos();
  return {DivideDown(place.x(), Scale()), DivideDown(place.y(), Scale())};
}

void SetPointerPosition(Point place) {
  QCursor::setPos(place.x * Scale(), place.y * Scale());
}

Size ScreenSize() {
  const QSize size = QGuiApplication::primaryScreen()->size();
  return {size.width() / Scale(), size.height() / Scale()};
}

bool KeyDown(Key key) {
  const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
  return held.testFlag(key == Key::kShift ? Qt::ShiftModifier : Qt::ControlModifier);
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

void CreateInputEdit() {
  if (mainWindow && !mainWindow->edit) {
    mainWindow->edit = new InputEdit(mainWindow.get());
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

void FocusEdit() {
  if (mainWindow && mainWindow->edit) mainWindow->edit->setFocus();
}

void FocusWindow() {
  if (mainWindow) mainWindow->setFocus();
}

bool EditHasFocus() {
  return mainWindow && mainWindow->edit && mainWindow->edit->hasFocus();
}

}  // namespace kwo::platform
