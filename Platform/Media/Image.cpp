#include "Platform/Media/Image.h"

#include "Platform/Media/ImageInput_p.h"
#include "Platform/Media/ImageReading_p.h"

#include <cmath>

namespace platform {

namespace {

constexpr double metresPerInch = 0.0254;
constexpr double pointsPerInch = 72;

// A bitmap and the resolution that its file states.
struct Page {
    QImage bitmap;
    QSizeF size; // in points
};

// Pixels per inch. Decoders hand resolutions on as whole pixels per metre; a whole number per inch is what
// was meant.
double pixelsPerInch(int dotsPerMeter)
{
    const double exact = dotsPerMeter * metresPerInch;
    const double whole = std::round(exact);
    return std::abs(exact - whole) <= metresPerInch ? whole : exact;
}

double points(int pixels, int dotsPerMeter)
{
    return dotsPerMeter > 1 ? pixels * pointsPerInch / pixelsPerInch(dotsPerMeter) : pixels;
}

// Decodes the page that the reader stands at; a null bitmap when that fails.
//
// A QImage is born with the screen's resolution, so that a file that states none and one that states just
// that look alike. The decoder is therefore handed an image of the right form that bears an impossible
// resolution: where it decodes into that image, what is still there afterwards was not stated.
Page readPage(QImageReader &reader)
{
    constexpr int unstated = 1;
    QImage image;
    if (reader.size().isValid() && reader.imageFormat() != QImage::Format_Invalid) {
        image = QImage(reader.size(), reader.imageFormat());
        image.setDotsPerMeterX(unstated);
        image.setDotsPerMeterY(unstated);
    }
    const uchar *prepared = image.constBits();
    const int ofTheScreen = QImage(1, 1, QImage::Format_RGB32).dotsPerMeterX();
    const QImageIOHandler::Transformations transformation = reader.transformation();
    if (!reader.read(&image))
        return {};
    const bool ownImage = image.constBits() != prepared;
    const auto stated = [&](int dots) { return ownImage && dots == ofTheScreen ? unstated : dots; };
    QSizeF size(points(image.width(), stated(image.dotsPerMeterX())),
                points(image.height(), stated(image.dotsPerMeterY())));
    // QImageReader's own turning would lose what has been looked at here.
    if (transformation != QImageIOHandler::TransformationNone)
        image = upright(image, transformation);
    if (transformation.testFlag(QImageIOHandler::TransformationRotate90))
        size.transpose();
    return {image, size};
}

QByteArray bytesOf(const QString &path)
{
    Result<RegularFile> opened = RegularFile::open(path);
    if (!opened || opened.value().size() > Image::maximumFileSize)
        return {};
    const ImageInput input(std::move(opened).value());
    return input.read(0, input.size());
}

} // namespace

Image::Image(const QImage &bitmap)
    : m_size(bitmap.size())
{
    addRepresentation(ImageRepresentation(bitmap));
}

std::shared_ptr<Image> Image::contentsOfFile(const QString &path)
{
    // From memory, since decoders may map a file and die when it shrinks.
    QByteArray bytes = bytesOf(path);
    QuietBuffer buffer(&bytes);
    if (bytes.isEmpty() || !buffer.open(QIODevice::ReadOnly))
        return nullptr;
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    const int pages = reader.supportsAnimation() ? 1 : std::clamp(reader.imageCount(), 1, maximumPages);

    auto result = std::make_shared<Image>();
    qint64 pixels = 0;
    for (int index = 0; index < pages; ++index) {
        if (index > 0 && !reader.jumpToNextImage())
            break;
        if (!isWithinLimits(decodedSize(reader, bytes), reader.imageFormat(), pixels, maximumPixels))
            break;
        const Page page = readPage(reader);
        if (page.bitmap.isNull())
            break;
        if (index == 0)
            result->setSize(page.size);
        result->addRepresentation(ImageRepresentation(page.bitmap));
        pixels += pixelsOf(page.bitmap.size());
    }
    return result->representations().empty() ? nullptr : result;
}

void Image::addRepresentation(const ImageRepresentation &representation)
{
    m_representations.push_back(representation);
}

} // namespace platform
