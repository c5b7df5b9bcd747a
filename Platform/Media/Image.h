#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

namespace platform {

/// One form in which an image exists: a bitmap, or a drawing that has no pixels of its own.
struct ImageRepresentation {
    QSize pixelSize; ///< Of a bitmap; invalid where there are no pixels.
    QImage bitmap; ///< Null for what is no bitmap.

    ImageRepresentation() = default;
    explicit ImageRepresentation(const QImage &image)
        : pixelSize(image.size())
        , bitmap(image)
    { }
    bool isBitmap() const { return !bitmap.isNull(); }
};

/// A picture to be laid out and drawn: a logical size, in points of 1/72 inch, and the forms in which it exists, in
/// their order. The logical size is free of the pixels: an image of 240 by 180 pixels at 144 pixels per inch is
/// laid out as 120 by 90 points until somebody sets another size.
///
/// Thread safety: an image may be made, read from a file and handed over on any thread; it belongs to one thread at
/// a time.
class Image
{
public:
    /// What becomes of the pixels once they were drawn.
    enum class CacheMode {
        Default, ///< As the representation likes best.
        Always, ///< They are kept, so that the next drawing decodes nothing.
        BySize, ///< They are kept where they are smaller than the data they came from.
        Never, ///< They are made anew for each drawing.
    };

    /// Files larger than this many bytes are not read.
    static constexpr qint64 maximumFileSize = 512 * 1024 * 1024;
    /// Pictures of more pixels than this are refused by their header, before memory is taken for them. Pages of one
    /// file count together. The decoder's own limit, QImageReader::allocationLimit(), holds as well.
    static constexpr qint64 maximumPixels = 128 * 1024 * 1024;
    /// Pages of one file beyond this number are left out.
    static constexpr int maximumPages = 32;

    /// An empty image of no size.
    Image() = default;
    /// An image of one bitmap, whose logical size is its size in pixels.
    explicit Image(const QImage &bitmap);

    /// Reads a picture. Its format is told by its content, never by its name. Several pages or icon sizes become
    /// one representation each, of a moving picture only the first frame is read. Bitmaps are turned upright as the
    /// file's orientation asks. The logical size is that of the first representation at the resolution that the
    /// file states, or at 72 pixels per inch where it states none. A picture that is cut off is read as far as its
    /// decoder goes along. Only regular files are opened, opening never blocks, and the file may change or shrink
    /// while it is read.
    /// @return nothing when the file is missing, unreadable, empty, beyond the limits above, or no picture of a
    /// format that Qt knows.
    static std::shared_ptr<Image> contentsOfFile(const QString &path);

    QSizeF size() const { return m_size; }
    void setSize(const QSizeF &size) { m_size = size; }

    const std::vector<ImageRepresentation> &representations() const { return m_representations; }
    void addRepresentation(const ImageRepresentation &representation);

    CacheMode cacheMode() const { return m_cacheMode; }
    void setCacheMode(CacheMode mode) { m_cacheMode = mode; }

    /// Whether the image keeps the data it was made from, so that it can be laid out at another size without a
    /// loss.
    bool isDataRetained() const { return m_dataRetained; }
    void setDataRetained(bool retained) { m_dataRetained = retained; }

private:
    QSizeF m_size{0, 0};
    std::vector<ImageRepresentation> m_representations;
    CacheMode m_cacheMode = CacheMode::Default;
    bool m_dataRetained = false;
};

} // namespace platform
