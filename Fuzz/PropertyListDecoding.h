#pragma once

#include "Platform/Foundation/PropertyList.h"

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
