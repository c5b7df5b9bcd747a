#pragma once

#include <QByteArray>
#include <QImage>

/// Writing pictures as JPEG files.
///
/// Any thread.
namespace platform::JpegWriter {

/// From 0 to 100; what encoders usually take when nobody says otherwise.
inline constexpr int defaultQuality = 75;

/// A baseline JPEG, its colours at half the resolution (4:2:0) and nothing in it but the picture: no profile, no
/// metadata. What is transparent is laid on white. Grey pictures stay grey.
/// @return nothing for a null image, or one of more than 65,500 pixels on a side
QByteArray encoded(const QImage &image, int quality = defaultQuality);

} // namespace platform::JpegWriter
