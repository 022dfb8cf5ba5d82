#pragma once

#include <QDBusVirtualObject>
#include <QVariant>
#include <span>

/// The session bus, as the program is reached by it.  Nothing here waits for the bus, and without
/// one nothing happens.  Main thread.
namespace kwo::platform {

/// What can be called, without a result.
struct BusMethod {
  const char* interface;
  const char* name;
  const char* types;  ///< of the arguments, with blanks between
  /// Gives what is wrong with the call, or null.
  const char* (*call)(const QVariantList& arguments);
};

struct BusProperty {
  const char* interface;
  const char* name;
  const char* type;
  QVariant (*get)();
  /// Gives what is wrong with the value, or null; null for what can't be written.
  const char* (*set)(const QVariant& value) = nullptr;
};

struct BusSignal {
  const char* interface;
  const char* name;
  const char* types;
};

/// An object with the tables of what it offers, which outlive it.
class BusObject : public QDBusVirtualObject {
 public:
  BusObject(std::span<const BusMethod> methods, std::span<const BusProperty> properties = {},
            std::span<const BusSignal> signalsSent = {})
      : methods_(methods), properties_(properties), signals_(signalsSent) {}

  /// All properties of an interface.
  QVariantMap Properties(const QString& interface) const;

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  QDBusMessage Answer(const QDBusMessage& call) const;
  QDBusMessage AnswerGet(const QDBusMessage& call) const;
  QDBusMessage AnswerGetAll(const QDBusMessage& call) const;
  QDBusMessage AnswerSet(const QDBusMessage& call) const;
  const BusProperty* Find(const QString& interface, const QString& name) const;

  std::span<const BusMethod> methods_;
  std::span<const BusProperty> properties_;
  std::span<const BusSignal> signals_;
};

/// A call of the bus itself.
QDBusMessage BusCall(const char* method);

}  // namespace kwo::platform
