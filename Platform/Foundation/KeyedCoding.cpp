#include "Platform/Foundation/KeyedCoding.h"

#include <utility>

namespace platform {

InvalidArchive::InvalidArchive(Error error)
    : m_error(std::move(error))
    , m_what(m_error.toString().toUtf8())
{ }

ArchiveClasses &ArchiveClasses::shared()
{
    static ArchiveClasses classes;
    return classes;
}

void ArchiveClasses::add(const std::type_info &type, Entry entry)
{
    m_names.insert(entry.name, type);
    m_classes.insert_or_assign(type, std::move(entry));
}

void ArchiveClasses::mapClassName(const QString &oldName, const QString &name)
{
    m_mappedNames.insert(oldName, name);
}

const ArchiveClasses::Entry *ArchiveClasses::classNamed(const QString &name) const
{
    const auto type = m_names.constFind(m_mappedNames.value(name, name));
    return type != m_names.cend() ? &m_classes.at(*type) : nullptr;
}

const ArchiveClasses::Entry *ArchiveClasses::classOfObject(const Object &object) const
{
    const auto entry = m_classes.find(typeid(object));
    return entry != m_classes.cend() ? &entry->second : nullptr;
}

} // namespace platform
