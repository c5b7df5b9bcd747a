#include "Platform/Foundation/ArchivedObject.h"

#include "Platform/Foundation/KeyedArchive/KeyedArchiveReader_p.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <algorithm>
#include <new>

namespace platform {

ObjectPointer ArchivedObject::value(const QString &key) const
{
    const auto found =
        std::find_if(m_entries.cbegin(), m_entries.cend(), [&key](const Entry &entry) { return entry.key == key; });
    return found != m_entries.cend() ? found->value : nullptr;
}

Result<ArchiveContents> ArchiveContents::read(const QString &path)
{
    auto contents = decoded(PropertyList::read(path));
    if (contents)
        return contents;
    Error error = contents.error();
    error.path = path;
    return error;
}

Result<ArchiveContents> ArchiveContents::parse(QByteArrayView bytes)
{
    return decoded(PropertyList::parse(bytes));
}

Result<ArchiveContents> ArchiveContents::decoded(const Result<PropertyListValue> &list)
{
    if (!list)
        return list.error();
    try {
        static const ArchiveClasses none;
        ArchiveContents contents;
        contents.m_unarchiver =
            std::make_shared<KeyedUnarchiver>(list.value(), none, KeyedUnarchiver::UnknownClasses::Keep);
        KeyedArchiveReader &reader = *contents.m_unarchiver->m_reader;
        auto top = std::make_shared<ArchivedObject>(QString(), QStringList());
        top->setEntries(reader.entries(reader.top()));
        contents.m_top = std::move(top);
        return contents;
    } catch (const InvalidArchive &invalid) {
        return invalid.error();
    } catch (const std::bad_alloc &) {
        return Error{ErrorCode::TooLarge, QStringLiteral("not enough memory for the archive"), -1, {}};
    }
}

} // namespace platform
