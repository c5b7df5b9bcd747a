// Thumbnails of a camera's photos, 240 pixels on the longer side, from a file on disk to a JPEG in memory, beside the
// ways in which programs usually make them. One thread, unless two are named.

#include "BenchmarkSupport.h"
#include "Likeness.h"
#include "Platform/Media/ImageSource.h"

#include <QtGui>

#include <benchmark/benchmark.h>
#include <turbojpeg.h>
#include <vips/vips.h>

#include <atomic>
#include <thread>

using benchmarkSupport::require;
using benchmarkSupport::Stopwatch;

namespace {

constexpr int thumbnailSize = 240;
constexpr int quality = 75;

using Maker = QByteArray (*)(const QString &path);

QStringList files(const char *folder)
{
    const QString root = qEnvironmentVariable("ZR_BENCH_PHOTOS");
    require(!root.isEmpty(), "ZR_BENCH_PHOTOS must name a folder that scripts/make-benchmark-photos has filled");
    QStringList paths;
    const QDir dir(root + QLatin1Char('/') + QLatin1String(folder));
    for (const QString &name : dir.entryList(QDir::Files, QDir::Name))
        paths.append(dir.filePath(name));
    require(!paths.isEmpty(), "the folder of photos is empty");
    return paths;
}

// Ours

QByteArray ours(const QString &path)
{
    const auto source = platform::ImageSource::open(path);
    return source ? source.value().jpegThumbnail(thumbnailSize).valueOr({}) : QByteArray();
}

// vips_thumbnail, with one thread and without its cache

void startVips()
{
    static const bool started = [] {
        vips_concurrency_set(1);
        const bool ok = VIPS_INIT("ThumbnailBenchmark") == 0;
        vips_cache_set_max(0);
        return ok;
    }();
    require(started, "libvips does not start");
}

QByteArray vipsJpeg(VipsImage *image)
{
    void *bytes = nullptr;
    size_t size = 0;
    QByteArray jpeg;
    if (vips_jpegsave_buffer(image, &bytes, &size, "Q", quality, "strip", TRUE, nullptr) == 0)
        jpeg = QByteArray(static_cast<const char *>(bytes), qsizetype(size));
    g_free(bytes);
    return jpeg;
}

QByteArray byVips(const QString &path)
{
    startVips();
    VipsImage *image = nullptr;
    if (vips_thumbnail(QFile::encodeName(path).constData(), &image, thumbnailSize, "height", thumbnailSize, "size",
                       VIPS_SIZE_DOWN, nullptr)
        != 0) {
        vips_error_clear();
        return {};
    }
    const QByteArray jpeg = vipsJpeg(image);
    g_object_unref(image);
    return jpeg;
}

// The thumbnail that the camera left in the file, through libvips.
QByteArray byVipsEmbedded(const QString &path)
{
    startVips();
    VipsImage *image = nullptr, *thumbnail = nullptr, *upright = nullptr;
    const void *bytes = nullptr;
    size_t size = 0;
    QByteArray jpeg;
    if (vips_jpegload(QFile::encodeName(path).constData(), &image, nullptr) == 0
        && vips_image_get_blob(image, "jpeg-thumbnail-data", &bytes, &size) == 0
        && vips_thumbnail_buffer(const_cast<void *>(bytes), size, &thumbnail, thumbnailSize, "height", thumbnailSize,
                                 "size", VIPS_SIZE_DOWN, nullptr)
            == 0
        && vips_autorot(thumbnail, &upright, nullptr) == 0)
        jpeg = vipsJpeg(upright);
    for (VipsImage *each : {upright, thumbnail, image}) {
        if (each)
            g_object_unref(each);
    }
    return jpeg;
}

// QImageReader with a scaled size

QByteArray jpegOf(const QImage &image)
{
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "jpg", quality);
    return jpeg;
}

QByteArray byQImageReader(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setScaledSize(reader.size().scaled(thumbnailSize, thumbnailSize, Qt::KeepAspectRatio));
    return jpegOf(reader.read());
}

// libjpeg-turbo at 1/8, resized and encoded

struct TurboHandle {
    explicit TurboHandle(tjhandle turbo)
        : handle(turbo)
    { }
    ~TurboHandle() { tjDestroy(handle); }
    tjhandle handle;
};

QByteArray byTurbo(const QString &path)
{
    thread_local const TurboHandle decoder(tjInitDecompress()), encoder(tjInitCompress());
    const QByteArray file = benchmarkSupport::readWhole(path);
    const auto *bytes = reinterpret_cast<const uchar *>(file.constData());
    int width = 0, height = 0, sampling = 0, colours = 0;
    if (tjDecompressHeader3(decoder.handle, bytes, ulong(file.size()), &width, &height, &sampling, &colours) != 0)
        return {};
    constexpr tjscalingfactor eighth{1, 8};
    QImage image(TJSCALED(width, eighth), TJSCALED(height, eighth), QImage::Format_RGB888);
    tjDecompress2(decoder.handle, bytes, ulong(file.size()), image.bits(), image.width(), int(image.bytesPerLine()),
                  image.height(), TJPF_RGB, 0);
    image = image.scaled(thumbnailSize, thumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    unsigned char *jpeg = nullptr;
    unsigned long size = 0;
    tjCompress2(encoder.handle, image.constBits(), image.width(), int(image.bytesPerLine()), image.height(), TJPF_RGB,
                &jpeg, &size, TJSAMP_420, quality, 0);
    const QByteArray result(reinterpret_cast<const char *>(jpeg), qsizetype(size));
    tjFree(jpeg);
    return result;
}

void thumbnails(benchmark::State &state, const char *folder, Maker make)
{
    const QStringList paths = files(folder);
    for (const QString &path :
         paths) { // the answer is checked, and the files are in memory before the first time counts
        const QImage image = QImage::fromData(make(path));
        require(std::max(image.width(), image.height()) <= thumbnailSize && image.width() >= 100,
                "that is no thumbnail");
    }
    for (auto _ : state) {
        const Stopwatch watch;
        for (const QString &path : paths)
            benchmark::DoNotOptimize(make(path));
        state.SetIterationTime(watch.seconds() / double(paths.size()));
    }
}

// Everything eight times over with so many threads; the memory is what came to be resident beside the program.
void threads(benchmark::State &state, int count)
{
    const QStringList paths = files("baseline");
    const qint64 before = benchmarkSupport::residentMemory();
    for (auto _ : state) {
        std::atomic<qsizetype> next = 0;
        const Stopwatch watch;
        std::vector<std::jthread> workers;
        for (int i = 0; i < count; ++i)
            workers.emplace_back([&] {
                for (qsizetype n = next++; n < 8 * paths.size(); n = next++)
                    require(!ours(paths[n % paths.size()]).isEmpty(), "a thumbnail is missing");
            });
        workers.clear();
        state.SetIterationTime(watch.seconds());
    }
    state.counters["resident"] = double(benchmarkSupport::peakResidentMemory() - before);
}

// A thousand files that are no pictures.
template <class IsPicture>
void others(benchmark::State &state, const IsPicture &isPicture)
{
    const QStringList paths = files("other");
    for (auto _ : state) {
        qsizetype accepted = 0;
        const Stopwatch watch;
        for (const QString &path : paths)
            accepted += isPicture(path);
        state.SetIterationTime(watch.seconds());
        state.counters["accepted"] = double(accepted);
    }
}

// Likeness to a Lanczos reduction of the whole picture, the mean over the photos, for each way.
void Likeness(benchmark::State &state)
{
    const std::pair<const char *, Maker> makers[] = {
        {"Baseline", ours}, {"PeerVips", byVips}, {"PeerQImageReader", byQImageReader}, {"PeerTurbo", byTurbo}};
    for (auto _ : state) {
        std::array<double, std::size(makers)> sums{};
        const QStringList paths = files("baseline");
        for (const QString &path : paths) {
            const QImage picture(path);
            QImage reference;
            for (size_t i = 0; i < std::size(makers); ++i) {
                const QImage made = QImage::fromData(makers[i].second(path));
                if (made.size() != reference.size()) // some round otherwise
                    reference = benchmarkSupport::lanczosReduced(picture, made.size());
                sums[i] += benchmarkSupport::structuralSimilarity(made, reference);
            }
        }
        for (size_t i = 0; i < std::size(makers); ++i)
            state.counters[makers[i].first] = sums[i] / double(paths.size());
        state.SetIterationTime(1);
    }
}

void add(const char *name, const std::function<void(benchmark::State &)> &run)
{
    benchmark::RegisterBenchmark(name, run)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const std::pair<const char *, Maker> makers[] = {
        {"", ours}, {"PeerVips", byVips}, {"PeerQImageReader", byQImageReader}, {"PeerTurbo", byTurbo}};
    for (const auto &[folder, kind] : {std::pair("baseline", "Baseline"), std::pair("progressive", "Progressive")}) {
        for (const auto &[prefix, make] : makers)
            add((std::string(prefix) + kind).c_str(), [=](auto &state) { thumbnails(state, folder, make); });
    }
    add("Embedded", [](auto &state) { thumbnails(state, "embedded", ours); });
    add("PeerVipsEmbedded", [](auto &state) { thumbnails(state, "embedded", byVips); });
    add("PeerVipsOwnEmbedded", [](auto &state) { thumbnails(state, "embedded", byVipsEmbedded); });
    add("OneThread", [](auto &state) { threads(state, 1); });
    add("TwoThreads", [](auto &state) { threads(state, 2); });
    add("Others", [](auto &state) {
        others(state, [](const QString &path) { return bool(platform::ImageSource::open(path)); });
    });
    add("PeerOthers",
        [](auto &state) { others(state, [](const QString &path) { return QImageReader(path).canRead(); }); });
    add("Likeness", Likeness);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
