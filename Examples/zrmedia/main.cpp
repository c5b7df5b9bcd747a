// The media browser's libraries on the command line: a host of the framework without a window. It does what any host
// does: asks a reader, waits for its notification, asks again. See usageText() for how it is called.

#include "Arguments.h"
#include "Commands.h"
#include "Interruption.h"
#include "Messages.h"
#include "Output.h"
#include "Progress.h"
#include "StandardDescriptors.h"
#include "Support.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <variant>

namespace {

constexpr int done = 0;
constexpr int inputNotUsable = 1;
constexpr int wrongUsage = 2;
constexpr int endedBySignal = 128; // and the signal's number, as shells have it

volatile std::sig_atomic_t wipesLine = 0;

// Nothing is left half-written on disk, so that the program may end at any instruction. Only what may be called in a
// signal handler is.
extern "C" void endBySignal(int signal)
{
    if (signal == SIGINT && Interruption::takeInSignalHandler())
        return;
    if (wipesLine)
        Progress::wipeFromSignalHandler();
    std::_Exit(endedBySignal + signal);
}

Failure run(const Arguments &arguments, Output &output, Timings &timings)
{
    switch (arguments.command) {
    case Arguments::Command::Plist:
        return runPlist(arguments, output, timings);
    case Arguments::Command::Archive:
        return runArchive(arguments, output, timings);
    case Arguments::Command::Playlists:
        return runPlaylists(arguments, output, timings);
    case Arguments::Command::Songs:
        return runSongs(arguments, output, timings);
    case Arguments::Command::Albums:
        return runAlbums(arguments, output, timings);
    case Arguments::Command::Photos:
        return runPhotos(arguments, output, timings);
    case Arguments::Command::Folder:
        return runFolder(arguments, output, timings);
    case Arguments::Command::Sheet:
        return runSheet(arguments, output, timings);
    }
    Q_UNREACHABLE();
}

int finish(Output &output)
{
    if (output.flush())
        return done;
    say(ZRLocalizedString("standard output: %1").arg(output.failure()));
    return inputNotUsable;
}

int run(const Arguments &arguments)
{
    Output output(stdout);
    Timings timings;
    const Failure failure = withoutExceptions(arguments, [&] { return run(arguments, output, timings); });
    if (failure)
        say(*failure);
    const int status = !failure       ? finish(output)
        : Interruption::hasHappened() ? endedBySignal + SIGINT
                                      : inputNotUsable;
    if (arguments.showsTimings) {
        Output errors(stderr);
        timings.write(errors);
        errors.flush();
    }
    return status;
}

/// Writing on a picture takes fonts, which come with an application for windows; none is ever shown.
std::unique_ptr<QCoreApplication> newApplication(int &argc, char **argv)
{
    const auto isSheet = [](const char *word) { return qstrcmp(word, "sheet") == 0; };
    if (std::none_of(argv, argv + argc, isSheet))
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Where nobody is logged in there is none, of which Qt would complain.
    static const QTemporaryDir scratch;
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(scratch.path()));
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int main(int argc, char **argv)
{
    reserveStandardDescriptors();
    const QList<QByteArray> rawWords(argv + 1, argv + std::max(argc, 1));
    const auto application = newApplication(argc, argv);
    wipesLine = standardErrorIsTerminal();
    std::signal(SIGINT, endBySignal);
#ifdef SIGPIPE
    // Whoever read the output has had enough (zrmedia … | head): nothing to complain about.
    std::signal(SIGPIPE, endBySignal);
#endif

    const auto parsed = parseArguments(QCoreApplication::arguments().mid(1));
    if (const auto *error = std::get_if<UsageError>(&parsed)) {
        say(error->reason);
        std::fputs(usageText().toUtf8().constData(), stderr);
        return wrongUsage;
    }
    if (const auto *information = std::get_if<Information>(&parsed)) {
        Output output(stdout);
        output.write(information->text.toUtf8());
        return finish(output);
    }
    const auto &arguments = std::get<Arguments>(parsed);
    if (const Failure failure = undecodableFile(arguments, rawWords)) {
        say(*failure);
        return inputNotUsable;
    }
    return run(arguments);
}
