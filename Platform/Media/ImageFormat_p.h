#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArray>
#include <QString>

namespace platform {

/// The formats of pictures that are told apart, whether or not there is a decoder for them.
enum class ImageFormat {
    Unknown, ///< No picture.
    Jpeg,
    Png,
    Gif,
    Tiff, ///< Classic and large; also what many cameras write as raw, which only its directories tell.
    WebP,
    Bmp,
    Icon, ///< Icons and cursors of Windows.
    MacIcon,
    Heif, ///< HEIF containers: HEIC and AVIF.
    CameraRaw, ///< Told by the first bytes alone.
    PortableAnyMap, ///< PBM, PGM and PPM, as text or binary.
    Targa,
    Svg,
    Jpeg2000,
    JpegXl,
    Photoshop,
};

/// How many bytes `imageFormatOf` looks at.
inline constexpr qsizetype formatBlockSize = 1024;

/// Tells a format by how a file begins, never by its name. Where a format has a number of its own at the start, the
/// first 32 bytes decide. XML counts as SVG when its first element is one, and stands within the block. Targa files
/// have no such number: a header counts that is consistent in itself and with the size of the file.
/// @param begin the first bytes of the file, `formatBlockSize` of them where it has so many
/// @param fileSize in bytes
ImageFormat imageFormatOf(QByteArrayView begin, qint64 fileSize);

/// What people call the format, such as "JPEG 2000".
QString nameOf(ImageFormat format);

} // namespace platform
