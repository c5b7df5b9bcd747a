#pragma once

#include <QByteArray>
#include <QImage>

/// The image, turned so that a reader that follows the EXIF orientation (1 to 8) shows it upright again.
QImage turnedForOrientation(const QImage &image, int orientation);

/// A JPEG with an EXIF segment that holds the orientation and the time "2006:07:15 10:30:00" it was taken at.
/// The layout is that of EXIF 2.3: an APP1 segment right after the start of the image, in it a TIFF header
/// and one directory.
QByteArray withExif(const QByteArray &jpeg, int orientation, const QByteArray &takenAt);
