#pragma once

#include <QString>

#include <utility>
#include <variant>

namespace platform {

/// Why an operation on the outside world failed.
enum class ErrorCode {
    NotFound, ///< There is nothing at the path.
    NotReadable, ///< It exists, but the system does not let us read it.
    NotARegularFile, ///< A folder, socket, device or pipe stands where a file was expected.
    TooLarge, ///< Larger than the reader's stated limit.
    UnsupportedEncoding, ///< The text names, or is in, an encoding that the reader does not know.
    Malformed, ///< The content breaks the rules of its format.
    TooDeep, ///< Nested deeper than the reader's stated limit.
    NotWritable, ///< The system does not let us write.
    UnknownFormat, ///< The content is in no format that the reader knows.
};

/// An environmental failure: what went wrong, and where.
struct Error {
    ErrorCode code = ErrorCode::Malformed;
    QString reason; ///< A short English phrase without a full stop, such as "closing tag does not match".
    qint64 byteOffset = -1; ///< Where in the input, or -1 where no single byte is to blame.
    QString path; ///< The file or folder concerned; empty for input that came from memory.

    /// "path: byte 17: reason", leaving out what is not known.
    QString toString() const
    {
        QString text;
        if (!path.isEmpty())
            text += path + QLatin1String(": ");
        if (byteOffset >= 0)
            text += QStringLiteral("byte %1: ").arg(byteOffset);
        return text + reason;
    }
};

/// A value, or the reason why there is none. Asking for the side that is not there is a programming error and throws
/// std::bad_variant_access.
///
/// Thread safety: a plain value, like `Error`. It may be handed to any thread, and one that nobody changes may be read
/// from several at the same time, as far as T allows it.
template <class T>
class [[nodiscard]] Result
{
public:
    Result(T value)
        : m_content(std::in_place_index<0>, std::move(value))
    { }
    Result(Error error)
        : m_content(std::in_place_index<1>, std::move(error))
    { }

    explicit operator bool() const { return m_content.index() == 0; }

    const T &value() const & { return std::get<0>(m_content); }
    T &&value() && { return std::get<0>(std::move(m_content)); }
    T valueOr(T fallback) const { return *this ? value() : std::move(fallback); }
    const Error &error() const { return std::get<1>(m_content); }

private:
    std::variant<T, Error> m_content;
};

} // namespace platform
