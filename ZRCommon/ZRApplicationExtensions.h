#pragma once

#include <QString>

namespace ZRApplicationExtensions {

/// The name of the running process: the one that the host gave its application
/// (QCoreApplication::setApplicationName), or that of its executable file. Any thread.
QString applicationName();

} // namespace ZRApplicationExtensions
