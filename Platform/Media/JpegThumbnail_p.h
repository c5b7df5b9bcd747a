#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/ImageInput_p.h"

#include <QSize>

namespace platform {

/// Size of a picture whose longer side is to have at most so many pixels, and never more than it has: the other side in
/// proportion, rounded, at least 1.
QSize thumbnailSize(const QSize &size, int maximumPixelSize);

/// A small JPEG of a JPEG file, in sRGB and without metadata.
///
/// Where the picture is at least eight times as large as what is wanted, only the mean of each block is decoded (see
/// `JpegDcDecoder`), reading no more of the file than that takes. Otherwise, and for kinds of JPEG files that are rare,
/// libjpeg-turbo decodes at the next of its scales above one and a half times of what is wanted.
///
/// @param orientation how the picture is to be turned, from 1 to 8 as in EXIF
///
/// Errors: `Malformed`, `UnknownFormat` (12 bits, lossless), `TooLarge` (`ImageSource::maximumPixels`; a quarter of
/// that for progressive files that are not taken by the first way, since all of their coefficients are kept in memory).
Result<QByteArray> jpegThumbnail(const ImageInput &input, int maximumPixelSize, int orientation = 1);

} // namespace platform
