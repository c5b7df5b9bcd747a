#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "PropertyListDecoding.h"

// Reads the bytes as an old-style text property list.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    judge(platform::parseTextPropertyList(QByteArrayView(bytes, qsizetype(size))), size);
    return 0;
}
