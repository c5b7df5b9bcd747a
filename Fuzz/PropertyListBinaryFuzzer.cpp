#include "Platform/Foundation/PropertyListReaders_p.h"
#include "PropertyListDecoding.h"

// Reads the bytes as a binary property list, decodes all of it, and writes it as XML.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    const QByteArrayView input(bytes, qsizetype(size));
    const auto list = platform::parseBinaryPropertyList(input);
    if (!list) {
        if (list.error().byteOffset < 0 || list.error().byteOffset > input.size())
            qFatal("an error without its place");
        return 0;
    }
    constexpr qsizetype Bound = 1 << 20; // a few bytes may expand to millions of values
    if (list.value().memoryUse() > Bound)
        return 0;
    decodeEverything(list.value());
    if (const auto xml = platform::PropertyList::writeXml(list.value().toVariant()); xml && xml.value().isEmpty())
        qFatal("a list was written as nothing");
    return 0;
}
