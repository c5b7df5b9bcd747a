#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

#include <optional>

class QPainter;

/// A page of small pictures with their titles beneath: rows of equal height, each filling the width, below a heading.
/// All lengths are pixels.
class ContactSheet
{
public:
    static constexpr int minimumWidth = 200;
    static constexpr int maximumWidth = 20'000;

    /// Lays pictures out, in their order. Rows are as high as suits a thumbnail, and lower where the sheet would become
    /// too large; titles are left out where they could not be read.
    /// @param sizes of the pictures; an empty one gets room for a blank
    /// @param width of the sheet, between the limits; without one it is what suits the number of pictures
    /// @return nothing when there are more pictures than fit on a sheet, however small
    static std::optional<ContactSheet> laidOut(const QList<QSize> &sizes, std::optional<int> width);

    QSize size() const { return m_size; }
    const QList<QRect> &pictureFrames() const { return m_pictureFrames; }
    bool showsTitles() const { return m_titleHeight > 0; }

    /// The sheet with its heading and without pictures.
    QImage blank(const QString &heading, const QString &subheading) const;
    /// Draws a picture in its frame, to which it is scaled, and its title, shortened to the frame's width.
    /// @param picture null for a blank
    void draw(QPainter &painter, qsizetype index, const QImage &picture, const QString &title) const;

private:
    explicit ContactSheet(const QList<QSize> &sizes, int width, int rowHeight);
    void closeRow(qsizetype first, double aspects, int height, bool isFull);

    QSize m_size;
    int m_margin;
    int m_gap;
    int m_titleHeight;
    int m_headingHeight;
    QList<QRect> m_pictureFrames;
};
