#pragma once

#include <QString>

/// Drives the program through its main job as a person would, with a copy of the photos of a folder, checks the state
/// after every step, and writes a numbered screenshot of each into a folder, which is made if it is not there. Says on
/// standard output what it does.
///
/// Settings and thumbnails go to a place of their own, so that nothing of the person's is touched; that must be
/// prepared before the application object is made.
class Walkthrough
{
public:
    /// To be called first thing in `main`.
    static void prepare();
    /// With the application object there.
    /// @param photoFolder with 12 photos or more; empty for the sample photos that the build makes
    /// @return whether every state was right. The first wrong one ends it and is told on standard error
    static bool run(const QString &photoFolder, const QString &outputFolder);
};
