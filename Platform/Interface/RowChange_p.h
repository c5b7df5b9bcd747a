#pragma once

//
// Part of the array controller: how the objects that it shows become others, and which objects of a list are meant.
//

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Foundation/Object.h"

#include <QList>

#include <vector>

namespace platform {

/// Which objects of a list stand for the objects that were looked for.
struct ObjectMatches {
    /// For each object that was looked for, the index of the one that stands for it, -1 if there is none. No index
    /// is there twice: equal objects take equal ones in order.
    std::vector<qint64> indexes;
    /// All indexes that were found.
    IndexSet found;
};

enum class ObjectMatching {
    Equal, ///< What both stand for is the same (`Object::isEqual`).
    Identical, ///< Both are the very same object.
};

/// Looks for objects in a list. Null stands for nothing. Linear in the length of both lists.
ObjectMatches matchObjects(const QList<ObjectPointer> &objects, const QList<ObjectPointer> &list,
                           ObjectMatching matching);

/// How the rows of one list become those of another. Both begin with the same objects and end with the same objects;
/// the rows between are what changes.
class RowChange
{
public:
    /// Linear in the length of both lists.
    RowChange(const QList<ObjectPointer> &before, const QList<ObjectPointer> &after);

    enum class Kind {
        None,
        Insertion,
        Removal,
        Reorder, ///< Every object has its place in both lists.
        Replacement ///< Anything else.
    };
    Kind kind() const { return m_kind; }
    /// The first row that changes.
    qint64 first() const { return m_first; }
    /// The last row that is removed, or that is inserted.
    qint64 last() const;

    /// Where a row of the list before is in the list after it; -1 if it is gone.
    qint64 rowAfter(qint64 row) const;
    /// The same indexes on the same objects. Those behind the end of the list before stay behind the end.
    IndexSet indexesAfter(const IndexSet &indexes) const;

private:
    qint64 m_first = 0;
    qint64 m_removed = 0;
    qint64 m_inserted = 0;
    std::vector<qint64> m_placeOfRemoved; // among the inserted; -1 if gone
    Kind m_kind = Kind::None;
};

} // namespace platform
