#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/ImageInput_p.h"

#include <QByteArray>

#include <optional>

namespace platform {

/// The markers that are told apart (ITU-T T.81, table B.1).
enum JpegMarker : uchar {
    StartOfBaselineFrame = 0xC0,
    StartOfExtendedFrame = 0xC1,
    StartOfProgressiveFrame = 0xC2,
    HuffmanTables = 0xC4,
    ArithmeticConditioning = 0xCC,
    LastStartOfFrame = 0xCF,
    FirstRestart = 0xD0,
    LastRestart = 0xD7,
    StartOfImage = 0xD8,
    EndOfImage = 0xD9,
    StartOfScan = 0xDA,
    QuantizationTables = 0xDB,
    RestartInterval = 0xDD,
    FirstApplicationData = 0xE0,
    ColorProfileData = 0xE2, ///< Application data 2: parts of an ICC profile, among others.
    AdobeData = 0xEE, ///< Application data 14.
    LastApplicationData = 0xEF,
    Comment = 0xFE,
};

/// A marker and what follows it.
struct JpegSegment {
    uchar marker = 0;
    qint64 offset = 0; ///< Where the content begins, behind the length.
    qsizetype length = 0; ///< Of the content, in bytes; 0 for markers that stand alone.

    /// Whether it begins a frame, which states the size of the picture.
    bool startsFrame() const;
};

/// Walks the segments of a JPEG file, reading no more than their heads. Whatever stands between segments is passed
/// over.
class JpegSegments
{
public:
    /// @param offset where to begin; 0 for the start of the file, where the marker that starts an image is expected
    explicit JpegSegments(const ImageInput &input, qint64 offset = 0)
        : m_input(input)
        , m_offset(offset)
    { }

    /// The next segment; nothing at the end of the file, or of the image. A segment that reaches behind the end of the
    /// file is the last one.
    std::optional<JpegSegment> next();
    /// The content of a segment, or as much of it as is there.
    QByteArray content(const JpegSegment &segment) const { return m_input.read(segment.offset, segment.length); }
    /// Where the next segment is looked for.
    qint64 offset() const { return m_offset; }
    /// Goes on at another place: behind the entropy-coded data of a scan.
    void seek(qint64 offset) { m_offset = offset; }
    /// Passes over entropy-coded data, up to the next marker that does not belong to it.
    void skipScan();

private:
    qint64 findMarker(bool isInScan) const;

    const ImageInput &m_input;
    qint64 m_offset;
};

} // namespace platform
