#pragma once

#include <QString>

class WalkSteps;

/// The walk through a storyboard: made of photos of a folder and songs, changed, saved and opened again.
void walkThroughDocument(WalkSteps &steps, const QString &photoFolder);
