#pragma once

#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace platform {

class ImageInput;

/// Makes small pictures of image files, by the cheapest way that is good enough: a picture that the camera left in
/// the file, a decoder that reads no more than the small picture needs, or a whole decoding.
///
/// A thumbnail that is stored in a JPEG file (that of EXIF, else a large one of a multi-picture file) or in a HEIF file
/// is used whenever there is a whole one, also when it is smaller than what is asked for, and as it stands: it may have
/// bars around the picture. Of camera raw files only the preview is read.
///
/// Formats are told by what the bytes say, never by the name. Every input is taken for hostile: a picture that would
/// decode to more than the limits below is refused by its header, and what is damaged is refused or read as far as it
/// goes. A decoder for HEIC and AVIF is loaded from "zrcommon/ZRHeifPlugin" beside the library when it is first needed;
/// formats that Qt's plug-ins read are as many as are installed. So that these decode photos of today, the library
/// raises QImageReader::allocationLimit() from Qt's 128 MB to 512 MB when it is loaded; a host's own limit is kept.
///
/// Files that are damaged write nothing of level warning or above to the log. Two of the libraries below may write a
/// line to the standard error stream (libpng, libtiff).
///
/// Thread safety: sources are independent of each other; one source belongs to one thread at a time.
class ImageSource
{
public:
    /// Pictures of more pixels than this are refused by their header, before memory is taken for them. Formats that can
    /// only be decoded whole, which is all but JPEG, have a limit of 128 megapixels (2^27), 512 MB and 65,535
    /// pixels a side.
    static constexpr qint64 maximumPixels = 400 * 1000 * 1000;

    ImageSource(ImageSource &&other) noexcept;
    ImageSource &operator=(ImageSource &&other) noexcept;
    ~ImageSource();

    /// Opens a file and looks at how it begins. Only regular files are opened, and opening never blocks. Errors:
    /// `NotFound`, `NotReadable`, `NotARegularFile`, `UnknownFormat` for what begins like no picture.
    static Result<ImageSource> open(const QString &path);
    /// The same for a picture that is in memory.
    static Result<ImageSource> fromBytes(const QByteArray &bytes);

    /// The picture (the first, where the file holds several) as a JPEG: upright, in sRGB, on white where it is
    /// transparent, without any metadata, its longer side at most so many pixels and never more than it has itself.
    /// Costs, for JPEG files, some tenths of a millisecond with a stored thumbnail, else about one millisecond for each
    /// megapixel, and memory for a part of the picture. Other formats take memory for the file and the decoded picture.
    /// Errors, with the path, and the offset where a place is to blame: `Malformed`, `TooLarge`, `UnknownFormat` where
    /// the decoder for a format is not installed.
    Result<QByteArray> jpegThumbnail(int maximumPixelSize) const;

private:
    struct Content;
    explicit ImageSource(std::unique_ptr<Content> content);
    static Result<ImageSource> recognized(QString path, QByteArray bytes, ImageInput input);

    std::unique_ptr<Content> m_content;
};

} // namespace platform
