#include "Platform/Foundation/PropertyList/PropertyList.h"

#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTextLoader_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlParser_p.h"

#include <algorithm>
#include <new>

namespace platform {

namespace {

// Enough to tell the forms apart: longer than any XML declaration.
constexpr qsizetype HeadSize = 4096;

// What is copied on its way to the document, since it is changed or read more than once.
constexpr qsizetype MaximumCopiedSize = 256 * 1024 * 1024;

// Whether a text that begins with '<' is old-style data, "<0fbd77>", and no markup. No element's name has
// only the letters of hexadecimal digits.
bool isOldStyleData(QByteArrayView text)
{
    const auto isHexadecimal = [](char character) {
        return PropertyListScalars::isSpace(character) || QByteArrayView("0123456789abcdefABCDEF").contains(character);
    };
    const auto end = std::find_if_not(text.begin() + 1, text.end(), isHexadecimal);
    return end == text.end() || *end == '>';
}

bool isXml(QByteArrayView text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), PropertyListScalars::isSpace);
    const QByteArrayView content = text.sliced(first - text.begin());
    return content.startsWith('<') && !isOldStyleData(content);
}

Result<PropertyListValue> parseXml(PropertyListTextLoader &loader, qsizetype from)
{
    PropertyListXmlParser parser(loader, bestInstructionSet());
    if (auto error = parser.parse(from))
        return *error;
    if (!parser.hasValue())
        return PropertyListValue();
    return PropertyListDocument::handOver(parser.takeDocument());
}

// A text that is not UTF-8: changed first, so that one reader of each form is enough.
Result<PropertyListValue> parseTranscoded(QByteArrayView bytes, TextForm form)
{
    const auto utf8 = transcodeToUtf8(bytes, form);
    if (!utf8)
        return utf8.error();
    auto value = [&]() -> Result<PropertyListValue> {
        if (!isXml(utf8.value()))
            return parseTextPropertyList(utf8.value());
        auto loader = PropertyListTextLoader::copy(utf8.value());
        return loader ? parseXml(*loader.value(), 0) : Result<PropertyListValue>(loader.error());
    }();
    if (value || value.error().byteOffset < 0)
        return value;
    Error error = value.error();
    error.byteOffset = offsetBeforeTranscoding(utf8.value(), error.byteOffset, form);
    return error;
}

Result<PropertyListValue> parseLoaded(PropertyListTextLoader &loader)
{
    const QByteArrayView head(loader.text(), qMin(loader.waitFor(HeadSize), HeadSize));
    if (head.startsWith("bplist"))
        return parseBinaryPropertyList(loader);
    TextForm form = detectTextForm(head);
    const bool isUtf8 = form.encoding == TextEncoding::Utf8;
    const bool isUtf8Xml = isUtf8 && isXml(head.sliced(form.markLength));
    if (isUtf8Xml) {
        const auto declared = detectXmlForm(head);
        if (!declared)
            return declared.error();
        form = declared.value();
        if (form.encoding == TextEncoding::Utf8)
            return parseXml(loader, form.markLength);
    } else if (isUtf8) {
        if (auto error = textPropertyListHeadError(head.sliced(form.markLength))) {
            error->byteOffset += form.markLength;
            return *error;
        }
    }
    if (loader.expectedSize() > MaximumCopiedSize)
        return Error{
            ErrorCode::TooLarge, QStringLiteral("larger than 256 MiB, and neither binary nor XML in UTF-8"), -1, {}};
    return parseTranscoded(QByteArrayView(loader.text(), loader.waitForAll()), form);
}

// Whatever runs out of memory, in the library or here, says so in the same way.
template <class Parse>
Result<PropertyListValue> withinMemory(const Parse &parse)
{
    try {
        return parse();
    } catch (const std::bad_alloc &) {
        return Error{ErrorCode::TooLarge, QStringLiteral("not enough memory for the list"), -1, {}};
    }
}

} // namespace

Result<PropertyListValue> parseXmlPropertyList(QByteArrayView text)
{
    auto loader = PropertyListTextLoader::copy(text);
    return loader ? parseXml(*loader.value(), 0) : Result<PropertyListValue>(loader.error());
}

Result<PropertyListValue> PropertyList::read(const QString &path)
{
    const auto parse = [&path]() -> Result<PropertyListValue> {
        auto loader = PropertyListTextLoader::open(path);
        if (!loader)
            return loader.error();
        auto value = parseLoaded(*loader.value());
        if (value)
            return value;
        // Where the system withheld the rest of the file, the reader's complaint about its end is no news.
        return loader.value()->readError().value_or(value.error());
    };
    const auto value = withinMemory(parse);
    if (value)
        return value;
    Error error = value.error();
    error.path = path;
    return error;
}

Result<PropertyListValue> PropertyList::parse(QByteArrayView bytes)
{
    return withinMemory([bytes]() -> Result<PropertyListValue> {
        auto loader = PropertyListTextLoader::copy(bytes);
        return loader ? parseLoaded(*loader.value()) : Result<PropertyListValue>(loader.error());
    });
}

} // namespace platform
