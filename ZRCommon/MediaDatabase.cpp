#include "ZRCommon/MediaDatabase_p.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <new>

using platform::PropertyListIndex;
using platform::PropertyListValue;
using platform::PropertyListView;

std::shared_ptr<const MediaDatabase> MediaDatabase::read(const QString &path, QAnyStringView itemsKey,
                                                         const std::function<bool(const PropertyListView &)> &accept)
{
    auto database = std::make_shared<MediaDatabase>();
    platform::Result<PropertyListValue> list = platform::PropertyList::read(path);
    if (!list) {
        database->error = list.error();
    } else if (!list.value().isDictionary()) {
        database->error = platform::Error{platform::ErrorCode::Malformed,
                                          QStringLiteral("the property list is no dictionary"), -1, path};
    } else {
        database->dictionary = std::move(list).value();
        database->items = PropertyListIndex(database->dictionary.value(itemsKey), accept);
    }
    return database;
}

std::shared_ptr<const MediaDatabase>
MediaDatabase::guarded(const QString &path, const std::function<std::shared_ptr<const MediaDatabase>()> &call) noexcept
{
    QString reason = QStringLiteral("reading it was broken off");
    try {
        return call();
    } catch (const std::bad_alloc &) {
        reason = QStringLiteral("there is not enough memory to read it");
    } catch (...) {
        // Why is not known in general.
    }
    auto database = std::make_shared<MediaDatabase>();
    database->error = platform::Error{platform::ErrorCode::NotReadable, reason, -1, path};
    return database;
}
