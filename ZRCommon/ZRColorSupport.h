#pragma once

#include "Platform/Foundation/UserDefaults.h"

#include <QColor>
#include <QString>

/// Colours in the user defaults. A colour is stored as data: Qt's data stream of a QColor in its version for Qt
/// 6.0, eleven bytes, which keeps the colour's model and 16 bits for each component. Any thread.
namespace ZRColorSupport {

/// Stores the colour under the key. An invalid colour is stored as one and reads back as none.
void setColorZR(platform::UserDefaults &defaults, const QColor &color, const QString &forKey);

/// The colour under the key.
/// @return an invalid colour when there is no data under the key, or data that is no colour.
QColor colorForKeyZR(const platform::UserDefaults &defaults, const QString &key);

} // namespace ZRColorSupport
