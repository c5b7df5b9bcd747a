#pragma once

#include "Platform/Foundation/Result.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

/// @file
/// Interface files: windows and views that were laid out in Qt's designer (.ui) and are loaded by name at run time.
///
/// The file NAME is looked for as "interface:NAME.ui", which is where a host puts its own files
/// (`QDir::addSearchPath("interface", ...)`, folders or resources), and then as ":/ZRCommon/interface/NAME.ui", where
/// the framework's are. A host's file of the same name therefore takes the place of the framework's; it has to hold
/// the same outlets. An outlet is a widget that is found by its object name.
///
/// Main thread.

namespace platform::InterfaceFile {

using MakeWidget = std::function<QWidget *(QWidget *parent)>;

/// Makes a class known by the name that it has in interface files. One of the same name is replaced.
/// @param make makes a widget with the given parent, which owns it; the parent may be null
void registerClass(const QString &className, MakeWidget make);
template <class Widget>
void registerClass(const QString &className)
{
    registerClass(className, [](QWidget *parent) -> QWidget * { return new Widget(parent); });
}

/// Makes what an interface file describes.
/// @return the widget; otherwise why not: there is no such file, it is damaged, or it holds a class that is not known
Result<std::unique_ptr<QWidget>> load(const QString &name);

} // namespace platform::InterfaceFile
