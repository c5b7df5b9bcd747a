#include "ZRCommon/MediaDatabase.h"

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
