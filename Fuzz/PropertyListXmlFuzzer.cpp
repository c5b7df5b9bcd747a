#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlParser_p.h"
#include "PropertyListDecoding.h"

using namespace platform;

namespace {

// What a parser with the given instructions makes of the bytes, as bytes to compare.
QByteArray outcome(QByteArrayView input, InstructionSet instructions)
{
    const auto loader = PropertyListTextLoader::copy(input);
    PropertyListXmlParser parser(*loader.value(), instructions);
    if (const auto error = parser.parse(0)) {
        if (error->byteOffset < 0 || error->byteOffset > input.size())
            qFatal("an error without its place");
        return error->toString().toUtf8();
    }
    if (!parser.hasValue())
        return {};
    const auto document = parser.takeDocument();
    QByteArray result(reinterpret_cast<const char *>(document->rows), qsizetype(document->rowCount) * 8);
    return result.append(document->text, document->textSize);
}

} // namespace

// Reads the bytes as an XML property list with the best and with plain instructions, compares what comes of it, and
// decodes all values; then reads them in whatever form they are in, which adds the other encodings.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    const QByteArrayView input(bytes, qsizetype(size));
    if (outcome(input, InstructionSet::Plain) != outcome(input, bestInstructionSet()))
        qFatal("the instructions make a difference");
    if (const auto list = parseXmlPropertyList(input))
        decodeEverything(list.value());
    if (!input.startsWith("bplist")) { // has a fuzzer of its own
        const auto list = PropertyList::parse(input);
        if (!list && list.error().byteOffset > input.size())
            qFatal("an error beyond the end");
    }
    return 0;
}
