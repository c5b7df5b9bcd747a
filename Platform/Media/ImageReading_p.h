#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QBuffer>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>

namespace platform {

/// Bytes for Qt's decoders: these seek to whatever a damaged file says, and QBuffer complains about that in the log.
class QuietBuffer : public QBuffer
{
public:
    using QBuffer::QBuffer;
    bool seek(qint64 position) override { return position <= size() && QBuffer::seek(position); }
};

inline qint64 pixelsOf(const QSize &size)
{
    return qint64(size.width()) * size.height();
}

/// How large the page is that the reader stands at, by its header; of GIF pictures, whose decoder tells of the frame
/// but takes memory for more, frame and canvas together. Invalid where no header tells.
/// @param bytes of the file
QSize decodedSize(const QImageReader &reader, QByteArrayView bytes);

/// Whether a page of that size may be decoded: it has pixels, at most so many together with those before it, and the
/// decoder's own limit, beyond which it would write a warning to the log, is kept. True for an invalid size; then the
/// decoder's own limit holds.
/// @param format of the pixels
bool isWithinLimits(const QSize &size, QImage::Format format, qint64 pixelsBefore, qint64 maximumPixels);

/// The picture turned as a decoder says that it has to be.
QImage upright(const QImage &image, QImageIOHandler::Transformations transformation);

} // namespace platform
