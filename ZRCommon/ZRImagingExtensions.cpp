#include "ZRCommon/ZRImagingExtensions.h"

void ZRImagingExtensions::fixSizeZR(platform::Image &image)
{
    image.setCacheMode(platform::Image::CacheMode::Always);
    const QSizeF before = image.size();
    for (const platform::ImageRepresentation &representation : image.representations()) {
        if (!representation.isBitmap())
            continue;
        const QSizeF pixels = representation.pixelSize;
        // Not QSizeF's own comparison, which takes nearly equal sizes for equal.
        if (pixels.width() != before.width() || pixels.height() != before.height()) {
            image.setSize(pixels);
            image.setDataRetained(true);
        }
    }
}
