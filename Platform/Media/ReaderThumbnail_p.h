#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/ImageFormat_p.h"
#include "Platform/Media/ImageInput_p.h"

#include <QByteArray>
#include <QSize>

namespace platform {

/// Files of more bytes than this are not read whole, whatever format they are in.
inline constexpr qint64 maximumReadFileSize = 512 * 1024 * 1024;
/// Pictures of more pixels than this are not decoded whole.
inline constexpr qint64 maximumDecodedPixels = 128 * 1024 * 1024;

/// A small JPEG of a picture that Qt's decoders read, as `ImageSource::jpegThumbnail` describes it. The decoder for the
/// format that the bytes tell is the only one that is asked. What the file says about orientation and colours is taken
/// from it here, so that all formats are treated alike; what a decoder would only complain about is kept from it.
/// Errors: `Malformed`, `TooLarge`, `UnknownFormat` when there is no decoder for the format.
Result<QByteArray> readerThumbnail(const ImageInput &input, ImageFormat format, int maximumPixelSize);

/// That a picture is beyond the limit.
Error tooManyPixels(const QSize &size);
/// That there is no decoder.
Error noDecoder(ImageFormat format);

} // namespace platform
