#include "platform/desktop/qt/main_window.h"

#ifdef __x86_64__
#include <tmmintrin.h>
#endif

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStringDecoder>
#include <QWheelEvent>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "base/shared.h"
#include "platform/decoding.h"
#include "platform/desktop/main_loop.h"
#include "platform/desktop/qt/accessibility.h"
#include "platform/desktop/qt/song_uris.h"
#include "platform/desktop/sound_watch.h"

namespace kwo::platform {

std::unique_ptr<MainWindow> mainWindow;
int openDialogs = 0;

namespace {

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

Density ScreenDensity() {
  return Density::Of(QGuiApplication::primaryScreen()->logicalDotsPerInch());
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
      density(ScreenDensity()),
      procedure(newProcedure),
      owner(newOwner) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_NoSystemBackground);
  // Some Wayland desktops pass over a window's shape.  With alpha what lies outside it is clear
  // there too, as nobody draws it.
  if (std::getenv("WAYLAND_DISPLAY")) setAttribute(Qt::WA_TranslucentBackground);
  setMouseTracking(true);
  setAcceptDrops(true);
  setFocusPolicy(Qt::NoFocus);
  setWindowTitle("KWO");
}

std::uint32_t* MainWindow::ScreenPicture::Pixels() const {
  return reinterpret_cast<std::uint32_t*>(const_cast<uchar*>(image.constBits()));
}

MainWindow::ScreenPicture MainWindow::MakePicture(Size pictureSize) const {
  const int width = std::max(1, pictureSize.width), height = std::max(1, pictureSize.height);
  ScreenPicture picture{SharedPicture::Create(*windowHandle(), {width, height}), {}};
  picture.image = picture.shared ? QImage(reinterpret_cast<uchar*>(picture.shared->Pixels()), width,
                                          height, QImage::Format_RGB32)
                                 : QImage(width, height, QImage::Format_RGB32);
  picture.image.fill(Qt::black);
  return picture;
}

void MainWindow::Resize(Size newSize) {
  {
    std::lock_guard guard(screenLock);
    size = newSize;
    plain = MakePicture(size);
  }
  FitToScreen(density);
  presentTarget = this;
}

// The picture that is presented into stays.
void MainWindow::FitToScreen(Density now) {
  {
    std::lock_guard guard(screenLock);
    density = now;
    enlarger.reset();
    enlarged = {};
    if (!density.Plain()) {
      enlarger =
          std::make_unique<Enlarger>(density, Size{plain.image.width(), plain.image.height()});
      enlarged = MakePicture(enlarger->ScreenSize());
      enlarger->Enlarge(plain.Pixels(), 0, plain.image.height(), enlarged.Pixels());
    }
    setAttribute(Qt::WA_PaintOnScreen, IsDirect());
  }
  setFixedSize(Shown().image.size());
}

void MainWindow::Shape(const std::vector<Rectangle>& runs) {
  shape = runs;
  if (runs.empty()) {
    clearMask();
    return;
  }
  std::vector<QRect> rectangles;
  rectangles.reserve(runs.size());
  for (const Rectangle& run : runs) {
    const Rectangle covered = density.Covered(run);
    rectangles.emplace_back(covered.x, covered.y, covered.width, covered.height);
  }
  QRegion region;
  region.setRects(rectangles.data(), static_cast<int>(rectangles.size()));
  setMask(region);
}

void MainWindow::Rescale() {
  const Density now = ScreenDensity();
  if (now == density) return;
  FitToScreen(now);
  Shape(shape);
}

void MainWindow::FollowNativeWindow() {
  std::lock_guard guard(screenLock);
  for (const ScreenPicture* picture : {&plain, &enlarged})
    if (picture->shared) picture->shared->Follow(*windowHandle());
}

QPaintEngine* MainWindow::paintEngine() const {
  return IsDirect() ? nullptr : QWidget::paintEngine();
}

// Enlarges changed rows, and gives where on the screen they are.
QRect MainWindow::Prepare(unsigned rows) {
  const int first = static_cast<int>(rows >> 16), end = static_cast<int>(rows & 0xFFFF);
  const QRect whole = Shown().image.rect();
  if (!enlarger) return QRect(0, first, whole.width(), end - first);
  enlarger->Enlarge(plain.Pixels(), first, end, enlarged.Pixels());
  const int top = density.FirstRow(first);
  return QRect(0, top, whole.width(), density.EndRow(end) - top) & whole;
}

bool MainWindow::SendRows() {
  std::lock_guard guard(screenLock);
  if (!IsDirect()) return false;
  if (const unsigned rows = changedRows.exchange(0)) {
    const QRect area = Prepare(rows);
    Shown().shared->Show(area.top(), area.height());
  }
  return true;
}

void MainWindow::ShowRows() {
  if (SendRows()) return;
  if (const unsigned rows = changedRows.exchange(0)) repaint(Prepare(rows));
}

void MainWindow::PutCaption() {
  QString title;
  {
    std::lock_guard guard(captionLock);
    title = FromBytes(caption.c_str());
  }
  setWindowTitle(title);
}

void MainWindow::paintEvent(QPaintEvent* event) {
  const QRect area = event->rect();
  if (IsDirect()) {
    Shown().shared->Show(area.top(), area.height());
    return;
  }
  QPainter painter(this);
  // In strips: a larger picture is shared out among threads of the toolkit's own, whose waking
  // costs more than they save.
  for (int y = area.top(); y <= area.bottom(); y += kStripRows) {
    const QRect strip = QRect(area.left(), y, area.width(), kStripRows) & area;
    painter.drawImage(strip, Shown().image, strip);
  }
}

Point MainWindow::OwnPlace(QPointF screen) const {
  return density.ToOwn(
      {static_cast<int>(std::floor(screen.x())), static_cast<int>(std::floor(screen.y()))});
}

void MainWindow::PostButton(const QMouseEvent& event, int left, int right) {
  const int place = PackPlace(OwnPlace(event.position()));
  pressed.setFlag(event.button(), event.type() != QEvent::MouseButtonRelease);
  const unsigned keys = KeysOf(event.modifiers());
  if (event.button() == Qt::LeftButton) PostMessage({left, 0, place, keys});
  if (event.button() == Qt::RightButton) PostMessage({right, 0, place, keys});
}

void MainWindow::PostMissedReleases() {
  const Qt::MouseButtons missed = pressed & ~QGuiApplication::mouseButtons();
  pressed &= ~missed;
  const int place = PackPlace(OwnPlace(QCursor::pos() - pos()));
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
  const Point place = OwnPlace(event->position());
  if (captured || Rectangle{0, 0, size.width, size.height}.Contains(place))
    PostMessage({kMessageMouseMove, 0, PackPlace(place)});
}

void MainWindow::wheelEvent(QWheelEvent* event) {
  PostMessage({kMessageWheel, event->angleDelta().y(), PackPlace(OwnPlace(event->position()))});
}

void MainWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange || isMinimized() == show.minimised) return;
  // Not our own doing: the desktop's.
  show.minimised = isMinimized();
  soundIsWatched = show.OnScreen();
  PostMessage({kMessageSize, show.minimised ? kSizeMinimised : kSizeRestored, 0});
}

bool MainWindow::event(QEvent* event) {
  if (event->type() == QEvent::WindowDeactivate && openDialogs == 0)
    PostMessage({kMessageActivate, 0, 0});
  if (event->type() == QEvent::WindowActivate) PostMessage({kMessageActivate, 1, 0});
  if (event->type() == QEvent::ToolTip) {
    const auto& help = static_cast<const QHelpEvent&>(*event);
    ShowTip(OwnPlace(help.pos()), help.globalPos());
  }
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
  mainWindow->ShowRows();
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
    std::uint32_t* to = window->OwnPixels() + line * picture.width;
    if (!CopyPixels(picture.bits + row * picture.stride + 3 * area.x, to + area.x, area.width))
      continue;
    if (first < 0) first = y;
    end = y + 1;
  }
  if (first >= 0) AddChangedRows(first, end);
}

// The one who drew a frame sends it, which spares the main thread a waking.
void ShowPresented() {
  MainWindow* window = presentTarget;
  if (window && changedRows != 0 && !window->SendRows() && mainLoop.wake) mainLoop.wake();
}

int EditCaret() {
  return editCaret;
}

void DestroyMainWindow() {
  presentTarget = nullptr;
  mainWindow.reset();
}

}  // namespace kwo::platform
