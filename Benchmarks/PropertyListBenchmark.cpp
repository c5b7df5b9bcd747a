// From a music library on disk to a parsed property list, beside three peers that do the same: a property-list
// library, the leanest XML document tree, and a SAX parser that builds a QVariantMap. Reading the file counts for all,
// freeing the result for none.

#include "BenchmarkSupport.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <QtCore>

#include <benchmark/benchmark.h>
#include <expat.h>
#include <plist/plist.h>
#include <pugixml.hpp>

#include <iterator>
#include <vector>

using benchmarkSupport::Stopwatch;
using platform::PropertyListType;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

// How many tracks the library holds, counted in the plainest way: each has one key of this name in the file.
qsizetype expectedTracks()
{
    static const qsizetype count = [] {
        const QByteArray bytes = benchmarkSupport::readWhole(benchmarkSupport::libraryPath());
        const qsizetype end = bytes.indexOf("<key>Playlists</key>");
        return QByteArrayView(bytes).first(end < 0 ? bytes.size() : end).count("<key>Track ID</key>");
    }();
    return count;
}

void checkTracks(qsizetype count)
{
    benchmarkSupport::require(count == expectedTracks() && count > 0, "a reader found another number of tracks");
}

// Decodes every value of the list, as somebody would who wanted all of it.
qint64 decodeAll(const PropertyListView &value)
{
    switch (value.type()) {
    case PropertyListType::Dictionary: {
        qint64 sum = 0;
        for (const auto &entry : value.entries())
            sum += decodeAll(entry.value());
        return sum;
    }
    case PropertyListType::Array: {
        qint64 sum = 0;
        for (const PropertyListView &element : value.elements())
            sum += decodeAll(element);
        return sum;
    }
    case PropertyListType::String:
        return value.plainUtf8()->size();
    case PropertyListType::Integer:
        return value.toInteger();
    case PropertyListType::Real:
        return qint64(value.toReal());
    case PropertyListType::Boolean:
        return value.toBoolean();
    case PropertyListType::Date:
        return qint64(*value.toReferenceSeconds());
    case PropertyListType::Data:
        return value.toData().size();
    case PropertyListType::UID:
        return qint64(value.toUid());
    case PropertyListType::Null:
        break;
    }
    return 0;
}

void parse(benchmark::State &state, bool decode)
{
    const QString path = benchmarkSupport::libraryPath();
    const qint64 fileSize = QFileInfo(path).size();
    qint64 memory = 0;
    for (auto _ : state) {
        const qint64 before = benchmarkSupport::anonymousMemory();
        const Stopwatch watch;
        auto list = platform::PropertyList::read(path);
        if (decode && list)
            benchmark::DoNotOptimize(decodeAll(list.value()));
        state.SetIterationTime(watch.seconds());
        memory = benchmarkSupport::anonymousMemory() - before;
        benchmarkSupport::require(bool(list), "the library does not parse");
        checkTracks(list.value().value("Tracks").count());
    }
    state.counters["songs"] = double(expectedTracks());
    state.counters["memory_per_file_byte"] = double(memory) / double(fileSize);
}

void Parse(benchmark::State &state)
{
    parse(state, false);
}

void ParseAndDecode(benchmark::State &state)
{
    parse(state, true);
}

void PeerPropertyListLibrary(benchmark::State &state)
{
    const QString path = benchmarkSupport::libraryPath();
    for (auto _ : state) {
        const Stopwatch watch;
        const QByteArray bytes = benchmarkSupport::readWhole(path);
        plist_t list = nullptr;
        plist_from_xml(bytes.constData(), quint32(bytes.size()), &list);
        state.SetIterationTime(watch.seconds());
        checkTracks(list ? plist_dict_get_size(plist_dict_get_item(list, "Tracks")) : 0);
        plist_free(list);
    }
}

void PeerDocumentTree(benchmark::State &state)
{
    const QString path = benchmarkSupport::libraryPath();
    for (auto _ : state) {
        const Stopwatch watch;
        QByteArray bytes = benchmarkSupport::readWhole(path);
        pugi::xml_document document;
        const auto result =
            document.load_buffer_inplace(bytes.data(), size_t(bytes.size()), pugi::parse_default, pugi::encoding_utf8);
        state.SetIterationTime(watch.seconds());
        benchmarkSupport::require(result, "the document tree failed");
        qsizetype tracks = 0;
        for (auto node : document.child("plist").child("dict").children("key"))
            if (std::strcmp(node.text().get(), "Tracks") == 0)
                tracks = std::distance(node.next_sibling().children("dict").begin(),
                                       node.next_sibling().children("dict").end());
        checkTracks(tracks);
    }
}

// Builds QVariants from SAX events, the way most programs on this toolkit would.
class VariantBuilder
{
public:
    explicit VariantBuilder(XML_Parser parser)
    {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, begin, end);
        XML_SetCharacterDataHandler(parser, characters);
    }
    QVariant root;

private:
    struct Frame {
        bool isDictionary;
        QVariantMap map;
        QVariantList list;
        QString key;
    };

    void put(QVariant value)
    {
        if (m_frames.empty())
            root = std::move(value);
        else if (m_frames.back().isDictionary)
            m_frames.back().map.insert(m_frames.back().key, std::move(value));
        else
            m_frames.back().list.append(std::move(value));
    }
    void close()
    {
        Frame frame = std::move(m_frames.back());
        m_frames.pop_back();
        put(frame.isDictionary ? QVariant(std::move(frame.map)) : QVariant(std::move(frame.list)));
    }

    static void XMLCALL begin(void *user, const char *name, const char **)
    {
        auto &self = *static_cast<VariantBuilder *>(user);
        self.m_text.clear();
        if (std::strcmp(name, "dict") == 0 || std::strcmp(name, "array") == 0)
            self.m_frames.push_back({name[0] == 'd', {}, {}, {}});
    }
    static void XMLCALL end(void *user, const char *elementName)
    {
        auto &self = *static_cast<VariantBuilder *>(user);
        const QByteArray &text = self.m_text;
        const QByteArrayView name(elementName);
        if (name == "key")
            self.m_frames.back().key = QString::fromUtf8(text);
        else if (name == "string")
            self.put(QString::fromUtf8(text));
        else if (name == "integer")
            self.put(text.toLongLong());
        else if (name == "real")
            self.put(text.toDouble());
        else if (name == "true" || name == "false")
            self.put(name == "true");
        else if (name == "date")
            self.put(QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate));
        else if (name == "data")
            self.put(QByteArray::fromBase64(text));
        else if (name == "dict" || name == "array")
            self.close();
        self.m_text.clear();
    }
    static void XMLCALL characters(void *user, const char *text, int length)
    {
        static_cast<VariantBuilder *>(user)->m_text.append(text, length);
    }

    std::vector<Frame> m_frames;
    QByteArray m_text;
};

void PeerSaxToVariantMap(benchmark::State &state)
{
    const QString path = benchmarkSupport::libraryPath();
    for (auto _ : state) {
        const Stopwatch watch;
        const QByteArray bytes = benchmarkSupport::readWhole(path);
        XML_Parser parser = XML_ParserCreate("UTF-8");
        VariantBuilder builder(parser);
        constexpr qsizetype chunk = 1 << 20;
        bool good = true;
        for (qsizetype at = 0; good && at < bytes.size(); at += chunk) {
            const qsizetype size = qMin(chunk, bytes.size() - at);
            good = XML_Parse(parser, bytes.constData() + at, int(size), at + size == bytes.size()) == XML_STATUS_OK;
        }
        state.SetIterationTime(watch.seconds());
        XML_ParserFree(parser);
        benchmarkSupport::require(good, "the SAX parser failed");
        checkTracks(builder.root.toMap().value(QStringLiteral("Tracks")).toMap().size());
    }
}

BENCHMARK(Parse)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ParseAndDecode)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerPropertyListLibrary)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerDocumentTree)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeerSaxToVariantMap)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
