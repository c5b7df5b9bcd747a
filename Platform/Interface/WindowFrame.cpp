#include "Platform/Interface/WindowFrame_p.h"

#include <QRegion>
#include <QStringList>

namespace platform {

namespace {

constexpr int largestCoordinate = (1 << 24) - 1; // QWIDGETSIZE_MAX
const QString maximizedMark = QStringLiteral("maximized");

qint64 area(const QRect &rect)
{
    return qint64(rect.width()) * rect.height();
}

} // namespace

std::optional<WindowFrame> WindowFrame::fromText(const QString &text)
{
    const QStringList fields = text.split(u' ');
    const bool isMaximized = fields.size() == 5 && fields.last() == maximizedMark;
    if (fields.size() != 4 && !isMaximized)
        return std::nullopt;
    int numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        numbers[i] = fields.at(i).toInt(&isNumber);
        if (!isNumber || numbers[i] < (i < 2 ? -largestCoordinate : 1) || numbers[i] > largestCoordinate)
            return std::nullopt;
    }
    return WindowFrame{QRect(numbers[0], numbers[1], numbers[2], numbers[3]), isMaximized};
}

QString WindowFrame::toText() const
{
    const QString text = QStringLiteral("%1 %2 %3 %4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
    return isMaximized ? text + u' ' + maximizedMark : text;
}

QRect frameOnScreens(const QRect &frame, const QList<QRect> &screens)
{
    QRegion uncovered(frame);
    QRect best = screens.value(0);
    for (const QRect &screen : screens) {
        uncovered -= screen;
        if (area(screen & frame) > area(best & frame))
            best = screen;
    }
    if (uncovered.isEmpty() || best.isEmpty())
        return frame;
    QRect result(frame.topLeft(), frame.size().boundedTo(best.size()));
    result.moveLeft(qBound(best.left(), result.left(), best.right() + 1 - result.width()));
    result.moveTop(qBound(best.top(), result.top(), best.bottom() + 1 - result.height()));
    return result;
}

} // namespace platform
