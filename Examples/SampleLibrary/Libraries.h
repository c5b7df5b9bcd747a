#pragma once

#include <QString>

#include <optional>

/// Makes the photo library: originals, thumbnails and "AlbumData.xml" in the folder. The database holds the
/// paths of another user's home folder, as one that was copied does. Overwrites what is there.
/// @return what went wrong, nothing when all is written.
std::optional<QString> makePhotoLibrary(const QString &folder);

/// Makes the music library: short sound files and "iTunes Music Library.xml" in the folder. Overwrites what
/// is there.
std::optional<QString> makeMusicLibrary(const QString &folder);
