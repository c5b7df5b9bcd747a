#include "Platform/Foundation/ArchivedObject.h"

#include "Platform/Foundation/KeyedArchive/KeyedArchiveReader_p.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <new>

namespace platform {

ObjectPointer ArchivedObject::value(const QString &key) const
{
    ObjectPointer found;
    for (const Entry &entry : m_entries) {
        if (entry.key == key)
            found = entry.value;
    }
    return found;
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
        QList<ArchivedObject::Entry> entries;
        for (const auto &entry : reader.top().entries())
            entries.append({entry.key(), reader.object(entry.value())});
        auto top = std::make_shared<ArchivedObject>(QString(), QStringList());
        top->setEntries(std::move(entries));
        contents.m_top = std::move(top);
        return contents;
    } catch (const InvalidArchive &invalid) {
        return invalid.error();
    } catch (const std::bad_alloc &) {
        return Error{ErrorCode::TooLarge, QStringLiteral("not enough memory for the archive"), -1, {}};
    }
}

} // namespace platform
