#include "Examples/RunningZrmedia.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QStandardPaths>

using namespace zrmedia;

namespace {

/// A photo database with an album "A" of these keys and a photo "1" in a library that has moved.
void writeAlbum(const QString &file, const QList<QByteArray> &keys)
{
    QByteArray list;
    for (const QByteArray &key : keys)
        list += "<string>" + key + "</string>";
    testSupport::writeFile(file,
                           "<plist><dict><key>List of Albums</key><array><dict><key>AlbumName</key><string>A</string>"
                           "<key>KeyList</key><array>"
                               + list
                               + "</array></dict></array>"
                                 "<key>Master Image List</key><dict><key>1</key><dict><key>Caption</key>"
                                 "<string>A caption é</string><key>ThumbPath</key><string>t</string>"
                                 "<key>ImagePath</key><string>/nowhere/iPhoto Library/x/y.jpg</string></dict></dict>"
                                 "</dict></plist>");
}

} // namespace

TEST(Zrmedia, PrintsAPropertyListIndented)
{
    const QString file = path("list.plist");
    testSupport::writeFile(file,
                           "<plist><dict><key>z</key><array><integer>1</integer><real>2</real></array>"
                           "<key>a</key><date>2004-01-31T12:00:00Z</date></dict></plist>");
    const Outcome result = run({"plist", file});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "{\n  \"z\": [\n    1,\n    2.0\n  ],\n  \"a\": \"2004-01-31T12:00:00Z\"\n}\n");
    EXPECT_EQ(result.errors, "");
}

TEST(Zrmedia, PrintsAScalarRoot)
{
    const QString file = path("scalar.plist");
    testSupport::writeFile(file, "<plist><string>ü</string></plist>");
    EXPECT_EQ(run({"plist", file}).output, "\"ü\"\n");
}

TEST(Zrmedia, ListsPlaylistsInTheOrderOfTheFile)
{
    EXPECT_EQ(texts(arrayOf({"playlists", musicLibrary})),
              QStringList({"Library", "Podcasts", "Late Night Radio", "Jazz & Blues", "Müßiggang – 日曜日",
                           "From the Sixties"}));
}

TEST(Zrmedia, ListsTheSongsOfAPlaylistInItsOrderWithEveryKey)
{
    const QJsonArray songs = arrayOf({"songs", musicLibrary, "Late Night Radio"});
    EXPECT_EQ(texts(songs, "Name"),
              QStringList({"Rue des Rosiers, 4 h du matin", "Nachtzug nach Görlitz", "Midnight Oil Lamp", "夜の電車",
                           "Orbit 9", "Rue des Rosiers, 4 h du matin", "Small Hours", "Тихий город"}));
    const QJsonObject song = songs[0].toObject();
    EXPECT_EQ(song["Artist"], "Trio Vermeil");
    EXPECT_EQ(song["Total Time"], 415800);
    EXPECT_TRUE(song["Date Added"].toString().endsWith('Z'));
    EXPECT_TRUE(song["Location"].toString().startsWith("file://localhost/"));
    EXPECT_EQ(song["Track ID"], 45);
}

TEST(Zrmedia, WritesOneSongToALineWithItsKeysInTheOrderOfTheFile)
{
    const QString file = path("small.xml");
    testSupport::writeFile(
        file,
        "<plist><dict><key>Tracks</key><dict><key>7</key><dict><key>Name</key><string>B</string>"
        "<key>Album</key><string>A</string><key>Track ID</key><integer>7</integer></dict></dict>"
        "<key>Playlists</key><array><dict><key>Name</key><string>P</string><key>Playlist Items</key>"
        "<array><dict><key>Track ID</key><integer>7</integer></dict>"
        "<dict><key>Track ID</key><integer>7</integer></dict></array></dict></array></dict></plist>");
    const QByteArray song = "  {\"Name\": \"B\", \"Album\": \"A\", \"Track ID\": 7}";
    EXPECT_EQ(run({"songs", file, "P"}).output, "[\n" + song + ",\n" + song + "\n]\n");
}

TEST(Zrmedia, LeavesOutPodcastsAndFilms)
{
    const QStringList names = texts(arrayOf({"songs", musicLibrary, "Library"}), "Name");
    EXPECT_EQ(names.size(), 40);
    EXPECT_FALSE(names.contains("Letters to the Night Desk"));
    EXPECT_FALSE(names.contains("Harbour Songs: The Film"));
    EXPECT_EQ(run({"songs", musicLibrary, "Podcasts"}).output, "[]\n");
}

TEST(Zrmedia, SearchesNameArtistAlbumAndGenreWithoutRegardToCase)
{
    EXPECT_EQ(texts(arrayOf({"songs", musicLibrary, "Library", "--search", "CAFÉ"}), "Name"),
              QStringList({"Café Lumière", "Midnight Oil Lamp", "Lowland Freight", "Ain't No Compass",
                           "Encore: Goodnight, Meridian"}));
    EXPECT_EQ(arrayOf({"songs", musicLibrary, "Library", "--search", ""}).size(), 40);
    EXPECT_EQ(arrayOf({"songs", musicLibrary, "Library", "--search", "no such text"}).size(), 0);
}

TEST(Zrmedia, SortsByColumnInBothDirections)
{
    const auto names = [](const QStringList &options) {
        return texts(arrayOf(QStringList{"songs", musicLibrary, "Jazz & Blues"} + options), "Name");
    };
    const QStringList byTime{"Blue Tram",
                             "L'été indigo",
                             "Ain't No Compass",
                             "Café Lumière",
                             "Rue des Rosiers, 4 h du matin",
                             "Midnight Oil Lamp",
                             "Lowland Freight",
                             "Encore: Goodnight, Meridian"};
    EXPECT_EQ(names({"--sort", "Time"}), byTime);
    EXPECT_EQ(names({"--sort", "Time", "--descending"}), QStringList(byTime.rbegin(), byTime.rend()));
    EXPECT_EQ(names({"--sort", "Song"}).first(), "Ain't No Compass");
    const QStringList byArtist = names({"--sort", "Artist", "--descending"});
    EXPECT_EQ(byArtist.first(), "Café Lumière") << "songs of one artist keep their order";
}

TEST(Zrmedia, ListsAlbumsAndTheirPhotos)
{
    EXPECT_EQ(
        texts(arrayOf({"albums", albumData})),
        QStringList({"Library", "Coast and Mountains", "Kitchen Table", "Plakate – Posters", "Best of the Year"}));
    const QJsonArray photos = arrayOf({"photos", albumData, "Best of the Year"});
    EXPECT_EQ(texts(photos, "title"), QStringList({"Heading home", "Three pears", "Beach", "Klang – Neue Musik"}));
    for (const QJsonValue &photo : photos) {
        EXPECT_EQ(photo.toObject().keys(), QStringList({"creationDate", "imagePath", "title"}));
        EXPECT_TRUE(photo["creationDate"].isNull());
        EXPECT_TRUE(QFileInfo::exists(photo["imagePath"].toString())) << qPrintable(photo["imagePath"].toString());
    }
}

TEST(Zrmedia, PrintsWholePathsForALibraryNamedFromTheCurrentFolder)
{
    QProcess process;
    process.setProcessEnvironment(english());
    process.setWorkingDirectory(QStringLiteral(ZR_SAMPLE_LIBRARY));
    process.start(program, {"photos", "iPhoto Library", "Kitchen Table"});
    const QJsonArray photos = QJsonDocument::fromJson(finished(process).output).array();
    ASSERT_FALSE(photos.isEmpty());
    EXPECT_TRUE(photos[0]["imagePath"].toString().startsWith(QStringLiteral(ZR_SAMPLE_LIBRARY "/iPhoto Library/")));
}

TEST(Zrmedia, LeavesOutFilmsAndKeepsPhotosWithoutAMediaType)
{
    const QStringList titles = texts(arrayOf({"photos", albumData, "Library"}), "title");
    EXPECT_EQ(titles.size(), 36);
    EXPECT_FALSE(titles.contains("Waves, filmed"));
    EXPECT_TRUE(titles.contains("New snow"));
}

TEST(Zrmedia, SearchesTheCaptionAsItStandsInTheFile)
{
    EXPECT_EQ(texts(arrayOf({"photos", albumData, "Best of the Year", "--search", "jpg"}), "title"),
              QStringList({"Beach"}));
}

TEST(Zrmedia, TheSamplePhotosLookLikeTheirThumbnails)
{
    const QDir thumbs(QFileInfo(albumData).path() + "/Thumbs");
    QStringList originals = texts(arrayOf({"photos", albumData, "Library"}), "imagePath");
    ASSERT_EQ(thumbs.entryList(QDir::Files).size(), originals.size());
    QSet<QByteArray> formats;
    int turned = 0;
    for (int number = 301, i = 0; i < originals.size(); ++number) {
        const QString thumb = thumbs.filePath(QString::number(number) + ".jpg");
        if (!QFileInfo::exists(thumb))
            continue; // the film
        QImageReader reader(originals[i++]);
        reader.setAutoTransform(true);
        formats.insert(reader.format());
        turned += reader.transformation() != QImageIOHandler::TransformationNone;
        const QSize size(8, 8);
        const QImage photo = reader.read().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const QImage small = QImage(thumb).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        int difference = 0;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                difference += std::abs(qGray(photo.pixel(x, y)) - qGray(small.pixel(x, y)));
        }
        EXPECT_LT(difference / (size.width() * size.height()), 6) << qPrintable(reader.fileName());
    }
    EXPECT_GE(turned, 6);
    EXPECT_GE(formats.size(), 3);
}

TEST(Zrmedia, TheSampleSongsAreSoundFiles)
{
    for (const QJsonValue &song : arrayOf({"songs", musicLibrary, "Library"})) {
        const QString file = QUrl(song["Location"].toString().replace("file://localhost", "file://")).toLocalFile();
        const QByteArray bytes = testSupport::readFile(file);
        EXPECT_EQ(bytes.size(), song["Size"].toInt()) << qPrintable(file);
        EXPECT_TRUE(bytes.startsWith("RIFF") && bytes.mid(8, 8) == "WAVEfmt ");
    }
}

TEST(Zrmedia, SaysWhereAnInputIsBroken)
{
    const QString file = path("broken.plist");
    testSupport::writeFile(file, "<plist><dict><key>a</key></plist>");
    for (const QStringList &arguments : {QStringList{"plist", file}, {"playlists", file}, {"songs", file, "p"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.startsWith(QByteArray("zrmedia: " + file.toUtf8() + ": byte ")))
            << result.errors.constData();
        EXPECT_EQ(result.errors.count('\n'), 1);
    }
}

TEST(Zrmedia, SaysThatAFileIsNoPropertyList)
{
    const QString file = path("README.md");
    for (const char *text :
         {"# A heading\n", "A heading\n\nText.\n", "\x89PNG\r\n\x1A\n", "<!DOCTYPE html><html></html>"}) {
        testSupport::writeFile(file, text);
        for (const QStringList &arguments : {QStringList{"plist", file}, {"playlists", file}, {"albums", file}}) {
            const Outcome result = run(arguments);
            EXPECT_EQ(result.status, 1);
            EXPECT_TRUE(result.errors.endsWith(": this is no property list\n")) << result.errors.constData();
        }
    }
}

TEST(Zrmedia, SaysWhereAnAlbumDatabaseIsBroken)
{
    const QString file = path("AlbumData.xml");
    testSupport::writeFile(file, "<plist><dict><key>a</key></plist>");
    for (const QStringList &arguments :
         {QStringList{"albums", file}, {"photos", file, "a"}, {"albums", testSupport::homePath()}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.startsWith(QByteArray("zrmedia: " + file.toUtf8() + ": byte ")))
            << result.errors.constData();
    }
}

TEST(Zrmedia, SaysThatALibraryIsOfTheOtherKind)
{
    const Outcome playlists = run({"playlists", albumData});
    EXPECT_EQ(playlists.status, 1);
    EXPECT_EQ(playlists.output, "");
    EXPECT_EQ(playlists.errors, "zrmedia: " + albumData.toUtf8() + ": it holds neither playlists nor tracks\n");
    const Outcome albums = run({"albums", musicLibrary});
    EXPECT_EQ(albums.status, 1);
    EXPECT_EQ(albums.output, "");
    EXPECT_EQ(albums.errors, "zrmedia: " + musicLibrary.toUtf8() + ": it holds neither albums nor photos\n");
}

TEST(Zrmedia, ReadsAnAlbumDatabaseOfAnyNameWithItsOwnFolderForTheLibrary)
{
    const QString file = path("library/copy of albums.xml");
    writeAlbum(file, {"1"});
    QProcess process;
    process.setProcessEnvironment(english());
    process.setWorkingDirectory(path("library"));
    for (const QString &given : {file, QStringLiteral("copy of albums.xml")}) {
        process.start(program, {"photos", given, "A", "--search", "CAPT"});
        const Outcome result = finished(process);
        const QJsonArray photos = QJsonDocument::fromJson(result.output).array();
        EXPECT_EQ(photos[0]["imagePath"].toString(), path("library/x/y.jpg")) << qPrintable(given);
        EXPECT_EQ(result.errors, "");
    }
    EXPECT_EQ(run({"albums", file}).output, "[\n  \"A\"\n]\n");
    testSupport::writeFile(file, "<plist><dict><key>a</key></plist>");
    EXPECT_TRUE(run({"albums", file}).errors.startsWith(QByteArray("zrmedia: " + file.toUtf8() + ": byte ")));
}

TEST(Zrmedia, ReadsAnAlbumDatabaseWithoutPuttingAnythingAnywhere)
{
    const QString file = path("library/copy.xml");
    writeAlbum(file, {"1"});
    QProcess process;
    QProcessEnvironment environment = english();
    environment.insert(QStringLiteral("TMPDIR"), path("no such folder"));
    process.setProcessEnvironment(environment);
    process.start(program, {"albums", file});
    const Outcome result = finished(process);
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(result.output, "[\n  \"A\"\n]\n");
}

TEST(Zrmedia, FindsPhotosInAnAlbumThatAlsoListsOnesThatAreNotThere)
{
    const QString file = path("AlbumData.xml");
    writeAlbum(file, {"0", "1", "2"});
    const QByteArray remark = "zrmedia: " + file.toUtf8() + ": the album lists a photo that is not in the database\n";
    const Outcome found = run({"photos", file, "A", "--search", "capTION É"});
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.errors, remark);
    EXPECT_EQ(texts(QJsonDocument::fromJson(found.output).array(), "title"), QStringList{"A caption é"});
    const Outcome none = run({"photos", file, "A", "--search", "other"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.errors, remark);
    EXPECT_EQ(none.output, "[]\n");
    EXPECT_EQ(arrayOf({"photos", file, "A"}).size(), 3);
}

TEST(Zrmedia, SaysThatAFileIsMissing)
{
    for (const char *command : {"plist", "playlists", "albums"}) {
        const Outcome result = run({command, path("none/AlbumData.xml"), "--timings"});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.startsWith(QByteArray("zrmedia: " + path("none/AlbumData.xml").toUtf8() + ": ")))
            << result.errors.constData();
    }
}

TEST(Zrmedia, SaysThatAPipeOrDeviceIsNoFile)
{
    const Outcome device = run({"albums", "/dev/null"});
    EXPECT_EQ(device.status, 1);
    EXPECT_EQ(device.errors, "zrmedia: /dev/null: it is not a regular file\n");
    const Outcome pipe = runInShell("mkfifo \"$1\" && \"$0\" albums \"$1\"", path("pipe"));
    EXPECT_EQ(pipe.status, 1);
    EXPECT_EQ(pipe.errors, "zrmedia: " + path("pipe").toUtf8() + ": it is not a regular file\n");
}

TEST(Zrmedia, SaysThatTheNameOfAFileIsNotUtf8)
{
    const QString file = path("green.plist");
    testSupport::writeFile(file, "<plist><array/></plist>");
    // Nor could Qt remove such a file.
    const Outcome result = runInShell("cd \"${1%/*}\" && name=$'gr\\xfcn\\x1b.plist' && cp \"$1\" \"$name\" && "
                                      "\"$0\" plist \"$name\"; status=$?; rm \"$name\"; exit $status",
                                      file);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zrmedia: gr\\xfcn\\x1b.plist: the file name is not UTF-8\n");
    EXPECT_EQ(runInShell("\"$0\" plist $'gr\\xc3\\xbcn'", {}).errors, "zrmedia: grün: there is no such file\n");
    EXPECT_EQ(runInShell("\"$0\" plist $'\\xef\\xbf\\xbd'", {}).errors, "zrmedia: \uFFFD: there is no such file\n");
}

TEST(Zrmedia, LetsNoControlCharacterThroughToTheTerminal)
{
    const QString file = path("odd\nname\x1b.xml");
    testSupport::writeFile(file,
                           "<plist><dict><key>Playlists</key><array><dict><key>Name</key>"
                           "<string>one\n\x7f\xc2\x9b two</string></dict></array></dict></plist>");
    const Outcome result = run({"songs", file, "\x1b[2Jx"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrmedia: " + path("odd\\nname\\x1b.xml").toUtf8()
                  + ": no playlist is called \"\\x1b[2Jx\"; there are: \"one\\n\\x7f\\x9b two\"\n");
    EXPECT_TRUE(run({"pl\ay"}).errors.startsWith("zrmedia: there is no command \"pl\\x07y\"\n"));
    EXPECT_TRUE(run({"--a\nb"}).errors.startsWith("zrmedia: there is no option \"a\\nb\"\n"));
}

TEST(Zrmedia, NamesThePlaylistsAndAlbumsThatThereAre)
{
    const Outcome songs = run({"songs", musicLibrary, "late night radio"});
    EXPECT_EQ(songs.status, 1);
    EXPECT_EQ(songs.output, "");
    EXPECT_EQ(QString::fromUtf8(songs.errors),
              "zrmedia: " + musicLibrary
                  + ": no playlist is called \"late night radio\"; there are: \"Library\", \"Podcasts\", \"Late Night "
                    "Radio\", \"Jazz & Blues\", \"Müßiggang – 日曜日\", \"From the Sixties\"\n");
    EXPECT_EQ(run({"songs", musicLibrary, "From the Sixties"}).output, "[]\n") << "an empty playlist is none unknown";
    const Outcome photos = run({"photos", albumData, "Nope %2"});
    EXPECT_EQ(photos.status, 1);
    EXPECT_TRUE(photos.errors.contains("no album is called \"Nope %2\"; there are: \"Library\""))
        << photos.errors.constData();
}

TEST(Zrmedia, ShortensALongListOfNames)
{
    QByteArray playlists;
    for (int i = 0; i < 20; ++i)
        playlists += "<dict><key>Name</key><string>" + QByteArray(60, 'a' + char(i)) + "</string></dict>";
    const QString file = path("many.xml");
    testSupport::writeFile(file, "<plist><dict><key>Playlists</key><array>" + playlists + "</array></dict></plist>");
    const Outcome result = run({"songs", file, "x"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.errors.endsWith(QByteArray("\"" + QByteArray(40, 'h') + "…\" and 12 more\n")))
        << result.errors.constData();
}

TEST(Zrmedia, ExplainsItselfAfterAWrongCall)
{
    for (const QStringList &arguments :
         {QStringList{}, {"play"}, {"plist"}, {"plist", "a", "b"}, {"songs", "a", "b", "--sort", "Name"}, {"--what"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << qPrintable(arguments.join(' '));
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.startsWith("zrmedia: "));
        EXPECT_TRUE(result.errors.contains("zrmedia songs LIBRARY PLAYLIST"));
    }
}

TEST(Zrmedia, AnswersHelpAndVersionOnStandardOutput)
{
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.contains("zrmedia photos ALBUMDATA ALBUM"));
    EXPECT_EQ(help.errors, "");
    EXPECT_TRUE(run({"--version"}).output.startsWith("zrmedia "));
}

TEST(Zrmedia, SpeaksGermanToGermans)
{
    const Outcome result = runInGerman({"plist"});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.errors.startsWith("zrmedia: zu wenige Argumente für „plist“")) << result.errors.constData();
    EXPECT_TRUE(runInGerman({"--loud"}).errors.startsWith("zrmedia: die Option „loud“ gibt es nicht\n"));
}

TEST(Zrmedia, SaysInGermanWhatIsWrongWithAFile)
{
    const auto complaint = [](const QString &file) {
        const Outcome result = runInGerman({"playlists", file});
        EXPECT_EQ(result.status, 1);
        const QByteArray start = "zrmedia: " + file.toUtf8() + ": ";
        EXPECT_TRUE(result.errors.startsWith(start)) << result.errors.constData();
        return QString::fromUtf8(result.errors.mid(start.size()));
    };
    EXPECT_EQ(complaint(path("none")), "diese Datei gibt es nicht\n");
    EXPECT_EQ(complaint(testSupport::homePath()), "das ist keine gewöhnliche Datei\n");
    testSupport::writeFile(path("list.plist"), "<plist><array/></plist>");
    EXPECT_EQ(complaint(path("list.plist")), "die Property-List ist kein Dictionary\n");
    QFile large(path("large.plist")); // holds nothing but a hole
    ASSERT_TRUE(large.open(QIODevice::WriteOnly) && large.resize(5'000'000'000));
    EXPECT_EQ(complaint(large.fileName()), "die Datei ist größer als 4 GiB\n");
}

TEST(Zrmedia, AddsOneLineOfTimings)
{
    const auto timingsOf = [](const QStringList &arguments) {
        const Outcome result = run(arguments + QStringList{"--timings"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors.count('\n'), 1);
        const QJsonObject timings = QJsonDocument::fromJson(result.errors).object();
        EXPECT_EQ(timings.keys(), QStringList({"listing", "parsing", "reading", "searching", "sorting"}));
        QStringList measured;
        for (const QString &key : timings.keys()) {
            if (timings[key].isDouble())
                measured.append(key);
            else
                EXPECT_TRUE(timings[key].isNull());
        }
        return measured;
    };
    EXPECT_EQ(timingsOf({"plist", albumData}), QStringList({"listing", "parsing", "reading"}));
    EXPECT_EQ(timingsOf({"playlists", musicLibrary}), QStringList({"listing", "parsing", "reading"}));
    EXPECT_EQ(timingsOf({"songs", musicLibrary, "Library", "--search", "a", "--sort", "Song"}),
              QStringList({"listing", "parsing", "reading", "searching", "sorting"}));
    EXPECT_EQ(timingsOf({"photos", albumData, "Library", "--search", "a"}),
              QStringList({"listing", "parsing", "reading", "searching"}));
}

TEST(Zrmedia, FailsWhenItsOutputTakesNoMore)
{
    if (!QFileInfo::exists(QStringLiteral("/dev/full")))
        GTEST_SKIP() << "needs /dev/full";
    QProcess process;
    process.setProcessEnvironment(english());
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(program, {"songs", musicLibrary, "Library"});
    const Outcome result = finished(process);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.errors.startsWith("zrmedia: standard output: ")) << result.errors.constData();
}

TEST(Zrmedia, EndsQuietlyWhenTheReaderOfItsOutputGoesAway)
{
    QByteArray strings;
    for (int i = 0; i < 100'000; ++i)
        strings += "<string>many bytes, far more than a pipe holds</string>";
    const QString file = path("large.plist");
    testSupport::writeFile(file, "<plist><array>" + strings + "</array></plist>");
    const Outcome large = runInShell("\"$0\" plist \"$1\" | head -n 1; exit ${PIPESTATUS[0]}", file);
    EXPECT_EQ(large.status, 141);
    EXPECT_EQ(large.output, "[\n");
    EXPECT_EQ(large.errors, "");
    // Also for a program that was started with the signal ignored, and before a first byte is read.
    const Outcome none = runInShell("trap '' PIPE; \"$0\" plist \"$1\" | exec <&-; exit ${PIPESTATUS[0]}", file);
    EXPECT_EQ(none.status, 141);
    EXPECT_EQ(none.errors, "");
}

TEST(Zrmedia, EndsWithAClosedStandardOutput)
{
    // The output is of eight bytes, all of which an event counter would take, did it stand in for the closed one.
    const QString file = path("eight.plist");
    testSupport::writeFile(file, "<plist><string>abcde</string></plist>");
    for (const char *line : {"\"$0\" plist \"$1\" >&-", "\"$0\" plist \"$1\" <&- >&-"}) {
        const Outcome result = runInShell(line, file);
        EXPECT_EQ(result.status, 1) << line;
        EXPECT_EQ(result.errors, "zrmedia: standard output: Bad file descriptor\n") << line;
    }
}

TEST(Zrmedia, NoOtherFileGetsWhatIsMeantForAClosedDescriptor)
{
    if (!QFileInfo::exists(QStringLiteral("/proc/self/fd")))
        GTEST_SKIP() << "needs a system that tells what a program has open";
    const QString file = path("long.plist");
    testSupport::writeFile(
        file, "<plist><array>" + QByteArray("<integer>1</integer>").repeated(200'000) + "</array></plist>");
    // Nobody reads the pipe, so that the program is still there when it is looked at.
    const Outcome result = runInShell("exec 3< <(exec \"$0\" plist \"$1\" <&- 2>&-); pid=$!; read -r line <&3; "
                                      "readlink /proc/$pid/fd/0 /proc/$pid/fd/2; kill $pid",
                                      file);
    EXPECT_EQ(result.output, "/dev/null\n/dev/null\n") << result.errors.constData();
    EXPECT_EQ(runInShell("\"$0\" plist none 2>&-", file).status, 1);
}

TEST(Zrmedia, SaysThatMemoryIsShort)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers need an address space without limits";
#endif
    // One value, so that writing it takes much more than reading it did.
    const QString file = path("large.plist");
    testSupport::writeFile(file, "<plist><data>" + QByteArray("QUJD").repeated(10'000'000) + "</data></plist>");
    int failures = 0;
    for (int kilobytes = 120'000; kilobytes <= 280'000; kilobytes += 20'000) {
        const QByteArray line = "ulimit -v " + QByteArray::number(kilobytes) + "; \"$0\" plist \"$1\" >/dev/null";
        const Outcome result = runInShell(line.constData(), file);
        EXPECT_TRUE(result.status == 0 || result.status == 1) << kilobytes << ": " << result.status;
        EXPECT_EQ(result.errors.startsWith(QByteArray("zrmedia: " + file.toUtf8() + ": ")), result.status == 1)
            << kilobytes << ": " << result.errors.constData();
        failures += result.errors.endsWith(": not enough memory\n");
    }
    EXPECT_GT(failures, 0);
}

TEST(Zrmedia, EndsWhenInterrupted)
{
    const QString file = path("long.plist");
    testSupport::writeFile(
        file, "<plist><array>" + QByteArray("<integer>1</integer>").repeated(200'000) + "</array></plist>");
    // Nobody reads the pipe, so that the program is still writing when the interrupt comes.
    QProcess shell;
    shell.setProcessEnvironment(english());
    shell.start(
        QStringLiteral("bash"),
        {"-c",
         "exec 3< <(trap - INT; exec \"$0\" plist \"$1\"); pid=$!; read -r line <&3; kill -INT $pid; wait $pid; "
         "echo \"$line $?\"",
         program, file});
    const Outcome result = finished(shell);
    EXPECT_EQ(result.output, "[ 130\n");
    EXPECT_EQ(result.errors, "");
}

TEST(Zrmedia, ShowsNoProgressWhereNobodyLooks)
{
    EXPECT_EQ(run({"songs", musicLibrary, "Library"}).errors, "");
}

TEST(Zrmedia, ShowsProgressOnATerminalAndWipesItAway)
{
    constexpr int songs = 5000;
    QByteArray tracks, items;
    for (int i = 0; i < songs; ++i) {
        const QByteArray number = QByteArray::number(i);
        tracks += "<key>" + number + "</key><dict><key>Name</key><string>" + QByteArray(250, 'n') + number
            + "</string></dict>";
        items += "<dict><key>Track ID</key><integer>" + number + "</integer></dict>";
    }
    const QString file = path("songs.xml");
    testSupport::writeFile(file,
                           "<plist><dict><key>Tracks</key><dict>" + tracks
                               + "</dict><key>Playlists</key><array><dict><key>Name</key><string>P</string>"
                                 "<key>Playlist Items</key><array>"
                               + items + "</array></dict></array></dict></plist>");
    QProcess script;
    script.setProcessEnvironment(english());
    script.start(QStringLiteral(ZR_PYTHON),
                 {QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/run_on_terminal.py"), program, "songs", file, "P"});
    const Outcome result = finished(script);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(QJsonDocument::fromJson(result.output).array().size(), songs);
    EXPECT_TRUE(result.errors.startsWith("\r\x1b[KWriting: ")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains(" of 5,000 songs, ")) << result.errors.constData();
    EXPECT_TRUE(result.errors.endsWith("\r\x1b[K")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains('\n')) << result.errors.constData();
}

TEST(Zrmedia, AgreesWithAnotherReaderOnRealFiles)
{
    ZR_REQUIRE_SAMPLE_DATA();
    QProcess script;
    script.setProcessEnvironment(english());
    script.start(QStringLiteral(ZR_PYTHON),
                 {QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/compare_with_plistlib.py"), program,
                  QStringLiteral(ZR_SAMPLE_DATA "/EXPECTED.json"), QStringLiteral(ZR_SAMPLE_DATA "/plists"),
                  QStringLiteral(ZR_SAMPLE_DATA "/itunes"), QStringLiteral(ZR_SAMPLE_DATA "/iphoto"),
                  QFileInfo(musicLibrary).path()});
    const Outcome result = finished(script);
    EXPECT_EQ(result.status, 0) << result.output.constData() << result.errors.constData();
}
