#pragma once

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/Object.h"

#include <QString>

#include <memory>

/// A song that plays along with a slide show. Never changes once it is made.
class Song : public platform::Object, public platform::KeyedCoding
{
    ZR_OBJECT(Song, platform::Object)

public:
    /// For archives: a song without a file, until it is decoded.
    Song() = default;
    /// @param path the song's file, whose name without its ending becomes the title
    explicit Song(const QString &path);
    /// Another song of the same file.
    std::shared_ptr<Song> duplicate() const;

    const QString &path() const { return m_path; }
    const QString &title() const { return m_title; }

    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override;
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override;

private:
    QString m_path;
    QString m_title;
};
