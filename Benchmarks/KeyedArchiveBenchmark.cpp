// A storyboard of 100,000 slides archived and read back, beside a script that parses the same XML into dictionaries and
// writes it again. Each is run in a process of its own, which has done nothing else before, so that its memory counts.
// What is timed is processor time, of all threads, which other programs disturb least.

#include "BenchmarkSupport.h"
#include "Platform/Interface/DocumentController.h"
#include "Storyboard/StoryboardDocument.h"

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

StoryboardDocument::Slides::Items newSlides()
{
    QRandomGenerator random(1);
    StoryboardDocument::Slides::Items slides;
    slides.reserve(slideCount);
    for (int i = 0; i < slideCount; ++i) {
        const auto slide =
            std::make_shared<Slide>(QStringLiteral("/home/somebody/Pictures/2024/Holiday/IMG_%1.jpg").arg(i));
        slide->setSettings({QStringLiteral("Slide %1 – Föhr").arg(i), double(1 + random.bounded(100)) / 10,
                            Slide::Transition(random.bounded(Slide::transitionCount)), random.bounded(360.0)});
        slides.append(slide);
    }
    return slides;
}

QByteArray archived(StoryboardDocument &document)
{
    auto bytes = document.dataRepresentationOfType(document.fileType());
    benchmarkSupport::require(bytes.has_value(), "the document cannot be archived");
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
    StoryboardDocument document;
    document.insertSlides(newSlides(), 0, {});
    for (auto _ : state) {
        const qint64 before = benchmarkSupport::residentMemory();
        const ProcessorClock clock;
        const QByteArray bytes = archived(document);
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
        StoryboardDocument document;
        const bool isLoaded = document.loadDataRepresentation(bytes, document.fileType());
        state.SetIterationTime(clock.seconds());
        state.counters["memory_per_file_byte"] = memoryPerByte(before, bytes.size());
        const auto slides = document.slides().items(), expected = newSlides();
        const auto same = [](const auto &a, const auto &b) {
            return a->photoPath() == b->photoPath() && a->settings() == b->settings();
        };
        benchmarkSupport::require(
            isLoaded && std::equal(slides.cbegin(), slides.cend(), expected.cbegin(), expected.cend(), same),
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
    StoryboardDocument::type();
    if (argc == 3 && qstrcmp(argv[1], "--write") == 0) {
        QFile file(QString::fromLocal8Bit(argv[2]));
        StoryboardDocument document;
        document.insertSlides(newSlides(), 0, {});
        const QByteArray bytes = archived(document);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
