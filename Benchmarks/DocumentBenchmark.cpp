// A change of a document that is told to 1,000 observers, beside a loop of 1,000 virtual calls of the same ones. A time
// is that of a thousand changes.

#include "BenchmarkSupport.h"
#include "ZRCommon/ZRDocument.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

using benchmarkSupport::require;
using benchmarkSupport::Stopwatch;

namespace {

constexpr int observerCount = 1000, rounds = 1000;

/// Two classes, so that no call can be foreseen by the compiler.
struct Counter : ZRDocumentObserver {
    qint64 count = 0;
    void documentDidChange(ZRDocument &) override { ++count; }
};
struct OtherCounter : Counter {
    void documentDidChange(ZRDocument &) override { count += 2; }
};

struct Observers {
    std::vector<std::unique_ptr<Counter>> owned;

    Observers()
    {
        for (int i = 0; i < observerCount; ++i)
            owned.push_back(i % 2 ? std::make_unique<OtherCounter>() : std::make_unique<Counter>());
    }
    qint64 total() const
    {
        qint64 sum = 0;
        for (const auto &observer : owned)
            sum += observer->count;
        return sum;
    }
};

void Broadcast(benchmark::State &state)
{
    Observers observers;
    ZRDocument document(QStringLiteral("Type"), 1, 1, 1);
    for (const auto &observer : observers.owned)
        document.addObserver(observer.get());
    for (auto _ : state) {
        const qint64 before = observers.total();
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i) {
            document.beginChanges();
            document.documentDidChange();
            document.endChanges();
        }
        state.SetIterationTime(watch.seconds());
        require(observers.total() - before == qint64(rounds) * observerCount * 3 / 2, "somebody was not told");
    }
}

void PeerBroadcast(benchmark::State &state)
{
    const Observers observers;
    std::vector<ZRDocumentObserver *> list;
    for (const auto &observer : observers.owned)
        list.push_back(observer.get());
    ZRDocument document(QStringLiteral("Type"), 1, 1, 1);
    for (auto _ : state) {
        const qint64 before = observers.total();
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i) {
            for (ZRDocumentObserver *const observer : list)
                observer->documentDidChange(document);
            benchmark::ClobberMemory();
        }
        state.SetIterationTime(watch.seconds());
        require(observers.total() - before == qint64(rounds) * observerCount * 3 / 2, "somebody was not called");
    }
}

} // namespace

BENCHMARK(Broadcast)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerBroadcast)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
