#pragma once

#include <QByteArray>
#include <QImage>

#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

#include <gtest/gtest.h>

namespace testSupport {

/// How a JPEG for a test is written.
struct JpegOptions {
    int quality = 90;
    int horizontalSampling = 2, verticalSampling = 2; ///< Of the luma.
    bool isProgressive = false;
    bool isArithmetic = false;
    bool isInterleaved = true; ///< Otherwise each component has a scan of its own.
    bool isOptimized = false;
    /// Of a progressive file: the first coefficients of each component are complete before those of the next one.
    bool isComponentWise = false;
    J_COLOR_SPACE colors = JCS_YCbCr; ///< In the file.
    int restartInterval = 0; ///< In units of coding.
    QByteArray profile = {}; ///< ICC profile to be embedded.
    int wideTables = 0; ///< Scale of quantization in percent, so large that it needs 16 bits; 0 for the quality's.
};

/// A smooth picture with some detail, so that decoders which round otherwise stay near each other.
inline QImage paintedPicture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB888);
    const int cell = std::max(8, width / 12);
    for (int y = 0; y < height; ++y) {
        uchar *pixel = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            *pixel++ = uchar(40 + 170 * x / width);
            *pixel++ = uchar(30 + 190 * y / height);
            *pixel++ = uchar(128 + ((x / cell + y / cell) % 2 ? 60 : -60));
        }
    }
    return image;
}

inline QByteArray jpeg(const QImage &picture, const JpegOptions &options = {})
{
    const bool isGrey = options.colors == JCS_GRAYSCALE;
    const bool hasInks = options.colors == JCS_CMYK || options.colors == JCS_YCCK;
    QImage image = picture.convertToFormat(isGrey ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    if (hasInks) { // no ink is 255, as Adobe writes it; black stays at that
        QImage inks(image.size(), QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const uchar *from = image.constScanLine(y) + 3 * x;
                uchar *to = inks.scanLine(y) + 4 * x;
                std::copy_n(from, 3, to);
                to[3] = 255;
            }
        }
        image = inks;
    }
    jpeg_compress_struct compressor;
    jpeg_error_mgr errors;
    compressor.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compressor);
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&compressor, &bytes, &size);
    compressor.image_width = JDIMENSION(image.width());
    compressor.image_height = JDIMENSION(image.height());
    compressor.input_components = isGrey ? 1 : hasInks ? 4 : 3;
    compressor.in_color_space = isGrey ? JCS_GRAYSCALE : hasInks ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&compressor);
    jpeg_set_colorspace(&compressor, options.colors);
    if (options.wideTables)
        jpeg_set_linear_quality(&compressor, options.wideTables, FALSE);
    else
        jpeg_set_quality(&compressor, options.quality, TRUE);
    if (!isGrey) {
        compressor.comp_info[0].h_samp_factor = options.horizontalSampling;
        compressor.comp_info[0].v_samp_factor = options.verticalSampling;
    }
    compressor.restart_interval = unsigned(options.restartInterval);
    compressor.optimize_coding = options.isOptimized;
    compressor.arith_code = options.isArithmetic;
    jpeg_scan_info scans[12] = {};
    if (options.isComponentWise) {
        int count = 0;
        for (int i = 0; i < compressor.num_components; ++i) {
            scans[count++] = {1, {i}, 0, 0, 0, 1};
            scans[count++] = {1, {i}, 0, 0, 1, 0};
        }
        for (int i = 0; i < compressor.num_components; ++i)
            scans[count++] = {1, {i}, 1, 63, 0, 0};
        compressor.scan_info = scans;
        compressor.num_scans = count;
    } else if (options.isProgressive) {
        jpeg_simple_progression(&compressor);
    } else if (!options.isInterleaved) {
        for (int i = 0; i < compressor.num_components; ++i)
            scans[i] = {1, {i}, 0, 63, 0, 0};
        compressor.scan_info = scans;
        compressor.num_scans = compressor.num_components;
    }
    jpeg_start_compress(&compressor, TRUE);
    if (!options.profile.isEmpty())
        jpeg_write_icc_profile(&compressor, reinterpret_cast<const JOCTET *>(options.profile.constData()),
                               unsigned(options.profile.size()));
    while (compressor.next_scanline < compressor.image_height) {
        auto *row = const_cast<JSAMPROW>(image.constScanLine(int(compressor.next_scanline)));
        jpeg_write_scanlines(&compressor, &row, 1);
    }
    jpeg_finish_compress(&compressor);
    jpeg_destroy_compress(&compressor);
    QByteArray result(reinterpret_cast<const char *>(bytes), qsizetype(size));
    std::free(bytes);
    EXPECT_FALSE(result.isEmpty());
    return result;
}

/// The greatest difference of any component of any pixel.
inline int greatestDifference(const QImage &picture, const QImage &other)
{
    EXPECT_EQ(picture.size(), other.size());
    if (picture.size() != other.size())
        return 255;
    int greatest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb a = picture.pixel(x, y), b = other.pixel(x, y);
            greatest = std::max({greatest, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                 std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return greatest;
}

/// The mean difference of all components of all pixels.
inline double meanDifference(const QImage &picture, const QImage &other)
{
    EXPECT_EQ(picture.size(), other.size());
    if (picture.size() != other.size())
        return 255;
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb a = picture.pixel(x, y), b = other.pixel(x, y);
            sum += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
        }
    }
    return sum / (3.0 * picture.width() * picture.height());
}

} // namespace testSupport
