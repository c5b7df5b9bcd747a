#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <functional>

#include <gtest/gtest.h>

/// What all tests share: an isolated home folder, warnings that fail the test, waiting without sleeping, and the
/// sample files.
namespace testSupport {

/// Announces a warning: the running test then fails unless a message that contains the text arrives before its end.
void expectWarning(const QString &text);

/// Runs the event loop until the condition holds, at most ten seconds.
/// @return whether it held.
[[nodiscard]] bool waitUntil(const std::function<bool()> &condition);

/// Path of a file of the sample data, such as "itunes/fixture-12.1.2-unix.xml"; empty where it is absent.
QString sampleFile(const QString &relativePath);

/// Writes a file with the given bytes, and the folders above it; fails the running test when it cannot.
void writeFile(const QString &path, const QByteArray &bytes);
QByteArray readFile(const QString &path);

/// The home folder of this test program, empty at the start of each test.
QString homePath();

} // namespace testSupport

/// Skips the running test where the sample data is absent.
#define ZR_REQUIRE_SAMPLE_DATA()                                                                                       \
    if (testSupport::sampleFile(QStringLiteral("EXPECTED.json")).isEmpty())                                            \
    GTEST_SKIP() << "needs the sample data in " ZR_SAMPLE_DATA
