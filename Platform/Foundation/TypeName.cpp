#include "Platform/Foundation/TypeName.h"

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#endif

QString platform::typeName(const std::type_info &type)
{
#if __has_include(<cxxabi.h>)
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           std::free);
    if (name)
        return QString::fromUtf8(name.get());
#endif
    return QString::fromUtf8(type.name());
}
