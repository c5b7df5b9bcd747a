#pragma once

#include <QString>

class WalkSteps;

/// The walk through the window of photos, with a copy of the photos of a folder.
void walkThroughPhotos(WalkSteps &steps, const QString &photoFolder);
