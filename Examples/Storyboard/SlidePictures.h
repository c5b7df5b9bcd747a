#pragma once

#include <QCache>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

/// The small pictures of slides. They are made in the background when they are first asked for, and those that were
/// asked for last are kept. The main thread only.
class SlidePictures : public QObject
{
    Q_OBJECT

public:
    /// The longer side of a picture, in pixels.
    static constexpr int size = 320;

    /// Those of the program.
    static SlidePictures &shared();
    ~SlidePictures() override;

    /// The picture of a photo; null while it is being made, and when there is none.
    QImage picture(const QString &photoPath);
    /// Whether it turned out that there is none: the file is gone, or cannot be read.
    bool isMissing(const QString &photoPath) const { return m_missing.contains(photoPath); }
    /// Has those that were missing looked for once more when they are asked for next: they may be there by now.
    void lookForMissingAgain() { m_toLookFor = m_missing; }
    /// What stands for a picture that there is none of.
    static QImage missingPicture();
    /// Whether pictures are being made.
    bool isBusy() const { return !m_wanted.isEmpty(); }

Q_SIGNALS:
    /// The picture of the photo is there, or there is none.
    void didLoad(const QString &photoPath);

private:
    class Unit;
    void unitDidEnd(const Unit *unit);

    QCache<QString, QImage> m_pictures{64 * 1024}; // kilobytes
    QSet<QString> m_missing; // photos of which there is no picture
    QSet<QString> m_toLookFor; // among them
    QHash<QString, std::shared_ptr<Unit>> m_wanted;
};
