#include "Platform/Media/ImageInput_p.h"

#include <algorithm>
#include <cstring>

namespace platform {

qint64 ImageInput::size() const
{
    if (const auto *file = std::get_if<RegularFile>(&m_source))
        return file->size();
    return std::get<QByteArrayView>(m_source).size();
}

qint64 ImageInput::read(qint64 offset, char *bytes, qint64 maximum) const
{
    if (offset < 0 || maximum <= 0)
        return 0;
    if (const auto *memory = std::get_if<QByteArrayView>(&m_source)) {
        const qint64 count = std::min<qint64>(maximum, std::max<qint64>(memory->size() - offset, 0));
        if (count > 0)
            std::memcpy(bytes, memory->data() + offset, size_t(count));
        return count;
    }
    const auto &file = std::get<RegularFile>(m_source);
    qint64 length = 0;
    while (length < maximum) {
        const qint64 count = file.readAt(offset + length, bytes + length, maximum - length);
        if (count <= 0)
            break;
        length += count;
    }
    return length;
}

QByteArray ImageInput::read(qint64 offset, qint64 maximum) const
{
    const qint64 there = std::min(maximum, size() - offset);
    if (offset < 0 || there <= 0)
        return {};
    QByteArray bytes(there, Qt::Uninitialized);
    bytes.truncate(read(offset, bytes.data(), there));
    return bytes;
}

} // namespace platform
