#include "zrmedia/Arguments.h"

#include <gtest/gtest.h>

using Column = iTunesSortingForZR::Column;

namespace {

Arguments parsed(const QStringList &words)
{
    const auto result = parseArguments(words);
    const auto *arguments = std::get_if<Arguments>(&result);
    EXPECT_TRUE(arguments) << qPrintable(words.join(QLatin1Char(' ')));
    return arguments ? *arguments : Arguments();
}

QString refusalOf(const QStringList &words)
{
    const auto result = parseArguments(words);
    const auto *error = std::get_if<UsageError>(&result);
    return error ? error->reason : QString();
}

} // namespace

TEST(Arguments, EveryCommandTakesItsWords)
{
    EXPECT_EQ(parsed({"plist", "f"}).command, Arguments::Command::Plist);
    EXPECT_EQ(parsed({"playlists", "f"}).command, Arguments::Command::Playlists);
    EXPECT_EQ(parsed({"albums", "f"}).command, Arguments::Command::Albums);
    const Arguments songs = parsed({"songs", "f", "Late Night"});
    EXPECT_EQ(songs.command, Arguments::Command::Songs);
    EXPECT_EQ(songs.file, "f");
    EXPECT_EQ(songs.collection, "Late Night");
    EXPECT_FALSE(songs.sortColumn);
    EXPECT_FALSE(songs.isDescending);
    EXPECT_FALSE(songs.showsTimings);
    EXPECT_EQ(parsed({"photos", "f", "a"}).command, Arguments::Command::Photos);
    EXPECT_EQ(parsed({"folder", "d"}).command, Arguments::Command::Folder);
    const Arguments sheet = parsed({"sheet", "d", "o.png"});
    EXPECT_EQ(sheet.command, Arguments::Command::Sheet);
    EXPECT_EQ(sheet.file, "d");
    EXPECT_EQ(sheet.output, "o.png");
    EXPECT_EQ(sheet.collection, "");
    EXPECT_FALSE(sheet.width);
    EXPECT_FALSE(sheet.isVerbose);
}

TEST(Arguments, OptionsMayStandAnywhere)
{
    const Arguments songs = parsed({"--timings", "songs", "--sort", "Time", "f", "--descending", "p", "--search=é x"});
    EXPECT_EQ(songs.search, "é x");
    EXPECT_EQ(songs.sortColumn, Column::Time);
    EXPECT_TRUE(songs.isDescending);
    EXPECT_TRUE(songs.showsTimings);
    EXPECT_EQ(parsed({"songs", "f", "p", "--sort", "Song"}).sortColumn, Column::Song);
    EXPECT_EQ(parsed({"songs", "f", "p", "--sort", "Artist"}).sortColumn, Column::Artist);
    EXPECT_EQ(parsed({"songs", "f", "p", "--sort", "song"}).sortColumn, Column::Song);
    EXPECT_EQ(parsed({"songs", "f", "p", "--sort", "ARTIST"}).sortColumn, Column::Artist);
    EXPECT_EQ(parsed({"songs", "f", "p", "--sort", "time"}).sortColumn, Column::Time);
    EXPECT_EQ(parsed({"photos", "f", "a", "--search", "b"}).search, "b");
    EXPECT_EQ(parsed({"folder", "--search", "b", "d"}).search, "b");
    EXPECT_TRUE(parsed({"folder", "--verbose", "d"}).isVerbose);
    EXPECT_TRUE(parsed({"sheet", "d", "--verbose", "o"}).isVerbose);
    EXPECT_EQ(parsed({"sheet", "--width", "200", "d", "o"}).width, 200);
    EXPECT_EQ(parsed({"sheet", "d", "o", "--width=20000"}).width, 20'000);
}

TEST(Arguments, WordsBehindTwoDashesAreNoOptions)
{
    EXPECT_EQ(parsed({"songs", "--", "f", "--sort"}).collection, "--sort");
    EXPECT_EQ(parsed({"songs", "f", "p", "--search", "--x"}).search, "--x");
}

TEST(Arguments, RefusesWhatItDoesNotUnderstand)
{
    EXPECT_EQ(refusalOf({}), "no command given");
    EXPECT_EQ(refusalOf({"play", "f"}), "there is no command \"play\"");
    EXPECT_EQ(refusalOf({"plist"}), "too few arguments for \"plist\"");
    EXPECT_EQ(refusalOf({"songs", "f"}), "too few arguments for \"songs\"");
    EXPECT_EQ(refusalOf({"albums", "f", "g"}), "too many arguments for \"albums\"");
    EXPECT_EQ(refusalOf({"plist", "f", "--search", "x"}), "\"plist\" takes no --search");
    EXPECT_EQ(refusalOf({"photos", "f", "a", "--sort", "Song"}), "\"photos\" takes no --sort");
    EXPECT_EQ(refusalOf({"photos", "f", "a", "--verbose"}), "\"photos\" takes no --verbose");
    EXPECT_EQ(refusalOf({"folder", "d", "--width", "300"}), "\"folder\" takes no --width");
    EXPECT_EQ(refusalOf({"sheet", "d", "o", "--search", "x"}), "\"sheet\" takes no --search");
    EXPECT_EQ(refusalOf({"sheet", "d"}), "too few arguments for \"sheet\"");
    for (const char *width : {"199", "20001", "wide", "-300", "300px", ""})
        EXPECT_EQ(refusalOf({"sheet", "d", "o", "--width", width}),
                  '"' + QLatin1String(width) + "\" is no width from 200 to 20000");
    EXPECT_EQ(refusalOf({"sheet", "d", "o", "--width"}), "\"--width\" needs a value");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--sort", "Name"}), "\"Name\" is none of Song, Artist and Time");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--descending"}), "--descending needs --sort");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--loud"}), "there is no option \"loud\"");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--search"}), "\"--search\" needs a value");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--sort"}), "\"--sort\" needs a value");
    EXPECT_EQ(refusalOf({"songs", "f", "p", "--timings=2"}), "an option has a value that it does not take");
}

TEST(Arguments, AFileHasAName)
{
    for (const QStringList &words : {QStringList{"plist", ""},
                                     {"playlists", ""},
                                     {"songs", "", "p"},
                                     {"albums", ""},
                                     {"photos", "", "a"},
                                     {"folder", ""},
                                     {"sheet", "", "o"},
                                     {"sheet", "d", ""}})
        EXPECT_EQ(refusalOf(words), "the name of the file is empty") << qPrintable(words.first());
    EXPECT_EQ(parsed({"songs", "f", ""}).collection, "") << "a playlist may go without";
}

TEST(Arguments, HelpAndVersionComeBeforeAnythingElse)
{
    const auto help = parseArguments({"--help"});
    ASSERT_TRUE(std::holds_alternative<Information>(help));
    for (const char *word : {"plist", "playlists", "songs", "albums", "photos", "folder", "sheet", "--search", "--sort",
                             "--descending", "--width", "--verbose", "--timings", "--version"})
        EXPECT_TRUE(std::get<Information>(help).text.contains(QLatin1String(word))) << word;
    const auto version = parseArguments({"songs", "--version"});
    ASSERT_TRUE(std::holds_alternative<Information>(version));
    EXPECT_TRUE(std::get<Information>(version).text.startsWith(QLatin1String("zrmedia 0.")));
}
