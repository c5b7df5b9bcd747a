#include "Platform/Media/TiffDirectory_p.h"

#include <QtEndian>

#include <algorithm>

namespace platform {
namespace {

/// Directories of cameras have some dozens.
constexpr qint64 maximumEntries = 1024;

/// Types of values (TIFF 6.0, section 2; 13 and 16 of later supplements).
enum Type : quint16 { Byte = 1, Short = 3, Long = 4, Undefined = 7, Directory32 = 13, Long64 = 16, Directory64 = 18 };

/// Of a value in bytes; 0 for types that hold no whole number.
int sizeOf(quint16 type)
{
    switch (type) {
    case Byte:
    case Undefined:
        return 1;
    case Short:
        return 2;
    case Long:
    case Directory32:
        return 4;
    case Long64:
    case Directory64:
        return 8;
    default:
        return 0;
    }
}

} // namespace

std::optional<TiffStructure> TiffStructure::at(const ImageInput &input)
{
    char head[16];
    const qint64 length = input.read(0, head, sizeof head);
    const QByteArrayView order(head, 2);
    if (length < 8 || (order != "II" && order != "MM"))
        return std::nullopt;
    TiffStructure structure(input);
    structure.m_isLittleEndian = order == "II";
    structure.m_isLarge = structure.decoded(head + 2, 2) == 43;
    if (!structure.m_isLarge)
        structure.m_firstDirectory = qint64(structure.decoded(head + 4, 4));
    else if (length == sizeof head && structure.decoded(head + 4, 2) == 8)
        structure.m_firstDirectory = qint64(structure.decoded(head + 8, 8));
    else
        return std::nullopt;
    return structure;
}

quint64 TiffStructure::decoded(const char *bytes, int size) const
{
    switch (size) {
    case 1:
        return uchar(*bytes);
    case 2:
        return m_isLittleEndian ? qFromLittleEndian<quint16>(bytes) : qFromBigEndian<quint16>(bytes);
    case 4:
        return m_isLittleEndian ? qFromLittleEndian<quint32>(bytes) : qFromBigEndian<quint32>(bytes);
    default:
        return m_isLittleEndian ? qFromLittleEndian<quint64>(bytes) : qFromBigEndian<quint64>(bytes);
    }
}

// 0 for what is not there.
quint64 TiffStructure::integer(qint64 offset, int size) const
{
    char bytes[8];
    if (offset < 0 || offset > m_input->size() || m_input->read(offset, bytes, size) < size)
        return 0;
    return decoded(bytes, size);
}

TiffStructure::Directory TiffStructure::directory(qint64 offset) const
{
    const int countSize = m_isLarge ? 8 : 2, offsetSize = m_isLarge ? 8 : 4;
    Directory result;
    if (offset <= 0 || offset > m_input->size())
        return result;
    const quint64 count = integer(offset, countSize);
    result.firstEntry = offset + countSize;
    const qint64 kept = qint64(std::min<quint64>(count, maximumEntries));
    const QByteArray bytes = m_input->read(offset + countSize, kept * entrySize() + offsetSize);
    for (qint64 i = 0; i < kept && (i + 1) * entrySize() <= bytes.size(); ++i) {
        const char *const from = bytes.constData() + i * entrySize();
        TiffEntry each;
        each.tag = quint16(decoded(from, 2));
        each.type = quint16(decoded(from + 2, 2));
        each.count = decoded(from + 4, offsetSize);
        each.offset = result.firstEntry + i * entrySize();
        const quint64 size = quint64(sizeOf(each.type));
        if (size == 0)
            continue;
        each.valueOffset = each.count <= quint64(offsetSize) / size
            ? each.offset + 4 + offsetSize
            : qint64(std::min<quint64>(decoded(from + 4 + offsetSize, offsetSize), quint64(m_input->size())));
        result.entries.push_back(each);
    }
    if (kept == qint64(count) && bytes.size() == kept * entrySize() + offsetSize)
        result.next = qint64(
            std::min<quint64>(decoded(bytes.constData() + kept * entrySize(), offsetSize), quint64(m_input->size())));
    return result;
}

const TiffEntry *TiffStructure::entry(const Directory &directory, TiffTag tag)
{
    const auto found = std::find_if(directory.entries.begin(), directory.entries.end(),
                                    [tag](const TiffEntry &each) { return each.tag == tag; });
    return found == directory.entries.end() ? nullptr : &*found;
}

void TiffStructure::writeWord(QByteArray &bytes, qint64 offset, quint16 value) const
{
    if (m_isLittleEndian)
        qToLittleEndian(value, bytes.data() + offset);
    else
        qToBigEndian(value, bytes.data() + offset);
}

std::vector<qint64> TiffStructure::numbers(const Directory &directory, TiffTag tag, qsizetype maximum) const
{
    std::vector<qint64> result;
    const TiffEntry *const found = entry(directory, tag);
    if (!found || found->count == 0)
        return result;
    const int size = sizeOf(found->type);
    const QByteArray bytes =
        m_input->read(found->valueOffset, qint64(std::min<quint64>(found->count, quint64(maximum))) * size);
    for (qsizetype place = 0; place + size <= bytes.size(); place += size)
        result.push_back(qint64(decoded(bytes.constData() + place, size)));
    return result;
}

std::optional<qint64> TiffStructure::number(const Directory &directory, TiffTag tag) const
{
    const std::vector<qint64> values = numbers(directory, tag, 1);
    return values.empty() ? std::nullopt : std::optional(values[0]);
}

ByteRange TiffStructure::bytes(const Directory &directory, TiffTag tag) const
{
    const TiffEntry *const found = entry(directory, tag);
    if (!found || sizeOf(found->type) != 1)
        return {};
    const qint64 offset = found->valueOffset;
    if (offset > m_input->size() || found->count > quint64(m_input->size() - offset))
        return {};
    return {offset, qint64(found->count)};
}

} // namespace platform
