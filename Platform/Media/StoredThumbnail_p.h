#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/ImageMetadata_p.h"

#include <optional>

namespace platform {

/// A small JPEG of the picture that a camera left in a JPEG file beside the photo: its EXIF thumbnail, or else a large
/// thumbnail of a multi-picture file.
///
/// One that is no larger than the limit is used as it stands, letterbox bars and all. It is turned without a loss where
/// whole blocks allow that and no colour profile applies; nothing but the picture is passed on. What is larger or
/// cannot be turned so is decoded and made small. The photo's profile applies where the thumbnail has none of its own,
/// and so does the photo's orientation.
/// @return nothing where there is none that is whole: then the photo itself is to be used
std::optional<QByteArray> storedThumbnail(const ImageInput &input, const ImageMetadata &metadata, int maximumPixelSize);

} // namespace platform
