#include "Song.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <QFileInfo>

Song::Song(const QString &path)
    : m_path(path)
    , m_title(QFileInfo(path).completeBaseName())
{ }

std::shared_ptr<Song> Song::duplicate() const
{
    auto copy = std::make_shared<Song>();
    copy->m_path = m_path;
    copy->m_title = m_title;
    return copy;
}

void Song::encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const
{
    archiver.encode(m_path, "file");
    archiver.encode(m_title, "title");
}

void Song::decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver)
{
    m_path = unarchiver.decodeString("file");
    m_title = unarchiver.decodeString("title");
}
