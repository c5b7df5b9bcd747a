#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace platform {

namespace {

enum class Kind { Boolean, Integer, Real, Text, Other };

Kind kindOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return Kind::Boolean;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return Kind::Integer;
    case QMetaType::Double:
    case QMetaType::Float:
        return Kind::Real;
    case QMetaType::QString:
        return Kind::Text;
    default:
        return Kind::Other;
    }
}

// What follows blanks and a sign. Numbers of other scripts are no numbers here.
struct SignedText {
    QByteArray digits;
    bool negative = false;
};

SignedText signedText(const QString &text)
{
    QByteArray bytes = text.toLatin1();
    qsizetype at = 0;
    while (at < bytes.size() && (bytes[at] == ' ' || (bytes[at] >= '\t' && bytes[at] <= '\r')))
        ++at;
    const bool isSigned = at < bytes.size() && (bytes[at] == '-' || bytes[at] == '+');
    const bool negative = isSigned && bytes[at] == '-';
    return {bytes.sliced(at + (isSigned ? 1 : 0)), negative};
}

bool booleanOf(const QString &text)
{
    const QByteArray digits = signedText(text).digits;
    for (const char digit : digits) {
        if (digit != '0')
            return (digit >= '1' && digit <= '9') || digit == 'Y' || digit == 'y' || digit == 'T' || digit == 't';
    }
    return false;
}

qint64 integerOf(const QString &text)
{
    constexpr quint64 largest = std::numeric_limits<qint64>::max();
    const auto [digits, negative] = signedText(text);
    quint64 magnitude = 0;
    const std::from_chars_result result = std::from_chars(digits.begin(), digits.end(), magnitude);
    if (result.ec == std::errc::result_out_of_range || magnitude > largest)
        return negative ? std::numeric_limits<qint64>::min() : qint64(largest);
    return negative ? -qint64(magnitude) : qint64(magnitude);
}

qint64 integerOf(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<qint64>::max();
    return value < -limit ? std::numeric_limits<qint64>::min() : qint64(value);
}

double realOf(const QString &text)
{
    const auto [digits, negative] = signedText(text);
    double magnitude = 0;
    if (digits.startsWith('-') || std::from_chars(digits.begin(), digits.end(), magnitude).ec != std::errc())
        return 0;
    return negative ? -magnitude : magnitude;
}

double finite(double value)
{
    return std::isfinite(value) ? value : 0;
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    static UserDefaults defaults(std::make_unique<QSettings>());
    return defaults;
}

UserDefaults::UserDefaults(std::unique_ptr<QSettings> settings)
    : m_settings(std::move(settings))
{ }

void UserDefaults::registerDefaults(const QVariantMap &defaults)
{
    const std::lock_guard lock(m_mutex);
    m_registered.insert(defaults);
}

QVariant UserDefaults::object(const QString &key) const
{
    if (key.isEmpty())
        return QVariant();
    const std::lock_guard lock(m_mutex);
    return m_settings->contains(key) ? m_settings->value(key) : m_registered.value(key);
}

QString UserDefaults::string(const QString &key) const
{
    const QVariant value = object(key);
    return kindOf(value) == Kind::Other ? QString() : value.toString();
}

bool UserDefaults::boolean(const QString &key) const
{
    const QVariant value = object(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
    case Kind::Integer:
        return value.toBool();
    case Kind::Real:
        return value.toDouble() != 0;
    case Kind::Text:
        return booleanOf(value.toString());
    case Kind::Other:
        break;
    }
    return false;
}

qint64 UserDefaults::integer(const QString &key) const
{
    const QVariant value = object(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
        return value.toBool() ? 1 : 0;
    case Kind::Integer:
        // Through text, since an unsigned number may not fit.
    case Kind::Text:
        return integerOf(value.toString());
    case Kind::Real:
        return integerOf(value.toDouble());
    case Kind::Other:
        break;
    }
    return 0;
}

double UserDefaults::real(const QString &key) const
{
    const QVariant value = object(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Real:
        return finite(value.toDouble());
    case Kind::Text:
        return finite(realOf(value.toString()));
    case Kind::Other:
        break;
    }
    return 0;
}

QByteArray UserDefaults::data(const QString &key) const
{
    const QVariant value = object(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

QVariantList UserDefaults::array(const QString &key) const
{
    const QVariant value = object(key);
    switch (value.typeId()) {
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return value.toList();
    case QMetaType::QString:
        return {value};
    default:
        return {};
    }
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    if (!value.isValid()) {
        remove(key);
    } else if (!key.isEmpty()) {
        const std::lock_guard lock(m_mutex);
        m_settings->setValue(key, value);
    }
}

void UserDefaults::remove(const QString &key)
{
    if (key.isEmpty())
        return; // QSettings would remove everything
    const std::lock_guard lock(m_mutex);
    m_settings->remove(key);
}

bool UserDefaults::synchronize()
{
    const std::lock_guard lock(m_mutex);
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

QVariantMap UserDefaults::persistentDomainForName(const QString &name) const
{
    if (name.isEmpty() || name.contains(u'/'))
        return {};
    const QString path =
        FileManager::homeFolder() + QStringLiteral("/Library/Preferences/") + name + QStringLiteral(".plist");
    const Result<PropertyListValue> domain = PropertyList::read(path);
    return domain ? domain.value().toVariant().toMap() : QVariantMap();
}

void UserDefaults::clear()
{
    const std::lock_guard lock(m_mutex);
    m_settings->clear();
    m_settings->sync();
    m_registered.clear();
}

} // namespace platform
