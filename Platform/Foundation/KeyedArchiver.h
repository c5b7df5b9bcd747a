#pragma once

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Result.h"

#include <QAnyStringView>
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUuid>

#include <memory>

namespace platform {

class KeyedArchiveWriter;

/// Writes objects that refer to each other into an archive: a property list in the published keyed-archive form of the
/// desktop system whose programs write such archives. Programs of that system read what is written here, too. An
/// archive is recognised by the text "NSKeyedArchiver" under "$archiver" and by its "$version", which is 100000;
/// "$objects" holds the objects, and "$top" the keys that are encoded first.
///
///     KeyedArchiver archiver;
///     archiver.encodeInt32(3, "current-version");
///     archiver.encode(slides, "slides"); // QList<std::shared_ptr<Slide>>
///     const auto bytes = archiver.finishEncoding();
///
/// Each key is used once for an object (of a key that is used twice the later value counts) and must not begin with
/// '$', which raises `InternalInconsistency`.
///
/// Objects. An object that is met several times is written once, and comes back as one object: host objects and
/// containers by identity, equal strings as one. Null is written as such. Known are the value classes, which stand
/// under that system's names (ValueObjects.h has the table), and those that the host registered (see KeyedCoding.h). An
/// object of any other class raises `InternalInconsistency`; so does a `Color` before `Color::registerClass`.
///
/// Time and order: the keys of an object are written when encoding is finished, in the order in which the objects were
/// first met. Until then the archiver holds the objects, and they must not change. Nothing recurses: an object that
/// encodes others only notes them. Cost: linear in what is written; besides the text, a few words for every object.
///
/// Thread safety: none; any thread.
class KeyedArchiver
{
public:
    /// The property list in XML form, the only one that is written.
    static constexpr int XmlFormat = 100;

    /// @param classes not owned; must stay as long as the archiver
    explicit KeyedArchiver(const ArchiveClasses &classes = ArchiveClasses::shared());
    KeyedArchiver(const KeyedArchiver &) = delete;
    KeyedArchiver &operator=(const KeyedArchiver &) = delete;
    ~KeyedArchiver();

    /// `XmlFormat`; any other format raises `InternalInconsistency`.
    void setOutputFormat(int format);
    int outputFormat() const { return XmlFormat; }

    // Numbers and bytes stand in place.
    void encodeBool(bool value, QAnyStringView key);
    void encodeInt32(qint32 value, QAnyStringView key);
    void encodeInt64(qint64 value, QAnyStringView key);
    /// Comes back as the same number, bit by bit; of not-a-number there is only one.
    void encodeDouble(double value, QAnyStringView key);

    /// The bytes in place, as some of that system's classes have theirs; null is an empty row of bytes here. (`encode`
    /// writes a reference, which is for data that objects share.)
    void encodeBytes(const QByteArray &bytes, QAnyStringView key);

    /// A reference to the object; null is written as such.
    void encodeObject(const ObjectPointer &object, QAnyStringView key);

    // References to values. A null string, byte array or UUID, an invalid date and an empty URL are written as null.
    void encode(const QString &text, QAnyStringView key);
    void encode(const QByteArray &data, QAnyStringView key);
    /// To the millisecond.
    void encode(const QDateTime &date, QAnyStringView key);
    void encode(const QUrl &url, QAnyStringView key);
    void encode(const QUuid &uuid, QAnyStringView key);

    // Points, sizes and rectangles are written as strings: "{1, 2}", "{{1, 2}, {30, 40}}".
    void encode(const QPointF &point, QAnyStringView key);
    void encode(const QSizeF &size, QAnyStringView key);
    void encode(const QRectF &rect, QAnyStringView key);

    // Lists are written as arrays.
    void encode(const QStringList &texts, QAnyStringView key);
    void encode(const QList<ObjectPointer> &objects, QAnyStringView key);
    template <class T>
    void encode(const QList<std::shared_ptr<T>> &objects, QAnyStringView key)
    {
        encode(QList<ObjectPointer>(objects.cbegin(), objects.cend()), key);
    }

    /// Writes all objects and ends the archive; nothing may be encoded afterwards. Errors: `Malformed` for a text with
    /// a character that XML cannot hold (a control character, say), `TooDeep` for objects that nest deeper than
    /// `MaximumArchiveDepth`, and `Malformed` for a circle that is entered at an array, set or dictionary rather than
    /// at a host object, since it could not be read.
    Result<QByteArray> finishEncoding();

private:
    KeyedArchiveWriter &writerForKey(QAnyStringView key) const;
    void encodeNew(const ObjectPointer &object, QAnyStringView key);

    std::unique_ptr<KeyedArchiveWriter> m_writer;
};

} // namespace platform
