#pragma once

#include "Platform/Foundation/PropertyList.h"

#include <QList>

/// Songs, as the track dictionaries of the music library that they come from. Copies share their entries, and
/// each song keeps its library in memory.
using SongList = QList<platform::PropertyListValue>;
