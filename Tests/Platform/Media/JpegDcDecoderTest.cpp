#include "Platform/Media/JpegDcDecoder_p.h"

#include "Support/JpegSamples.h"

#include <random>

namespace {

using namespace platform;
using testSupport::jpeg;
using testSupport::JpegOptions;

Result<JpegEighth> decode(const QByteArray &bytes)
{
    const ImageInput input{QByteArrayView(bytes)};
    return JpegDcDecoder(input).decode();
}

/// The mean of each block of 8 by 8 samples of the luma, from a decoding of the whole picture.
Plane meansOfLuma(const QByteArray &bytes)
{
    const QImage image = QImage::fromData(bytes);
    Plane means((image.width() + 7) / 8, (image.height() + 7) / 8);
    for (int y = 0; y < means.height; ++y) {
        for (int x = 0; x < means.width; ++x) {
            double sum = 0;
            int count = 0;
            for (int i = 0; i < 64; ++i) {
                const QPoint place(8 * x + i % 8, 8 * y + i / 8);
                if (!image.valid(place))
                    continue;
                const QRgb pixel = image.pixel(place);
                sum += 0.299 * qRed(pixel) + 0.587 * qGreen(pixel) + 0.114 * qBlue(pixel);
                ++count;
            }
            means.row(y)[x] = uchar(std::lround(sum / count));
        }
    }
    return means;
}

/// Compares what was decoded with the means, but for blocks that reach over the edge, which encoders fill up.
void expectMeans(const QByteArray &bytes, const char *what)
{
    const auto decoded = decode(bytes);
    ASSERT_TRUE(bool(decoded)) << what << ": " << qPrintable(decoded.error().toString());
    const Plane expected = meansOfLuma(bytes);
    const JpegEighth::Component &luma = decoded.value().components[0];
    const QSize whole(int(luma.extent.width()), int(luma.extent.height()));
    for (int y = 0; y < whole.height(); ++y) {
        for (int x = 0; x < whole.width(); ++x)
            ASSERT_NEAR(luma.plane.row(y)[x], expected.row(y)[x], 4) << what << " at " << x << ", " << y;
    }
}

TEST(JpegDcDecoder, DecodesTheMeansOfBlocksInAllWaysOfCoding)
{
    const QImage picture = testSupport::paintedPicture(237, 133);
    const std::pair<const char *, JpegOptions> cases[] = {
        {"4:2:0", {}},
        {"4:4:4", {.horizontalSampling = 1, .verticalSampling = 1}},
        {"4:2:2", {.verticalSampling = 1}},
        {"4:4:0", {.horizontalSampling = 1}},
        {"4:1:1", {.horizontalSampling = 4, .verticalSampling = 1}},
        {"grey", {.colors = JCS_GRAYSCALE}},
        {"optimized codes", {.quality = 98, .isOptimized = true}},
        {"best quality", {.quality = 100}},
        {"one scan for each component", {.isInterleaved = false}},
        {"restart intervals", {.restartInterval = 3}},
        {"a restart after every unit", {.restartInterval = 1}},
        {"more units between restarts than there are", {.restartInterval = 60'000}},
        {"progressive", {.isProgressive = true}},
        {"progressive with restarts", {.isProgressive = true, .restartInterval = 5}},
        {"progressive grey", {.isProgressive = true, .colors = JCS_GRAYSCALE}},
    };
    for (const auto &[what, options] : cases)
        expectMeans(jpeg(picture, options), what);
}

TEST(JpegDcDecoder, GuessesTheMeanOfWhatLaterScansRefine)
{
    QImage shades(800, 600, QImage::Format_Grayscale8);
    for (int y = 0; y < shades.height(); ++y) {
        for (int x = 0; x < shades.width(); ++x)
            shades.scanLine(y)[x] = uchar(20 + (x + 2 * y) / 10);
    }
    const auto decoded = decode(jpeg(shades, {.quality = 10, .isProgressive = true, .colors = JCS_GRAYSCALE}));
    ASSERT_TRUE(bool(decoded));
    double sum = 0;
    for (int y = 0; y < 75; ++y) {
        for (int x = 0; x < 100; ++x)
            sum += decoded.value().components[0].plane.row(y)[x] - shades.scanLine(8 * y + 4)[8 * x + 4];
    }
    EXPECT_NEAR(sum / (75 * 100), 0, 1); // neither darker nor lighter
}

TEST(JpegDcDecoder, PassesOverScansThatRefineBeforeOtherComponentsCome)
{
    JpegOptions options{.isComponentWise = true};
    expectMeans(jpeg(testSupport::paintedPicture(237, 133), options), "component by component");
    options.horizontalSampling = options.verticalSampling = 1;
    expectMeans(jpeg(testSupport::paintedPicture(160, 90), options), "component by component, 4:4:4");
}

TEST(JpegDcDecoder, DecodesEverySizeOfThePicture)
{
    for (const QSize size : {QSize(1, 1), QSize(8, 8), QSize(9, 7), QSize(16, 16), QSize(17, 33), QSize(1000, 3)}) {
        for (const bool isInterleaved : {true, false}) {
            const auto decoded = decode(
                jpeg(testSupport::paintedPicture(size.width(), size.height()), {.isInterleaved = isInterleaved}));
            ASSERT_TRUE(bool(decoded));
            EXPECT_EQ(decoded.value().size, size);
            for (size_t i = 0; i < 3; ++i) {
                const double divisor = i == 0 ? 8 : 16;
                const JpegEighth::Component &component = decoded.value().components[i];
                EXPECT_EQ(component.extent, QSizeF(size) / divisor);
                EXPECT_GE(component.plane.width, component.extent.width());
                EXPECT_GE(component.plane.height, component.extent.height());
            }
        }
    }
}

TEST(JpegDcDecoder, DecodesQuantizersOf16Bits)
{
    // With such tables nothing but the means is left.
    const QByteArray bytes = jpeg(testSupport::paintedPicture(160, 120), {.wideTables = 2500});
    ASSERT_EQ(bytes[bytes.indexOf("\xFF\xDB") + 4] >> 4, 1) << "a table of 16 bits";
    const auto decoded = decode(bytes);
    ASSERT_TRUE(bool(decoded));
    const Plane expected = meansOfLuma(bytes);
    EXPECT_NEAR(decoded.value().components[0].plane.row(7)[9], expected.row(7)[9], 3);
}

TEST(JpegDcDecoder, PassesOverWhatStandsBetweenSegments)
{
    const QByteArray plain = jpeg(testSupport::paintedPicture(64, 64), {});
    QByteArray bytes = plain;
    bytes.insert(bytes.indexOf("\xFF\xDB"), "junk without a marker");
    bytes.insert(bytes.indexOf("\xFF\xC0"), "\xFF\xFF\xFF"); // a marker may be filled up
    bytes.insert(bytes.indexOf("\xFF\xC4"), QByteArray("\xFF\x01\xFF\xD3\x00\xFF\x00", 7)); // these stand alone
    bytes.insert(2, QByteArray("\xFF\xFE\x00\x06\xFF\xDA", 6) + QByteArray("\xFF\xD9", 2)); // within a comment
    const auto decoded = decode(bytes), expected = decode(plain);
    ASSERT_TRUE(bool(decoded)) << qPrintable(decoded.error().toString());
    EXPECT_EQ(decoded.value().components[0].plane.bytes, expected.value().components[0].plane.bytes);
}

TEST(JpegDcDecoder, ReadsNoMoreOfAProgressiveFileThanTheMeans)
{
    const QByteArray bytes = jpeg(testSupport::paintedPicture(640, 480), {.quality = 95, .isProgressive = true});
    // The first scan ends where the second begins.
    const qsizetype first = bytes.indexOf("\xFF\xDA");
    const qsizetype second = bytes.indexOf("\xFF\xDA", first + 2);
    ASSERT_GT(second, first);
    EXPECT_TRUE(bool(decode(bytes.first(second))));
    EXPECT_TRUE(bool(decode(bytes.first(second) + "whatever follows")));
}

TEST(JpegDcDecoder, RefusesKindsThatAreRare)
{
    const QImage picture = testSupport::paintedPicture(64, 64);
    EXPECT_EQ(decode(jpeg(picture, {.isArithmetic = true})).error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(decode(jpeg(picture, {.colors = JCS_CMYK})).error().code, ErrorCode::UnknownFormat);
    QByteArray twelveBits = jpeg(picture);
    twelveBits[twelveBits.indexOf("\xFF\xC0") + 4] = 12;
    EXPECT_EQ(decode(twelveBits).error().code, ErrorCode::UnknownFormat);
    QByteArray noHeight = jpeg(picture); // it would come in a segment behind the first scan
    noHeight.replace(noHeight.indexOf("\xFF\xC0") + 5, 2, QByteArray(2, '\0'));
    EXPECT_EQ(decode(noHeight).error().code, ErrorCode::UnknownFormat);
    QByteArray lossless = jpeg(picture);
    lossless[lossless.indexOf("\xFF\xC0") + 1] = '\xC3';
    EXPECT_EQ(decode(lossless).error().code, ErrorCode::UnknownFormat);
}

TEST(JpegDcDecoder, RefusesTooManyPixelsBeforeItTakesMemoryForThem)
{
    QByteArray bytes = jpeg(testSupport::paintedPicture(16, 16));
    bytes.replace(bytes.indexOf("\xFF\xC0") + 5, 4, QByteArray("\xFF\xDC\xFF\xDC", 4)); // 65,500 each
    const auto decoded = decode(bytes);
    ASSERT_FALSE(bool(decoded));
    EXPECT_EQ(decoded.error().code, ErrorCode::TooLarge);
    EXPECT_EQ(decoded.error().byteOffset, bytes.indexOf("\xFF\xC0") + 4);
}

TEST(JpegDcDecoder, RefusesDamagedHeads)
{
    const QByteArray good = jpeg(testSupport::paintedPicture(64, 64));
    const qsizetype frame = good.indexOf("\xFF\xC0"), scan = good.indexOf("\xFF\xDA");
    const qsizetype quantizers = good.indexOf("\xFF\xDB"), codes = good.indexOf("\xFF\xC4");
    const struct {
        const char *what;
        qsizetype place;
        uchar value;
    } cases[] = {{"a width of 0", frame + 8, 0},
                 {"a sampling factor of 0", frame + 11, 0x02},
                 {"a sampling factor of 5", frame + 11, 0x25},
                 {"a quantizer out of range", frame + 12, 9},
                 {"a component that is not there", scan + 5, 77},
                 {"no component at all", scan + 4, 0},
                 {"too many components", scan + 4, 4},
                 {"a Huffman table that is missing", scan + 6, 0x33},
                 {"a quantizer with a large number", quantizers + 4, 0x0F},
                 {"codes of a third kind", codes + 4, 0x20},
                 {"more codes than fit", codes + 5, 3}};
    for (const auto &test : cases) {
        QByteArray bytes = good;
        bytes[test.place] = char(test.value);
        if (test.place == frame + 8)
            bytes[frame + 7] = 0;
        const auto decoded = decode(bytes);
        ASSERT_FALSE(bool(decoded)) << test.what;
        EXPECT_EQ(decoded.error().code, ErrorCode::Malformed) << test.what;
    }
    QByteArray large = good; // 4 by 4 blocks of luma and one each of the others
    large[frame + 11] = 0x44;
    EXPECT_EQ(decode(large).error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(decode(QByteArray()).error().code, ErrorCode::Malformed);
    EXPECT_EQ(decode(good.first(scan)).error().code, ErrorCode::Malformed);
}

TEST(JpegDcDecoder, ShowsAPictureThatIsCutOffBehindItsMiddle)
{
    for (const bool hasRestarts : {false, true}) {
        const QByteArray good = jpeg(testSupport::paintedPicture(320, 640), {.restartInterval = hasRestarts ? 20 : 0});
        const qsizetype scan = good.indexOf("\xFF\xDA");
        const auto whole = decode(good);
        const auto most = decode(good.first(scan + (good.size() - scan) * 3 / 4));
        ASSERT_TRUE(bool(whole) && bool(most));
        const Plane &all = whole.value().components[0].plane, &part = most.value().components[0].plane;
        EXPECT_TRUE(std::equal(part.row(0), part.row(part.height / 2), all.row(0)));
        EXPECT_TRUE(
            std::equal(part.row(part.height - 1), part.row(part.height - 1) + part.width, part.row(part.height - 2)))
            << "the last row that is there is repeated";
        EXPECT_EQ(decode(good.first(scan + (good.size() - scan) / 4)).error().code, ErrorCode::Malformed);
    }
}

TEST(JpegDcDecoder, StopsAtAMissingRestartMarker)
{
    QByteArray bytes = jpeg(testSupport::paintedPicture(320, 640), {.restartInterval = 20});
    const qsizetype last = bytes.lastIndexOf("\xFF\xD0");
    ASSERT_GT(last, bytes.size() / 2);
    bytes[last + 1] = '\xFE';
    EXPECT_TRUE(bool(decode(bytes)));
    bytes[bytes.indexOf("\xFF\xD0") + 1] = '\xFE';
    EXPECT_EQ(decode(bytes).error().code, ErrorCode::Malformed);
}

TEST(JpegDcDecoder, GivesUpOnEndlessScans)
{
    QByteArray bytes = jpeg(testSupport::paintedPicture(64, 64), {.isProgressive = true, .colors = JCS_GRAYSCALE});
    const qsizetype scan = bytes.indexOf("\xFF\xDA");
    QByteArray later = QByteArray("\xFF\xDA\x00\x08\x01\x01\x00\x01\x3F\x00", 10); // coefficients 1 to 63
    bytes.insert(scan, later.repeated(200));
    EXPECT_EQ(decode(bytes).error().code, ErrorCode::UnknownFormat);
}

TEST(JpegDcDecoder, StandsDamageOfEveryKind)
{
    std::mt19937 random(11);
    const QImage picture = testSupport::paintedPicture(72, 56);
    for (const JpegOptions &options : {JpegOptions{}, JpegOptions{.isProgressive = true, .restartInterval = 2},
                                       JpegOptions{.isInterleaved = false, .restartInterval = 1}}) {
        const QByteArray good = jpeg(picture, options);
        for (qsizetype size = 0; size < good.size(); size += 1 + size / 200)
            static_cast<void>(decode(good.first(size)));
        for (int round = 0; round < 4000; ++round) {
            QByteArray bytes = good;
            for (auto flips = 1 + random() % 4; flips > 0; --flips) {
                // Heads are small beside the data and deserve as many flips.
                const auto place = qsizetype(random() % (random() % 2 ? size_t(bytes.size()) : 700)) % bytes.size();
                bytes[place] = char(bytes[place] ^ (1 << random() % 8));
            }
            static_cast<void>(decode(bytes));
        }
    }
}

} // namespace
