#pragma once

#include "Platform/Foundation/FileManager.h"

/// Folders made with all that is missing above them, and aliases resolved. Any thread.
namespace ZRFileManagerExtensions {

/// Makes the folder and every missing folder above it, from the top down, each with the given attributes. Folders
/// that are there already are passed over and keep theirs.
/// @return true when the folder stands, also when it stood before. False when the path, or a level of it, exists
/// and is no folder, when a level cannot be made (levels that were made before it stay), and for the empty path.
bool mkdirsAtPath(const QString &path, const platform::FileAttributes &attributes = {});

/// The absolute path of what an alias stands for, chains followed to their end. An alias is a link as the path's
/// last component; links further up in the path do not count.
/// @return the path unchanged when it names no alias, when nothing is there, and on every failure: a missing
/// target, a chain that comes back to itself.
QString pathResolved(const QString &path);

} // namespace ZRFileManagerExtensions
