// A document of 100,000 slides archived and read back, beside a script that parses the same XML into dictionaries and
// writes it again. Each is run in a process of its own, which has done nothing else before, so that its memory counts.
// What is timed is processor time, of all threads, which other programs disturb least.

#include "BenchmarkSupport.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <QtCore>

#include <benchmark/benchmark.h>

#include <ctime>

namespace {

/// Seconds of processor time since construction.
class ProcessorClock
{
public:
    double seconds() const { return double(std::clock() - m_start) / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start = std::clock();
};

constexpr int slideCount = 100'000;

/// A slide as a slide-show application has it.
class Slide : public platform::Object, public platform::KeyedCoding
{
    ZR_OBJECT(Slide, platform::Object)
public:
    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override
    {
        archiver.encode(title, "title");
        archiver.encode(path, "path");
        archiver.encodeDouble(seconds, "seconds");
        archiver.encodeInt32(transition, "transition");
        archiver.encodeDouble(angle, "angle");
    }
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override
    {
        title = unarchiver.decodeString("title");
        path = unarchiver.decodeString("path");
        seconds = unarchiver.decodeDouble("seconds");
        transition = unarchiver.decodeInt32("transition");
        angle = unarchiver.decodeDouble("angle");
    }
    bool isSameAs(const Slide &other) const
    {
        return title == other.title && path == other.path && seconds == other.seconds && transition == other.transition
            && angle == other.angle;
    }

    QString title;
    QString path;
    double seconds = 0;
    qint32 transition = 0;
    double angle = 0;
};

using Slides = QList<std::shared_ptr<Slide>>;

Slides newSlides()
{
    QRandomGenerator random(1);
    Slides slides;
    slides.reserve(slideCount);
    for (int i = 0; i < slideCount; ++i) {
        auto slide = std::make_shared<Slide>();
        slide->title = QStringLiteral("Slide %1 – Föhr").arg(i);
        slide->path = QStringLiteral("/home/somebody/Pictures/2024/Holiday/IMG_%1.jpg").arg(i);
        slide->seconds = double(random.bounded(100)) / 10;
        slide->transition = random.bounded(8);
        slide->angle = random.bounded(360.0);
        slides.append(slide);
    }
    return slides;
}

QByteArray archived(const Slides &slides)
{
    platform::KeyedArchiver archiver;
    archiver.encodeInt32(1, "current-version");
    archiver.encode(slides, "slides");
    auto bytes = archiver.finishEncoding();
    benchmarkSupport::require(bool(bytes), "the slides cannot be archived");
    return std::move(bytes).value();
}

/// The archive as a file, written once by another process.
QString archiveFile()
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("slides"));
    if (!QFile::exists(path)) {
        const QString program = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
        benchmarkSupport::require(QProcess::execute(program, {QStringLiteral("--write"), path}) == 0,
                                  "the archive cannot be written");
    }
    return path;
}

double memoryPerByte(qint64 before, qint64 fileSize)
{
    return double(benchmarkSupport::peakResidentMemory() - before) / double(fileSize);
}

void Archive(benchmark::State &state)
{
    const Slides slides = newSlides();
    for (auto _ : state) {
        const qint64 before = benchmarkSupport::residentMemory();
        const ProcessorClock clock;
        const QByteArray bytes = archived(slides);
        state.SetIterationTime(clock.seconds());
        state.counters["memory_per_file_byte"] = memoryPerByte(before, bytes.size());
        state.counters["file_MB"] = double(bytes.size()) / 1e6;
    }
}

void Unarchive(benchmark::State &state)
{
    const QString path = archiveFile();
    for (auto _ : state) {
        const qint64 before = benchmarkSupport::residentMemory();
        const ProcessorClock clock;
        const QByteArray bytes = benchmarkSupport::readWhole(path);
        Slides slides;
        {
            platform::KeyedUnarchiver unarchiver(bytes);
            slides = unarchiver.decodeObjectsOfClass<Slide>("slides");
            unarchiver.finishDecoding();
        }
        state.SetIterationTime(clock.seconds());
        state.counters["memory_per_file_byte"] = memoryPerByte(before, bytes.size());
        const Slides expected = newSlides();
        const auto same = [](const auto &a, const auto &b) { return a->isSameAs(*b); };
        benchmarkSupport::require(std::equal(slides.cbegin(), slides.cend(), expected.cbegin(), expected.cend(), same),
                                  "the slides have changed");
    }
}

// Seconds of the script: for parsing, and for writing.
std::pair<double, double> peer()
{
    QProcess script;
    script.start(QStringLiteral("python3"), {QStringLiteral(ZR_PEER_SCRIPT), archiveFile()});
    script.waitForFinished(-1);
    const QList<QByteArray> words = script.readAllStandardOutput().simplified().split(' ');
    benchmarkSupport::require(words.size() == 3 && words[2].toInt() > 3 * slideCount, "the script failed");
    return {words[0].toDouble(), words[1].toDouble()};
}

void PeerParse(benchmark::State &state)
{
    for (auto _ : state)
        state.SetIterationTime(peer().first);
}

void PeerWrite(benchmark::State &state)
{
    for (auto _ : state)
        state.SetIterationTime(peer().second);
}

BENCHMARK(Archive)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Unarchive)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerParse)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerWrite)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    platform::ArchiveClasses::shared().registerClass<Slide>(QStringLiteral("Slide"));
    if (argc == 3 && qstrcmp(argv[1], "--write") == 0) {
        QFile file(QString::fromLocal8Bit(argv[2]));
        const QByteArray bytes = archived(newSlides());
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
