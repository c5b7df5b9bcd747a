// Listing a folder of 20,000 photos whose thumbnails are cached, beside what cannot be done without: listing the folder
// and reading the index.

#include "BenchmarkSupport.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "ZRCommon/ZRImageCatalog.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>
#include <dirent.h>

using benchmarkSupport::require;
using benchmarkSupport::Stopwatch;

namespace {

constexpr int count = 20'000;

/// A folder with an index of all its photos, in its own order, none of which is a picture: whoever opens one finds
/// nothing.
class CachedFolder
{
public:
    CachedFolder()
    {
        require(m_folder.isValid(), "no folder can be made");
        for (int i = 0; i < count; ++i) {
            QFile file(m_folder.filePath(QStringLiteral("IMG_%1.jpg").arg(i, 5, 10, QLatin1Char('0'))));
            require(file.open(QIODevice::WriteOnly), "no photo can be made");
        }
        QVariantList entries;
        const auto files = platform::FileManager::entriesOfFolder(path());
        for (const auto &file : *files) {
            const QString name = QString::fromUtf8(file.name), title = name.chopped(4);
            entries.append(QVariantMap{
                {QStringLiteral("Caption"), title},
                {QStringLiteral("ImagePath"), m_folder.filePath(name)},
                {QStringLiteral("ThumbPath"),
                 m_folder.filePath(QString(ZRCacheFolderName + u'/' + title + QStringLiteral("_thumb.jpg")))}});
        }
        QDir(path()).mkdir(ZRCacheFolderName);
        require(!platform::PropertyList::writeXmlFile(
                    index(), QVariantMap{{QStringLiteral("Version"), 1.0}, {QStringLiteral("Image Data"), entries}}),
                "no index can be written");
    }
    QString path() const { return m_folder.path(); }
    QString index() const { return m_folder.filePath(QString(ZRCacheFolderName + u'/' + ZRCacheFilename)); }

private:
    QTemporaryDir m_folder;
};

void ListFolder(benchmark::State &state, const CachedFolder &folder)
{
    ZRImageCatalog catalog;
    const ZRImageCatalogFolder catalogFolder(folder.path(), &catalog);
    for (auto _ : state) {
        const Stopwatch watch;
        const auto photos = catalogFolder.imageThumbnailsThatMatchSearchString(QString());
        state.SetIterationTime(watch.seconds());
        require(photos.size() == count && photos[7]->title().startsWith(u"IMG_"), "photos are missing");
    }
}

void PeerListFolder(benchmark::State &state, const CachedFolder &folder)
{
    for (auto _ : state) {
        const Stopwatch watch;
        DIR *const directory = opendir(QFile::encodeName(folder.path()).constData());
        require(directory, "there is no folder");
        int files = 0;
        while (readdir(directory))
            ++files;
        closedir(directory);
        const auto index = platform::PropertyList::read(folder.index());
        state.SetIterationTime(watch.seconds());
        require(files == count + 3 && index.value().value(u"Image Data").count() == count, "files are missing");
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const CachedFolder folder;
    using Run = void (*)(benchmark::State &, const CachedFolder &);
    for (const auto &[name, run] :
         {std::pair<const char *, Run>("ListFolder", ListFolder), {"PeerListFolder", PeerListFolder}})
        benchmark::RegisterBenchmark(name, [&, run = run](benchmark::State &state) { run(state, folder); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
