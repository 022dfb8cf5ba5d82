#include "platform/desktop/qt/main_window.h"

#ifdef __x86_64__
#include <tmmintrin.h>
#endif

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStringDecoder>
#include <QWheelEvent>
#include <algorithm>
#include <cstring>
#include <mutex>

#include "base/shared.h"
#include "platform/decoding.h"
#include "platform/desktop/main_loop.h"
#include "platform/desktop/qt/song_uris.h"

namespace kwo::platform {

std::unique_ptr<MainWindow> mainWindow;
int openDialogs = 0;

namespace {

constexpr double kPlainDotsPerInch = 96;
constexpr int kStripRows = 40;
constexpr int kEditWidth = 100, kEditHeight = 18, kEditAbove = -100;

// What other threads ask of the window.
std::mutex captionLock;
std::string caption;
std::atomic<bool> captionChanged = false;
// Rows of the front picture that the screen does not show yet: first << 16 | end, 0 for none.
std::atomic<unsigned> changedRows = 0;
std::atomic<int> editCaret = 0;
std::atomic<MainWindow*> presentTarget = nullptr;
// What any thread brings to the screen itself; null where the main thread has to paint.
std::mutex directLock;
SharedPicture* directPicture = nullptr;

int ScreenScale() {
  const double dots = QGuiApplication::primaryScreen()->logicalDotsPerInch();
  return std::max(1, static_cast<int>(dots / kPlainDotsPerInch));
}

constexpr std::uint32_t kOpaque = 0xFF000000u;

// 24 bits to 32.
KWO_MAY_TEAR void WidenPixels(const std::uint8_t* from, std::uint32_t* to, int count) {
  for (int x = 0; x < count; ++x, from += 3)
    to[x] = kOpaque | static_cast<std::uint32_t>(from[2]) << 16 |
            static_cast<std::uint32_t>(from[1]) << 8 | from[0];
}

#ifdef __x86_64__
// The same, four pixels at once; for machines that move bytes about in a register.
__attribute__((target("ssse3"))) KWO_MAY_TEAR void ShufflePixels(const std::uint8_t* from,
                                                                 std::uint32_t* to, int count) {
  constexpr int kPixels = 4, kRead = 16;  // bytes, of which the last four are the next pixels'
  const __m128i places = _mm_set_epi8(-1, 11, 10, 9, -1, 8, 7, 6, -1, 5, 4, 3, -1, 2, 1, 0);
  const __m128i opaque = _mm_set1_epi32(static_cast<int>(kOpaque));
  int x = 0;
  for (; 3 * (count - x) >= kRead; x += kPixels) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 3 * x));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + x),
                     _mm_or_si128(_mm_shuffle_epi8(bytes, places), opaque));
  }
  WidenPixels(from + 3 * x, to + x, count - x);
}

const auto widenPixels = __builtin_cpu_supports("ssse3") ? ShufflePixels : WidenPixels;
#else
const auto widenPixels = WidenPixels;
#endif

// Another thread may be presenting while the main thread paints: a frame may show torn, and the
// next one is whole.  True if a pixel has changed.
KWO_MAY_TEAR bool CopyPixels(const std::uint8_t* from, std::uint32_t* to, int count) {
  constexpr int kChunk = 128;
  std::uint32_t chunk[kChunk];
  bool changed = false;
  for (int x = 0; x < count; x += kChunk) {
    const int size = std::min(kChunk, count - x);
    const std::size_t bytes = sizeof chunk[0] * static_cast<std::size_t>(size);
    widenPixels(from + 3 * x, chunk, size);
    // Most are as they were, and what is not written need not come back from memory.
    if (std::memcmp(chunk, to + x, bytes) == 0) continue;
    std::memcpy(to + x, chunk, bytes);
    changed = true;
  }
  return changed;
}

void AddChangedRows(int first, int end) {
  const auto begin = static_cast<unsigned>(first), behind = static_cast<unsigned>(end);
  unsigned old = changedRows, merged;
  do {
    merged = old == 0 ? begin << 16 | behind
                      : std::min(begin, old >> 16) << 16 | std::max(behind, old & 0xFFFF);
  } while (!changedRows.compare_exchange_weak(old, merged));
}

std::vector<std::string> DroppedFiles(const QMimeData& data) {
  QByteArrayList uris;
  for (const QByteArray& line : data.data("text/uri-list").split('\n')) uris << line.trimmed();
  const std::vector<std::string> paths = PathsOf(uris);
  return paths.empty() ? paths : SongsInTime(paths);
}

unsigned KeysOf(Qt::KeyboardModifiers held) {
  return (held.testFlag(Qt::ShiftModifier) ? KeyBit(Key::kShift) : 0) |
         (held.testFlag(Qt::ControlModifier) ? KeyBit(Key::kControl) : 0);
}

}  // namespace

QString FromBytes(const char* text) {
  return QString::fromStdString(Decoded(text));
}

InputEdit::InputEdit(QWidget* parent) : QLineEdit(parent) {
  setFocusPolicy(Qt::NoFocus);
  setFrame(false);
  setGeometry(0, kEditAbove, kEditWidth, kEditHeight);
  connect(this, &QLineEdit::textChanged, [] {
    PostMessage({kMessageCommand, kEditChanged << 16, 0});
  });
  connect(this, &QLineEdit::cursorPositionChanged,
          [this](int, int now) { editCaret = static_cast<int>(text().left(now).toUtf8().size()); });
}

void InputEdit::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  PostMessage({kMessageCommand, kEditLostFocus << 16, 0});
}

void InputEdit::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
    parentWidget()->setFocus();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

MainWindow::MainWindow(WindowProcedure newProcedure, void* newOwner)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
                           Qt::WindowMinimizeButtonHint),
      scale(ScreenScale()),
      procedure(newProcedure),
      owner(newOwner) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_NoSystemBackground);
  setMouseTracking(true);
  setAcceptDrops(true);
  setFocusPolicy(Qt::NoFocus);
  setWindowTitle("KWO");
}

void MainWindow::Resize(Size newSize) {
  SetDirect(false);
  size = newSize;
  const int width = std::max(1, size.width), height = std::max(1, size.height);
  shared = SharedPicture::Create(*windowHandle(), {width, height});
  front = shared ? QImage(reinterpret_cast<uchar*>(shared->Pixels()), width, height,
                          QImage::Format_RGB32)
                 : QImage(width, height, QImage::Format_RGB32);
  front.fill(Qt::black);
  setFixedSize(width * scale, height * scale);
  SetDirect(IsDirect());
  presentTarget = this;
}

void MainWindow::SetDirect(bool direct) {
  setAttribute(Qt::WA_PaintOnScreen, direct);
  std::lock_guard guard(directLock);
  directPicture = direct ? shared.get() : nullptr;
}

void MainWindow::Shape(const std::vector<Rectangle>& runs) {
  shape = runs;
  if (runs.empty()) {
    clearMask();
    return;
  }
  std::vector<QRect> rectangles;
  rectangles.reserve(runs.size());
  for (const Rectangle& run : runs)
    rectangles.emplace_back(run.x * scale, run.y * scale, run.width * scale, run.height * scale);
  QRegion region;
  region.setRects(rectangles.data(), static_cast<int>(rectangles.size()));
  setMask(region);
}

void MainWindow::Rescale() {
  const int now = ScreenScale();
  if (now == scale) return;
  scale = now;
  setFixedSize(std::max(1, size.width) * scale, std::max(1, size.height) * scale);
  SetDirect(IsDirect());
  Shape(shape);
}

QPaintEngine* MainWindow::paintEngine() const {
  return IsDirect() ? nullptr : QWidget::paintEngine();
}

void MainWindow::ShowRows(int first, int end) {
  if (IsDirect()) {
    shared->Show(first, end - first);
  } else {
    repaint(0, first * scale, width(), (end - first) * scale);
  }
}

void MainWindow::PutCaption() {
  std::lock_guard guard(captionLock);
  setWindowTitle(FromBytes(caption.c_str()));
}

void MainWindow::paintEvent(QPaintEvent* event) {
  const QRect area = event->rect();
  if (IsDirect()) {
    shared->Show(area.top(), area.height());
    return;
  }
  QPainter painter(this);
  painter.scale(scale, scale);
  const int left = area.left() / scale, top = area.top() / scale;
  const int right = area.right() / scale, bottom = area.bottom() / scale;
  // In strips: a larger picture is shared out among threads of the toolkit's own, whose waking
  // costs more than they save.
  for (int y = top; y <= bottom; y += kStripRows) {
    const QRect strip(left, y, right - left + 1, std::min(kStripRows, bottom - y + 1));
    painter.drawImage(strip, front, strip);
  }
}

Point MainWindow::LocalPlace(const QMouseEvent& event) const {
  const QPointF place = event.position();
  return {static_cast<int>(std::floor(place.x() / scale)),
          static_cast<int>(std::floor(place.y() / scale))};
}

void MainWindow::PostButton(const QMouseEvent& event, int left, int right) {
  const int place = PackPlace(LocalPlace(event));
  pressed.setFlag(event.button(), event.type() != QEvent::MouseButtonRelease);
  const unsigned keys = KeysOf(event.modifiers());
  if (event.button() == Qt::LeftButton) PostMessage({left, 0, place, keys});
  if (event.button() == Qt::RightButton) PostMessage({right, 0, place, keys});
}

void MainWindow::PostMissedReleases() {
  const Qt::MouseButtons missed = pressed & ~QGuiApplication::mouseButtons();
  pressed &= ~missed;
  const QPoint pointer = (QCursor::pos() - pos()) / scale;
  const int place = PackPlace({std::max(0, pointer.x()), std::max(0, pointer.y())});
  if (missed & Qt::LeftButton) PostMessage({kMessageLeftUp, 0, place});
  if (missed & Qt::RightButton) PostMessage({kMessageRightUp, 0, place});
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
  PostButton(*event, kMessageLeftDown, kMessageRightDown);
}

void MainWindow::mouseReleaseEvent(QMouseEvent* event) {
  PostButton(*event, kMessageLeftUp, kMessageRightUp);
}

void MainWindow::mouseDoubleClickEvent(QMouseEvent* event) {
  PostButton(*event, kMessageLeftDouble, kMessageRightDouble);
}

void MainWindow::mouseMoveEvent(QMouseEvent* event) {
  const Point place = LocalPlace(*event);
  if (captured || Rectangle{0, 0, size.width, size.height}.Contains(place))
    PostMessage({kMessageMouseMove, 0, PackPlace(place)});
}

void MainWindow::wheelEvent(QWheelEvent* event) {
  const QPointF place = event->position() / scale;
  PostMessage({kMessageWheel, event->angleDelta().y(),
               PackPlace({static_cast<int>(place.x()), static_cast<int>(place.y())})});
}

void MainWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange || isMinimized() == show.minimised) return;
  // Not our own doing: the desktop's.
  show.minimised = isMinimized();
  PostMessage({kMessageSize, show.minimised ? kSizeMinimised : kSizeRestored, 0});
}

bool MainWindow::event(QEvent* event) {
  if (event->type() == QEvent::WindowDeactivate && openDialogs == 0)
    PostMessage({kMessageActivate, 0, 0});
  if (event->type() == QEvent::WindowActivate) PostMessage({kMessageActivate, 1, 0});
  return QWidget::event(event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  PostMessage({kMessageSysCommand, kSystemClose, 0});
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (DroppedFiles(*event->mimeData()).empty()) return;
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void MainWindow::dropEvent(QDropEvent* event) {
  std::vector<std::string> files = DroppedFiles(*event->mimeData());
  if (files.empty()) return;
  event->setDropAction(Qt::CopyAction);
  event->accept();
  PostMessage({kMessageDropFiles, KeepDrop(std::move(files)), 0, KeysOf(event->modifiers())});
}

void ServeWindow() {
  if (!mainWindow) return;
  if (captionChanged.exchange(false)) mainWindow->PutCaption();
  if (const unsigned rows = changedRows.exchange(0))
    mainWindow->ShowRows(static_cast<int>(rows >> 16), static_cast<int>(rows & 0xFFFF));
}

void SetCaption(const char* text) {
  {
    std::lock_guard guard(captionLock);
    caption = text;
  }
  captionChanged = true;
  if (mainLoop.wake) mainLoop.wake();
}

// Most of a frame is as it was before, and often all of it: only what has changed is painted.
void Present(const Picture& picture, const Rectangle& area) {
  MainWindow* window = presentTarget;
  if (!window || picture.width != window->size.width || picture.height != window->size.height)
    return;
  int first = -1, end = 0;
  for (int y = area.y; y < area.y + area.height; ++y) {
    const std::ptrdiff_t row = picture.height - 1 - y;
    const std::ptrdiff_t line = y;
    auto* to = reinterpret_cast<std::uint32_t*>(const_cast<uchar*>(window->front.constBits()) +
                                                line * window->front.bytesPerLine());
    if (!CopyPixels(picture.bits + row * picture.stride + 3 * area.x, to + area.x, area.width))
      continue;
    if (first < 0) first = y;
    end = y + 1;
  }
  if (first >= 0) AddChangedRows(first, end);
}

// The one who drew a frame sends it, which spares the main thread a waking.
void ShowPresented() {
  if (changedRows == 0) return;
  {
    std::lock_guard guard(directLock);
    if (directPicture) {
      const unsigned rows = changedRows.exchange(0);
      directPicture->Show(static_cast<int>(rows >> 16),
                          static_cast<int>(rows & 0xFFFF) - static_cast<int>(rows >> 16));
      return;
    }
  }
  if (mainLoop.wake) mainLoop.wake();
}

int EditCaret() {
  return editCaret;
}

void DestroyMainWindow() {
  presentTarget = nullptr;
  if (mainWindow) mainWindow->SetDirect(false);
  mainWindow.reset();
}

}  // namespace kwo::platform
