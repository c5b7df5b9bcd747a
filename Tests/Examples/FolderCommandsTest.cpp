#include "Examples/RunningZrmedia.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Support/ImageSamples.h"
#include "Support/PictureDistance.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>

#include <sys/stat.h>

using namespace zrmedia;

namespace {

const QString samplePhotos = QStringLiteral(ZR_SAMPLE_LIBRARY "/iPhoto Library/Originals");
const QString cacheName = QStringLiteral("ZR.imageCache");

QByteArray picture(const QSize &size, const char *format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(200, 120, 40));
    return testSupport::encoded(image, format);
}

struct FolderCommands : testing::Test {
    const QString folder = path("Holiday");

    FolderCommands() { QDir().mkpath(folder); }
    void put(const char *name, const QByteArray &bytes = picture({60, 40}, "jpg")) const
    {
        testSupport::writeFile(folder + u'/' + QString::fromUtf8(name), bytes);
    }
    void putSamples(const char *of) const
    {
        for (QDirIterator place(samplePhotos + u'/' + QLatin1String(of), QDir::Files); place.hasNext();) {
            const QString file = place.next();
            EXPECT_TRUE(QFile::copy(file, folder + u'/' + QFileInfo(file).fileName()));
        }
    }
    QStringList titles(const QStringList &options = {}) const
    {
        QStringList list =
            texts(QJsonDocument::fromJson(run(QStringList{"folder", folder} + options).output).array(), "title");
        list.sort();
        return list;
    }
};

} // namespace

TEST_F(FolderCommands, MakesThumbnailsOnceAndListsThePhotos)
{
    put("sea.jpg");
    put("Harbour é.png", picture({30, 50}, "png"));
    const Outcome first = run({"folder", folder});
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.errors, "zrmedia: thumbnails: 2 made, 0 kept, 0 dropped, 0 refused\n");
    const QJsonArray photos = QJsonDocument::fromJson(first.output).array();
    ASSERT_EQ(photos.size(), 2);
    for (const QJsonValue &value : photos) {
        const QJsonObject photo = value.toObject();
        EXPECT_EQ(photo.keys(), QStringList({"creationDate", "imagePath", "title"}));
        EXPECT_TRUE(photo["creationDate"].isNull());
        EXPECT_EQ(QFileInfo(photo["imagePath"].toString()).completeBaseName(), photo["title"].toString());
        EXPECT_TRUE(QFileInfo(photo["imagePath"].toString()).isAbsolute());
    }
    EXPECT_EQ(titles(), QStringList({"Harbour é", "sea"}));
    EXPECT_TRUE(QFileInfo::exists(folder + u'/' + cacheName + QStringLiteral("/sea_thumb.jpg")));
    const Outcome second = run({"folder", folder});
    EXPECT_EQ(second.errors, "zrmedia: thumbnails: 0 made, 2 kept, 0 dropped, 0 refused\n");
    EXPECT_EQ(second.output, first.output);

    QFile::remove(folder + QStringLiteral("/sea.jpg"));
    put("river.jpg");
    EXPECT_EQ(run({"folder", folder}).errors, "zrmedia: thumbnails: 1 made, 1 kept, 1 dropped, 0 refused\n");
    EXPECT_EQ(titles(), QStringList({"Harbour é", "river"}));
}

TEST_F(FolderCommands, SearchTheTitlesWithoutRegardToCase)
{
    put("Sea at dawn.jpg");
    put("SEAGULL.jpg");
    put("river.jpg");
    EXPECT_EQ(titles({"--search", "sea"}), QStringList({"SEAGULL", "Sea at dawn"}));
    EXPECT_EQ(titles({"--search", "jpg"}), QStringList());
    EXPECT_EQ(run({"folder", folder, "--search", "nothing"}).output, "[]\n");
}

TEST_F(FolderCommands, NameEveryRefusedFileWhenAsked)
{
    put("good.jpg");
    put("notes.txt", "no picture");
    put("empty.jpg", "");
    put("cut.png", picture({30, 30}, "png").first(40));
    QDir(folder).mkdir("more");
    const QByteArray summary = "zrmedia: thumbnails: 1 made, 0 kept, 0 dropped, 4 refused\n";
    EXPECT_EQ(run({"folder", folder}).errors, summary);
    QList<QByteArray> lines = run({"folder", folder, "--verbose"}).errors.split('\n');
    EXPECT_EQ(lines.takeLast(), "");
    EXPECT_EQ(lines.takeLast(), "zrmedia: thumbnails: 0 made, 1 kept, 0 dropped, 4 refused");
    std::sort(lines.begin(), lines.end());
    ASSERT_EQ(lines.size(), 4);
    const QByteArray start = "zrmedia: " + folder.toUtf8();
    EXPECT_TRUE(lines[0].startsWith(QByteArray(start + "/cut.png: "))) << lines[0].constData();
    EXPECT_EQ(lines[1], start + "/empty.jpg: the file is empty");
    EXPECT_EQ(lines[2], start + "/more: it is not a regular file");
    EXPECT_EQ(lines[3], start + "/notes.txt: it begins like no picture");
}

TEST_F(FolderCommands, SayNothingOfWhatDecodersSay)
{
    // A TIFF file of which a decoder complains on standard error.
    QByteArray tiff = picture({30, 30}, "tiff");
    ASSERT_FALSE(tiff.isEmpty());
    tiff.chop(tiff.size() / 2);
    put("half.tif", tiff);
    put("noise.tif", QByteArray::fromHex("49492a0008000000ffff") + QByteArray(4000, '\x7f'));
    EXPECT_EQ(run({"folder", folder}).errors, "zrmedia: thumbnails: 0 made, 0 kept, 0 dropped, 2 refused\n");
}

TEST_F(FolderCommands, RefuseWhatIsNoFolder)
{
    put("sea.jpg");
    for (const char *command : {"folder", "sheet"}) {
        const auto errorsOf = [&](const QString &name) {
            QStringList words{command, name};
            if (words.first() == "sheet")
                words.append(path("out.png"));
            const Outcome result = run(words);
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.output, "");
            return QString::fromUtf8(result.errors);
        };
        EXPECT_EQ(errorsOf("/nowhere/at all"), "zrmedia: /nowhere/at all: there is no such folder\n");
        EXPECT_EQ(errorsOf(folder + "/sea.jpg"), "zrmedia: " + folder + "/sea.jpg: it is not a folder\n");
    }
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
}

TEST_F(FolderCommands, SayWhyThereIsNoCache)
{
    put("sea.jpg");
    // The folder cannot be made, whoever asks for it.
    const QString proc = QStringLiteral("/proc/self/task");
    if (QFileInfo(proc).isDir()) {
        const Outcome result = run({"folder", proc});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "zrmedia: /proc/self/task: Could not create the image cache folder at 'task'\n");
    }
    testSupport::writeFile(folder + "/ZR.imageCache/ImageData.plist", "damaged");
    const Outcome damaged = run({"folder", folder});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(QString::fromUtf8(damaged.errors),
              "zrmedia: " + folder
                  + ": the index of its thumbnails is damaged; delete the folder \"ZR.imageCache\" in it\n");
    // Where the index would be written, a folder stands.
    QDir(folder + "/ZR.imageCache").removeRecursively();
    QDir().mkpath(folder + "/ZR.imageCache/ImageData.plist/full");
    const Outcome unwritable = run({"folder", folder});
    EXPECT_EQ(unwritable.status, 1) << unwritable.errors.constData();
}

TEST_F(FolderCommands, SpeakGerman)
{
    put("sea.jpg");
    EXPECT_EQ(runInGerman({"folder", folder}).errors,
              "zrmedia: Miniaturbilder: 1 neu, 0 behalten, 0 entfernt, 0 abgelehnt\n");
    EXPECT_EQ(runInGerman({"folder", "/nowhere"}).errors, "zrmedia: /nowhere: diesen Ordner gibt es nicht\n");
}

TEST_F(FolderCommands, TellTheirTimes)
{
    put("sea.jpg");
    const auto timings = [&](const QStringList &words) {
        const QByteArray errors = run(words + QStringList{"--timings"}).errors;
        return QJsonDocument::fromJson(errors.mid(errors.indexOf('{'))).object();
    };
    const QJsonObject listing = timings({"folder", folder});
    EXPECT_GT(listing["reading"].toDouble(), 0);
    EXPECT_GT(listing["listing"].toDouble(), 0);
    EXPECT_TRUE(listing["searching"].isNull());
    const QJsonObject searching = timings({"folder", folder, "--search", "s"});
    EXPECT_GT(searching["searching"].toDouble(), 0);
    EXPECT_TRUE(searching["listing"].isNull());
}

TEST_F(FolderCommands, EndInGoodOrderWhenInterruptedAndGoOnFromThere)
{
    constexpr int count = 120;
    const QByteArray large = picture({2400, 1600}, "png");
    for (int i = 0; i < count; ++i)
        put(QByteArray("photo" + QByteArray::number(i) + ".png").constData(), large);
    const Outcome result =
        runInShell("(trap - INT; exec \"$0\" folder \"$1\") & pid=$!; "
                   "while ! ls \"$1\"/ZR.imageCache 2>/dev/null | grep -q _thumb; do sleep 0.01; done; "
                   "kill -INT $pid; wait $pid; echo $?",
                   folder);
    EXPECT_EQ(result.output, "130\n");
    EXPECT_TRUE(result.errors.endsWith("zrmedia: interrupted; the thumbnails made so far are kept\n"))
        << result.errors.constData();
    const auto index = platform::PropertyList::read(folder + "/ZR.imageCache/ImageData.plist");
    ASSERT_TRUE(index);
    const auto made = index.value().value(u"Image Data").count();
    EXPECT_GE(made, 1);
    EXPECT_LT(made, count);
    EXPECT_TRUE(QString::fromUtf8(result.errors).contains(QStringLiteral("thumbnails: %1 made").arg(made)));

    QProcess script;
    script.setProcessEnvironment(english());
    script.start(QStringLiteral(ZR_PYTHON),
                 {QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/run_on_terminal.py"), program, "folder", folder});
    const Outcome rest = finished(script);
    EXPECT_EQ(rest.status, 0);
    EXPECT_EQ(QJsonDocument::fromJson(rest.output).array().size(), count);
    EXPECT_TRUE(rest.errors.startsWith("\r\x1b[KMaking thumbnails: ")) << rest.errors.constData();
    const QString errors = QString::fromUtf8(rest.errors);
    EXPECT_TRUE(errors.contains(QStringLiteral(" of %1 photos, ").arg(count - made))) << rest.errors.constData();
    const QString end = QStringLiteral("\r\x1b[Kzrmedia: thumbnails: %1 made, %2 kept, 0 dropped, 0 refused\r\n");
    EXPECT_TRUE(errors.endsWith(end.arg(count - made).arg(made))) << rest.errors.constData();
}

TEST_F(FolderCommands, DrawASheetThatLooksLikeTheKeptOne)
{
    putSamples("2007/Posters");
    putSamples("2006/Kitchen Table");
    const QString file = path("sheet.png");
    const Outcome result = run({"sheet", folder, file, "--width", "640"});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(result.output, '"' + file.toUtf8() + "\"\n");
    EXPECT_TRUE(result.errors.startsWith("zrmedia: thumbnails: ")) << result.errors.constData();
    const QImage sheet(file, "png");
    EXPECT_EQ(sheet.width(), 640);
    const QImage kept(QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/References/contact-sheet.png"));
    ASSERT_EQ(sheet.size(), kept.size());
    EXPECT_LT(testSupport::distance(sheet, kept, kept.size() / 4).mean, 2);
}

TEST_F(FolderCommands, SortTheSheetByTitleAndReplaceTheFileWhole)
{
    // The first by name is the only wide one.
    put("photo 10.png", picture({20, 60}, "png"));
    put("photo 2.png", picture({90, 30}, "png"));
    put("photo 11.png", picture({20, 60}, "png"));
    const QString file = path("sheet.png");
    testSupport::writeFile(file, "something else");
    ASSERT_EQ(run({"sheet", folder, file, "--width", "600"}).status, 0);
    const QImage sheet(file);
    ASSERT_EQ(sheet.width(), 600);
    const QRgb orange = qRgb(200, 120, 40);
    const auto isOrange = [&](int x, int y) {
        const QRgb pixel = sheet.pixel(x, y);
        return std::abs(qRed(pixel) - qRed(orange)) < 12 && std::abs(qBlue(pixel) - qBlue(orange)) < 12;
    };
    int y = 0;
    while (y < sheet.height() && !isOrange(40, y))
        ++y;
    ASSERT_LT(y, sheet.height());
    y += 10;
    int right = 40;
    while (right < sheet.width() && isOrange(right, y))
        ++right;
    EXPECT_GT(right, 200) << "the wide one stands first";
    EXPECT_EQ(QDir(QFileInfo(file).path()).entryList({"sheet*"}, QDir::Files), QStringList("sheet.png"));
}

TEST_F(FolderCommands, DrawABlankForAThumbnailThatIsGone)
{
    put("a.jpg");
    put("b.jpg");
    ASSERT_EQ(run({"folder", folder}).status, 0);
    QFile::remove(folder + "/ZR.imageCache/a_thumb.jpg");
    testSupport::writeFile(folder + "/ZR.imageCache/b_thumb.jpg", "");
    const QString file = path("sheet.png");
    EXPECT_EQ(run({"sheet", folder, file}).status, 0);
    EXPECT_FALSE(QImage(file).isNull());
}

TEST_F(FolderCommands, SayWhyThereIsNoSheet)
{
    const QString file = path("sheet.png");
    const auto errorsOf = [&](const QString &sheet) {
        const Outcome result = run({"sheet", folder, sheet});
        EXPECT_EQ(result.status, 1);
        return QString::fromUtf8(result.errors.split('\n').value(1));
    };
    EXPECT_EQ(errorsOf(file), QString("zrmedia: " + folder + ": the folder holds no photos"));
    EXPECT_FALSE(QFileInfo::exists(file));
    put("a.jpg");
    EXPECT_EQ(errorsOf("/nowhere/sheet.png"), "zrmedia: /nowhere/sheet.png: No such file or directory");
    EXPECT_EQ(errorsOf(folder), QString("zrmedia: " + folder + ": it is not a regular file"));
    const QString pipe = path("pipe.png");
    ASSERT_EQ(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    EXPECT_EQ(errorsOf(pipe), QString("zrmedia: " + pipe + ": it is not a regular file"));
    EXPECT_FALSE(QFileInfo(pipe).isFile()) << "and it is left where it was";
    const Outcome odd = runInShell("\"$0\" sheet \"$1\" $'\\xff.png'", folder);
    EXPECT_EQ(odd.status, 1);
    EXPECT_EQ(odd.errors, "zrmedia: \\xff.png: the file name is not UTF-8\n");
}
