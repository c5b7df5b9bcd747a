#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListValue.h"

#include <QByteArray>

/// The search rule for photos of both sources, the photo library and folders: whether a photo's "Caption" contains the
/// text without regard to case. Empty text matches every photo.
/// @param foldedString the text, folded (`platform::TextFolding`)
bool photoMatchesString(const platform::PropertyListView &photoDict, const QByteArray &foldedString);
