#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/Plane_p.h"

#include <QByteArray>

namespace platform {

/// A picture in the components that a JPEG file holds.
struct JpegPlanes {
    Plane luma;
    Plane blue, red; ///< Differences, half as wide and high, rounded up; empty for a grey picture.
};

namespace JpegWriter {

/// As for an image, without a detour over red, green and blue.
QByteArray encoded(const JpegPlanes &planes);

} // namespace JpegWriter
} // namespace platform
