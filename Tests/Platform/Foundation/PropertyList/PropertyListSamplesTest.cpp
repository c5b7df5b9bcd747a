#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Support/TestSupport.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using namespace platform;

namespace {

PropertyListValue readSample(const QString &relativePath)
{
    const auto value = PropertyList::read(testSupport::sampleFile(relativePath));
    EXPECT_TRUE(value) << qPrintable(relativePath) << ": " << qPrintable(value.error().toString());
    return value.valueOr({});
}

PropertyListValue readValid(const char *name)
{
    return readSample(QStringLiteral("plists/swift-foundation-valid/") + QLatin1String(name));
}

// Asks everything of every value, so that a document that cannot be decoded shows.
void decodeAll(const PropertyListView &value)
{
    static_cast<void>(value.toVariant());
    EXPECT_TRUE(value.isNull() || value.type() != PropertyListType::Null);
    for (const auto &entry : value.entries()) {
        EXPECT_EQ(QString::fromUtf8(entry.utf8Key()), entry.key());
        decodeAll(entry.value());
    }
    for (const auto &element : value.elements())
        decodeAll(element);
}

enum class Verdict { Valid, Invalid, Any };

Verdict verdictOf(const QString &expectation)
{
    if (expectation.startsWith(QLatin1String("valid"), Qt::CaseInsensitive))
        return Verdict::Valid;
    return expectation.startsWith(QLatin1String("invalid"), Qt::CaseInsensitive) ? Verdict::Invalid : Verdict::Any;
}

class PropertyListSamples : public testing::Test
{
protected:
    void SetUp() override { ZR_REQUIRE_SAMPLE_DATA(); }

    // Reads every file of a folder of the sample data and compares the outcome with what is known of it.
    static void checkFolder(const QString &folder, int leastFiles)
    {
        const QByteArray text = testSupport::readFile(testSupport::sampleFile(QStringLiteral("EXPECTED.json")));
        const QJsonObject expectations = QJsonDocument::fromJson(text).object();
        int files = 0;
        for (auto it = expectations.begin(); it != expectations.end(); ++it) {
            const bool isSourceCode =
                it.key().endsWith(QLatin1String(".m")); // the program that wrote some of the lists
            if (!it.key().startsWith(folder) || isSourceCode)
                continue;
            ++files;
            SCOPED_TRACE(qPrintable(it.key()));
            check(it.key(), verdictOf(it.value().toObject().value(QStringLiteral("expected")).toString()));
        }
        EXPECT_GE(files, leastFiles);
    }

    static void check(const QString &relativePath, Verdict verdict)
    {
        const QString path = testSupport::sampleFile(relativePath);
        const auto fromFile = PropertyList::read(path);
        const auto fromMemory = PropertyList::parse(testSupport::readFile(path));
        ASSERT_EQ(bool(fromFile), bool(fromMemory));
        if (fromFile) {
            EXPECT_TRUE(verdict != Verdict::Invalid);
            decodeAll(fromFile.value());
        } else {
            EXPECT_TRUE(verdict != Verdict::Valid) << qPrintable(fromFile.error().toString());
            EXPECT_EQ(fromFile.error().byteOffset, fromMemory.error().byteOffset);
            EXPECT_EQ(fromFile.error().reason, fromMemory.error().reason);
            EXPECT_FALSE(fromFile.error().reason.isEmpty());
            EXPECT_EQ(fromFile.error().path, path);
        }
    }
};

TEST_F(PropertyListSamples, ListsOfAllFormsReadAsExpected)
{
    checkFolder(QStringLiteral("plists/"), 150);
}

TEST_F(PropertyListSamples, MusicLibrariesReadAsExpected)
{
    checkFolder(QStringLiteral("itunes/"), 7);
}

TEST_F(PropertyListSamples, AlbumDatabasesReadAsExpected)
{
    checkFolder(QStringLiteral("iphoto/"), 5);
}

TEST_F(PropertyListSamples, MusicLibrariesHoldAllTracksAndPlaylists)
{
    struct Library {
        const char *name;
        int tracks, playlists;
    };
    for (const auto &[name, tracks, playlists] :
         {Library{"fixture-11.0.4-amarok.xml", 57, 10}, Library{"fixture-12.6.0-protected-video-url.xml", 402, 11},
          Library{"large-11.1.3-windows-mit.xml", 1779, 13}, Library{"mid-music1.4.6-fr-nbsp.xml", 463, 6}}) {
        const auto library = readSample(QStringLiteral("itunes/") + QLatin1String(name));
        EXPECT_EQ(library.value(u"Tracks").count(), tracks) << name;
        EXPECT_EQ(library.value(u"Playlists").count(), playlists) << name;
    }
}

TEST_F(PropertyListSamples, Utf16AndUtf32HoldTheSameAsUtf8)
{
    const auto utf8 = readSample(QStringLiteral("plists/dd-plist/test1.plist"));
    for (const char *form : {"16be", "16be-bom", "16le", "16le-bom", "32be", "32be-bom", "32le", "32le-bom"}) {
        const QString name = QStringLiteral("plists/dd-plist/test-xml-utf-%1.plist").arg(QLatin1String(form));
        EXPECT_EQ(readSample(name).count(), utf8.count()) << form;
    }
    for (const char *name : {"bom-utf8.plist", "bom-utf16be.plist", "bom-utf16le.plist", "bom-utf32be.plist"})
        EXPECT_EQ(readValid(name).toString(), u"hello") << name;
}

TEST_F(PropertyListSamples, IntegersMayHaveSpaceSignsAndHexadecimalDigits)
{
    const auto spaced = readValid("int-whitespace.plist");
    ASSERT_EQ(spaced.count(), 3);
    EXPECT_EQ(spaced.at(0).toInteger(), 42);
    EXPECT_EQ(spaced.at(1).toInteger(), -99);
    EXPECT_EQ(spaced.at(2).toInteger(), -0xFACE);
    const auto hexadecimal = readValid("hex-ints.plist");
    ASSERT_EQ(hexadecimal.count(), 3);
    EXPECT_EQ(hexadecimal.at(0).toInteger(), 0x721B);
    EXPECT_EQ(hexadecimal.at(1).toInteger(), 0x1111);
    EXPECT_EQ(hexadecimal.at(2).toInteger(), -0xFFFF);
}

TEST_F(PropertyListSamples, TheLimitsOfIntegersAreKept)
{
    QList<quint64> magnitudes;
    const auto integers = readValid("int-min-max.plist");
    for (const auto &element : integers.elements())
        magnitudes += element.toUnsigned(quint64(element.toInteger()));
    EXPECT_THAT(magnitudes, testing::Contains(std::numeric_limits<quint64>::max()));
    EXPECT_THAT(magnitudes, testing::Contains(quint64(std::numeric_limits<qint64>::min())));
    EXPECT_THAT(magnitudes, testing::Contains(quint64(std::numeric_limits<qint64>::max())));
}

TEST_F(PropertyListSamples, RealsMayBeInfiniteOrNoNumber)
{
    const auto reals = readValid("reals.plist");
    const double infinity = std::numeric_limits<double>::infinity();
    const double expected[] = {1.5, 2, -3.14, 1, 3.14159, -infinity, infinity};
    ASSERT_EQ(reals.count(), std::ssize(expected));
    for (qsizetype i = 0; i < reals.count(); ++i)
        EXPECT_DOUBLE_EQ(reals.at(i).toReal(), expected[i]);
    const auto nans = readValid("nans.plist");
    ASSERT_EQ(nans.count(), 3);
    for (const auto &element : nans.elements())
        EXPECT_TRUE(std::isnan(element.toReal()));
}

TEST_F(PropertyListSamples, DatesBeyondTheCalendarAreCarriedOn)
{
    const auto value = readValid("date-day-32.plist");
    EXPECT_EQ(value.toReferenceSeconds(), 728512994);
    EXPECT_EQ(value.toDateTime(), QDateTime(QDate(2024, 2, 1), QTime(20, 43, 14), QTimeZone::utc()));
    EXPECT_EQ(readValid("date-year-0000.plist").toReferenceSeconds(), -63145612800);
    EXPECT_TRUE(readValid("date-year-0009.plist").toReferenceSeconds());
}

TEST_F(PropertyListSamples, EscapesBecomeCharacters)
{
    EXPECT_EQ(readValid("cdata.plist").toString(), u"Test &amp; &33; <![CDATA[] outside");
    EXPECT_EQ(readValid("charrefs.plist").toString(), u"These are copyright signs \u00A9 \u00A9 blah blah blah.");
    EXPECT_EQ(readValid("named-entities.plist").toString(), u"&'<>\"");
    const auto emoji = readValid("emoji-charref.plist");
    ASSERT_EQ(emoji.count(), 1);
    EXPECT_EQ((*emoji.entries().begin()).value().toString(), QString::fromUcs4(U"\U0001F698"));
    EXPECT_EQ(
        readSample(QStringLiteral("plists/mac-propertylist/entities-dict.plist")).value(u"this & that").toString(),
        u"& < > \" \u00ED '");
}

TEST_F(PropertyListSamples, ADictionaryThatHoldsOnlyAUidIsOne)
{
    const auto root = readValid("single-cfuid-dict.plist");
    EXPECT_EQ(root.type(), PropertyListType::UID);
    EXPECT_EQ(root.toUid(), 1u);
    const auto nested = readSample(QStringLiteral("plists/libplist-behaviour/cfuid-nested.plist")).value(u"obj");
    EXPECT_EQ(nested.type(), PropertyListType::UID);
    EXPECT_EQ(nested.toUid(), 7u);
    EXPECT_EQ(readValid("uid-array.bplist").at(0).toUid(), 1u);
}

TEST_F(PropertyListSamples, BinaryAndOldStyleListsHoldTheirValues)
{
    const auto numbers = readValid("array-42-314-255.bplist");
    ASSERT_EQ(numbers.count(), 3);
    EXPECT_EQ(numbers.at(1).toInteger(), 314);
    EXPECT_EQ(readValid("ostep-comments.plist").count(), 3);
    EXPECT_EQ(readValid("ostep-strings-file.plist").count(), 3);
}

TEST_F(PropertyListSamples, AListThatHoldsNothingIsNull)
{
    EXPECT_TRUE(readSample(QStringLiteral("plists/patsplat/commented.plist")).isNull());
}

TEST_F(PropertyListSamples, ReferencesBetweenElementsAreRefusedWhereTheyStand)
{
    const auto value =
        PropertyList::read(testSupport::sampleFile(QStringLiteral("plists/rust-plist/xml_entity_error.plist")));
    ASSERT_FALSE(value);
    EXPECT_EQ(value.error().byteOffset, 164);
}

} // namespace
