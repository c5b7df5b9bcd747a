#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlParser_p.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <gtest/gtest.h>

/// XML lists for tests, and ways to parse them.
namespace testSupport {

/// What a parser made of a text: the document, or the error.
struct ParsedXml {
    std::unique_ptr<platform::PropertyListDocument> document;
    std::optional<platform::Error> error;
};

inline ParsedXml parseXml(QByteArrayView text, platform::InstructionSet instructions)
{
    using namespace platform;
    const auto loader = PropertyListTextLoader::copy(text);
    PropertyListXmlParser parser(*loader.value(), instructions);
    ParsedXml parsed;
    parsed.error = parser.parse(0);
    if (!parsed.error && parser.hasValue())
        parsed.document = parser.takeDocument();
    return parsed;
}

/// The tape, keys and text of a document, for comparing.
inline QByteArray contentOf(const ParsedXml &parsed)
{
    if (parsed.error)
        return parsed.error->toString().toUtf8();
    if (!parsed.document)
        return "null";
    const platform::PropertyListDocument &document = *parsed.document;
    QByteArray content(reinterpret_cast<const char *>(document.rows), qsizetype(document.rowCount) * 8);
    content.append(document.text, document.textSize);
    for (qsizetype i = 0; i < document.keys.size(); ++i)
        content += ' ' + document.keys.name(quint32(i));
    return content;
}

/// Parses with every set of instructions and expects the same of all.
inline ParsedXml parseXmlEveryWay(const QByteArray &text)
{
    ParsedXml plain = parseXml(text, platform::InstructionSet::Plain);
    const ParsedXml best = parseXml(text, platform::bestInstructionSet());
    EXPECT_TRUE(contentOf(plain) == contentOf(best)) << text.left(2000).constData();
    return plain;
}

/// Makes lists at random, always the same for the same seed: libraries as programs write them, or with all the oddities
/// that XML allows.
class RandomXml
{
public:
    enum class Style { Usual, Odd };

    RandomXml(quint32 seed, Style style)
        : m_random(seed)
        , m_style(style)
    { }

    QByteArray list(int entries)
    {
        QByteArray text = isOdd() ? QByteArray() : QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
        text += maybe("<!DOCTYPE plist SYSTEM \"x>y\" [ <!ELEMENT z (a)> <!-- ]> --> ]>", 2);
        text += "<plist version=\"1.0\">" + gap() + dictionary(entries, 0) + gap() + "</plist>";
        return text + gap() + maybe("<!-- end -->", 2);
    }

private:
    bool isOdd() const { return m_style == Style::Odd; }
    int below(int bound) { return m_random.bounded(bound); }
    template <size_t Count>
    QByteArray oneOf(const char *const (&choices)[Count])
    {
        return choices[below(int(Count))];
    }
    QByteArray maybe(const char *text, int oneIn)
    {
        return isOdd() && below(oneIn) == 0 ? QByteArray(text) : QByteArray();
    }

    QByteArray gap()
    {
        if (!isOdd())
            return "\n\t\t";
        return oneOf({"", " ", "\r\n\t", "\n\n\n\n\n\n\n\n\n\n\t\t\t\t\t\t\t\t\t", "<!-- <key>no</key> & -->",
                      "<?a <b> ?>", "\t\t"});
    }
    QByteArray element(const QByteArray &name, const QByteArray &content)
    {
        if (content.isEmpty() && isOdd() && below(2) == 0)
            return '<' + name + maybe(" a='/>'", 2) + "/>";
        return '<' + name + maybe(" ", 6) + maybe(" a=\"1>0\" b = ''", 6) + '>' + content + "</" + name + maybe("\n", 6)
            + '>';
    }
    QByteArray text()
    {
        QByteArray result;
        const int pieces = below(4);
        for (int i = 0; i < pieces; ++i)
            result += oneOf({"Blue", " and ", "Z\xC3\xBCrich", "\xE6\x9D\xB1\xE4\xBA\xAC", "\xF0\x9F\x8E\xB5", "&#38;",
                             "&amp;", "~", "a longer text that reaches over some blocks of bytes"});
        if (isOdd())
            result += oneOf({"", "\r\n", "\r", "&#x20ac;", "<![CDATA[<a> & ]] ]]>", "<!-- gone -->", "<?gone?>",
                             "&lt;&gt;&quot;&apos;", "]]>"});
        return result;
    }
    QByteArray key()
    {
        if (below(3) == 0)
            return element("key", QByteArray::number(below(100000)));
        if (isOdd() && below(4) == 0)
            return element("key", text());
        return element("key",
                       oneOf({"Track ID", "Name", "A", "", "Album Artist", "Persistent ID", "Library Folder Count",
                              "A key that is longer than thirty-two bytes",
                              "A key that is larger than thirty-two bytes", "01", "4294967296", "CF$UID"}));
    }
    QByteArray scalar()
    {
        switch (below(8)) {
        case 0:
            return element("integer", QByteArray::number(m_random.bounded(1 << 30)));
        case 1:
            return isOdd() ? element(
                       "integer", oneOf({" 42 ", "-1", "+ 7", "0xFF", "18446744073709551615", "&#52;2", "<!--x-->3"}))
                           : "<integer>-5</integer>";
        case 2:
            return element("date",
                           isOdd() ? oneOf({"2024-01-32T20:43:14Z", " 2001-01-01T00:00:00Z ", "-0001-01-01T00:00:00Z"})
                                   : "2024-01-31T20:43:14Z");
        case 3:
            return element("data", isOdd() ? oneOf({"", "QUJD", " QU\r\nI= ", "Q U J D"}) : "QUJDREVG");
        case 4:
            return element("real", isOdd() ? oneOf({" -3.14 ", "nan", "+Infinity", "1e-3", ".5", "5."}) : "2.5");
        case 5:
            return isOdd() ? element(oneOf({"true", "false"}), "") : oneOf({"<true/>", "<false/>"});
        default:
            return element("string", text());
        }
    }
    QByteArray value(int depth)
    {
        if (depth < 5 && below(4) == 0)
            return below(2) == 0 ? array(below(6), depth + 1) : dictionary(below(8), depth + 1);
        return scalar();
    }
    QByteArray array(int elements, int depth)
    {
        QByteArray content;
        for (int i = 0; i < elements; ++i)
            content += gap() + value(depth);
        return element("array", elements > 0 ? QByteArray(content + gap()) : content);
    }
    QByteArray dictionary(int entries, int depth)
    {
        QByteArray content;
        for (int i = 0; i < entries; ++i)
            content += gap() + key() + (isOdd() ? gap() : QByteArray()) + value(depth);
        return element("dict", entries > 0 ? QByteArray(content + gap()) : content);
    }

    QRandomGenerator m_random;
    Style m_style;
};

} // namespace testSupport
