#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "ZRCommon/SongList.h"

#include <QVariant>

#include <gtest/gtest.h>

namespace testSupport {

/// A property list of the values, as a document of its own.
inline platform::PropertyListValue propertyList(const QVariant &root)
{
    const auto xml = platform::PropertyList::writeXml(root);
    EXPECT_TRUE(bool(xml));
    auto list = platform::PropertyList::parse(xml.valueOr({}));
    EXPECT_TRUE(bool(list));
    return std::move(list).valueOr({});
}

/// The songs of an array of dictionaries.
inline SongList songs(const QVariantList &dictionaries)
{
    SongList list;
    const platform::PropertyListValue array = propertyList(dictionaries);
    for (const platform::PropertyListView song : array.elements())
        list.append(platform::PropertyListValue(song));
    return list;
}

inline QVariantMap song(const QString &name, const QString &artist = {}, const QString &album = {},
                        const QString &genre = {})
{
    QVariantMap map{{QStringLiteral("Name"), name}};
    if (!artist.isNull())
        map.insert(QStringLiteral("Artist"), artist);
    if (!album.isNull())
        map.insert(QStringLiteral("Album"), album);
    if (!genre.isNull())
        map.insert(QStringLiteral("Genre"), genre);
    return map;
}

/// The places of the entries themselves, so that equal songs are told apart.
inline std::vector<const void *> identities(const SongList &list)
{
    std::vector<const void *> places;
    for (const platform::PropertyListView &entry : list)
        places.push_back(entry.identity());
    return places;
}

inline QString names(const SongList &list)
{
    QStringList texts;
    for (const platform::PropertyListView &entry : list)
        texts.append(entry.value(u"Name").toString());
    return texts.join(QLatin1Char(' '));
}

} // namespace testSupport
