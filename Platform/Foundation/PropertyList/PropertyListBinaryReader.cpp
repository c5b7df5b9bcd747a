#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTapeBuilder_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTextLoader_p.h"
#include "Platform/Foundation/PropertyList/Utf8Validator_p.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <optional>
#include <unordered_map>
#include <vector>

namespace platform {

using namespace PropertyListTape;

namespace {

constexpr qsizetype HeaderSize = 8; // "bplist", and the version
constexpr qsizetype TrailerSize = 32;

// Values that every list may expand to by sharing containers: 32 MiB of rows.
constexpr qsizetype FreeRows = qsizetype(1) << 22;
// Behind that, rows for each reference that the containers hold. A file that shares no container needs two at
// most; one that doubles itself at every level expands without bounds.
constexpr qsizetype RowsPerReference = 4;
// Strings do not overlap in the files that programs write. Here they may, until all of them together are so many
// times as long as the file.
constexpr qsizetype StringsPerFile = 2;

// Reads a file of this shape: header; objects, each a marker byte (kind in the upper half, size in the
// lower), a count where the size does not fit, and the content; the table of the objects' offsets; the
// trailer that tells the sizes of offsets and references. All numbers are big-endian. A container's content
// is the numbers of its objects.
class BinaryReader
{
public:
    explicit BinaryReader(PropertyListTextLoader &loader)
        : m_size(loader.waitForAll())
        , m_builder(loader.takeBuffer(), m_size)
    {
        m_builder.setMaximumRows(FreeRows);
    }

    Result<PropertyListValue> read()
    {
        if (readTrailer()) {
            m_wasRead.resize(std::size_t(m_tableOffset));
            m_numbers.resize(std::size_t(m_objectCount));
            readObject(m_topObject);
            while (!m_error && !m_open.empty())
                continueContainer();
        }
        if (m_error)
            return *m_error;
        return m_builder.finish();
    }

private:
    struct Object {
        qsizetype offset = 0; // of the marker
        quint8 kind = 0;
        quint8 size = 0;
        qsizetype content = 0;
        qsizetype count = 0; // the size, or the number behind the marker that stands in for it
    };
    using Piece = PropertyListTapeBuilder::Piece;
    // The text of a number, date or reference number. Without length: not read yet.
    struct Number {
        quint32 offset = 0;
        quint8 length = 0;
        Kind kind = False;
    };
    struct Container {
        qsizetype object; // its offset
        qsizetype references; // offset of the next reference
        qsizetype left; // entries to come
        qsizetype toValue; // bytes from a key's reference to its value's; 0 in an array
    };

    bool fail(qsizetype offset, const QString &reason)
    {
        if (!m_error)
            m_error = Error{ErrorCode::Malformed, reason, offset, {}};
        return false;
    }

    // They move when text is appended to the document.
    QByteArrayView bytes() const { return m_builder.source(); }

    // A big-endian number of any number of bytes; what does not fit 64 bits is the caller's to exclude.
    quint64 number(qsizetype offset, qsizetype size) const
    {
        quint64 result = 0;
        for (const char byte : bytes().sliced(offset, size))
            result = result << 8 | quint8(byte);
        return result;
    }

    bool readTrailer()
    {
        if (!bytes().startsWith("bplist0"))
            return fail(0, QStringLiteral("unknown version of the binary form"));
        if (m_size < HeaderSize + TrailerSize + 2)
            return fail(m_size, QStringLiteral("too short for a binary property list"));
        const qsizetype trailer = m_size - TrailerSize;
        m_offsetSize = quint8(bytes()[trailer + 6]);
        m_referenceSize = quint8(bytes()[trailer + 7]);
        m_objectCount = number(trailer + 8, 8);
        m_topObject = number(trailer + 16, 8);
        const quint64 tableOffset = number(trailer + 24, 8);
        if (m_offsetSize < 1 || m_offsetSize > 8)
            return fail(trailer + 6, QStringLiteral("impossible size of offsets"));
        if (m_referenceSize < 1 || m_referenceSize > 8)
            return fail(trailer + 7, QStringLiteral("impossible size of references"));
        if (tableOffset <= quint64(HeaderSize) || tableOffset >= quint64(trailer))
            return fail(trailer + 24, QStringLiteral("offset table outside the file"));
        m_tableOffset = qsizetype(tableOffset);
        // Each object takes one byte at least.
        if (m_objectCount < 1 || m_objectCount > quint64(trailer - m_tableOffset) / quint64(m_offsetSize)
            || m_objectCount > quint64(m_tableOffset - HeaderSize))
            return fail(trailer + 8, QStringLiteral("impossible number of objects"));
        if (m_topObject >= m_objectCount)
            return fail(trailer + 16, QStringLiteral("root object does not exist"));
        return true;
    }

    // Finds an object and reads its marker and count. All objects stand between the header and the offset
    // table.
    bool locate(quint64 index, Object &object)
    {
        const qsizetype entry = m_tableOffset + qsizetype(index) * m_offsetSize;
        const quint64 offset = number(entry, m_offsetSize);
        if (offset < quint64(HeaderSize) || offset >= quint64(m_tableOffset))
            return fail(entry, QStringLiteral("offset of an object outside the file"));
        object.offset = qsizetype(offset);
        const auto marker = quint8(bytes()[object.offset]);
        object.kind = marker >> 4;
        object.size = marker & 0xF;
        object.content = object.offset + 1;
        object.count = object.size;
        const bool hasCount = (object.kind >= 0x4 && object.kind <= 0x7) || object.kind >= 0xA;
        return !hasCount || object.size != 0xF || readLongCount(object);
    }

    // A count of fifteen or more is an integer object behind the marker.
    bool readLongCount(Object &object)
    {
        const auto marker = object.content < m_tableOffset ? quint8(bytes()[object.content]) : quint8(0);
        const qsizetype size = qsizetype(1) << (marker & 0xF);
        if (marker >> 4 != 0x1 || size > 8 || object.content + 1 + size > m_tableOffset)
            return fail(object.content, QStringLiteral("broken count of an object"));
        const quint64 count = number(object.content + 1, size);
        if (count > quint64(m_tableOffset))
            return fail(object.content, QStringLiteral("object reaches behind the objects' end"));
        object.count = qsizetype(count);
        object.content += 1 + size;
        return true;
    }

    // Whether the object's content of so many bytes ends before the offset table.
    bool fits(const Object &object, qsizetype unitSize)
    {
        return object.count <= (m_tableOffset - object.content) / unitSize
            || fail(object.offset, QStringLiteral("object reaches behind the objects' end"));
    }

    bool takeBuilderError(qsizetype offset)
    {
        if (m_builder.error() && !m_error) {
            m_error = m_builder.error();
            m_error->byteOffset = offset;
        }
        return !m_error;
    }

    bool readObject(quint64 index)
    {
        Object object;
        if (!locate(index, object))
            return false;
        const bool isNumber = (object.kind >= 0x1 && object.kind <= 0x3) || object.kind == 0x8;
        return (isNumber ? addNumber(m_numbers[std::size_t(index)], object) : addObject(object))
            && takeBuilderError(object.offset);
    }

    // The text of a number is appended once, however many values share the object.
    bool addNumber(Number &number, Object &object)
    {
        if (number.length > 0) {
            m_builder.value({number.kind, number.offset, number.length});
            return true;
        }
        if (!(object.kind == 0x1 ? addInteger(object) : object.kind == 0x8 ? addUid(object) : addReal(object)))
            return false;
        const Piece &piece = m_builder.lastNumber();
        number = {piece.offset, quint8(piece.length), piece.kind};
        return true;
    }

    bool addObject(const Object &object)
    {
        switch (object.kind) {
        case 0x0:
            if (object.size != 0x8 && object.size != 0x9)
                return fail(object.offset, QStringLiteral("object of no kind that a property list can hold"));
            m_builder.boolean(object.size == 0x9);
            return true;
        case 0x4:
            if (!fits(object, 1))
                return false;
            m_builder.value(m_builder.sourcePiece(RawData, object.content, object.count));
            return true;
        case 0x5:
        case 0x6:
        case 0x7: {
            const auto piece = stringPiece(object);
            if (piece)
                m_builder.value(*piece);
            return piece.has_value();
        }
        case 0xA: // an array
        case 0xB: // an ordered set
        case 0xC: // a set
            return fits(object, m_referenceSize) && beginContainer(object, 0);
        case 0xD:
            return fits(object, 2 * m_referenceSize) && beginContainer(object, object.count * m_referenceSize);
        default:
            return fail(object.offset, QStringLiteral("object of unknown kind"));
        }
    }

    bool addInteger(Object &object)
    {
        if (object.size > 4)
            return fail(object.offset, QStringLiteral("integer of impossible size"));
        const qsizetype size = object.count = qsizetype(1) << object.size;
        if (!fits(object, 1))
            return false;
        // One, two and four bytes are unsigned, eight signed; sixteen hold what neither can.
        const quint64 low = number(object.content + size - std::min<qsizetype>(size, 8), std::min<qsizetype>(size, 8));
        const quint64 high = size == 16 ? number(object.content, 8) : size == 8 && qint64(low) < 0 ? ~quint64(0) : 0;
        const bool negative = high == ~quint64(0) && qint64(low) < 0;
        if (high != 0 && !negative)
            return fail(object.offset, QStringLiteral("integer outside of 64 bits"));
        m_builder.integer(negative ? 0 - low : low, negative);
        return true;
    }

    bool addReal(Object &object)
    {
        const bool isDate = object.kind == 0x3;
        if (object.size != 3 && (object.size != 2 || isDate))
            return fail(object.offset, QStringLiteral("real or date of impossible size"));
        object.count = qsizetype(1) << object.size;
        if (!fits(object, 1))
            return false;
        const double value = object.size == 3 ? std::bit_cast<double>(number(object.content, 8))
                                              : double(std::bit_cast<float>(quint32(number(object.content, 4))));
        if (isDate)
            m_builder.date(value);
        else
            m_builder.real(value);
        return true;
    }

    bool addUid(Object &object)
    {
        object.count = object.size + 1;
        if (!fits(object, 1))
            return false;
        const qsizetype surplus = std::max<qsizetype>(object.count - 8, 0);
        for (const char byte : bytes().sliced(object.content, surplus)) {
            if (byte != 0)
                return fail(object.offset, QStringLiteral("reference number outside of 64 bits"));
        }
        m_builder.uid(number(object.content + surplus, object.count - surplus));
        return true;
    }

    // Whether the place is read for the first time.
    bool isFirstReading(const Object &object)
    {
        if (m_wasRead[std::size_t(object.offset)])
            return false;
        m_wasRead[std::size_t(object.offset)] = true;
        return true;
    }

    // Whether the strings read so far and this one are not longer than a file can reasonably hold.
    bool countString(const Object &object, qsizetype size)
    {
        m_stringBytes += size;
        if (m_stringBytes / StringsPerFile <= m_size)
            return true;
        if (!m_error)
            m_error = Error{ErrorCode::TooLarge, QStringLiteral("too many strings that overlap"), object.offset, {}};
        return false;
    }

    // An object that is a string. Each is checked or changed to UTF-8 once, however many values share it.
    std::optional<Piece> stringPiece(const Object &object)
    {
        if (object.kind == 0x6)
            return utf16Piece(object);
        if (!fits(object, 1))
            return std::nullopt;
        if (isFirstReading(object) && !(countString(object, object.count) && checkString(object)))
            return std::nullopt;
        return m_builder.sourcePiece(String, object.content, object.count);
    }

    bool checkString(const Object &object)
    {
        const QByteArrayView text = bytes().sliced(object.content, object.count);
        const auto *end = object.kind == 0x5
            ? std::find_if(text.begin(), text.end(), [](char character) { return quint8(character) >= 0x80; })
            : text.begin() + validUtf8Length(text);
        return end == text.end()
            || fail(object.content + (end - text.begin()),
                    object.kind == 0x5 ? QStringLiteral("string that claims to be ASCII is not")
                                       : QStringLiteral("string that claims to be UTF-8 is not"));
    }

    // Halves of surrogate pairs that stand alone become U+FFFD.
    std::optional<Piece> utf16Piece(const Object &object)
    {
        if (!fits(object, 2))
            return std::nullopt;
        const auto known = m_convertedStrings.find(object.offset);
        if (known != m_convertedStrings.cend())
            return known->second;
        if (!countString(object, 2 * object.count))
            return std::nullopt;
        QByteArray text;
        text.reserve(object.count + object.count / 2);
        for (qsizetype i = 0; i < object.count; ++i) {
            char32_t character = qFromBigEndian<quint16>(bytes().data() + object.content + 2 * i);
            if (QChar::isHighSurrogate(character) && i + 1 < object.count) {
                const auto low = qFromBigEndian<quint16>(bytes().data() + object.content + 2 * (i + 1));
                if (QChar::isLowSurrogate(low)) {
                    character = QChar::surrogateToUcs4(char16_t(character), low);
                    ++i;
                }
            }
            PropertyListScalars::appendUtf8(text, character);
        }
        const auto piece = m_builder.appendPiece(String, text);
        m_convertedStrings.emplace(object.offset, piece);
        return piece;
    }

    bool beginContainer(const Object &object, qsizetype toValue)
    {
        const auto isSame = [&object](const Container &container) { return container.object == object.offset; };
        if (std::any_of(m_open.cbegin(), m_open.cend(), isSame))
            return fail(object.offset, QStringLiteral("container that holds itself"));
        if (isFirstReading(object))
            countReferences(toValue == 0 ? object.count : 2 * object.count);
        if (object.kind == 0xD)
            m_builder.beginDictionary();
        else
            m_builder.beginArray();
        m_open.push_back({object.offset, object.content, object.count, toValue});
        return true;
    }

    // Containers that overlap hold no more references than the file does.
    void countReferences(qsizetype count)
    {
        m_references = std::min(m_references + count, m_tableOffset / m_referenceSize);
        m_builder.setMaximumRows(std::max(FreeRows, RowsPerReference * m_references));
    }

    bool readReference(qsizetype offset, quint64 &index)
    {
        index = number(offset, m_referenceSize);
        return index < m_objectCount || fail(offset, QStringLiteral("reference to an object that does not exist"));
    }

    // Adds the next entry of the innermost container, or ends it.
    bool continueContainer()
    {
        Container &container = m_open.back();
        if (container.left == 0) {
            m_open.pop_back();
            m_builder.end();
            return true;
        }
        const qsizetype reference = container.references;
        const qsizetype toValue = container.toValue;
        container.references += m_referenceSize;
        --container.left;
        quint64 index = 0;
        return (toValue == 0 || readKey(reference)) && readReference(reference + toValue, index) && readObject(index);
    }

    bool readKey(qsizetype reference)
    {
        quint64 index = 0;
        Object object;
        if (!readReference(reference, index) || !locate(index, object))
            return false;
        if (object.kind < 0x5 || object.kind > 0x7)
            return fail(object.offset, QStringLiteral("key that is no string"));
        auto piece = stringPiece(object);
        if (!piece)
            return false;
        piece->kind = Key;
        m_builder.key(*piece);
        return takeBuilderError(object.offset);
    }

    qsizetype m_size;
    qsizetype m_offsetSize = 0;
    qsizetype m_referenceSize = 0;
    quint64 m_objectCount = 0;
    quint64 m_topObject = 0;
    qsizetype m_tableOffset = 0;
    // What was read once need not be read again when further values share it. Strings and containers go by their
    // offsets, since many objects of the table may be one place of the file.
    std::vector<bool> m_wasRead; // by offset
    std::unordered_map<qsizetype, Piece> m_convertedStrings; // by offset
    std::vector<Number> m_numbers; // by object
    qsizetype m_stringBytes = 0; // of the strings read
    qsizetype m_references = 0; // in the containers read
    std::vector<Container> m_open;
    PropertyListTapeBuilder m_builder;
    std::optional<Error> m_error;
};

} // namespace

Result<PropertyListValue> parseBinaryPropertyList(PropertyListTextLoader &loader)
{
    return BinaryReader(loader).read();
}

Result<PropertyListValue> parseBinaryPropertyList(QByteArrayView bytes)
{
    auto loader = PropertyListTextLoader::copy(bytes);
    return loader ? parseBinaryPropertyList(*loader.value()) : Result<PropertyListValue>(loader.error());
}

} // namespace platform
