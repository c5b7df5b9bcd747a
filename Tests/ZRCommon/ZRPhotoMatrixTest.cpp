#include "ZRCommon/ZRPhotoMatrix.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Support/FolderTest.h"
#include "Support/ImageSamples.h"
#include "Support/ShownGrid.h"
#include "ZRCommon/ZRFitRect.h"
#include "ZRCommon/ZRPhotoCell.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QUrl>

namespace {

using Thumbnail = std::shared_ptr<ZRImageThumbnail>;

struct PhotoMatrix : testSupport::FolderTest, testSupport::ShownGrid<ZRPhotoMatrix> {
    PhotoMatrix()
        : ShownGrid(QSize(490, 300))
    { }
    QString thumbnailFile(const char *name, const QColor &color, const QSize &size = QSize(120, 80)) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        testSupport::writeFile(in(name), testSupport::encoded(image, "png"));
        return in(name);
    }
    static Thumbnail photo(const QString &thumbPath, const QString &title,
                           const QString &path = QStringLiteral("/p.jpg"))
    {
        return std::make_shared<ZRImageThumbnail>(thumbPath, path, title, QDateTime());
    }
    void fill(const QList<Thumbnail> &photos) { showObjects(photos); }
    /// The grid once all pictures that it will ever have are read.
    QImage drawn() const
    {
        QImage before, image = grid->grab().toImage();
        const auto isDone = [&] {
            before = std::exchange(image, grid->grab().toImage());
            return image == before;
        };
        EXPECT_TRUE(testSupport::waitUntil(isDone));
        return image;
    }
    ZRPhotoCell &cell(size_t index) const { return static_cast<ZRPhotoCell &>(*grid->cells()[index]); }
};

QColor colorAt(const QImage &image, const QPointF &point)
{
    return image.pixelColor((point * image.devicePixelRatio()).toPoint());
}

} // namespace

TEST(ZRFitRect, FitsAnAspectRatioIntoTheMiddle)
{
    EXPECT_EQ(ZRFitRect(QRectF(0, 0, 100, 50), 1), QRectF(25, 0, 50, 50));
    EXPECT_EQ(ZRFitRect(QRectF(0, 0, 100, 50), 4), QRectF(0, 12.5, 100, 25));
    EXPECT_EQ(ZRFitRect(QRectF(10, 20, 100, 50), 2), QRectF(10, 20, 100, 50));
}

TEST_F(PhotoMatrix, HasItsFixedSettings)
{
    EXPECT_EQ(grid->cellSize(), QSizeF(120, 90));
    EXPECT_EQ(grid->intercellSpacing(), QSizeF(1, 1));
    EXPECT_FALSE(grid->drawsBackground());
    EXPECT_TRUE(dynamic_cast<const ZRPhotoCell *>(&grid->prototype()));
    EXPECT_TRUE(grid->allowDraggingOut());
    EXPECT_EQ(ZRPhotoMatrixDidChangeSelection, "ZRPhotoMatrixDidChangeSelection");
    EXPECT_TRUE(ZRPhotoCell().acceptsFirstResponder());
}

TEST_F(PhotoMatrix, TitlesOnAnUnfocusedSelectionAreOfItsColors)
{
    QPalette palette = grid->palette();
    palette.setColor(QPalette::Inactive, QPalette::Highlight, QColor(230, 230, 230));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::Active, QPalette::HighlightedText, QColor(230, 230, 230));
    grid->setPalette(palette);
    fill({photo({}, "MMMMMMMM")});
    grid->selectCellAtRow(0, 0);
    grid->clearFocus();
    const QImage image = drawn();
    int dark = 0;
    for (int y = 0; y < 90; ++y) {
        for (int x = 0; x < 120; ++x)
            dark += image.pixelColor(x, y).lightness() < 80;
    }
    EXPECT_GT(dark, 10);
}

TEST_F(PhotoMatrix, PicturesKeepTheirShapeBelowTheTopMargin)
{
    fill({photo(thumbnailFile("wide.png", Qt::blue, QSize(150, 100)), {}),
          photo(thumbnailFile("tall.png", Qt::blue, QSize(100, 150)), {})});
    const QImage image = drawn();
    const QColor blue(Qt::blue), white(Qt::white);
    EXPECT_EQ(colorAt(image, QPointF(8, 40)), blue) << "of 111 points in 114";
    EXPECT_EQ(colorAt(image, QPointF(2, 40)), white);
    EXPECT_EQ(colorAt(image, QPointF(121 + 60, 5)), blue) << "from 5 on";
    EXPECT_EQ(colorAt(image, QPointF(121 + 60, 4)), white);
    EXPECT_EQ(colorAt(image, QPointF(121 + 60, 78)), blue) << "74 high";
    EXPECT_EQ(colorAt(image, QPointF(121 + 30, 40)), white) << "49 wide";
}

TEST_F(PhotoMatrix, IsDrawnAnewWithATitleOrABadge)
{
    fill({photo({}, "a")});
    const auto onScreen = [&] {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        return scrollView.screen()->grabWindow(scrollView.winId()).toImage();
    };
    const QImage plain = onScreen();
    cell(0).setPhotoTitle("another");
    const QImage titled = onScreen();
    EXPECT_NE(titled, plain);
    cell(0).setUsedInCurrentDocument(true);
    const QImage used = onScreen();
    EXPECT_NE(used, titled);
    cell(0).setUsedInCurrentDocument(false);
    EXPECT_EQ(onScreen(), titled);
    // The badge begins at the upper left corner of the cell, one point above.
    const QImage badge = ZRPhotoCell::imageInCurrentDocumentImage(1);
    const int x = badge.width() / 2;
    for (int y = 1; y < badge.height(); ++y) {
        if (badge.pixelColor(x, y).alpha() == 255) {
            EXPECT_EQ(used.pixelColor(x, y - 1), badge.pixelColor(x, y)) << y;
        }
    }
    EXPECT_EQ(used.pixelColor(x, badge.height()), QColor(Qt::white)) << "below it";
}

TEST_F(PhotoMatrix, SizesItsCellsToAThumbnailWidth)
{
    const auto sizeFor = [&](double width) {
        grid->setCellSizeForImageSize(QSizeF(width, 999));
        return grid->cellSize();
    };
    EXPECT_EQ(sizeFor(50), QSizeF(94, 82));
    EXPECT_EQ(sizeFor(100), QSizeF(106, 91));
    EXPECT_EQ(sizeFor(300), QSizeF(246, 196));
    EXPECT_EQ(sizeFor(101), QSizeF(107, 91.75));
    fill(QList<Thumbnail>(9, photo({}, "x")));
    sizeFor(88);
    EXPECT_EQ(grid->numberOfColumns(), 5) << "the grid flows";
    sizeFor(240);
    EXPECT_EQ(grid->numberOfColumns(), 1);
    EXPECT_GE(grid->viewFrame().height(), 9 * 196);
}

TEST_F(PhotoMatrix, HandsOutWhatIsSelected)
{
    const Thumbnail a = photo({}, "a", "/x/a.jpg"), b = photo({}, "b", {}), c = photo({}, "c", "/x/c.jpg");
    fill({a, b, c});
    EXPECT_EQ(grid->photoCount(), 3);
    EXPECT_TRUE(grid->selectedImageThumbnails().isEmpty());
    grid->Matrix::selectAll(); // and with them the blank at the end
    EXPECT_EQ(grid->numberOfCells(), 4);
    EXPECT_EQ(grid->selectedImageThumbnails(), QList<Thumbnail>({a, b, c}));
    EXPECT_EQ(grid->pathsForSelectedImages(), QStringList({"/x/a.jpg", "/x/c.jpg"}));
    EXPECT_EQ(grid->pasteboardForDrag()->urls(),
              QList<QUrl>({QUrl::fromLocalFile("/x/a.jpg"), QUrl::fromLocalFile("/x/c.jpg")}));
    grid->matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(grid->selectedImageThumbnails(), QList<Thumbnail>({b}));
    EXPECT_TRUE(grid->pasteboardForDrag()->urls().isEmpty());
    EXPECT_TRUE(grid->pasteboardForDrag()->hasFormat("text/uri-list"));
}

TEST_F(PhotoMatrix, ACellTakesItsTitleFromItsPhoto)
{
    fill({photo({}, "Sea")});
    EXPECT_EQ(cell(0).photoTitle(), "Sea");
    EXPECT_EQ(cell(0).accessibleName(), "Sea");
    cell(0).setUsedInCurrentDocument(true);
    cell(0).setPhotoTitle("Lake");
    EXPECT_EQ(cell(0).photoTitle(), "Lake");
    const auto copy = cell(0).clone();
    EXPECT_EQ(static_cast<ZRPhotoCell &>(*copy).photoTitle(), "");
    EXPECT_FALSE(static_cast<ZRPhotoCell &>(*copy).isUsedInCurrentDocument());
    EXPECT_EQ(copy->representedObject(), nullptr);
    cell(0).setRepresentedObject(nullptr);
    EXPECT_EQ(cell(0).photoTitle(), "");
    EXPECT_FALSE(cell(0).isUsedInCurrentDocument());
}

TEST_F(PhotoMatrix, DrawsAPhotoAboveItsTitleOnWhite)
{
    fill({photo(thumbnailFile("wide.png", Qt::red, QSize(120, 30)), "Wide"),
          photo(thumbnailFile("tall.png", Qt::green, QSize(30, 120)), "Tall")});
    QPalette palette = scrollView.viewport()->palette();
    palette.setColor(QPalette::Base, Qt::magenta);
    scrollView.viewport()->setPalette(palette);
    const QImage image = drawn();
    // The area is 114 by 74 from (3, 5) on.
    EXPECT_EQ(colorAt(image, {60, 42}), QColor(Qt::red));
    EXPECT_EQ(colorAt(image, {6, 42}), QColor(Qt::red));
    EXPECT_EQ(colorAt(image, {60, 20}), QColor(Qt::white)) << "beside the picture";
    EXPECT_EQ(colorAt(image, {121 + 60, 8}), QColor(Qt::green));
    EXPECT_EQ(colorAt(image, {121 + 10, 42}), QColor(Qt::white));
    EXPECT_EQ(colorAt(image, {1, 1}), QColor(Qt::white));
    EXPECT_EQ(colorAt(image, {2 * 121 + 50, 42}), QColor(Qt::magenta)) << "a blank draws nothing";
    bool hasTitle = false;
    for (int x = 4; x < 60; ++x) {
        for (int y = 79; y < 89; ++y)
            hasTitle = hasTitle || colorAt(image, QPointF(x, y)).lightness() < 100;
    }
    EXPECT_TRUE(hasTitle);
}

TEST_F(PhotoMatrix, ASelectedCellHasThePalettesHighlight)
{
    fill({photo(thumbnailFile("a.png", Qt::red, QSize(30, 120)), "a")});
    grid->matrixSelectCellAtRow(0, 0);
    const QPalette &palette = grid->palette();
    EXPECT_EQ(colorAt(drawn(), {5, 40}), palette.color(QPalette::Inactive, QPalette::Highlight));
    scrollView.activateWindow();
    grid->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&scrollView));
    EXPECT_EQ(colorAt(drawn(), {5, 40}), palette.color(QPalette::Active, QPalette::Highlight));
}

TEST_F(PhotoMatrix, DrawsABadgeOnPhotosThatTheDocumentUses)
{
    fill({photo(thumbnailFile("a.png", Qt::blue), "a")});
    EXPECT_LT(colorAt(drawn(), {8, 5}).green(), colorAt(drawn(), {8, 5}).blue() + 1);
    cell(0).setUsedInCurrentDocument(true);
    const QColor badge = colorAt(drawn(), {4, 8});
    EXPECT_GT(badge.green(), badge.blue());
    EXPECT_EQ(ZRPhotoCell::imageInCurrentDocumentImage(2).size(), QSize(36, 36));
    EXPECT_EQ(ZRPhotoCell::imageInCurrentDocumentImage(1).size(), QSize(18, 18));
    EXPECT_EQ(ZRPhotoCell::imageInCurrentDocumentImage(1.5).size(), QSize(36, 36));
}

TEST_F(PhotoMatrix, ACellThatChangesIsDrawnAnew)
{
    fill({photo(thumbnailFile("a.png", Qt::red), "Before"), photo(thumbnailFile("b.png", Qt::green), "b")});
    const QImage first = drawn();
    cell(0).setPhotoTitle("A longer title");
    const QImage second = drawn();
    EXPECT_NE(second, first);
    EXPECT_EQ(colorAt(second, {60, 42}), QColor(Qt::red));
    cell(0).setPhotoTitle("Before");
    EXPECT_EQ(drawn(), first);
    cell(0).setUsedInCurrentDocument(true);
    EXPECT_NE(drawn(), first);
    cell(0).setUsedInCurrentDocument(false);
    EXPECT_EQ(drawn(), first);
    cell(0).setRepresentedObject(cell(1).representedObject());
    EXPECT_EQ(colorAt(drawn(), {60, 42}), QColor(Qt::green));
    grid->matrixSelectCellAtRow(0, 0);
    EXPECT_NE(colorAt(drawn(), {1, 1}), QColor(Qt::white));
    grid->matrixDeselectAllCells();
    EXPECT_EQ(colorAt(drawn(), {1, 1}), QColor(Qt::white));
}

TEST_F(PhotoMatrix, CellsOfAFractionalSizeLeaveNothingBetweenThemUndrawn)
{
    const QString file = thumbnailFile("a.png", Qt::red);
    fill(QList<Thumbnail>(8, photo(file, QStringLiteral("x"))));
    grid->setIntercellSpacing(QSizeF(0, 0));
    grid->setCellSizeForImageSize(QSizeF(101, 0)); // 107 by 91.75
    QPalette palette = scrollView.viewport()->palette();
    palette.setColor(QPalette::Base, Qt::magenta);
    scrollView.viewport()->setPalette(palette);
    const QImage image = drawn();
    for (int y = 0; y < 183; ++y)
        ASSERT_NE(image.pixelColor(3, y), QColor(Qt::magenta)) << y;
    EXPECT_EQ(image.pixelColor(3, 184), QColor(Qt::magenta));
}

TEST_F(PhotoMatrix, DrawsAtThePaintersResolutionAndThroughAnyTransform)
{
    fill({photo(thumbnailFile("a.png", Qt::red), "a")});
    drawn();
    QImage image(300, 300, QImage::Format_RGB32);
    image.setDevicePixelRatio(2);
    image.fill(Qt::blue);
    {
        QPainter painter(&image);
        painter.translate(10, 20);
        cell(0).drawWithFrame(painter, QRectF(0, 0, 120, 90), *grid);
    }
    EXPECT_EQ(image.pixelColor(19, 45), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(20, 40), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(20 + 2 * 60, 40 + 2 * 42), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(20 + 239, 40 + 179), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(20 + 240, 40 + 179), QColor(Qt::blue));
    image.fill(Qt::blue);
    {
        QPainter painter(&image);
        painter.translate(100, 10);
        painter.rotate(90);
        cell(0).drawWithFrame(painter, QRectF(0, 0, 120, 90), *grid);
    }
    EXPECT_EQ(image.pixelColor(2 * (100 - 42), 2 * (10 + 60)), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(2 * (100 - 1), 2 * (10 + 60)), QColor(Qt::white));
}

TEST_F(PhotoMatrix, DrawingTheInteriorOfABlankIsAnError)
{
    fill({photo({}, "a")});
    QImage image(50, 50, QImage::Format_RGB32);
    QPainter painter(&image);
    cell(1).drawWithFrame(painter, QRectF(0, 0, 50, 50), *grid);
    try {
        cell(1).drawInteriorWithFrame(painter, QRectF(0, 0, 50, 50), *grid);
        ADD_FAILURE() << "no failure";
    } catch (const platform::InternalInconsistency &failure) {
        const QString text = QString::fromUtf8(failure.what());
        EXPECT_TRUE(text.contains("represented object should not be NULL")) << qPrintable(text);
        EXPECT_TRUE(text.contains("ZRPhotoCell")) << qPrintable(text);
        EXPECT_TRUE(text.contains("172")) << qPrintable(text);
    }
}

TEST_F(PhotoMatrix, DrawsThePhotosThatItCan)
{
    testSupport::writeFile(in("empty.png"), "");
    testSupport::writeFile(in("odd.png"), "no picture");
    fill({photo(in("missing.png"), "missing"), photo(in("empty.png"), "empty"), photo(in("odd.png"), "odd"),
          photo(thumbnailFile("good.png", Qt::red), "good")});
    const QImage image = drawn();
    EXPECT_EQ(colorAt(image, {60, 42}), QColor(Qt::white));
    EXPECT_EQ(colorAt(image, {3 * 121 + 60, 42}), QColor(Qt::red));
    thumbnailFile("missing.png", Qt::green);
    EXPECT_EQ(colorAt(drawn(), {60, 42}), QColor(Qt::white)) << "what was refused is not tried at every paint";
    fill({std::dynamic_pointer_cast<ZRImageThumbnail>(cell(0).representedObject())});
    EXPECT_EQ(colorAt(drawn(), {60, 42}), QColor(Qt::green)) << "but when the grid is renewed";
    fill({photo(in("missing.png"), "found")});
    EXPECT_EQ(colorAt(drawn(), {60, 42}), QColor(Qt::green));
}

TEST_F(PhotoMatrix, ReadsWhatShowsAndLetsGoWhatIsFar)
{
    constexpr int count = 4000;
    const QString file = thumbnailFile("a.png", Qt::red, QSize(8, 8));
    QList<Thumbnail> photos;
    for (int i = 0; i < count; ++i)
        photos.append(photo(file, QString::number(i)));
    fill(photos);
    const auto loaded = [&] {
        return std::count_if(photos.cbegin(), photos.cend(), [](const auto &each) { return each->isImageLoaded(); });
    };
    const auto visibleAreLoaded = [&] {
        const QRectF visible = grid->visibleRect();
        for (const auto &each : grid->cells()) {
            const auto place = grid->placeOfCell(*each);
            const auto record = std::dynamic_pointer_cast<ZRImageThumbnail>(each->representedObject());
            if (record && grid->cellFrameAtRow(place.row, place.column).intersects(visible) && !record->isImageLoaded())
                return false;
        }
        return true;
    };
    EXPECT_TRUE(testSupport::waitUntil(visibleAreLoaded)) << "as many paints as it takes";
    EXPECT_LE(loaded(), 16);
    qint64 most = 0;
    for (double y = 0; y < grid->viewFrame().height(); y += 200) {
        scrollView.scrollToPoint(QPointF(0, y));
        EXPECT_TRUE(testSupport::waitUntil(visibleAreLoaded));
        most = std::max<qint64>(most, loaded());
    }
    EXPECT_LE(most, 440) << "far ones are let go";
    EXPECT_FALSE(photos.first()->isImageLoaded());
    EXPECT_TRUE(photos.last()->isImageLoaded());
}

TEST_F(PhotoMatrix, ReadsPicturesHoweverLongDrawingTakes)
{
    struct SlowCell : ZRPhotoCell {
        std::unique_ptr<platform::Cell> clone() const override { return std::make_unique<SlowCell>(); }
        void drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view) override
        {
            QElapsedTimer timer;
            for (timer.start(); !timer.hasExpired(2 * ZRPhotoMatrix::loadingTime);)
                continue;
            ZRPhotoCell::drawWithFrame(painter, frame, view);
        }
    };
    grid->setPrototype(std::make_unique<SlowCell>());
    const QString file = thumbnailFile("a.png", Qt::red);
    const QList<Thumbnail> photos{photo(file, "a"), photo(file, "b"), photo(file, "c")};
    fill(photos);
    EXPECT_TRUE(testSupport::waitUntil([&] {
        return std::all_of(photos.cbegin(), photos.cend(), [](const auto &each) { return each->isImageLoaded(); });
    }));
}

TEST_F(PhotoMatrix, LetsGoWhatWasReplaced)
{
    const QString file = thumbnailFile("a.png", Qt::red, QSize(8, 8));
    QList<Thumbnail> all; // kept by their source
    for (int round = 0; round < 60; ++round) {
        QList<Thumbnail> photos;
        for (int i = 0; i < 12; ++i)
            photos.append(photo(file, QString::number(i)));
        fill(photos);
        all += photos;
        drawn();
    }
    EXPECT_LE(std::count_if(all.cbegin(), all.cend(), [](const auto &each) { return each->isImageLoaded(); }), 440);
}
