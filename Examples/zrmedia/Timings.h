#pragma once

#include <QElapsedTimer>

#include <optional>

class Output;

/// How long the parts of a call took, in seconds; nothing for those that did not happen.
struct Timings {
    std::optional<double> reading; ///< Bringing the file's bytes in, or a folder's thumbnails up to date.
    std::optional<double> parsing; ///< From there to the parsed library.
    std::optional<double> listing; ///< Collecting the names, songs or photos, or for `plist` writing them.
    std::optional<double> searching;
    std::optional<double> sorting;

    /// One line of JSON with all five keys; null for what did not happen.
    void write(Output &output) const;

    /// Runs a part and notes its time.
    template <class Part>
    static auto measured(std::optional<double> &seconds, Part part)
    {
        QElapsedTimer clock;
        clock.start();
        auto result = part();
        seconds = double(clock.nsecsElapsed()) / 1e9;
        return result;
    }
};
