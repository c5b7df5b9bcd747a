#pragma once

#include "Arguments.h"
#include "Timings.h"

#include "Platform/Foundation/Result.h"

#include <optional>

class Output;

/// Why a command could not be carried out: an input that is not usable. Ready to be shown behind "zrmedia: ".
using Failure = std::optional<QString>;

// Each runs to its end on the main thread, which has an application object, and writes JSON to the output.

Failure runPlist(const Arguments &arguments, Output &output, Timings &timings);
Failure runArchive(const Arguments &arguments, Output &output, Timings &timings);
Failure runPlaylists(const Arguments &arguments, Output &output, Timings &timings);
Failure runSongs(const Arguments &arguments, Output &output, Timings &timings);
Failure runAlbums(const Arguments &arguments, Output &output, Timings &timings);
Failure runPhotos(const Arguments &arguments, Output &output, Timings &timings);
Failure runFolder(const Arguments &arguments, Output &output, Timings &timings);
Failure runSheet(const Arguments &arguments, Output &output, Timings &timings);
