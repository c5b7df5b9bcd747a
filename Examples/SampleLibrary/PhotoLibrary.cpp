#include "Libraries.h"
#include "PhotoFile.h"
#include "Pictures.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>

#include <optional>

namespace {

/// Where the library stood when its database was written.
const QString formerFolder = QStringLiteral("/Users/marlene/Pictures/iPhoto Library");

struct Roll {
    QString folder; // below "Originals"
    QList<Picture> pictures;
    QDateTime first;
};

QByteArray encoded(const QImage &image, const QByteArray &format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (format == "tif")
        writer.setCompression(1); // LZW
    return writer.write(image) ? bytes : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return !bytes.isEmpty() && QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size() && file.flush();
}

QByteArray originalBytes(const Picture &picture, const QImage &upright, const QDateTime &takenAt)
{
    const QByteArray format = QFileInfo(picture.fileName).suffix().toLower().toLatin1();
    const QImage stored = turnedForOrientation(upright, picture.orientation);
    const QByteArray bytes = encoded(stored, format, format == "png" ? -1 : 88);
    if (format != "jpg" || bytes.isEmpty())
        return bytes;
    return withExif(bytes, picture.orientation, takenAt.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1());
}

QVariantMap photoEntry(const Picture &picture, int roll, const QString &imagePath, const QString &thumbPath,
                       const QDateTime &takenAt)
{
    const QDateTime epoch(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return {{QStringLiteral("MediaType"), QStringLiteral("Image")},
            {QStringLiteral("Caption"), picture.caption},
            {QStringLiteral("Comment"), QString()},
            {QStringLiteral("Aspect Ratio"), double(picture.size.width()) / picture.size.height()},
            {QStringLiteral("Rating"), 0},
            {QStringLiteral("Roll"), roll},
            {QStringLiteral("DateAsTimerInterval"), double(epoch.secsTo(takenAt))},
            {QStringLiteral("ImagePath"), imagePath},
            {QStringLiteral("ThumbPath"), thumbPath}};
}

/// Collects the database while the files are written.
class PhotoLibraryMaker
{
public:
    explicit PhotoLibraryMaker(const QString &folder)
        : m_folder(folder)
    { }

    std::optional<QString> addRoll(const Roll &roll)
    {
        ++m_roll;
        QDateTime takenAt = roll.first;
        for (const Picture &picture : roll.pictures) {
            const QString original = QStringLiteral("Originals/") + roll.folder + QLatin1Char('/') + picture.fileName;
            const QString thumb = QStringLiteral("Thumbs/%1.jpg").arg(nextKey());
            const QImage upright = drawPicture(picture);
            const QImage small = upright.scaled(240, 240, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            if (!writeFile(inLibrary(original), originalBytes(picture, upright, takenAt)))
                return QStringLiteral("%1 could not be written").arg(inLibrary(original));
            if (!writeFile(inLibrary(thumb), encoded(small, "jpg", 80)))
                return QStringLiteral("%1 could not be written").arg(inLibrary(thumb));
            addEntry(photoEntry(picture, m_roll, formerPath(original), formerPath(thumb), takenAt));
            takenAt = takenAt.addSecs(60 * 47);
        }
        return {};
    }

    /// A film in between: its entry is in the albums' key lists, but it is no photo.
    void addMovie(const QString &caption)
    {
        QVariantMap entry =
            photoEntry({caption, {}, {640, 480}, {}}, m_roll, formerPath(QStringLiteral("Originals/2006/MVI_0160.AVI")),
                       formerPath(QStringLiteral("Thumbs/%1.jpg").arg(nextKey())),
                       QDateTime(QDate(2006, 7, 16), QTime(15, 2), Qt::UTC));
        entry[QStringLiteral("MediaType")] = QStringLiteral("Movie");
        addEntry(entry);
    }

    void addAlbum(const QString &name, const QStringList &keys, bool isWholeLibrary = false)
    {
        QVariantMap album{{QStringLiteral("AlbumId"), 900 + m_albums.size()},
                          {QStringLiteral("AlbumName"), name},
                          {QStringLiteral("Album Type"), QStringLiteral("Regular")},
                          {QStringLiteral("KeyList"), keys},
                          {QStringLiteral("PhotoCount"), keys.size()}};
        if (isWholeLibrary)
            album[QStringLiteral("Master")] = true;
        m_albums.append(album);
    }

    /// The keys of the entries whose number (from 0) lies in the range.
    QStringList keys(qsizetype first, qsizetype end) const { return m_keys.sliced(first, end - first); }
    QStringList keys() const { return m_keys; }

    QString keyOf(const QString &caption) const
    {
        for (const QString &key : m_keys) {
            if (m_images[key].toMap().value(QStringLiteral("Caption")) == caption)
                return key;
        }
        return {};
    }

    /// Old databases hold entries that do not say what they are; they count as photos.
    void dropMediaType(const QString &key)
    {
        QVariantMap entry = m_images[key].toMap();
        entry.remove(QStringLiteral("MediaType"));
        m_images[key] = entry;
    }

    std::optional<QString> writeDatabase() const
    {
        const QVariantMap root{{QStringLiteral("Application Version"), QStringLiteral("6.0.5 (316)")},
                               {QStringLiteral("Archive Path"), formerFolder},
                               {QStringLiteral("Major Version"), 2},
                               {QStringLiteral("Minor Version"), 0},
                               {QStringLiteral("List of Albums"), m_albums},
                               {QStringLiteral("Master Image List"), m_images}};
        const auto error = platform::PropertyList::writeXmlFile(inLibrary(QStringLiteral("AlbumData.xml")), root);
        return error ? std::optional(error->toString()) : std::nullopt;
    }

private:
    QString inLibrary(const QString &path) const { return m_folder + QLatin1Char('/') + path; }
    QString formerPath(const QString &path) const { return formerFolder + QLatin1Char('/') + path; }
    QString nextKey() const { return QString::number(301 + m_keys.size()); }
    void addEntry(const QVariantMap &entry)
    {
        const QString key = nextKey();
        m_images.insert(key, entry);
        m_keys.append(key);
    }

    QString m_folder;
    QVariantList m_albums;
    QVariantMap m_images;
    QStringList m_keys;
    int m_roll = 0;
};

} // namespace

std::optional<QString> makePhotoLibrary(const QString &folder)
{
    PhotoLibraryMaker maker(folder);
    const Roll rolls[] = {
        {QStringLiteral("2006/Summer"), landscapes(), QDateTime(QDate(2006, 7, 15), QTime(5, 12), Qt::UTC)},
        {QStringLiteral("2006/Kitchen Table"), stillLifes(), QDateTime(QDate(2006, 10, 3), QTime(9, 30), Qt::UTC)},
        {QStringLiteral("2007/Posters"), posters(), QDateTime(QDate(2007, 2, 20), QTime(18, 0), Qt::UTC)},
    };
    QList<qsizetype> ends;
    for (const Roll &roll : rolls) {
        if (const auto failure = maker.addRoll(roll))
            return failure;
        if (ends.isEmpty())
            maker.addMovie(QStringLiteral("Waves, filmed"));
        ends.append(maker.keys().size());
    }
    maker.dropMediaType(maker.keyOf(QStringLiteral("New snow")));
    maker.addAlbum(QStringLiteral("Library"), maker.keys(), true);
    maker.addAlbum(QStringLiteral("Coast and Mountains"), maker.keys(0, ends[0]));
    maker.addAlbum(QStringLiteral("Kitchen Table"), maker.keys(ends[0], ends[1]));
    maker.addAlbum(QStringLiteral("Plakate – Posters"), maker.keys(ends[1], ends[2]));
    maker.addAlbum(QStringLiteral("Best of the Year"),
                   {maker.keyOf(QStringLiteral("Heading home")), maker.keyOf(QStringLiteral("Three pears")),
                    maker.keyOf(QStringLiteral("Beach.JPG")), maker.keyOf(QStringLiteral("Klang – Neue Musik"))});
    return maker.writeDatabase();
}
