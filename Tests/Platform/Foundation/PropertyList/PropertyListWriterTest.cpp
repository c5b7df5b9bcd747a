#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlWriter.h"
#include "Support/PropertyListSamples.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace platform;

namespace {

const QByteArray Head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                        "<plist version=\"1.0\">\n";

// What stands between the head and the end.
std::string written(const QVariant &root)
{
    const auto xml = PropertyList::writeXml(root);
    if (!xml)
        return xml.error().toString().toStdString();
    EXPECT_TRUE(xml.value().startsWith(Head));
    EXPECT_TRUE(xml.value().endsWith("</plist>\n"));
    return xml.value().mid(Head.size()).chopped(9).toStdString();
}

Error refused(const QVariant &root)
{
    const auto xml = PropertyList::writeXml(root);
    EXPECT_FALSE(xml);
    return xml ? Error() : xml.error();
}

TEST(PropertyListWriter, WritesScalars)
{
    EXPECT_EQ(written(QStringLiteral("text")), "<string>text</string>\n");
    EXPECT_EQ(written(QString()), "<string></string>\n");
    EXPECT_EQ(written(true), "<true/>\n");
    EXPECT_EQ(written(false), "<false/>\n");
    EXPECT_EQ(written(QVariant::fromValue(PropertyListUid{5})),
              "<dict>\n\t<key>CF$UID</key>\n\t<integer>5</integer>\n</dict>\n");
    EXPECT_EQ(written(QByteArray("abc")), "<data>\nYWJj\n</data>\n");
    EXPECT_EQ(written(QByteArray()), "<data>\n</data>\n");
}

TEST(PropertyListWriter, WritesIntegersOfEveryType)
{
    const QVariant fives[] = {QVariant::fromValue<char>(5),
                              QVariant::fromValue<signed char>(5),
                              QVariant::fromValue<uchar>(5),
                              QVariant::fromValue<short>(5),
                              QVariant::fromValue<ushort>(5),
                              QVariant(5),
                              QVariant(5u),
                              QVariant::fromValue<long>(5),
                              QVariant::fromValue<ulong>(5),
                              QVariant(qlonglong(5)),
                              QVariant(qulonglong(5))};
    for (const QVariant &five : fives)
        EXPECT_EQ(written(five), "<integer>5</integer>\n") << five.typeName();
    EXPECT_EQ(written(std::numeric_limits<qlonglong>::min()), "<integer>-9223372036854775808</integer>\n");
    EXPECT_EQ(written(~qulonglong(0)), "<integer>18446744073709551615</integer>\n");
}

TEST(PropertyListWriter, WritesRealsWithAsFewDigitsAsReadBackTheSame)
{
    const std::pair<double, const char *> cases[] = {{0, "0"},
                                                     {-0.0, "-0"},
                                                     {1, "1"},
                                                     {1.5, "1.5"},
                                                     {0.1, "0.1"},
                                                     {100000, "100000"},
                                                     {402413114, "402413114"},
                                                     {1e16, "10000000000000000"},
                                                     {1e17, "1e+17"},
                                                     {0.0001, "0.0001"},
                                                     {0.00001, "1e-05"},
                                                     {1.0 / 3, "0.3333333333333333"},
                                                     {5e-324, "5e-324"},
                                                     {HUGE_VAL, "+infinity"},
                                                     {-HUGE_VAL, "-infinity"},
                                                     {std::nan(""), "nan"}};
    for (const auto &[number, text] : cases)
        EXPECT_EQ(written(number), "<real>" + std::string(text) + "</real>\n");
    EXPECT_EQ(written(1.5f), "<real>1.5</real>\n");
}

TEST(PropertyListWriter, WritesDatesInUtcAndWholeSeconds)
{
    const QDate day(2024, 1, 31);
    EXPECT_EQ(written(QDateTime(day, QTime(20, 43, 14), Qt::UTC)), "<date>2024-01-31T20:43:14Z</date>\n");
    EXPECT_EQ(written(QDateTime(day, QTime(20, 43, 14, 999), Qt::UTC)), "<date>2024-01-31T20:43:14Z</date>\n");
    EXPECT_EQ(written(QDateTime(day, QTime(1, 0), Qt::OffsetFromUTC, 7200)), "<date>2024-01-30T23:00:00Z</date>\n");
    EXPECT_EQ(written(QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC)), "<date>1969-12-31T23:59:59Z</date>\n");
    EXPECT_EQ(refused(QDateTime()).reason, QStringLiteral("invalid date"));
}

TEST(PropertyListWriter, WritesDatesOfAnyYearOfFourDigits)
{
    const std::pair<double, const char *> cases[] = {{-63145612800, "0000-01-02T00:00:00Z"},
                                                     {-63145699201, "-0001-12-31T23:59:59Z"},
                                                     {252423993599.5, "9999-12-31T23:59:59Z"}};
    for (const auto &[seconds, text] : cases) {
        PropertyListXmlWriter writer;
        writer.date(seconds);
        EXPECT_TRUE(writer.finish().value().contains(text)) << text;
    }
    for (const double seconds : {252423993600.0, -4e11, 1e300, std::nan("")}) {
        PropertyListXmlWriter writer;
        writer.date(seconds);
        EXPECT_EQ(writer.finish().error().reason, QStringLiteral("date out of range"));
    }
}

TEST(PropertyListWriter, IndentsContainersAndSortsKeysByCodeUnit)
{
    const QVariantMap map{{QStringLiteral("b"), QVariantList{1, QVariantList()}},
                          {QStringLiteral("B"), QVariantMap()},
                          {QStringLiteral("a"), QStringList{QStringLiteral("x")}},
                          {QStringLiteral("\uFB01"), 1},
                          {QStringLiteral("\U0001F698"), 2}};
    const char *expected = "<dict>\n"
                           "\t<key>B</key>\n\t<dict/>\n"
                           "\t<key>a</key>\n\t<array>\n\t\t<string>x</string>\n\t</array>\n"
                           "\t<key>b</key>\n\t<array>\n\t\t<integer>1</integer>\n\t\t<array/>\n\t</array>\n"
                           "\t<key>\xF0\x9F\x9A\x98</key>\n\t<integer>2</integer>\n"
                           "\t<key>\xEF\xAC\x81</key>\n\t<integer>1</integer>\n"
                           "</dict>\n";
    EXPECT_EQ(written(map), expected);
    QVariantHash hash;
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        hash.insert(entry.key(), entry.value());
    EXPECT_EQ(written(hash), expected);
    EXPECT_EQ(written(QVariantMap()), "<dict/>\n");
    EXPECT_EQ(written(QVariantList()), "<array/>\n");
}

TEST(PropertyListWriter, LinesOfDataEndBeforeColumnSeventySix)
{
    const QByteArray bytes(100, 'x');
    EXPECT_EQ(QByteArray::fromStdString(written(bytes)).split('\n').at(1).size(), 76);
    QVariant nested = bytes;
    for (int depth = 1; depth <= 10; ++depth) {
        nested = QVariantList{nested};
        const auto lines = QByteArray::fromStdString(written(nested)).split('\n');
        const QByteArray line = lines.at(depth + 1);
        const int tabs = std::min(depth, 8);
        EXPECT_EQ(line.count('\t'), tabs) << depth;
        EXPECT_EQ(line.size(), tabs + 76 - 8 * tabs) << depth;
    }
}

TEST(PropertyListWriter, EscapesWhatXmlWouldChange)
{
    EXPECT_EQ(written(QStringLiteral("<a & 'b' \"c\">\t\n\r")),
              "<string>&lt;a &amp; 'b' \"c\"&gt;\t\n&#13;</string>\n");
    EXPECT_EQ(written(QStringLiteral("é中\U0001F698\x7F\uFFFD")), "<string>é中\U0001F698\x7F\uFFFD</string>\n");
}

TEST(PropertyListWriter, LongStringsAreWhole)
{
    for (const char16_t unit : {u'x', u'&', u'中'}) {
        for (const int length : {1015, 1016, 1017, 1018, 1019, 1020, 5000}) {
            const QString text(length, QChar(unit));
            const auto escaped = QString(text).replace(QLatin1Char('&'), QLatin1String("&amp;"));
            EXPECT_EQ(written(text), "<string>" + escaped.toStdString() + "</string>\n") << length;
        }
    }
    const QString pairs = QStringLiteral("\U0001F698").repeated(1000);
    EXPECT_EQ(written(QString(QLatin1Char('x') + pairs)), "<string>x" + pairs.toStdString() + "</string>\n");
}

TEST(PropertyListWriter, WhatXmlCannotHoldIsRefusedWithThePathOfKeys)
{
    for (const QString &text :
         {QString(QChar(0)), QString(QChar(0x1F)), QString(QChar(0xD83D)), QString(QChar(0xDE98)),
          QString(QChar(0xFFFE)), QString(QChar(0xFFFF)), QString(QString(QChar(0xD83D)) + QLatin1Char('.'))})
        EXPECT_EQ(refused(text).reason, QStringLiteral("character that XML cannot hold"));
    const QString bad(QChar(1));
    const auto inAlbum = [](const QVariant &value) {
        return QVariantMap{{QStringLiteral("Al&bums"), QVariantList{0, QVariantMap{{QStringLiteral("Name"), value}}}}};
    };
    EXPECT_EQ(refused(inAlbum(bad)).reason, QStringLiteral("character that XML cannot hold in Al&bums/1/Name"));
    EXPECT_EQ(refused(inAlbum(bad)).code, ErrorCode::Malformed);
    EXPECT_EQ(refused(inAlbum(QVariantList{QVariant()})).reason,
              QStringLiteral("nothing is no type of a property list in Al&bums/1/Name/0"));
    EXPECT_EQ(refused(inAlbum(QVariantList{1, QPoint()})).reason,
              QStringLiteral("QPoint is no type of a property list in Al&bums/1/Name/1"));
    EXPECT_EQ(refused(inAlbum(QVariantList{1, bad})).reason,
              QStringLiteral("character that XML cannot hold in Al&bums/1/Name/1"));
    EXPECT_EQ(refused(inAlbum(QVariantMap{{bad, 1}})).reason,
              QStringLiteral("character that XML cannot hold in a key in Al&bums/1/Name"));
}

TEST(PropertyListWriter, DepthIsBounded)
{
    QVariant nested = QVariantList();
    for (int depth = 1; depth < 512; ++depth)
        nested = QVariantList{nested};
    EXPECT_TRUE(PropertyList::writeXml(nested));
    EXPECT_EQ(refused(QVariantList{nested}).code, ErrorCode::TooDeep);
    EXPECT_EQ(refused(QVariantList{nested}).reason,
              QStringLiteral("more than 512 dictionaries and arrays within one another"));
}

TEST(PropertyListXmlWriter, WritesKeysInTheOrderGivenAndFromAnyText)
{
    PropertyListXmlWriter writer;
    writer.beginDictionary();
    writer.key("b");
    writer.beginArray();
    writer.unsignedInteger(~quint64(0));
    writer.end();
    writer.key(QLatin1String("\xE9"));
    writer.string(u8"ü");
    writer.key(QStringLiteral("a"));
    writer.beginDictionary();
    writer.end();
    writer.end();
    EXPECT_FALSE(writer.hasFailed());
    EXPECT_EQ(
        writer.finish().value(),
        QByteArray(Head
                   + "<dict>\n\t<key>b</key>\n\t<array>\n\t\t<integer>18446744073709551615</integer>\n\t</array>\n"
                     "\t<key>é</key>\n\t<string>ü</string>\n\t<key>a</key>\n\t<dict/>\n</dict>\n</plist>\n"));
}

TEST(PropertyListXmlWriter, AfterAnErrorCallsDoNothing)
{
    PropertyListXmlWriter writer;
    writer.beginArray();
    writer.boolean(true);
    writer.fail(QStringLiteral("no such colour"));
    EXPECT_TRUE(writer.hasFailed());
    writer.beginDictionary();
    writer.key("a");
    writer.uid(1);
    writer.fail(QStringLiteral("another"));
    const auto xml = writer.finish();
    ASSERT_FALSE(xml);
    EXPECT_EQ(xml.error().reason, QStringLiteral("no such colour in 1"));
}

TEST(PropertyListWriter, FilesAreWrittenWholeOrNotAtAll)
{
    const QString path = testSupport::homePath() + QStringLiteral("/list.plist");
    EXPECT_FALSE(PropertyList::writeXmlFile(path, QVariantList{1}));
    const QByteArray first = testSupport::readFile(path);
    EXPECT_EQ(first, PropertyList::writeXml(QVariantList{1}).value());
    const auto malformed = PropertyList::writeXmlFile(path, QVariant());
    ASSERT_TRUE(malformed);
    EXPECT_EQ(malformed->code, ErrorCode::Malformed);
    EXPECT_EQ(malformed->path, path);
    EXPECT_EQ(testSupport::readFile(path), first);
    const QString nowhere = testSupport::homePath() + QStringLiteral("/absent/list.plist");
    const auto notWritable = PropertyList::writeXmlFile(nowhere, 1);
    ASSERT_TRUE(notWritable);
    EXPECT_EQ(notWritable->code, ErrorCode::NotWritable);
    EXPECT_EQ(notWritable->path, nowhere);
}

// Round trips, judged by another reader

const char JudgeScript[] = R"(
import plistlib, sys, os
def same(a, b):
    if type(a) is not type(b): return False
    if isinstance(a, dict): return a.keys() == b.keys() and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list): return len(a) == len(b) and all(map(same, a, b))
    if isinstance(a, plistlib.UID): return a.data == b.data
    if isinstance(a, float): return a == b or (a != a and b != b)
    if hasattr(a, 'microsecond'): return a.replace(microsecond=0) == b
    return a == b
def uids(x):
    if isinstance(x, dict):
        return plistlib.UID(x['CF$UID']) if list(x) == ['CF$UID'] else {k: uids(v) for k, v in x.items()}
    return [uids(e) for e in x] if isinstance(x, list) else x
bad = 0
for name in sorted(os.listdir(sys.argv[1])):
    if not name.endswith('.binary'): continue
    base = os.path.join(sys.argv[1], name[:-7])
    try:
        before = plistlib.load(open(base + '.binary', 'rb'))
    except Exception:
        continue # a form that only this project reads
    after = plistlib.load(open(base + '.xml', 'rb'))
    if not same(uids(before), uids(after)):
        print('differs:', name); bad += 1
sys.exit(bad != 0)
)";

TEST(PropertyListWriter, AnotherReaderFindsInTheXmlWhatItFoundInTheBinaryForm)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        GTEST_SKIP() << "needs python3";
    const QString folder = testSupport::homePath() + QStringLiteral("/pairs");
    int count = 0;
    for (const PropertyListSample &sample : propertyListSamples(QRegularExpression(QStringLiteral("^binary")))) {
        const auto list = parseBinaryPropertyList(sample.bytes);
        if (!list)
            continue;
        const auto xml = PropertyList::writeXml(list.value().toVariant());
        if (!xml)
            continue; // control characters
        const QString base = QStringLiteral("%1/%2").arg(folder).arg(count++);
        testSupport::writeFile(base + QStringLiteral(".binary"), sample.bytes);
        testSupport::writeFile(base + QStringLiteral(".xml"), xml.value());
    }
    EXPECT_GT(count, 50);
    QProcess judge;
    judge.setProcessChannelMode(QProcess::MergedChannels);
    judge.start(python, {QStringLiteral("-c"), QString::fromUtf8(JudgeScript), folder});
    ASSERT_TRUE(judge.waitForFinished(120'000));
    EXPECT_EQ(judge.exitCode(), 0) << judge.readAll().constData();
}

} // namespace
