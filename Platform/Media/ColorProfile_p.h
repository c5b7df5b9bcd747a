#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArrayView>
#include <QImage>

/// Colours as the profile (ICC.1) in a file describes them, turned into sRGB. With perceptual intent. A profile that is
/// damaged, or is for other components than the picture has, counts as none.
///
/// Any thread. The last profile of each thread is kept ready, since the photos of a folder mostly share one.
namespace platform::ColorProfile {

/// Converts a picture in place: one in the format Grayscale8, which a profile for grey turns into RGB888, or one that
/// is in RGB888 or is converted to it. Without a usable profile nothing is changed.
/// @return whether the profile was used
bool convertToSrgb(QImage &image, QByteArrayView profile);

/// The picture (RGB888) that cyan, magenta, yellow and black make, which lie in this order in the four bytes of a pixel
/// (any format of 32 bits), 255 for no ink. Without a usable profile as screens do without: the product of what each
/// ink and black let through.
QImage fromInks(const QImage &inks, QByteArrayView profile);

} // namespace platform::ColorProfile
