#include "Platform/Foundation/ArchivedObject.h"

#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ArchiveSamples.h"
#include "Support/TestSupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace platform;
using namespace archiveSamples;

namespace {

ArchiveContents contentsOf(const QByteArray &bytes)
{
    auto contents = ArchiveContents::parse(bytes);
    EXPECT_TRUE(contents) << qPrintable(contents.error().toString());
    return std::move(contents).value();
}

template <class T>
std::shared_ptr<T> as(const ObjectPointer &object)
{
    auto result = std::dynamic_pointer_cast<T>(object);
    EXPECT_TRUE(result) << (object ? qPrintable(object->objectClass().name()) : "null");
    return result ? result : nullptr;
}

/// An object of the samples: what stands under "root".
ObjectPointer rootOf(const char *sample)
{
    const QString file = testSupport::sampleFile(QStringLiteral("keyed-archives/") + QLatin1String(sample));
    KeyedUnarchiver unarchiver(testSupport::readFile(file));
    return unarchiver.decodeObject("root");
}

/// What the notes of the samples say in JSON.
QJsonValue jsonOf(const ObjectPointer &object)
{
    if (const auto *boolean = dynamic_cast<const Boolean *>(object.get()))
        return boolean->value();
    if (const auto *number = dynamic_cast<const Number *>(object.get()))
        return number->toReal();
    if (const auto *string = dynamic_cast<const String *>(object.get()))
        return string->value();
    if (const auto *data = dynamic_cast<const Data *>(object.get()))
        return QString::fromLatin1("data " + data->bytes());
    QJsonArray elements;
    if (const auto *dictionary = dynamic_cast<const Dictionary *>(object.get())) {
        QJsonObject entries;
        for (const Dictionary::Entry &entry : dictionary->entries())
            entries.insert(as<String>(entry.key)->value(), jsonOf(entry.value));
        return entries;
    }
    if (const auto *array = dynamic_cast<const Array *>(object.get())) {
        for (const ObjectPointer &element : array->objects())
            elements.append(jsonOf(element));
    } else if (const auto *set = dynamic_cast<const Set *>(object.get())) {
        for (const ObjectPointer &element : set->objects())
            elements.append(jsonOf(element));
    } else {
        ADD_FAILURE() << "unexpected object";
    }
    return elements;
}

/// The values of "$top" in the order of their numbers "$0", "$1", …
QJsonArray numberedTop(const ArchiveContents &contents)
{
    QJsonArray values;
    for (int i = 0; i < contents.top().entries().size(); ++i)
        values.append(jsonOf(contents.top().value(QStringLiteral("$%1").arg(i))));
    return values;
}

} // namespace

TEST(ArchivedObject, AnUnknownClassIsKeptWithItsKeys)
{
    const QByteArray content = "<key>title</key>" + uid(3) + "<key>seconds</key><real>2.5</real><key>on</key><true/>"
        + "<key>none</key>" + uid(0) + "<key>plain</key><array>" + uid(3) + "<integer>7</integer></array>"
        + "<key>named</key><dict><key>a</key>" + uid(3) + "</dict>";
    const ArchiveContents contents =
        contentsOf(archive(record(2, content) + classRecord("Film") + "<string>t</string>"));
    EXPECT_EQ(contents.top().className(), QString());
    const auto film = as<ArchivedObject>(contents.top().value(QStringLiteral("root")));
    EXPECT_EQ(film->className(), QStringLiteral("Film"));
    EXPECT_EQ(film->classNames(), QStringList({QStringLiteral("Film"), QStringLiteral("NSObject")}));
    ASSERT_EQ(film->entries().size(), 6);
    EXPECT_EQ(film->entries()[0].key, QStringLiteral("title"));
    EXPECT_EQ(as<String>(film->value(QStringLiteral("title")))->value(), QStringLiteral("t"));
    EXPECT_EQ(as<Number>(film->value(QStringLiteral("seconds")))->toReal(), 2.5);
    EXPECT_TRUE(as<Boolean>(film->value(QStringLiteral("on")))->value());
    EXPECT_FALSE(film->value(QStringLiteral("none")));
    EXPECT_EQ(as<Array>(film->value(QStringLiteral("plain")))->objects().size(), 2);
    EXPECT_TRUE(as<Dictionary>(film->value(QStringLiteral("named")))->value(QStringLiteral("a")));
    EXPECT_FALSE(film->value(QStringLiteral("absent")));
}

TEST(ArchivedObject, RegisteredClassesAreUnknownToTheContents)
{
    ArchiveClasses::shared().registerClass<Picture>(QStringLiteral("ArchivedObjectTestPicture"));
    const ArchiveContents contents = contentsOf(archive(record(2, "") + classRecord("ArchivedObjectTestPicture")));
    EXPECT_TRUE(as<ArchivedObject>(contents.top().value(QStringLiteral("root"))));
}

TEST(ArchivedObject, ObjectsInACircleGoWithTheContents)
{
    std::weak_ptr<Object> film;
    {
        const ArchiveContents contents =
            contentsOf(archive(record(3, "<key>parts</key>" + uid(2)) + record(4, references("NS.objects", {1, 1}))
                               + classRecord("Film") + classRecord("NSArray")));
        const ObjectPointer root = contents.top().value(QStringLiteral("root"));
        film = root;
        const auto parts = as<Array>(as<ArchivedObject>(root)->value(QStringLiteral("parts")));
        EXPECT_EQ(parts->objects(), QList<ObjectPointer>({root, root}));
    }
    EXPECT_TRUE(film.expired());
}

TEST(ArchivedObject, ContentsAreReadFromAFile)
{
    const QString path = testSupport::homePath() + QStringLiteral("/a.plist");
    testSupport::writeFile(path, archive("<string>x</string>"));
    EXPECT_TRUE(ArchiveContents::read(path));
    const auto missing = ArchiveContents::read(path + QLatin1Char('x'));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    testSupport::writeFile(path, archive(record(9, "")));
    const auto wrong = ArchiveContents::read(path);
    ASSERT_FALSE(wrong);
    EXPECT_EQ(wrong.error().path, path);
    EXPECT_EQ(wrong.error().reason, QStringLiteral("object 1: reference to object 9 of 2"));
}

// The samples

TEST(ArchiveSamples, EveryFileIsReadOrRefusedAsItsNotesSay)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QJsonObject notes =
        QJsonDocument::fromJson(testSupport::readFile(testSupport::sampleFile(QStringLiteral("EXPECTED.json"))))
            .object();
    int valid = 0;
    int refused = 0;
    for (auto note = notes.begin(); note != notes.end(); ++note) {
        if (!note.key().startsWith(QLatin1String("keyed-archives/")) || note.key().endsWith(QLatin1String(".json")))
            continue;
        const QString expected = note.value()[QLatin1String("expected")].toString();
        const auto contents = ArchiveContents::read(testSupport::sampleFile(note.key()));
        EXPECT_EQ(bool(contents), expected.startsWith(QLatin1String("valid"))) << qPrintable(note.key());
        (contents ? valid : refused) += 1;
        const qsizetype json = expected.indexOf(QLatin1String(": ["));
        if (!contents || json < 0)
            continue;
        const QJsonArray values = QJsonDocument::fromJson(expected.mid(json + 2).toUtf8()).array();
        if (!values.isEmpty()) { // some notes are abridged, and tested below
            EXPECT_EQ(numberedTop(contents.value()), values) << qPrintable(note.key());
        }
    }
    EXPECT_GE(valid, 30);
    EXPECT_EQ(refused, 7);
}

TEST(ArchiveSamples, AbridgedNotesHold)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QString hello = QStringLiteral("Hello, World!");
    const QJsonArray primitives{1, 1, 1, 1.5, "data asdfasdfadsfadsf", true, hello, hello, hello, false, false, 42};
    const QJsonArray arrays{primitives, QJsonArray{true, hello, 42}, QJsonArray{true}, QJsonArray{42, true, hello}};
    for (const char *form : {"bin", "xml"}) {
        const auto values = [form](const char *name) {
            return numberedTop(contentsOf(testSupport::readFile(testSupport::sampleFile(
                QStringLiteral("keyed-archives/go-ios/%1.%2").arg(QLatin1String(name), QLatin1String(form))))));
        };
        EXPECT_EQ(values("primitives"), primitives) << form;
        EXPECT_EQ(values("arrays"), arrays) << form;
    }
}

TEST(ArchiveSamples, EveryArchiveOfTheDumpIsRead)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QJsonArray dump =
        QJsonDocument::fromJson(
            testSupport::readFile(testSupport::sampleFile(QStringLiteral("keyed-archives/go-ios/payload_dump.json"))))
            .array();
    ASSERT_EQ(dump.size(), 38);
    for (const QJsonValue &payload : dump) {
        const auto contents = ArchiveContents::parse(QByteArray::fromHex(payload.toString().toLatin1()));
        EXPECT_TRUE(contents) << qPrintable(contents.error().toString());
    }
}

TEST(ArchiveSamples, ThePlatformsObjectsComeBack)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const auto texts = [](const auto &container) {
        QStringList result;
        for (const ObjectPointer &object : container->objects())
            result.append(as<String>(object)->value());
        return result;
    };
    EXPECT_EQ(texts(as<Array>(rootOf("swift-corelibs/NSKeyedUnarchiver-ArrayTest.plist"))),
              QStringList({"baa", "baa", "black", "sheep"}));
    EXPECT_EQ(texts(as<OrderedSet>(rootOf("swift-corelibs/NSKeyedUnarchiver-OrderedSetTest.plist"))),
              QStringList({"valgeir", "nico", "puzzle"}));
    EXPECT_EQ(as<Url>(rootOf("swift-corelibs/NSKeyedUnarchiver-URLTest.plist"))->toUrl(),
              QUrl(QStringLiteral("https://www.example.com/foo.xml")));
    EXPECT_EQ(as<Uuid>(rootOf("swift-corelibs/NSKeyedUnarchiver-UUIDTest.plist"))->uuid(),
              QUuid(QStringLiteral("{0ad863ba-7584-40cf-8896-bd87b3280c34}")));
    const auto value = [](const char *sample) { return as<Geometry>(rootOf(sample))->value(); };
    EXPECT_EQ(std::get<QRectF>(value("swift-corelibs/NSKeyedUnarchiver-RectTest.plist")), QRectF(400, 300, 200, 300));
    EXPECT_EQ(std::get<IndexRange>(value("swift-corelibs/NSKeyedUnarchiver-RangeTest.plist")),
              (IndexRange{97345, 98345}));
    EXPECT_EQ(std::get<QMarginsF>(value("swift-corelibs/NSKeyedUnarchiver-EdgeInsetsTest.plist")),
              QMarginsF(2, 1, 4, 3));
    const auto complex = as<Dictionary>(rootOf("swift-corelibs/NSKeyedUnarchiver-ComplexTest.plist"));
    const auto array = as<Array>(complex->value(QStringLiteral("array")));
    ASSERT_EQ(array->objects().size(), 4);
    EXPECT_TRUE(as<Null>(array->objects()[0]));
    EXPECT_EQ(as<Number>(array->objects()[2])->toInteger(), 34545);
    EXPECT_EQ(array->objects()[1], complex->value(QStringLiteral("string"))) << "shared";
    EXPECT_EQ(as<Url>(complex->value(QStringLiteral("url")))->toUrl(),
              QUrl(QStringLiteral("https://www.swift.org/index.xml")));
}

TEST(ArchiveSamples, AnIndexSetOfManyRangesComesBack)
{
    ZR_REQUIRE_SAMPLE_DATA();
    KeyedUnarchiver unarchiver(testSupport::readFile(
        testSupport::sampleFile(QStringLiteral("keyed-archives/rust-plist/binary_NSKeyedArchiver.plist"))));
    const auto indexes = unarchiver.decodeObjectOfClass<Indexes>("foundItems");
    ASSERT_TRUE(indexes);
    EXPECT_EQ(indexes->indexes().ranges().size(), 42);
    EXPECT_EQ(indexes->indexes().ranges()[13], (IndexRange{64, 2}));
    EXPECT_EQ(indexes->indexes().lastIndex(), 8192);
}

TEST(ArchiveSamples, TruncatedSamplesAreRefusedAndDamagedOnesReadOrRefused)
{
    ZR_REQUIRE_SAMPLE_DATA();
    QDir folder(QFileInfo(testSupport::sampleFile(QStringLiteral("keyed-archives/go-ios/arrays.bin"))).path());
    for (const QString &name : folder.entryList({QStringLiteral("*.bin")})) {
        const QByteArray bytes = testSupport::readFile(folder.filePath(name));
        for (qsizetype length = 0; length < bytes.size(); ++length)
            ASSERT_FALSE(ArchiveContents::parse(bytes.first(length))) << qPrintable(name) << length;
        for (qsizetype at = 0; at < bytes.size(); ++at) {
            for (int bit = 0; bit < 8; ++bit) {
                QByteArray damaged = bytes;
                damaged[at] = char(damaged[at] ^ (1 << bit));
                static_cast<void>(ArchiveContents::parse(damaged));
            }
        }
    }
}
