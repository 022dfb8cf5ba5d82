#pragma once

#include <QImage>
#include <QLineEdit>
#include <QWidget>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/density.h"
#include "platform/desktop/qt/shared_picture.h"
#include "platform/show_state.h"
#include "platform/window.h"

class QTimer;

namespace kwo::platform {

/// The hidden edit: a line of text above the window's visible area.
class InputEdit : public QLineEdit {
 public:
  explicit InputEdit(QWidget* parent);

 protected:
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
};

/// The window on the screen.  What happens to it only becomes messages; it paints from a picture of
/// its own, into which any thread copies.
class MainWindow : public QWidget {
 public:
  MainWindow(WindowProcedure procedure, void* owner);

  void Resize(Size size);
  void Shape(const std::vector<Rectangle>& runs);
  /// Takes the screen's density anew.
  void Rescale();
  /// To be called when it has been shown: the toolkit makes the native window anew where it has
  /// been put before the others, or back among them, since it was shown last.
  void FollowNativeWindow();
  void PutCaption();
  /// What any thread presents into: 32 bits a pixel, from the top, without padding.
  std::uint32_t* OwnPixels() const { return plain.Pixels(); }
  /// Brings the rows presented to the screen past the toolkit; false where it has to paint them.
  /// Any thread.
  bool SendRows();
  /// Brings them there in any case.
  void ShowRows();
  /// For buttons that were let go where the window does not see it, as over a menu.
  void PostMissedReleases();

  // Places in the window's own pixels.
  Density density;
  const WindowProcedure procedure;
  void* const owner;
  Size size{0, 0};
  std::vector<Rectangle> shape;
  ShowState show;
  bool topmost = false;
  bool captured = false;
  Qt::MouseButtons pressed;
  int pointerHides = 0;
  InputEdit* edit = nullptr;
  std::map<int, QTimer*> timers;

 protected:
  /// None where the picture comes to the screen without the toolkit.
  QPaintEngine* paintEngine() const override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // A picture, in memory that the display's server reads where it can.
  struct ScreenPicture {
    std::unique_ptr<SharedPicture> shared;
    QImage image;
    std::uint32_t* Pixels() const;
  };
  ScreenPicture MakePicture(Size pictureSize) const;
  void FitToScreen(Density now);
  const ScreenPicture& Shown() const { return enlarger ? enlarged : plain; }
  bool IsDirect() const { return Shown().shared != nullptr; }
  QRect Prepare(unsigned rows);
  Point OwnPlace(QPointF screen) const;
  void PostButton(const QMouseEvent& event, int left, int right);

  // Held while rows go to the screen, and while what they go through is exchanged.
  std::mutex screenLock;
  ScreenPicture plain, enlarged;
  std::unique_ptr<Enlarger> enlarger;  // none where the screen shows the window's own pixels
};

/// The one window, or null.  Main thread.
extern std::unique_ptr<MainWindow> mainWindow;

/// Depth of menus and dialogs of our own: while one is open, its taking the focus is no loss of the
/// window's activation.
extern int openDialogs;

/// Closes what of them is open, as the user would.
void CloseDialogs();

/// Carries out what other threads have asked of the window.  Main thread.
void ServeWindow();

/// Keeps the files of a drop for the logic, and gives their number.
int KeepDrop(std::vector<std::string> paths);

/// Text between the system's bytes and the desktop's.
QString FromBytes(const char* text);

}  // namespace kwo::platform
