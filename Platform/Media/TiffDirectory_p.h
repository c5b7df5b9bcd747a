#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/ImageInput_p.h"

#include <optional>
#include <vector>

namespace platform {

/// A part of a file.
struct ByteRange {
    qint64 offset = 0;
    qint64 length = 0;

    bool isEmpty() const { return length <= 0; }
};

/// The tags that are looked at (TIFF 6.0; EXIF 2.3, JEITA CP-3451C; TIFF/EP, ISO 12234-2; DNG 1.4; CIPA DC-007 for the
/// entries of multi-picture files).
enum TiffTag : quint16 {
    CompressionTag = 0x0103,
    PhotometricTag = 0x0106,
    OrientationTag = 0x0112,
    SubdirectoriesTag = 0x014A,
    ThumbnailOffsetTag = 0x0201, ///< JPEGInterchangeFormat
    ThumbnailLengthTag = 0x0202,
    ProfileTag = 0x8773,
    PictureEntriesTag = 0xB002, ///< MPEntry
    DngVersionTag = 0xC612,
};

/// One entry of a directory.
struct TiffEntry {
    quint16 tag = 0;
    quint16 type = 0;
    quint64 count = 0; ///< Of values.
    qint64 offset = 0; ///< Where the entry itself stands.
    qint64 valueOffset = 0; ///< Where the values stand, within the entry when they fit.
};

/// The directories of a TIFF structure, as files of that format are made of and as EXIF and others nest them. Every
/// offset and count is checked by reading only what is there; a directory that ends before its time has the entries
/// that are there. Either byte order; the form with offsets of 8 bytes, too.
class TiffStructure
{
public:
    /// @param input begins with the structure, and outlives it
    static std::optional<TiffStructure> at(const ImageInput &input);

    struct Directory {
        std::vector<TiffEntry> entries;
        qint64 firstEntry = 0; ///< Where the entries begin, one behind the other.
        qint64 next = 0; ///< Offset of the next directory, 0 for the last one.
    };
    /// Offset of the first directory.
    qint64 firstDirectory() const { return m_firstDirectory; }
    Directory directory(qint64 offset) const;

    /// The first value of the first entry with the tag, whatever kind of whole number it is; nothing where there is no
    /// such entry, or one of another type.
    std::optional<qint64> number(const Directory &directory, TiffTag tag) const;
    /// All of them, up to a number.
    std::vector<qint64> numbers(const Directory &directory, TiffTag tag, qsizetype maximum) const;
    /// Where in the input the bytes of an entry of type BYTE or UNDEFINED stand; empty where they reach out of it.
    ByteRange bytes(const Directory &directory, TiffTag tag) const;
    /// The first entry with the tag; null where there is none that holds whole numbers or bytes.
    static const TiffEntry *entry(const Directory &directory, TiffTag tag);

    quint16 word(qint64 offset) const { return quint16(integer(offset, 2)); }
    quint32 longWord(qint64 offset) const { return quint32(integer(offset, 4)); }
    /// Writes into the bytes of a structure that begins with them.
    void writeWord(QByteArray &bytes, qint64 offset, quint16 value) const;
    /// In bytes.
    int entrySize() const { return m_isLarge ? 20 : 12; }

private:
    explicit TiffStructure(const ImageInput &input)
        : m_input(&input)
    { }
    quint64 integer(qint64 offset, int size) const;
    quint64 decoded(const char *bytes, int size) const;

    const ImageInput *m_input;
    qint64 m_firstDirectory = 0;
    bool m_isLittleEndian = false;
    bool m_isLarge = false;
};

} // namespace platform
