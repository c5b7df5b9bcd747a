#include "PhotoWindow.h"

#include "Platform/Interface/KeyBindings.h"
#include "Platform/Media/Image.h"
#include "ZRCommon/ZRFitRect.h"
#include "ZRCommon/ZRLocalizedString.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace {

constexpr QColor background(0x20, 0x20, 0x20), text(0xe0, 0xe0, 0xe0);

QImage bitmapOf(const std::shared_ptr<platform::Image> &image)
{
    return image && !image->representations().empty() ? image->representations().front().bitmap : QImage();
}

} // namespace

class PhotoWindow::Unit : public ZRWorkUnit
{
public:
    Unit(PhotoWindow *owner, const QString &path)
        : m_owner(owner)
        , m_path(path)
    { }
    void processWithServer(ZRProcessServer &server) override
    {
        if (!cancelFlag())
            image = bitmapOf(platform::Image::contentsOfFile(m_path));
        server.performSelectorOnObject(m_owner, &PhotoWindow::unitDidRead, this);
    }

    QImage image; // written before the delivery

private:
    QPointer<PhotoWindow> m_owner;
    const QString m_path;
};

PhotoWindow::PhotoWindow(const ZRImageCatalogFolder::ThumbnailList &photos, qsizetype index)
    : m_photos(photos)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    resize(960, 720);
    showPhoto(index);
}

PhotoWindow::~PhotoWindow()
{
    if (m_unit)
        m_unit->setCancelFlag(true);
}

void PhotoWindow::showPhoto(qsizetype index)
{
    if (m_unit)
        m_unit->setCancelFlag(true);
    m_index = std::clamp<qsizetype>(index, 0, m_photos.size() - 1);
    const auto thumbnail = m_photos[m_index];
    const bool wasLoaded = thumbnail->isImageLoaded();
    m_image = bitmapOf(thumbnail->imageToDisplay());
    if (!wasLoaded)
        thumbnail->unloadImage(); // the grid reads, and lets go, what it shows itself
    m_scaled = QImage();
    m_isComplete = false;
    setWindowTitle(photo().title());
    setAccessibleName(photo().title());
    m_unit = std::make_shared<Unit>(this, photo().imagePath());
    if (!ZRProcessServer::processServerWithName(QStringLiteral("photo_loader"), 1).addWorkUnit(m_unit))
        m_unit.reset();
    update();
}

void PhotoWindow::unitDidRead(const Unit *unit)
{
    if (unit != m_unit.get())
        return;
    const std::shared_ptr<Unit> read = std::exchange(m_unit, nullptr);
    m_isComplete = true;
    m_image = read->image;
    m_scaled = QImage();
    update();
}

void PhotoWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), background);
    if (m_image.isNull()) {
        if (!m_isComplete)
            return;
        painter.setPen(text);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         ZRLocalizedString("“%1” cannot be shown.").arg(photo().imagePath()));
        return;
    }
    const double ratio = devicePixelRatioF();
    const QRectF place = ZRFitRect(QRectF(rect()), float(m_image.width()) / float(m_image.height()));
    const QSize size = (place.size() * ratio).toSize().expandedTo(QSize(1, 1));
    if (m_scaled.size() != size)
        m_scaled = m_image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_scaled.setDevicePixelRatio(ratio);
    painter.drawImage(place.topLeft(), m_scaled);
}

void PhotoWindow::keyPressEvent(QKeyEvent *event)
{
    using platform::KeyAction;
    if (event->key() == Qt::Key_Space)
        return showPhoto(m_index + 1);
    switch (platform::keyActionFor(*event).value_or(KeyAction::insertTab)) {
    case KeyAction::moveRight:
    case KeyAction::moveDown:
    case KeyAction::pageDown:
        return showPhoto(m_index + 1);
    case KeyAction::moveLeft:
    case KeyAction::moveUp:
    case KeyAction::pageUp:
        return showPhoto(m_index - 1);
    case KeyAction::scrollToBeginningOfDocument:
        return showPhoto(0);
    case KeyAction::scrollToEndOfDocument:
        return showPhoto(m_photos.size() - 1);
    case KeyAction::cancelOperation:
    case KeyAction::insertNewline:
        close();
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PhotoWindow::mouseDoubleClickEvent(QMouseEvent *)
{
    close();
}
