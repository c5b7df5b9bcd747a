#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QSize>

namespace platform {

/// A PNG file taken apart before anything is decoded (W3C: "Portable Network Graphics (PNG)", third
/// edition).
struct PngFile {
    /// The file again, with nothing in it but what the picture is made of: the critical chunks, transparency, and plain
    /// statements about the colours where no profile describes them. A decoder that is given these meets no texts that
    /// unpack to gigabytes, no profiles, and nothing to complain about in the log.
    QByteArray picture;
    QSize size;
    QByteArray profile; ///< ICC; empty where there is none, or one that cannot be unpacked.
    int orientation = 1; ///< As in EXIF, 1 to 8.

    /// Checks the structure and the checksums of all chunks that are kept. Errors: `Malformed`, with the offset.
    static Result<PngFile> read(QByteArrayView bytes);
};

} // namespace platform
