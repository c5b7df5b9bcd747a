#include "Platform/Media/JpegBitReader_p.h"

#include <QByteArray>

#include <random>

#include <gtest/gtest.h>

namespace {

using platform::ImageInput;
using platform::JpegBitReader;

QByteArray stuffed(const QByteArray &data)
{
    QByteArray result;
    for (const char byte : data) {
        result.append(byte);
        if (uchar(byte) == 0xFF)
            result.append('\0');
    }
    return result;
}

QByteArray randomData(qsizetype size, quint32 seed)
{
    std::mt19937 random(seed);
    QByteArray data(size, '\0');
    for (char &byte : data)
        byte = random() % 4 == 0 ? '\xFF' : char(random());
    return data;
}

// All bytes up to the end of the data, taken so many bits at a time.
QByteArray takeAll(JpegBitReader &reader, int bitsAtATime)
{
    QByteArray data;
    quint32 pending = 0;
    int count = 0;
    while (reader.prepare() && data.size() < 1'000'000) {
        platform::JpegBits bits = reader.bits();
        bits.refill();
        pending = pending << bitsAtATime | bits.take(bitsAtATime);
        reader.setBits(bits);
        for (count += bitsAtATime; count >= 8; count -= 8)
            data.append(char(pending >> (count - 8)));
    }
    return data;
}

TEST(JpegBitReader, TakesStuffedZerosOutAndStopsAtAMarker)
{
    for (const qsizetype size : {0, 1, 7, 8, 9, 1000, 32'767, 32'768, 65'535, 65'536, 200'000}) {
        const QByteArray data = randomData(size, quint32(size) + 1);
        const QByteArray file = "head" + stuffed(data) + "\xFF\xD9";
        for (const int bits : {1, 3, 8, 13}) {
            const ImageInput input{QByteArrayView(file)};
            JpegBitReader reader(input);
            reader.start(4);
            const QByteArray taken = takeAll(reader, bits);
            ASSERT_TRUE(taken.startsWith(data)) << size << " " << bits;
            ASSERT_LE(taken.size(), size + 2);
            ASSERT_EQ(taken.mid(size).count('\0'), taken.size() - size) << "zeros follow the data";
            reader.skipToMarker();
            ASSERT_EQ(reader.marker(), 0xD9);
            ASSERT_EQ(reader.markerOffset(), file.size() - 2);
        }
    }
}

TEST(JpegBitReader, FindsTheMarkerWhereverItWasLeft)
{
    const QByteArray file = stuffed(randomData(150'000, 5)) + "\xFF\xFF\xFF\xD0";
    const ImageInput input{QByteArrayView(file)};
    JpegBitReader reader(input);
    reader.start(0);
    reader.skipToMarker();
    EXPECT_EQ(reader.marker(), 0xD0);
    EXPECT_EQ(reader.markerOffset(), file.size() - 2);
}

TEST(JpegBitReader, EndsWithTheFileWhereNoMarkerIs)
{
    for (const char *end : {"", "\xFF"}) {
        const QByteArray file = stuffed(randomData(70'001, 6)) + end;
        const ImageInput input{QByteArrayView(file)};
        JpegBitReader reader(input);
        reader.start(0);
        EXPECT_TRUE(takeAll(reader, 8).startsWith(randomData(70'001, 6)));
        reader.skipToMarker();
        EXPECT_EQ(reader.marker(), 0);
    }
}

TEST(JpegBitReader, StartsAnewWithinAndOutsideOfWhatItHasRead)
{
    QByteArray file;
    std::vector<qsizetype> starts;
    for (int i = 0; i < 40; ++i) {
        starts.push_back(file.size());
        file += stuffed(QByteArray(i * 700, char('a' + i % 26))) + "\xFF\xD0";
    }
    const ImageInput input{QByteArrayView(file)};
    JpegBitReader reader(input);
    for (const int i : {0, 1, 2, 3, 20, 39, 5, 5, 39, 0}) {
        reader.start(starts[size_t(i)]);
        const QByteArray taken = takeAll(reader, 8);
        ASSERT_TRUE(taken.startsWith(QByteArray(i * 700, char('a' + i % 26)))) << i;
        ASSERT_LE(taken.size(), i * 700 + 2);
    }
}

} // namespace
