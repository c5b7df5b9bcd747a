#include "Platform/Foundation/KeyedArchive/GeometryText_p.h"

#include <QLocale>
#include <QStringView>

namespace platform {

namespace {

QString pairOf(double a, double b)
{
    const auto text = [](double number) { return QString::number(number, 'g', QLocale::FloatingPointShortest); };
    return QLatin1Char('{') + text(a) + QLatin1String(", ") + text(b) + QLatin1Char('}');
}

struct Pair {
    double a;
    double b;
};

/// Takes piece after piece from the front of a text.
class Scanner
{
public:
    explicit Scanner(QStringView text)
        : m_rest(text.trimmed())
    { }

    bool isAtEnd() const { return m_rest.isEmpty(); }
    bool take(char character)
    {
        if (!m_rest.startsWith(QLatin1Char(character)))
            return false;
        m_rest = m_rest.mid(1).trimmed();
        return true;
    }
    std::optional<double> takeNumber()
    {
        qsizetype length = 0;
        while (length < m_rest.size() && m_rest[length] != QLatin1Char(',') && m_rest[length] != QLatin1Char('}'))
            ++length;
        bool good = false;
        const double number = m_rest.first(length).trimmed().toDouble(&good);
        m_rest = m_rest.mid(length);
        return good ? std::optional(number) : std::nullopt;
    }
    std::optional<Pair> takePair()
    {
        if (!take('{'))
            return std::nullopt;
        const auto a = takeNumber();
        if (!a || !take(','))
            return std::nullopt;
        const auto b = takeNumber();
        return b && take('}') ? std::optional(Pair{*a, *b}) : std::nullopt;
    }

private:
    QStringView m_rest;
};

std::optional<Pair> toPair(const QString &text)
{
    Scanner scanner(text);
    const auto pair = scanner.takePair();
    return scanner.isAtEnd() ? pair : std::nullopt;
}

} // namespace

QString GeometryText::toString(const QPointF &point)
{
    return pairOf(point.x(), point.y());
}

QString GeometryText::toString(const QSizeF &size)
{
    return pairOf(size.width(), size.height());
}

QString GeometryText::toString(const QRectF &rect)
{
    return QLatin1Char('{') + toString(rect.topLeft()) + QLatin1String(", ") + toString(rect.size()) + QLatin1Char('}');
}

std::optional<QPointF> GeometryText::toPoint(const QString &text)
{
    const auto pair = toPair(text);
    return pair ? std::optional(QPointF(pair->a, pair->b)) : std::nullopt;
}

std::optional<QSizeF> GeometryText::toSize(const QString &text)
{
    const auto pair = toPair(text);
    return pair ? std::optional(QSizeF(pair->a, pair->b)) : std::nullopt;
}

std::optional<QRectF> GeometryText::toRect(const QString &text)
{
    Scanner scanner(text);
    if (!scanner.take('{'))
        return std::nullopt;
    const auto origin = scanner.takePair();
    if (!origin || !scanner.take(','))
        return std::nullopt;
    const auto size = scanner.takePair();
    if (!size || !scanner.take('}') || !scanner.isAtEnd())
        return std::nullopt;
    return QRectF(origin->a, origin->b, size->a, size->b);
}

} // namespace platform
