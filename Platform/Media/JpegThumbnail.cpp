#include "Platform/Media/JpegThumbnail_p.h"

#include "Platform/Media/ColorProfile_p.h"
#include "Platform/Media/JpegDcDecoder_p.h"
#include "Platform/Media/JpegPlanes_p.h"
#include "Platform/Media/JpegScaledDecoder_p.h"
#include "Platform/Media/JpegSegments_p.h"
#include "Platform/Media/JpegWriter.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace platform {
namespace {

/// What decides how a file is decoded, and comes before its first scan.
struct Head {
    QSize size;
    int components = 0;
    bool isTakenByDcDecoder = false;
    QByteArray profile;
};

/// Whether three components are what a JPEG usually holds: luma and differences of colour. Judged as libjpeg does.
bool isLumaAndDifferences(const std::optional<int> &adobeTransform, bool hasJfif, QByteArrayView identifiers)
{
    if (hasJfif)
        return true;
    if (adobeTransform)
        return *adobeTransform == 1;
    return identifiers != "RGB";
}

Head headOf(const ImageInput &input)
{
    constexpr qsizetype maximumProfileParts = 255;
    Head head;
    std::map<int, QByteArray> profileParts; // by number
    std::optional<int> adobeTransform;
    bool hasJfif = false;
    QByteArray identifiers;
    uchar frame = 0;
    JpegSegments segments(input);
    for (auto segment = segments.next(); segment && segment->marker != StartOfScan; segment = segments.next()) {
        const auto begins = [&](const QByteArray &content, const char *name) {
            return content.startsWith(QByteArrayView(name, qsizetype(qstrlen(name)) + 1));
        };
        if (segment->marker == FirstApplicationData) {
            hasJfif = hasJfif || begins(segments.content(*segment), "JFIF");
        } else if (segment->marker == ColorProfileData && qsizetype(profileParts.size()) < maximumProfileParts) {
            // ICC.1, B.4: each part bears its number.
            constexpr qsizetype headLength = 14;
            const QByteArray content = segments.content(*segment);
            if (content.size() > headLength && begins(content, "ICC_PROFILE"))
                profileParts.try_emplace(uchar(content[12]), content.sliced(headLength));
        } else if (segment->marker == AdobeData) {
            const QByteArray content = segments.content(*segment);
            if (content.size() >= 12 && content.startsWith("Adobe"))
                adobeTransform = uchar(content[11]);
        } else if (segment->startsFrame() && head.components == 0) {
            const QByteArray content = segments.content(*segment);
            if (content.size() < 6)
                continue;
            const auto word = [&](qsizetype at) { return uchar(content[at]) << 8 | uchar(content[at + 1]); };
            frame = segment->marker;
            head.size = QSize(word(3), word(1));
            head.components = uchar(content[5]);
            for (qsizetype place = 6; place < content.size(); place += 3)
                identifiers.append(content[place]);
        }
    }
    for (const auto &[number, part] : profileParts)
        head.profile += part;
    head.isTakenByDcDecoder = frame != 0 && frame <= StartOfProgressiveFrame
        && (head.components == 1
            || (head.components == 3 && isLumaAndDifferences(adobeTransform, hasJfif, identifiers)));
    return head;
}

QImage imageOf(const std::vector<Plane> &planes, int bytesPerPixel, QImage::Format format)
{
    QImage image(planes[0].width, planes[0].height, format);
    for (int y = 0; y < image.height() && !image.isNull(); ++y) {
        uchar *const row = image.scanLine(y);
        for (int channel = 0; channel < bytesPerPixel; ++channel) {
            const uchar *from = planes[size_t(channel)].row(y);
            for (int x = 0; x < image.width(); ++x)
                row[x * bytesPerPixel + channel] = from[x];
        }
    }
    return image;
}

/// The colours of luma and differences (ITU-T T.871, 7).
QImage colored(const std::vector<Plane> &planes)
{
    QImage image(planes[0].width, planes[0].height, QImage::Format_RGB888);
    for (int y = 0; y < image.height() && !image.isNull(); ++y) {
        uchar *row = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, row += 3) {
            const double luma = planes[0].row(y)[x];
            const double blue = planes[1].row(y)[x] - 128.0, red = planes[2].row(y)[x] - 128.0;
            const double colours[] = {luma + 1.402 * red, luma - 0.344136 * blue - 0.714136 * red, luma + 1.772 * blue};
            for (int i = 0; i < 3; ++i)
                row[i] = uchar(std::clamp(std::lround(colours[i]), 0L, 255L));
        }
    }
    return image;
}

QByteArray encodedInSrgb(QImage image, const QByteArray &profile)
{
    ColorProfile::convertToSrgb(image, profile);
    return JpegWriter::encoded(image);
}

Result<QByteArray> encodedOrError(QByteArray jpeg)
{
    if (jpeg.isEmpty())
        return Error{ErrorCode::Malformed, QStringLiteral("the thumbnail cannot be encoded"), -1, {}};
    return jpeg;
}

QByteArray thumbnailOf(const JpegEighth &picture, const QSize &size, int orientation, const QByteArray &profile)
{
    const auto plane = [&](size_t component, const QSize &planeSize) {
        const JpegEighth::Component &each = picture.components[component];
        return resampled(each.plane, each.extent, planeSize, orientation);
    };
    const bool isGrey = picture.components.size() == 1;
    if (!profile.isEmpty()) {
        if (isGrey)
            return encodedInSrgb(imageOf({plane(0, size)}, 1, QImage::Format_Grayscale8), profile);
        return encodedInSrgb(colored({plane(0, size), plane(1, size), plane(2, size)}), profile);
    }
    JpegPlanes planes;
    planes.luma = plane(0, size);
    if (!isGrey) {
        const QSize half((size.width() + 1) / 2, (size.height() + 1) / 2);
        planes.blue = plane(1, half);
        planes.red = plane(2, half);
    }
    return JpegWriter::encoded(planes);
}

QByteArray thumbnailOf(const ScaledJpeg &picture, const QSize &size, int orientation, const QByteArray &profile)
{
    std::vector<Plane> planes;
    for (const Plane &plane : picture.planes)
        planes.push_back(resampled(plane, picture.extent, size, orientation));
    switch (planes.size()) {
    case 1:
        return encodedInSrgb(imageOf(planes, 1, QImage::Format_Grayscale8), profile);
    case 3:
        return encodedInSrgb(imageOf(planes, 3, QImage::Format_RGB888), profile);
    default:
        return JpegWriter::encoded(ColorProfile::fromInks(imageOf(planes, 4, QImage::Format_RGB32), profile));
    }
}

} // namespace

QSize thumbnailSize(const QSize &size, int maximumPixelSize)
{
    const int longer = std::max(size.width(), size.height());
    if (longer <= maximumPixelSize)
        return size;
    const auto reduced = [&](int side) {
        return std::max(1, int((2 * qint64(side) * maximumPixelSize + longer) / (2 * qint64(longer))));
    };
    return {reduced(size.width()), reduced(size.height())};
}

Result<QByteArray> jpegThumbnail(const ImageInput &input, int maximumPixelSize, int orientation)
{
    const Head head = headOf(input);
    const int longer = std::max(head.size.width(), head.size.height());
    if (head.isTakenByDcDecoder && longer / 8 >= maximumPixelSize) {
        const Result<JpegEighth> picture = JpegDcDecoder(input).decode();
        if (picture)
            return encodedOrError(thumbnailOf(picture.value(), thumbnailSize(picture.value().size, maximumPixelSize),
                                              orientation, head.profile));
        if (picture.error().code == ErrorCode::TooLarge)
            return picture.error();
    }
    const Result<ScaledJpeg> picture = decodeScaledJpeg(input, maximumPixelSize + maximumPixelSize / 2);
    if (!picture)
        return picture.error();
    return encodedOrError(thumbnailOf(picture.value(), thumbnailSize(picture.value().fullSize, maximumPixelSize),
                                      orientation, head.profile));
}

} // namespace platform
