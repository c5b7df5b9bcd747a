// Makes photos like a camera's for the benchmarks: large, noisy, saved as cameras save them.
//
//     make_benchmark_photos OUTPUT PICTURE...
//
// Each picture is enlarged to 12, 16 or 24 megapixels, gets the noise of a sensor at a middling sensitivity, and is
// saved with quality 95, 4:2:2 or 4:2:0, into OUTPUT/baseline, OUTPUT/progressive and, with a thumbnail in its EXIF
// data, OUTPUT/embedded. Without noise an enlarged picture would compress to a fraction of what
// a camera writes, and decode as much faster.

#include <QtGui>

#include <cstdio>

#include <jpeglib.h>

namespace {

struct CameraFormat {
    QSize size;
    int horizontalSampling, verticalSampling; // of the luma
};
constexpr CameraFormat formats[] = {
    {{4000, 3000}, 2, 1}, {{6000, 4000}, 2, 2}, {{4928, 3264}, 2, 1}, {{4032, 3024}, 2, 2}};

// Noise of a sensor: grows with the square root of the light, and stands in every colour for itself.
void addNoise(QImage &image, quint32 seed)
{
    std::array<int, 4096> normal; // deviates of a normal distribution, in 1/16
    QRandomGenerator random(seed);
    for (int &deviate : normal) {
        double sum = 0;
        for (int i = 0; i < 12; ++i)
            sum += random.generateDouble();
        deviate = int(std::lround((sum - 6) * 16));
    }
    std::array<int, 256> strength; // in 1/16
    for (int light = 0; light < 256; ++light)
        strength[size_t(light)] = int(std::lround(16 * (2 + 4 * std::sqrt(light / 255.0))));
    quint32 state = seed | 1;
    for (int y = 0; y < image.height(); ++y) {
        uchar *line = image.scanLine(y);
        for (int x = 0; x < image.width() * 3; ++x) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            line[x] = uchar(std::clamp(line[x] + normal[state >> 20] * strength[line[x]] / 256, 0, 255));
        }
    }
}

QByteArray encoded(const QImage &image, const CameraFormat &format, int quality, bool progressive,
                   const QByteArray &exif)
{
    jpeg_compress_struct compressor;
    jpeg_error_mgr errors;
    compressor.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compressor);
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&compressor, &bytes, &size);
    compressor.image_width = JDIMENSION(image.width());
    compressor.image_height = JDIMENSION(image.height());
    compressor.input_components = 3;
    compressor.in_color_space = JCS_RGB;
    jpeg_set_defaults(&compressor);
    jpeg_set_quality(&compressor, quality, TRUE);
    compressor.comp_info[0].h_samp_factor = format.horizontalSampling;
    compressor.comp_info[0].v_samp_factor = format.verticalSampling;
    if (progressive)
        jpeg_simple_progression(&compressor);
    compressor.write_JFIF_header = exif.isEmpty();
    jpeg_start_compress(&compressor, TRUE);
    if (!exif.isEmpty())
        jpeg_write_marker(&compressor, JPEG_APP0 + 1, reinterpret_cast<const JOCTET *>(exif.data()),
                          unsigned(exif.size()));
    while (compressor.next_scanline < compressor.image_height) {
        auto *line = const_cast<JSAMPROW>(image.constScanLine(int(compressor.next_scanline)));
        jpeg_write_scanlines(&compressor, &line, 1);
    }
    jpeg_finish_compress(&compressor);
    jpeg_destroy_compress(&compressor);
    QByteArray result(reinterpret_cast<const char *>(bytes), qsizetype(size));
    std::free(bytes);
    return result;
}

// EXIF data (EXIF 2.3) with an orientation and a thumbnail.
QByteArray exifData(const QByteArray &thumbnail)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly); // big-endian, as "MM" says
    const auto entry = [&](quint16 tag, quint16 type, quint32 value) {
        stream << tag << type << quint32(1) << (type == 3 ? value << 16 : value);
    };
    stream.writeRawData("Exif\0\0MM\0*", 10);
    stream << quint32(8) << quint16(1);
    entry(0x0112, 3, 1); // orientation: upright
    stream << quint32(26) << quint16(3);
    entry(0x0103, 3, 6); // compression: JPEG
    entry(0x0201, 4, 68); // where the thumbnail is
    entry(0x0202, 4, quint32(thumbnail.size()));
    stream << quint32(0);
    stream.writeRawData(thumbnail.constData(), int(thumbnail.size()));
    return bytes;
}

bool save(const QString &folder, int number, const QByteArray &bytes)
{
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/photo%1.jpg").arg(number, 2, 10, QLatin1Char('0')));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: make_benchmark_photos OUTPUT PICTURE...\n");
        return 2;
    }
    const QString output = QFile::decodeName(argv[1]);
    for (int number = 0; number < argc - 2; ++number) {
        const CameraFormat &format = formats[size_t(number) % std::size(formats)];
        QImage picture(QFile::decodeName(argv[2 + number]));
        if (picture.isNull()) {
            std::fprintf(stderr, "%s: cannot be read\n", argv[2 + number]);
            return 1;
        }
        picture = picture.scaled(format.size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation)
                      .copy(QRect(QPoint(), format.size))
                      .convertToFormat(QImage::Format_RGB888);
        addNoise(picture, quint32(number + 1) * 2654435761U);
        const QImage small = picture.scaled(160, 120, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        const QByteArray exif = exifData(encoded(small, formats[0], 80, false, {}));
        if (!save(output + QStringLiteral("/baseline"), number, encoded(picture, format, 95, false, {}))
            || !save(output + QStringLiteral("/embedded"), number, encoded(picture, format, 95, false, exif))
            || !save(output + QStringLiteral("/progressive"), number, encoded(picture, format, 95, true, {}))) {
            std::fprintf(stderr, "%s: cannot be written to\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
