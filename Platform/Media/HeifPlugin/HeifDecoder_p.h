#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <cstddef>
#include <cstdint>

/// What the library and its plug-in for HEIF files have in common, as plain C, so that both may be built apart.
///
/// The plug-in is loaded when the first HEIF picture is to be decoded and is not linked by anything, since libheif may
/// be built with encoders whose licence a host does not want to accept.
///
/// Thread safety: all functions may be called on any thread.
extern "C" {

enum ZRHeifOutcome {
    ZRHeifDecoded = 0,
    ZRHeifMalformed,
    ZRHeifTooLarge, ///< Width and height are filled in.
    ZRHeifUnsupported, ///< There is no decoder for what the container holds.
};

/// Asks for a picture, and is told about it.
struct ZRHeifPicture {
    // Set by the caller.
    std::int32_t minimumPixelSize; ///< A stored thumbnail whose longer side has so many pixels is preferred.
    std::int64_t maximumPixels; ///< Larger pictures are refused by their header.

    // Set by the plug-in.
    std::int32_t width;
    std::int32_t height;
    std::int32_t hasAlpha; ///< Whether a pixel has four bytes (with alpha, not multiplied) or three.
    std::int64_t bytesPerLine;
    const std::uint8_t *pixels; ///< Red, green, blue; upright.
    const std::uint8_t *profile; ///< ICC; null where there is none.
    std::size_t profileSize; ///< In bytes.
    char reason[128]; ///< Why it failed, in English.
    void *owner; ///< Of pixels and profile, until it is released.
};

struct ZRHeifDecoder {
    std::uint32_t version; ///< Must be `zrHeifDecoderVersion`.
    /// Decodes the stored thumbnail of the primary picture where there is one, else the picture. The bytes are borrowed
    /// until it returns.
    ZRHeifOutcome (*decode)(const std::uint8_t *bytes, std::size_t size, ZRHeifPicture *picture);
    /// To be called after `decode`, whatever came of it.
    void (*release)(ZRHeifPicture *picture);
};

/// The name of the function that the plug-in exports.
constexpr const char zrHeifDecoderFunction[] = "zrHeifDecoder";
constexpr std::uint32_t zrHeifDecoderVersion = 1;
using ZRHeifDecoderFunction = const ZRHeifDecoder *(*)();
}
