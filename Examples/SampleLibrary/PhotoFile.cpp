#include "PhotoFile.h"

#include <QDataStream>
#include <QIODevice>
#include <QTransform>

QImage turnedForOrientation(const QImage &image, int orientation)
{
    // What a reader does for each orientation, undone.
    switch (orientation) {
    case 2:
        return image.mirrored(true, false);
    case 3:
        return image.mirrored(true, true);
    case 4:
        return image.mirrored(false, true);
    case 5:
        return image.transformed(QTransform().rotate(-90)).mirrored(false, true);
    case 6:
        return image.transformed(QTransform().rotate(-90));
    case 7:
        return image.transformed(QTransform().rotate(90)).mirrored(false, true);
    case 8:
        return image.transformed(QTransform().rotate(90));
    default:
        return image;
    }
}

QByteArray withExif(const QByteArray &jpeg, int orientation, const QByteArray &takenAt)
{
    constexpr quint16 orientationTag = 0x0112;
    constexpr quint16 dateTimeTag = 0x0132;
    constexpr quint16 asciiType = 2;
    constexpr quint16 shortType = 3;
    constexpr quint32 directoryOffset = 8;
    constexpr quint32 valuesOffset = directoryOffset + 2 + 2 * 12 + 4;

    QByteArray tiff;
    QDataStream out(&tiff, QIODevice::WriteOnly); // big-endian, as the mark "MM" says
    out.writeRawData("MM", 2);
    out << quint16(42) << directoryOffset << quint16(2);
    out << orientationTag << shortType << quint32(1) << quint16(orientation) << quint16(0);
    out << dateTimeTag << asciiType << quint32(takenAt.size() + 1) << valuesOffset;
    out << quint32(0);
    tiff += takenAt + '\0';

    QByteArray segment;
    QDataStream head(&segment, QIODevice::WriteOnly);
    head << quint16(0xFFE1) << quint16(2 + 6 + tiff.size());
    segment += QByteArray("Exif\0\0", 6) + tiff;
    return jpeg.first(2) + segment + jpeg.sliced(2);
}
