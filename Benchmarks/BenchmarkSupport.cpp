#include "BenchmarkSupport.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>

namespace benchmarkSupport {

QString libraryPath()
{
    const QString path = qEnvironmentVariable("ZR_BENCH_LIBRARY");
    require(!path.isEmpty(), "ZR_BENCH_LIBRARY must name a music library");
    return path;
}

QByteArray readWhole(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered), "cannot open the input");
    QByteArray bytes(file.size(), Qt::Uninitialized);
    require(file.read(bytes.data(), bytes.size()) == bytes.size(), "cannot read the input");
    return bytes;
}

namespace {

// A size in the table of the process's memory, in bytes; 0 where the system does not tell.
qint64 memory(const char *kind)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf(kind);
    const qsizetype value = at + qsizetype(qstrlen(kind));
    return at < 0 ? 0 : text.mid(value, text.indexOf("kB", at) - value).trimmed().toLongLong() * 1024;
}

} // namespace

qint64 anonymousMemory()
{
    return memory("RssAnon:");
}

qint64 residentMemory()
{
    return memory("VmRSS:");
}

qint64 peakResidentMemory()
{
    return memory("VmHWM:");
}

void require(bool condition, const char *message)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", message);
    std::exit(1);
}

} // namespace benchmarkSupport
