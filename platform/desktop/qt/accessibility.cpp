#include "platform/desktop/qt/accessibility.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QTimer>
#include <QToolTip>
#include <map>
#include <memory>

#include "platform/accessibility.h"
#include "platform/control_watch.h"
#include "platform/desktop/qt/desktop_request.h"
#include "platform/desktop/qt/main_window.h"

// The toolkit speaks with assistive programs, and asks here, on the main thread, whenever one of
// them does.  Every answer is made anew: what is told is always what is on the screen.

namespace kwo::platform {
namespace {

constexpr int kWindow = 0;  // in the stead of a control's id
constexpr int kLookMilliseconds = 100;

ControlList (*listControls)() = nullptr;
// Of the controls, by their ids; the toolkit owns them.
std::map<int, QAccessibleInterface*> readers;
ControlWatch watch;
std::unique_ptr<QTimer> looks;

ControlList List() {
  return listControls ? listControls() : ControlList{};
}

void Look();

void AwaitLook() {
  if (!looks) {
    looks = std::make_unique<QTimer>();
    looks->setSingleShot(true);
    QObject::connect(looks.get(), &QTimer::timeout, Look);
  }
  if (!looks->isActive()) looks->start(kLookMilliseconds);
}

QAccessible::Role ToolkitRole(Role role) {
  switch (role) {
    case Role::kButton:
      return QAccessible::Button;
    case Role::kCheckBox:
      return QAccessible::CheckBox;
    case Role::kSlider:
      return QAccessible::Slider;
    case Role::kList:
      return QAccessible::List;
    case Role::kListItem:
      return QAccessible::ListItem;
    case Role::kLabel:
      return QAccessible::StaticText;
    case Role::kPicture:
      return QAccessible::Graphic;
  }
  return QAccessible::NoRole;
}

using Parents = std::vector<std::pair<int, int>>;

// Each control with the list that it is an item of, or the window.
Parents ParentsIn(const ControlList& list) {
  Parents parents;
  int lastList = kWindow;
  for (const Control& control : list.controls) {
    if (control.role == Role::kList) lastList = control.id;
    parents.emplace_back(control.id, control.role == Role::kListItem ? lastList : kWindow);
  }
  return parents;
}

QAccessibleInterface* ReaderOf(int id);

QList<QAccessibleInterface*> ChildrenOf(int parent) {
  QList<QAccessibleInterface*> children;
  for (const auto& [id, itsParent] : ParentsIn(List()))
    if (itsParent == parent) children << ReaderOf(id);
  return children;
}

QAccessibleInterface* UnderPoint(const QList<QAccessibleInterface*>& children, int x, int y) {
  for (QAccessibleInterface* child : children)
    if (child->rect().contains(x, y)) return child;
  return nullptr;
}

// A control.  One that is no longer on the screen goes on as an invisible one, since somebody may
// still hold it.
class ControlReader : public QAccessibleInterface,
                      public QAccessibleActionInterface,
                      public QAccessibleValueInterface {
 public:
  explicit ControlReader(int id) : id_(id) {}

  bool isValid() const override { return mainWindow != nullptr; }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return mainWindow->windowHandle(); }
  QAccessibleInterface* parent() const override {
    for (const auto& [id, itsParent] : ParentsIn(List()))
      if (id == id_) return ReaderOf(itsParent);
    return ReaderOf(kWindow);
  }
  int childCount() const override { return static_cast<int>(ChildrenOf(id_).size()); }
  QAccessibleInterface* child(int index) const override { return ChildrenOf(id_).value(index); }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(ChildrenOf(id_).indexOf(child));
  }
  QAccessibleInterface* childAt(int x, int y) const override {
    return UnderPoint(ChildrenOf(id_), x, y);
  }
  QString text(QAccessible::Text kind) const override {
    const Control control = Now();
    if (kind == QAccessible::Name) return FromBytes(control.name.c_str());
    if (kind == QAccessible::Value && control.HasValue()) return QString::number(control.value);
    return {};
  }
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override {
    const Rectangle covered = mainWindow->density.Covered(Now().place);
    return QRect(covered.x, covered.y, covered.width, covered.height)
        .translated(mainWindow->mapToGlobal(QPoint(0, 0)));
  }
  QAccessible::Role role() const override { return ToolkitRole(Now().role); }
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
    if (type == QAccessible::ValueInterface && Now().HasValue())
      return static_cast<QAccessibleValueInterface*>(this);
    return nullptr;
  }

  QStringList actionNames() const override;
  void doAction(const QString& name) override;
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

  QVariant currentValue() const override { return Now().value; }
  void setCurrentValue(const QVariant& value) override { AskFor(Ask::kSetValue, value.toDouble()); }
  QVariant maximumValue() const override { return Now().most; }
  QVariant minimumValue() const override { return Now().least; }
  QVariant minimumStepSize() const override { return Now().step; }

 private:
  Control Now() const {
    const ControlList list = List();
    const Control* control = list.Find(id_);
    return control ? *control : Control{};
  }
  void AskFor(Ask ask, double value = 0) const {
    PostDesktopRequest({.ask = ask, .value = value, .control = id_});
  }

  const int id_;
};

QAccessible::State ControlReader::state() const {
  const Control control = Now();
  QAccessible::State state;
  state.invisible = state.offscreen = control.id == 0;
  state.focusable = true;
  state.focused = watch.Focused() == id_;
  state.pressed = control.pressed;
  state.checkable = control.role == Role::kCheckBox;
  state.checked = control.checked;
  state.multiSelectable = control.role == Role::kList;
  state.selectable = control.role == Role::kListItem;
  state.selected = control.selected;
  state.active = control.current;
  return state;
}

// Actions by the toolkit's own names, which it translates.
QStringList ControlReader::actionNames() const {
  QStringList names;
  const Control control = Now();
  const Role role = control.role;
  if (role == Role::kButton || role == Role::kListItem) names << pressAction();
  if (role == Role::kCheckBox || role == Role::kListItem) names << toggleAction();
  if (control.HasValue()) names << increaseAction() << decreaseAction();
  return names << setFocusAction();
}

void ControlReader::doAction(const QString& name) {
  if (name == pressAction()) AskFor(Ask::kPress);
  if (name == toggleAction()) AskFor(Ask::kToggle);
  if (name == increaseAction()) AskFor(Ask::kStepValue, 1);
  if (name == decreaseAction()) AskFor(Ask::kStepValue, -1);
  if (name != setFocusAction()) return;
  watch.Focus(id_);
  QAccessibleEvent event(this, QAccessible::Focus);
  QAccessible::updateAccessibility(&event);
  AwaitLook();
}

// The window: its controls, the edit while a text is being typed, and a menu that is open.
class WindowReader : public QAccessibleWidget {
 public:
  explicit WindowReader(QWidget* window) : QAccessibleWidget(window, QAccessible::Window) {}

  int childCount() const override { return static_cast<int>(Children().size()); }
  QAccessibleInterface* child(int index) const override { return Children().value(index); }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(Children().indexOf(child));
  }
  QAccessibleInterface* childAt(int x, int y) const override {
    return UnderPoint(Children(), x, y);
  }
  QAccessibleInterface* focusChild() const override {
    if (EditHasFocus()) return QAccessible::queryAccessibleInterface(mainWindow->edit);
    return watch.Focused() != 0 ? ReaderOf(watch.Focused()) : nullptr;
  }

 private:
  static QList<QAccessibleInterface*> Children() {
    QList<QAccessibleInterface*> children = ChildrenOf(kWindow);
    if (EditHasFocus()) children << QAccessible::queryAccessibleInterface(mainWindow->edit);
    QWidget* popup = QApplication::activePopupWidget();
    if (popup && popup->parentWidget() == mainWindow.get())
      children << QAccessible::queryAccessibleInterface(popup);
    return children;
  }
};

QAccessibleInterface* ReaderOf(int id) {
  if (id == kWindow) return QAccessible::queryAccessibleInterface(mainWindow.get());
  QAccessibleInterface*& reader = readers[id];
  if (!reader) {
    reader = new ControlReader(id);
    QAccessible::registerAccessibleInterface(reader);
  }
  return reader;
}

QAccessibleInterface* MakeReader(const QString&, QObject* object) {
  return object && object == mainWindow.get() ? new WindowReader(mainWindow.get()) : nullptr;
}

void Tell(const ControlChange& change, const ControlList& list) {
  QAccessibleInterface* reader = ReaderOf(change.id);
  const auto tell = [](QAccessibleEvent event) { QAccessible::updateAccessibility(&event); };
  switch (change.news) {
    case ControlNews::kAppeared:
      return tell({reader, QAccessible::ObjectCreated});
    case ControlNews::kGone:
      return tell({reader, QAccessible::ObjectDestroyed});
    case ControlNews::kName:
      return tell({reader, QAccessible::NameChanged});
    case ControlNews::kValue: {
      QAccessibleValueChangeEvent event(reader, list.Find(change.id)->value);
      return QAccessible::updateAccessibility(&event);
    }
    case ControlNews::kState: {
      QAccessible::State changed;
      changed.pressed = changed.checked = changed.selected = changed.active = true;
      QAccessibleStateChangeEvent event(reader, changed);
      return QAccessible::updateAccessibility(&event);
    }
  }
}

void Look() {
  if (!listControls || !QAccessible::isActive()) return;
  const ControlList list = List();
  for (const ControlChange& change : watch.Look(list)) Tell(change, list);
  if (watch.Due()) AwaitLook();
}

}  // namespace

void MakeWindowReadable() {
  QAccessible::installFactory(MakeReader);
}

void OpenAccessibility(ControlList (*list)()) {
  listControls = list;
  watch = {};
}

void CloseAccessibility() {
  listControls = nullptr;
  watch = {};
  looks.reset();
  for (const auto& [id, reader] : readers)
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(reader));
  readers.clear();
}

void ControlsChanged() {
  if (!listControls || !QAccessible::isActive()) return;
  watch.Changed();
  AwaitLook();
}

void ShowTip(Point place, QPoint pointer) {
  // An empty text takes away the one before.
  QToolTip::showText(pointer, FromBytes(List().Tip(place).c_str()), mainWindow.get());
}

}  // namespace kwo::platform
