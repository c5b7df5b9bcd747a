#include "Platform/Foundation/PropertyList/PropertyListXmlText_p.h"

#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <cstring>
#include <optional>
#include <string_view>

namespace platform::PropertyListXmlText {

namespace {

struct NamedReference {
    std::string_view text;
    char character;
};
constexpr NamedReference NamedReferences[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

std::optional<unsigned> digitOf(char character, bool hexadecimal)
{
    if (character >= '0' && character <= '9')
        return unsigned(character - '0');
    const char lower = char(character | 0x20);
    if (hexadecimal && lower >= 'a' && lower <= 'f')
        return unsigned(lower - 'a' + 10);
    return std::nullopt;
}

/// The work on one text: reads at `from`, writes at `to`, which never overtakes it.
class Unescaper
{
public:
    Unescaper(char *first, const char *last)
        : m_from(first)
        , m_last(last)
        , m_to(first)
    { }

    Unescaped run()
    {
        while (m_from < m_last && !m_reason) {
            switch (*m_from) {
            case '&':
                replaceReference();
                break;
            case '<':
                openMarkup();
                break;
            default:
                copyCharacter();
            }
        }
        return {m_to, m_reason ? m_from : nullptr, m_reason};
    }

private:
    std::string_view rest() const { return {m_from, size_t(m_last - m_from)}; }

    void copyCharacter()
    {
        if (*m_from != '\r') {
            *m_to++ = *m_from++;
            return;
        }
        m_from += rest().substr(0, 2) == "\r\n" ? 2 : 1;
        *m_to++ = '\n'; // last, for it may stand where the text was read
    }

    void replaceReference()
    {
        if (rest().substr(0, 2) == "&#") {
            replaceCharacterReference();
            return;
        }
        for (const NamedReference &reference : NamedReferences) {
            if (rest().substr(0, reference.text.size()) == reference.text) {
                *m_to++ = reference.character;
                m_from += reference.text.size();
                return;
            }
        }
        m_reason = "reference to an entity that is not defined";
    }

    void replaceCharacterReference()
    {
        const bool hexadecimal = rest().substr(0, 3) == "&#x";
        const char *digits = m_from + (hexadecimal ? 3 : 2);
        const char *place = digits;
        char32_t character = 0;
        for (; place < m_last; ++place) {
            const auto digit = digitOf(*place, hexadecimal);
            if (!digit)
                break;
            if (character <= 0x10FFFF) // stays too large once it is
                character = character * (hexadecimal ? 16 : 10) + *digit;
        }
        const bool isCharacter = character != 0 && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
        if (place == digits || place == m_last || *place != ';')
            m_reason = "character reference without a number or semicolon";
        else if (!isCharacter)
            m_reason = "reference to a character that does not exist";
        else {
            m_to = PropertyListScalars::writeUtf8(m_to, character);
            m_from = place + 1;
        }
    }

    void openMarkup()
    {
        constexpr std::string_view DataStart = "<![CDATA[", DataEnd = "]]>";
        if (rest().substr(0, DataStart.size()) == DataStart) {
            const char *end = m_from + rest().find(DataEnd);
            m_from += DataStart.size();
            while (m_from < end)
                copyCharacter();
            m_from = end + DataEnd.size();
        } else if (m_from[1] == '!') {
            m_from += rest().find("-->", 4) + 3;
        } else {
            m_from += rest().find("?>", 2) + 2;
        }
    }

    const char *m_from;
    const char *m_last;
    char *m_to;
    const char *m_reason = nullptr;
};

} // namespace

Unescaped unescapeInPlace(char *first, const char *last)
{
    return Unescaper(first, last).run();
}

} // namespace platform::PropertyListXmlText
