#include "SlidePictures.h"

#include "Platform/Media/ImageSource.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QPointer>

class SlidePictures::Unit : public ZRWorkUnit
{
public:
    Unit(SlidePictures *owner, const QString &path)
        : photoPath(path)
        , m_owner(owner)
    { }

    void processWithServer(ZRProcessServer &server) override
    {
        if (!cancelFlag())
            make();
        server.performSelectorOnObject(m_owner, &SlidePictures::unitDidEnd, this);
    }

    const QString photoPath;
    QImage picture; // written before the delivery that tells of it

private:
    void make()
    {
        const auto source = platform::ImageSource::open(photoPath);
        if (!source)
            return;
        const auto jpeg = source.value().jpegThumbnail(SlidePictures::size);
        if (jpeg)
            picture = QImage::fromData(jpeg.value(), "JPEG").convertToFormat(QImage::Format_RGB32);
    }

    QPointer<SlidePictures> m_owner;
};

SlidePictures &SlidePictures::shared()
{
    static SlidePictures pictures;
    return pictures;
}

SlidePictures::~SlidePictures()
{
    for (const auto &unit : std::as_const(m_wanted))
        unit->setCancelFlag(true);
}

QImage SlidePictures::picture(const QString &photoPath)
{
    if (const QImage *const known = m_pictures.object(photoPath))
        return *known;
    if (photoPath.isEmpty() || m_missing.contains(photoPath) || m_wanted.contains(photoPath))
        return QImage();
    const auto unit = std::make_shared<Unit>(this, photoPath);
    if (ZRProcessServer::processServerWithName(QStringLiteral("slide_pictures"), 1).addWorkUnit(unit))
        m_wanted.insert(photoPath, unit);
    return QImage();
}

void SlidePictures::unitDidEnd(const Unit *unit)
{
    const std::shared_ptr<Unit> ended = m_wanted.take(unit->photoPath);
    if (!ended)
        return;
    if (ended->picture.isNull())
        m_missing.insert(ended->photoPath);
    else
        m_pictures.insert(ended->photoPath, new QImage(ended->picture),
                          std::max<qsizetype>(1, ended->picture.sizeInBytes() / 1024));
    Q_EMIT didLoad(ended->photoPath);
}
