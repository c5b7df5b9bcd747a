#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListIndex.h"
#include "Platform/Foundation/Result.h"

#include <QLatin1String>

#include <functional>
#include <memory>
#include <optional>

/// The database file of another media program, read: a property list whose root is a dictionary, with an index into its
/// one large table of items (a library's tracks, an album database's photos). Immutable and shared: any thread.
struct MediaDatabase {
    /// What tells the databases of one program from other property lists.
    struct Kind {
        QLatin1String list; ///< Key of an array in the root: playlists, albums.
        QLatin1String items; ///< Key of the table in the root.
        QLatin1String neitherReason; ///< Of the error where the root has content, but neither of the two.
    };

    platform::PropertyListValue
        dictionary; ///< Null when nothing could be read: it then answers everything with nothing.
    platform::PropertyListIndex items;
    std::optional<platform::Error> error; ///< Why nothing could be read.

    /// Reads a file, which may throw std::bad_alloc, or what `accept` throws. What cannot be read, and what is no
    /// database of the kind, gives a database without content and its error. An empty dictionary is an empty database.
    /// @param accept leaves items out of the index; all are taken when it is empty
    static std::shared_ptr<const MediaDatabase>
    read(const QString &path, const Kind &kind,
         const std::function<bool(const platform::PropertyListView &)> &accept = {});
    /// What the call gives; when it throws anything at all, a database without content and an error. For a thread on
    /// which nothing may be thrown, and whose result is waited for.
    /// @param path the file that the call reads
    static std::shared_ptr<const MediaDatabase>
    guarded(const QString &path, const std::function<std::shared_ptr<const MediaDatabase>()> &call) noexcept;
};
