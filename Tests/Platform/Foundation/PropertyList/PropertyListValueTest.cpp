#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListTapeBuilder_p.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <type_traits>
#include <utility>

using namespace platform;
namespace Tape = platform::PropertyListTape;

namespace {

// Builds lists, also of those kinds of text that only the XML reader puts on a tape.
class Builder : public PropertyListTapeBuilder
{
public:
    explicit Builder(qsizetype maximumRows = 1'000'000)
        : PropertyListTapeBuilder("", maximumRows)
    { }
    Builder &key(QByteArrayView text)
    {
        PropertyListTapeBuilder::key(appendPiece(Tape::Key, text));
        return *this;
    }
    Builder &text(Kind kind, QByteArrayView text)
    {
        value(appendPiece(kind, text));
        return *this;
    }
    Builder &string(QByteArrayView string) { return text(Tape::String, string); }
    Builder &number(quint64 magnitude, bool negative = false)
    {
        integer(magnitude, negative);
        return *this;
    }
    PropertyListValue list() { return finish().value(); }
};

PropertyListValue scalar(Tape::Kind kind, QByteArrayView text)
{
    return Builder().text(kind, text).list();
}

/// A dictionary of strings or of integers.
template <class Entry = QByteArray>
PropertyListValue dictionaryOf(const QList<std::pair<QByteArray, Entry>> &entries)
{
    Builder builder;
    builder.beginDictionary();
    for (const auto &[key, entry] : entries) {
        builder.key(key);
        if constexpr (std::is_same_v<Entry, int>)
            builder.number(quint64(entry));
        else
            builder.string(entry);
    }
    builder.end();
    return builder.list();
}

TEST(PropertyListValue, ANullHandleAnswersEveryDefault)
{
    const PropertyListValue value;
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(value.type(), PropertyListType::Null);
    EXPECT_EQ(value.toString(), QString());
    EXPECT_EQ(value.toUtf8(), QByteArray());
    EXPECT_FALSE(value.plainUtf8());
    EXPECT_EQ(value.storedLength(), 0);
    EXPECT_EQ(value.toInteger(7), 7);
    EXPECT_EQ(value.toUnsigned(7), 7u);
    EXPECT_EQ(value.toReal(1.5), 1.5);
    EXPECT_TRUE(value.toBoolean(true));
    EXPECT_FALSE(value.toDateTime().isValid());
    EXPECT_FALSE(value.toReferenceSeconds());
    EXPECT_EQ(value.toData(), QByteArray());
    EXPECT_EQ(value.toUid(), 0u);
    EXPECT_FALSE(value.toVariant().isValid());
    EXPECT_EQ(value.count(), 0);
    EXPECT_TRUE(value.value("a").isNull());
    EXPECT_TRUE(value.value(value.key("a")).isNull());
    EXPECT_TRUE(value.at(0).isNull());
    EXPECT_EQ(value.memoryUse(), 0);
    EXPECT_EQ(value, PropertyListValue());
    for ([[maybe_unused]] const auto element : value.elements())
        ADD_FAILURE();
    for ([[maybe_unused]] const auto &entry : value.entries())
        ADD_FAILURE();
}

TEST(PropertyListValue, AWrongTypeAnswersTheDefault)
{
    const auto string = scalar(Tape::String, "12");
    EXPECT_EQ(string.toInteger(-1), -1);
    EXPECT_EQ(string.toReal(-1), -1);
    EXPECT_TRUE(string.toBoolean(true));
    EXPECT_EQ(string.toData(), QByteArray());
    EXPECT_EQ(string.toUid(), 0u);
    EXPECT_FALSE(string.toReferenceSeconds());
    EXPECT_EQ(string.count(), 0);
    EXPECT_TRUE(string.at(0).isNull());
    const auto integer = scalar(Tape::Integer, "12");
    EXPECT_EQ(integer.toString(), QString());
    EXPECT_FALSE(integer.plainUtf8());
    EXPECT_EQ(integer.storedLength(), 0);
}

TEST(PropertyListValue, StringsAreBorrowedAsViewsAndCopiedOtherwise)
{
    auto string = scalar(Tape::String, "gr\xC3\xBCn &amp;");
    EXPECT_EQ(string.toString(), QStringLiteral("grün &amp;"));
    ASSERT_TRUE(string.plainUtf8());
    EXPECT_EQ(string.plainUtf8()->data(), string.plainUtf8()->data());
    EXPECT_EQ(string.storedLength(), 11);
    const QByteArray copy = string.toUtf8();
    string = {};
    EXPECT_EQ(copy, "gr\xC3\xBCn &amp;");
}

TEST(PropertyListValue, AStringKeepsTheCharacterThatWouldBeAByteOrderMark)
{
    EXPECT_EQ(scalar(Tape::String, "\xEF\xBB\xBFx").toString(), QString(QChar(0xFEFF)) + QLatin1Char('x'));
    EXPECT_EQ(scalar(Tape::String, "\xEF\xBB\xBF\xEF\xBB\xBF").toString().size(), 2);
}

TEST(PropertyListValue, TextOfAnyLengthIsWhole)
{
    for (const qsizetype length : {0, 1, 0xFFFE, 0xFFFF, 0x10000, 200'000}) {
        const QByteArray text(length, 'x');
        Builder builder;
        builder.beginDictionary();
        builder.key(text).string(text);
        builder.key("next").number(5);
        builder.end();
        const auto list = builder.list();
        ASSERT_EQ(list.count(), 2) << length;
        EXPECT_EQ(list.value(QUtf8StringView(text)).toUtf8(), text) << length;
        EXPECT_EQ(list.value("next").toInteger(), 5) << length;
        EXPECT_EQ((*list.entries().begin()).utf8Key(), text) << length;
    }
}

TEST(PropertyListValue, IntegersAnswerWithinTheirRange)
{
    constexpr qint64 Smallest = std::numeric_limits<qint64>::min();
    constexpr qint64 Largest = std::numeric_limits<qint64>::max();
    EXPECT_EQ(scalar(Tape::Integer, "-9223372036854775808").toInteger(), Smallest);
    EXPECT_EQ(scalar(Tape::Integer, "9223372036854775807").toInteger(), Largest);
    const auto large = scalar(Tape::Integer, "9223372036854775808");
    EXPECT_EQ(large.toInteger(3), 3);
    EXPECT_EQ(large.toUnsigned(), quint64(1) << 63);
    EXPECT_EQ(large.toReal(), 9223372036854775808.0);
    EXPECT_EQ(large.toVariant(), QVariant(qulonglong(1) << 63));
    EXPECT_EQ(large.toVariant().typeId(), QMetaType::ULongLong);
    const auto negative = scalar(Tape::Integer, "-5");
    EXPECT_EQ(negative.toUnsigned(3), 3u);
    EXPECT_EQ(negative.toReal(), -5.0);
    EXPECT_TRUE(negative.toBoolean());
    EXPECT_FALSE(scalar(Tape::Integer, "0").toBoolean(true));
    EXPECT_EQ(negative.toVariant().typeId(), QMetaType::LongLong);
}

TEST(PropertyListValue, RealsAreCutTowardsZero)
{
    EXPECT_EQ(scalar(Tape::Real, "-1.9").toInteger(), -1);
    EXPECT_EQ(scalar(Tape::Real, "1.9").toInteger(), 1);
    EXPECT_EQ(scalar(Tape::Real, "1e19").toInteger(7), 7);
    EXPECT_EQ(scalar(Tape::Real, "-9223372036854775808").toInteger(7), std::numeric_limits<qint64>::min());
    EXPECT_EQ(scalar(Tape::Real, "nan").toInteger(7), 7);
    EXPECT_TRUE(std::isnan(scalar(Tape::Real, "nan").toReal()));
    EXPECT_FALSE(scalar(Tape::Real, "0.0").toBoolean(true));
    EXPECT_TRUE(scalar(Tape::Real, "0.1").toBoolean());
}

TEST(PropertyListValue, DatesHaveNoCalendarLimits)
{
    EXPECT_EQ(scalar(Tape::Date, "2024-01-32T20:43:14Z").toReferenceSeconds(), 728512994.0);
    EXPECT_EQ(scalar(Tape::Date, "0000-01-02T00:00:00Z").toReferenceSeconds(), -63145612800.0);
    const auto date = scalar(Tape::Date, "2024-01-31T20:43:14Z").toDateTime();
    EXPECT_EQ(date, QDateTime(QDate(2024, 1, 31), QTime(20, 43, 14), Qt::UTC));
    EXPECT_EQ(date.timeSpec(), Qt::UTC);
    EXPECT_EQ(scalar(Tape::SecondsDate, "0.25").toDateTime().toMSecsSinceEpoch(), 978307200250);
    EXPECT_EQ(scalar(Tape::SecondsDate, "-0.25").toReferenceSeconds(), -0.25);
    EXPECT_FALSE(scalar(Tape::SecondsDate, "1e300").toDateTime().isValid());
    EXPECT_FALSE(scalar(Tape::SecondsDate, "nan").toDateTime().isValid());
    EXPECT_EQ(scalar(Tape::SecondsDate, "728512994"), scalar(Tape::Date, "2024-01-32T20:43:14Z"));
}

TEST(PropertyListValue, DataIsDecodedFromBothForms)
{
    EXPECT_EQ(scalar(Tape::Data, "\n\tAAEC\n\t/w==\n").toData(), QByteArray("\0\1\2\xFF", 4));
    EXPECT_EQ(scalar(Tape::RawData, QByteArrayView("\0\1", 2)).toData(), QByteArray("\0\1", 2));
    EXPECT_EQ(scalar(Tape::Data, "").toData(), QByteArray());
    EXPECT_EQ(scalar(Tape::Data, "AAE="), scalar(Tape::RawData, QByteArrayView("\0\1", 2)));
}

TEST(PropertyListValue, UidsAreNoIntegers)
{
    const auto uid = scalar(Tape::UID, "17");
    EXPECT_EQ(uid.type(), PropertyListType::UID);
    EXPECT_EQ(uid.toUid(), 17u);
    EXPECT_EQ(uid.toInteger(-1), -1);
    EXPECT_EQ(uid.toVariant().value<PropertyListUid>(), PropertyListUid{17});
}

// Dictionaries

TEST(PropertyListValue, FindsKeysOfEveryForm)
{
    const QList<std::pair<QByteArray, int>> entries{
        {"name", 1}, {"a&amp;b", 2}, {"17", 3}, {QByteArray(500, 'k'), 4}, {"gr\xC3\xBCn", 5}, {"", 6}};
    const auto list = dictionaryOf(entries);
    auto entry = list.entries().begin();
    for (const auto &[utf8, number] : entries) {
        const QString key = QString::fromUtf8(utf8);
        EXPECT_EQ(list.value(key).toInteger(), number) << qPrintable(key);
        EXPECT_EQ(list.value(list.key(key)).toInteger(), number) << qPrintable(key);
        EXPECT_TRUE(list.contains(key));
        EXPECT_EQ((*entry).key(), key);
        EXPECT_EQ((*entry).value().toInteger(), number);
        ++entry;
    }
    EXPECT_EQ(entry, list.entries().end());
    for (const char *absent : {"Name", "nam", "a&b", "017", "18", "x"}) {
        EXPECT_TRUE(list.value(absent).isNull()) << absent;
        EXPECT_TRUE(list.value(list.key(absent)).isNull()) << absent;
    }
    EXPECT_EQ(list.value(QLatin1String("gr\xFCn")).toInteger(), 5);
}

TEST(PropertyListValue, APreparedKeyOutlivesTheCharactersItWasMadeFrom)
{
    const auto list = dictionaryOf({{QByteArray(500, 'k'), "found"}});
    QByteArray characters(500, 'k');
    const PropertyListKey key = list.key(QUtf8StringView(characters));
    characters.fill('x');
    EXPECT_EQ(list.value(key).toString(), QStringLiteral("found"));
}

TEST(PropertyListValue, OfAKeyThatOccursTwiceTheLastCounts)
{
    const auto list = dictionaryOf<int>({{"name", 1}, {"other", 2}, {"name", 3}});
    EXPECT_EQ(list.count(), 3);
    EXPECT_EQ(list.value("name").toInteger(), 3);
    EXPECT_EQ(list.value(list.key("name")).toInteger(), 3);
    EXPECT_EQ(list.toVariant().toMap().value(QStringLiteral("name")).toInt(), 3);
    EXPECT_EQ(list.toVariant().toMap().size(), 2);
}

TEST(PropertyListValue, HoldsMoreKeysThanTheTableHasRoomFor)
{
    const auto name = [](int i) { return QByteArray("key" + QByteArray::number(i)); };
    QList<std::pair<QByteArray, int>> entries;
    for (int i = 0; i < 5000; ++i)
        entries.append({name(i), i});
    const auto list = dictionaryOf(entries);
    ASSERT_EQ(list.count(), 5000);
    for (const int i : {0, 4093, 4094, 4095, 4999})
        EXPECT_EQ(list.value(QUtf8StringView(name(i))).toInteger(-1), i);
    int expected = 0;
    for (const auto &entry : list.entries())
        EXPECT_EQ(entry.utf8Key(), name(expected++));
    EXPECT_EQ(expected, 5000);
}

TEST(PropertyListValue, LookupPassesContainersAsAWhole)
{
    Builder builder;
    builder.beginDictionary();
    builder.key("outer");
    builder.beginDictionary();
    builder.key("inner").number(1);
    builder.end();
    builder.key("list");
    builder.beginArray();
    builder.end();
    builder.key("last").number(2);
    builder.end();
    const auto list = builder.list();
    EXPECT_TRUE(list.value("inner").isNull());
    EXPECT_EQ(list.value("last").toInteger(), 2);
    EXPECT_EQ(list.value("outer").value("inner").toInteger(), 1);
    EXPECT_TRUE(list.value("list").isArray());
    EXPECT_TRUE(list.value("list").isEmpty());
}

// Arrays

TEST(PropertyListValue, ArraysAreWalkedAndIndexed)
{
    Builder builder;
    builder.beginArray();
    builder.number(10);
    builder.beginArray();
    builder.number(20);
    builder.end();
    builder.string("thirty");
    builder.end();
    const auto list = builder.list();
    ASSERT_EQ(list.count(), 3);
    EXPECT_EQ(list.at(0).toInteger(), 10);
    EXPECT_EQ(list.at(1).at(0).toInteger(), 20);
    EXPECT_EQ(list.at(2).toString(), QStringLiteral("thirty"));
    EXPECT_TRUE(list.at(3).isNull());
    EXPECT_TRUE(list.at(-1).isNull());
    const auto elements = list.elements();
    EXPECT_EQ(std::distance(elements.begin(), elements.end()), 3);
    auto element = elements.begin();
    EXPECT_EQ((*element++).toInteger(), 10);
    EXPECT_TRUE((*element).isArray());
    EXPECT_TRUE(list.value("a").isNull());
}

TEST(PropertyListValue, CountsMoreEntriesThanARowHasRoomFor)
{
    for (const int count : {0xFFFE, 0xFFFF, 0x10000, 70'000}) {
        Builder builder;
        builder.beginArray();
        for (int i = 0; i < count; ++i)
            builder.boolean(true);
        builder.end();
        EXPECT_EQ(builder.list().count(), count);
    }
}

// Equality

TEST(PropertyListValue, DictionariesAreEqualInAnyOrder)
{
    const auto list = dictionaryOf({{"a", "1"}, {"b", "2"}});
    EXPECT_EQ(list, dictionaryOf({{"b", "2"}, {"a", "1"}}));
    EXPECT_EQ(list, dictionaryOf({{"b", "0"}, {"b", "2"}, {"a", "1"}}));
    EXPECT_FALSE(list == dictionaryOf({{"a", "1"}}));
    EXPECT_FALSE(list == dictionaryOf({{"a", "1"}, {"b", "3"}}));
    EXPECT_FALSE(list == dictionaryOf({{"a", "1"}, {"c", "2"}}));
}

TEST(PropertyListValue, EqualityDistinguishesTypesNotForms)
{
    EXPECT_EQ(scalar(Tape::Integer, "0x10"), scalar(Tape::Integer, " +16"));
    EXPECT_EQ(scalar(Tape::Integer, "-0"), scalar(Tape::Integer, "0"));
    EXPECT_FALSE(scalar(Tape::Integer, "-1") == scalar(Tape::Integer, "18446744073709551615"));
    EXPECT_FALSE(scalar(Tape::Integer, "1") == scalar(Tape::Real, "1"));
    EXPECT_EQ(scalar(Tape::Real, "1e0"), scalar(Tape::Real, "1.0"));
    EXPECT_FALSE(scalar(Tape::Real, "nan") == scalar(Tape::Real, "nan"));
    EXPECT_FALSE(scalar(Tape::UID, "1") == scalar(Tape::Integer, "1"));
    EXPECT_FALSE(scalar(Tape::String, "") == PropertyListValue());
}

TEST(PropertyListValue, ArraysAreEqualElementByElement)
{
    const auto arrayOf = [](std::initializer_list<quint64> numbers) {
        Builder builder;
        builder.beginArray();
        for (const quint64 number : numbers)
            builder.number(number);
        builder.end();
        return builder.list();
    };
    EXPECT_EQ(arrayOf({1, 2}), arrayOf({1, 2}));
    EXPECT_FALSE(arrayOf({1, 2}) == arrayOf({2, 1}));
    EXPECT_FALSE(arrayOf({1, 2}) == arrayOf({1}));
    EXPECT_FALSE(arrayOf({}) == dictionaryOf({}));
}

// Documents

TEST(PropertyListValue, AHandleKeepsItsDocumentAlive)
{
    PropertyListValue element;
    {
        Builder builder;
        builder.beginArray();
        builder.string("kept");
        builder.end();
        const auto list = builder.list();
        EXPECT_GT(list.memoryUse(), 0);
        element = list.at(0);
    }
    EXPECT_EQ(element.toString(), QStringLiteral("kept"));
    PropertyListValue copy = element;
    const PropertyListValue moved = std::move(element);
    EXPECT_TRUE(element.isNull()); // NOLINT(bugprone-use-after-move): moving leaves a null handle
    copy = moved;
    copy = *&copy;
    EXPECT_EQ(copy.toString(), QStringLiteral("kept"));
}

TEST(PropertyListValue, HandlesAreCopiedAndReadOnSeveralThreads)
{
    PropertyListValue list = dictionaryOf({{"a", "1"}, {"b", "2"}});
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([list] {
            for (int round = 0; round < 1000; ++round) {
                const PropertyListValue copy = list.value("b");
                EXPECT_EQ(copy.toUtf8(), "2");
            }
        });
    }
    list = {};
    for (std::thread &thread : threads)
        thread.join();
}

// The builder's limits

TEST(PropertyListTapeBuilder, AllowsFiveHundredAndTwelveContainersWithinOneAnother)
{
    for (const int depth : {512, 513}) {
        Builder builder;
        for (int i = 0; i < depth; ++i)
            builder.beginArray();
        for (int i = 0; i < depth; ++i)
            builder.end();
        const auto list = builder.finish();
        EXPECT_EQ(bool(list), depth == 512);
        if (!list) {
            EXPECT_EQ(list.error().code, ErrorCode::TooDeep);
            EXPECT_EQ(list.error().reason, QStringLiteral("more than 512 dictionaries and arrays within one another"));
        }
    }
}

TEST(PropertyListTapeBuilder, RefusesMoreValuesThanAllowed)
{
    for (const int count : {9, 10}) {
        Builder builder(10);
        builder.beginArray();
        for (int i = 0; i < count; ++i)
            builder.boolean(false);
        builder.end();
        const auto list = builder.finish();
        EXPECT_EQ(bool(list), count == 9);
        if (!list) {
            EXPECT_EQ(list.error().code, ErrorCode::TooLarge);
            EXPECT_EQ(list.error().reason, QStringLiteral("expands to more than 10 values"));
        }
    }
}

template <class Value>
concept CanBeWalked = requires(Value &&value)
{
    std::forward<Value>(value).elements();
    std::forward<Value>(value).entries();
};
template <class Value>
concept CanBeWalkedInPart = requires(Value &&value)
{
    std::forward<Value>(value).elements();
}
|| requires(Value &&value)
{
    std::forward<Value>(value).entries();
};

TEST(PropertyListValue, ATemporaryOwnerCannotBeWalked)
{
    static_assert(!CanBeWalkedInPart<PropertyListValue>);
    static_assert(!CanBeWalkedInPart<const PropertyListValue>);
    static_assert(CanBeWalked<PropertyListValue &>);
    static_assert(CanBeWalked<const PropertyListValue &>);
    static_assert(CanBeWalked<PropertyListView>);
}

} // namespace
