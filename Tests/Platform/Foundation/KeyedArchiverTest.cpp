#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ArchiveSamples.h"

#include <cmath>
#include <limits>

using namespace platform;
using namespace archiveSamples;

namespace {

/// Writes one value and asks for it again.
template <class T, class Decode>
auto thereAndBack(const T &value, const Decode &decode)
{
    KeyedArchiver archiver;
    archiver.encode(value, "value");
    KeyedUnarchiver unarchiver(finished(archiver));
    return (unarchiver.*decode)("value");
}

ObjectPointer thereAndBack(const ObjectPointer &object)
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    archiver.encodeObject(object, "object");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    return unarchiver.decodeObject("object");
}

PropertyListValue listOf(KeyedArchiver &archiver)
{
    const auto list = PropertyList::parse(finished(archiver));
    return list ? list.value() : PropertyListValue();
}

/// The element of "$objects" that a reference leads to.
PropertyListValue target(const PropertyListValue &list, const PropertyListValue &reference)
{
    EXPECT_EQ(reference.type(), PropertyListType::UID);
    return list.value("$objects").at(qsizetype(reference.toUid()));
}

PropertyListValue targetOfTop(const PropertyListValue &list, const char *key)
{
    return target(list, list.value("$top").value(key));
}

QString className(const PropertyListValue &list, const PropertyListValue &record)
{
    return target(list, record.value("$class")).value("$classname").toString();
}

} // namespace

TEST(KeyedArchiver, WritesAnEmptyArchiveInThePlatformsForm)
{
    KeyedArchiver archiver;
    archiver.setOutputFormat(KeyedArchiver::XmlFormat);
    EXPECT_EQ(archiver.outputFormat(), 100);
    const auto bytes = archiver.finishEncoding();
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes.value(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>$archiver</key>\n\t<string>NSKeyedArchiver</string>\n"
              "\t<key>$objects</key>\n\t<array>\n\t\t<string>$null</string>\n\t</array>\n"
              "\t<key>$top</key>\n\t<dict/>\n\t<key>$version</key>\n\t<integer>100000</integer>\n</dict>\n</plist>\n");
}

TEST(KeyedArchiver, WritesNumbersInPlaceAndTextsAsReferences)
{
    KeyedArchiver archiver;
    archiver.encodeInt32(3, "current-version");
    archiver.encodeBool(true, "isOpen");
    archiver.encodeDouble(2, "seconds");
    archiver.encode(QStringLiteral("Öl & Wasser"), "title");
    archiver.encode(QString(), "none");
    const PropertyListValue list = listOf(archiver);
    const PropertyListValue top = list.value("$top");
    EXPECT_EQ(top.value("current-version").type(), PropertyListType::Integer);
    EXPECT_EQ(top.value("isOpen").type(), PropertyListType::Boolean);
    EXPECT_EQ(top.value("seconds").type(), PropertyListType::Real);
    EXPECT_EQ(target(list, top.value("title")).toString(), QStringLiteral("Öl & Wasser"));
    EXPECT_EQ(top.value("none").toUid(), 0U);
    EXPECT_EQ(list.value("$objects").at(0).toString(), QStringLiteral("$null"));
}

TEST(KeyedArchiver, WritesHostObjectsUnderTheirRegisteredNamesWithTheirSuperclasses)
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    archiver.encodeObject(std::make_shared<Picture>(QStringLiteral("/a.jpg")), "picture");
    const PropertyListValue list = listOf(archiver);
    const PropertyListValue record = targetOfTop(list, "picture");
    EXPECT_EQ(target(list, record.value("path")).toString(), QStringLiteral("/a.jpg"));
    const PropertyListValue archivedClass = target(list, record.value("$class"));
    EXPECT_EQ(archivedClass.value("$classname").toString(), QStringLiteral("Picture"));
    EXPECT_EQ(archivedClass.value("$classes").toVariant(), QVariant(QVariantList{"Picture", "Asset", "NSObject"}));
}

TEST(KeyedArchiver, WritesTheValuesOfThePlatformInItsForms)
{
    KeyedArchiver archiver;
    archiver.encode(QByteArray("abc"), "data");
    archiver.encode(QDateTime::fromSecsSinceEpoch(978'307'201, Qt::UTC), "date");
    archiver.encode(QUrl(QStringLiteral("https://example.com/a b")), "url");
    archiver.encode(QUuid(QStringLiteral("{0ad863ba-7584-40cf-8896-bd87b3280c34}")), "uuid");
    archiver.encode(QPointF(1, 2.5), "point");
    archiver.encode(QSizeF(30, 0.1), "size");
    archiver.encode(QRectF(1, 2, 30, 40), "rect");
    archiver.encode(QStringList{QStringLiteral("x"), QStringLiteral("x")}, "texts");
    const PropertyListValue list = listOf(archiver);
    EXPECT_EQ(targetOfTop(list, "data").toData(), "abc");
    EXPECT_EQ(className(list, targetOfTop(list, "date")), "NSDate");
    EXPECT_EQ(targetOfTop(list, "date").value("NS.time").toReal(), 1);
    EXPECT_EQ(className(list, targetOfTop(list, "url")), "NSURL");
    EXPECT_EQ(targetOfTop(list, "url").value("NS.base").toUid(), 0U);
    EXPECT_EQ(target(list, targetOfTop(list, "url").value("NS.relative")).toString(), "https://example.com/a%20b");
    EXPECT_EQ(className(list, targetOfTop(list, "uuid")), "NSUUID");
    EXPECT_EQ(targetOfTop(list, "uuid").value("NS.uuidbytes").toData().toHex(), "0ad863ba758440cf8896bd87b3280c34");
    EXPECT_EQ(targetOfTop(list, "point").toString(), "{1, 2.5}");
    EXPECT_EQ(targetOfTop(list, "size").toString(), "{30, 0.1}");
    EXPECT_EQ(targetOfTop(list, "rect").toString(), "{{1, 2}, {30, 40}}");
    EXPECT_EQ(className(list, targetOfTop(list, "texts")), "NSArray");
    const PropertyListValue elements = targetOfTop(list, "texts").value("NS.objects");
    ASSERT_EQ(elements.count(), 2);
    EXPECT_EQ(elements.at(0), elements.at(1)) << "equal texts are written once";
}

TEST(KeyedArchiver, NumbersComeBackBitByBit)
{
    KeyedArchiver archiver;
    const double reals[] = {0.1, -0.0, 1e300, 5e-324, 1.0 / 3, std::numeric_limits<double>::infinity(), 12345678901.5};
    for (int i = 0; i < int(std::size(reals)); ++i)
        archiver.encodeDouble(reals[i], QString::number(i));
    archiver.encodeDouble(std::nan(""), "nan");
    archiver.encodeInt64(std::numeric_limits<qint64>::min(), "low");
    archiver.encodeInt64(std::numeric_limits<qint64>::max(), "high");
    archiver.encodeInt32(std::numeric_limits<qint32>::min(), "low32");
    archiver.encodeBool(false, "no");
    archiver.encodeBool(true, "yes");
    KeyedUnarchiver unarchiver(finished(archiver));
    for (int i = 0; i < int(std::size(reals)); ++i) {
        const double real = unarchiver.decodeDouble(QString::number(i));
        EXPECT_EQ(real, reals[i]);
        EXPECT_EQ(std::signbit(real), std::signbit(reals[i]));
    }
    EXPECT_TRUE(std::isnan(unarchiver.decodeDouble("nan")));
    EXPECT_EQ(unarchiver.decodeInt64("low"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(unarchiver.decodeInt64("high"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(unarchiver.decodeInt32("low32"), std::numeric_limits<qint32>::min());
    EXPECT_FALSE(unarchiver.decodeBool("no"));
    EXPECT_TRUE(unarchiver.decodeBool("yes"));
}

TEST(KeyedArchiver, PlainValuesComeBack)
{
    for (const char *text : {"", "a", "<&>\"'\r\n\t]]>", "日曜日 😀", "$null", " blanks "})
        EXPECT_EQ(thereAndBack(QString::fromUtf8(text), &KeyedUnarchiver::decodeString), QString::fromUtf8(text));
    for (const QByteArray &bytes : {QByteArray(""), QByteArray(3, '\0'), QByteArray(1000, 'x')})
        EXPECT_EQ(thereAndBack(bytes, &KeyedUnarchiver::decodeData), bytes);
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(-1'234'567'890'123, Qt::UTC);
    EXPECT_EQ(thereAndBack(date, &KeyedUnarchiver::decodeDateTime), date);
    EXPECT_EQ(thereAndBack(QDateTime(), &KeyedUnarchiver::decodeDateTime), QDateTime());
    const QUrl url(QStringLiteral("file:///tmp/ü%20x.jpg#here"));
    EXPECT_EQ(thereAndBack(url, &KeyedUnarchiver::decodeUrl), url);
    EXPECT_EQ(thereAndBack(QUrl(), &KeyedUnarchiver::decodeUrl), QUrl());
    const QUuid uuid = QUuid::createUuid();
    EXPECT_EQ(thereAndBack(uuid, &KeyedUnarchiver::decodeUuid), uuid);
    EXPECT_EQ(thereAndBack(QUuid(), &KeyedUnarchiver::decodeUuid), QUuid());
    EXPECT_EQ(thereAndBack(QPointF(-0.1, 1e100), &KeyedUnarchiver::decodePoint), QPointF(-0.1, 1e100));
    EXPECT_EQ(thereAndBack(QSizeF(1e-9, 7), &KeyedUnarchiver::decodeSize), QSizeF(1e-9, 7));
    EXPECT_EQ(thereAndBack(QRectF(1, -2, 3, 4.5), &KeyedUnarchiver::decodeRect), QRectF(1, -2, 3, 4.5));
    const QStringList texts{QStringLiteral("a"), QString(), QStringLiteral("a")};
    EXPECT_EQ(thereAndBack(texts, &KeyedUnarchiver::decodeStrings), texts);
}

TEST(KeyedArchiver, ValueObjectsComeBackEqual)
{
    const auto text = [](const char *value) { return std::make_shared<String>(QString::fromUtf8(value)); };
    const auto one = std::make_shared<Number>(1);
    IndexSet indexes(IndexRange{3, 2});
    const auto base = std::make_shared<Url>(QUrl(QStringLiteral("https://example.com/")));
    const QList<ObjectPointer> objects{
        text(""),
        text("é"),
        one,
        std::make_shared<Number>(-7),
        std::make_shared<Number>(std::numeric_limits<quint64>::max()),
        std::make_shared<Number>(0.25),
        std::make_shared<Boolean>(true),
        std::make_shared<Null>(),
        std::make_shared<Data>(QByteArray("\0\1", 2)),
        std::make_shared<Date>(625945468.42794),
        base,
        std::make_shared<Url>(QStringLiteral("foo.xml"), base),
        std::make_shared<Uuid>(QUuid::createUuid()),
        std::make_shared<Indexes>(IndexSet()),
        std::make_shared<Indexes>(indexes),
        std::make_shared<Indexes>(IndexSet(indexes).unite(IndexSet(IndexRange{1'000'000, 0x7fffffff}))),
        std::make_shared<Geometry>(QPointF(1, 2)),
        std::make_shared<Geometry>(QSizeF(1, 2)),
        std::make_shared<Geometry>(QRectF(1, 2, 3, 4)),
        std::make_shared<Geometry>(QMarginsF(1, 2, 3, 4)),
        std::make_shared<Geometry>(IndexRange{5, 6}),
        std::make_shared<Array>(QList<ObjectPointer>{}),
        std::make_shared<Array>(QList<ObjectPointer>{one, nullptr, text("x"), one}),
        std::make_shared<Set>(QList<ObjectPointer>{one, text("x")}),
        std::make_shared<OrderedSet>(QList<ObjectPointer>{text("x"), one}),
        std::make_shared<Dictionary>(QList<Dictionary::Entry>{{text("k"), one}, {one, text("k")}}),
    };
    for (const ObjectPointer &object : objects) {
        const ObjectPointer read = thereAndBack(object);
        EXPECT_TRUE(areEqual(read.get(), object.get())) << qPrintable(object->objectClass().name());
        EXPECT_TRUE(read && read->objectClass() == object->objectClass()) << qPrintable(object->objectClass().name());
    }
    const auto all = std::make_shared<Array>(objects);
    EXPECT_TRUE(areEqual(thereAndBack(all).get(), all.get()));
}

TEST(KeyedArchiver, RealNumbersStayReal)
{
    const auto read = std::dynamic_pointer_cast<Number>(thereAndBack(std::make_shared<Number>(2.0)));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isReal());
    EXPECT_TRUE(thereAndBack(std::make_shared<Number>(2))->isEqual(*read));
}

TEST(KeyedArchiver, SharedObjectsAreWrittenOnceAndComeBackAsOne)
{
    const auto picture = std::make_shared<Picture>(QStringLiteral("/a.jpg"));
    const auto equal = std::make_shared<Picture>(QStringLiteral("/a.jpg"));
    const auto array = std::make_shared<Array>(QList<ObjectPointer>{picture, picture, equal});
    const auto read =
        std::dynamic_pointer_cast<Array>(thereAndBack(std::make_shared<Array>(QList<ObjectPointer>{array, array})));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->objects().size(), 2);
    EXPECT_EQ(read->objects()[0], read->objects()[1]);
    const auto pictures = std::dynamic_pointer_cast<Array>(read->objects()[0])->objects();
    EXPECT_EQ(pictures[0], pictures[1]);
    EXPECT_NE(pictures[0], pictures[2]) << "identity decides, not equality";
}

TEST(KeyedArchiver, CirclesThroughHostObjectsComeBack)
{
    const auto first = std::make_shared<Slide>(QStringLiteral("first"));
    const auto second = std::make_shared<Slide>(QStringLiteral("second"));
    first->next = second;
    second->previous = first;
    first->previous = first;
    const auto read = std::dynamic_pointer_cast<Slide>(thereAndBack(first));
    ASSERT_TRUE(read && read->next);
    EXPECT_EQ(read->next->title, QStringLiteral("second"));
    EXPECT_EQ(read->next->previous.lock(), read);
    EXPECT_EQ(read->previous.lock(), read);
}

TEST(KeyedArchiver, ObjectsThatLiveOnlyWhileTheyAreEncodedAreKeptApart)
{
    class Maker : public Object, public KeyedCoding
    {
        ZR_OBJECT(Maker, platform::Object)
    public:
        void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override
        {
            for (int i = 0; i < 100; ++i)
                archiver.encodeObject(std::make_shared<Number>(i), QString::number(i));
        }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override
        {
            for (int i = 0; i < 100; ++i)
                EXPECT_EQ(unarchiver.decodeInt32(QString::number(i)), i);
        }
    };
    ArchiveClasses known;
    known.registerClass<Maker>(QStringLiteral("Maker"));
    KeyedArchiver archiver(known);
    archiver.encodeObject(std::make_shared<Maker>(), "maker");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    EXPECT_TRUE(unarchiver.decodeObjectOfClass<Maker>("maker"));
}

TEST(KeyedArchiver, ASubclassSharesTheKeysOfItsSuperclass)
{
    class Poster : public Picture
    {
        ZR_OBJECT(Poster, Picture)
    public:
        void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override
        {
            Picture::encodeWithKeyedArchiver(archiver);
            archiver.encodeInt64(sheets, "sheets");
        }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override
        {
            Picture::decodeFromKeyedUnarchiver(unarchiver);
            sheets = unarchiver.decodeInt64("sheets");
        }
        qint64 sheets = 0;
    };
    const auto poster = std::make_shared<Poster>();
    poster->path = QStringLiteral("/p");
    poster->sheets = 4;
    ArchiveClasses known = classes();
    {
        KeyedArchiver archiver(known);
        EXPECT_THROW(archiver.encodeObject(poster, "poster"), InternalInconsistency) << "its class is not registered";
    }
    known.registerClass<Poster>(QStringLiteral("Poster"), {QStringLiteral("Picture"), QStringLiteral("NSObject")});
    KeyedArchiver archiver(known);
    archiver.encodeObject(poster, "poster");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    const auto read = unarchiver.decodeObjectOfClass<Picture>("poster");
    ASSERT_TRUE(std::dynamic_pointer_cast<Poster>(read));
    EXPECT_EQ(read->path, QStringLiteral("/p"));
    EXPECT_EQ(std::static_pointer_cast<Poster>(read)->sheets, 4);
}

TEST(KeyedArchiver, ARegisteredClassGoesBeforeThePlatforms)
{
    class Title : public String, public KeyedCoding
    {
        ZR_OBJECT(Title, platform::String)
    public:
        Title()
            : String(QStringLiteral("title"))
        { }
        void encodeWithKeyedArchiver(KeyedArchiver &) const override { }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &) override { }
    };
    ArchiveClasses known;
    known.registerClass<Title>(QStringLiteral("NSArray"));
    KeyedArchiver archiver(known);
    archiver.encodeObject(std::make_shared<Title>(), "title");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    EXPECT_TRUE(unarchiver.decodeObjectOfClass<Title>("title"));
}

TEST(KeyedArchiver, RefusesWrongCalls)
{
    KeyedArchiver archiver;
    EXPECT_THROW(archiver.setOutputFormat(200), InternalInconsistency);
    EXPECT_THROW(archiver.encodeInt32(1, "$class"), InternalInconsistency);
    EXPECT_THROW(archiver.encode(QStringLiteral("x"), QStringLiteral("$x")), InternalInconsistency);
    EXPECT_THROW(archiver.encodeObject(std::make_shared<Slide>(), "slide"), InternalInconsistency);
    try {
        archiver.encodeObject(std::make_shared<Object>(), "object");
        ADD_FAILURE();
    } catch (const InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), "class platform::Object is not registered for archives");
    }
    EXPECT_TRUE(archiver.finishEncoding());
    EXPECT_THROW(archiver.encodeBool(true, "late"), InternalInconsistency);
    EXPECT_THROW(static_cast<void>(archiver.finishEncoding()), InternalInconsistency);
}

TEST(KeyedArchiver, RefusesATextThatXmlCannotHold)
{
    for (const char16_t character : {u'\0', u'\x1', u'\xD800', u'\xFFFF'}) {
        KeyedArchiver archiver;
        archiver.encode(QString(QChar(character)), "title");
        const auto bytes = archiver.finishEncoding();
        ASSERT_FALSE(bytes);
        EXPECT_EQ(bytes.error().code, ErrorCode::Malformed);
        EXPECT_EQ(bytes.error().reason, "character that XML cannot hold in $objects/1");
    }
}

TEST(KeyedArchiver, WhatAnObjectThrowsPassesOut)
{
    class Thrower : public Object, public KeyedCoding
    {
        ZR_OBJECT(Thrower, platform::Object)
    public:
        void encodeWithKeyedArchiver(KeyedArchiver &) const override { throw std::runtime_error("no"); }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &) override { }
    };
    ArchiveClasses known;
    known.registerClass<Thrower>(QStringLiteral("Thrower"));
    KeyedArchiver archiver(known);
    archiver.encodeObject(std::make_shared<Thrower>(), "thrower");
    EXPECT_THROW(static_cast<void>(archiver.finishEncoding()), std::runtime_error);
}

// Depth

namespace {

std::shared_ptr<Slide> chain(int length)
{
    std::shared_ptr<Slide> first;
    for (int i = 0; i < length; ++i) {
        auto slide = std::make_shared<Slide>(QString::number(i));
        slide->next = std::move(first);
        first = std::move(slide);
    }
    return first;
}

// Without recursion.
void takeApart(std::shared_ptr<Slide> first)
{
    while (first)
        first = std::exchange(first->next, nullptr);
}

} // namespace

TEST(KeyedArchiver, ObjectsNestToTheLimit)
{
    // Each slide also holds an empty list of parts: one level below it.
    const auto read = std::dynamic_pointer_cast<Slide>(thereAndBack(chain(MaximumArchiveDepth - 1)));
    int length = 0;
    for (const Slide *slide = read.get(); slide; slide = slide->next.get())
        ++length;
    EXPECT_EQ(length, MaximumArchiveDepth - 1);
}

TEST(KeyedArchiver, RefusesObjectsThatNestTooDeep)
{
    for (const int length : {MaximumArchiveDepth, 2 * MaximumArchiveDepth, 100'000}) {
        const ArchiveClasses known = classes();
        auto first = chain(length);
        {
            KeyedArchiver archiver(known);
            archiver.encodeObject(first, "first");
            const auto bytes = archiver.finishEncoding();
            ASSERT_FALSE(bytes) << length;
            EXPECT_EQ(bytes.error().code, ErrorCode::TooDeep);
        }
        takeApart(std::move(first));
    }
}

TEST(KeyedArchiver, RefusesAChainThatIsReachedFromItsEnd)
{
    // No object is far from the top here, but each holds the one written before it.
    const ArchiveClasses known = classes();
    auto first = chain(1000);
    QList<std::shared_ptr<Slide>> slides;
    for (auto slide = first; slide; slide = slide->next)
        slides.prepend(slide);
    KeyedArchiver archiver(known);
    archiver.encode(slides, "slides");
    const auto bytes = archiver.finishEncoding();
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().code, ErrorCode::TooDeep);
}

TEST(KeyedArchiver, AHundredThousandObjectsInOneListAreNotDeep)
{
    const ArchiveClasses known = classes();
    QList<std::shared_ptr<Slide>> slides;
    for (int i = 0; i < 100'000; ++i) {
        slides.append(std::make_shared<Slide>(QString::number(i)));
        if (i > 0)
            slides[i]->previous = slides[0];
    }
    KeyedArchiver archiver(known);
    archiver.encode(slides, "slides");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    const auto read = unarchiver.decodeObjectsOfClass<Slide>("slides");
    ASSERT_EQ(read.size(), slides.size());
    EXPECT_EQ(read.last()->title, QStringLiteral("99999"));
    EXPECT_EQ(read.last()->previous.lock(), read.first());
}

TEST(KeyedArchiver, ObjectsThatExistOnlyWhileTheyAreWrittenAreDifferentOnes)
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    for (int i = 0; i < 100; ++i)
        archiver.encodeObject(std::make_shared<Picture>(QString::number(i)), QString::number(i));
    KeyedUnarchiver unarchiver(finished(archiver), known);
    for (int i = 0; i < 100; ++i) {
        const auto picture = unarchiver.decodeObjectOfClass<Picture>(QString::number(i));
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->path, QString::number(i));
    }
}

TEST(KeyedArchiver, ObjectsThatOthersMakeWhileTheyAreWrittenAreDifferentOnes)
{
    class Gallery : public Object, public KeyedCoding
    {
        ZR_OBJECT(Gallery, platform::Object)
    public:
        void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override
        {
            for (int i = 0; i < 100; ++i)
                archiver.encodeObject(std::make_shared<Picture>(QString::number(i)), QString::number(i));
        }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override
        {
            for (int i = 0; i < 100; ++i)
                paths.append(unarchiver.decodeObjectOfClass<Picture>(QString::number(i))->path);
        }
        QStringList paths;
    };
    ArchiveClasses known = classes();
    known.registerClass<Gallery>(QStringLiteral("Gallery"));
    KeyedArchiver archiver(known);
    archiver.encode(QList<std::shared_ptr<Gallery>>{std::make_shared<Gallery>(), std::make_shared<Gallery>()}, "all");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    const auto galleries = unarchiver.decodeObjectsOfClass<Gallery>("all");
    ASSERT_EQ(galleries.size(), 2);
    for (const auto &gallery : galleries) {
        ASSERT_EQ(gallery->paths.size(), 100);
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(gallery->paths[i], QString::number(i));
    }
}

TEST(KeyedArchiver, WritesAClassOnce)
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    archiver.encode(QList<std::shared_ptr<Slide>>{std::make_shared<Slide>("a"), std::make_shared<Slide>("b")}, "all");
    const QByteArray bytes = finished(archiver);
    EXPECT_EQ(bytes.count("$classname"), 2) << "that of the slides and that of their array";
}

TEST(KeyedArchiver, PlacesKeepAllOfTheirDigits)
{
    const QPointF point(0.1 + 0.2, 1.0 / 3);
    EXPECT_EQ(thereAndBack(point, &KeyedUnarchiver::decodePoint).x(), point.x());
    EXPECT_EQ(thereAndBack(point, &KeyedUnarchiver::decodePoint).y(), point.y());
    const QRectF rect(-1e-7, 12345678.9, 1.0 / 7, 2e20);
    const QRectF read = thereAndBack(rect, &KeyedUnarchiver::decodeRect);
    EXPECT_TRUE(read.x() == rect.x() && read.y() == rect.y() && read.width() == rect.width()
                && read.height() == rect.height());
}

TEST(KeyedArchiver, RefusesACircleThatIsEnteredAtAContainer)
{
    class Holder : public Object, public KeyedCoding
    {
        ZR_OBJECT(Holder, platform::Object)
    public:
        void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override
        {
            archiver.encodeObject(array.lock(), "array");
        }
        void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override
        {
            array = unarchiver.decodeObjectOfClass<Array>("array");
        }
        std::weak_ptr<Array> array;
    };
    ArchiveClasses known;
    known.registerClass<Holder>(QStringLiteral("Holder"));
    const auto holder = std::make_shared<Holder>();
    const auto array = std::make_shared<Array>(QList<ObjectPointer>{holder});
    holder->array = array;
    KeyedArchiver entered(known);
    entered.encodeObject(array, "array");
    const auto bytes = entered.finishEncoding();
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().reason, "an array, set or dictionary holds itself");

    KeyedArchiver archiver(known);
    archiver.encodeObject(holder, "holder");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    const auto read = unarchiver.decodeObjectOfClass<Holder>("holder");
    ASSERT_TRUE(read && read->array.lock());
    EXPECT_EQ(read->array.lock()->objects(), QList<ObjectPointer>{read});
}
