#include "Song.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <QFileInfo>
#include <QUrl>

Song::Song(const QString &path)
    : m_path(path)
    , m_title(QFileInfo(path).completeBaseName())
{ }

std::shared_ptr<Song> Song::duplicate() const
{
    return std::make_shared<Song>(m_path);
}

void Song::encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const
{
    archiver.encode(QUrl::fromLocalFile(m_path), "file");
}

void Song::decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver)
{
    m_path = unarchiver.decodeUrl("file").toLocalFile();
    m_title = QFileInfo(m_path).completeBaseName();
}
