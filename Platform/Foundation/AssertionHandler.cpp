#include "Platform/Foundation/AssertionHandler.h"

namespace platform {

namespace {

// Null stands for the default handler, so that a thread that never asks costs nothing.
thread_local AssertionHandler *threadHandler = nullptr;

} // namespace

InternalInconsistency::InternalInconsistency(QString method, QString object, QString file, int line,
                                             QString description)
    : m_method(std::move(method))
    , m_object(std::move(object))
    , m_file(std::move(file))
    , m_line(line)
    , m_description(std::move(description))
{
    QString text = m_description + QStringLiteral(" (in ") + m_method;
    if (!m_object.isEmpty())
        text += QStringLiteral(" of ") + m_object;
    text += QStringLiteral(", ") + m_file + u':' + QString::number(m_line) + u')';
    m_what = text.toUtf8();
}

AssertionHandler &AssertionHandler::currentHandler()
{
    static AssertionHandler defaultHandler;
    return threadHandler ? *threadHandler : defaultHandler;
}

void AssertionHandler::setCurrentHandler(AssertionHandler *handler)
{
    threadHandler = handler;
}

void AssertionHandler::handleFailureInMethod(const QString &method, const QString &object, const QString &file,
                                             int lineNumber, const QString &description)
{
    throw InternalInconsistency(method, object, file, lineNumber, description);
}

QString FailureObject::description() const
{
    if (!m_address)
        return {};
    QString text = typeName(*m_type) + QStringLiteral(" 0x") + QString::number(quintptr(m_address), 16);
    if (!m_name.isEmpty())
        text += QStringLiteral(" \"") + m_name + u'"';
    return text;
}

void raiseFailure(const FailureSource &source, const FailureObject &object, const QString &description)
{
    const QString method = QString::fromUtf8(source.method);
    const QString path = QString::fromUtf8(source.file);
    const QString file = path.mid(path.lastIndexOf(u'/') + 1);
    AssertionHandler::currentHandler().handleFailureInMethod(method, object.description(), file, source.line,
                                                             description);
    throw InternalInconsistency(method, object.description(), file, source.line, description);
}

void raiseInvalidParameter(const FailureSource &source, const FailureObject &object, const char *condition)
{
    raiseFailure(source, object, QStringLiteral("Invalid parameter not satisfying: ") + QString::fromUtf8(condition));
}

} // namespace platform
