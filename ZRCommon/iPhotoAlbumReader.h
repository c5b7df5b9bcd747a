#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/Result.h"
#include "ZRFoundation/ZRProcessObserver.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <memory>
#include <mutex>
#include <optional>

class AlbumReaderWorkUnit;
class ZRImageThumbnail;
class ZRWorkUnit;
struct MediaDatabase;

/// Posted on the default notification centre, on the main thread, when an `iPhotoAlbumReader` has taken the result of
/// reading its database, also when that could not be read. The object is the reader.
inline const QString ZRIPhotoAlbumChangedNotification = QStringLiteral("ZRIPhotoAlbumChangedNotification");

/// Reads the photo album database "AlbumData.xml", a property list: the names of its albums, and the photos of an album
/// as records. It never writes.
///
/// The first question for albums or photos starts reading the file, once and for all, on the one worker of the process
/// server "album_reader_server", and is answered as for an empty database, as are all questions until the file is read.
/// Then "ZRIPhotoAlbumChangedNotification" is posted. A file that is missing or cannot be read leaves the database
/// empty for good: it is deliberately not tried again, and `readError` tells why. The file is not watched: a changed
/// database is seen by a new reader.
///
/// A question that cannot start the reading, since there is no application object or no thread to be had, is answered
/// as for an empty database and leaves the reader as it was: it is not reading, nothing will be posted, and the next
/// question tries again. The same holds for reading that the end of the application object cuts short.
///
/// Of the database these keys are used; other keys are passed over, and so are values of other types than these, as if
/// they were absent, unless it says otherwise:
///
///     List of Albums: array of dictionaries   the albums, in the order in which they are shown
///         AlbumName: string
///         KeyList: array of strings           keys into Master Image List, in album order; an integer stands for its
///                                             decimal text
///     Master Image List: dictionary of dictionaries   the photos
///         MediaType: string                   anything else than exactly "Image", also of another type, is no photo;
///                                             absent, it is one
///         Caption: string                     the title; a final ".JPG" (exactly so) is not shown
///         ThumbPath, ImagePath: string        the thumbnail's and the full image's file
///
/// A property list that has content, but neither albums nor photos, is no album database: it is taken for a file that
/// cannot be read.
///
/// A path at which there is nothing, and which contains "iPhoto Library", is taken to what is behind the first such
/// text in the library folder (the one that holds the database, unless it is given), so that a library that was moved
/// or copied still finds its files.
///
/// Made with std::make_shared, since the work in the background refers to it: a question to a reader that no
/// std::shared_ptr holds, and that would start the reading, fails as an internal inconsistency. When the reader dies
/// while the work is under way, the result is dropped.
///
/// Threads: `albumNames`, `isReading`, `readError` and the end of the reader belong to the main thread. Photos may be
/// listed on any thread, but by one thread at a time: the records made so far are kept without a lock.
class iPhotoAlbumReader : public ZRProcessObserver, public std::enable_shared_from_this<iPhotoAlbumReader>
{
public:
    /// Records of photos, shared with the reader, which keeps each for its own life.
    using ThumbnailList = QList<std::shared_ptr<ZRImageThumbnail>>;

    /// A new reader of the user's own database: "AlbumData.xml" in the folder "iPhoto Library" in the folder "Pictures"
    /// of the home folder.
    static std::shared_ptr<iPhotoAlbumReader> iPhotoDefaultAlbumReader();

    /// Keeps the path; nothing is read yet.
    /// @param albumDataPath the database file if it ends in "AlbumData.xml" (exactly so), otherwise the library folder
    ///        that holds the file of that name
    explicit iPhotoAlbumReader(const QString &albumDataPath);
    /// Keeps the paths of a database file of any name and of the library folder that it describes, which moved paths
    /// are taken to. Nothing is read yet.
    iPhotoAlbumReader(const QString &databasePath, const QString &libraryFolder);
    ~iPhotoAlbumReader() override;

    /// The database file.
    const QString &albumPath() const { return m_album_path; }

    /// The names of the albums, in file order. An album without a name is left out.
    QStringList albumNames();
    /// The photos of the first album of exactly this name, in album order; none when there is no such album. A photo
    /// that is listed twice comes twice, and a photo gives the same record whatever album it is listed in.
    ///
    /// A key that the database has no photo for gives a record without title and paths. In a search it is an error of
    /// whoever wrote the database, raised as `platform::InternalInconsistency`.
    /// @param searchString keeps the photos whose caption, as it stands in the database, contains it without regard to
    ///        case (canonical composition, then simple case folding); all when empty
    /// @param cancelFlag polled before each key; as soon as it is set the photos gathered so far are returned, which
    ///        the caller should throw away. May be null
    ThumbnailList imageThumbnailsInAlbum(const QString &albumName, const QString &searchString = {},
                                         const ZRWorkUnit *cancelFlag = nullptr);

    /// Whether the file is being read: true from the question that starts it until just before the notification.
    bool isReading() const;
    /// Why the database is empty, when it could not be read.
    std::optional<platform::Error> readError() const;

protected:
    /// The search rule for one photo. Fails for a null photo.
    /// @param foldedString the text to be found, folded (`platform::TextFolding`); empty matches everything
    bool photoDictMatchesString(const platform::PropertyListView &photoDict, const QByteArray &foldedString) const;

private:
    friend class AlbumReaderWorkUnit;

    std::shared_ptr<const MediaDatabase> albumDataDictionary();
    void workUnitDidLoadDictionary(AlbumReaderWorkUnit *workUnit);
    void processServerDidEnd(ZRProcessServer &server) override;
    std::shared_ptr<ZRImageThumbnail> thumbnailForPhoto(const platform::PropertyListView &photoDict) const;
    QString existingPath(const QString &path) const;

    QString m_album_path;
    QString m_album_path_minus_xml_filename;
    std::shared_ptr<const MediaDatabase> m_album_data_dict; // null until first needed, then empty until it is read
    QHash<QByteArray, std::shared_ptr<ZRImageThumbnail>> m_image_thumbnails_by_key; // of the listing thread
    std::shared_ptr<AlbumReaderWorkUnit> m_album_reader_work_unit; // while it is under way
    bool m_is_reading = false;
    // Guards the dictionary, the work unit and whether it is reading, for the listing thread beside the main thread.
    mutable std::mutex m_mutex;
};
