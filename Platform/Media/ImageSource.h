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
/// Formats are told by what the bytes say, never by the name. Every input is taken for hostile: a picture that would
/// decode to more than the limits below is refused by its header, and what is damaged is refused or read as far as it
/// goes.
///
/// Thread safety: sources are independent of each other; one source belongs to one thread at a time.
class ImageSource
{
public:
    /// Pictures of more pixels than this are refused by their header, before memory is taken for them.
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
    /// Errors: `Malformed`, `TooLarge`, `UnknownFormat` where the decoder for a format is not installed.
    Result<QByteArray> jpegThumbnail(int maximumPixelSize) const;

private:
    struct Content;
    explicit ImageSource(std::unique_ptr<Content> content);
    static Result<ImageSource> recognized(QString path, QByteArray bytes, ImageInput input);

    std::unique_ptr<Content> m_content;
};

} // namespace platform
