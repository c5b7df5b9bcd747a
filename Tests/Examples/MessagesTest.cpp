#include "zrmedia/Messages.h"
#include "zrmedia/Support.h"

#include "ZRCommon/ZRLocalizedString.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

Failure failureThrowing(const std::function<void()> &thrower)
{
    Arguments arguments;
    arguments.file = QStringLiteral("f");
    return withoutExceptions(arguments, [&]() -> Failure {
        thrower();
        return {};
    });
}

class GermanMessages : public testing::Test
{
protected:
    void SetUp() override { ZRLocalization::setLanguages({QStringLiteral("de")}); }
    void TearDown() override { ZRLocalization::setLanguages({}); }
};

} // namespace

TEST(Messages, ControlCharactersAreMadeVisible)
{
    EXPECT_EQ(withVisibleControls(QStringLiteral("a\nb\rc\td")), "a\\nb\\rc\\td");
    EXPECT_EQ(withVisibleControls(QStringLiteral("\x1b[2J\x07\x7f")), "\\x1b[2J\\x07\\x7f");
    EXPECT_EQ(withVisibleControls(QString(QChar(0x9b)) + QChar(0)), "\\x9b\\x00");
    const QString harmless = QString::fromUtf8("Müßiggang – 日曜日 \\ 🎵");
    EXPECT_EQ(withVisibleControls(harmless), harmless);
}

TEST(Messages, AnErrorIsDescribedWithPathAndPlace)
{
    EXPECT_EQ(described({platform::ErrorCode::Malformed, "no end", 17, "f"}), "f: byte 17: no end");
    EXPECT_EQ(described({platform::ErrorCode::NotFound, "there is no such file", -1, "f"}), "f: there is no such file");
}

TEST(Messages, AnExceptionBecomesTheFailureOfItsCommand)
{
    EXPECT_EQ(failureThrowing([] {}), std::nullopt);
    EXPECT_EQ(failureThrowing([] { throw std::bad_alloc(); }), "f: not enough memory");
    EXPECT_EQ(failureThrowing([] { throw std::runtime_error("why"); }), "f: why");
}

TEST_F(GermanMessages, WhatConcernsAWholeFileIsInGerman)
{
    for (const char *reason :
         {"there is no such file", "it is not a regular file", "the file cannot be opened for reading",
          "the file cannot be read to its end", "the file is larger than 4 GiB", "not enough memory for the file",
          "this is no property list", "the property list is no dictionary", "it holds neither playlists nor tracks",
          "it holds neither albums nor photos", "the file is empty", "it begins like no picture",
          "the file is too large", "there is not enough memory to read it", "its name is not UTF-8",
          "its thumbnail cannot be written"}) {
        const QString text = described({platform::ErrorCode::NotReadable, QString::fromLatin1(reason), -1, "f"});
        EXPECT_TRUE(text.startsWith(QLatin1String("f: ")));
        EXPECT_NE(text, QLatin1String("f: ") + QLatin1String(reason));
    }
    EXPECT_EQ(described({platform::ErrorCode::Malformed, "no end", 17, "f"}), "f: byte 17: no end");
    EXPECT_EQ(*failureThrowing([] { throw std::bad_alloc(); }), "f: der Speicher reicht nicht");
}

TEST_F(GermanMessages, NamesStandInGermanQuotationMarks)
{
    Arguments arguments;
    arguments.file = QStringLiteral("f");
    arguments.collection = QStringLiteral("x");
    EXPECT_EQ(unknownName(arguments, ZRLocalizedString("no album is called \"%1\"; there are: %2"), {"a", "b"}),
              QString::fromUtf8("f: kein Album heißt „x“; es gibt: „a“, „b“"));
}
