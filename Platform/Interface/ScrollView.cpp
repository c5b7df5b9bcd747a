#include "Platform/Interface/ScrollView.h"

#include "Platform/Interface/View.h"

#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

/// The most that a scroll bar counts to; beyond that one of its steps is several points.
constexpr double mostSteps = 1'000'000'000;

/// The origin from which a stretch shows, moved as little as possible.
double nearestOrigin(double origin, double length, double first, double extent)
{
    if (first < origin || extent > length)
        return first;
    return std::max(origin, first + extent - length);
}

/// A scroll bar that is drawn anew only when its handle has another place, in pixels: in a long document that is every
/// few dozen steps, and drawing it takes longer than drawing what has come into view.
class ScrollBar : public QScrollBar
{
public:
    using QScrollBar::QScrollBar;

protected:
    void sliderChange(SliderChange change) override
    {
        if (change != SliderValueChange) {
            m_handle = QRect();
            return QScrollBar::sliderChange(change);
        }
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QRect handle = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
        const bool isAtEnd = value() == minimum() || value() == maximum(); // where styles disable an arrow
        const bool looksTheSame = handle == m_handle && isAtEnd == m_isAtEnd;
        m_handle = handle;
        m_isAtEnd = isAtEnd;
        if (!looksTheSame)
            QScrollBar::sliderChange(change);
    }

private:
    QRect m_handle;
    bool m_isAtEnd = true;
};

} // namespace

ScrollView::ScrollView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBar(new ScrollBar(Qt::Horizontal, this));
    setVerticalScrollBar(new ScrollBar(Qt::Vertical, this));
}

ScrollView::~ScrollView()
{
    setDocumentView(nullptr); // left to the viewport it would outlive this class's part of the object
}

void ScrollView::setDocumentView(View *document)
{
    if (document == m_document)
        return;
    if (View *const former = std::exchange(m_document, nullptr)) {
        former->m_scrollView = nullptr;
        delete former;
    }
    if (!document)
        return adjustScrollBars();
    if (ScrollView *const former = document->m_scrollView) {
        former->m_document = nullptr;
        former->adjustScrollBars();
    }
    document->setParent(viewport());
    document->setAttribute(Qt::WA_OpaquePaintEvent); // what showed already is moved when it scrolls
    document->m_scrollView = this;
    document->m_origin = QPointF();
    m_document = document;
    // A view that is destroyed by others takes itself away.
    connect(document, &QObject::destroyed, this, [this, document] {
        if (m_document == document)
            m_document = nullptr;
    });
    fitDocument();
    document->show();
}

QSizeF ScrollView::contentSize() const
{
    return QSizeF(viewport()->size());
}

QRectF ScrollView::documentVisibleRect() const
{
    return m_document ? QRectF(m_document->m_origin, contentSize()) : QRectF();
}

void ScrollView::scrollToPoint(const QPointF &point)
{
    moveTo(point);
}

void ScrollView::scrollRectToVisible(const QRectF &rect)
{
    if (!m_document)
        return;
    const QRectF visible = documentVisibleRect();
    moveTo(QPointF(nearestOrigin(visible.x(), visible.width(), rect.x(), rect.width()),
                   nearestOrigin(visible.y(), visible.height(), rect.y(), rect.height())));
}

QPointF ScrollView::farthestOrigin() const
{
    const QSizeF beyond = m_document->viewFrame().size() - contentSize();
    return QPointF(std::max(0.0, beyond.width()), std::max(0.0, beyond.height()));
}

void ScrollView::moveTo(QPointF origin)
{
    if (!m_document)
        return;
    const QPointF farthest = farthestOrigin();
    // Whole points, so that what is on the screen can be moved there.
    origin = QPointF(std::clamp(std::round(origin.x()), 0.0, std::ceil(farthest.x())),
                     std::clamp(std::round(origin.y()), 0.0, std::ceil(farthest.y())));
    const QPointF way = m_document->m_origin - origin;
    {
        const QScopedValueRollback guard(m_isMoving, true);
        horizontalScrollBar()->setValue(int(std::lround(origin.x() / m_pointsToAStep.x())));
        verticalScrollBar()->setValue(int(std::lround(origin.y() / m_pointsToAStep.y())));
    }
    if (way.isNull())
        return;
    m_document->m_origin = origin;
    const QSize size = viewport()->size();
    if (std::abs(way.x()) < size.width() && std::abs(way.y()) < size.height())
        m_document->scroll(int(way.x()), int(way.y()));
    else
        m_document->update();
    Q_EMIT visibleRectChanged();
}

void ScrollView::documentFrameChanged()
{
    if (m_isFitting)
        return;
    adjustScrollBars();
    Q_EMIT visibleRectChanged();
}

void ScrollView::resizeEvent(QResizeEvent *)
{
    fitDocument();
}

void ScrollView::fitDocument()
{
    if (!m_document || m_isFitting)
        return;
    {
        const QScopedValueRollback guard(m_isFitting, true);
        m_document->setGeometry(viewport()->rect());
        const QRectF frame = m_document->viewFrame();
        m_document->setFrame(QRectF(frame.x(), frame.y(), contentSize().width(), frame.height()));
    }
    adjustScrollBars();
    Q_EMIT visibleRectChanged();
}

void ScrollView::adjustScrollBars()
{
    const QPointF farthest = m_document ? farthestOrigin() : QPointF();
    m_pointsToAStep = QPointF(std::max(1.0, farthest.x() / mostSteps), std::max(1.0, farthest.y() / mostSteps));
    {
        const QScopedValueRollback guard(m_isMoving, true);
        const auto adjust = [](QScrollBar &bar, double beyond, double shown, double pointsToAStep) {
            constexpr double line = 30;
            bar.setPageStep(std::max(1, int(shown / pointsToAStep)));
            bar.setSingleStep(std::max(1, int(line / pointsToAStep)));
            bar.setRange(0, int(std::ceil(beyond / pointsToAStep)));
        };
        adjust(*horizontalScrollBar(), farthest.x(), contentSize().width(), m_pointsToAStep.x());
        adjust(*verticalScrollBar(), farthest.y(), contentSize().height(), m_pointsToAStep.y());
    }
    if (m_document)
        moveTo(m_document->m_origin);
}

void ScrollView::scrollContentsBy(int, int)
{
    if (m_isMoving || !m_document)
        return;
    // The last step is the end, whatever its points come to.
    const auto origin = [](const QScrollBar &bar, double farthest, double pointsToAStep) {
        return bar.value() == bar.maximum() ? farthest : bar.value() * pointsToAStep;
    };
    const QPointF farthest = farthestOrigin();
    moveTo(QPointF(origin(*horizontalScrollBar(), farthest.x(), m_pointsToAStep.x()),
                   origin(*verticalScrollBar(), farthest.y(), m_pointsToAStep.y())));
}

void ScrollView::wheelEvent(QWheelEvent *event)
{
    // The scroll bar would move by whole steps of its own, which may be many points.
    if (!m_document || event->pixelDelta().isNull() || m_pointsToAStep == QPointF(1, 1))
        return QAbstractScrollArea::wheelEvent(event);
    moveTo(m_document->m_origin - QPointF(event->pixelDelta()));
    event->accept();
}

} // namespace platform
