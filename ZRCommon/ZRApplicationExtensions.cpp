#include "ZRCommon/ZRApplicationExtensions.h"

#include <QCoreApplication>

QString ZRApplicationExtensions::applicationName()
{
    return QCoreApplication::applicationName();
}
