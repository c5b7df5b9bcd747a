#include "Platform/Foundation/ValueObjects.h"

#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"

#include <cmath>
#include <limits>

using namespace platform;

namespace {

ObjectPointer text(const char *value)
{
    return std::make_shared<String>(QString::fromUtf8(value));
}
ObjectPointer number(int value)
{
    return std::make_shared<Number>(value);
}

/// Objects of one group are equal, those of different groups are not; equal ones have equal hashes.
void expectGroups(const QList<QList<ObjectPointer>> &groups)
{
    for (qsizetype a = 0; a < groups.size(); ++a) {
        for (qsizetype b = 0; b < groups.size(); ++b) {
            for (const ObjectPointer &ofA : groups[a]) {
                for (const ObjectPointer &ofB : groups[b]) {
                    EXPECT_EQ(ofA->isEqual(*ofB), a == b) << a << " and " << b;
                    if (a == b) {
                        EXPECT_EQ(ofA->hash(), ofB->hash()) << a;
                    }
                }
            }
        }
    }
}

} // namespace

TEST(ValueObjects, NumbersCompareByExactValue)
{
    constexpr quint64 large = quint64(1) << 63;
    expectGroups({{number(1), std::make_shared<Number>(1.0), std::make_shared<Boolean>(true)},
                  {number(0), std::make_shared<Number>(-0.0), std::make_shared<Boolean>(false)},
                  {std::make_shared<Number>(0.5)},
                  {std::make_shared<Number>(std::nan("")), std::make_shared<Number>(std::nan("1"))},
                  {std::make_shared<Number>(large), std::make_shared<Number>(9223372036854775808.0)},
                  {std::make_shared<Number>(large + 1)},
                  {std::make_shared<Number>(std::numeric_limits<quint64>::max())},
                  {std::make_shared<Number>(18446744073709551616.0)},
                  {text("1")},
                  {std::make_shared<Null>(), std::make_shared<Null>()}});
}

TEST(ValueObjects, NumbersAreCutToTheTypeAskedFor)
{
    constexpr qint64 highest = std::numeric_limits<qint64>::max();
    EXPECT_EQ(Number(std::numeric_limits<quint64>::max()).toInteger(), highest);
    EXPECT_EQ(Number(std::numeric_limits<quint64>::max()).toUnsigned(), std::numeric_limits<quint64>::max());
    EXPECT_EQ(Number(quint64(7)).toInteger(), 7);
    EXPECT_EQ(Number(-7).toUnsigned(), 0U);
    EXPECT_EQ(Number(2.9).toUnsigned(), 2U);
    EXPECT_EQ(Number(1e30).toUnsigned(), std::numeric_limits<quint64>::max());
    EXPECT_EQ(Number(1e19).toUnsigned(), 10'000'000'000'000'000'000U);
    EXPECT_EQ(Number(std::nan("")).toUnsigned(), 0U);
    EXPECT_TRUE(Number(1.0).isReal());
    EXPECT_FALSE(Number(1).isReal());
    EXPECT_TRUE(Boolean(true).value());
    EXPECT_FALSE(Boolean(false).value());
}

TEST(ValueObjects, DataCompareByValue)
{
    const QUuid uuid = QUuid::createUuid();
    const auto base = [] { return std::make_shared<Url>(QStringLiteral("http://x/")); };
    expectGroups(
        {{std::make_shared<Data>(QByteArray("a")), std::make_shared<Data>(QByteArray("a"))},
         {text("a"), text("a")},
         {std::make_shared<Date>(1.5), std::make_shared<Date>(1.5)},
         {std::make_shared<Date>(std::nan("")), std::make_shared<Date>(std::nan(""))},
         {std::make_shared<Url>(QStringLiteral("y"), base()), std::make_shared<Url>(QStringLiteral("y"), base())},
         {std::make_shared<Url>(QStringLiteral("y"))},
         {std::make_shared<Uuid>(uuid), std::make_shared<Uuid>(uuid)},
         {std::make_shared<Indexes>(IndexSet(3)), std::make_shared<Indexes>(IndexSet(3))},
         {std::make_shared<Indexes>(IndexSet(4))},
         {std::make_shared<Geometry>(QPointF(1, 2)), std::make_shared<Geometry>(QPointF(1, 2))},
         {std::make_shared<Geometry>(QPointF(1, 2 + 1e-15))},
         {std::make_shared<Geometry>(QSizeF(1, 2))},
         {std::make_shared<Geometry>(QPointF(std::nan(""), 0)),
          std::make_shared<Geometry>(QPointF(std::nan(""), -0.0))},
         {std::make_shared<Geometry>(IndexRange{1, 2}), std::make_shared<Geometry>(IndexRange{1, 2})},
         {std::make_shared<Geometry>(QRectF(1, 2, 3, 4))},
         {std::make_shared<Geometry>(QMarginsF(1, 2, 3, 4))}});
}

TEST(ValueObjects, ADateIsADateTimeAndBack)
{
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(1'706'733'794'250, Qt::UTC);
    EXPECT_EQ(Date(date).toDateTime(), date);
    EXPECT_EQ(Date(date).referenceSeconds(), 728'426'594.25);
    EXPECT_FALSE(Date(1e300).toDateTime().isValid());
    EXPECT_FALSE(Date(std::nan("")).toDateTime().isValid());
}

TEST(ValueObjects, AUrlIsResolvedAgainstItsBases)
{
    const auto base = std::make_shared<Url>(QUrl(QStringLiteral("https://example.com/a/")));
    const auto folder = std::make_shared<Url>(QStringLiteral("b/"), base);
    EXPECT_EQ(Url(QStringLiteral("../c"), folder).toUrl(), QUrl(QStringLiteral("https://example.com/a/c")));
    EXPECT_EQ(base->toUrl(), QUrl(QStringLiteral("https://example.com/a/")));
}

TEST(ContainerObjects, CompareByContent)
{
    const auto entries = [](const QList<Dictionary::Entry> &list) { return std::make_shared<Dictionary>(list); };
    const auto set = [](const QList<ObjectPointer> &list) { return std::make_shared<Set>(list); };
    const auto ordered = [](const QList<ObjectPointer> &list) { return std::make_shared<OrderedSet>(list); };
    expectGroups({{set({}), set({})},
                  {ordered({}), ordered({})},
                  {entries({}), entries({})},
                  {set({text("a"), number(1)}), set({number(1), text("a"), text("a")})},
                  {set({text("a"), nullptr})},
                  {set({text("a"), number(2)})},
                  {ordered({text("a"), number(1)}), ordered({text("a"), number(1), text("a")})},
                  {ordered({number(1), text("a")})},
                  {entries({{text("k"), number(1)}, {number(2), nullptr}}),
                   entries({{number(2), nullptr}, {text("k"), number(1)}})},
                  {entries({{text("k"), number(1)}, {number(3), nullptr}})},
                  {entries({{text("k"), number(2)}, {number(2), nullptr}})}});
}

TEST(ContainerObjects, ASetKeepsTheFirstOfEqualObjectsInTheOrderGiven)
{
    const ObjectPointer first = text("a");
    const Set set({first, number(1), text("a")});
    EXPECT_EQ(set.objects().size(), 2);
    EXPECT_EQ(set.objects().first(), first);
    EXPECT_TRUE(set.contains(text("a")));
    EXPECT_FALSE(set.contains(text("b")));
    EXPECT_TRUE(OrderedSet({number(1)}).contains(number(1)));
}

TEST(ContainerObjects, ADictionaryKeepsTheLastValueOfAKey)
{
    const Dictionary dictionary({{text("k"), number(1)}, {number(2), number(3)}, {text("k"), number(4)}});
    EXPECT_EQ(dictionary.count(), 2);
    EXPECT_TRUE(areEqual(dictionary.value(QStringLiteral("k")).get(), number(4).get()));
    EXPECT_TRUE(areEqual(dictionary.value(number(2)).get(), number(3).get()));
    EXPECT_FALSE(dictionary.value(QStringLiteral("x")));
    EXPECT_TRUE(dictionary.contains(text("k")));
    EXPECT_FALSE(dictionary.contains(number(3)));
    EXPECT_TRUE(areEqual(dictionary.entries().first().key.get(), text("k").get()));
}
