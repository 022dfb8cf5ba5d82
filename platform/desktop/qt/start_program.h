#pragma once

#include <QStringList>

namespace kwo::platform {

/// Starts a program that is to outlive this one, without what is meant for this one alone; false if
/// it can't be started.
bool StartProgram(const QString& program, const QStringList& arguments);

}  // namespace kwo::platform
