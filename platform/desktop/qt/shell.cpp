#include "platform/shell.h"

#include <QActionGroup>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFileDialog>
#include <QMenu>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QToolTip>
#include <map>

#include "platform/desktop/end_watch.h"
#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/sound_name.h"
#include "platform/desktop/qt/start_program.h"
#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr int kErrorFileNotFound = 2;
constexpr char kOpener[] = "xdg-open";

std::unique_ptr<QSystemTrayIcon> trayIcon;
std::unique_ptr<QMenu> trayMenu;
std::map<int, std::vector<std::string>> drops;
int lastDrop = 0;
MenuColors menuColors;

struct DialogOpen {
  DialogOpen() { ++openDialogs; }
  ~DialogOpen() { --openDialogs; }
};

std::string FromDesktop(const QString& path) {
  return FromMachinePath(path.toLocal8Bit().constData());
}

QString ToDesktop(const char* path) {
  return QString::fromLocal8Bit(ToMachinePath(path).c_str());
}

// "Name (Kinds) (*.MP3 *.mp3)" of each pair; files are named in either case.
QStringList NameFilters(const char* filter) {
  QStringList filters;
  while (*filter) {
    const QString name = QString::fromUtf8(filter);
    filter += std::char_traits<char>::length(filter) + 1;
    const QString patterns = QString::fromUtf8(filter).replace(';', ' ');
    filter += std::char_traits<char>::length(filter) + 1;
    filters << name + " (" + patterns + " " + patterns.toLower() + ")";
  }
  return filters;
}

QColor ToColor(std::uint32_t color) {
  return QColor(color & 255, color >> 8 & 255, color >> 16 & 255);
}

// In pixels: the toolkit's other units do not follow the screen's density while the program runs.
QString MenuStyle() {
  QString style =
      "QMenu { background: %1; color: %2; border: %6px solid %4; padding: %9px 0 }"
      "QMenu::item { padding: %10px %12px }"
      "QMenu::item:selected { background: %4; color: %3 }"
      "QMenu::separator { background: %4; height: %6px; margin: %9px 0 }"
      "QMenu::indicator { left: %11px; width: %8px; height: %8px; border-radius: %7px }"
      "QMenu::indicator:checked { background: %5 }";
  for (const std::uint32_t color : {menuColors.ground, menuColors.text, menuColors.pointedText,
                                    menuColors.pointedGround, menuColors.mark})
    style = style.arg(ToColor(color).name());
  const auto scaled = [](int own) { return mainWindow ? mainWindow->density.ToScreen(own) : own; };
  const int dotRadius = scaled(3);
  for (const int length :
       {scaled(1), dotRadius, 2 * dotRadius, scaled(4), scaled(5), scaled(9), scaled(24)})
    style = style.arg(length);
  return style;
}

// Words by blanks, those in quotes whole; paths get the machine's separators.  All between the
// outermost quotes behind the opener is one word, whatever quotes are in it.
QStringList SplitLine(const char* line) {
  const QString text = QString::fromLocal8Bit(line), opener = QString(kOpener) + " \"";
  QStringList words = text.startsWith(opener) && text.size() > opener.size() && text.endsWith('"')
                          ? QStringList{kOpener, text.sliced(opener.size()).chopped(1)}
                          : QProcess::splitCommand(text);
  for (QString& word : words) word.replace('\\', '/');
  return words;
}

}  // namespace

int KeepDrop(std::vector<std::string> paths) {
  drops[++lastDrop] = std::move(paths);
  return lastDrop;
}

std::vector<std::string> TakeDroppedFiles(int drop) {
  auto found = drops.extract(drop);
  return found ? std::move(found.mapped()) : std::vector<std::string>();
}

// The dialogs only choose: without their ReadOnly a slip of the pointer moves a folder into
// another, and a key removes it.

bool ChooseFiles(const char* filter, const char* folder, std::vector<std::string>& paths) {
  const DialogOpen open;
  QFileDialog dialog(mainWindow.get(), "Choose Songs", ToDesktop(folder));
  dialog.setOption(QFileDialog::ReadOnly);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setFileMode(QFileDialog::ExistingFiles);
  dialog.setNameFilters(NameFilters(filter));
  if (!dialog.exec()) return false;
  for (const QString& path : dialog.selectedFiles())
    if (!path.contains('\\')) paths.push_back(FromDesktop(path));
  SetCurrentFolder(FromDesktop(dialog.directory().absolutePath()).c_str());
  return !paths.empty();
}

bool ChooseFolder(const char* title, std::string& folder) {
  const DialogOpen open;
  const QString chosen = QFileDialog::getExistingDirectory(
      mainWindow.get(), title, QString(), QFileDialog::ShowDirsOnly | QFileDialog::ReadOnly);
  if (chosen.isEmpty() || chosen.contains('\\')) return false;
  folder = FromDesktop(chosen);
  return true;
}

void SetMenuColors(const MenuColors& colors) {
  menuColors = colors;
  QPalette tips;
  tips.setColor(QPalette::ToolTipBase, ToColor(colors.ground));
  tips.setColor(QPalette::ToolTipText, ToColor(colors.text));
  tips.setColor(QPalette::WindowText, ToColor(colors.text));  // the frame's
  QToolTip::setPalette(tips);
}

void TrackPopupMenu(std::span<const MenuItem> items, Point place) {
  const DialogOpen open;
  QMenu menu(mainWindow.get());
  menu.setStyleSheet(MenuStyle());
  QActionGroup marks(&menu);
  for (const MenuItem& item : items) {
    if (item.command == 0) {
      menu.addSeparator();
      continue;
    }
    QAction* action = menu.addAction(item.text);
    action->setData(item.command);
    if (item.mark == MenuMark::kNone) continue;
    action->setCheckable(true);
    action->setChecked(item.mark == MenuMark::kChosen);
    marks.addAction(action);
  }
  if (mainWindow) place = mainWindow->density.ToScreen(place);
  // An item may also be chosen without the pointer and the keys, by an assistive program.
  const QAction* chosen = nullptr;
  QObject::connect(&menu, &QMenu::triggered, [&](const QAction* action) {
    chosen = action;
    menu.close();
  });
  menu.exec(QPoint(place.x, place.y));
  if (mainWindow) mainWindow->PostMissedReleases();
  if (chosen) PostMessage({kMessageCommand, chosen->data().toInt(), 0});
}

// By this way of showing icons the desktop asks for the menu and shows it by itself.
bool DesktopShowsMenus() {
  const QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
  return bus && bus->isServiceRegistered("org.kde.StatusNotifierWatcher");
}

void ShowTrayIcon(const char* tip, std::span<const MenuItem> items) {
  if (!mainWindow) return;
  constexpr qsizetype kTipLength = 63;
  trayIcon = std::make_unique<QSystemTrayIcon>(mainWindow->windowIcon());
  trayIcon->setToolTip(FromBytes(tip).left(kTipLength));
  const bool menuIsGiven = DesktopShowsMenus();
  QObject::connect(trayIcon.get(), &QSystemTrayIcon::activated,
                   [menuIsGiven](QSystemTrayIcon::ActivationReason reason) {
                     if (reason == QSystemTrayIcon::Trigger)
                       PostMessage({kMessageTray, 0, kMessageLeftDown});
                     if (reason == QSystemTrayIcon::Context && !menuIsGiven)
                       PostMessage({kMessageTray, 0, kMessageRightDown});
                   });
  if (menuIsGiven) {
    trayMenu = std::make_unique<QMenu>();
    for (const MenuItem& item : items) {
      if (item.command == 0) {
        trayMenu->addSeparator();
        continue;
      }
      const QAction* action = trayMenu->addAction(item.text);
      QObject::connect(action, &QAction::triggered, [command = item.command] {
        PostMessage({kMessageCommand, command, 0});
      });
    }
    trayIcon->setContextMenu(trayMenu.get());
  }
  trayIcon->show();
}

void HideTrayIcon() {
  trayIcon.reset();
  trayMenu.reset();
}

// The desktop's opener stands for every class.  The logic puts its target in the stead of "%1",
// quotes and all; with the quotes doubled, a path with blanks keeps a pair around it.
int ReadClassRegistry(const char* key, std::string& value) {
  if (!QString::fromUtf8(key).endsWith("\\shell\\open\\command") ||
      QStandardPaths::findExecutable(kOpener).isEmpty())
    return kErrorFileNotFound;
  value = std::string(kOpener) + " \"\"%1\"\"";
  return 0;
}

bool RunCommandLine(const char* line) {
  QStringList words = SplitLine(line);
  if (words.isEmpty()) return false;
  const QString program = words.takeFirst();
  return StartProgram(program, words);
}

bool StartProgram(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setProgram(program);
  process.setArguments(arguments);
  // What is meant for this program alone is taken back.
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {kPulseName, kPipeWireName}) environment.remove(name);
  process.setProcessEnvironment(environment);
  process.setChildProcessModifier(UnblockEndSignals);
  return process.startDetached();
}

}  // namespace kwo::platform
