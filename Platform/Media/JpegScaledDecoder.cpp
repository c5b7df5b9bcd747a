#include "Platform/Media/JpegScaledDecoder_p.h"

#include "Platform/Media/ImageSource.h"
#include "Platform/Media/LargePictureTurn_p.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include <jerror.h>

namespace platform {
namespace {

/// More scans than this no encoder writes. Each costs the time of a whole decoding, so that there may be fewer of them
/// the larger the picture is, but always more than the ten or so of usual files.
qint64 maximumScans(qint64 pixels)
{
    constexpr qint64 pixelsInAll = 4'000'000'000;
    return std::clamp<qint64>(pixelsInAll / std::max<qint64>(pixels, 1), 40, 500);
}
/// Files of more bytes than this are not read whole.
constexpr qint64 maximumFileSize = 1024 * 1024 * 1024;

/// libjpeg's error handler leaves by longjmp, so that nothing with a destructor may live between it and the setjmp.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf leave;
    char message[JMSG_LENGTH_MAX];
    int code;

    static ErrorManager &of(j_common_ptr decoder) { return *reinterpret_cast<ErrorManager *>(decoder->err); }
    [[noreturn]] static void fail(j_common_ptr decoder)
    {
        ErrorManager &errors = of(decoder);
        errors.code = errors.base.msg_code;
        errors.base.format_message(decoder, errors.message);
        std::longjmp(errors.leave, 1);
    }
    static void ignore(j_common_ptr, int) { }
    static void watchScans(j_common_ptr decoder)
    {
        const auto *const picture = reinterpret_cast<j_decompress_ptr>(decoder);
        if (picture->input_scan_number > maximumScans(qint64(picture->image_width) * picture->image_height)) {
            ErrorManager &errors = of(decoder);
            std::snprintf(errors.message, sizeof errors.message, "it has too many scans");
            errors.code = 0;
            std::longjmp(errors.leave, 1);
        }
    }
};

/// What is made before the setjmp and outlives it.
struct Decoding {
    jpeg_decompress_struct decoder;
    ErrorManager errors;
    jpeg_progress_mgr progress{};
    bool isTooLarge = false;
    bool areInksInverted = false;
    QSize size; // of what is decoded
    std::vector<uchar> samples;

    Decoding()
    {
        decoder.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = ErrorManager::fail;
        errors.base.emit_message = ErrorManager::ignore; // damage is normal; what can be read of it counts
        errors.message[0] = '\0';
        errors.code = 0;
        progress.progress_monitor = ErrorManager::watchScans;
    }
};

bool chooseOutput(Decoding &decoding, int minimumPixelSize)
{
    jpeg_decompress_struct &decoder = decoding.decoder;
    const qint64 pixels = qint64(decoder.image_width) * decoder.image_height;
    decoding.isTooLarge = pixels > ImageSource::maximumPixels / (jpeg_has_multiple_scans(&decoder) ? 4 : 1);
    if (decoding.isTooLarge)
        return false;
    if (decoder.num_components == 4)
        decoder.out_color_space = JCS_CMYK;
    else if (decoder.jpeg_color_space != JCS_GRAYSCALE)
        decoder.out_color_space = JCS_RGB;
    const auto longer = qint64(std::max(decoder.image_width, decoder.image_height));
    decoder.scale_denom = 8;
    decoder.scale_num = unsigned(std::clamp<qint64>((8 * qint64(minimumPixelSize) + longer - 1) / longer, 1, 8));
    decoding.areInksInverted = decoder.saw_Adobe_marker; // as that program has always written them
    return true;
}

/// @return false when it failed, in which case the error manager says why, or the picture is too large
bool decode(Decoding &decoding, const QByteArray &bytes, int minimumPixelSize)
{
    jpeg_decompress_struct &decoder = decoding.decoder;
    if (setjmp(decoding.errors.leave) != 0)
        return false;
    jpeg_create_decompress(&decoder);
    decoder.progress = &decoding.progress;
    jpeg_mem_src(&decoder, reinterpret_cast<const uchar *>(bytes.constData()), ulong(bytes.size()));
    // A file may hold nothing but tables.
    if (jpeg_read_header(&decoder, TRUE) != JPEG_HEADER_OK || !chooseOutput(decoding, minimumPixelSize))
        return false;
    jpeg_start_decompress(&decoder);
    decoding.size = QSize(int(decoder.output_width), int(decoder.output_height));
    const size_t stride = size_t(decoder.output_width) * size_t(decoder.output_components);
    decoding.samples.assign(stride * decoder.output_height, 128);
    while (decoder.output_scanline < decoder.output_height) {
        JSAMPROW row = decoding.samples.data() + stride * decoder.output_scanline;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    return true;
}

std::vector<Plane> planesOf(const Decoding &decoding)
{
    const auto count = size_t(decoding.decoder.output_components);
    std::vector<Plane> planes(count, Plane(decoding.size.width(), decoding.size.height()));
    for (size_t i = 0; i < count; ++i) {
        const uchar *from = decoding.samples.data() + i;
        for (uchar &sample : planes[i].bytes) {
            sample = *from;
            from += count;
        }
    }
    if (count == 4 && !decoding.areInksInverted) {
        for (Plane &plane : planes) {
            for (uchar &sample : plane.bytes)
                sample = uchar(255 - sample);
        }
    }
    return planes;
}

Error errorOf(const Decoding &decoding)
{
    if (decoding.isTooLarge)
        return {ErrorCode::TooLarge, QStringLiteral("the picture has too many pixels"), -1, {}};
    const int code = decoding.errors.code;
    const bool isUnknown = code == JERR_BAD_PRECISION || code == JERR_SOF_UNSUPPORTED || code == JERR_NOT_COMPILED
        || code == JERR_CONVERSION_NOTIMPL;
    return {isUnknown ? ErrorCode::UnknownFormat : ErrorCode::Malformed,
            QStringLiteral("the JPEG data cannot be decoded: %1").arg(QLatin1String(decoding.errors.message)),
            -1,
            {}};
}

} // namespace

Result<ScaledJpeg> decodeScaledJpeg(const ImageInput &input, int minimumPixelSize)
{
    if (input.size() > maximumFileSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the file is too large"), -1, {}};
    const LargePictureTurn turn(input.size());
    const QByteArray bytes = input.read(0, input.size());
    if (bytes.isEmpty())
        return Error{ErrorCode::Malformed, QStringLiteral("the file is empty"), -1, {}};
    Decoding decoding;
    const bool isDecoded = decode(decoding, bytes, minimumPixelSize);
    ScaledJpeg result;
    if (isDecoded) {
        result.planes = planesOf(decoding);
        const jpeg_decompress_struct &decoder = decoding.decoder;
        result.fullSize = QSize(int(decoder.image_width), int(decoder.image_height));
        result.extent = QSizeF(result.fullSize) * decoder.scale_num / decoder.scale_denom;
    }
    jpeg_destroy_decompress(&decoding.decoder);
    if (!isDecoded)
        return errorOf(decoding);
    return result;
}

} // namespace platform
