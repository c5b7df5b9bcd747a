#include "ContactSheet.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// Of thumbnails that are 240 by 180 at most, so that they are hardly ever enlarged.
constexpr int usualRowHeight = 156;
constexpr int smallRowHeight = 60; // for a few pictures in the row of a narrow sheet
constexpr int lowestRowHeight = 10;
constexpr double usualAspect = 4.0 / 3;
// A panorama is no wider than a row, a tall strip no narrower than a few letters.
constexpr double leastAspect = 0.25, greatestAspect = 6;
// What a raster painter and a decoder of the written file go along with.
constexpr int greatestHeight = 30'000;
constexpr qint64 greatestArea = 100'000'000;
constexpr int widestUnasked = 8'000;
constexpr double sheetAspect = 4.0 / 3;

const QColor paper(0xfb, 0xfa, 0xf7);
const QColor ink(0x2b, 0x2b, 0x2b);
const QColor paleInk(0x70, 0x70, 0x70);
const QColor blankPicture(0xe6, 0xe4, 0xdf);

double aspectOf(const QSize &size)
{
    return size.isEmpty() ? usualAspect : std::clamp(double(size.width()) / size.height(), leastAspect, greatestAspect);
}

int gapFor(int rowHeight)
{
    return std::clamp(rowHeight / 9, 1, 18);
}

int marginFor(int width)
{
    return std::clamp(width / 28, 10, 64);
}

int titleHeightFor(int rowHeight)
{
    return rowHeight >= 60 ? std::clamp(rowHeight / 6, 16, 24) : 0;
}

int headingPixelsFor(int width)
{
    return std::clamp(width / 44, 14, 40);
}

QFont fontOf(int pixelSize, QFont::Weight weight = QFont::Normal)
{
    QFont font;
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

void drawLine(QPainter &painter, const QRect &frame, int flags, const QFont &font, const QColor &color,
              const QString &text)
{
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(frame, flags | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(text, Qt::ElideMiddle, frame.width(), Qt::TextSingleLine));
}

/// The width at which the sheet is about as high as a page that lies on its long side.
int widthFor(const QList<QSize> &sizes)
{
    const int gap = gapFor(usualRowHeight);
    double area = 0;
    for (const QSize &size : sizes)
        area += (aspectOf(size) * usualRowHeight + gap) * (usualRowHeight + titleHeightFor(usualRowHeight) + gap);
    const int width = int(std::min(std::sqrt(area * sheetAspect), double(widestUnasked)));
    return std::clamp(width + 2 * marginFor(width), 480, widestUnasked);
}

} // namespace

std::optional<ContactSheet> ContactSheet::laidOut(const QList<QSize> &sizes, std::optional<int> width)
{
    const int sheetWidth = width ? std::clamp(*width, minimumWidth, maximumWidth) : widthFor(sizes);
    const int available = sheetWidth - 2 * marginFor(sheetWidth);
    for (int rowHeight = std::clamp(available / 5, smallRowHeight, usualRowHeight); rowHeight >= lowestRowHeight;
         rowHeight -= std::max(1, rowHeight / 8)) {
        ContactSheet sheet(sizes, sheetWidth, rowHeight);
        const QSize size = sheet.size();
        if (size.height() <= greatestHeight && qint64(size.width()) * size.height() <= greatestArea)
            return sheet;
    }
    return std::nullopt;
}

ContactSheet::ContactSheet(const QList<QSize> &sizes, int width, int rowHeight)
    : m_size(width, 0)
    , m_margin(marginFor(width))
    , m_gap(gapFor(rowHeight))
    , m_titleHeight(titleHeightFor(rowHeight))
    , m_headingHeight(headingPixelsFor(width) * 3)
{
    m_size.setHeight(m_margin + m_headingHeight);
    m_pictureFrames.reserve(sizes.size());
    const int available = width - 2 * m_margin;
    qsizetype first = 0;
    double aspects = 0;
    // The height at which so many pictures, of so many widths to a height together, fill a row.
    const auto heightOf = [&](double sum, qsizetype count) { return (available - double(count - 1) * m_gap) / sum; };
    for (qsizetype i = 0; i < sizes.size(); ++i) {
        const double aspect = aspectOf(sizes[i]);
        const qsizetype count = i - first;
        // Whether the row with the picture would be too low by more than the row without it is too high.
        const bool startsRow =
            count > 0 && rowHeight - heightOf(aspects + aspect, count + 1) > heightOf(aspects, count) - rowHeight;
        if (startsRow) {
            m_pictureFrames.resize(i);
            closeRow(first, aspects, int(heightOf(aspects, count)), true);
            first = i;
            aspects = 0;
        }
        aspects += aspect;
        m_pictureFrames.append(QRect(QPoint(), QSize(int(std::lround(aspect * 1'000)), 1'000)));
    }
    if (first < sizes.size()) {
        const int full = std::max(1, int(heightOf(aspects, sizes.size() - first)));
        closeRow(first, aspects, std::min(full, rowHeight), full <= rowHeight);
    }
    m_size.rheight() += m_margin - (sizes.isEmpty() ? 0 : m_gap);
}

// Gives the pictures from the first one on, whose frames hold their proportions till then, their places.
void ContactSheet::closeRow(qsizetype first, double aspects, int height, bool isFull)
{
    height = std::max(1, height);
    const int available = m_size.width() - 2 * m_margin;
    const double inner = isFull ? available - double(m_pictureFrames.size() - first - 1) * m_gap : aspects * height;
    double sum = 0;
    for (qsizetype i = first; i < m_pictureFrames.size(); ++i) {
        const double aspect = m_pictureFrames[i].width() / 1'000.0;
        // Rounded where they begin and end, so that what is rounded off does not add up.
        const int left = int(std::lround(inner * sum / aspects));
        sum += aspect;
        const int right = int(std::lround(inner * sum / aspects));
        m_pictureFrames[i] =
            QRect(m_margin + int(i - first) * m_gap + left, m_size.height(), std::max(1, right - left), height);
    }
    m_size.rheight() += height + m_titleHeight + m_gap;
}

QImage ContactSheet::blank(const QString &heading, const QString &subheading) const
{
    QImage sheet(m_size, QImage::Format_RGB32);
    if (sheet.isNull())
        return sheet;
    sheet.fill(paper);
    QPainter painter(&sheet);
    const int pixels = headingPixelsFor(m_size.width());
    const QRect line(m_margin, m_margin, m_size.width() - 2 * m_margin, pixels * 3 / 2);
    drawLine(painter, line, Qt::AlignLeft | Qt::AlignTop, fontOf(pixels, QFont::DemiBold), ink, heading);
    drawLine(painter, line.translated(0, pixels * 3 / 2), Qt::AlignLeft | Qt::AlignTop,
             fontOf(std::max(11, pixels / 2)), paleInk, subheading);
    return sheet;
}

void ContactSheet::draw(QPainter &painter, qsizetype index, const QImage &picture, const QString &title) const
{
    const QRect frame = m_pictureFrames[index];
    if (picture.isNull())
        painter.fillRect(frame, blankPicture);
    else
        painter.drawImage(frame.topLeft(),
                          picture.scaled(frame.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    // White skies would run into the paper.
    painter.setPen(QColor(0, 0, 0, 36));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame.adjusted(0, 0, -1, -1));
    if (showsTitles())
        drawLine(painter, QRect(frame.left(), frame.bottom() + 1, frame.width(), m_titleHeight),
                 Qt::AlignHCenter | Qt::AlignVCenter, fontOf(std::max(10, m_titleHeight / 2)), ink, title);
}
