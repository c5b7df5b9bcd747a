#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/ImageInput_p.h"
#include "Platform/Media/Plane_p.h"

#include <QByteArray>

namespace platform {

/// A decoded JPEG, reduced by a factor that costs little, as planes of one size.
struct ScaledJpeg {
    /// Grey; red, green and blue; or cyan, magenta, yellow and black, 255 for no ink.
    std::vector<Plane> planes;
    QSize fullSize; ///< Of the picture in the file.
    /// How much of the planes is the picture.
    QSizeF extent;
};

/// Decodes any JPEG that libjpeg-turbo can, at the smallest of its scales (eighths of the full size) that makes the
/// longer side at least so long. Reads the file as a whole. What is cut off is grey.
/// Errors: as `jpegThumbnail`.
Result<ScaledJpeg> decodeScaledJpeg(const ImageInput &input, int minimumPixelSize);

} // namespace platform
