#include "Platform/Media/PngFile_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

using namespace platform;
using namespace testSupport;

namespace {

QByteArray png()
{
    return pngSignature + pngHeader(2, 1, 8, 2) + pngChunk("IDAT", zlibPacked(QByteArray("\0\1\2\3\4\5\6", 7)))
        + pngChunk("IEND", {});
}

QString failureOf(const QByteArray &file)
{
    const auto result = PngFile::read(file);
    return result ? QString() : result.error().toString();
}

} // namespace

TEST(PngFileTest, KeepsWhatThePictureIsMadeOf)
{
    const QByteArray chatty = withPngChunk(withPngChunk(png(), "tEXt", "Comment\0hello"), "zTXt", "x");
    const auto file = PngFile::read(chatty);
    ASSERT_TRUE(file);
    EXPECT_EQ(file.value().picture, png());
    EXPECT_EQ(QImage::fromData(file.value().picture), QImage::fromData(png()));
}

TEST(PngFileTest, UnpacksTheProfile)
{
    const QByteArray profile(100'000, 'p');
    const QByteArray packed = QByteArray("name\0\0", 6) + zlibPacked(profile);
    const auto file = PngFile::read(withPngChunk(png(), "iCCP", packed));
    ASSERT_TRUE(file);
    EXPECT_EQ(file.value().profile, profile);
    EXPECT_FALSE(file.value().picture.contains("iCCP"));
}

TEST(PngFileTest, AProfileThatCannotBeUnpackedIsNone)
{
    const QByteArray contents[] = {"",
                                   "name",
                                   QByteArray("name\0", 5),
                                   QByteArray("name\0\1zzzz", 10),
                                   QByteArray("name\0\0zzzz", 10),
                                   QByteArray("name\0\0", 6) + zlibPacked(QByteArray(64 * 1024 * 1024, 'b'))};
    for (const QByteArray &content : contents) {
        const auto file = PngFile::read(withPngChunk(png(), "iCCP", content));
        ASSERT_TRUE(file);
        EXPECT_TRUE(file.value().profile.isEmpty());
    }
}

TEST(PngFileTest, ReadsTheOrientation)
{
    EXPECT_EQ(PngFile::read(withPngChunk(png(), "eXIf", exifStructure(6))).value().orientation, 6);
    EXPECT_EQ(PngFile::read(withPngChunk(png(), "eXIf", "nonsense")).value().orientation, 1);
    QByteArray behind = png();
    behind.insert(behind.size() - 12, pngChunk("eXIf", exifStructure(3)));
    EXPECT_EQ(PngFile::read(behind).value().orientation, 3);
}

TEST(PngFileTest, StatementsAboutColorsStayWhenNoProfileDescribesThem)
{
    const QByteArray gamma = number(100'000, 4);
    const auto keeps = [](const QByteArray &file, const char *type) {
        return PngFile::read(file).value().picture.contains(type);
    };
    EXPECT_TRUE(keeps(withPngChunk(png(), "gAMA", gamma), "gAMA"));
    EXPECT_FALSE(keeps(withPngChunk(withPngChunk(png(), "gAMA", gamma), "sRGB", QByteArray(1, '\0')), "gAMA"));
    EXPECT_FALSE(keeps(withPngChunk(png(), "gAMA", number(0, 4)), "gAMA"));
    QByteArray points;
    for (const int value : {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000})
        points += number(quint64(value), 4);
    const QByteArray both = withPngChunk(withPngChunk(png(), "gAMA", gamma), "cHRM", points);
    EXPECT_TRUE(keeps(both, "cHRM"));
    EXPECT_EQ(QImage::fromData(PngFile::read(both).value().picture).size(), QSize(2, 1));
    for (const qsizetype place : {qsizetype(0), qsizetype(4), qsizetype(28)}) {
        QByteArray impossible = points;
        impossible.replace(place, 4, number(place == 4 ? 0 : 90'000, 4));
        if (place == 28)
            impossible.replace(24, 4, number(20'000, 4));
        EXPECT_FALSE(keeps(withPngChunk(withPngChunk(png(), "gAMA", gamma), "cHRM", impossible), "cHRM")) << place;
    }
}

TEST(PngFileTest, SaysWhatIsWrongAndWhere)
{
    QByteArray damaged = png();
    damaged[20] = 'x';
    EXPECT_EQ(failureOf(damaged), QStringLiteral("byte 8: the checksum of a PNG chunk is wrong"));
    EXPECT_EQ(failureOf(png().first(5)), QStringLiteral("byte 5: the PNG file is cut off"));
    EXPECT_EQ(failureOf(png().first(40)), QStringLiteral("byte 40: the PNG file is cut off"));
    const QString misplaced = QStringLiteral("byte 8: a PNG chunk is not valid where it stands");
    const QByteArray headers[] = {pngHeader(0, 1, 8, 2),   pngHeader(1, 0, 8, 2),  pngHeader(0x80000000, 1, 8, 2),
                                  pngHeader(1, 1, 3, 0),   pngHeader(1, 1, 16, 3), pngHeader(1, 1, 4, 2),
                                  pngHeader(1, 1, 8, 5),   pngHeader(1, 1, 8, 1),  pngChunk("IHDR", "short"),
                                  pngChunk("IDAT", "data")};
    for (const QByteArray &header : headers)
        EXPECT_EQ(failureOf(pngSignature + header + png().sliced(33)), misplaced);
    const QByteArray header = pngSignature + pngHeader(2, 1, 8, 3);
    const QByteArray wrong[] = {header + pngChunk("IDAT", "no palette"),
                                header + pngChunk("PLTE", "xx"),
                                header + pngChunk("PLTE", QByteArray(771, 'c')),
                                header + pngChunk("IEND", {}),
                                header + pngHeader(2, 1, 8, 3),
                                header + pngChunk("ABCD", "unknown")};
    for (const QByteArray &file : wrong)
        EXPECT_EQ(failureOf(file), QStringLiteral("byte 33: a PNG chunk is not valid where it stands"));
}

TEST(PngFileTest, APictureThatIsCutOffWithinItsDataIsRefused)
{
    const QByteArray begin = pngSignature + pngHeader(2, 1, 8, 0) + pngChunk("IDAT", "some of the data");
    const QByteArray file = begin + pngChunk("IDAT", "and the rest").chopped(6);
    EXPECT_EQ(failureOf(file), QStringLiteral("byte %1: the PNG file is cut off").arg(file.size()));
}

TEST(PngFileTest, APictureThatIsThereIsReadWhateverBecameOfTheEnd)
{
    const qsizetype end = png().size() - 12;
    const QByteArray files[] = {png().first(end), png().first(end + 5), png().first(end) + number(999, 4) + "tEXtx"};
    for (const QByteArray &file : files) {
        const auto read = PngFile::read(file);
        ASSERT_TRUE(read);
        EXPECT_EQ(read.value().picture, png());
    }
}
