#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/TiffDirectory_p.h"

#include <QByteArray>

namespace platform {

/// What a file says about its picture beside the picture. All of it is hearsay: places lie within the file, but what
/// stands there may be anything.
struct ImageMetadata {
    /// How the picture is to be turned, 1 to 8 as in EXIF.
    int orientation = 1;
    /// The thumbnail (EXIF 2.3, JEITA CP-3451C, 4.5.5); empty where there is none.
    ByteRange thumbnail;
    /// The smallest of the large thumbnails that a multi-picture file holds (CIPA DC-007, 5.2.3); empty where there is
    /// none.
    ByteRange preview;
    /// Where parts of a colour profile stand, in the order of the file.
    std::vector<ByteRange> profile;
};

/// Of a JPEG file. Reads one block of 80 KB, which holds all that cameras write in front of the picture; more only
/// where the block ends before the picture begins.
ImageMetadata jpegMetadata(const ImageInput &input);

/// Orientation, and the colour profile as one part, of a WebP file (RFC 9649, 2.7.1).
ImageMetadata webpMetadata(const ImageInput &input);

/// The same of the first picture of a TIFF file.
ImageMetadata tiffMetadata(const ImageInput &input);

/// Of an EXIF structure by itself, as PNG files hold it.
int exifOrientation(const ImageInput &exif);

/// Whether a TIFF file is the raw picture of a camera: the tags of DNG, or a directory whose pixels are those of a
/// sensor or packed by a camera maker's method.
bool isRawTiff(const ImageInput &input);

} // namespace platform
