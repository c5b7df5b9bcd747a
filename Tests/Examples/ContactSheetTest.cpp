#include "zrmedia/ContactSheet.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr QSize landscape{240, 160}, portrait{120, 180}, panorama{240, 20}, strip{4, 240};

ContactSheet sheetOf(const QList<QSize> &sizes, std::optional<int> width = {})
{
    auto sheet = ContactSheet::laidOut(sizes, width);
    EXPECT_TRUE(sheet);
    return *sheet;
}

/// The frames by rows.
QList<QList<QRect>> rowsOf(const ContactSheet &sheet)
{
    QList<QList<QRect>> rows;
    for (const QRect &frame : sheet.pictureFrames()) {
        if (rows.isEmpty() || rows.last().last().top() != frame.top())
            rows.append(QList<QRect>());
        rows.last().append(frame);
    }
    return rows;
}

/// Frames are within the sheet, in order, apart from each other, and rows but the last fill the width.
void expectOrderly(const ContactSheet &sheet)
{
    const QRect bounds(QPoint(), sheet.size());
    const QList<QList<QRect>> rows = rowsOf(sheet);
    int bottom = 0;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        int right = 0;
        for (const QRect &frame : rows[i]) {
            EXPECT_TRUE(bounds.contains(frame));
            EXPECT_GT(frame.left(), right);
            EXPECT_GT(frame.top(), bottom);
            EXPECT_EQ(frame.height(), rows[i].first().height());
            right = frame.right();
        }
        const int margin = bounds.width() - 1 - right;
        EXPECT_GE(margin, rows[i].first().left() - 1);
        EXPECT_TRUE(i + 1 == rows.size() || margin <= rows[i].first().left() + 1) << "row " << i;
        bottom = rows[i].first().bottom();
    }
}

} // namespace

TEST(ContactSheet, FillsItsRows)
{
    QList<QSize> sizes;
    for (int i = 0; i < 100; ++i)
        sizes += {landscape, portrait, i % 7 ? landscape : panorama};
    for (const auto width : {std::optional<int>(), std::optional(200), std::optional(777), std::optional(20'000)}) {
        const ContactSheet sheet = sheetOf(sizes, width);
        EXPECT_EQ(sheet.pictureFrames().size(), sizes.size());
        EXPECT_EQ(sheet.size().width(), width.value_or(sheet.size().width()));
        expectOrderly(sheet);
    }
}

TEST(ContactSheet, KeepsTheProportionsOfPictures)
{
    const ContactSheet sheet = sheetOf({landscape, portrait, landscape, landscape, portrait}, 1600);
    for (qsizetype i = 0; i < 5; ++i) {
        const QSize size = i == 1 || i == 4 ? portrait : landscape;
        const QRect frame = sheet.pictureFrames()[i];
        EXPECT_NEAR(double(frame.width()) / frame.height(), double(size.width()) / size.height(), 0.02);
    }
}

TEST(ContactSheet, KeepsPanoramasAndStripsToAMeasure)
{
    const ContactSheet sheet = sheetOf({panorama, strip, landscape}, 1600);
    expectOrderly(sheet);
    EXPECT_LE(sheet.pictureFrames()[0].width(), sheet.pictureFrames()[0].height() * 7);
    EXPECT_GE(sheet.pictureFrames()[1].width(), 20);
}

TEST(ContactSheet, IsAboutAPageThatLiesOnItsLongSide)
{
    for (const int count : {20, 100, 500}) {
        const QSize size = sheetOf(QList<QSize>(count, landscape)).size();
        EXPECT_NEAR(double(size.width()) / size.height(), 1.33, 0.35) << count;
    }
}

TEST(ContactSheet, DoesNotEnlargeTheFewOfAnUnfinishedRow)
{
    for (const QList<QSize> &sizes : {QList<QSize>{landscape}, {portrait, landscape}, {strip}}) {
        const ContactSheet sheet = sheetOf(sizes, 2000);
        for (const QRect &frame : sheet.pictureFrames())
            EXPECT_LE(frame.height(), 160);
        expectOrderly(sheet);
    }
}

TEST(ContactSheet, HasRoomForABlank)
{
    const ContactSheet sheet = sheetOf({QSize(), QSize(0, 5), landscape});
    expectOrderly(sheet);
    EXPECT_GT(sheet.pictureFrames()[0].width(), 100);
}

TEST(ContactSheet, ShowsSeveralPicturesInTheRowOfANarrowSheet)
{
    EXPECT_GE(rowsOf(sheetOf(QList<QSize>(20, landscape), 300)).first().size(), 3);
}

TEST(ContactSheet, MakesManyPicturesSmallAndLeavesTheirTitlesOut)
{
    EXPECT_TRUE(sheetOf(QList<QSize>(500, landscape)).showsTitles());
    const ContactSheet sheet = sheetOf(QList<QSize>(20'000, landscape));
    EXPECT_LE(qint64(sheet.size().width()) * sheet.size().height(), 100'000'000);
    EXPECT_FALSE(sheet.showsTitles());
    expectOrderly(sheet);
    EXPECT_LE(sheetOf(QList<QSize>(5'000, landscape), 600).size().height(), 30'000);
    EXPECT_FALSE(ContactSheet::laidOut(QList<QSize>(100'000, landscape), 200));
}

TEST(ContactSheet, HasAHeadingAlone)
{
    const ContactSheet sheet = sheetOf({});
    EXPECT_TRUE(sheet.pictureFrames().isEmpty());
    EXPECT_FALSE(sheet.size().isEmpty());
}
