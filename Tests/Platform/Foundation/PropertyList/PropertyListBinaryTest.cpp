#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Support/PropertyListSamples.h"

#include <QElapsedTimer>
#include <QtEndian>

#include <bit>
#include <cmath>

#include <gmock/gmock.h>

using namespace platform;

namespace {

QByteArray bigEndian(quint64 number, int size)
{
    QByteArray bytes(size, '\0');
    for (int i = size - 1; i >= 0; --i, number >>= 8)
        bytes[i] = char(number & 0xFF);
    return bytes;
}

// A binary list put together by hand, so that every part of it can be wrong.
struct BinaryList {
    QList<QByteArray> objects;
    int offsetSize = 2;
    int referenceSize = 1;
    quint64 top = 0;
    std::optional<quint64> objectCount = {};
    std::optional<quint64> tableOffset = {};
    QByteArray version = "00";
    int copiesOfLast = 0; // further entries of the offset table for the last object

    QByteArray bytes() const
    {
        QByteArray file = "bplist" + version;
        QByteArray table;
        for (const QByteArray &object : objects) {
            table += bigEndian(quint64(file.size()), offsetSize);
            file += object;
        }
        table += table.right(offsetSize).repeated(copiesOfLast);
        const auto tableAt = quint64(file.size());
        return file + table + QByteArray(6, '\0') + char(offsetSize) + char(referenceSize)
            + bigEndian(objectCount.value_or(quint64(objects.size() + copiesOfLast)), 8) + bigEndian(top, 8)
            + bigEndian(tableOffset.value_or(tableAt), 8);
    }
    Result<PropertyListValue> parse() const { return parseBinaryPropertyList(bytes()); }
};

PropertyListValue single(const QByteArray &object)
{
    const auto list = BinaryList{{object}}.parse();
    EXPECT_TRUE(list) << (list ? "" : qPrintable(list.error().toString()));
    return list.valueOr(PropertyListValue());
}

void expectRefusal(const BinaryList &list, const char *reason, qint64 offset, ErrorCode code = ErrorCode::Malformed)
{
    const auto result = list.parse();
    ASSERT_FALSE(result) << reason;
    EXPECT_EQ(result.error().code, code) << reason;
    EXPECT_EQ(result.error().reason.toStdString(), reason);
    EXPECT_EQ(result.error().byteOffset, offset) << reason;
}

void expectRefusal(const QByteArray &object, const char *reason, qint64 offset = 8)
{
    expectRefusal(BinaryList{{object}}, reason, offset);
}

TEST(PropertyListBinary, ReadsIntegersOfEverySize)
{
    EXPECT_EQ(single("\x10\xFF").toInteger(), 255);
    EXPECT_EQ(single("\x11\xFF\xFF").toInteger(), 65535);
    EXPECT_EQ(single("\x12\xFF\xFF\xFF\xFF").toInteger(), 4294967295);
    EXPECT_EQ(single("\x13" + QByteArray(8, '\xFF')).toInteger(), -1);
    EXPECT_EQ(single("\x13\x80" + QByteArray(7, '\0')).toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(single("\x14" + QByteArray(8, '\0') + QByteArray(8, '\xFF')).toUnsigned(), ~quint64(0));
    EXPECT_EQ(single("\x14" + QByteArray(16, '\xFF')).toInteger(), -1);
    expectRefusal("\x14" + QByteArray(7, '\0') + QByteArray(9, '\x01'), "integer outside of 64 bits");
    expectRefusal("\x14" + QByteArray(8, '\xFF') + QByteArray(8, '\x01'), "integer outside of 64 bits");
    expectRefusal("\x15" + QByteArray(32, '\0'), "integer of impossible size");
}

TEST(PropertyListBinary, ReadsRealsAndDates)
{
    EXPECT_EQ(single("\x22" + bigEndian(std::bit_cast<quint32>(1.5f), 4)).toReal(), 1.5);
    EXPECT_EQ(single("\x23" + bigEndian(std::bit_cast<quint64>(-0.1), 8)).toReal(), -0.1);
    EXPECT_EQ(single("\x33" + bigEndian(std::bit_cast<quint64>(728426594.25), 8)).toReferenceSeconds(), 728426594.25);
    EXPECT_EQ(single("\x23\x7F\xF0" + QByteArray(6, '\0')).toReal(), HUGE_VAL);
    EXPECT_TRUE(std::isnan(single("\x23\xFF\xF8" + QByteArray(6, '\0')).toReal()));
    expectRefusal("\x21\x01\x01", "real or date of impossible size");
    expectRefusal("\x32" + QByteArray(4, '\0'), "real or date of impossible size");
}

TEST(PropertyListBinary, ReadsBooleansButNoNull)
{
    EXPECT_EQ(single("\x09").type(), PropertyListType::Boolean);
    EXPECT_TRUE(single("\x09").toBoolean());
    EXPECT_FALSE(single("\x08").toBoolean(true));
    expectRefusal(QByteArray("\0", 1), "object of no kind that a property list can hold");
    expectRefusal("\x0F", "object of no kind that a property list can hold");
    expectRefusal("\x9F", "object of unknown kind");
    expectRefusal("\xF0", "object of unknown kind");
}

TEST(PropertyListBinary, ReadsDataAndStringsOfAnyLength)
{
    EXPECT_EQ(single(QByteArray("\x42\x00\xFF", 3)).toData(), QByteArray("\0\xFF", 2));
    EXPECT_EQ(single("\x53"
                     "abc")
                  .toString(),
              QStringLiteral("abc"));
    EXPECT_EQ(single("\x50").toString(), QString());
    EXPECT_EQ(single(QByteArray("\x5F\x11\x01\x00", 4) + QByteArray(256, 'x')).toUtf8(), QByteArray(256, 'x'));
    EXPECT_EQ(single("\x4F\x13" + bigEndian(70'000, 8) + QByteArray(70'000, 'x')).toData().size(), 70'000);
    EXPECT_EQ(single("\x74gr\xC3\xBC").toString(), QStringLiteral("grü"));
}

TEST(PropertyListBinary, StringsOfTheWrongEncodingAreRefused)
{
    expectRefusal("\x53"
                  "ab\x80",
                  "string that claims to be ASCII is not", 11);
    expectRefusal("\x72"
                  "a\xFF",
                  "string that claims to be UTF-8 is not", 10);
}

TEST(PropertyListBinary, ReadsUtf16AndReplacesHalvesOfSurrogatePairs)
{
    EXPECT_EQ(single(QByteArray("\x64\0a\0\xE9\xD8\x3D\xDE\x98", 9)).toUtf8(), "a\xC3\xA9\xF0\x9F\x9A\x98");
    EXPECT_EQ(single(QByteArray("\x63\xD8\x3D\0a\xDE\x98", 7)).toUtf8(),
              "\xEF\xBF\xBD"
              "a\xEF\xBF\xBD");
    EXPECT_EQ(single("\x61\xD8\x3D").toUtf8(), "\xEF\xBF\xBD");
}

TEST(PropertyListBinary, ReadsReferenceNumbers)
{
    EXPECT_EQ(single("\x80\x07").toUid(), 7u);
    EXPECT_EQ(single(QByteArray("\x81\x01\x00", 3)).toUid(), 256u);
    EXPECT_EQ(single("\x8F" + QByteArray(8, '\0') + QByteArray(8, '\xFF')).toUid(), ~quint64(0));
    expectRefusal("\x8F" + QByteArray(16, '\x01'), "reference number outside of 64 bits");
}

TEST(PropertyListBinary, ReadsContainersAndSetsAsArrays)
{
    const QByteArray dictionary = QByteArray("\xD2\x01\x02\x03\x04", 5);
    const auto list = BinaryList{{dictionary,
                                  "\x51"
                                  "a",
                                  "\x62" + QByteArray("\0g\0\xFC", 4), "\xA2\x05\x05", "\xC1\x05", "\x10\x07"}}
                          .parse()
                          .value();
    ASSERT_EQ(list.count(), 2);
    EXPECT_EQ(list.value("a").at(1).toInteger(), 7);
    EXPECT_TRUE(list.value("g\xC3\xBC").isArray());
    EXPECT_EQ(list.value("g\xC3\xBC").at(0).toInteger(), 7);
    EXPECT_TRUE(single("\xA0").isArray());
    EXPECT_TRUE(single("\xB0").isArray());
    EXPECT_TRUE(single("\xD0").isDictionary());
}

TEST(PropertyListBinary, AnyVersionDigitIsRead)
{
    for (const char *version : {"00", "01", "0x"})
        EXPECT_TRUE((BinaryList{{"\x09"}, 2, 1, 0, {}, {}, version}.parse())) << version;
    expectRefusal(BinaryList{{"\x09"}, 2, 1, 0, {}, {}, "10"}, "unknown version of the binary form", 0);
}

TEST(PropertyListBinary, SizesOfOffsetsAndReferencesMayBeAnyFromOneToEight)
{
    for (int size = 1; size <= 8; ++size) {
        const BinaryList list{{"\xA1" + bigEndian(1, size), "\x10\x2A"}, size, size};
        const auto result = list.parse();
        ASSERT_TRUE(result) << size;
        EXPECT_EQ(result.value().at(0).toInteger(), 42);
    }
}

TEST(PropertyListBinary, ATrailerThatContradictsTheFileIsRefused)
{
    // The one object stands at byte 8, the table at 9, the trailer at 11.
    expectRefusal(BinaryList{{"\x09", "\x09"}, 0}, "impossible size of offsets", 16);
    expectRefusal(BinaryList{{"\x09"}, 9}, "impossible size of offsets", 24);
    expectRefusal(BinaryList{{"\x09"}, 2, 0}, "impossible size of references", 18);
    expectRefusal(BinaryList{{"\x09"}, 2, 9}, "impossible size of references", 18);
    expectRefusal(BinaryList{{"\x09"}, 2, 1, 1}, "root object does not exist", 27);
    for (const quint64 count : {quint64(0), quint64(2), quint64(1) << 40, ~quint64(0)})
        expectRefusal(BinaryList{{"\x09"}, 2, 1, 0, count}, "impossible number of objects", 19);
    for (const quint64 table : {quint64(0), quint64(8), quint64(11), quint64(1) << 40, ~quint64(0)})
        expectRefusal(BinaryList{{"\x09"}, 2, 1, 0, {}, table}, "offset table outside the file", 35);
}

TEST(PropertyListBinary, OffsetsOutsideTheObjectsAreRefused)
{
    for (const char offset : {'\x00', '\x07', '\x09', '\xFF'}) {
        QByteArray bytes = BinaryList{{"\x09"}, 1}.bytes();
        bytes[9] = offset;
        const auto result = parseBinaryPropertyList(bytes);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().reason, QStringLiteral("offset of an object outside the file"));
        EXPECT_EQ(result.error().byteOffset, 9);
    }
}

TEST(PropertyListBinary, ObjectsThatReachBehindTheirEndAreRefused)
{
    for (const QByteArray &object : QList<QByteArray>{
             QByteArray("\x13\x01"), QByteArray("\x22\x01"), QByteArray("\x42\x01"), QByteArray("\x52x"),
             QByteArray("\x62xxx"), QByteArray("\x72x"), QByteArray("\x81\x01"), QByteArray("\xA1"),
             QByteArray("\xD1\x01"), "\x6F\x13" + bigEndian(1, 8), "\xDF\x13" + bigEndian(8, 8) + "xxxxxxxxxxxxxxx"})
        expectRefusal(object, "object reaches behind the objects' end");
    for (const QByteArray &object :
         QList<QByteArray>{"\x5F\x10\xFF", "\x5F\x13" + QByteArray(8, '\xFF'), "\xAF\x13\x7F" + QByteArray(7, '\xFF')})
        expectRefusal(object, "object reaches behind the objects' end", 9);
    for (const QByteArray &object : QList<QByteArray>{QByteArray("\x5F"), QByteArray("\x5F\x51x"),
                                                      QByteArray("\x5F\x11\x01"), "\x5F\x14" + QByteArray(16, '\0')})
        expectRefusal(object, "broken count of an object", 9);
}

TEST(PropertyListBinary, ReferencesAndKeysAreChecked)
{
    expectRefusal("\xA1\x01", "reference to an object that does not exist", 9);
    expectRefusal("\xD1\x05\x05", "reference to an object that does not exist", 9);
    expectRefusal(BinaryList{{"\xD1\x01\x05", "\x51k"}}, "reference to an object that does not exist", 10);
    expectRefusal(BinaryList{{"\xD1\x01\x01", "\x41k"}}, "key that is no string", 11);
    expectRefusal(BinaryList{{"\xD1\x01\x01", "\x51\x80"}}, "string that claims to be ASCII is not", 12);
}

TEST(PropertyListBinary, AContainerThatHoldsItselfIsRefused)
{
    expectRefusal(QByteArray("\xA1\x00", 2), "container that holds itself", 8);
    expectRefusal(BinaryList{{"\xA1\x01", QByteArray("\xA1\x00", 2)}}, "container that holds itself", 8);
    expectRefusal(BinaryList{{"\xD1\x01\x02", "\x51k", QByteArray("\xA1\x00", 2)}}, "container that holds itself", 8);
}

TEST(PropertyListBinary, SharedContainersStandInEveryPlace)
{
    const auto list = BinaryList{{"\xA3\x01\x01\x01", "\xA1\x02", "\x51s"}}.parse().value();
    ASSERT_EQ(list.count(), 3);
    for (const PropertyListView element : list.elements())
        EXPECT_EQ(element.at(0).toString(), QStringLiteral("s"));
}

// Each array holds the next one a number of times.
BinaryList nested(int levels, int times)
{
    BinaryList list;
    list.offsetSize = 4;
    list.referenceSize = 4;
    for (int i = 0; i < levels; ++i)
        list.objects += char(0xA0 | times) + bigEndian(quint64(i + 1), 4).repeated(times);
    list.objects += "\x09";
    return list;
}

TEST(PropertyListBinary, DepthIsBounded)
{
    EXPECT_TRUE(nested(512, 1).parse());
    expectRefusal(nested(513, 1), "more than 512 dictionaries and arrays within one another", 8 + 512 * 5,
                  ErrorCode::TooDeep);
    EXPECT_EQ(nested(100'000, 1).parse().error().code, ErrorCode::TooDeep);
}

TEST(PropertyListBinary, AFileThatDoublesItselfAtEveryLevelIsRefused)
{
    EXPECT_EQ(nested(12, 2).parse().value().count(), 2);
    const auto result = nested(60, 2).parse();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, ErrorCode::TooLarge);
    EXPECT_EQ(result.error().reason, QStringLiteral("expands to more than 4194304 values"));
    EXPECT_GT(result.error().byteOffset, 0);
}

TEST(PropertyListBinary, ALongStringSharedByManyValuesIsReadOnce)
{
    constexpr int Values = 60'000;
    BinaryList list;
    list.offsetSize = 4;
    list.objects += "\xAF\x12" + bigEndian(Values, 4) + QByteArray(Values, '\x01');
    list.objects += "\x6F\x12" + bigEndian(100'000, 4) + QByteArray(200'000, 'x');
    const auto result = list.parse().value();
    EXPECT_EQ(result.count(), Values);
    EXPECT_LT(result.memoryUse(), 4'000'000);
}

// An array of references to the objects from 1 on.
QByteArray arrayOfObjects(int count)
{
    QByteArray array = "\xAF\x12" + bigEndian(quint64(count), 4);
    for (int i = 1; i <= count; ++i)
        array += bigEndian(quint64(i), 4);
    return array;
}

// The marker and count of an object.
QByteArray longHead(char kind, int count)
{
    return char(kind | 0xF) + ("\x12" + bigEndian(quint64(count), 4));
}

TEST(PropertyListBinary, ALongStringThatIsManyObjectsIsReadOnce)
{
    constexpr int Objects = 100'000;
    for (const char kind : {'\x50', '\x60', '\x70'}) {
        const QByteArray string = longHead(kind, 500'000) + QByteArray(kind == '\x60' ? 1'000'000 : 500'000, 'x');
        const BinaryList list{{arrayOfObjects(Objects), string}, 4, 4, 0, {}, {}, "00", Objects - 1};
        const QByteArray bytes = list.bytes();
        QElapsedTimer timer;
        timer.start();
        const auto result = parseBinaryPropertyList(bytes);
        ASSERT_TRUE(result) << qPrintable(result.error().toString());
        EXPECT_LT(timer.elapsed(), 10'000); // one reading for each object would be 50 GB
        EXPECT_EQ(result.value().count(), Objects);
        EXPECT_LT(result.value().memoryUse(), bytes.size() + 3'000'000 + Objects * 20);
    }
}

TEST(PropertyListBinary, ALongKeyThatIsManyObjectsIsReadOnce)
{
    constexpr int Entries = 100'000;
    QByteArray dictionary = longHead('\xD0', Entries) + arrayOfObjects(Entries).mid(6);
    dictionary += bigEndian(1, 4).repeated(Entries);
    const QByteArray key = longHead('\x60', 200'000) + QByteArray(400'000, 'x');
    const BinaryList list{{dictionary, key}, 4, 4, 0, {}, {}, "00", Entries - 1};
    const QByteArray bytes = list.bytes();
    const auto result = parseBinaryPropertyList(bytes);
    ASSERT_TRUE(result) << qPrintable(result.error().toString());
    EXPECT_EQ(result.value().count(), Entries);
    EXPECT_LT(result.value().memoryUse(), bytes.size() + 1'000'000 + Entries * 40);
}

TEST(PropertyListBinary, StringsThatOverlapAreReadUntilTheyAreTooMuchText)
{
    for (const char kind : {'\x50', '\x60', '\x70'}) {
        const int count = kind == '\x60' ? 0x8080 : 0x10101; // its own bytes are ASCII where it has to be
        // The strings begin one behind the other and end together, all but for a few bytes.
        for (const int strings : {2, 3}) {
            BinaryList list{{arrayOfObjects(strings)}, 4, 4};
            for (int i = 0; i < strings; ++i)
                list.objects += longHead(kind, count);
            const qint64 third = 8 + list.objects.first().size() + 2 * 6;
            list.objects.last() += QByteArray(0x10101, 'x');
            if (strings == 2)
                EXPECT_EQ(list.parse().value().count(), 2);
            else
                expectRefusal(list, "too many strings that overlap", third, ErrorCode::TooLarge);
        }
    }
}

TEST(PropertyListBinary, NumbersSharedByManyValuesTakeTheRoomOfOne)
{
    constexpr int Values = 1'000'000;
    for (const QByteArray &number : QList<QByteArray>{
             "\x13" + QByteArray(8, '\x41'), "\x23" + bigEndian(std::bit_cast<quint64>(-1.0 / 3), 8),
             "\x33" + bigEndian(std::bit_cast<quint64>(728426594.25), 8), "\x87" + QByteArray(8, '\x41')}) {
        const BinaryList list{{longHead('\xA0', Values) + QByteArray(Values, '\x01'), number}, 4};
        const auto result = list.parse();
        ASSERT_TRUE(result);
        EXPECT_EQ(result.value().count(), Values);
        EXPECT_TRUE(result.value().at(0) == single(number));
        EXPECT_TRUE(result.value().at(Values - 1) == single(number));
        EXPECT_LT(result.value().memoryUse(), 9 * Values + 1000);
    }
}

TEST(PropertyListBinary, BallastDoesNotRaiseTheLimitOnExpansion)
{
    BinaryList list = nested(60, 2);
    list.objects += longHead('\x40', 5'000'000) + QByteArray(5'000'000, '\0');
    EXPECT_EQ(list.parse().error().reason, QStringLiteral("expands to more than 4194304 values"));
    // An array that is read over and over counts once.
    list = {{"\xAF\x10\x20" + QByteArray(32, '\x01'), longHead('\xA0', 500'000) + QByteArray(500'000, '\x02'), "\x09"},
            4};
    EXPECT_EQ(list.parse().error().reason, QStringLiteral("expands to more than 4194304 values"));
}

TEST(PropertyListBinary, ReferencesRaiseTheLimitOnExpansion)
{
    constexpr int Values = 2'000'000;
    const auto shared = [](int times) {
        return BinaryList{{char(0xA0 | times) + QByteArray(times, '\x01'),
                           longHead('\xA0', Values) + QByteArray(Values, '\x02'), "\x09"},
                          4};
    };
    const auto result = shared(3).parse();
    ASSERT_TRUE(result) << qPrintable(result.error().toString());
    EXPECT_EQ(result.value().at(2).count(), Values);
    EXPECT_EQ(shared(5).parse().error().reason, QStringLiteral("expands to more than 8000020 values"));
}

TEST(PropertyListBinary, ContainersThatOverlapRaiseTheLimitNoFurtherThanTheFileHasRoomForReferences)
{
    // References of two bytes, so that the head of an array, which is content of the one before it, is references, too:
    // to the objects 0xAF12, 0x20 and 0x8000.
    constexpr int Values = 0x208000;
    const auto overlapping = [](int arrays) {
        BinaryList list{{char(0xA0 | arrays) + QByteArray()}, 4, 2};
        for (int i = 1; i <= arrays; ++i) {
            list.objects.first() += bigEndian(quint64(i), 2);
            list.objects += longHead('\xA0', Values);
        }
        list.objects.last() += QByteArray(2 * Values, '\x20');
        list.objects += "\x09";
        list.copiesOfLast = 0xB000;
        return list;
    };
    const auto result = overlapping(3).parse();
    ASSERT_TRUE(result) << qPrintable(result.error().toString());
    EXPECT_EQ(result.value().at(2).count(), Values);
    const BinaryList refused = overlapping(5);
    qsizetype objectsEnd = 8;
    for (const QByteArray &object : refused.objects)
        objectsEnd += object.size();
    EXPECT_EQ(refused.parse().error().reason, QStringLiteral("expands to more than %1 values").arg(objectsEnd / 2 * 4));
}

TEST(PropertyListBinary, MoreObjectsThanBytesForThemAreRefused)
{
    expectRefusal(BinaryList{{"\x09"}, 1, 1, 0, {}, {}, "00", 1}, "impossible number of objects", 19);
}

// A list with all kinds of values.
QByteArray richList()
{
    return BinaryList{{"\xD3\x01\x02\x03\x04\x05\x06",
                       "\x51"
                       "a",
                       "\x61\x01\x02",
                       "\x52"
                       "17",
                       "\xA5\x06\x07\x08\x09\x0A", "\x14" + QByteArray(16, '\xFF'),
                       "\x22\x3F\xC0" + QByteArray(2, '\0'), "\x33" + QByteArray(8, '\x41'), "\x4F\x10\x03xyz",
                       "\x80\x05", "\x08"}}
        .bytes();
}

void walk(const PropertyListView &value)
{
    value.toVariant();
    for (const auto &entry : value.entries())
        EXPECT_FALSE(value.value(entry.key()).isNull());
}

TEST(PropertyListBinary, TruncationAtEveryByteIsRefused)
{
    const QByteArray whole = richList();
    ASSERT_TRUE(parseBinaryPropertyList(whole));
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const QByteArray cut(whole.constData(), length); // of its own, so that reading behind it is seen
        const auto result = parseBinaryPropertyList(cut);
        ASSERT_FALSE(result) << length;
        EXPECT_GE(result.error().byteOffset, 0);
        EXPECT_LE(result.error().byteOffset, length);
    }
}

TEST(PropertyListBinary, EveryFlippedBitGivesAListOrAnError)
{
    const QByteArray whole = richList();
    int refused = 0;
    for (qsizetype bit = 0; bit < whole.size() * 8; ++bit) {
        QByteArray flipped = whole;
        flipped[bit / 8] = char(flipped[bit / 8] ^ (1 << bit % 8));
        const auto result = parseBinaryPropertyList(flipped);
        if (result)
            walk(result.value());
        else
            EXPECT_GE(result.error().byteOffset, 0) << (++refused, bit);
    }
}

TEST(PropertyListBinary, SampleFilesAreReadOrRefusedAsTheyShould)
{
    ZR_REQUIRE_SAMPLE_DATA();
    int count = 0;
    for (const PropertyListSample &sample : propertyListSamples(QRegularExpression(QStringLiteral("^binary")))) {
        const auto result = parseBinaryPropertyList(sample.bytes);
        if (result)
            walk(result.value());
        if (sample.isJudged) {
            EXPECT_EQ(bool(result), sample.isValid)
                << qPrintable(sample.name) << (result ? "" : qPrintable(": " + result.error().toString()));
        }
        ++count;
    }
    EXPECT_GT(count, 70);
}

} // namespace
