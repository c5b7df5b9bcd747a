#pragma once

#include <QString>

/// The text in the user's language, where the framework's translations have it.
QString text(const char *english);
