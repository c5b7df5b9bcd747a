#include "Platform/Media/ImageSource.h"

#include "Platform/Media/ImageInput_p.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>

namespace platform {

struct ImageSource::Content {
    QString path;
    ImageInput input;
};

ImageSource::ImageSource(std::unique_ptr<Content> content)
    : m_content(std::move(content))
{ }

ImageSource::ImageSource(ImageSource &&other) noexcept = default;
ImageSource &ImageSource::operator=(ImageSource &&other) noexcept = default;
ImageSource::~ImageSource() = default;

Result<ImageSource> ImageSource::open(const QString &path)
{
    Result<RegularFile> file = RegularFile::open(path);
    if (!file) {
        Error error = file.error();
        error.path = path;
        return error;
    }
    return ImageSource(std::unique_ptr<Content>(new Content{path, ImageInput(std::move(file).value())}));
}

Result<QByteArray> ImageSource::jpegThumbnail(int maximumPixelSize) const
{
    QByteArray bytes = m_content->input.read(0, m_content->input.size());
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.isNull())
        return Error{ErrorCode::Malformed, QStringLiteral("the picture cannot be decoded"), -1, m_content->path};
    if (std::max(image.width(), image.height()) > maximumPixelSize)
        image = image.scaled(maximumPixelSize, maximumPixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QByteArray jpeg;
    QBuffer target(&jpeg);
    target.open(QIODevice::WriteOnly);
    image.save(&target, "jpg", 75);
    return jpeg;
}

} // namespace platform
