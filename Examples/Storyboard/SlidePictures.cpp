#include "SlidePictures.h"

#include "Platform/Media/ImageSource.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QPainter>
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

QImage SlidePictures::missingPicture()
{
    static const QImage picture = [] {
        QImage image(size, size * 3 / 4, QImage::Format_RGB32);
        const QColor ground(0xe4, 0xe4, 0xe4), line(0x9a, 0x9a, 0x9a);
        image.fill(ground);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(line, 8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        // A photo of mountains, crossed out.
        painter.drawRoundedRect(QRectF(90, 60, 140, 110), 10, 10);
        painter.drawPolyline(QPolygonF({{96, 158}, {135, 112}, {160, 140}, {188, 100}, {224, 150}}));
        painter.drawEllipse(QPointF(122, 90), 9, 9);
        painter.setPen(QPen(ground, 24, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(80, 190), QPointF(240, 40));
        painter.setPen(QPen(line, 8, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(80, 190), QPointF(240, 40));
        return image;
    }();
    return picture;
}

QImage SlidePictures::picture(const QString &photoPath)
{
    if (const QImage *const known = m_pictures.object(photoPath))
        return *known;
    const bool isMissing = m_missing.contains(photoPath) && !m_toLookFor.remove(photoPath);
    if (photoPath.isEmpty() || isMissing || m_wanted.contains(photoPath))
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
    if (ended->picture.isNull()) {
        m_missing.insert(ended->photoPath);
    } else {
        m_missing.remove(ended->photoPath);
        m_pictures.insert(ended->photoPath, new QImage(ended->picture),
                          std::max<qsizetype>(1, ended->picture.sizeInBytes() / 1024));
    }
    Q_EMIT didLoad(ended->photoPath);
}
