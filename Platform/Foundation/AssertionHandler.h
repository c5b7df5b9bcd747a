#pragma once

#include "Platform/Foundation/TypeName.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstddef>
#include <exception>
#include <type_traits>
#include <typeinfo>

/// @file
/// How a wrong call by a programmer is reported: through the assertion handler of the thread, which raises
/// `platform::InternalInconsistency`.
///
///     void Strip::addIndex(int index)
///     {
///         ZR_ASSERT_PARAMETER(this, index >= 0);                    // names the condition
///         ZR_ASSERT(this, m_view, "outlet to the view is not connected"); // a fixed text
///         ...
///
/// Where the text of the condition, the file or the line has to be another one than that of the code, write
/// the test and call the function:
///
///     if (!photo)
///         platform::raiseInvalidParameter({Q_FUNC_INFO, "PhotoReader", 274}, this, "photo_dict != NULL");

namespace platform {

/// The place in a source that reports a failure. `ZR_FAILURE_SOURCE` is the place where it is written.
struct FailureSource {
    const char *method = "";
    const char *file = ""; ///< Folders in front of the name are left out of the report.
    int line = 0;
};

/// A wrong call by a programmer.
class InternalInconsistency : public std::exception
{
public:
    InternalInconsistency(QString method, QString object, QString file, int line, QString description);

    QString method() const { return m_method; }
    QString object() const { return m_object; } ///< Class, address and, for a QObject with one, its name; or empty.
    QString file() const { return m_file; } ///< Without folders.
    int line() const { return m_line; }
    QString description() const { return m_description; } ///< The exact text, with nothing added.

    /// All of the above in one line of UTF-8.
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_method;
    QString m_object;
    QString m_file;
    int m_line = 0;
    QString m_description;
    QByteArray m_what;
};

/// What happens on a failed assertion. The default raises `InternalInconsistency`; a host or a test may put a
/// handler of its own in its place, for one thread at a time, to note the failure, to break into a debugger
/// or to raise something else.
class AssertionHandler
{
public:
    AssertionHandler() = default;
    AssertionHandler(const AssertionHandler &) = delete;
    AssertionHandler &operator=(const AssertionHandler &) = delete;
    virtual ~AssertionHandler() = default;

    /// The handler of the calling thread.
    static AssertionHandler &currentHandler();
    /// Replaces the handler of the calling thread; null puts the default back. Not owned: it must stay until
    /// it is replaced.
    static void setCurrentHandler(AssertionHandler *handler);

    /// Told of a failed assertion. When an override returns, `InternalInconsistency` is raised nevertheless,
    /// so that the code behind an assertion never runs with what the assertion refused.
    virtual void handleFailureInMethod(const QString &method, const QString &object, const QString &file,
                                       int lineNumber, const QString &description);
};

/// An object as it is named in a failure.
class FailureObject
{
public:
    /// No object: a static function or a free one.
    FailureObject(std::nullptr_t = nullptr) { }
    /// The object with its run-time class.
    template <class T>
    FailureObject(const T *object)
    {
        if (!object)
            return;
        if constexpr (std::is_polymorphic_v<T>)
            m_type = &typeid(*object);
        else
            m_type = &typeid(T);
        m_address = object;
        if constexpr (std::is_convertible_v<const T *, const QObject *>)
            m_name = object->objectName();
    }

    QString description() const;

private:
    const std::type_info *m_type = nullptr;
    const void *m_address = nullptr;
    QString m_name;
};

/// Reports a failure with a fixed description.
[[noreturn]] void raiseFailure(const FailureSource &source, const FailureObject &object, const QString &description);
/// Reports a failure with the description "Invalid parameter not satisfying: %s", filled in with the
/// condition.
[[noreturn]] void raiseInvalidParameter(const FailureSource &source, const FailureObject &object,
                                        const char *condition);

} // namespace platform

#define ZR_FAILURE_SOURCE (::platform::FailureSource{Q_FUNC_INFO, __FILE__, __LINE__})

/// Reports a failure of `object` (`this`, or nullptr in a function without one) unless the condition holds.
#define ZR_ASSERT(object, condition, description)                                                                      \
    ((condition) ? void(0) : ::platform::raiseFailure(ZR_FAILURE_SOURCE, object, QStringLiteral(description)))
/// The same with the condition's own text: "Invalid parameter not satisfying: index >= 0".
#define ZR_ASSERT_PARAMETER(object, condition)                                                                         \
    ((condition) ? void(0) : ::platform::raiseInvalidParameter(ZR_FAILURE_SOURCE, object, #condition))
