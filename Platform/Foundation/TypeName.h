#pragma once

#include <QString>

#include <typeinfo>

namespace platform {

/// The name of a C++ type as a programmer writes it, such as "platform::Number". For messages only: its form
/// depends on the compiler. Any thread.
QString typeName(const std::type_info &type);

} // namespace platform
