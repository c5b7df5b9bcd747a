#include "Examples/RunningZrmedia.h"
#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ArchiveSamples.h"

#include <QDir>

using namespace archiveSamples;
using namespace platform;
using namespace zrmedia;

namespace {

/// What the command makes of these records.
Outcome shown(const QByteArray &objects, const QByteArray &top = "<key>root</key>" + uid(1))
{
    const QString file = path("archive.plist");
    testSupport::writeFile(file, archive(objects, top));
    return run({"archive", file});
}

void compareWithPlistlib(const QStringList &files)
{
    QProcess script;
    script.setProcessEnvironment(english());
    script.start(QStringLiteral(ZR_PYTHON),
                 QStringList{QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/compare_archives_with_plistlib.py"), program}
                     + files);
    const Outcome result = finished(script);
    EXPECT_EQ(result.status, 0) << result.output.constData() << result.errors.constData();
}

} // namespace

TEST(ZrmediaArchive, PrintsObjectsWhereTheyAreReferredToWithTheirClasses)
{
    const QByteArray film =
        record(2, "<key>title</key>" + uid(3) + "<key>seconds</key><real>2</real><key>on</key><true/>")
        + classRecord("Film") + "<string>t</string>";
    const Outcome result =
        shown(film, "<key>a</key>" + uid(1) + "<key>n</key><integer>-3</integer>" + "<key>b</key>" + uid(0));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.output,
        "{\n  \"a\": {\n    \"$class\": \"Film\",\n    \"title\": \"t\",\n    \"seconds\": 2.0,\n    \"on\": true\n"
        "  },\n  \"n\": -3,\n  \"b\": null\n}\n");
    EXPECT_EQ(result.errors, "");
}

TEST(ZrmediaArchive, PrintsWhatIsSharedInEveryPlace)
{
    const Outcome result = shown(record(2, references("NS.objects", {3, 3})) + classRecord("NSArray")
                                 + record(4, "<key>n</key><integer>1</integer>") + classRecord("Film"));
    const QJsonArray films = QJsonDocument::fromJson(result.output)["root"].toArray();
    EXPECT_EQ(films,
              (QJsonArray{QJsonObject{{"$class", "Film"}, {"n", 1}}, QJsonObject{{"$class", "Film"}, {"n", 1}}}));
}

TEST(ZrmediaArchive, PrintsAnObjectInsideItselfAsItsNumber)
{
    const Outcome result =
        shown(record(3, "<key>parts</key>" + uid(2)) + record(4, references("NS.objects", {1, 5})) + classRecord("Film")
              + classRecord("NSArray") + record(3, "<key>whole</key>" + uid(1)));
    const QJsonObject reference{{"$ref", 1}};
    EXPECT_EQ(QJsonDocument::fromJson(result.output)["root"].toObject(),
              (QJsonObject{{"$class", "Film"},
                           {"$id", 1},
                           {"parts", QJsonArray{reference, QJsonObject{{"$class", "Film"}, {"whole", reference}}}}}));
}

TEST(ZrmediaArchive, PrintsADictionaryWhoseKeysAreNoTextsWithItsClass)
{
    const Outcome result = shown(record(2, references("NS.keys", {3}) + references("NS.objects", {4}))
                                 + classRecord("NSDictionary") + "<integer>7</integer><string>seven</string>");
    EXPECT_EQ(
        QJsonDocument::fromJson(result.output)["root"].toObject(),
        (QJsonObject{{"$class", "NSDictionary"}, {"NS.keys", QJsonArray{7}}, {"NS.objects", QJsonArray{"seven"}}}));
}

TEST(ZrmediaArchive, RefusesWhatExpandsWithoutMeasure)
{
    QByteArray objects = classRecord("NSArray");
    for (int i = 2; i < 102; ++i)
        objects += record(1, references("NS.objects", i < 101 ? QList<int>{i + 1, i + 1} : QList<int>{}));
    const Outcome result = shown(objects, "<key>root</key>" + uid(2));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zrmedia: " + path("archive.plist").toUtf8() + ": it expands without measure\n");
}

TEST(ZrmediaArchive, SaysWhyAnArchiveCannotBeRead)
{
    const Outcome result = shown(record(9, ""));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zrmedia: " + path("archive.plist").toUtf8() + ": object 1: reference to object 9 of 2\n");
    const QString list = path("list.plist");
    testSupport::writeFile(list, "<plist><dict/></plist>");
    EXPECT_EQ(run({"archive", list}).errors,
              "zrmedia: " + list.toUtf8() + ": no keyed archive: $archiver is missing\n");
    testSupport::writeFile(list, "<plist><dict></plist>");
    EXPECT_TRUE(run({"archive", list}).errors.startsWith(QByteArray("zrmedia: " + list.toUtf8() + ": byte ")));
    EXPECT_EQ(run({"archive", path("none")}).status, 1);
    EXPECT_EQ(run({"archive"}).status, 2);
    EXPECT_EQ(run({"archive", list, "more"}).status, 2);
}

TEST(ZrmediaArchive, AgreesWithAnotherReaderOnArchivesThatAreWrittenHere)
{
    const ArchiveClasses known = classes();
    KeyedArchiver archiver(known);
    const auto text = [](const char *value) { return std::make_shared<String>(QString::fromUtf8(value)); };
    const auto slide = std::make_shared<Slide>(QStringLiteral("<Öl> & 日曜日"));
    slide->picture = std::make_shared<Picture>(QStringLiteral("/a.jpg"));
    slide->seconds = 0.1;
    slide->parts = {std::make_shared<Slide>(QStringLiteral("part"))};
    slide->parts[0]->picture = slide->picture;
    const QList<ObjectPointer> objects{
        slide,
        text("text"),
        nullptr,
        std::make_shared<Null>(),
        std::make_shared<Number>(std::numeric_limits<quint64>::max()),
        std::make_shared<Number>(-1),
        std::make_shared<Number>(2.0),
        std::make_shared<Boolean>(true),
        std::make_shared<Date>(1.25),
        std::make_shared<Url>(QStringLiteral("x"), std::make_shared<Url>(QStringLiteral("http://y/"))),
        std::make_shared<Uuid>(QUuid::createUuid()),
        std::make_shared<Data>(QByteArray(200, 'x')),
        std::make_shared<Geometry>(QRectF(1, 2, 3, 4)),
        std::make_shared<Geometry>(IndexRange{1, 2}),
        std::make_shared<Indexes>(IndexSet(1).unite(IndexSet(5))),
        std::make_shared<Set>(QList<ObjectPointer>{text("a"), text("b")}),
        std::make_shared<OrderedSet>(QList<ObjectPointer>{text("a"), text("b")}),
        std::make_shared<Dictionary>(QList<Dictionary::Entry>{{text("a"), text("b")}, {text("c"), nullptr}}),
        std::make_shared<Dictionary>(QList<Dictionary::Entry>{{std::make_shared<Number>(1), text("b")}}),
    };
    archiver.encodeInt32(3, "current-version");
    archiver.encode(objects, "objects");
    archiver.encode(QPointF(1, 2.5), "point");
    const QString file = path("written.plist");
    testSupport::writeFile(file, finished(archiver));
    compareWithPlistlib({file});
}

TEST(ZrmediaArchive, AgreesWithAnotherReaderOnRealFiles)
{
    ZR_REQUIRE_SAMPLE_DATA();
    QStringList files;
    const QDir root(QFileInfo(testSupport::sampleFile(QStringLiteral("EXPECTED.json"))).path());
    for (const char *folder : {"go-ios", "swift-corelibs", "rust-plist"}) {
        const QDir samples(root.filePath(QStringLiteral("keyed-archives/") + QLatin1String(folder)));
        for (const QString &name : samples.entryList(QDir::Files)) {
            if (!name.startsWith(QLatin1String("missing_")) && !name.startsWith(QLatin1String("wrong_"))
                && !name.startsWith(QLatin1String("broken_")) && !name.endsWith(QLatin1String(".json")))
                files.append(samples.filePath(name));
        }
    }
    ASSERT_GE(files.size(), 30);
    compareWithPlistlib(files);
}
