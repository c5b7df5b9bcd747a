#include "Platform/Media/ImageSource.h"

#include "Platform/Media/HeifThumbnail_p.h"
#include "Platform/Media/ImageFormat_p.h"
#include "Platform/Media/ImageMetadata_p.h"
#include "Platform/Media/JpegThumbnail_p.h"
#include "Platform/Media/RawThumbnail_p.h"
#include "Platform/Media/ReaderThumbnail_p.h"
#include "Platform/Media/StoredThumbnail_p.h"

#include <algorithm>

namespace platform {

namespace {

Result<QByteArray> thumbnailOfJpeg(const ImageInput &input, int maximumPixelSize)
{
    const ImageMetadata metadata = jpegMetadata(input);
    if (auto stored = storedThumbnail(input, metadata, maximumPixelSize))
        return *stored;
    return jpegThumbnail(input, maximumPixelSize, metadata.orientation);
}

Result<QByteArray> thumbnailOf(const ImageInput &input, ImageFormat format, int maximumPixelSize)
{
    switch (format) {
    case ImageFormat::Jpeg:
        return thumbnailOfJpeg(input, maximumPixelSize);
    case ImageFormat::Heif:
        return heifThumbnail(input, maximumPixelSize);
    case ImageFormat::CameraRaw:
        return rawThumbnail(input, maximumPixelSize);
    case ImageFormat::Tiff:
        if (isRawTiff(input))
            return rawThumbnail(input, maximumPixelSize);
        return readerThumbnail(input, format, maximumPixelSize);
    default:
        return readerThumbnail(input, format, maximumPixelSize);
    }
}

} // namespace

struct ImageSource::Content {
    QString path; // empty for bytes
    QByteArray bytes; // what the input borrows, if it does
    ImageInput input;
    ImageFormat format;
};

ImageSource::ImageSource(std::unique_ptr<Content> content)
    : m_content(std::move(content))
{ }

ImageSource::ImageSource(ImageSource &&other) noexcept = default;
ImageSource &ImageSource::operator=(ImageSource &&other) noexcept = default;
ImageSource::~ImageSource() = default;

Result<ImageSource> ImageSource::recognized(QString path, QByteArray bytes, ImageInput input)
{
    char begin[formatBlockSize];
    const qint64 length = input.read(0, begin, std::min<qint64>(sizeof begin, input.size()));
    const ImageFormat format = imageFormatOf(QByteArrayView(begin, length), input.size());
    if (format == ImageFormat::Unknown) {
        const QString reason =
            input.size() == 0 ? QStringLiteral("the file is empty") : QStringLiteral("it begins like no picture");
        return Error{ErrorCode::UnknownFormat, reason, -1, std::move(path)};
    }
    return ImageSource(
        std::unique_ptr<Content>(new Content{std::move(path), std::move(bytes), std::move(input), format}));
}

Result<ImageSource> ImageSource::open(const QString &path)
{
    Result<RegularFile> file = RegularFile::open(path);
    if (!file) {
        Error error = file.error();
        error.path = path;
        return error;
    }
    return recognized(path, {}, ImageInput(std::move(file).value()));
}

Result<ImageSource> ImageSource::fromBytes(const QByteArray &bytes)
{
    return recognized({}, bytes, ImageInput(QByteArrayView(bytes)));
}

Result<QByteArray> ImageSource::jpegThumbnail(int maximumPixelSize) const
{
    Result<QByteArray> jpeg = thumbnailOf(m_content->input, m_content->format, std::max(maximumPixelSize, 1));
    if (jpeg)
        return jpeg;
    Error error = jpeg.error();
    error.path = m_content->path;
    return error;
}

} // namespace platform
