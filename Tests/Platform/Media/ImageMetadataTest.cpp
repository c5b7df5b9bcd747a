#include "Platform/Media/ImageMetadata_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <random>

using namespace platform;
using namespace testSupport;

namespace {

const QByteArray thumbnail("\xFF\xD8 a thumbnail \xFF\xD9");

QByteArray photo()
{
    static const QByteArray file = jpeg(paintedPicture(64, 48));
    return file;
}

ImageMetadata metadataOf(const QByteArray &file)
{
    return jpegMetadata(ImageInput(QByteArrayView(file)));
}

QByteArray at(const QByteArray &file, const ByteRange &place)
{
    return file.mid(place.offset, place.length);
}

} // namespace

TEST(ImageMetadataTest, ReadsOrientationAndThumbnailInEitherByteOrder)
{
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const QByteArray file = withExif(photo(), exifStructure(orientation, thumbnail, order));
            const ImageMetadata metadata = metadataOf(file);
            EXPECT_EQ(metadata.orientation, orientation);
            EXPECT_EQ(at(file, metadata.thumbnail), thumbnail);
            EXPECT_TRUE(metadata.preview.isEmpty());
            EXPECT_TRUE(metadata.profile.empty());
        }
    }
}

TEST(ImageMetadataTest, AFileWithoutAnyIsUpright)
{
    for (const QByteArray &file : {photo(), QByteArray(), QByteArray("\xFF\xD8\xFF"), QByteArray("no picture")}) {
        const ImageMetadata metadata = metadataOf(file);
        EXPECT_EQ(metadata.orientation, 1);
        EXPECT_TRUE(metadata.thumbnail.isEmpty());
    }
}

TEST(ImageMetadataTest, OrientationsThatDoNotExistCountAsUpright)
{
    for (const int orientation : {0, 9, 255, 65535})
        EXPECT_EQ(metadataOf(withExif(photo(), exifStructure(orientation))).orientation, 1) << orientation;
}

TEST(ImageMetadataTest, TheTypeOfANumberDoesNotMatter)
{
    // As a number of four bytes, as one byte, and as text, which is none.
    for (const auto &[type, value, orientation] :
         {std::tuple{4, 6u, 6}, std::tuple{1, 6u << 24, 6}, std::tuple{2, 6u << 24, 1}}) {
        const QByteArray exif = tiffHead() + tiffDirectory({{0x112, quint16(type), 1, value}});
        EXPECT_EQ(metadataOf(withExif(photo(), exif)).orientation, orientation) << type;
    }
}

TEST(ImageMetadataTest, OfTagsThatStandTwiceTheFirstCounts)
{
    const QByteArray exif = tiffHead() + tiffDirectory({{0x112, shortType, 1, 6}, {0x112, shortType, 1, 3}});
    EXPECT_EQ(metadataOf(withExif(photo(), exif)).orientation, 6);
    const QByteArray twice = withExif(withExif(photo(), exifStructure(3)), exifStructure(8));
    EXPECT_EQ(metadataOf(twice).orientation, 8); // of segments, too
}

TEST(ImageMetadataTest, DirectoriesThatLeadBackEnd)
{
    const QByteArray toItself = tiffHead() + tiffDirectory({{0x112, shortType, 1, 6}}, 8);
    const ImageMetadata metadata = metadataOf(withExif(photo(), toItself));
    EXPECT_EQ(metadata.orientation, 6);
    EXPECT_TRUE(metadata.thumbnail.isEmpty());
}

TEST(ImageMetadataTest, PlacesOutsideOfTheSegmentHoldNoThumbnail)
{
    for (const quint32 offset : {0u, 10'000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const QByteArray exif = tiffHead() + tiffDirectory({{0x112, shortType, 1, 6}}, 26)
            + tiffDirectory({{0x201, longType, 1, offset}, {0x202, longType, 1, 100}});
        const ImageMetadata metadata = metadataOf(withExif(photo(), exif));
        EXPECT_TRUE(metadata.thumbnail.isEmpty()) << offset;
        EXPECT_EQ(metadata.orientation, 6);
    }
}

TEST(ImageMetadataTest, AThumbnailEndsWithItsSegment)
{
    const QByteArray exif = tiffHead() + tiffDirectory({}, 14)
        + tiffDirectory({{0x201, longType, 1, 44}, {0x202, longType, 1, 0xFFFFFFFF}}) + thumbnail;
    const QByteArray file = withExif(photo(), exif);
    EXPECT_EQ(at(file, metadataOf(file).thumbnail), thumbnail);
}

TEST(ImageMetadataTest, ADirectoryThatIsCutOffHasTheEntriesThatAreThere)
{
    QByteArray exif = tiffHead() + tiffDirectory({{0x112, shortType, 1, 6}});
    exif.replace(8, 2, number(60'000, 2));
    EXPECT_EQ(metadataOf(withExif(photo(), exif)).orientation, 6);
    EXPECT_EQ(metadataOf(withExif(photo(), exif.first(20))).orientation, 1);
    EXPECT_EQ(metadataOf(withExif(photo(), {})).orientation, 1);
}

TEST(ImageMetadataTest, ReadsBeyondTheFirstBlockWhereItMust)
{
    // Long segments may stand in front of EXIF.
    QByteArray file = withExif(photo(), exifStructure(6, thumbnail));
    for (int i = 0; i < 3; ++i)
        file = withSegment(file, 0xEB, QByteArray(60'000, 'x'));
    const ImageMetadata metadata = metadataOf(file);
    EXPECT_EQ(metadata.orientation, 6);
    EXPECT_EQ(at(file, metadata.thumbnail), thumbnail);
}

TEST(ImageMetadataTest, FindsTheLargeThumbnailsOfMultiPictureFiles)
{
    const QByteArray vga = "a picture for VGA", fullHd = "a picture for full HD", other = "another view";
    const QByteArray file = multiPicture(photo(), {{0x020002, other}, {0x010002, fullHd}, {0x010001, vga}});
    EXPECT_EQ(at(file, metadataOf(file).preview), vga);
    const QByteArray larger = multiPicture(photo(), {{0x010002, fullHd}});
    EXPECT_EQ(at(larger, metadataOf(larger).preview), fullHd);
    EXPECT_TRUE(metadataOf(multiPicture(photo(), {{0x020002, other}, {0, other}})).preview.isEmpty());
}

TEST(ImageMetadataTest, LargeThumbnailsBehindTheEndOfTheFileAreNone)
{
    const QByteArray file = multiPicture(photo(), {{0x010001, "a picture for VGA"}});
    EXPECT_TRUE(metadataOf(file.chopped(1)).preview.isEmpty());
}

TEST(ImageMetadataTest, FindsAllPartsOfAProfile)
{
    const QByteArray name("ICC_PROFILE\0", 12);
    const QByteArray file = withSegment(withSegment(photo(), 0xE2, name + "\2\2second"), 0xE2, name + "\1\2first");
    const ImageMetadata metadata = metadataOf(file);
    ASSERT_EQ(metadata.profile.size(), 2u);
    EXPECT_EQ(at(file, metadata.profile[0]), name + "\1\2first");
}

TEST(ImageMetadataTest, ReadsWhatWebPFilesSay)
{
    const QByteArray structures[] = {exifStructure(8), QByteArray("Exif\0\0", 6) + exifStructure(8)};
    for (const QByteArray &exif : structures) {
        const QByteArray file = extendedWebp(QByteArray("RIFF\4\0\0\0WEBP", 12), {3, 3}, exif, "profile");
        const ImageMetadata metadata = webpMetadata(ImageInput(QByteArrayView(file)));
        EXPECT_EQ(metadata.orientation, 8);
        ASSERT_EQ(metadata.profile.size(), 1u);
        EXPECT_EQ(at(file, metadata.profile[0]), "profile");
    }
}

TEST(ImageMetadataTest, ReadsWhatTiffFilesSay)
{
    const QByteArray small =
        tiffHead() + tiffDirectory({{0x112, shortType, 1, 5}, {0x8773, undefinedType, 7, 38}}) + "profile";
    ImageMetadata metadata = tiffMetadata(ImageInput(QByteArrayView(small)));
    EXPECT_EQ(metadata.orientation, 5);
    ASSERT_EQ(metadata.profile.size(), 1u);
    EXPECT_EQ(at(small, metadata.profile[0]), "profile");

    // The form with offsets of 8 bytes.
    const auto order = ByteOrder::Little;
    const QByteArray large = "II" + number(43, 2, order) + number(8, 2, order) + number(0, 2) + number(16, 8, order)
        + number(1, 8, order) + number(0x112, 2, order) + number(3, 2, order) + number(1, 8, order)
        + number(7, 8, order) + number(0, 8);
    EXPECT_EQ(tiffMetadata(ImageInput(QByteArrayView(large))).orientation, 7);
}

TEST(ImageMetadataTest, TellsRawFilesOfCamerasFromOtherTiffFiles)
{
    const auto isRaw = [](const QByteArray &file) { return isRawTiff(ImageInput(QByteArrayView(file))); };
    EXPECT_FALSE(isRaw(tiffHead() + tiffDirectory({{0x106, shortType, 1, 2}})));
    EXPECT_TRUE(isRaw(tiffHead() + tiffDirectory({{0x106, shortType, 1, 32803}})));
    EXPECT_TRUE(isRaw(tiffHead() + tiffDirectory({{0xC612, 1, 4, 0x01040000}})));
    EXPECT_TRUE(
        isRaw(tiffHead() + tiffDirectory({{0x14A, longType, 1, 26}}) + tiffDirectory({{0x103, shortType, 1, 34713}})));
    EXPECT_TRUE(isRaw(tiffHead() + tiffDirectory({{0x106, shortType, 1, 2}}, 26)
                      + tiffDirectory({{0x106, shortType, 1, 34892}})));
    EXPECT_FALSE(isRaw(tiffHead() + tiffDirectory({{0x14A, longType, 100'000, 8}})));
    EXPECT_FALSE(isRaw("MM"));
}

TEST(ImageMetadataTest, DamageNeverLeadsOutOfTheFile)
{
    const QByteArray whole = multiPicture(withExif(photo(), exifStructure(6, thumbnail)), {{0x010001, "VGA"}});
    std::mt19937 random(4); // a fixed seed
    for (int round = 0; round < 20'000; ++round) {
        QByteArray file = whole;
        for (int flips = 0; flips < 4; ++flips)
            file[qsizetype(random() % 300)] = char(random());
        file.truncate(round % 2 == 0 ? file.size() : qsizetype(random() % size_t(file.size())));
        const ImageMetadata metadata = metadataOf(file);
        EXPECT_GE(metadata.orientation, 1);
        EXPECT_LE(metadata.orientation, 8);
        for (const ByteRange &place : {metadata.thumbnail, metadata.preview}) {
            EXPECT_GE(place.offset, 0);
            EXPECT_LE(place.offset + place.length, std::max<qint64>(file.size(), 0));
        }
    }
}
