#include "Libraries.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "ToneFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QUrl>

#include <functional>
#include <iterator>
#include <optional>

namespace {

/// A song, film or broadcast. Empty texts and zeros are left out of the database.
struct Track {
    const char *name;
    const char *artist;
    const char *album;
    const char *genre;
    int year;
    int number; ///< on the album
    int milliseconds;
    const char *kind = "WAV audio file";
};

// All names are invented.
const Track tracks[] = {
    {"Morning Ferry", "Ana Lindqvist", "Harbour Songs", "Folk", 2003, 1, 214'000},
    {"Salt on the Window", "Ana Lindqvist", "Harbour Songs", "Folk", 2003, 2, 187'400},
    {"Åsa's Waltz", "Ana Lindqvist", "Harbour Songs", "Folk", 2003, 3, 243'000},
    {"The Pilot's Daughter", "Ana Lindqvist", "Harbour Songs", "Folk", 2003, 4, 301'250},
    {"Café Lumière", "Trio Vermeil", "Cartes postales", "Jazz", 1998, 1, 372'000},
    {"Rue des Rosiers, 4 h du matin", "Trio Vermeil", "Cartes postales", "Jazz", 1998, 2, 415'800},
    {"L'été indigo", "Trio Vermeil", "Cartes postales", "Jazz", 1998, 3, 298'000},
    {"Blue Tram", "Trio Vermeil", "Cartes postales", "Jazz", 1998, 4, 264'900},
    {"Nachtzug nach Görlitz", "Kollektiv Weiß", "Gleisdreieck", "Electronic", 2005, 1, 388'000},
    {"Straßenbahn", "Kollektiv Weiß", "Gleisdreieck", "Electronic", 2005, 2, 342'000},
    {"Übergang", "Kollektiv Weiß", "Gleisdreieck", "Electronic", 2005, 3, 275'300},
    {"Signal (Reprise)", "Kollektiv Weiß", "Gleisdreieck", "Electronic", 2005, 4, 60'000},
    {"Paper Lanterns", "The Weatherglass", "Small Hours", "Rock", 2004, 1, 201'000},
    {"Kerosene & Honey", "The Weatherglass", "Small Hours", "Rock", 2004, 2, 233'600},
    {"Two Dollars, One Way", "The Weatherglass", "Small Hours", "Rock", 2004, 3, 195'000},
    {"Small Hours", "The Weatherglass", "Small Hours", "Rock", 2004, 4, 327'000},
    {"small hours (demo)", "The Weatherglass", "Small Hours", "Rock", 2004, 5, 189'000},
    {"Sonata in G minor: I. Allegro", "Ilse Brandt", "Sonatas for Cello Alone", "Classical", 1987, 1, 512'000},
    {"Sonata in G minor: II. Largo", "Ilse Brandt", "Sonatas for Cello Alone", "Classical", 1987, 2, 634'000},
    {"Sonata in G minor: III. Gigue", "Ilse Brandt", "Sonatas for Cello Alone", "Classical", 1987, 3, 227'000},
    {"Partita No. 2: Sarabande", "Ilse Brandt", "Sonatas for Cello Alone", "Classical", 1987, 4, 401'000},
    {"雨の駅", "青木みどり", "夜の電車", "J-Pop", 2001, 1, 256'000},
    {"夜の電車", "青木みどり", "夜の電車", "J-Pop", 2001, 2, 284'500},
    {"カフェで", "青木みどり", "夜の電車", "J-Pop", 2001, 3, 231'000},
    {"Canção do Mar Alto", "Rui Tavares", "Saudade em Lisboa", "World", 1995, 1, 263'000},
    {"São João", "Rui Tavares", "Saudade em Lisboa", "World", 1995, 2, 198'700},
    {"O último elétrico", "Rui Tavares", "Saudade em Lisboa", "World", 1995, 3, 312'000},
    {"Песня о дожде", "Вера Орлова", "Тихий город", "World", 1999, 1, 244'000},
    {"Тихий город", "Вера Орлова", "Тихий город", "World", 1999, 2, 271'900},
    {"Midnight Oil Lamp", "Otis Fairweather", "Live at the Café Meridian", "Blues", 1972, 1, 445'000},
    {"Lowland Freight", "Otis Fairweather", "Live at the Café Meridian", "Blues", 1972, 2, 523'000},
    {"Ain't No Compass", "Otis Fairweather", "Live at the Café Meridian", "Blues", 1972, 3, 368'100},
    {"Encore: Goodnight, Meridian", "Otis Fairweather", "Live at the Café Meridian", "Blues", 1972, 4, 3'600'000},
    {"Orbit 9", "Halcyon Drift", "Perihelion", "Ambient", 2006, 1, 723'000},
    {"Aphelion", "Halcyon Drift", "Perihelion", "Ambient", 2006, 2, 689'000},
    {"Sleep, Little Satellite", "Halcyon Drift", "Perihelion", "Ambient", 2006, 3, 3'725'000},
    {"Untitled", "", "", "", 0, 0, 65'000},
    {"Rooftop Season", "Marisol Vega", "Verano", "Latin", 2005, 1, 208'000, "Protected AAC audio file"},
    {"Ñandú", "Marisol Vega", "Verano", "Latin", 2005, 2, 222'000},
    {"Cinco de la tarde", "Marisol Vega", "Verano", "Latin", 2005, 3, 251'000},
    {"Letters to the Night Desk", "Radio Meridian", "The Night Desk", "Podcast", 2006, 12, 1'820'000},
    {"Harbour Songs: The Film", "Ana Lindqvist", "Harbour Songs", "Folk", 2003, 0, 2'904'000, "QuickTime movie file"},
};

constexpr int firstTrackId = 35;

int idOf(qsizetype index)
{
    return firstTrackId + 2 * int(index); // gaps, as a library has after deletions
}

QString persistentId(quint64 number)
{
    return QString::number(number * 0x9E3779B97F4A7C15, 16).toUpper().rightJustified(16, QLatin1Char('0'));
}

void insertText(QVariantMap &entry, const char *key, const char *text)
{
    if (*text)
        entry[QLatin1String(key)] = QString::fromUtf8(text);
}

QVariantMap trackEntry(const Track &track, int id, const QString &path)
{
    const QDateTime added = QDateTime(QDate(2004, 1, 31), QTime(12, 0), Qt::UTC).addSecs(qint64(id) * 93'784);
    QVariantMap entry{
        {QStringLiteral("Track ID"), id},
        {QStringLiteral("Kind"), QString::fromUtf8(track.kind)},
        {QStringLiteral("Size"), QFileInfo(path).size()},
        {QStringLiteral("Total Time"), track.milliseconds},
        {QStringLiteral("Date Added"), added},
        {QStringLiteral("Date Modified"), added.addDays(3)},
        {QStringLiteral("Sample Rate"), 16000},
        {QStringLiteral("Play Count"), id % 23},
        {QStringLiteral("Rating"), 20 * (id % 6)},
        {QStringLiteral("Persistent ID"), persistentId(quint64(id))},
        {QStringLiteral("Track Type"), QStringLiteral("File")},
        {QStringLiteral("Location"),
         QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded().replace("file:///", "file://localhost/"))}};
    insertText(entry, "Name", track.name);
    insertText(entry, "Artist", track.artist);
    insertText(entry, "Album", track.album);
    insertText(entry, "Genre", track.genre);
    if (track.year > 0)
        entry[QStringLiteral("Year")] = track.year;
    if (track.number > 0)
        entry[QStringLiteral("Track Number")] = track.number;
    if (QLatin1String(track.kind) == QLatin1String("Protected AAC audio file"))
        entry[QStringLiteral("Protected")] = true;
    return entry;
}

/// Folder and file name after the song; what a file system does not take becomes a dash.
QString soundPath(const QString &folder, const Track &track)
{
    const auto safe = [](const char *text, const char *otherwise) {
        QString name = QString::fromUtf8(*text ? text : otherwise);
        for (const QChar forbidden : {QLatin1Char('/'), QLatin1Char(':')})
            name.replace(forbidden, QLatin1Char('-'));
        return name;
    };
    return QStringLiteral("%1/Music/%2/%3.wav")
        .arg(folder, safe(track.artist, "Unknown Artist"), safe(track.name, "-"));
}

QVariantMap playlist(const QString &name, int id, const QList<int> &trackIds)
{
    QVariantList items;
    for (const int trackId : trackIds)
        items.append(QVariantMap{{QStringLiteral("Track ID"), trackId}});
    return {{QStringLiteral("Name"), name},
            {QStringLiteral("Playlist ID"), id},
            {QStringLiteral("Playlist Persistent ID"), persistentId(quint64(id) + 5000)},
            {QStringLiteral("All Items"), true},
            {QStringLiteral("Playlist Items"), items}};
}

QList<int> idsWhere(const std::function<bool(const Track &)> &accepts)
{
    QList<int> ids;
    for (qsizetype i = 0; i < qsizetype(std::size(tracks)); ++i) {
        if (accepts(tracks[i]))
            ids.append(idOf(i));
    }
    return ids;
}

QVariantList playlists()
{
    const auto genre = [](const char *name) {
        return [name](const Track &track) { return qstrcmp(track.genre, name) == 0; };
    };
    QVariantMap library = playlist(QStringLiteral("Library"), 3001, idsWhere([](const Track &) { return true; }));
    library[QStringLiteral("Master")] = true;
    // Songs in a person's order: one of them twice, and one that the library no longer has.
    const QList<int> night{idOf(5), idOf(8), idOf(29), idOf(22), idOf(33), idOf(5), 9999, idOf(15), idOf(28)};
    return {library,
            playlist(QStringLiteral("Podcasts"), 3002, idsWhere(genre("Podcast"))),
            playlist(QStringLiteral("Late Night Radio"), 3003, night),
            playlist(QStringLiteral("Jazz & Blues"), 3004, idsWhere(genre("Jazz")) + idsWhere(genre("Blues"))),
            playlist(QStringLiteral("Müßiggang – 日曜日"), 3005, {idOf(2), idOf(6), idOf(10), idOf(21), idOf(34)}),
            playlist(QStringLiteral("From the Sixties"), 3006, {})};
}

bool writeSound(const QString &path, quint32 seed)
{
    QFile file(path);
    const QByteArray bytes = toneFile(seed);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()
        && file.flush();
}

} // namespace

std::optional<QString> makeMusicLibrary(const QString &folder)
{
    QVariantMap entries;
    for (qsizetype i = 0; i < qsizetype(std::size(tracks)); ++i) {
        const QString path = soundPath(folder, tracks[i]);
        if (!writeSound(path, quint32(i + 1)))
            return QStringLiteral("%1 could not be written").arg(path);
        entries.insert(QString::number(idOf(i)), trackEntry(tracks[i], idOf(i), path));
    }
    const QString musicFolder =
        QString::fromLatin1(QUrl::fromLocalFile(folder + QStringLiteral("/Music/")).toEncoded());
    const QVariantMap root{{QStringLiteral("Major Version"), 1},
                           {QStringLiteral("Minor Version"), 1},
                           {QStringLiteral("Application Version"), QStringLiteral("7.0.2")},
                           {QStringLiteral("Music Folder"), musicFolder},
                           {QStringLiteral("Library Persistent ID"), persistentId(1)},
                           {QStringLiteral("Tracks"), entries},
                           {QStringLiteral("Playlists"), playlists()}};
    const auto error = platform::PropertyList::writeXmlFile(folder + QStringLiteral("/iTunes Music Library.xml"), root);
    return error ? std::optional(error->toString()) : std::nullopt;
}
