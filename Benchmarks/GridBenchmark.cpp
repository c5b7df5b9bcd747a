// The photo grid with 100,000 cells of 120 by 90 at 1600 by 1000, beside QListView in icon mode with a lean model: both
// show the same pictures, which are in memory, and titles.

#include "BenchmarkSupport.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRCommon/ZRPhotoCell.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QtWidgets>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <numeric>
#include <random>

using benchmarkSupport::require;
using benchmarkSupport::Stopwatch;

namespace {

constexpr QSize window(1600, 1000), cellSize(120, 90), pictureSize(114, 74);

const std::vector<QImage> &pictures()
{
    static const std::vector<QImage> made = [] {
        std::vector<QImage> images;
        for (int i = 0; i < 64; ++i) {
            QImage image(pictureSize, QImage::Format_RGB32);
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    image.setPixel(x, y, qRgb((x * 5 + i * 9) & 255, (y * 7 + i * 31) & 255, (x * y + i) & 255));
            }
            images.push_back(image);
        }
        return images;
    }();
    return made;
}

QString titleOf(int index)
{
    return QStringLiteral("IMG_%1").arg(index, 7, 10, QLatin1Char('0'));
}

void settle()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

// Ours

/// A record without a file, whose picture and title are made from its number.
class NumberedPhoto : public platform::Object
{
public:
    explicit NumberedPhoto(int number)
        : m_number(number)
    { }
    int number() const { return m_number; }

private:
    int m_number;
};

/// What `ZRPhotoCell` draws, with pictures that are in memory.
class BenchmarkCell : public ZRPhotoCell
{
public:
    std::unique_ptr<platform::Cell> clone() const override { return std::make_unique<BenchmarkCell>(); }
    QImage pictureToDraw(const platform::View &) const override
    {
        return pictures()[size_t(static_cast<const NumberedPhoto &>(*representedObject()).number()) & 63];
    }
};

struct Grid {
    platform::ScrollView view;
    ZRPhotoMatrix *const grid = new ZRPhotoMatrix;

    /// @param hasTitles of their own; otherwise what the records would share
    explicit Grid(int count, bool hasTitles = true)
    {
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        view.setDocumentView(grid);
        grid->setPrototype(std::make_unique<BenchmarkCell>());
        grid->setCellSize(cellSize);
        grid->setIntercellSpacing(QSizeF(0, 0));
        view.resize(window);
        const int columns = window.width() / cellSize.width();
        grid->renewRows((count + columns - 1) / columns, columns);
        for (int i = 0; i < count; ++i) {
            auto &cell = static_cast<BenchmarkCell &>(*grid->cells()[size_t(i)]);
            cell.setRepresentedObject(std::make_shared<NumberedPhoto>(i));
            if (hasTitles)
                cell.setPhotoTitle(titleOf(i));
        }
        grid->sizeToCells();
    }
    void show()
    {
        view.show();
        settle();
        grid->repaint();
    }
    void repaint() { grid->repaint(); }
    /// With cells of another width, and so another number of columns, than before.
    void layOut()
    {
        const int before = grid->numberOfColumns();
        const double width = grid->cellSize().width() == cellSize.width() ? 160 : cellSize.width();
        grid->setCellSize(QSizeF(width, cellSize.height()));
        grid->possiblyAdjustNumberRowsAndColumns();
        require(grid->numberOfColumns() != before, "nothing was laid out");
    }
    bool isHit(const QPoint &point) { return grid->placeAtPoint(grid->fromWidget(point)).has_value(); }
    void selectAll() { grid->Matrix::selectAll(); }
    void selectNothing() { grid->deselectAllCells(); }
};

// QListView

struct LeanModel : QAbstractListModel {
    std::vector<QString> titles;
    std::vector<QPixmap> pixmaps;
    explicit LeanModel(int count)
    {
        for (const QImage &picture : pictures())
            pixmaps.push_back(QPixmap::fromImage(picture));
        for (int i = 0; i < count; ++i)
            titles.push_back(titleOf(i));
    }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(titles.size()); }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role == Qt::DisplayRole)
            return titles[size_t(index.row())];
        if (role == Qt::DecorationRole)
            return pixmaps[size_t(index.row()) & 63];
        return role == Qt::SizeHintRole ? QVariant(cellSize) : QVariant();
    }
};

struct PeerView : QListView {
    using QListView::doItemsLayout;
};

struct PeerGrid {
    LeanModel model;
    PeerView view;

    explicit PeerGrid(int count)
        : model(count)
    {
        view.setViewMode(QListView::IconMode);
        view.setUniformItemSizes(true);
        view.setGridSize(cellSize);
        view.setIconSize(pictureSize);
        view.setResizeMode(QListView::Adjust);
        view.setMovement(QListView::Static);
        view.setSelectionMode(QAbstractItemView::ExtendedSelection);
        view.setLayoutMode(QListView::SinglePass);
        view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        QFont font = view.font();
        font.setPixelSize(10);
        view.setFont(font);
        view.resize(window);
        view.setModel(&model);
    }
    void show()
    {
        view.show();
        settle();
        view.viewport()->repaint();
    }
    void repaint() { view.viewport()->repaint(); }
    void layOut() { view.doItemsLayout(); }
    bool isHit(const QPoint &point) { return view.indexAt(point).isValid(); }
    void selectAll() { view.selectAll(); }
    void selectNothing() { view.clearSelection(); }
};

/// A figure of either: what is done and measured, over and over, with a grid that shows.
template <class AnyGrid>
void run(benchmark::State &state, int count, const std::function<void(AnyGrid &)> &step,
         const std::function<void(AnyGrid &)> &between = {})
{
    AnyGrid grid(count);
    grid.show();
    settle();
    step(grid);
    for (auto _ : state) {
        if (between)
            between(grid);
        settle();
        const Stopwatch watch;
        step(grid);
        state.SetIterationTime(watch.seconds());
    }
}

template <class AnyGrid>
void firstFrame(benchmark::State &state, int count)
{
    AnyGrid(100).show(); // fonts and styles are there
    for (auto _ : state) {
        AnyGrid grid(count);
        const Stopwatch watch;
        grid.show();
        state.SetIterationTime(watch.seconds());
        settle();
    }
}

template <class AnyGrid, class... Arguments>
void memory(benchmark::State &state, int count, Arguments... arguments)
{
    for (auto _ : state) {
        const Stopwatch watch;
        const qint64 before = benchmarkSupport::anonymousMemory();
        const AnyGrid grid(count, arguments...);
        if (!state.counters.contains("bytes_per_cell")) // later ones find memory that the first has left
            state.counters["bytes_per_cell"] = double(benchmarkSupport::anonymousMemory() - before) / count;
        state.SetIterationTime(watch.seconds());
    }
}

template <class AnyGrid>
void hitTest(AnyGrid &grid)
{
    static const std::vector<QPoint> points = [] {
        std::mt19937 random(1);
        std::vector<QPoint> made;
        for (int i = 0; i < 1000; ++i)
            made.push_back(QPoint(int(random() % 1550), int(random() % 980)));
        return made;
    }();
    int hits = 0;
    for (const QPoint &point : points)
        hits += grid.isHit(point);
    require(hits > 900, "points are beside the cells");
}

template <class AnyGrid>
void scroll(AnyGrid &grid)
{
    constexpr int steps = 100;
    for (int i = 1; i <= steps; ++i) {
        grid.view.verticalScrollBar()->setValue(i * 37);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

template <class AnyGrid>
void resize(AnyGrid &grid)
{
    const bool isWide = grid.view.width() == window.width();
    grid.view.resize(isWide ? window.width() - 240 : window.width(), window.height());
    QCoreApplication::sendPostedEvents();
    grid.repaint();
}

// Photos in files

double processorSeconds()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// Thumbnails as a folder's cache has them, some of which stand for all.
QStringList thumbnailFiles(const QString &folder)
{
    QStringList files;
    std::mt19937 random(2);
    for (int i = 0; i < 256; ++i) {
        QImage image(240, 180, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(x + int(random() % 24), (y + i) & 255, int(random() % 24) + (x * y >> 8)));
        }
        files.append(QStringLiteral("%1/%2.jpg").arg(folder).arg(i));
        require(image.save(files.last(), "jpg", 75), "thumbnails cannot be written");
    }
    return files;
}

/// 20,000 photos from end to end: the processor's time on the main thread for each step, reading pictures included.
void scrollPhotos(benchmark::State &state)
{
    constexpr int count = 20'000, step = 100;
    const QTemporaryDir folder;
    const QStringList files = thumbnailFiles(folder.path());
    for (auto _ : state) {
        platform::ScrollView view;
        auto *const grid = new ZRPhotoMatrix;
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        view.setDocumentView(grid);
        view.resize(window);
        view.show();
        settle();
        const auto needed = grid->getRowsNeeded(count);
        grid->renewRows(needed.rows, needed.columns);
        for (int i = 0; i < count; ++i) {
            const QString &file = files[i % files.size()];
            grid->cellAtIndex(i)->setRepresentedObject(
                std::make_shared<ZRImageThumbnail>(file, file, titleOf(i), QDateTime()));
        }
        grid->sizeToCells();
        settle();
        const qint64 before = benchmarkSupport::anonymousMemory();
        qint64 most = before;
        std::vector<double> steps;
        for (int y = 0; y <= view.verticalScrollBar()->maximum(); y += step) {
            const double begin = processorSeconds();
            view.verticalScrollBar()->setValue(y);
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
            steps.push_back(1000 * (processorSeconds() - begin));
            most = std::max(most, benchmarkSupport::anonymousMemory());
        }
        std::sort(steps.begin(), steps.end());
        state.SetIterationTime(std::accumulate(steps.begin(), steps.end(), 0.0) / 1000);
        state.counters["median_ms"] = steps[steps.size() / 2];
        state.counters["worst_ms"] = steps.back();
        state.counters["p99_ms"] = steps[steps.size() * 99 / 100];
        state.counters["grown_MB"] = double(most - before) / 1e6;
    }
}

/// What is done to a selection of every second cell, by the number of cells.
void saveAndRestore(benchmark::State &state)
{
    const int count = int(state.range(0));
    Grid grid(count);
    platform::IndexSet even;
    for (int i = 0; i < count; i += 2)
        even.addIndex(i);
    grid.grid->setSelectedIndexes(even);
    for (auto _ : state) {
        const Stopwatch watch;
        grid.grid->restoreSelection(grid.grid->saveSelection());
        require(grid.grid->selectedCells().size() == size_t(count / 2), "another selection");
        state.SetIterationTime(watch.seconds());
    }
}

void add(const std::string &name, const std::function<void(benchmark::State &)> &figure, int iterations = 9)
{
    benchmark::RegisterBenchmark(name.c_str(), figure)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(iterations);
}

template <class AnyGrid>
void addAll(const std::string &prefix)
{
    constexpr int count = 100'000;
    using Step = std::function<void(AnyGrid &)>;
    const auto addStep = [&](const char *name, int iterations, const Step &step, const Step &between = {}) {
        add(
            prefix + name, [=](benchmark::State &state) { run<AnyGrid>(state, count, step, between); }, iterations);
    };
    add(prefix + "Memory", [](benchmark::State &state) { memory<AnyGrid>(state, count); });
    add(prefix + "FirstFrame", [](benchmark::State &state) { firstFrame<AnyGrid>(state, count); });
    add(prefix + "FirstFrameOfAMillion", [](benchmark::State &state) { firstFrame<AnyGrid>(state, 1'000'000); });
    addStep("Paint", 100, [](AnyGrid &grid) { grid.repaint(); });
    addStep("Scroll", 9, scroll<AnyGrid>);
    addStep("Resize", 50, resize<AnyGrid>);
    addStep("Layout", 50, [](AnyGrid &grid) { grid.layOut(); });
    addStep("HitTest", 100, hitTest<AnyGrid>);
    addStep(
        "SelectAll", 50,
        [](AnyGrid &grid) {
            grid.selectAll();
            QCoreApplication::sendPostedEvents();
            grid.repaint();
        },
        [](AnyGrid &grid) { grid.selectNothing(); });
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    addAll<Grid>("");
    add("MemoryWithoutTitles", [](benchmark::State &state) { memory<Grid>(state, 100'000, false); });
    addAll<PeerGrid>("Peer");
    benchmark::RegisterBenchmark("ScrollPhotos", scrollPhotos)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1);
    benchmark::RegisterBenchmark("SaveAndRestoreSelection", saveAndRestore)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Arg(1'000)
        ->Arg(100'000);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
