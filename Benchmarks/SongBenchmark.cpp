// Listing, searching and sorting the songs of a whole library, beside the loops that a program on this toolkit would
// otherwise write over QStrings that it already has.

#include "BenchmarkSupport.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "ZRCommon/iTunesLibraryReader.h"
#include "ZRCommon/iTunesSortingForZR.h"

#include <QtCore>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numeric>
#include <vector>

using benchmarkSupport::Stopwatch;

namespace {

const QString AllSongs = QStringLiteral("Library");

// A library that has been read, as a host has it after the notification.
std::shared_ptr<iTunesLibraryReader> readLibrary()
{
    auto reader = std::make_shared<iTunesLibraryReader>(benchmarkSupport::libraryPath());
    QEventLoop loop;
    const platform::Observation observation = platform::NotificationCenter::defaultCenter().addObserver(
        [&loop](const platform::Notification &) { loop.quit(); }, ZRITunesLibraryChangedNotification, reader.get());
    reader->playlistNames();
    loop.exec();
    benchmarkSupport::require(!reader->playlistNames().isEmpty(), "the library has no playlists");
    return reader;
}

struct Input {
    std::shared_ptr<iTunesLibraryReader> reader = readLibrary();
    SongList songs = reader->songsInPlaylist(AllSongs);
    // What the loops of the peers run over: album, artist, genre and name of each song.
    std::vector<std::array<QString, 4>> texts;
    // Search texts with about so many hits.
    QString tenPercent, sixtyPercent;

    Input()
    {
        for (const auto &song : std::as_const(songs))
            texts.push_back({song.value("Album").toString(), song.value("Artist").toString(),
                             song.value("Genre").toString(), song.value("Name").toString()});
        tenPercent = textWithHits(0.1);
        sixtyPercent = textWithHits(0.6);
    }
    static Input &shared()
    {
        static Input input;
        return input;
    }

    static bool matches(const std::array<QString, 4> &song, const QString &text)
    {
        return std::any_of(song.begin(), song.end(),
                           [&text](const QString &field) { return field.contains(text, Qt::CaseInsensitive); });
    }
    QList<qsizetype> matchesByLoop(const QString &text) const
    {
        QList<qsizetype> hits;
        for (size_t i = 0; i < texts.size(); ++i)
            if (matches(texts[i], text))
                hits.append(qsizetype(i));
        return hits;
    }
    // Of some texts of two letters the one that is found in about this part of the songs.
    QString textWithHits(double part) const
    {
        QString best;
        double bestDistance = 2;
        for (const QChar first : QStringLiteral("abcdefghiklmnoprstuvw")) {
            for (const QChar second : QStringLiteral("aeiorst")) {
                const QString text = QString(first) + second;
                const double distance = std::abs(double(matchesByLoop(text).size()) / double(texts.size()) - part);
                if (distance < bestDistance) {
                    bestDistance = distance;
                    best = text;
                }
            }
        }
        return best;
    }
};

void SongsInPlaylist(benchmark::State &state)
{
    for (auto _ : state) {
        // A reader of its own each time, so that whatever it makes on first use is counted.
        const auto reader = readLibrary();
        const Stopwatch watch;
        const SongList songs = reader->songsInPlaylist(AllSongs);
        state.SetIterationTime(watch.seconds());
        benchmarkSupport::require(songs.size() > 0 && songs.size() == Input::shared().songs.size(),
                                  "songs are missing");
    }
}

void search(benchmark::State &state, const QString &text)
{
    Input &input = Input::shared();
    const QList<qsizetype> expected = input.matchesByLoop(text);
    for (auto _ : state) {
        // Folds the list, and keeps the search that is timed from being narrowed to earlier hits.
        input.reader->songsMatchingString(input.songs, QStringLiteral("zzzzqqqq"));
        const Stopwatch watch;
        const SongList hits = input.reader->songsMatchingString(input.songs, text);
        state.SetIterationTime(watch.seconds());
        bool same = hits.size() == expected.size();
        for (qsizetype i = 0; same && i < hits.size(); i += 997)
            same = hits[i] == input.songs[expected[i]];
        benchmarkSupport::require(same, "the search found other songs than the loop");
    }
    state.counters["hits"] = double(expected.size()) / double(input.songs.size());
}

void peerSearch(benchmark::State &state, const QString &text)
{
    const Input &input = Input::shared();
    for (auto _ : state) {
        const Stopwatch watch;
        QList<qsizetype> hits = input.matchesByLoop(text);
        state.SetIterationTime(watch.seconds());
        benchmark::DoNotOptimize(hits);
    }
}

void SearchTenPercent(benchmark::State &state)
{
    search(state, Input::shared().tenPercent);
}
void PeerSearchTenPercent(benchmark::State &state)
{
    peerSearch(state, Input::shared().tenPercent);
}
void SearchSixtyPercent(benchmark::State &state)
{
    search(state, Input::shared().sixtyPercent);
}
void PeerSearchSixtyPercent(benchmark::State &state)
{
    peerSearch(state, Input::shared().sixtyPercent);
}

// A keystroke that narrows the one before it down: only the earlier hits are looked at.
void SearchNarrowed(benchmark::State &state)
{
    Input &input = Input::shared();
    const QString text = input.tenPercent;
    for (auto _ : state) {
        input.reader->songsMatchingString(input.songs, QStringLiteral("zzzzqqqq"));
        input.reader->songsMatchingString(input.songs, text);
        const Stopwatch watch;
        SongList hits = input.reader->songsMatchingString(input.songs, text + QLatin1Char('e'));
        state.SetIterationTime(watch.seconds());
        benchmark::DoNotOptimize(hits);
    }
}

// The first keystroke in a list, which folds it.
void SearchFirst(benchmark::State &state)
{
    Input &input = Input::shared();
    for (auto _ : state) {
        SongList songs = input.songs;
        songs.detach();
        const Stopwatch watch;
        SongList hits = input.reader->songsMatchingString(songs, QStringLiteral("riv"));
        state.SetIterationTime(watch.seconds());
        benchmark::DoNotOptimize(hits);
    }
}

template <class Sort>
void sortBySong(benchmark::State &state, const Sort &sort)
{
    for (auto _ : state) {
        const Stopwatch watch;
        const SongList sorted = sort(Input::shared().songs);
        state.SetIterationTime(watch.seconds());
        bool ordered = sorted.size() == Input::shared().songs.size();
        for (qsizetype i = 1; ordered && i < sorted.size(); i += 97)
            ordered = iTunesSortingForZR::zrCompareSongAscending(sorted[i - 1], sorted[i]) <= 0;
        benchmarkSupport::require(ordered, "the songs are not in order");
    }
}

// The reader's worker has long ranked the songs, while the peers' texts were made.
void SortBySong(benchmark::State &state)
{
    sortBySong(state, [](const SongList &songs) {
        return Input::shared().reader->songsSorted(songs, iTunesSortingForZR::Column::Song, Qt::AscendingOrder);
    });
}

// Any songs, of no reader.
void SortAnyBySong(benchmark::State &state)
{
    sortBySong(state, [](const SongList &songs) {
        return iTunesSortingForZR::sorted(songs, iTunesSortingForZR::Column::Song, Qt::AscendingOrder);
    });
}

void PeerSortBySong(benchmark::State &state)
{
    const Input &input = Input::shared();
    for (auto _ : state) {
        const Stopwatch watch;
        QList<qsizetype> order(input.songs.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&input](qsizetype a, qsizetype b) {
            return QString::compare(input.texts[size_t(a)][3], input.texts[size_t(b)][3], Qt::CaseInsensitive) < 0;
        });
        SongList sorted;
        sorted.reserve(order.size());
        for (const qsizetype song : std::as_const(order))
            sorted.append(input.songs[song]);
        state.SetIterationTime(watch.seconds());
        benchmark::DoNotOptimize(sorted);
    }
}

BENCHMARK(SongsInPlaylist)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SearchTenPercent)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerSearchTenPercent)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SearchSixtyPercent)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerSearchSixtyPercent)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SearchNarrowed)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SearchFirst)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SortAnyBySong)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SortBySong)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerSortBySong)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
