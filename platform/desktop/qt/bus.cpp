#include "platform/desktop/qt/bus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <algorithm>

namespace kwo::platform {
namespace {

constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr char kIntrospectable[] = "org.freedesktop.DBus.Introspectable";

QDBusMessage Refusal(const QDBusMessage& call, QDBusError::ErrorType type, const QString& what) {
  return call.createErrorReply(type, what);
}

QString Signature(const char* types) {
  return QString(types).remove(' ');
}

QString Arguments(const char* types, const char* direction) {
  QString xml;
  for (const QString& type : QString(types).split(' ', Qt::SkipEmptyParts))
    xml += QString("      <arg type=\"%1\"%2/>\n").arg(type, direction);
  return xml;
}

// A call of another interface by this one's name is none of it; one may come without.
bool IsFor(const QDBusMessage& call, const BusMethod& method) {
  return call.member() == method.name &&
         (call.interface().isEmpty() || call.interface() == method.interface);
}

}  // namespace

QVariantMap BusObject::Properties(const QString& interface) const {
  QVariantMap all;
  for (const BusProperty& property : properties_)
    if (interface == property.interface) all[property.name] = property.get();
  return all;
}

QString BusObject::introspect(const QString&) const {
  QStringList interfaces;
  const auto note = [&interfaces](const auto& rows) {
    for (const auto& row : rows)
      if (!interfaces.contains(row.interface)) interfaces << row.interface;
  };
  note(methods_);
  note(properties_);
  QString xml;
  for (const QString& interface : interfaces) {
    xml += QString("  <interface name=\"%1\">\n").arg(interface);
    for (const BusMethod& method : methods_)
      if (interface == method.interface)
        xml += QString("    <method name=\"%1\">\n%2    </method>\n")
                   .arg(method.name, Arguments(method.types, " direction=\"in\""));
    for (const BusSignal& row : signals_)
      if (interface == row.interface)
        xml += QString("    <signal name=\"%1\">\n%2    </signal>\n")
                   .arg(row.name, Arguments(row.types, ""));
    for (const BusProperty& property : properties_)
      if (interface == property.interface)
        xml += QString("    <property name=\"%1\" type=\"%2\" access=\"%3\"/>\n")
                   .arg(property.name, property.type, property.set ? "readwrite" : "read");
    xml += "  </interface>\n";
  }
  return xml;
}

bool BusObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  // The toolkit itself composes the introspection, with our part of it.
  if (message.type() != QDBusMessage::MethodCallMessage || message.interface() == kIntrospectable)
    return false;
  const QDBusMessage answer = Answer(message);
  if (message.isReplyRequired()) connection.send(answer);
  return true;
}

QDBusMessage BusObject::Answer(const QDBusMessage& call) const {
  if (call.interface() == kProperties) {
    if (call.member() == "Get" && call.signature() == "ss") return AnswerGet(call);
    if (call.member() == "GetAll" && call.signature() == "s") return AnswerGetAll(call);
    if (call.member() == "Set" && call.signature() == "ssv") return AnswerSet(call);
  }
  for (const BusMethod& method : methods_) {
    if (!IsFor(call, method)) continue;
    if (call.signature() != Signature(method.types))
      return Refusal(call, QDBusError::InvalidArgs, "the arguments are of other types");
    const char* const wrong = method.call(call.arguments());
    return wrong ? Refusal(call, QDBusError::InvalidArgs, wrong) : call.createReply();
  }
  return Refusal(call, QDBusError::UnknownMethod, "there is no such method");
}

const BusProperty* BusObject::Find(const QString& interface, const QString& name) const {
  const auto found =
      std::find_if(properties_.begin(), properties_.end(), [&](const BusProperty& property) {
        return name == property.name && (interface.isEmpty() || interface == property.interface);
      });
  return found == properties_.end() ? nullptr : &*found;
}

QDBusMessage BusObject::AnswerGet(const QDBusMessage& call) const {
  const BusProperty* property =
      Find(call.arguments()[0].toString(), call.arguments()[1].toString());
  if (!property) return Refusal(call, QDBusError::UnknownProperty, "there is no such property");
  return call.createReply(QVariant::fromValue(QDBusVariant(property->get())));
}

QDBusMessage BusObject::AnswerGetAll(const QDBusMessage& call) const {
  return call.createReply(Properties(call.arguments()[0].toString()));
}

QDBusMessage BusObject::AnswerSet(const QDBusMessage& call) const {
  const BusProperty* property =
      Find(call.arguments()[0].toString(), call.arguments()[1].toString());
  if (!property) return Refusal(call, QDBusError::UnknownProperty, "there is no such property");
  if (!property->set) return Refusal(call, QDBusError::PropertyReadOnly, "it can't be written");
  const QVariant value = call.arguments()[2].value<QDBusVariant>().variant();
  const char* const type = QDBusMetaType::typeToSignature(value.metaType());
  const char* const wrong = type && QString(type) == property->type
                                ? property->set(value)
                                : "the value is of another type";
  return wrong ? Refusal(call, QDBusError::InvalidArgs, wrong) : call.createReply();
}

QDBusMessage BusCall(const char* method) {
  constexpr char kBus[] = "org.freedesktop.DBus";
  return QDBusMessage::createMethodCall(kBus, "/org/freedesktop/DBus", kBus, method);
}

}  // namespace kwo::platform
