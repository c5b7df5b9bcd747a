#include "Arguments.h"

#include "ContactSheet.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QCommandLineParser>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Command = Arguments::Command;
using iTunesSortingForZR::Column;

const QString searchName = QStringLiteral("search");
const QString sortName = QStringLiteral("sort");
const QString descendingName = QStringLiteral("descending");
const QString widthName = QStringLiteral("width");
const QString verboseName = QStringLiteral("verbose");
const QString timingsName = QStringLiteral("timings");
const QString helpName = QStringLiteral("help");
const QString versionName = QStringLiteral("version");

struct Syntax {
    const char *name;
    Command command;
    qsizetype positional; // words behind the command
    QStringList options; // beside those that all take
};

const std::array syntaxes{Syntax{"plist", Command::Plist, 1, {}},
                          Syntax{"archive", Command::Archive, 1, {}},
                          Syntax{"playlists", Command::Playlists, 1, {}},
                          Syntax{"songs", Command::Songs, 2, {searchName, sortName, descendingName}},
                          Syntax{"albums", Command::Albums, 1, {}},
                          Syntax{"photos", Command::Photos, 2, {searchName}},
                          Syntax{"folder", Command::Folder, 1, {searchName, verboseName}},
                          Syntax{"sheet", Command::Sheet, 2, {widthName, verboseName}}};

const Syntax *syntaxNamed(const QString &name)
{
    const auto found = std::find_if(syntaxes.begin(), syntaxes.end(),
                                    [&](const Syntax &syntax) { return name == QLatin1String(syntax.name); });
    return found == syntaxes.end() ? nullptr : found;
}

std::optional<Column> columnNamed(const QString &name)
{
    static constexpr std::pair<QLatin1String, Column> columns[] = {{QLatin1String("Song"), Column::Song},
                                                                   {QLatin1String("Artist"), Column::Artist},
                                                                   {QLatin1String("Time"), Column::Time}};
    for (const auto &[columnName, column] : columns) {
        if (name.compare(columnName, Qt::CaseInsensitive) == 0)
            return column;
    }
    return {};
}

std::optional<int> widthNamed(const QString &text)
{
    bool isNumber = false;
    const int width = text.toInt(&isNumber);
    return isNumber && width >= ContactSheet::minimumWidth && width <= ContactSheet::maximumWidth ? std::optional(width)
                                                                                                  : std::nullopt;
}

std::variant<Arguments, Information, UsageError> checked(const QCommandLineParser &parser)
{
    QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        return UsageError{ZRLocalizedString("no command given")};
    const QString name = words.takeFirst();
    const Syntax *syntax = syntaxNamed(name);
    if (!syntax)
        return UsageError{ZRLocalizedString("there is no command \"%1\"").arg(name)};
    if (words.size() < syntax->positional)
        return UsageError{ZRLocalizedString("too few arguments for \"%1\"").arg(name)};
    if (words.size() > syntax->positional)
        return UsageError{ZRLocalizedString("too many arguments for \"%1\"").arg(name)};
    for (const QString &option : {searchName, sortName, widthName, verboseName}) {
        if (parser.isSet(option) && !syntax->options.contains(option))
            return UsageError{
                ZRLocalizedString("\"%1\" takes no %2").arg(name, QString(QStringLiteral("--") + option))};
    }
    if (parser.isSet(descendingName) && !parser.isSet(sortName))
        return UsageError{ZRLocalizedString("--descending needs --sort")};
    if (words.first().isEmpty() || (syntax->command == Command::Sheet && words.last().isEmpty()))
        return UsageError{ZRLocalizedString("the name of the file is empty")};

    Arguments arguments;
    arguments.command = syntax->command;
    arguments.file = words.value(0);
    (syntax->command == Command::Sheet ? arguments.output : arguments.collection) = words.value(1);
    arguments.search = parser.value(searchName);
    if (parser.isSet(sortName)) {
        arguments.sortColumn = columnNamed(parser.value(sortName));
        if (!arguments.sortColumn)
            return UsageError{ZRLocalizedString("\"%1\" is none of Song, Artist and Time").arg(parser.value(sortName))};
    }
    if (parser.isSet(widthName)) {
        arguments.width = widthNamed(parser.value(widthName));
        if (!arguments.width)
            return UsageError{ZRLocalizedString("\"%1\" is no width from %2 to %3")
                                  .arg(parser.value(widthName))
                                  .arg(ContactSheet::minimumWidth)
                                  .arg(ContactSheet::maximumWidth)};
    }
    arguments.isVerbose = parser.isSet(verboseName);
    arguments.isDescending = parser.isSet(descendingName);
    arguments.showsTimings = parser.isSet(timingsName);
    return arguments;
}

// What is wrong where Qt's parser refuses a call, in the user's language, which Qt's own texts are not in.
UsageError misplacedOption(const QCommandLineParser &parser, const QStringList &words)
{
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty())
        return {ZRLocalizedString("there is no option \"%1\"").arg(unknown.first())};
    // An option takes whatever follows it, so that only the last word can lack its value.
    const QString last = words.last();
    for (const QString &option : {searchName, sortName, widthName}) {
        if (last == QStringLiteral("--") + option)
            return {ZRLocalizedString("\"%1\" needs a value").arg(last)};
    }
    return {ZRLocalizedString("an option has a value that it does not take")};
}

QString helpText()
{
    const QStringList lines{
        ZRLocalizedString("plist      any property list as JSON"),
        ZRLocalizedString(
            "archive    a keyed archive as JSON: each object where it is referred to, its class under $class;"),
        ZRLocalizedString("           inside itself it is {\"$ref\": n}, and has that number under $id"),
        ZRLocalizedString("playlists  the names of a music library's playlists"),
        ZRLocalizedString("songs      the songs of a playlist, with every key of their track dictionaries"),
        ZRLocalizedString("albums     the names of a photo library's albums"),
        ZRLocalizedString("photos     the photos of an album: title, imagePath, creationDate"),
        ZRLocalizedString("folder     the photos of a folder, once their thumbnails are made and kept in it"),
        ZRLocalizedString("sheet      a picture of a folder's thumbnails with their titles, as a PNG file"),
        QString(),
        ZRLocalizedString(
            "--search TEXT  songs with the text in their name, artist, album or genre, photos with the text"),
        ZRLocalizedString("               in their caption, without regard to case"),
        ZRLocalizedString("--sort COLUMN  songs in the order of Song, Artist or Time"),
        ZRLocalizedString("--descending   in the opposite order"),
        ZRLocalizedString("--width PX     the width of the sheet in pixels"),
        ZRLocalizedString("--verbose      every file of the folder that no thumbnail was made of, and why"),
        ZRLocalizedString("--timings      a line of JSON on standard error: seconds for reading, parsing, listing,"),
        ZRLocalizedString("               searching and sorting"),
        QStringLiteral("--help, --version"),
        QString(),
        ZRLocalizedString("JSON in UTF-8 goes to standard output, everything else to standard error."),
        ZRLocalizedString(
            "Exit status: 0 done, 1 input not usable, 2 wrong usage, 130 interrupted, 141 nobody reads on."),
    };
    return usageText() + QLatin1Char('\n') + lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace

std::variant<Arguments, Information, UsageError> parseArguments(const QStringList &words)
{
    QCommandLineParser parser;
    parser.addOption({searchName, {}, QStringLiteral("text")});
    parser.addOption({sortName, {}, QStringLiteral("column")});
    parser.addOption({widthName, {}, QStringLiteral("pixels")});
    parser.addOption(QCommandLineOption(QStringList{QStringLiteral("h"), helpName}));
    for (const QString &name : {descendingName, verboseName, timingsName, versionName})
        parser.addOption(QCommandLineOption(name));
    // The parser takes the first word for the program's name.
    if (!parser.parse(QStringList{QStringLiteral("zrmedia")} + words))
        return misplacedOption(parser, words);
    if (parser.isSet(helpName))
        return Information{helpText()};
    if (parser.isSet(versionName))
        return Information{QStringLiteral("zrmedia " ZR_VERSION "\n")};
    return checked(parser);
}

QString usageText()
{
    return QStringLiteral("zrmedia plist FILE\n"
                          "zrmedia archive FILE\n"
                          "zrmedia playlists LIBRARY\n"
                          "zrmedia songs LIBRARY PLAYLIST [--search TEXT] [--sort Song|Artist|Time] [--descending]\n"
                          "zrmedia albums ALBUMDATA\n"
                          "zrmedia photos ALBUMDATA ALBUM [--search TEXT]\n"
                          "zrmedia folder DIR [--search TEXT] [--verbose]\n"
                          "zrmedia sheet DIR OUT.png [--width PX] [--verbose]\n")
        + ZRLocalizedString("Each also takes --timings; --help tells more.") + QLatin1Char('\n');
}
