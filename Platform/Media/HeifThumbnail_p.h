#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/ImageInput_p.h"

#include <QByteArray>

namespace platform {

/// A small JPEG of a HEIC or AVIF picture: of the thumbnail that the file holds, or else of the picture. Both carry
/// their own rotation, so that what EXIF says of it does not apply.
///
/// Decoded by a plug-in, "zrcommon/ZRHeifPlugin" beside this library, which is looked for once.
/// Errors: `Malformed`, `TooLarge`, `UnknownFormat` without the plug-in, the library that it needs, or a decoder for
/// what is in the file.
Result<QByteArray> heifThumbnail(const ImageInput &input, int maximumPixelSize);

} // namespace platform
