#include "Platform/Foundation/EventBoundary.h"

#include "Platform/Foundation/TypeName.h"

#include <exception>
#include <typeinfo>

void platform::logCurrentException(const QLoggingCategory &category, const QString &what)
{
    QString text = QStringLiteral("an exception of unknown type");
    try {
        throw;
    } catch (const std::exception &exception) {
        text = typeName(typeid(exception)) + QStringLiteral(": ") + QString::fromUtf8(exception.what());
    } catch (...) {
        // Nothing is known of it but that it came.
    }
    qCWarning(category).noquote() << what + QStringLiteral(": ") + text;
}
