#include "PropertyListXmlDocuments.h"

#include "Platform/Foundation/PropertyList/PropertyListXmlIndex_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlText_p.h"

#include <gmock/gmock.h>

using namespace platform;
using testSupport::contentOf;
using testSupport::parseXml;
using testSupport::parseXmlEveryWay;
using testSupport::RandomXml;

namespace {

PropertyListValue valueOf(testSupport::ParsedXml parsed)
{
    EXPECT_FALSE(parsed.error) << qPrintable(parsed.error->toString());
    return parsed.document ? PropertyListDocument::handOver(std::move(parsed.document)) : PropertyListValue();
}

// The same list with a space in every tag that the fast lane knows, so that all of it takes the general path.
QByteArray withoutUsualTags(QByteArray text)
{
    for (const char *name : {"key", "dict", "array", "string", "integer", "date", "data", "real"})
        text.replace(QByteArray('<' + QByteArray(name) + '>'), QByteArray('<' + QByteArray(name) + " >"));
    return text.replace("<true/>", "<true />").replace("<false/>", "<false />");
}

QList<QByteArray> keysOf(const PropertyListView &value)
{
    QList<QByteArray> keys;
    for (const auto &entry : value.entries()) {
        const QByteArray key = entry.utf8Key();
        keys += QByteArray(key.constData(), key.size());
        keys += keysOf(entry.value());
    }
    for (const auto &element : value.elements())
        keys += keysOf(element);
    return keys;
}

// Two NaNs are never equal, so lists are compared as what they decode to.
QString decoded(const PropertyListView &value)
{
    QString text;
    QDebug(&text) << value.toVariant();
    return text;
}

TEST(PropertyListXmlRandom, BothWaysOfParsingAndAllInstructionsGiveTheSame)
{
    for (quint32 seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const auto style = seed % 3 == 0 ? RandomXml::Style::Usual : RandomXml::Style::Odd;
        const QByteArray text = RandomXml(seed, style).list(seed % 60 == 0 ? 2000 : 12);
        const auto fast = valueOf(parseXmlEveryWay(text));
        const auto general = valueOf(parseXmlEveryWay(withoutUsualTags(text)));
        ASSERT_FALSE(fast.isNull());
        EXPECT_EQ(keysOf(fast), keysOf(general));
        ASSERT_EQ(decoded(fast), decoded(general));
    }
}

TEST(PropertyListXmlRandom, NothingDependsOnWhereBlocksBegin)
{
    const QByteArray text = RandomXml(7, RandomXml::Style::Odd).list(40);
    const QString expected = decoded(valueOf(parseXmlEveryWay(text)));
    const QByteArray body = text.mid(text.indexOf("<plist"));
    for (int shift = 0; shift <= 64; ++shift) {
        EXPECT_EQ(decoded(valueOf(parseXmlEveryWay(QByteArray(shift, ' ') + body))), expected) << shift;
        const QByteArray comment = "<!--" + QByteArray(32 * 1024 - 600 + shift * 17, ' ') + "-->";
        EXPECT_EQ(decoded(valueOf(parseXmlEveryWay(comment + body))), expected) << shift;
    }
}

TEST(PropertyListXmlRandom, UsualRowsMayLieAcrossBlocks)
{
    const QByteArray row =
        "\t<key>Name</key><string>Blue &#38; Gr\xC3\xBCn</string>\n\t<key>Count</key><integer>17</integer>\n";
    const QByteArray rows = row.repeated(800); // two blocks and a bit
    for (int shift = 0; shift < row.size(); ++shift) {
        const auto list = valueOf(parseXmlEveryWay(QByteArray("<dict>" + QByteArray(shift, '\n') + rows + "</dict>")));
        ASSERT_EQ(list.count(), 1600);
        EXPECT_EQ(list.value(u"Name").toString(), u"Blue & Gr\u00FCn");
    }
}

TEST(PropertyListXmlRandom, AListCutOffAnywhereIsRefused)
{
    for (const auto style : {RandomXml::Style::Usual, RandomXml::Style::Odd}) {
        QByteArray text = RandomXml(11, style).list(25).trimmed();
        text.truncate(text.lastIndexOf("</plist") + 7);
        for (qsizetype length = 0; length <= text.size(); ++length) {
            const auto parsed = parseXmlEveryWay(text.first(length));
            ASSERT_TRUE(parsed.error) << length;
            EXPECT_GE(parsed.error->byteOffset, 0);
            EXPECT_LE(parsed.error->byteOffset, length);
            EXPECT_FALSE(parsed.error->reason.isEmpty());
        }
    }
}

TEST(PropertyListXmlRandom, FlippedBitsNeverDoHarm)
{
    QRandomGenerator random(3);
    for (int round = 0; round < 6000; ++round) {
        const auto style = round % 2 == 0 ? RandomXml::Style::Usual : RandomXml::Style::Odd;
        QByteArray text = RandomXml(quint32(round % 20), style).list(8);
        for (int flips = random.bounded(1, 4); flips > 0; --flips)
            text[random.bounded(int(text.size()))] ^= char(1 << random.bounded(8));
        auto parsed = parseXmlEveryWay(text);
        if (parsed.error) {
            EXPECT_LE(parsed.error->byteOffset, text.size());
        } else if (parsed.document) {
            decoded(PropertyListDocument::handOver(std::move(parsed.document)));
        }
    }
}

TEST(PropertyListXmlRandom, ADocumentMayEndWithItsLastByte)
{
    // The text is copied to where nothing readable follows but its padding, for the address sanitizer to watch.
    for (const char *text :
         {"<true/>", "<string>a</string>", "<plist><dict><key>a</key><integer>1</integer></dict></plist>"})
        EXPECT_FALSE(valueOf(parseXmlEveryWay(QByteArray(text))).isNull());
}

// MARK: The pieces

TEST(PropertyListXmlIndex, ListsAllMarkupOfAnyStretch)
{
    QRandomGenerator random(1);
    for (int round = 0; round < 500; ++round) {
        const int size = random.bounded(400);
        QByteArray text(size + PropertyListXmlIndex::Overread, '&');
        QByteArray expected;
        const auto from = quint32(random.bounded(size + 1));
        bool expectedReturn = false;
        QList<quint32> expectedPlaces;
        for (int i = 0; i < size; ++i) {
            text[i] = "ab<&\r=\xBC\xA6"[random.bounded(round % 2 == 0 ? 8 : 2)];
            if (quint32(i) >= from && (text[i] == '<' || text[i] == '&'))
                expectedPlaces += quint32(i);
            expectedReturn |= quint32(i) >= from && text[i] == '\r';
        }
        for (const InstructionSet instructions : {InstructionSet::Plain, bestInstructionSet()}) {
            std::vector<quint32> places(size_t(size + PropertyListXmlIndex::Overwrite));
            const auto found =
                PropertyListXmlIndex::find(text.constData(), from, quint32(size), places.data(), instructions);
            EXPECT_EQ(QList<quint32>(places.data(), found.end), expectedPlaces);
            EXPECT_TRUE(found.carriageReturn || !expectedReturn);
        }
    }
}

TEST(PropertyListXmlScalars, Base64TakesSpaceAndLeavesOutPaddingOnlyWhole)
{
    using PropertyListXmlScalars::isBase64;
    for (const char *valid : {"", " \t\r\n", "QUJD", "QUI=", "QQ==", "QUI", "QQ", " Q U\nJ D ", "+/+/"})
        EXPECT_TRUE(isBase64(valid)) << valid;
    for (const char *invalid : {"Q", "QUJDR", "=", "QQ=", "QUJD=", "Q===", "QQ==Q", "-_", "QUJ\x80"})
        EXPECT_FALSE(isBase64(invalid)) << invalid;
}

TEST(PropertyListXmlScalars, QuickChecksTakeWhatTheyName)
{
    const auto isShortNumber = [](const QByteArray &text) {
        const QByteArray padded = "12345678" + text + "x23456789";
        return PropertyListXmlScalars::isShortNumber(padded.constData() + 8, text.size());
    };
    for (const char *number : {"0", "9", "12", "1234567", "12345678", "123456789", "1234567890123456"})
        EXPECT_TRUE(isShortNumber(number)) << number;
    for (const char *other : {"", "12345678901234567", "a", "-1", "+1", " 1", "1 ", "12/", "12:", "1234567\xB1",
                              "/2345678", "x23456789", "12345678x"})
        EXPECT_FALSE(isShortNumber(other)) << other;
}

TEST(PropertyListXmlScalars, EveryByteOfAUsualDateIsChecked)
{
    const QByteArray date = "2024-01-31T20:43:14Z";
    EXPECT_TRUE(PropertyListXmlScalars::isUsualDate(date.constData(), date.size()));
    EXPECT_FALSE(PropertyListXmlScalars::isUsualDate(date.constData(), date.size() - 1));
    for (qsizetype i = 0; i < date.size(); ++i) {
        for (const char other : {'/', ':', '-', 'T', 'Z', ' ', '\0', '\xB0', '.'}) {
            QByteArray changed = date;
            changed[i] = other;
            EXPECT_EQ(PropertyListXmlScalars::isUsualDate(changed.constData(), changed.size()), changed == date)
                << changed.constData();
        }
    }
}

} // namespace
