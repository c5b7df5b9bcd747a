#include "Platform/Interface/View.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Interface/ScrollView.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyleHints>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(views, "platform.view")

} // namespace

quint32 modifierFlagsOf(Qt::KeyboardModifiers modifiers)
{
    quint32 flags = 0;
    for (const auto &[modifier, flag] :
         {std::pair(Qt::ShiftModifier, ShiftKeyMask), std::pair(Qt::ControlModifier, CommandKeyMask),
          std::pair(Qt::AltModifier, AlternateKeyMask), std::pair(Qt::MetaModifier, ControlKeyMask)}) {
        if (modifiers.testFlag(modifier))
            flags |= flag;
    }
    return flags;
}

View::View(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

void View::setFrame(const QRectF &frame)
{
    frameChangedTo(frame);
}

void View::setFrameSize(const QSizeF &size)
{
    frameChangedTo(QRectF(m_frame.topLeft(), size));
}

void View::frameChangedTo(const QRectF &frame)
{
    if (frame == m_frame)
        return;
    m_frame = frame;
    if (m_scrollView) {
        m_scrollView->documentFrameChanged();
    } else if (const QRect geometry = frame.toRect(); geometry != this->geometry()) {
        const QScopedValueRollback guard(m_isSettingGeometry, true);
        setGeometry(geometry);
    }
}

QRectF View::visibleRect() const
{
    if (m_scrollView)
        return m_scrollView->documentVisibleRect().intersected(viewBounds());
    return viewBounds().intersected(QRectF(rect()));
}

void View::scrollRectToVisible(const QRectF &rect)
{
    if (m_scrollView)
        m_scrollView->scrollRectToVisible(rect);
}

void View::setNeedsDisplay(const QRectF &rect)
{
    const QRectF shown = toWidget(rect).intersected(QRectF(this->rect()));
    if (!shown.isEmpty())
        update(shown.toAlignedRect());
}

void View::drawRect(QPainter &, const QRectF &) { }

bool View::mouseDown(const MouseEvent &)
{
    return false;
}

bool View::mouseDragged(const MouseEvent &)
{
    return false;
}

bool View::mouseUp(const MouseEvent &)
{
    return false;
}

bool View::event(QEvent *event)
{
    const char *const name = metaObject()->className(); // the handler that fails may have destroyed the view
    const QEvent::Type type = event->type();
    if (type == QEvent::Polish && !acceptsFirstResponder())
        setFocusPolicy(Qt::NoFocus);
    try {
        return QWidget::event(event);
    } catch (...) {
        logCurrentException(
            views(), QStringLiteral("event %1 of %2").arg(QString::number(int(type)), QString::fromLatin1(name)));
        return true; // taken by the handler that failed
    }
}

void View::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.translate(-m_origin);
    drawRect(painter, QRectF(event->rect()).translated(m_origin));
}

void View::resizeEvent(QResizeEvent *)
{
    if (!m_scrollView && !m_isSettingGeometry)
        setFrame(QRectF(geometry()));
}

void View::moveEvent(QMoveEvent *)
{
    if (!m_scrollView && !m_isSettingGeometry)
        setFrame(QRectF(QPointF(pos()), m_frame.size()));
}

// Qt tells of the second click of a row, not of the third and those behind it.
void View::countClick(const QMouseEvent &event)
{
    const QStyleHints &hints = *QGuiApplication::styleHints();
    const QPointF place = event.globalPosition();
    const bool isInRow = event.timestamp() - m_lastPress <= quint64(hints.mouseDoubleClickInterval())
        && (place - m_lastPressPlace).manhattanLength() <= hints.mouseDoubleClickDistance();
    if (event.type() == QEvent::MouseButtonDblClick)
        m_clickCount = std::max(2, isInRow ? m_clickCount + 1 : 2);
    else
        m_clickCount = isInRow && m_clickCount >= 2 ? m_clickCount + 1 : 1;
    m_lastPress = event.timestamp();
    m_lastPressPlace = place;
}

MouseEvent View::mouseEventOf(const QMouseEvent &event) const
{
    return {fromWidget(event.position()), modifierFlagsOf(event.modifiers()), m_clickCount};
}

void View::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    countClick(*event);
    event->setAccepted(mouseDown(mouseEventOf(*event)));
}

void View::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

void View::mouseMoveEvent(QMouseEvent *event)
{
    event->setAccepted(event->buttons().testFlag(Qt::LeftButton) && mouseDragged(mouseEventOf(*event)));
}

void View::mouseReleaseEvent(QMouseEvent *event)
{
    event->setAccepted(event->button() == Qt::LeftButton && mouseUp(mouseEventOf(*event)));
}

} // namespace platform
