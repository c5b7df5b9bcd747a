#include "Platform/Foundation/PropertyList/PropertyListXmlScalars_p.h"

#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <array>

namespace platform::PropertyListXmlScalars {

namespace {

enum class Base64Class : quint8 { Other, Digit, Space, Padding };

constexpr std::array<Base64Class, 256> Base64Classes = [] {
    std::array<Base64Class, 256> classes{};
    for (int character = 0; character < 256; ++character) {
        const char c = char(character);
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/')
            classes[size_t(character)] = Base64Class::Digit;
        else if (PropertyListScalars::isSpace(c))
            classes[size_t(character)] = Base64Class::Space;
        else if (c == '=')
            classes[size_t(character)] = Base64Class::Padding;
    }
    return classes;
}();

} // namespace

bool isBase64(QByteArrayView text)
{
    qsizetype digits = 0;
    qsizetype padding = 0;
    for (const char character : text) {
        switch (Base64Classes[static_cast<unsigned char>(character)]) {
        case Base64Class::Other:
            return false;
        case Base64Class::Space:
            break;
        case Base64Class::Padding:
            ++padding;
            break;
        case Base64Class::Digit:
            if (padding > 0)
                return false;
            ++digits;
        }
    }
    return digits % 4 != 1 && (padding == 0 || (padding <= 2 && (digits + padding) % 4 == 0));
}

} // namespace platform::PropertyListXmlScalars
