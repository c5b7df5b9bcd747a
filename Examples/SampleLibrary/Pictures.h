#pragma once

#include <QImage>
#include <QList>
#include <QRandomGenerator>
#include <QString>

#include <functional>

class QPainter;

/// The pictures of the sample photo library. They are drawn, so that the project carries no image files, and
/// drawn from fixed seeds, so that every build makes the same ones.

/// A source of numbers that gives the same ones for the same seed.
class Random
{
public:
    explicit Random(quint32 seed)
        : m_generator(seed)
    { }
    double between(double low, double high) { return low + (high - low) * m_generator.generateDouble(); }
    int below(int end) { return int(m_generator.bounded(end)); }

private:
    QRandomGenerator m_generator;
};

/// One picture, its place in the library, and how to draw it.
struct Picture {
    QString caption; ///< As the album database holds it.
    QString fileName; ///< With the suffix of the format to store it in.
    QSize size; ///< Pixels, as it is looked at.
    std::function<void(QPainter &painter, const QSizeF &size)> draw;
    bool isPhoto = true; ///< Gets a lens's vignette and a film's grain; posters stay flat.
    int orientation = 1; ///< The EXIF orientation to store the pixels in, 1 to 8.
};

QList<Picture> landscapes();
QList<Picture> stillLifes();
QList<Picture> posters();

/// Draws the picture, upright.
QImage drawPicture(const Picture &picture);
