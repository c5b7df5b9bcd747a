#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <QList>

/// Songs, as the track dictionaries of the music library that they come from. Copies share their entries, and
/// each song keeps its library in memory. A library never changes: any thread may read its songs, and a list
/// belongs to one thread at a time, like any QList; other threads take copies of their own.
using SongList = QList<platform::PropertyListValue>;
