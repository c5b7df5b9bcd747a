#pragma once

#include "Support/TestSupport.h"

#include <QDir>
#include <QString>

#include <unistd.h>

namespace testSupport {

/// What tests of files and folders stand on: an empty folder, named without any link.
struct FolderTest : testing::Test {
    const QString folder = QDir(homePath()).canonicalPath();

    /// The path of what has that name in the folder.
    QString in(const char *name) const { return folder + u'/' + QString::fromUtf8(name); }
    /// Makes a symbolic link in the folder.
    void link(const char *target, const char *name) const
    {
        ASSERT_EQ(symlink(target, in(name).toUtf8().constData()), 0);
    }
};

} // namespace testSupport
