#include "Platform/Interface/ScrollView.h"

#include "Platform/Interface/View.h"
#include "Support/TestSupport.h"

#include <QPainter>
#include <QPointer>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <stdexcept>

namespace {

using platform::MouseEvent;
using platform::ScrollView;
using platform::View;

/// Notes what it is told.
class NotingView : public View
{
public:
    using View::View;
    void setFrame(const QRectF &frame) override
    {
        frames.append(frame);
        View::setFrame(frame);
    }
    QList<QRectF> frames;
    QList<QRectF> drawn;
    QList<QPair<QString, MouseEvent>> mouse;
    bool throws = false;

protected:
    void drawRect(QPainter &painter, const QRectF &dirty) override
    {
        drawn.append(dirty);
        painter.fillRect(QRectF(0, 0, 10, 10), Qt::red);
        painter.fillRect(QRectF(0, 100'000'000, 10, 10), Qt::blue);
    }
    bool note(const char *what, const MouseEvent &event)
    {
        mouse.append({QString::fromLatin1(what), event});
        if (throws)
            throw std::runtime_error("no mouse");
        return true;
    }
    bool mouseDown(const MouseEvent &event) override { return note("down", event); }
    bool mouseDragged(const MouseEvent &event) override { return note("dragged", event); }
    bool mouseUp(const MouseEvent &event) override { return note("up", event); }
};

struct ScrollViewTest : testing::Test {
    ScrollView scrollView;
    NotingView *const view = new NotingView;
    int changes = 0;

    ScrollViewTest()
    {
        scrollView.resize(200, 100);
        scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scrollView.setDocumentView(view);
        scrollView.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&scrollView));
        QObject::connect(&scrollView, &ScrollView::visibleRectChanged, [this] { ++changes; });
    }
};

} // namespace

TEST_F(ScrollViewTest, KeepsTheWidgetAsLargeAsWhatShows)
{
    view->setFrameSize(QSizeF(500, 1e9));
    EXPECT_EQ(view->geometry(), QRect(0, 0, 200, 100));
    EXPECT_EQ(view->viewFrame().size(), QSizeF(500, 1e9));
    EXPECT_EQ(view->viewBounds(), QRectF(0, 0, 500, 1e9));
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF(0, 0, 200, 100));
    EXPECT_EQ(view->visibleRect(), QRectF(0, 0, 200, 100));
    EXPECT_EQ(view->enclosingScrollView(), &scrollView);
}

TEST_F(ScrollViewTest, ScrollsToAnyPointOfALargeDocument)
{
    view->setFrameSize(QSizeF(500, 1e11));
    scrollView.scrollToPoint(QPointF(100, 5e10));
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF(100, 5e10, 200, 100));
    scrollView.scrollToPoint(QPointF(-5, 2e11));
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF(0, 1e11 - 100, 200, 100));
    QScrollBar &bar = *scrollView.verticalScrollBar();
    EXPECT_EQ(bar.value(), bar.maximum());
    bar.setValue(0);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 0);
    bar.setValue(bar.maximum());
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 1e11 - 100);
    bar.setValue(bar.maximum() / 2);
    EXPECT_NEAR(scrollView.documentVisibleRect().y(), 5e10, 200);
}

TEST_F(ScrollViewTest, ScrollsARectangleIntoViewAsLittleAsNeeded)
{
    view->setFrameSize(QSizeF(1000, 1000));
    view->scrollRectToVisible(QRectF(150, 150, 100, 30));
    EXPECT_EQ(scrollView.documentVisibleRect().topLeft(), QPointF(50, 80));
    view->scrollRectToVisible(QRectF(60, 100, 10, 10));
    EXPECT_EQ(scrollView.documentVisibleRect().topLeft(), QPointF(50, 80)) << "it shows already";
    view->scrollRectToVisible(QRectF(10, 20, 10, 10));
    EXPECT_EQ(scrollView.documentVisibleRect().topLeft(), QPointF(10, 20));
    view->scrollRectToVisible(QRectF(300, 300, 500, 500));
    EXPECT_EQ(scrollView.documentVisibleRect().topLeft(), QPointF(300, 300)) << "the beginning of what is too large";
}

TEST_F(ScrollViewTest, DrawsInTheDocumentsOwnCoordinates)
{
    view->setFrameSize(QSizeF(200, 2e8));
    scrollView.scrollToPoint(QPointF(0, 99'999'990));
    view->drawn.clear();
    const QImage picture = view->grab().toImage();
    ASSERT_EQ(view->drawn.size(), 1);
    EXPECT_EQ(view->drawn[0], QRectF(0, 99'999'990, 200, 100));
    EXPECT_EQ(picture.pixelColor(5, 15), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(5, 5), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(5, 5), QColor(Qt::red));
}

TEST_F(ScrollViewTest, SetsTheDocumentsWidthWhenItIsResized)
{
    view->setFrameSize(QSizeF(200, 700));
    scrollView.scrollToPoint(QPointF(0, 650));
    view->frames.clear();
    scrollView.resize(320, 150);
    ASSERT_FALSE(view->frames.isEmpty());
    EXPECT_EQ(view->frames.last(), QRectF(0, 0, 320, 700));
    EXPECT_EQ(view->geometry(), QRect(0, 0, 320, 150));
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF(0, 550, 320, 150)) << "no further than the document reaches";
}

TEST_F(ScrollViewTest, TellsWhenSomethingElseShows)
{
    view->setFrameSize(QSizeF(200, 700));
    EXPECT_EQ(changes, 1);
    scrollView.scrollToPoint(QPointF(0, 10));
    EXPECT_EQ(changes, 2);
    scrollView.scrollToPoint(QPointF(0, 10));
    EXPECT_EQ(changes, 2);
    scrollView.resize(210, 100);
    EXPECT_EQ(changes, 3);
}

TEST_F(ScrollViewTest, AWheelTurnsByPointsInAnyDocument)
{
    view->setFrameSize(QSizeF(200, 1e11)); // a step of the scroll bar is a hundred points
    scrollView.scrollToPoint(QPointF(0, 5000));
    QWheelEvent event(QPointF(5, 5), view->mapToGlobal(QPointF(5, 5)), QPoint(0, -7), QPoint(0, -56), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(scrollView.viewport(), &event);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 5007);
}

TEST_F(ScrollViewTest, MovesWhatShowsAndDrawsTheRest)
{
    view->setFrameSize(QSizeF(200, 5000));
    const auto onScreen = [&] { return scrollView.screen()->grabWindow(scrollView.winId()).toImage(); };
    const auto isUpToDate = [&] { return onScreen().pixelColor(5, 5) == QColor(Qt::red); };
    scrollView.repaint();
    view->repaint();
    ASSERT_TRUE(isUpToDate());
    view->drawn.clear();
    scrollView.scrollToPoint(QPointF(0, 7.4)); // to a whole point
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 7);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    ASSERT_EQ(view->drawn.size(), 1);
    EXPECT_EQ(view->drawn[0], QRectF(0, 100, 200, 7));
    EXPECT_EQ(onScreen().pixelColor(5, 2), QColor(Qt::red));
    EXPECT_NE(onScreen().pixelColor(5, 4), QColor(Qt::red));
    view->drawn.clear();
    view->setNeedsDisplay(QRectF(10, 50, 20, 10));
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    ASSERT_EQ(view->drawn.size(), 1);
    EXPECT_EQ(view->drawn[0], QRectF(10, 50, 20, 10));
}

TEST_F(ScrollViewTest, OtherButtonsDragNothing)
{
    const auto send = [&](QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, QPointF(5, 5), view->mapToGlobal(QPointF(5, 5)), button, buttons, Qt::MetaModifier);
        QCoreApplication::sendEvent(view, &event);
    };
    send(QEvent::MouseMove, Qt::NoButton, Qt::RightButton);
    send(QEvent::MouseButtonRelease, Qt::RightButton, Qt::NoButton);
    EXPECT_TRUE(view->mouse.isEmpty());
    send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton);
    ASSERT_EQ(view->mouse.size(), 2);
    EXPECT_EQ(view->mouse[1].second.modifierFlags & 0x100000U, 0U) << "another key";
}

TEST(View, GetsTheKeyboardIfItAcceptsIt)
{
    struct Accepting : View {
        bool acceptsFirstResponder() const override { return true; }
    } accepting;
    View other;
    accepting.show();
    other.show();
    EXPECT_EQ(accepting.focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(other.focusPolicy(), Qt::NoFocus);
}

TEST_F(ScrollViewTest, OwnsItsDocument)
{
    const QPointer<View> first(view);
    auto *const second = new NotingView;
    scrollView.setDocumentView(second);
    EXPECT_FALSE(first);
    EXPECT_EQ(scrollView.documentView(), second);
    delete second;
    EXPECT_EQ(scrollView.documentView(), nullptr);
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF());
    scrollView.scrollToPoint(QPointF(5, 5));
    scrollView.scrollRectToVisible(QRectF(5, 5, 5, 5));
    scrollView.resize(100, 100);
    scrollView.setDocumentView(nullptr);
}

TEST_F(ScrollViewTest, TakesTheDocumentOfAnotherOne)
{
    ScrollView other;
    other.setDocumentView(view);
    EXPECT_EQ(scrollView.documentView(), nullptr);
    EXPECT_EQ(view->enclosingScrollView(), &other);
    other.setDocumentView(nullptr);
    scrollView.resize(120, 80);
    EXPECT_EQ(scrollView.documentVisibleRect(), QRectF());
}

TEST_F(ScrollViewTest, HandsMouseEventsOnInTheDocumentsCoordinates)
{
    view->setFrameSize(QSizeF(200, 5000));
    scrollView.scrollToPoint(QPointF(0, 1000));
    QTest::mousePress(view, Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier, QPoint(20, 30));
    QTest::mouseRelease(view, Qt::LeftButton, Qt::AltModifier, QPoint(21, 31));
    ASSERT_EQ(view->mouse.size(), 2);
    EXPECT_EQ(view->mouse[0].first, "down");
    EXPECT_EQ(view->mouse[0].second.location, QPointF(20, 1030));
    EXPECT_EQ(view->mouse[0].second.modifierFlags, 0x120000u);
    EXPECT_EQ(view->mouse[0].second.clickCount, 1);
    EXPECT_EQ(view->mouse[1].first, "up");
    EXPECT_EQ(view->mouse[1].second.modifierFlags, 0x80000u);
    testSupport::expectWarning(QStringLiteral("not accepted"));
    QTest::mousePress(view, Qt::RightButton, {}, QPoint(20, 30));
    EXPECT_EQ(view->mouse.size(), 2) << "the left button alone";
}

TEST_F(ScrollViewTest, CountsClicks)
{
    // The events of four quick clicks, as Qt tells them, and of one elsewhere.
    quint64 time = 1'000'000;
    const auto send = [&](QEvent::Type type, const QPointF &place) {
        QMouseEvent event(type, place, view->mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        event.setTimestamp(time += 20);
        QCoreApplication::sendEvent(view, &event);
    };
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick, QEvent::MouseButtonPress,
                            QEvent::MouseButtonDblClick}) {
        send(type, QPointF(20, 20));
        send(QEvent::MouseButtonRelease, QPointF(20, 20));
    }
    send(QEvent::MouseButtonPress, QPointF(90, 20));
    QList<int> counts;
    for (const auto &[what, event] : std::as_const(view->mouse))
        counts.append(event.clickCount);
    EXPECT_EQ(counts, QList<int>({1, 1, 2, 2, 3, 3, 4, 4, 1}));
    time += 10'000;
    send(QEvent::MouseButtonPress, QPointF(90, 20));
    EXPECT_EQ(view->mouse.last().second.clickCount, 1);
}

TEST_F(ScrollViewTest, DrawsItsScrollBarWhenTheHandleMoves)
{
    struct PaintCounter : QObject {
        int count = 0;
        bool eventFilter(QObject *, QEvent *event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
    } paints;
    scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    view->setFrameSize(QSizeF(500, 10'000));
    scrollView.scrollToPoint(QPointF(0, 1));
    QCoreApplication::processEvents();
    scrollView.verticalScrollBar()->installEventFilter(&paints);
    const auto paintsOfScrollingTo = [&](double y) {
        paints.count = 0;
        scrollView.scrollToPoint(QPointF(0, y));
        EXPECT_EQ(scrollView.verticalScrollBar()->value(), int(y));
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        return paints.count;
    };
    EXPECT_EQ(paintsOfScrollingTo(2), 0) << "it looks the same";
    EXPECT_EQ(paintsOfScrollingTo(5'000), 1);
    EXPECT_EQ(paintsOfScrollingTo(5'001), 0);
    EXPECT_EQ(paintsOfScrollingTo(1), 1);
    EXPECT_EQ(paintsOfScrollingTo(0), 1) << "an arrow may go grey at the end";
}

TEST_F(ScrollViewTest, AViewLivesOnWhenAHandlerRaises)
{
    testSupport::expectWarning(QStringLiteral("no mouse"));
    view->throws = true;
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(20, 30));
    view->throws = false;
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(20, 30));
    EXPECT_EQ(view->mouse.size(), 2);
}

TEST(View, ByItselfHasTheFrameOfItsWidget)
{
    QWidget window;
    auto *const layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *const view = new NotingView;
    layout->addWidget(view);
    window.resize(300, 200);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(view->viewFrame(), QRectF(0, 0, 300, 200));
    EXPECT_EQ(view->frames.last(), QRectF(0, 0, 300, 200));
    EXPECT_EQ(view->enclosingScrollView(), nullptr);
    NotingView alone;
    alone.setFrame(QRectF(5, 6, 70, 80));
    EXPECT_EQ(alone.geometry(), QRect(5, 6, 70, 80));
    EXPECT_EQ(alone.visibleRect(), QRectF(0, 0, 70, 80));
    alone.setFrameSize(QSizeF(20, 30));
    EXPECT_EQ(alone.geometry(), QRect(5, 6, 20, 30));
}
