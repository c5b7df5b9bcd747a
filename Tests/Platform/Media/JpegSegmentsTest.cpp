#include "Platform/Media/JpegSegments_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

using namespace platform;
using testSupport::jpegSegment;

namespace {

QList<int> markersOf(const QByteArray &file)
{
    const ImageInput input{QByteArrayView(file)};
    JpegSegments segments(input);
    QList<int> markers;
    while (const auto segment = segments.next())
        markers.append(segment->marker);
    return markers;
}

} // namespace

TEST(JpegSegmentsTest, KnowsWhichSegmentsBeginAFrame)
{
    const QList<int> frames = {0xC0, 0xC1, 0xC2, 0xC3, 0xC5, 0xC6, 0xC7, 0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF};
    for (int marker = 0; marker < 256; ++marker)
        EXPECT_EQ((JpegSegment{uchar(marker), 0, 0}.startsFrame()), frames.contains(marker)) << marker;
}

TEST(JpegSegmentsTest, PassesOverWhatStandsAloneOrBetweenSegments)
{
    const QByteArray file = QByteArray("\xFF\xD8") + jpegSegment(0xE0, "first") + "between\xFF" + QByteArray(1, '\0')
        + "\xFF\x01\xFF\xD3\xFF\xFF\xFF" + jpegSegment(0xFE, "second") + "\xFF\xD9" + jpegSegment(0xE1, "behind");
    EXPECT_EQ(markersOf(file), QList<int>({0xE0, 0xFE}));
}

TEST(JpegSegmentsTest, EndsWhereTheFileDoes)
{
    const QByteArray file = QByteArray("\xFF\xD8") + jpegSegment(0xE0, "first") + jpegSegment(0xE1, "second");
    for (qsizetype size = 0; size <= file.size(); ++size) {
        const ImageInput input{QByteArrayView(file).first(size)};
        JpegSegments segments(input);
        while (const auto segment = segments.next())
            EXPECT_LE(segment->offset, size);
    }
    EXPECT_EQ(markersOf(file.first(9)), QList<int>({0xE0})); // it reaches behind the end
    EXPECT_TRUE(markersOf(file.first(5)).isEmpty());
    EXPECT_TRUE(markersOf(QByteArray("\xFF\xD8\xFF\xE0\x00\x01", 6)).isEmpty()); // shorter than its own length
}

TEST(JpegSegmentsTest, FindsTheEndOfAScanBehindStuffedZerosAndRestarts)
{
    const QByteArray data = QByteArray("a\xFF\0b\xFF\xD0", 6) + "c\xFF\xD7" + QByteArray(40'000, 'd');
    const QByteArray file = data + "\xFF" + jpegSegment(0xDA, "next");
    const ImageInput input{QByteArrayView(file)};
    JpegSegments segments(input);
    segments.skipScan();
    EXPECT_GE(segments.offset(), data.size());
    const auto next = segments.next();
    ASSERT_TRUE(next);
    EXPECT_EQ(next->marker, 0xDA);
    EXPECT_EQ(segments.content(*next), "next");
    segments.skipScan();
    EXPECT_EQ(segments.offset(), file.size());
}
