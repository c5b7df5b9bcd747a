#include "Platform/Foundation/Object.h"

#include "Platform/Foundation/ObjectSet.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ModelObjects.h"

#include <QObject>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using platform::areEqual;
using platform::Array;
using platform::Number;
using platform::Object;
using platform::ObjectSet;
using platform::String;
using platform::WrappedQObject;

TEST(Object, KnowsItsClassAndItsSuperclasses)
{
    const ProtectedSong song;
    EXPECT_TRUE(song.isKindOfClass(ProtectedSong::staticClass()));
    EXPECT_TRUE(song.isKindOfClass(Song::staticClass()));
    EXPECT_TRUE(song.isKindOfClass(Object::staticClass()));
    EXPECT_FALSE(song.isKindOfClass(Photo::staticClass()));
    EXPECT_FALSE(Song().isKindOfClass(ProtectedSong::staticClass()));
    EXPECT_TRUE(Object().isKindOfClass(Object::staticClass()));
}

TEST(Object, HasTheClassOfItsRunTimeType)
{
    const ProtectedSong song;
    const Object &object = song;
    EXPECT_EQ(object.objectClass(), ProtectedSong::staticClass());
    EXPECT_FALSE(object.objectClass() == Song::staticClass());
}

TEST(Object, HasAClassWithNameAndSuperclass)
{
    EXPECT_EQ(ProtectedSong::staticClass().name(), QStringLiteral("ProtectedSong"));
    EXPECT_EQ(Number::staticClass().name(), QStringLiteral("platform::Number"));
    EXPECT_EQ(ProtectedSong::staticClass().superclass(), &Song::staticClass());
    EXPECT_EQ(Object::staticClass().superclass(), nullptr);
}

TEST(Object, TakesTwoRecordsOfOneTypeForTheSameClass)
{
    const platform::ObjectClass record(typeid(Song), &Object::staticClass());
    EXPECT_EQ(record, Song::staticClass());
    EXPECT_TRUE(ProtectedSong::staticClass().isSubclassOfClass(record));
}

TEST(Object, IsEqualToNoneButItselfUnlessItsClassSaysOtherwise)
{
    const Song one, two;
    EXPECT_TRUE(one.isEqual(one));
    EXPECT_FALSE(one.isEqual(two));
    EXPECT_NE(one.hash(), two.hash());
    EXPECT_TRUE(areEqual(nullptr, nullptr));
    EXPECT_FALSE(areEqual(&one, nullptr));
    EXPECT_FALSE(areEqual(nullptr, &one));
}

TEST(Object, ComparesNumbersByValue)
{
    const auto equal = [](const Number &a, const Number &b) {
        EXPECT_EQ(a.isEqual(b), b.isEqual(a));
        EXPECT_TRUE(!a.isEqual(b) || a.hash() == b.hash());
        return a.isEqual(b);
    };
    EXPECT_TRUE(equal(Number(3), Number(3.0)));
    EXPECT_TRUE(equal(Number(0), Number(-0.0)));
    EXPECT_FALSE(equal(Number(3), Number(3.5)));
    EXPECT_FALSE(equal(Number((qint64(1) << 53) + 1), Number(9007199254740992.0))) << "equal only when rounded";
    EXPECT_TRUE(equal(Number(std::nan("")), Number(std::nan(""))));
    EXPECT_TRUE(equal(Number(1e300), Number(1e300)));
    EXPECT_TRUE(equal(Number(std::numeric_limits<qint64>::min()), Number(-9223372036854775808.0)));
    EXPECT_FALSE(equal(Number(std::numeric_limits<qint64>::max()), Number(9223372036854775808.0)));
    EXPECT_FALSE(Number(3).isEqual(String(QStringLiteral("3"))));
}

TEST(Object, ReadsNumbersAsWholeAndAsReal)
{
    EXPECT_EQ(Number(-7.9).toInteger(), -7);
    EXPECT_EQ(Number(7).toReal(), 7.0);
    EXPECT_EQ(Number(2.5).toReal(), 2.5);
    EXPECT_EQ(Number(std::nan("")).toInteger(), 0);
    EXPECT_EQ(Number(1e300).toInteger(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(Number(-1e300).toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(Number(-9223372036854775808.0).toInteger(), std::numeric_limits<qint64>::min());
}

TEST(Object, ComparesTextsAndArraysByValue)
{
    const auto text = [](const char *value) { return std::make_shared<String>(QString::fromUtf8(value)); };
    EXPECT_TRUE(text("a")->isEqual(*text("a")));
    EXPECT_EQ(text("a")->hash(), text("a")->hash());
    EXPECT_FALSE(text("a")->isEqual(*text("A")));
    const Array one({text("a"), nullptr, std::make_shared<Number>(1)});
    const Array same({text("a"), nullptr, std::make_shared<Number>(1.0)});
    const Array shorter({text("a"), nullptr});
    const Array turned({nullptr, text("a")});
    EXPECT_TRUE(one.isEqual(same));
    EXPECT_EQ(one.hash(), same.hash());
    EXPECT_FALSE(one.isEqual(shorter));
    EXPECT_FALSE(shorter.isEqual(turned));
    EXPECT_NE(shorter.hash(), turned.hash());
    EXPECT_NE(Array({text("a")}).hash(), Array({text("b")}).hash());
    EXPECT_FALSE(shorter.isEqual(*text("a")));
}

TEST(Object, ComparesWrappersByTheirQObject)
{
    auto document = std::make_unique<QObject>();
    QObject other;
    const WrappedQObject one(document.get()), same(document.get()), different(&other);
    EXPECT_EQ(one.object(), document.get());
    EXPECT_TRUE(one.isEqual(same));
    EXPECT_EQ(one.hash(), same.hash());
    EXPECT_FALSE(one.isEqual(different));
    const size_t hash = one.hash();
    document.reset();
    EXPECT_EQ(one.object(), nullptr);
    EXPECT_FALSE(one.isEqual(same));
    EXPECT_TRUE(one.isEqual(one));
    EXPECT_EQ(one.hash(), hash);
}

TEST(ObjectSet, HoldsEqualObjectsOnceAndTheFirstOfThem)
{
    const auto first = std::make_shared<Number>(3);
    const auto song = std::make_shared<Song>();
    ObjectSet set{first, std::make_shared<Number>(3.0), song, std::make_shared<Song>(), song};
    EXPECT_EQ(set.size(), 3u);
    EXPECT_EQ(set.find(std::make_shared<Number>(3))->get(), first.get());
    EXPECT_TRUE(set.contains(song));
    EXPECT_FALSE(set.contains(std::make_shared<Song>()));
    EXPECT_FALSE(set.contains(nullptr));
    set.erase(std::make_shared<Number>(3));
    EXPECT_EQ(set.size(), 2u);
}

} // namespace
