#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QSize>
#include <QtGlobal>

#include <array>
#include <vector>

namespace platform {

/// One component of a picture, a byte for each sample, rows one behind the other.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<uchar> bytes;

    Plane() = default;
    Plane(int planeWidth, int planeHeight, uchar value = 0)
        : width(planeWidth)
        , height(planeHeight)
        , bytes(size_t(planeWidth) * size_t(planeHeight), value)
    { }
    bool isEmpty() const { return bytes.empty(); }
    uchar *row(int y) { return bytes.data() + size_t(y) * size_t(width); }
    const uchar *row(int y) const { return bytes.data() + size_t(y) * size_t(width); }
};

/// How a picture is to be turned to stand upright: the values 1 to 8 of the tag "Orientation" of EXIF 2.3 (JEITA
/// CP-3451C, 4.6.4). Those from 5 on swap width and height.
constexpr bool swapsSides(int orientation)
{
    return orientation >= 5;
}

/// The plane reduced to the target's size (or enlarged) by a Lanczos kernel of three lobes, then turned upright. The
/// cost is that of the source, times the part of its rows that are kept.
/// @param extent the part of the source that is the picture, from its upper left corner: decoders fill up their planes
/// to whole blocks, and a picture may end within a sample
/// @param target size before it is turned
Plane resampled(const Plane &source, const QSizeF &extent, const QSize &target, int orientation = 1);

} // namespace platform
