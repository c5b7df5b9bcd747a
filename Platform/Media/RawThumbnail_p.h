#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/ImageInput_p.h"

#include <QByteArray>

namespace platform {

/// A small JPEG of the preview that a camera left in its raw file, turned as the camera was held. The sensor's pixels
/// are not developed.
/// Errors: `Malformed`, also for files without a preview; `TooLarge`; `UnknownFormat` for cameras that LibRaw does not
/// know.
Result<QByteArray> rawThumbnail(const ImageInput &input, int maximumPixelSize);

} // namespace platform
