#include "Platform/Media/JpegWriter.h"

#include "Platform/Media/JpegPlanes_p.h"
#include "Support/JpegSamples.h"

#include <QColorSpace>

namespace {

using namespace platform;

struct Frame {
    int components, horizontalSampling, verticalSampling;
};

Frame frameOf(const QByteArray &jpeg)
{
    const qsizetype place = jpeg.indexOf("\xFF\xC0");
    EXPECT_GT(place, 0) << "a baseline file";
    return {jpeg[place + 9], jpeg[place + 11] >> 4, jpeg[place + 11] & 0xF};
}

TEST(JpegWriter, WritesColoursAtHalfTheResolutionAndNoMetadata)
{
    const QImage picture = testSupport::paintedPicture(64, 48);
    QImage tagged = picture;
    tagged.setColorSpace(QColorSpace::AdobeRgb);
    tagged.setText(QStringLiteral("Comment"), QStringLiteral("secret"));
    const QByteArray jpeg = JpegWriter::encoded(tagged);
    const Frame frame = frameOf(jpeg);
    EXPECT_EQ(frame.components, 3);
    EXPECT_EQ(frame.horizontalSampling, 2);
    EXPECT_EQ(frame.verticalSampling, 2);
    EXPECT_FALSE(jpeg.contains("ICC_PROFILE"));
    EXPECT_FALSE(jpeg.contains("secret"));
    EXPECT_FALSE(jpeg.contains("Exif"));
    EXPECT_LT(testSupport::meanDifference(QImage::fromData(jpeg), picture), 12);
}

TEST(JpegWriter, TakesItsDefaultQuality)
{
    // The first entry of the tables that the standard proposes is 16; at quality 75 it is halved.
    const QByteArray jpeg = JpegWriter::encoded(testSupport::paintedPicture(16, 16));
    EXPECT_EQ(jpeg[jpeg.indexOf("\xFF\xDB") + 5], 8);
    EXPECT_LT(JpegWriter::encoded(testSupport::paintedPicture(200, 200), 20).size(),
              JpegWriter::encoded(testSupport::paintedPicture(200, 200)).size());
}

TEST(JpegWriter, LaysWhatIsTransparentOnWhite)
{
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    EXPECT_EQ(QImage::fromData(JpegWriter::encoded(image)).pixel(8, 8), qRgb(255, 255, 255));
    image.fill(QColor(255, 0, 0, 128));
    const QRgb half = QImage::fromData(JpegWriter::encoded(image)).pixel(8, 8);
    EXPECT_NEAR(qRed(half), 255, 3);
    EXPECT_NEAR(qGreen(half), 127, 4);
}

TEST(JpegWriter, TakesImagesOfEveryFormat)
{
    const QImage picture = testSupport::paintedPicture(33, 17);
    for (const auto format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied,
          QImage::Format_RGB16, QImage::Format_RGBA64, QImage::Format_Grayscale16, QImage::Format_BGR888}) {
        const QImage converted = picture.convertToFormat(format);
        const QImage written = QImage::fromData(JpegWriter::encoded(converted));
        EXPECT_EQ(written.size(), picture.size()) << format;
        if (format != QImage::Format_Mono && format != QImage::Format_Indexed8) {
            EXPECT_LT(testSupport::meanDifference(written, converted), 12) << format;
        }
    }
}

TEST(JpegWriter, KeepsGreyPicturesGrey)
{
    QImage image(20, 20, QImage::Format_Grayscale8);
    image.fill(77);
    const QByteArray jpeg = JpegWriter::encoded(image);
    EXPECT_EQ(frameOf(jpeg).components, 1);
    EXPECT_EQ(QImage::fromData(jpeg).pixel(3, 3), qRgb(77, 77, 77));
}

TEST(JpegWriter, WritesNothingForWhatNoJpegCanHold)
{
    EXPECT_TRUE(JpegWriter::encoded(QImage()).isEmpty());
    EXPECT_TRUE(JpegWriter::encoded(QImage(65'501, 1, QImage::Format_Grayscale8)).isEmpty());
}

TEST(JpegWriter, WritesPlanesOfEvenAndOddSizes)
{
    for (const QSize size : {QSize(1, 1), QSize(1, 40), QSize(17, 16), QSize(16, 17), QSize(31, 33), QSize(240, 159)}) {
        JpegPlanes planes;
        planes.luma = Plane(size.width(), size.height(), 200);
        for (int y = 0; y < size.height(); ++y)
            planes.luma.row(y)[size.width() - 1] = 40; // its last column and row differ from what fills the blocks up
        std::fill_n(planes.luma.row(size.height() - 1), size.width(), uchar(40));
        const QByteArray grey = JpegWriter::encoded(planes);
        EXPECT_EQ(frameOf(grey).components, 1);
        EXPECT_EQ(QImage::fromData(grey).size(), size);

        planes.blue = planes.red = Plane((size.width() + 1) / 2, (size.height() + 1) / 2, 128);
        const QByteArray coloured = JpegWriter::encoded(planes);
        const QImage image = QImage::fromData(coloured);
        ASSERT_EQ(image.size(), size);
        EXPECT_LT(testSupport::greatestDifference(image, QImage::fromData(grey)), 6)
            << size.width() << "x" << size.height();
    }
}

} // namespace
