#pragma once

#include "Support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

/// Running zrmedia as a person would, and what it reads.
namespace zrmedia {

inline const QString program = QStringLiteral(ZR_BIN_DIR "/zrmedia");
inline const QString musicLibrary = QStringLiteral(ZR_SAMPLE_LIBRARY "/iTunes/iTunes Music Library.xml");
inline const QString albumData = QStringLiteral(ZR_SAMPLE_LIBRARY "/iPhoto Library/AlbumData.xml");

struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

inline Outcome finished(QProcess &process)
{
    EXPECT_TRUE(process.waitForFinished(120'000)) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

inline QProcessEnvironment english()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    return environment;
}

inline Outcome run(const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(english());
    process.start(program, arguments);
    return finished(process);
}

/// The JSON that a run must print, with nothing on standard error.
inline QJsonArray arrayOf(const QStringList &arguments)
{
    const Outcome result = run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(result.errors, "");
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(result.output, &error);
    EXPECT_TRUE(document.isArray()) << qPrintable(error.errorString());
    return document.array();
}

inline QStringList texts(const QJsonArray &array, const QString &key = {})
{
    QStringList result;
    for (const QJsonValue &value : array)
        result.append(key.isEmpty() ? value.toString() : value[key].toString());
    return result;
}

inline QString path(const char *name)
{
    return testSupport::homePath() + QLatin1Char('/') + QLatin1String(name);
}

/// The outcome of a line of the shell, in which $0 is the program and $1 the file.
inline Outcome runInShell(const char *line, const QString &file)
{
    QProcess shell;
    shell.setProcessEnvironment(english());
    shell.start(QStringLiteral("bash"), {"-c", line, program, file});
    return finished(shell);
}

inline Outcome runInGerman(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = english();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    return finished(process);
}

} // namespace zrmedia
