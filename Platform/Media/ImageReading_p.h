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

/// Whether the page that the reader stands at may be decoded, judged by its header: it has pixels, at most so many
/// together with those before it, and the decoder's own limit, beyond which it would write a warning to the log, is
/// kept. True where no header tells a size; then the decoder's own limit holds.
bool isWithinLimits(const QImageReader &reader, qint64 pixelsBefore, qint64 maximumPixels);

/// The picture turned as a decoder says that it has to be.
QImage upright(const QImage &image, QImageIOHandler::Transformations transformation);

} // namespace platform
