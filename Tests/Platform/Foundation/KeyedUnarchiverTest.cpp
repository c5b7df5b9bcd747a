#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ArchiveSamples.h"
#include "Support/TestSupport.h"

#include <random>

using namespace platform;
using namespace archiveSamples;

namespace {

/// Why the archive's root cannot be read; empty if it can.
QString refusal(const QByteArray &bytes)
{
    const ArchiveClasses known = classes();
    try {
        KeyedUnarchiver unarchiver(bytes, known);
        static_cast<void>(unarchiver.decodeObject("root"));
        return {};
    } catch (const InvalidArchive &invalid) {
        EXPECT_STREQ(invalid.what(), invalid.error().toString().toUtf8().constData());
        EXPECT_LE(invalid.byteOffset(), bytes.size());
        return invalid.reason();
    }
}

/// Why the given call cannot be answered.
template <class Ask>
QString refusalOf(KeyedUnarchiver &unarchiver, const Ask &ask)
{
    try {
        ask(unarchiver);
        return {};
    } catch (const InvalidArchive &invalid) {
        return invalid.reason();
    }
}

ObjectPointer root(const QByteArray &bytes)
{
    const ArchiveClasses known = classes();
    KeyedUnarchiver unarchiver(bytes, known);
    return unarchiver.decodeObject("root");
}

QByteArray top(const QByteArray &content)
{
    return archive("<string>text</string>", content);
}

} // namespace

// Asking

TEST(KeyedUnarchiver, AbsentKeysAndNullGiveNothing)
{
    const ArchiveClasses known = classes();
    KeyedUnarchiver unarchiver(top("<key>null</key>" + uid(0)), known);
    EXPECT_FALSE(unarchiver.containsValueForKey("absent"));
    EXPECT_TRUE(unarchiver.containsValueForKey("null"));
    for (const char *key : {"absent", "null"}) {
        EXPECT_FALSE(unarchiver.decodeBool(key));
        EXPECT_EQ(unarchiver.decodeInt32(key), 0);
        EXPECT_EQ(unarchiver.decodeInt64(key), 0);
        EXPECT_EQ(unarchiver.decodeDouble(key), 0);
        EXPECT_TRUE(unarchiver.decodeString(key).isNull());
        EXPECT_TRUE(unarchiver.decodeData(key).isNull());
        EXPECT_FALSE(unarchiver.decodeDateTime(key).isValid());
        EXPECT_TRUE(unarchiver.decodeUrl(key).isEmpty());
        EXPECT_TRUE(unarchiver.decodeUuid(key).isNull());
        EXPECT_EQ(unarchiver.decodePoint(key), QPointF());
        EXPECT_EQ(unarchiver.decodeSize(key), QSizeF(0, 0));
        EXPECT_EQ(unarchiver.decodeRect(key), QRectF());
        EXPECT_FALSE(unarchiver.decodeObject(key));
        EXPECT_FALSE(unarchiver.decodeObjectOfClass<Slide>(key));
        EXPECT_TRUE(unarchiver.decodeObjects(key).isEmpty());
        EXPECT_TRUE(unarchiver.decodeStrings(key).isEmpty());
    }
}

TEST(KeyedUnarchiver, NumbersAreReadFromTheirPlaceAndThroughReferences)
{
    KeyedUnarchiver unarchiver(archive("<integer>5</integer><real>6</real><true/>",
                                       "<key>a</key>" + uid(1) + "<key>b</key>" + uid(2) + "<key>c</key>" + uid(3)
                                           + "<key>d</key><integer>7</integer>"));
    EXPECT_EQ(unarchiver.decodeInt32("a"), 5);
    EXPECT_EQ(unarchiver.decodeInt64("b"), 6);
    EXPECT_EQ(unarchiver.decodeDouble("a"), 5);
    EXPECT_TRUE(unarchiver.decodeBool("c"));
    EXPECT_TRUE(unarchiver.decodeBool("d"));
    EXPECT_EQ(unarchiver.decodeInt32("c"), 1);
    EXPECT_EQ(unarchiver.decodeDouble("c"), 1);
}

TEST(KeyedUnarchiver, RefusesAValueOfAnotherTypeThanWasAskedFor)
{
    const QByteArray objects = "<string>text</string><integer>5</integer>" + record(4, "") + classRecord("Slide")
        + record(6, references("NS.objects", {2, 3, 0})) + classRecord("NSArray");
    const QByteArray keys = "<key>text</key>" + uid(1) + "<key>number</key>" + uid(2) + "<key>slide</key>" + uid(3)
        + "<key>list</key>" + uid(5) + "<key>large</key><integer>9223372036854775808</integer>"
        + "<key>half</key><real>0.5</real><key>huge</key><real>1e30</real><key>wide</key><integer>2147483648</integer>";
    const ArchiveClasses known = classes();
    KeyedUnarchiver unarchiver(archive(objects, keys), known);
    const auto refused = [&](const auto &ask) { return !refusalOf(unarchiver, ask).isEmpty(); };
    for (const char *key : {"text", "slide", "list"}) {
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeBool(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeInt32(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeDouble(key); })) << key;
    }
    for (const char *key : {"number", "slide", "list"}) {
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeString(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeData(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodePoint(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeStrings(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.template decodeObjectOfClass<Picture>(key); })) << key;
    }
    for (const char *key : {"number", "slide", "list", "text"}) {
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeDateTime(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeUrl(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeUuid(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeSize(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeRect(key); })) << key;
        EXPECT_TRUE(refused([key](auto &archive) { archive.template decodeObjectsOfClass<Slide>(key); })) << key;
    }
    for (const char *key : {"large", "half", "huge"})
        EXPECT_TRUE(refused([key](auto &archive) { archive.decodeInt64(key); })) << key;
    EXPECT_TRUE(refused([](auto &archive) { archive.decodeInt32("wide"); }));
    EXPECT_EQ(unarchiver.decodeInt64("wide"), 2'147'483'648);
    EXPECT_EQ(refusalOf(unarchiver, [](auto &archive) { archive.decodeInt32("wide"); }),
              "the value under \"wide\" is of another type");
    EXPECT_EQ(unarchiver.decodeObjects("list").size(), 3);
    EXPECT_TRUE(unarchiver.decodeObjectOfClass<Slide>("slide"));
}

TEST(KeyedUnarchiver, ElementsThatAreNullAreRefusedWhereAClassIsWanted)
{
    const QByteArray bytes = archive(record(2, references("NS.objects", {0})) + classRecord("NSArray"));
    KeyedUnarchiver unarchiver(bytes);
    EXPECT_EQ(unarchiver.decodeObjects("root"), QList<ObjectPointer>{nullptr});
    EXPECT_FALSE(
        refusalOf(unarchiver, [](auto &archive) { archive.template decodeObjectsOfClass<Object>("root"); }).isEmpty());
}

TEST(KeyedUnarchiver, ReadsGeometryFromStringsAndFromValueObjects)
{
    const QByteArray value = "<key>NS.special</key><integer>3</integer><key>NS.rectval</key>" + uid(2);
    const QByteArray bytes =
        archive(record(3, value) + "<string> { {1,2}, { 3 , 4e1} } </string>" + classRecord("NSValue"),
                "<key>a</key>" + uid(1) + "<key>b</key>" + uid(2));
    KeyedUnarchiver unarchiver(bytes);
    EXPECT_EQ(unarchiver.decodeRect("a"), QRectF(1, 2, 3, 40));
    EXPECT_EQ(unarchiver.decodeRect("b"), QRectF(1, 2, 3, 40));
    EXPECT_FALSE(refusalOf(unarchiver, [](auto &archive) { archive.decodePoint("a"); }).isEmpty());
    for (const char *text :
         {"", "{", "{1}", "{1, 2", "{1, 2}}", "{1, 2} x", "{x, 2}", "{,}", "{{1, 2}, {3}}", "1, 2"}) {
        KeyedUnarchiver wrong(archive("<string>" + QByteArray(text) + "</string>"));
        EXPECT_FALSE(refusalOf(wrong, [](auto &archive) { archive.decodePoint("root"); }).isEmpty()) << text;
        EXPECT_FALSE(refusalOf(wrong, [](auto &archive) { archive.decodeRect("root"); }).isEmpty()) << text;
    }
}

TEST(KeyedUnarchiver, NothingIsDecodedAfterwards)
{
    KeyedUnarchiver unarchiver(top("<key>a</key><integer>1</integer>"));
    EXPECT_EQ(unarchiver.decodeInt32("a"), 1);
    unarchiver.finishDecoding();
    EXPECT_THROW(unarchiver.decodeInt32("a"), InternalInconsistency);
    EXPECT_THROW(static_cast<void>(unarchiver.containsValueForKey("a")), InternalInconsistency);
}

TEST(KeyedUnarchiver, NothingIsDecodedAfterAnObjectFailed)
{
    const ArchiveClasses known = classes();
    KeyedUnarchiver unarchiver(archive(record(2, "<key>title</key><integer>1</integer>") + classRecord("Slide"),
                                       "<key>root</key>" + uid(1) + "<key>n</key><integer>1</integer>"),
                               known);
    EXPECT_EQ(refusalOf(unarchiver, [](auto &archive) { archive.decodeObject("root"); }),
              "object 1: a text was expected");
    EXPECT_EQ(refusalOf(unarchiver, [](auto &archive) { archive.decodeInt32("n"); }), "reading has failed before");
}

// Classes

TEST(KeyedUnarchiver, AnOldNameIsReadAsTheClassThatItIsMappedTo)
{
    const QByteArray bytes =
        archive(record(2, "<key>title</key>" + uid(3)) + classRecord("OldSlide") + "<string>t</string>");
    ArchiveClasses known = classes();
    EXPECT_THROW(static_cast<void>(KeyedUnarchiver(bytes, known).decodeObject("root")), InvalidArchive);
    known.mapClassName(QStringLiteral("OldSlide"), QStringLiteral("Slide"));
    KeyedUnarchiver unarchiver(bytes, known);
    const auto slide = unarchiver.decodeObjectOfClass<Slide>("root");
    ASSERT_TRUE(slide);
    EXPECT_EQ(slide->title, QStringLiteral("t"));
}

TEST(KeyedUnarchiver, AFactoryMakesTheObjects)
{
    ArchiveClasses known;
    known.registerClass<Picture>(QStringLiteral("Picture"), {},
                                 [] { return std::make_shared<Picture>(QStringLiteral("made")); });
    known.registerClass<Slide>(QStringLiteral("Slide"), {}, [] { return std::shared_ptr<Slide>(); });
    const QByteArray bytes = archive(record(3, "") + record(4, "") + classRecord("Picture") + classRecord("Slide"),
                                     "<key>picture</key>" + uid(1) + "<key>slide</key>" + uid(2));
    KeyedUnarchiver unarchiver(bytes, known);
    EXPECT_TRUE(unarchiver.decodeObjectOfClass<Picture>("picture"));
    EXPECT_EQ(refusalOf(unarchiver, [](auto &archive) { archive.decodeObject("slide"); }),
              "object 2: no object of class Slide was made");
}

TEST(KeyedUnarchiver, TheSharedClassesAreOneForTheProcess)
{
    EXPECT_EQ(&ArchiveClasses::shared(), &ArchiveClasses::shared());
    EXPECT_FALSE(ArchiveClasses::shared().classNamed(QStringLiteral("no such class")));
}

TEST(KeyedUnarchiver, ReadsTheMutableAndNumberedFormsOfThePlatformsClasses)
{
    const QByteArray numbered = "<key>NS.object.1</key>" + uid(4) + "<key>NS.object.0</key>" + uid(3);
    const auto array = std::dynamic_pointer_cast<Array>(
        root(archive(record(2, numbered) + classRecord("NSMutableArray") + "<string>a</string><string>b</string>")));
    ASSERT_TRUE(array);
    EXPECT_EQ(array->objects().size(), 2);
    EXPECT_EQ(std::static_pointer_cast<String>(array->objects()[1])->value(), QStringLiteral("b"));

    const QByteArray keys = "<key>NS.key.0</key>" + uid(3) + "<key>NS.object.0</key>" + uid(4);
    const auto dictionary = std::dynamic_pointer_cast<Dictionary>(
        root(archive(record(2, keys) + classRecord("NSMutableDictionary") + "<string>a</string><string>b</string>")));
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(std::static_pointer_cast<String>(dictionary->value(QStringLiteral("a")))->value(), QStringLiteral("b"));

    for (const char *content :
         {"<key>NS.string</key><string>text</string>", "<key>NS.bytes</key><data>dGV4dA==</data>"}) {
        const auto string =
            std::dynamic_pointer_cast<String>(root(archive(record(2, content) + classRecord("NSMutableString"))));
        ASSERT_TRUE(string);
        EXPECT_EQ(string->value(), QStringLiteral("text"));
    }
    for (const char *key : {"NS.data", "NS.bytes"}) {
        const auto data = std::dynamic_pointer_cast<Data>(root(archive(
            record(2, "<key>" + QByteArray(key) + "</key><data>dGV4dA==</data>") + classRecord("NSMutableData"))));
        ASSERT_TRUE(data);
        EXPECT_EQ(data->bytes(), "text");
    }
}

// Hostile archives

TEST(KeyedUnarchiver, RefusesWhatIsNoArchive)
{
    EXPECT_FALSE(refusal("").isEmpty());
    EXPECT_FALSE(refusal("text").isEmpty());
    EXPECT_FALSE(refusal("<plist><array/></plist>").isEmpty());
    const QByteArray good = archive("<string>x</string>");
    EXPECT_EQ(refusal(good), "");
    const auto changed = [&good](const char *before, const char *after) {
        QByteArray bytes = good;
        EXPECT_TRUE(bytes.contains(before));
        return refusal(bytes.replace(before, after));
    };
    EXPECT_EQ(changed("$archiver", "archiver"), "no keyed archive: $archiver is missing");
    EXPECT_EQ(changed("NSKeyedArchiver", "Other"), "another archiver wrote it: Other");
    EXPECT_EQ(changed("<string>NSKeyedArchiver</string>", "<true/>"), "no keyed archive: $archiver is missing");
    EXPECT_EQ(changed("$version", "version"), "no keyed archive: $version is missing");
    EXPECT_EQ(changed("100000", "100001"), "unknown version of keyed archives");
    EXPECT_EQ(changed("$top", "top"), "no keyed archive: $top is missing");
    EXPECT_EQ(changed("$objects", "objects"), "no keyed archive: $objects is missing");
    EXPECT_EQ(changed("<array><string>$null</string><string>x</string></array>", "<dict/>"),
              "no keyed archive: $objects is missing");
    QByteArray topless = good;
    topless.replace(QByteArray("<dict><key>root</key>" + uid(1) + "</dict>"), "<array/>");
    EXPECT_EQ(refusal(topless), "no keyed archive: $top is missing");
}

TEST(KeyedUnarchiver, TellsWhereThePropertyListIsBroken)
{
    const QByteArray bytes = archive("<string>x</string>");
    try {
        KeyedUnarchiver unarchiver(bytes.first(bytes.size() - 10));
        ADD_FAILURE();
    } catch (const InvalidArchive &invalid) {
        EXPECT_GT(invalid.byteOffset(), 0);
        EXPECT_EQ(invalid.error().code, ErrorCode::Malformed);
    }
}

TEST(KeyedUnarchiver, RefusesWrongReferences)
{
    const auto withRoot = [](const QByteArray &reference) {
        return archive("<string>x</string>", "<key>root</key>" + reference);
    };
    EXPECT_EQ(refusal(withRoot(uid(2))), "reference to object 2 of 2");
    EXPECT_EQ(refusal(withRoot("<dict><key>CF$UID</key><integer>18446744073709551615</integer></dict>")),
              "reference to object 18446744073709551615 of 2");
    EXPECT_EQ(refusal(withRoot("<dict><key>CF$UID</key><integer>-1</integer></dict>")), "a reference is none");
    EXPECT_EQ(refusal(archive(record(2, references("NS.objects", {7})) + classRecord("NSArray"))),
              "object 1: reference to object 7 of 3");
    EXPECT_EQ(refusal(archive(uid(1))), "object 1 is none");
    EXPECT_EQ(refusal(archive("<array/>")), "object 1 is none");
}

TEST(KeyedUnarchiver, RefusesWrongClassRecords)
{
    const auto withClass = [](const QByteArray &archivedClass) {
        return refusal(archive(record(2, "") + archivedClass));
    };
    EXPECT_EQ(withClass(classRecord("Slide")), "");
    EXPECT_EQ(withClass(classRecord("Film")), "object 1: unknown class: Film");
    EXPECT_EQ(withClass("<string>Slide</string>"), "object 1: object 2 is no class");
    EXPECT_EQ(withClass("<dict/>"), "object 1: object 2 is no class");
    EXPECT_EQ(withClass("<dict><key>$classname</key><integer>1</integer></dict>"), "object 1: object 2 is no class");
    EXPECT_EQ(withClass("<dict><key>$classname</key><string></string></dict>"), "object 1: object 2 is no class");
    EXPECT_EQ(withClass("<dict><key>$classname</key><string>Slide</string></dict>"), "");
    EXPECT_EQ(withClass("<dict><key>$classname</key><string>Slide</string><key>$classes</key><true/></dict>"),
              "object 1: the superclasses of Slide are no list");
    EXPECT_EQ(withClass("<dict><key>$classname</key><string>Slide</string><key>$classes</key><array><true/></array>"
                        "</dict>"),
              "object 1: the superclasses of Slide are no names");
    EXPECT_EQ(refusal(archive("<dict/>")), "object 1: no reference to a class");
    EXPECT_EQ(refusal(archive("<dict><key>$class</key><integer>2</integer></dict>" + classRecord("Slide"))),
              "object 1: no reference to a class");
    EXPECT_EQ(refusal(archive("<dict><key>$class</key>" + uid(0) + "</dict>")), "object 1: object 0 is no class");
    EXPECT_EQ(refusal(archive(record(1, ""))), "object 1: object 1 is no class");
    EXPECT_EQ(refusal(archive(record(9, ""))), "object 1: reference to object 9 of 2");
}

TEST(KeyedUnarchiver, RefusesValuesOfThePlatformsClassesThatMakeNoSense)
{
    const auto of = [](const char *name, const QByteArray &content) {
        return refusal(archive(record(2, content) + classRecord(name) + "<string>x</string>"));
    };
    EXPECT_EQ(of("NSArray", "<key>NS.objects</key><string>x</string>"), "object 1: an array was expected");
    EXPECT_EQ(of("NSArray", "<key>NS.object.1</key>" + uid(3)), "object 1: element 0 is missing");
    EXPECT_EQ(of("NSArray", "<key>NS.object.0</key>" + uid(3) + "<key>NS.object.00</key>" + uid(3)),
              "object 1: element 1 is missing");
    EXPECT_EQ(of("NSArray", ""), "");
    EXPECT_EQ(of("NSDictionary", references("NS.keys", {3}) + references("NS.objects", {})),
              "object 1: 1 keys for 0 values");
    EXPECT_EQ(of("NSDictionary", references("NS.keys", {0}) + references("NS.objects", {3})),
              "object 1: a key is null");
    EXPECT_EQ(of("NSDate", ""), "object 1: a date without a time");
    EXPECT_EQ(of("NSDate", "<key>NS.time</key>" + uid(3)), "object 1: a number was expected");
    EXPECT_EQ(of("NSURL", ""), "object 1: a URL without a text");
    EXPECT_EQ(of("NSURL", "<key>NS.relative</key>" + uid(3) + "<key>NS.base</key>" + uid(3)),
              "object 1: the base of a URL is none");
    EXPECT_EQ(of("NSURL", "<key>NS.relative</key>" + uid(3) + "<key>NS.base</key>" + uid(1)),
              "object 1: object 1 holds itself");
    EXPECT_EQ(of("NSUUID", ""), "object 1: a UUID of 0 bytes");
    EXPECT_EQ(of("NSUUID", "<key>NS.uuidbytes</key><data>AAAA</data>"), "object 1: a UUID of 3 bytes");
    EXPECT_EQ(of("NSData", "<key>NS.data</key>" + uid(3)), "object 1: data was expected");
    EXPECT_EQ(of("NSString", "<key>NS.string</key><true/>"), "object 1: a text was expected");
    EXPECT_EQ(of("NSValue", ""), "object 1: a value of an unknown kind");
    EXPECT_EQ(of("NSValue", "<key>NS.special</key><integer>1</integer>"),
              "object 1: a point, size or rectangle is wrong");
    EXPECT_EQ(of("NSValue", "<key>NS.special</key><integer>4</integer>"), "object 1: a range is wrong");
    EXPECT_EQ(of("NSIndexSet", "<key>NSRangeCount</key><integer>1</integer>"),
              "object 1: a range of an index set is wrong");
}

TEST(KeyedUnarchiver, RefusesIndexSetsThatMakeNoSense)
{
    const auto of = [](int count, const QByteArray &bytes) {
        return refusal(archive(record(2,
                                      "<key>NSRangeCount</key><integer>" + QByteArray::number(count)
                                          + "</integer><key>NSRangeData</key><data>" + bytes.toBase64() + "</data>")
                               + classRecord("NSIndexSet")));
    };
    EXPECT_EQ(of(2, QByteArray::fromHex("03020801")), "");
    EXPECT_EQ(of(3, QByteArray::fromHex("03020801")), "object 1: an index set with 2 ranges");
    const QString wrong = QStringLiteral("object 1: a range of an index set is wrong");
    EXPECT_EQ(of(2, QByteArray::fromHex("030208")), wrong);
    EXPECT_EQ(of(2, QByteArray::fromHex("030208ff")), wrong);
    EXPECT_EQ(of(2, QByteArray::fromHex("08010302")), wrong) << "they must ascend";
    EXPECT_EQ(of(2, QByteArray::fromHex("03060801")), wrong) << "they must not overlap";
    EXPECT_EQ(of(2, QByteArray::fromHex("0301ffffffffffffffff7f01")), wrong) << "beyond the largest index";
    EXPECT_EQ(of(2, QByteArray::fromHex("0301ffffffffffffffffffff01")), wrong);
    EXPECT_EQ(of(-1, QByteArray::fromHex("0302")), "object 1: an index set with 1 ranges");
}

TEST(KeyedUnarchiver, RefusesContainersThatHoldThemselves)
{
    const auto of = [](const char *name, const QByteArray &content) {
        return refusal(archive(record(2, content) + classRecord(name)));
    };
    for (const char *name : {"NSArray", "NSMutableArray", "NSSet", "NSOrderedSet"})
        EXPECT_EQ(of(name, references("NS.objects", {1})), "object 1: object 1 holds itself") << name;
    EXPECT_EQ(of("NSDictionary", references("NS.keys", {1}) + references("NS.objects", {2})),
              "object 1: object 1 holds itself");
    const QByteArray around = record(3, references("NS.objects", {2})) + record(3, references("NS.objects", {1}));
    EXPECT_EQ(refusal(archive(around + classRecord("NSArray"))), "object 2: object 1 holds itself");
}

TEST(KeyedUnarchiver, RefusesObjectsThatNestTooDeep)
{
    const auto nested = [](int depth, const char *name, const QByteArray &key) {
        QByteArray objects = classRecord(name);
        for (int i = 2; i < depth + 2; ++i) {
            const int next = i < depth + 1 ? i + 1 : 0;
            objects += record(1, key == "NS.objects" ? references(key, {next}) : "<key>" + key + "</key>" + uid(next));
        }
        return archive(objects, "<key>root</key>" + uid(2));
    };
    EXPECT_EQ(refusal(nested(MaximumArchiveDepth, "NSArray", "NS.objects")), "");
    EXPECT_EQ(refusal(nested(MaximumArchiveDepth, "Slide", "next")), "");
    for (const int depth : {MaximumArchiveDepth + 1, 100'000}) {
        EXPECT_EQ(refusal(nested(depth, "NSArray", "NS.objects")), "more than 512 objects within one another");
        EXPECT_EQ(refusal(nested(depth, "Slide", "next")), "more than 512 objects within one another");
        EXPECT_EQ(refusal(nested(depth, "NSURL", "NS.base")).isEmpty(), false);
    }
}

TEST(KeyedUnarchiver, RefusesDepthThatIsBuiltFromTheInside)
{
    // Each object is asked for after the one that it holds, so that reading does not recurse; destroying would.
    QByteArray objects = classRecord("NSArray");
    QByteArray keys;
    constexpr int depth = 100'000;
    for (int i = 2; i < depth + 2; ++i) {
        objects += record(1, references("NS.objects", {i > 2 ? i - 1 : 0}));
        keys += "<key>" + QByteArray::number(i) + "</key>" + uid(i);
    }
    KeyedUnarchiver unarchiver(archive(objects, keys));
    QString reason;
    int read = 0;
    for (int i = 2; i < depth + 2 && reason.isEmpty(); ++i, ++read)
        reason = refusalOf(unarchiver, [i](auto &archive) { archive.decodeObject(QString::number(i)); });
    EXPECT_EQ(reason, "more than 512 objects within one another");
    EXPECT_EQ(read, MaximumArchiveDepth + 1);
}

TEST(KeyedUnarchiver, ReadsAMillionObjects)
{
    constexpr int count = 1'000'000;
    QByteArray objects = "<dict><key>$class</key>" + uid(2) + "<key>NS.objects</key><array>";
    for (int i = 3; i < count + 3; ++i)
        objects += uid(i);
    objects += "</array></dict>" + classRecord("NSArray");
    for (int i = 0; i < count; ++i)
        objects += "<integer>" + QByteArray::number(i) + "</integer>";
    const auto array = std::dynamic_pointer_cast<Array>(root(archive(objects)));
    ASSERT_TRUE(array);
    ASSERT_EQ(array->objects().size(), count);
    EXPECT_EQ(std::static_pointer_cast<Number>(array->objects().last())->toInteger(), count - 1);
}

TEST(KeyedUnarchiver, StructuresThatShareTheirPartsAreReadInNoTime)
{
    // Each array holds the next one twice: two to the power of 200 values for who would walk them all.
    const auto doubled = [](const char *name) {
        QByteArray objects = classRecord("NSArray") + classRecord(name);
        for (int i = 3; i < 203; ++i)
            objects +=
                record(i == 3 ? 2 : 1, references("NS.objects", i < 202 ? QList<int>{i + 1, i + 1} : QList<int>{}));
        return archive(objects, "<key>root</key>" + uid(3));
    };
    EXPECT_EQ(refusal(doubled("NSArray")), "");
    EXPECT_EQ(refusal(doubled("NSSet")), "object 3: sets and keys expand without measure");
    EXPECT_EQ(refusal(doubled("NSOrderedSet")), "object 3: sets and keys expand without measure");
}

TEST(KeyedUnarchiver, KeysThatShareTheirPartsAreReadInNoTime)
{
    QByteArray objects = classRecord("NSArray") + classRecord("NSDictionary")
        + record(2, references("NS.keys", QList<int>{4}) + references("NS.objects", QList<int>{203}));
    for (int i = 4; i < 204; ++i)
        objects += record(1, references("NS.objects", i < 203 ? QList<int>{i + 1, i + 1} : QList<int>{}));
    EXPECT_EQ(refusal(archive(objects, "<key>root</key>" + uid(3))), "object 3: sets and keys expand without measure");
}

TEST(KeyedUnarchiver, ATextThatIsReferredToOftenIsThereOnce)
{
    // Ten thousand slides with one title of a million letters.
    QByteArray objects = classRecord("Slide") + classRecord("NSArray") + "<string>" + QByteArray(1'000'000, 'x')
        + "</string>" + "<dict><key>$class</key>" + uid(2) + "<key>NS.objects</key><array>";
    for (int i = 5; i < 10'005; ++i)
        objects += uid(i);
    objects += "</array></dict>";
    for (int i = 5; i < 10'005; ++i)
        objects += record(1, "<key>title</key>" + uid(3));
    const ArchiveClasses known = classes();
    KeyedUnarchiver unarchiver(archive(objects, "<key>slides</key>" + uid(4)), known);
    const auto slides = unarchiver.decodeObjectsOfClass<Slide>("slides");
    ASSERT_EQ(slides.size(), 10'000);
    EXPECT_EQ(slides[1]->title.constData(), slides.last()->title.constData());
}

TEST(KeyedUnarchiver, RecordsThatShareTheirBytesDoNotExpandWithoutMeasure)
{
    // A thousand records that each make their own of one blob: an archive of little more than 100 KB.
    const auto shared = [](const QByteArray &className, const QByteArray &blob, const QByteArray &content, int count) {
        QByteArray objects = classRecord("NSArray") + classRecord(className) + blob + "<dict><key>$class</key>" + uid(1)
            + "<key>NS.objects</key><array>";
        for (int i = 5; i < 5 + count; ++i)
            objects += uid(i);
        objects += "</array></dict>";
        for (int i = 0; i < count; ++i)
            objects += record(2, content);
        return archive(objects, "<key>root</key>" + uid(4));
    };
    const auto data = [](const QByteArray &bytes) -> QByteArray { return "<data>" + bytes.toBase64() + "</data>"; };
    const auto refusalOfCount = [&](const QByteArray &className, const QByteArray &blob, const QByteArray &content) {
        EXPECT_EQ(refusal(shared(className, blob, content, 10)), "") << className.constData();
        return refusal(shared(className, blob, content, 1000));
    };
    const QString expected = QStringLiteral("texts and data expand without measure");
    const QByteArray text = data(QByteArray(100'000, 'x'));
    EXPECT_TRUE(refusalOfCount("NSString", text, "<key>NS.bytes</key>" + uid(3)).contains(expected));
    QByteArray ranges;
    for (quint32 i = 0; i < 30'000; ++i) { // every other index, each in up to three groups of seven bits
        quint32 rest = 2 * i;
        for (; rest > 0x7F; rest >>= 7)
            ranges += char(0x80 | (rest & 0x7F));
        ranges += char(rest);
        ranges += char(1);
    }
    EXPECT_TRUE(refusalOfCount("NSIndexSet", data(ranges),
                               "<key>NSRangeCount</key><integer>30000</integer><key>NSRangeData</key>" + uid(3))
                    .contains(expected));
    const QByteArray point = "<string>{1," + QByteArray(100'000, ' ') + "2}</string>";
    EXPECT_TRUE(
        refusalOfCount("NSValue", point, "<key>NS.special</key><integer>1</integer><key>NS.pointval</key>" + uid(3))
            .contains(expected));
}

// Damaged files

namespace {

/// A file with something of everything.
QByteArray wholeArchive()
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    const auto slide = std::make_shared<Slide>(QStringLiteral("Öl"));
    slide->picture = std::make_shared<Picture>(QStringLiteral("/a.jpg"));
    slide->parts = {std::make_shared<Slide>(QStringLiteral("part")), std::make_shared<Slide>(QStringLiteral("x"))};
    slide->parts[0]->previous = slide;
    slide->parts[1]->picture = slide->picture;
    const auto url =
        std::make_shared<Url>(QStringLiteral("x"), std::make_shared<Url>(QUrl(QStringLiteral("http://y"))));
    const auto text = std::make_shared<String>(QStringLiteral("text"));
    const auto date = std::make_shared<Date>(1.5);
    const QList<ObjectPointer> objects{
        slide,
        text,
        date,
        url,
        std::make_shared<Uuid>(QUuid::createUuidV5(QUuid(), QByteArray("x"))),
        std::make_shared<Data>(QByteArray("bytes")),
        std::make_shared<Geometry>(QRectF(1, 2, 3, 4)),
        std::make_shared<Geometry>(IndexRange{1, 2}),
        std::make_shared<Indexes>(IndexSet(1).unite(IndexSet(5))),
        std::make_shared<Null>(),
        std::make_shared<Set>(QList<ObjectPointer>{text, date}),
        std::make_shared<OrderedSet>(QList<ObjectPointer>{text, date}),
        std::make_shared<Dictionary>(QList<Dictionary::Entry>{{text, date}}),
    };
    archiver.encodeInt32(1, "current-version");
    archiver.encode(objects, "root");
    return finished(archiver);
}

} // namespace

TEST(KeyedUnarchiver, AFileThatIsCutAnywhereIsRefused)
{
    const QByteArray bytes = wholeArchive().trimmed();
    ASSERT_EQ(refusal(bytes), "");
    for (qsizetype length = 0; length < bytes.size(); ++length)
        ASSERT_NE(refusal(bytes.first(length)), "") << length;
}

TEST(KeyedUnarchiver, AFileWithAFlippedBitIsReadOrRefused)
{
    const QByteArray bytes = wholeArchive();
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        for (const int bit : {0, int(at % 8)}) { // the lowest makes the neighbouring letter or digit
            QByteArray damaged = bytes;
            damaged[at] = char(damaged[at] ^ (1 << bit));
            static_cast<void>(refusal(damaged));
        }
    }
}

TEST(KeyedUnarchiver, AFileWithExchangedReferencesIsReadOrRefused)
{
    const QByteArray bytes = wholeArchive();
    std::mt19937 random(5);
    QList<qsizetype> places;
    const QByteArray before = "<key>CF$UID</key>";
    for (qsizetype at = bytes.indexOf(before); at >= 0; at = bytes.indexOf(before, at + 1))
        places.append(bytes.indexOf("<integer>", at) + 9);
    for (int round = 0; round < 1000; ++round) {
        QByteArray damaged = bytes;
        for (int i = 0; i < 3; ++i) {
            const qsizetype place = places[qsizetype(random() % quint64(places.size()))];
            const qsizetype length = bytes.indexOf('<', place) - place;
            damaged.replace(place, length, QByteArray::number(random() % 60).rightJustified(length, '0', true));
        }
        static_cast<void>(refusal(damaged));
        breakCircles();
    }
}
