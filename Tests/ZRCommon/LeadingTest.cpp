#include "ZRCommon/Leading.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextTable>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Leading::Alignment;
using Leading::changeAlignment;
using Leading::changeLeading;

namespace {

struct LeadingTest : testing::Test {
    QTextDocument document;

    // Paragraphs of nine characters and their end, at positions 0, 10, 20, …; one format for each.
    void fill(const QList<Qt::Alignment> &alignments)
    {
        QTextCursor cursor(&document);
        for (qsizetype index = 0; index < alignments.size(); ++index) {
            QTextBlockFormat format;
            format.setAlignment(alignments[index]);
            if (index == 0)
                cursor.setBlockFormat(format);
            else
                cursor.insertBlock(format);
            cursor.insertText(QStringLiteral("123456789"));
        }
        document.clearUndoRedoStacks();
    }
    void setSpacing(int paragraph, double spacing)
    {
        QTextCursor cursor(document.findBlockByNumber(paragraph));
        QTextBlockFormat format = cursor.blockFormat();
        format.setLineHeight(spacing, QTextBlockFormat::LineDistanceHeight);
        cursor.setBlockFormat(format);
        document.clearUndoRedoStacks();
    }
    QList<Qt::Alignment> alignments() const
    {
        QList<Qt::Alignment> result;
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
            result.append(block.blockFormat().alignment());
        return result;
    }
    QList<double> spacings() const
    {
        QList<double> result;
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
            result.append(block.blockFormat().lineHeight());
        return result;
    }
};

const Qt::Alignment left = Qt::AlignLeft;
const Qt::Alignment center = Qt::AlignHCenter;
const Qt::Alignment justified = Qt::AlignJustify;
const Qt::Alignment pageRight = Qt::AlignRight | Qt::AlignAbsolute;

TEST_F(LeadingTest, ChangesATextOfOneRunAsAWholeFromItsBeginning)
{
    fill({left, left, left, left});
    changeAlignment(document, Alignment::Center, {10, 5});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, center, center, center}));
}

TEST_F(LeadingTest, ChangesAllRunsUpToTheEndOfTheRangeEachAsAWhole)
{
    fill({left, justified, justified, left});
    changeAlignment(document, Alignment::Center, {12, 2});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, center, center, left}));
}

TEST_F(LeadingTest, ARunThatBeginsAtTheEndOfTheRangeStays)
{
    fill({left, justified});
    changeAlignment(document, Alignment::Center, {0, 10});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, justified}));
    changeAlignment(document, Alignment::Center, {5, 6});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, center}));
}

TEST_F(LeadingTest, AnEmptyRangeChangesWhatLiesBeforeIt)
{
    fill({left, justified});
    changeAlignment(document, Alignment::Center, {0, 0});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({left, justified}));
    changeAlignment(document, Alignment::Center, {10, 0});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, justified}));
}

TEST_F(LeadingTest, ARangeMayReachBeyondTheText)
{
    fill({left, justified});
    const int largest = std::numeric_limits<int>::max();
    changeAlignment(document, Alignment::Center, {largest, largest});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, center}));
}

TEST_F(LeadingTest, ARangeThatEndsBeforeTheTextChangesNothing)
{
    fill({left});
    const int smallest = std::numeric_limits<int>::min();
    changeAlignment(document, Alignment::Center, {-10, 5});
    changeAlignment(document, Alignment::Center, {5, -5});
    changeAlignment(document, Alignment::Center, {smallest, smallest});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({left}));
    changeAlignment(document, Alignment::Center, {-10, 11});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center}));
}

TEST_F(LeadingTest, AnEmptyDocumentIsOneParagraph)
{
    changeAlignment(document, Alignment::Center, {0, 0});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({left}));
    changeAlignment(document, Alignment::Center, {0, 1});
    changeLeading(document, 2, {0, 1});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center}));
    EXPECT_EQ(spacings(), QList<double>({2}));
}

TEST_F(LeadingTest, KnowsTheAlignmentsByTheirNumbers)
{
    const struct {
        int number;
        Qt::Alignment alignment;
    } rows[] = {{0, Qt::AlignLeft | Qt::AlignAbsolute}, {1, pageRight}, {2, center}, {3, justified}, {4, left}};
    for (const auto &row : rows) {
        document.clear();
        fill({Qt::AlignRight});
        changeAlignment(document, Alignment(row.number), {0, 1});
        EXPECT_EQ(alignments(), QList<Qt::Alignment>({row.alignment})) << row.number;
        EXPECT_EQ(document.begin().blockFormat().hasProperty(QTextFormat::BlockAlignment), row.number != 4);
    }
}

TEST_F(LeadingTest, ANumberThatIsNoAlignmentChangesNothing)
{
    fill({justified});
    changeAlignment(document, Alignment(5), {0, 10});
    changeAlignment(document, Alignment(-1), {0, 10});
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({justified}));
}

TEST_F(LeadingTest, AddsToTheSpacingOfEachRun)
{
    fill({left, left, left});
    setSpacing(1, 4);
    setSpacing(2, 7.5);
    changeLeading(document, 1.5f, {0, 20});
    EXPECT_EQ(spacings(), QList<double>({1.5, 5.5, 7.5}));
    EXPECT_EQ(document.begin().blockFormat().lineHeightType(), QTextBlockFormat::LineDistanceHeight);
}

TEST_F(LeadingTest, RunsThatBecomeEqualOnTheWayStayApart)
{
    fill({left, left});
    setSpacing(0, 1);
    setSpacing(1, 3);
    changeLeading(document, 2, {0, 20});
    EXPECT_EQ(spacings(), QList<double>({3, 5})) << "the first is 3 by now, as the second was";
}

TEST_F(LeadingTest, NeverTakesTheSpacingToZeroOrBelow)
{
    fill({left, left, left, left});
    setSpacing(1, 2);
    setSpacing(2, 3);
    setSpacing(3, 5);
    changeLeading(document, -3, {0, 40});
    EXPECT_EQ(spacings(), QList<double>({0, 2, 3, 2}));
    EXPECT_EQ(document.begin().blockFormat().lineHeightType(), QTextBlockFormat::SingleHeight);
}

TEST_F(LeadingTest, LeavesTheSpacingWhereTheSumIsNoLength)
{
    fill({left});
    setSpacing(0, 2);
    for (const float leading : {std::nanf(""), std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::lowest()})
        changeLeading(document, leading, {0, 40});
    EXPECT_EQ(spacings(), QList<double>({2}));
    EXPECT_FALSE(document.isUndoAvailable());
}

TEST_F(LeadingTest, AddsInSinglePrecision)
{
    fill({left});
    setSpacing(0, 0.1);
    changeLeading(document, 0.2f, {0, 1});
    EXPECT_EQ(spacings(), QList<double>({double(0.1f + 0.2f)}));
    EXPECT_NE(spacings()[0], 0.1 + 0.2);
}

TEST_F(LeadingTest, ALineHeightOfAnotherKindCountsAsNoSpacing)
{
    fill({left});
    QTextBlockFormat format;
    format.setLineHeight(150, QTextBlockFormat::ProportionalHeight);
    QTextCursor(document.begin()).setBlockFormat(format);
    changeLeading(document, -1, {0, 1});
    EXPECT_EQ(document.begin().blockFormat().lineHeightType(), QTextBlockFormat::ProportionalHeight);
    changeLeading(document, 2, {0, 1});
    EXPECT_EQ(document.begin().blockFormat().lineHeightType(), QTextBlockFormat::LineDistanceHeight);
    EXPECT_EQ(spacings(), QList<double>({2}));
}

TEST_F(LeadingTest, KeepsWhatElseTheParagraphsHaveAndTheirCharacters)
{
    fill({left, left});
    QTextBlockFormat format;
    format.setLeftMargin(12);
    format.setHeadingLevel(2);
    QTextCursor cursor(document.begin());
    cursor.setBlockFormat(format);
    cursor.select(QTextCursor::WordUnderCursor);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    cursor.setCharFormat(bold);
    changeAlignment(document, Alignment::Right, {0, 1});
    changeLeading(document, 3, {0, 1});
    const QTextBlockFormat result = document.begin().blockFormat();
    EXPECT_EQ(result.leftMargin(), 12);
    EXPECT_EQ(result.headingLevel(), 2);
    EXPECT_EQ(result.alignment(), pageRight);
    EXPECT_EQ(cursor.charFormat().fontWeight(), int(QFont::Bold));
    EXPECT_EQ(document.toPlainText(), QStringLiteral("123456789\n123456789"));
}

TEST_F(LeadingTest, EachCallIsOneStepForUndoAndNoneWhenNothingChanges)
{
    fill({left, justified, left});
    const QList<Qt::Alignment> before = alignments();
    changeAlignment(document, Alignment::Center, {0, 30});
    const int commands = document.availableUndoSteps();
    changeAlignment(document, Alignment::Center, {0, 30});
    EXPECT_EQ(document.availableUndoSteps(), commands) << "nothing was left to change";
    document.undo();
    EXPECT_EQ(alignments(), before);
    EXPECT_FALSE(document.isUndoAvailable());
    document.redo();
    EXPECT_EQ(alignments(), QList<Qt::Alignment>({center, center, center}));
}

TEST_F(LeadingTest, ChangesParagraphsInTheCellsOfATable)
{
    QTextCursor cursor(&document);
    QTextTable *table = cursor.insertTable(2, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("cell"));
    changeAlignment(document, Alignment::Center, {0, 1000});
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        EXPECT_EQ(block.blockFormat().alignment(), center) << block.position();
}

} // namespace
