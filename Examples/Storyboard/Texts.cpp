#include "Texts.h"

#include <QEvent>
#include <QFileInfo>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <cmath>

QString timeText(double seconds)
{
    const auto whole = qint64(std::llround(std::min(seconds, 1e12)));
    const auto twoDigits = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const qint64 hours = whole / 3600, minutes = whole / 60 % 60;
    const QString start =
        hours > 0 ? QStringLiteral("%1:%2").arg(QString::number(hours), twoDigits(minutes)) : QString::number(minutes);
    return QStringLiteral("%1:%2").arg(start, twoDigits(whole % 60));
}

QString nameOfPath(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    return name.isEmpty() ? path : name;
}

QString isolated(const QString &text)
{
    constexpr QChar firstStrongIsolate(0x2068), popDirectionalIsolate(0x2069);
    return firstStrongIsolate + text + popDirectionalIsolate;
}

ElidedLabel::ElidedLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const
{
    return QSize(0, QLabel::minimumSizeHint().height());
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip)
        setToolTip(shownText() == text() ? QString() : text());
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), int(alignment()), palette(), isEnabled(), shownText(),
                          foregroundRole());
}
