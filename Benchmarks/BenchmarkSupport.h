#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// What the benchmarks share. Each takes its input from the environment, checks every answer before it counts a time,
/// and runs its peers in the same process.
namespace benchmarkSupport {

/// The music library to read: the path in the environment variable ZR_BENCH_LIBRARY. Ends the program with a message
/// when it is not set.
QString libraryPath();

/// The bytes of a file in a fresh, unpadded buffer, read as plainly as possible: what a peer has to do first.
QByteArray readWhole(const QString &path);

/// Bytes of private memory that this process holds now (0 where the system does not tell).
qint64 anonymousMemory();
/// The same of all memory that is resident, and the most that ever was.
qint64 residentMemory();
qint64 peakResidentMemory();

/// Ends the program with a message when an answer is wrong: a fast wrong answer is no figure.
void require(bool condition, const char *message);

/// Seconds since construction.
class Stopwatch
{
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count(); }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace benchmarkSupport
