#include "ZRCommon/MediaDatabase_p.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <new>

using platform::PropertyListIndex;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

/// Why the list is no database of the kind; nothing when it is one.
std::optional<QString> mismatch(const PropertyListView &root, const MediaDatabase::Kind &kind)
{
    if (!root.isDictionary())
        return QStringLiteral("the property list is no dictionary");
    if (root.isEmpty() || root.value(kind.list).isArray() || root.value(kind.items).isDictionary())
        return std::nullopt;
    return QString(kind.neitherReason);
}

} // namespace

std::shared_ptr<const MediaDatabase> MediaDatabase::read(const QString &path, const Kind &kind,
                                                         const std::function<bool(const PropertyListView &)> &accept)
{
    auto database = std::make_shared<MediaDatabase>();
    platform::Result<PropertyListValue> list = platform::PropertyList::read(path);
    if (!list) {
        database->error = list.error();
    } else if (const auto reason = mismatch(list.value(), kind)) {
        database->error = platform::Error{platform::ErrorCode::Malformed, *reason, -1, path};
    } else {
        database->dictionary = std::move(list).value();
        database->items = PropertyListIndex(database->dictionary.value(kind.items), accept);
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
