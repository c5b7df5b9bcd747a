#include "Platform/Foundation/PropertyList/PropertyListXmlWriter.h"

#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlText_p.h"

#include <QStringList>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>
#include <type_traits>

namespace platform {

namespace {

constexpr QByteArrayView Header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

// Room for more bytes, doubling the memory so that many small appends stay cheap.
void makeRoom(QByteArray &bytes, qsizetype more)
{
    if (bytes.capacity() < bytes.size() + more)
        bytes.reserve(std::max(bytes.size() + more, 2 * bytes.capacity()));
}

constexpr bool isXmlCharacter(char32_t character)
{
    if (character < 0x20)
        return character == '\t' || character == '\n' || character == '\r';
    return !(character >= 0xD800 && character <= 0xDFFF) && character != 0xFFFE && character != 0xFFFF;
}

// A carriage return written as it stands would be read back as a line feed.
QByteArrayView escapeOf(char32_t character)
{
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

// Whether the character stands for itself.
constexpr bool isPlain(char32_t character)
{
    return character >= 0x20 && character < 0x7F && character != '&' && character != '<' && character != '>';
}

// Writes the character that begins at a code unit, and passes it. Whether XML can hold it.
bool escapeCharacter(QStringView text, qsizetype &at, char *&output)
{
    char32_t character = text[at++].unicode();
    if (isPlain(character)) {
        *output++ = char(character);
        return true;
    }
    if (QChar::isHighSurrogate(character) && at < text.size() && text[at].isLowSurrogate())
        character = QChar::surrogateToUcs4(char16_t(character), text[at++].unicode());
    if (!isXmlCharacter(character))
        return false;
    const QByteArrayView escape = escapeOf(character);
    if (escape.isEmpty())
        output = PropertyListScalars::writeUtf8(output, character);
    else
        output = std::copy(escape.begin(), escape.end(), output);
    return true;
}

template <class T>
QByteArrayView formatted(char (&memory)[32], T number)
{
    return QByteArrayView(memory, std::to_chars(memory, std::end(memory), number).ptr);
}

// The shortest digits that read back the same, with an exponent only where printf's %.17g would have one.
QByteArrayView formattedReal(char (&memory)[32], double number)
{
    const double magnitude = std::fabs(number);
    const bool hasExponent = magnitude != 0 && (magnitude < 1e-4 || magnitude >= 1e17);
    const auto format = hasExponent ? std::chars_format::scientific : std::chars_format::fixed;
    return QByteArrayView(memory, std::to_chars(memory, std::end(memory), number, format).ptr);
}

} // namespace

PropertyListXmlWriter::PropertyListXmlWriter()
    : m_output(Header.toByteArray())
{ }

void PropertyListXmlWriter::raw(QByteArrayView text)
{
    const qsizetype used = m_output.size();
    makeRoom(m_output, text.size());
    m_output.resize(used + text.size());
    std::copy(text.begin(), text.end(), m_output.data() + used);
}

void PropertyListXmlWriter::indent(qsizetype more)
{
    static const QByteArray tabs(PropertyListTape::MaximumDepth + 1, '\t');
    raw(QByteArrayView(tabs).first(qsizetype(m_open.size()) + more));
}

// A container is written as an empty element until something comes to stand in it.
void PropertyListXmlWriter::openParent()
{
    if (m_open.empty() || m_open.back().entries++ > 0)
        return;
    m_output.chop(3); // "/>\n"
    raw(">\n");
}

// Where a value begins. In a dictionary the key has opened the dictionary already.
bool PropertyListXmlWriter::beginEntry()
{
    if (m_error)
        return false;
    if (m_open.empty())
        ++m_rootValues;
    else if (m_open.back().kind == Container::Array)
        openParent();
    indent();
    return true;
}

bool PropertyListXmlWriter::isRoomForContainer()
{
    if (!m_error && m_open.size() >= std::size_t(PropertyListTape::MaximumDepth)) {
        m_error = Error{ErrorCode::TooDeep,
                        QStringLiteral("more than %1 dictionaries and arrays within one another")
                            .arg(PropertyListTape::MaximumDepth),
                        -1,
                        {}};
    }
    return !m_error;
}

void PropertyListXmlWriter::begin(Container container)
{
    if (!isRoomForContainer() || !beginEntry())
        return;
    raw(container == Container::Dictionary ? QByteArrayView("<dict/>\n") : QByteArrayView("<array/>\n"));
    m_open.push_back({container});
}

void PropertyListXmlWriter::end()
{
    if (m_error)
        return;
    Q_ASSERT(!m_open.empty());
    const Open closed = m_open.back();
    m_open.pop_back();
    if (closed.entries == 0)
        return;
    indent();
    raw(closed.kind == Container::Dictionary ? QByteArrayView("</dict>\n") : QByteArrayView("</array>\n"));
}

void PropertyListXmlWriter::key(QAnyStringView key)
{
    if (m_error)
        return;
    Q_ASSERT(!m_open.empty() && m_open.back().kind == Container::Dictionary);
    openParent();
    indent();
    raw("<key>");
    const qsizetype start = m_output.size();
    if (!escaped(key)) {
        failAt(QStringLiteral("character that XML cannot hold in a key"), Place::Key);
        return;
    }
    m_open.back().key = start;
    m_open.back().keyLength = m_output.size() - start;
    raw("</key>\n");
}

void PropertyListXmlWriter::string(QAnyStringView string)
{
    if (!beginEntry())
        return;
    raw("<string>");
    if (escaped(string))
        raw("</string>\n");
    else
        failAt(QStringLiteral("character that XML cannot hold"), Place::BegunValue);
}

void PropertyListXmlWriter::scalar(QByteArrayView opening, QByteArrayView text, QByteArrayView closing)
{
    if (!beginEntry())
        return;
    raw(opening);
    raw(text);
    raw(closing);
}

void PropertyListXmlWriter::integer(qint64 number)
{
    char memory[32];
    scalar("<integer>", formatted(memory, number), "</integer>\n");
}

void PropertyListXmlWriter::unsignedInteger(quint64 number)
{
    char memory[32];
    scalar("<integer>", formatted(memory, number), "</integer>\n");
}

void PropertyListXmlWriter::real(double number)
{
    char memory[32];
    if (std::isfinite(number))
        scalar("<real>", formattedReal(memory, number), "</real>\n");
    else if (std::isnan(number))
        scalar("<real>", "nan", "</real>\n");
    else
        scalar("<real>", number > 0 ? QByteArrayView("+infinity") : QByteArrayView("-infinity"), "</real>\n");
}

void PropertyListXmlWriter::boolean(bool value)
{
    scalar(value ? QByteArrayView("<true/>\n") : QByteArrayView("<false/>\n"), {}, {});
}

void PropertyListXmlWriter::date(double referenceSeconds)
{
    constexpr double Bound = 4e11; // seconds, somewhat more than 9999 years before and after the epoch
    if (!(std::fabs(referenceSeconds) < Bound)) {
        fail(QStringLiteral("date out of range"));
        return;
    }
    const qint64 seconds = qint64(std::floor(referenceSeconds)) + PropertyListScalars::ReferenceEpoch;
    const qint64 days = seconds >= 0 ? seconds / 86400 : -((86399 - seconds) / 86400);
    const auto [year, month, day] = PropertyListScalars::civilFromDays(days);
    if (year < -9999 || year > 9999) {
        fail(QStringLiteral("date out of range"));
        return;
    }
    const auto rest = int(seconds - days * 86400);
    char memory[32];
    const int length = qsnprintf(memory, sizeof memory, "%s%04d-%02d-%02dT%02d:%02d:%02dZ", year < 0 ? "-" : "",
                                 int(std::abs(year)), month, day, rest / 3600, rest / 60 % 60, rest % 60);
    scalar("<date>", QByteArrayView(memory, length), "</date>\n");
}

// In the platform's form the lines of data stand under their element and end before column 76, where a tab counts
// eight; deeper than eight levels nothing changes any more.
void PropertyListXmlWriter::data(QByteArrayView bytes)
{
    if (!beginEntry())
        return;
    const auto tabs = std::min<qsizetype>(qsizetype(m_open.size()), 8);
    const qsizetype lineLength = 76 - 8 * tabs;
    const QByteArray digits = QByteArray::fromRawData(bytes.data(), bytes.size()).toBase64();
    raw("<data>\n");
    makeRoom(m_output, digits.size() + (digits.size() / lineLength + 1) * (tabs + 1));
    for (qsizetype at = 0; at < digits.size(); at += lineLength) {
        m_output.append(tabs, '\t');
        m_output.append(digits.data() + at, std::min(lineLength, digits.size() - at));
        m_output.append('\n');
    }
    indent();
    raw("</data>\n");
}

// At once, since archives consist of them.
void PropertyListXmlWriter::uid(quint64 number)
{
    if (!isRoomForContainer() || !beginEntry())
        return;
    char memory[32];
    raw("<dict>\n");
    indent(1);
    raw("<key>CF$UID</key>\n");
    indent(1);
    raw("<integer>");
    raw(formatted(memory, number));
    raw("</integer>\n");
    indent();
    raw("</dict>\n");
}

bool PropertyListXmlWriter::escaped(QAnyStringView text)
{
    return text.visit([this](auto view) {
        if constexpr (std::is_same_v<decltype(view), QStringView>) {
            return escaped(view);
        } else {
            // As literals are, which most keys are.
            if (std::all_of(view.data(), view.data() + view.size(), isPlain)) {
                raw(QByteArrayView(view.data(), view.size()));
                return true;
            }
            return escaped(QStringView(QString(view.toString())));
        }
    });
}

// Writes in steps, so that room for the longest escapes is never taken for more than one of them.
bool PropertyListXmlWriter::escaped(QStringView text)
{
    constexpr qsizetype Step = 1024; // bytes
    constexpr qsizetype LongestEscape = 6; // bytes for the two code units of one character, or for one
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype used = m_output.size();
        makeRoom(m_output, Step);
        m_output.resize(used + Step);
        char *output = m_output.data() + used;
        const char *const full = output + Step - LongestEscape;
        bool good = true;
        while (good && at < text.size() && output <= full)
            good = escapeCharacter(text, at, output);
        m_output.truncate(output - m_output.constData());
        if (!good)
            return false;
    }
    return true;
}

void PropertyListXmlWriter::fail(const QString &reason)
{
    failAt(reason, Place::NextValue);
}

void PropertyListXmlWriter::failAt(const QString &reason, Place place)
{
    if (!m_error)
        m_error = Error{ErrorCode::Malformed, reason + path(place), -1, {}};
}

// " in Albums/0/Name"; nothing at the root.
QString PropertyListXmlWriter::path(Place place) const
{
    QStringList steps;
    for (const Open &open : m_open) {
        const bool innermost = &open == &m_open.back();
        if (innermost && place == Place::Key)
            continue;
        if (open.kind == Container::Dictionary) {
            QByteArray key = m_output.mid(open.key, open.keyLength);
            char *const first = key.data();
            const char *const last = PropertyListXmlText::unescapeInPlace(first, first + key.size()).last;
            steps += QString::fromUtf8(first, last - first);
        } else {
            steps += QString::number(innermost && place == Place::NextValue ? open.entries : open.entries - 1);
        }
    }
    return steps.isEmpty() ? QString() : QStringLiteral(" in ") + steps.join(QLatin1Char('/'));
}

Result<QByteArray> PropertyListXmlWriter::finish()
{
    if (m_error)
        return *std::exchange(m_error, std::nullopt);
    Q_ASSERT(m_open.empty() && m_rootValues == 1);
    raw("</plist>\n");
    return std::exchange(m_output, {});
}

} // namespace platform
