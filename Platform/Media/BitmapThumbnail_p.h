#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QImage>

namespace platform {

/// A small JPEG of decoded pixels: laid on white where they are transparent, reduced, turned upright and converted to
/// sRGB, in this order. Pictures no larger than the limit keep their size.
/// Takes, beside the picture, memory for one byte per pixel, and for a copy of pictures of unusual pixel formats.
/// @param orientation as in EXIF, 1 to 8
/// @param profile of the colours (ICC); empty where the image's own colour space is to count
/// Errors: `TooLarge` when there is no memory.
Result<QByteArray> bitmapThumbnail(QImage image, int maximumPixelSize, int orientation, QByteArrayView profile);

} // namespace platform
