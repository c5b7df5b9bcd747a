#include "ZRCommon/NullValue.h"

namespace NullValue {

QString nullFieldValue()
{
    return QStringLiteral("-");
}

bool isNullFieldValue(const QLineEdit &field)
{
    return field.text() == nullFieldValue();
}

void setNullFieldValue(QLineEdit &field)
{
    field.setText(nullFieldValue());
}

} // namespace NullValue
