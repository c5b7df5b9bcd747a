#include "Platform/Media/Color.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/ArchiveSamples.h"

using namespace platform;
using namespace archiveSamples;

namespace {

ArchiveClasses colorClasses()
{
    ArchiveClasses classes;
    Color::registerClass(classes);
    return classes;
}

QColor thereAndBack(const QColor &color)
{
    const ArchiveClasses known = colorClasses();
    KeyedArchiver archiver(known);
    encodeColor(archiver, color, "color");
    KeyedUnarchiver unarchiver(finished(archiver), known);
    return decodeColor(unarchiver, "color");
}

/// A colour as another program writes it.
QColor read(int space, const char *key, const QByteArray &components)
{
    const ArchiveClasses known = colorClasses();
    KeyedUnarchiver unarchiver(
        archive(record(2,
                       "<key>NSColorSpace</key><integer>" + QByteArray::number(space) + "</integer><key>" + key
                           + "</key><data>" + components.toBase64() + "</data>")
                + classRecord("NSColor")),
        known);
    return decodeColor(unarchiver, "root");
}

} // namespace

TEST(Color, ComesBackToTheLastBit)
{
    for (const QColor &color : {QColor(0, 0, 0), QColor(255, 255, 255), QColor(1, 127, 254), QColor(10, 20, 30, 40),
                                QColor(QRgba64::fromRgba64(1, 32767, 65534, 3)), QColor(0, 0, 0, 0)})
        EXPECT_EQ(thereAndBack(color), color) << qPrintable(color.name(QColor::HexArgb));
    EXPECT_FALSE(thereAndBack(QColor()).isValid());
    EXPECT_EQ(thereAndBack(QColor::fromHsv(120, 255, 255)), QColor(0, 255, 0));
}

TEST(Color, StandsAsThePlatformsOwn)
{
    const ArchiveClasses known = colorClasses();
    KeyedArchiver archiver(known);
    encodeColor(archiver, QColor(255, 0, 51), "color");
    const QByteArray bytes = finished(archiver);
    EXPECT_TRUE(bytes.contains("<string>NSColor</string>"));
    EXPECT_TRUE(bytes.contains("<key>NSColorSpace</key>\n\t\t\t<integer>1</integer>"));
    EXPECT_TRUE(bytes.contains(QByteArray("1 0 0.2\0", 8).toBase64()));
}

TEST(Color, ReadsRgbAndGrey)
{
    EXPECT_EQ(read(1, "NSRGB", QByteArray("1 0 0.2\0", 8)), QColor(255, 0, 51));
    EXPECT_EQ(read(2, "NSRGB", "0.2 0.4  0.6 0.8"), QColor(51, 102, 153, 204));
    EXPECT_EQ(read(1, "NSRGB", "1.5 -1 0"), QColor(255, 0, 0)) << "beyond what can be shown";
    EXPECT_EQ(read(3, "NSWhite", QByteArray("0.2\0", 4)), QColor(51, 51, 51));
    EXPECT_EQ(read(4, "NSWhite", "1 0.2"), QColor(255, 255, 255, 51));
}

TEST(Color, RefusesOtherForms)
{
    EXPECT_THROW(read(5, "NSCMYK", "1 0 0 0"), InvalidArchive);
    EXPECT_THROW(read(6, "NSRGB", "1 0 0"), InvalidArchive);
    EXPECT_THROW(read(1, "NSWhite", "1"), InvalidArchive);
    for (const char *components : {"", "1", "1 0", "1 0 0 1 1", "1 0 x", "nan 0 0", "inf 0 0", "1,0,0"})
        EXPECT_THROW(read(1, "NSRGB", components), InvalidArchive) << components;
}

TEST(Color, IsComparedByValue)
{
    const Color red(QColor(255, 0, 0));
    EXPECT_TRUE(red.isEqual(Color(Qt::red)));
    EXPECT_EQ(red.hash(), Color(Qt::red).hash());
    EXPECT_FALSE(red.isEqual(Color(Qt::blue)));
    EXPECT_FALSE(red.isEqual(Number(1)));
}

TEST(Color, IsWrittenOnlyWhereItIsRegistered)
{
    KeyedArchiver archiver;
    EXPECT_THROW(encodeColor(archiver, Qt::red, "color"), InternalInconsistency);
    Color::registerClass();
    encodeColor(archiver, Qt::red, "color");
    EXPECT_TRUE(archiver.finishEncoding());
}
