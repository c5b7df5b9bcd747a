#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the property-list readers, and may change
//  from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <cstdlib>
#include <utility>

namespace platform {

/// The tape while it grows. Room is asked for in large steps, so that writing a row is one store.
class PropertyListRows
{
public:
    /// Makes room for so many more rows.
    /// @return whether there was enough memory.
    bool reserve(quint64 rows)
    {
        const quint64 wanted = m_count + rows;
        if (wanted <= m_capacity)
            return true;
        const quint64 capacity = qMax(wanted, m_capacity + m_capacity / 4);
        if (capacity > 0xFFFF'FFFF)
            return false;
        auto *grown = static_cast<PropertyListRow *>(std::realloc(m_rows.get(), capacity * sizeof(PropertyListRow)));
        if (!grown)
            return false;
        static_cast<void>(m_rows.release());
        m_rows.reset(grown);
        m_capacity = capacity;
        return true;
    }

    PropertyListRow &operator[](quint32 row) { return m_rows.get()[row]; }
    PropertyListRow operator[](quint32 row) const { return m_rows.get()[row]; }
    quint32 count() const { return quint32(m_count); }
    /// Appends a row to the room that was reserved.
    void append(PropertyListRow row) { m_rows.get()[m_count++] = row; }

    /// The rows as memory, which stays where it is until more room is asked for. Rows may be written behind
    /// the end; `setEnd` tells then where the end is.
    PropertyListRow *begin() { return m_rows.get(); }
    PropertyListRow *end() { return m_rows.get() + m_count; }
    void setEnd(const PropertyListRow *end) { m_count = quint64(end - m_rows.get()); }

    /// Hands the rows over, without the room that was not used.
    PropertyListDocument::RowBuffer take()
    {
        if (void *trimmed = std::realloc(m_rows.get(), qMax(m_count, quint64(1)) * sizeof(PropertyListRow))) {
            static_cast<void>(m_rows.release());
            m_rows.reset(static_cast<PropertyListRow *>(trimmed));
        }
        return std::move(m_rows);
    }

private:
    PropertyListDocument::RowBuffer m_rows;
    quint64 m_count = 0;
    quint64 m_capacity = 0;
};

} // namespace platform
