#pragma once

#include <QLineEdit>

/// A marker for text fields that have no value to show, as when the items they stand for differ. Main thread.
namespace NullValue {

/// The marker: "-".
QString nullFieldValue();

/// Whether the field's text is the marker, whoever wrote it.
bool isNullFieldValue(const QLineEdit &field);

/// Writes the marker into the field.
void setNullFieldValue(QLineEdit &field);

} // namespace NullValue
