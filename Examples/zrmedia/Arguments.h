#pragma once

#include "ZRCommon/iTunesSortingForZR.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

/// What a call of the program asks for.
struct Arguments {
    enum class Command { Plist, Archive, Playlists, Songs, Albums, Photos, Folder, Sheet };

    Command command = Command::Plist;
    QString file;
    QString collection; ///< The playlist or album.
    QString output; ///< The file to be written.
    QString search; ///< Everything when empty.
    std::optional<iTunesSortingForZR::Column> sortColumn;
    bool isDescending = false;
    std::optional<int> width; ///< Of what is written, in pixels.
    bool isVerbose = false;
    bool showsTimings = false;
};

/// The answer to --help or --version.
struct Information {
    QString text;
};

/// A call that cannot be understood, and why.
struct UsageError {
    QString reason;
};

/// Reads the words behind the program's name.
std::variant<Arguments, Information, UsageError> parseArguments(const QStringList &words);

/// The few lines that tell how the program is called.
QString usageText();
