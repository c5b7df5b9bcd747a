#include "Platform/Interface/InterfaceFile.h"

#include <QFile>
#include <QHash>
#include <QUiLoader>

#include <utility>

namespace platform {

namespace {

QHash<QString, InterfaceFile::MakeWidget> &registeredClasses()
{
    static QHash<QString, InterfaceFile::MakeWidget> classes;
    return classes;
}

class Loader : public QUiLoader
{
public:
    /// The first class that nobody knows; empty for none.
    QString unknownClass;

    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override
    {
        if (const InterfaceFile::MakeWidget make = registeredClasses().value(className)) {
            QWidget *const widget = make(parent);
            if (widget)
                widget->setObjectName(name);
            return widget;
        }
        // Qt would quietly make something else of it. A line is a frame that only interface files know.
        if (className != QLatin1String("Line") && !availableWidgets().contains(className)) {
            if (unknownClass.isEmpty())
                unknownClass = className;
            return new QWidget(parent);
        }
        return QUiLoader::createWidget(className, parent, name);
    }
};

QString pathOfFile(const QString &name)
{
    for (const char *const place : {"interface:", ":/ZRCommon/interface/"}) {
        const QString path = QLatin1String(place) + name + QStringLiteral(".ui");
        if (QFile::exists(path))
            return path;
    }
    return {};
}

} // namespace

void InterfaceFile::registerClass(const QString &className, MakeWidget make)
{
    registeredClasses().insert(className, std::move(make));
}

Result<std::unique_ptr<QWidget>> InterfaceFile::load(const QString &name)
{
    const QString path = pathOfFile(name);
    if (path.isEmpty())
        return Error{ErrorCode::NotFound, QStringLiteral("there is no interface file of that name"), -1, name};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{ErrorCode::NotReadable, file.errorString(), -1, path};
    Loader loader;
    std::unique_ptr<QWidget> widget(loader.load(&file));
    if (!loader.unknownClass.isEmpty())
        return Error{ErrorCode::UnknownFormat,
                     QStringLiteral("the class %1 is not registered").arg(loader.unknownClass), -1, path};
    if (!widget)
        return Error{ErrorCode::Malformed, loader.errorString(), -1, path};
    return widget;
}

} // namespace platform
