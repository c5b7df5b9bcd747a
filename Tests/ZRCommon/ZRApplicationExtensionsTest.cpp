#include "ZRCommon/ZRApplicationExtensions.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

TEST(ZRApplicationExtensions, AnswersTheNameOfTheProcess)
{
    const QString before = QCoreApplication::applicationName();
    EXPECT_EQ(ZRApplicationExtensions::applicationName(), before);
    QCoreApplication::setApplicationName(QStringLiteral("Storyboard"));
    EXPECT_EQ(ZRApplicationExtensions::applicationName(), QStringLiteral("Storyboard"));
    QCoreApplication::setApplicationName(QString());
    EXPECT_EQ(ZRApplicationExtensions::applicationName(), QStringLiteral("ZRCommonTests"));
    QCoreApplication::setApplicationName(before);
}
