#include "ZRCommon/ZRSongSearch.h"

#include "SongTestSupport.h"

#include <random>

namespace {

using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::names;
using testSupport::song;
using testSupport::songs;

QString slowlyFolded(const QString &text)
{
    QString folded;
    for (const uint c : text.normalized(QString::NormalizationForm_C).toUcs4()) {
        const char32_t fold = QChar::toCaseFolded(char32_t(c));
        folded += QString::fromUcs4(&fold, 1);
    }
    return folded;
}

SongList slowlyMatching(const SongList &list, const QString &text)
{
    SongList matching;
    const QString wanted = slowlyFolded(text);
    for (const PropertyListValue &entry : list) {
        bool matches = false;
        for (const auto *key : {u"Album", u"Artist", u"Genre", u"Name"}) {
            const PropertyListView field = PropertyListView(entry).value(QStringView(key));
            matches =
                matches || (field.isString() && !wanted.isEmpty() && slowlyFolded(field.toString()).contains(wanted));
        }
        if (matches)
            matching.append(entry);
    }
    return matching;
}

QString randomText(std::mt19937 &random, unsigned most)
{
    static const QString letters = QStringLiteral("aAbBäÄöo\u0308eE\u0301 &<ßſKкК愛ﬁ\U0001F3B5");
    QString text;
    for (auto n = random() % (most + 1); n > 0; --n)
        text += letters[random() % letters.size()];
    return text.isValidUtf16() ? text : QStringLiteral("x");
}

QVariantMap randomSong(std::mt19937 &random)
{
    QVariantMap map;
    for (const auto *key : {u"Album", u"Artist", u"Genre", u"Name", u"Comments"}) {
        if (random() % 4)
            map.insert(QStringView(key).toString(), randomText(random, 8));
        else if (random() % 4 == 0)
            map.insert(QStringView(key).toString(), int(random() % 20));
    }
    return map;
}

TEST(ZRSongSearch, FindsTheTextInAlbumArtistGenreAndNameWhateverItsCase)
{
    const SongList list = songs({song(QStringLiteral("1"), QStringLiteral("The Beatles")),
                                 song(QStringLiteral("2"), QString(), QStringLiteral("beatles for sale")),
                                 song(QStringLiteral("3"), QString(), QString(), QStringLiteral("BEATLES covers")),
                                 song(QStringLiteral("4_beaTles")),
                                 song(QStringLiteral("5"), QStringLiteral("Beat"), QStringLiteral("les"))});
    EXPECT_EQ(names(ZRSongSearch(list).songsMatchingString(u"BEATLES")), u"1 2 3 4_beaTles");
}

TEST(ZRSongSearch, AnswersASongThatMatchesInSeveralTextsOnce)
{
    const SongList list = songs({song(QStringLiteral("moon"), QStringLiteral("moon"), QStringLiteral("moonmoon"))});
    EXPECT_EQ(ZRSongSearch(list).songsMatchingString(u"moon").size(), 1);
}

TEST(ZRSongSearch, LooksAtNoOtherKeysAndNoOtherTypes)
{
    const SongList list = songs({QVariantMap{{QStringLiteral("Comments"), QStringLiteral("77")},
                                             {QStringLiteral("Name"), 77},
                                             {QStringLiteral("Artist"), 77.0},
                                             {QStringLiteral("Album"), QVariantList{QStringLiteral("77")}}}});
    EXPECT_TRUE(ZRSongSearch(list).songsMatchingString(u"77").isEmpty());
}

TEST(ZRSongSearch, FindsTheEmptyTextNowhere)
{
    ZRSongSearch search(songs({song(QStringLiteral("a")), song(QString())}));
    EXPECT_TRUE(search.songsMatchingString(u"").isEmpty());
    EXPECT_TRUE(search.songsMatchingString({}).isEmpty());
    EXPECT_EQ(names(search.songsMatchingString(u"a")), u"a");
    EXPECT_TRUE(search.songsMatchingString(u"").isEmpty());
    EXPECT_EQ(names(search.songsMatchingString(u"a")), u"a");
}

TEST(ZRSongSearch, DoesNotFindTextsAcrossFieldsOrSongs)
{
    const SongList list = songs({song(QStringLiteral("cd"), QStringLiteral("ab")), song(QStringLiteral("ef"))});
    ZRSongSearch search(list);
    for (const QString &text : QStringList{QStringLiteral("abcd"), QStringLiteral("bc"), QStringLiteral("de"),
                                           QStringLiteral("b\u00FFc"), QStringLiteral("\u00FF"), QString(QChar(0xFFFF)),
                                           QString(QChar(0)), QStringLiteral("b") + QChar(0) + QStringLiteral("c")})
        EXPECT_TRUE(search.songsMatchingString(text).isEmpty()) << qPrintable(text);
}

TEST(ZRSongSearch, DoesNotTakeAHalfCharacterForAnother)
{
    ZRSongSearch search(songs({song(QStringLiteral("a?b \U0001F3B5"))}));
    EXPECT_TRUE(search.songsMatchingString(QString(QChar(0xD83C))).isEmpty());
    EXPECT_EQ(search.songsMatchingString(u"\U0001F3B5").size(), 1);
}

TEST(ZRSongSearch, FindsAZeroInATextThatHoldsOne)
{
    // Only binary lists can hold it.
    const QByteArray bytes = QByteArray("bplist00")
        + QByteArray("\xD1\x01\x02\x54Name\x53"
                     "a\0b",
                     12)
        + QByteArray("\x08\x0B\x10", 3) + QByteArray(6, '\0') + QByteArray("\x01\x01", 2) + QByteArray(7, '\0') + '\x03'
        + QByteArray(8, '\0') + QByteArray(7, '\0') + '\x14';
    const auto list = platform::PropertyList::parse(bytes);
    ASSERT_TRUE(bool(list)) << qPrintable(list.error().toString());
    ZRSongSearch search({list.value()});
    const char16_t wanted[] = {'A', 0, 'B'};
    EXPECT_EQ(search.songsMatchingString(QStringView(wanted, 3)).size(), 1);
    EXPECT_EQ(search.songsMatchingString(QStringView(wanted + 1, 1)).size(), 1);
    EXPECT_TRUE(search.songsMatchingString(u"ab").isEmpty());
}

TEST(ZRSongSearch, KeepsOrderAndRepetitions)
{
    const SongList once = songs({song(QStringLiteral("b1")), song(QStringLiteral("x")), song(QStringLiteral("b2"))});
    const SongList list{once[2], once[0], once[1], once[2], once[0]};
    EXPECT_EQ(names(ZRSongSearch(list).songsMatchingString(u"B")), u"b2 b1 b2 b1");
}

TEST(ZRSongSearch, AgreesWithASlowSearchWhateverIsTyped)
{
    std::mt19937 random(21);
    for (int round = 0; round < 40; ++round) {
        QVariantList dictionaries;
        for (auto n = random() % 300; n > 0; --n)
            dictionaries.append(randomSong(random));
        SongList list = songs(dictionaries);
        if (round % 3 == 0)
            list += songs({randomSong(random), randomSong(random)}) + SongList{PropertyListValue()} + list.mid(0, 20);
        ZRSongSearch search(list);
        QString typed;
        for (int key = 0; key < 40; ++key) { // typing, deleting, starting anew
            const auto what = random() % 8;
            if (what == 0)
                typed = randomText(random, 3);
            else if (what == 1)
                typed.chop(1);
            else if (what == 2)
                typed.prepend(randomText(random, 1));
            else
                typed += randomText(random, 1);
            if (!typed.isValidUtf16())
                typed.clear();
            ASSERT_EQ(testSupport::identities(search.songsMatchingString(typed)),
                      testSupport::identities(slowlyMatching(list, typed)))
                << qPrintable(typed);
        }
    }
}

TEST(ZRSongSearch, NarrowsOnlyWhenTheFoldedTextContainsTheEarlierOne)
{
    QVariantList dictionaries{song(QStringLiteral("\u00E9t\u00E9")), song(QStringLiteral("ete"))};
    for (int i = 0; i < 20; ++i)
        dictionaries.append(song(QStringLiteral("other")));
    ZRSongSearch search(songs(dictionaries));
    EXPECT_EQ(names(search.songsMatchingString(u"ete")), u"ete");
    // Composition turns the last e into another letter: the text typed contains the earlier one, the folded text does
    // not.
    EXPECT_EQ(names(search.songsMatchingString(u"ete\u0301")), u"");
    EXPECT_EQ(names(search.songsMatchingString(u"e")), QStringLiteral("ete") + QStringLiteral(" other").repeated(20));
    EXPECT_EQ(names(search.songsMatchingString(u"e\u0301")), u"\u00E9t\u00E9");
}

TEST(ZRSongSearch, TakesNoMoreMemoryThanTheLibraryForSongsThatAreRepeated)
{
    const SongList once = songs(
        {song(QString(300'000, QLatin1Char('m')) + QStringLiteral("oon")), song(QStringLiteral("sun")), QVariantMap()});
    SongList list;
    for (int i = 0; i < 30'000; ++i) // nine gigabytes if each were folded
        list += once;
    ZRSongSearch search(list);
    EXPECT_EQ(search.songsMatchingString(u"MOON").size(), 30'000);
    EXPECT_EQ(search.songsMatchingString(u"n").size(), 60'000);
    EXPECT_EQ(search.songsMatchingString(u"sun").size(), 30'000);
    EXPECT_TRUE(search.songsMatchingString(u"moonx").isEmpty());
}

} // namespace
