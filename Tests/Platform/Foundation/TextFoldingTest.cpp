#include "Platform/Foundation/TextFolding.h"

#include <QString>

#include <random>

#include <gtest/gtest.h>

namespace {

using namespace platform;

// The definition, code point by code point.
QByteArray slowlyFolded(const QString &text)
{
    QString folded;
    const auto codePoints = text.normalized(QString::NormalizationForm_C).toUcs4();
    for (const uint c : codePoints) {
        const char32_t fold = QChar::toCaseFolded(c);
        folded += QString::fromUcs4(&fold, 1);
    }
    return folded.toUtf8();
}

QByteArray foldedUtf8(const char *text)
{
    return TextFolding::folded(QByteArrayView(text));
}

TEST(TextFolding, MakesAsciiLetterCaseVanishAndLeavesTheRest)
{
    QByteArray ascii, expected;
    for (char c = 0; c >= 0 && c < 127; ++c) {
        ascii += c;
        expected += c >= 'A' && c <= 'Z' ? char(c + 32) : c;
    }
    for (qsizetype start = 0; start < 20; ++start) {
        for (qsizetype size = 0; start + size <= ascii.size(); ++size)
            ASSERT_EQ(TextFolding::folded(QByteArrayView(ascii.mid(start, size))), expected.mid(start, size));
    }
}

TEST(TextFolding, ComposesBeforeItFolds)
{
    EXPECT_EQ(foldedUtf8("BJO\xCC\x88RK"), QByteArray("bj\xC3\xB6rk")); // O and combining diaeresis
    EXPECT_EQ(foldedUtf8("BJ\xC3\x96RK"), QByteArray("bj\xC3\xB6rk"));
    EXPECT_EQ(foldedUtf8("\xE2\x84\xAB"), QByteArray("\xC3\xA5")); // angstrom sign: letter a with ring
}

TEST(TextFolding, UsesSimpleFoldingOnly)
{
    EXPECT_EQ(foldedUtf8("STRASSE"), QByteArray("strasse"));
    EXPECT_EQ(foldedUtf8("Stra\xC3\x9F"
                         "e"),
              QByteArray("stra\xC3\x9F"
                         "e")); // sharp s is not ss
    EXPECT_EQ(foldedUtf8("\xE1\xBA\x9E"), QByteArray("\xC3\x9F")); // capital sharp s
    EXPECT_EQ(foldedUtf8("\xC4\xB0"), QByteArray("\xC4\xB0")); // capital i with dot: no simple fold
}

TEST(TextFolding, FoldsLettersThatLookForeignToTheAsciiLetterTheyAre)
{
    EXPECT_EQ(foldedUtf8("\xE2\x84\xAA"), QByteArray("k")); // kelvin sign
    EXPECT_EQ(foldedUtf8("podca\xC5\xBFt"), QByteArray("podcast")); // long s
}

TEST(TextFolding, AgreesWithTheDefinitionForEveryCodePointAloneAndBetweenOthers)
{
    const QString marks[] = {QString(),
                             QStringLiteral("e"),
                             QStringLiteral("\u0301"),
                             QStringLiteral("\u0327"),
                             QStringLiteral("\u1161"),
                             QStringLiteral("\u3099"),
                             QStringLiteral("A")};
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (c >= 0xD800 && c < 0xE000)
            continue;
        const QString single = QString::fromUcs4(&c, 1);
        const int count = c < 0x3200 || (c >= 0xA000 && c < 0x11800) || c > 0x1D000 ? 7 : 1;
        for (int i = 0; i < (c < 0x20000 ? count : 1); ++i) {
            const QString text = i % 2 ? marks[i] + single : single + marks[i];
            ASSERT_EQ(TextFolding::folded(QByteArrayView(text.toUtf8())), slowlyFolded(text))
                << std::hex << uint(c) << " " << i;
        }
    }
}

TEST(TextFolding, AgreesWithTheDefinitionForEveryCodePointNextToAnyOfItsNeighbours)
{
    // Marks stand close to those that canonical order swaps them with.
    for (char32_t c = 0; c < 0x3200; ++c) {
        for (char32_t other = c < 16 ? 0 : c - 16; other < c; ++other) {
            const char32_t pair[] = {c, other};
            const QString text = QString::fromUcs4(pair, 2);
            ASSERT_EQ(TextFolding::folded(QByteArrayView(text.toUtf8())), slowlyFolded(text)) << std::hex << uint(c);
        }
    }
}

TEST(TextFolding, AgreesWithTheDefinitionForEveryPairOfComposingCodePoints)
{
    for (char32_t c = 0x80; c < 0x20000; ++c) {
        if (QChar::decompositionTag(c) != QChar::Canonical)
            continue;
        const QString parts = QChar::decomposition(c);
        ASSERT_EQ(TextFolding::folded(QByteArrayView(parts.toUtf8())), slowlyFolded(parts)) << std::hex << uint(c);
    }
}

TEST(TextFolding, AgreesWithTheDefinitionForRandomText)
{
    std::mt19937 random(7);
    const std::pair<char32_t, char32_t> ranges[] = {
        {0x20, 0x7F},     {0xA0, 0x250},    {0x300, 0x345},     {0x370, 0x530},     {0x591, 0x64F},
        {0x900, 0xDFF},   {0x1100, 0x11FF}, {0x1E00, 0x2010},   {0x2100, 0x2C80},   {0x3000, 0x30FF},
        {0xAC00, 0xD7A4}, {0xF900, 0xFFFD}, {0x10400, 0x1049F}, {0x1F000, 0x1F9FF}, {0x2F800, 0x2FA1F}};
    for (int round = 0; round < 20'000; ++round) {
        QString text;
        const auto length = random() % 24;
        const auto first = random() % std::size(ranges);
        for (unsigned i = 0; i < length; ++i) {
            const auto [low, high] = ranges[random() % 3 ? first : random() % std::size(ranges)];
            const char32_t c = low + random() % (high - low);
            text += QString::fromUcs4(&c, 1);
        }
        const QByteArray expected = slowlyFolded(text);
        ASSERT_EQ(TextFolding::folded(QByteArrayView(text.toUtf8())), expected) << qPrintable(text);
        ASSERT_EQ(TextFolding::folded(QStringView(text)), expected) << qPrintable(text);
    }
}

TEST(TextFolding, TakesMalformedUtf8AsReplacementCharacters)
{
    std::mt19937 random(11);
    for (int round = 0; round < 20'000; ++round) {
        QByteArray bytes;
        for (auto i = random() % 12; i > 0; --i)
            bytes += random() % 2 ? char(random()) : "aB\xC3\x84\xE6\x84\x9B\xF0\x9F\x8E\xB5"[random() % 11];
        if (bytes.startsWith("\xEF\xBB\xBF"))
            continue;
        ASSERT_EQ(TextFolding::folded(QByteArrayView(bytes)), slowlyFolded(QString::fromUtf8(bytes)))
            << bytes.toHex().constData();
    }
}

TEST(TextFolding, KeepsALeadingByteOrderMark)
{
    EXPECT_EQ(foldedUtf8("\xEF\xBB\xBF"
                         "A"),
              QByteArray("\xEF\xBB\xBF"
                         "a"));
    EXPECT_EQ(TextFolding::folded(QStringView(u"\uFEFFA")),
              QByteArray("\xEF\xBB\xBF"
                         "a"));
}

TEST(TextFolding, KeepsALoneSurrogateDistinctFromEverythingElse)
{
    const char16_t lone[] = {'A', 0xD800, 'B'};
    EXPECT_EQ(TextFolding::folded(QStringView(lone, 3)),
              QByteArray("a\xED\xA0\x80"
                         "b"));
    EXPECT_EQ(foldedUtf8("\xED\xA0\x80"), QByteArray("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"));
}

TEST(TextFolding, AppendsToWhatIsThere)
{
    QByteArray arena("X");
    TextFolding::appendFolded(arena, "ABC");
    TextFolding::appendFolded(arena, "\xC3\x84");
    TextFolding::appendFolded(arena, "e\xCC\x81");
    TextFolding::appendFolded(arena, "");
    EXPECT_EQ(arena, QByteArray("Xabc\xC3\xA4\xC3\xA9"));
}

TEST(TextFolding, KeepsNulCharacters)
{
    EXPECT_EQ(TextFolding::folded(QByteArrayView("A\0B", 3)), QByteArray("a\0b", 3));
}

TEST(TextFolding, ComparesWithFoldedText)
{
    EXPECT_TRUE(TextFolding::equalsFolded("PODCAST", "podcast"));
    EXPECT_FALSE(TextFolding::equalsFolded("PODCASTS", "podcast"));
}

} // namespace
