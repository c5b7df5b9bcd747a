#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the keyed archives, and may change from version to
//  version.
//

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlWriter.h"

#include <QHash>
#include <QList>
#include <QString>

#include <deque>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

class KeyedArchiver;
class KeyedArchiveWriter;

/// How an object of one of the platform's classes is written.
struct ArchiveEncoder {
    /// The class's name in the archive; null for what is a value of property lists itself.
    const char *className;
    void (*write)(KeyedArchiveWriter &writer, const Object &object);
};

/// The encoder for an object, or null.
const ArchiveEncoder *archiveEncoderForObject(const Object &object);

/// A place in "$objects".
struct ArchiveReference {
    quint32 number = 0; ///< 0 for null.
};

/// Numbers the objects of an archive as they are met, and writes their records in that order.
class KeyedArchiveWriter
{
public:
    KeyedArchiveWriter(KeyedArchiver &archiver, const ArchiveClasses &classes);

    /// The reference to an object: to the same record each time.
    ArchiveReference reference(const ObjectPointer &object);
    /// The reference to an object that nobody else knows.
    ArchiveReference referenceToNew(const ObjectPointer &object);
    /// The reference to a text; equal ones share a record. A null text is null.
    ArchiveReference reference(const QString &text);

    using Value = std::variant<bool, qint64, double, QByteArray, ArchiveReference>;
    /// Writes a value under a key of the object that is written just now, or of "$top".
    void encode(const Value &value, QAnyStringView key);
    /// Writes references to the objects as an array that stands in place.
    void encodeInPlace(const QList<ObjectPointer> &objects, const char *key);
    /// What an object's values are written to while it is written.
    PropertyListXmlWriter &output() { return m_output; }

    /// Whether values may be encoded: before finishing, and while it asks objects for theirs.
    bool isEncoding() const { return !m_isFinished || m_isWriting; }
    bool isFinished() const { return m_isFinished; }
    Result<QByteArray> finish();

private:
    struct PendingObject {
        ObjectPointer object;
        const ArchiveClasses::Entry *hostClass;
        const ArchiveEncoder *encoder; // where it is no host's
    };
    struct PendingText {
        size_t place; // in m_texts
    };
    struct PendingClass {
        const ArchiveClasses::Entry *hostClass;
        const ArchiveEncoder *encoder; // where it is no host's
    };
    using Pending = std::variant<PendingObject, PendingText, PendingClass>;

    /// What an object refers to, for measuring how deep objects nest.
    struct Node {
        enum Kind : quint8 { Plain, Container, Host };
        quint32 firstReference; // in m_references; the next node's is where they end
        Kind kind;
    };

    struct Text {
        QString text;
        ArchiveReference reference;
    };

    ArchiveReference append(Pending pending, Node::Kind kind);
    ArchiveReference classReference(const PendingClass &archivedClass);
    void noteReference(ArchiveReference reference);
    void write(const PendingText &text);
    void write(const PendingClass &archivedClass);
    void write(const PendingObject &object);
    void writeValue(const Value &value);
    void writeTop();
    std::optional<Error> nestingError() const;

    KeyedArchiver &m_archiver;
    const ArchiveClasses &m_classes;
    PropertyListXmlWriter m_output;
    QList<std::pair<QString, Value>> m_top;
    std::deque<Pending> m_pending;
    std::vector<ObjectPointer> m_held; // so that no address is used for a second object
    QHash<const Object *, quint32> m_numbers;
    std::vector<Text> m_texts;
    // By hash alone, so that growing the table does not fetch every text from memory again. Of two texts with one hash
    // only the first is found, and the other written as often as it is met.
    QHash<size_t, size_t> m_textPlaces;
    QHash<const void *, ArchiveReference> m_classReferences; // by host class or encoder
    std::vector<Node> m_nodes; // by number, 0 among them
    std::vector<quint32> m_references;
    bool m_isWriting = false;
    bool m_isFinished = false;
};

} // namespace platform
