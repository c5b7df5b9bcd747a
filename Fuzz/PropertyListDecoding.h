#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <cstddef>

/// Decodes every value of a list in every way, and compares it with itself.
inline void decodeEverything(const platform::PropertyListView &value)
{
    using namespace platform;
    value.toString();
    value.plainUtf8();
    value.toInteger();
    value.toUnsigned();
    value.toReal();
    value.toBoolean();
    value.toDateTime();
    value.toReferenceSeconds();
    value.toUid();
    if (value.toUtf8().size() > value.storedLength())
        qFatal("a string is longer than its text");
    value.toData();
    qsizetype entries = 0;
    for (const PropertyListView element : value.elements()) {
        decodeEverything(element);
        ++entries;
    }
    for (const auto &entry : value.entries()) {
        const QByteArray key = entry.utf8Key();
        // Looking up every key of a large dictionary would take too long.
        if (entries < 100 && value.value(QUtf8StringView(key.data(), key.size())).isNull())
            qFatal("a key is not found");
        decodeEverything(entry.value());
        ++entries;
    }
    if (entries != value.count())
        qFatal("a container counts wrong");
}

/// What every reader of property lists must do with any input: tell where an error stands, or give a list that can be
/// decoded and written.
inline void judge(const platform::Result<platform::PropertyListValue> &list, std::size_t size)
{
    if (!list) {
        if (list.error().byteOffset < 0 || list.error().byteOffset > qint64(size))
            qFatal("an error without its place");
        return;
    }
    constexpr qsizetype Bound = 1 << 20; // a few bytes may expand to millions of values
    if (list.value().memoryUse() > Bound)
        return;
    decodeEverything(list.value());
    if (const auto xml = platform::PropertyList::writeXml(list.value().toVariant()); xml && xml.value().isEmpty())
        qFatal("a list was written as nothing");
}
