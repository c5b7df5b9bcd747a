#pragma once

#include "Platform/Foundation/Object.h"

#include <QList>

#include <memory>

namespace testSupport {

/// A number that counts how often it is compared or hashed.
class CountingNumber : public platform::Object
{
    ZR_OBJECT(CountingNumber, platform::Object)
public:
    explicit CountingNumber(int value)
        : m_value(value)
    { }
    int value() const { return m_value; }
    bool isEqual(const Object &other) const override
    {
        ++calls;
        const auto number = dynamic_cast<const CountingNumber *>(&other);
        return number && number->m_value == m_value;
    }
    size_t hash() const override
    {
        ++calls;
        return size_t(m_value);
    }

    inline static qint64 calls = 0;

private:
    int m_value;
};

inline QList<platform::ObjectPointer> countingNumbers(int count)
{
    QList<platform::ObjectPointer> result;
    for (int i = 0; i < count; ++i)
        result.append(std::make_shared<CountingNumber>(i));
    return result;
}

} // namespace testSupport
