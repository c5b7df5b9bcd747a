#include "Platform/Foundation/ArchivedObject.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <cstddef>
#include <vector>

using namespace platform;

namespace {

/// A host object that holds others under the keys of every kind.
class Node : public Object, public KeyedCoding
{
    ZR_OBJECT(Node, platform::Object)
public:
    /// All that were made, so that circles of them can be taken apart.
    static std::vector<std::weak_ptr<Node>> &nodes()
    {
        static std::vector<std::weak_ptr<Node>> nodes;
        return nodes;
    }
    static std::shared_ptr<Node> make()
    {
        auto node = std::make_shared<Node>();
        nodes().push_back(node);
        return node;
    }

    void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override
    {
        archiver.encode(title, "title");
        archiver.encodeDouble(seconds, "seconds");
        archiver.encodeInt32(transition, "transition");
        archiver.encode(data, "data");
        archiver.encode(size, "size");
        archiver.encodeObject(next, "next");
        archiver.encode(parts, "parts");
    }
    void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override
    {
        title = unarchiver.decodeString("title");
        seconds = unarchiver.decodeDouble("seconds");
        transition = unarchiver.decodeInt32("transition");
        data = unarchiver.decodeData("data");
        size = unarchiver.decodeSize("size");
        next = unarchiver.decodeObject("next");
        parts = unarchiver.decodeObjects("parts");
    }
    void takeApart()
    {
        next.reset();
        parts.clear();
    }

private:
    QString title;
    double seconds = 0;
    qint32 transition = 0;
    QByteArray data;
    QSizeF size;
    ObjectPointer next;
    QList<ObjectPointer> parts;
};

ObjectPointer decoded(QByteArrayView bytes, const ArchiveClasses &classes)
{
    try {
        KeyedUnarchiver unarchiver(bytes, classes);
        return unarchiver.decodeObject("root");
    } catch (const InvalidArchive &invalid) {
        if (invalid.byteOffset() > bytes.size() || invalid.reason().isEmpty())
            qFatal("an error without its place or reason");
        return nullptr;
    }
}

// What was read can be written, unless it holds what XML cannot, and read again.
void writeAndReadAgain(const ObjectPointer &root, const ArchiveClasses &classes)
{
    KeyedArchiver archiver(classes);
    archiver.encodeObject(root, "root");
    const auto bytes = archiver.finishEncoding();
    if (bytes && !decoded(bytes.value(), classes))
        qFatal("what was written cannot be read");
}

} // namespace

// Reads the bytes as a keyed archive of a host's, and as one that nobody knows the classes of.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    const QByteArrayView input(bytes, qsizetype(size));
    static const ArchiveClasses classes = [] {
        ArchiveClasses known;
        known.registerClass<Node>(QStringLiteral("Node"), {QStringLiteral("NSObject")}, Node::make);
        return known;
    }();
    if (const ObjectPointer root = decoded(input, classes))
        writeAndReadAgain(root, classes);
    for (const auto &made : Node::nodes()) {
        if (const auto node = made.lock())
            node->takeApart();
    }
    Node::nodes().clear();
    const auto contents = ArchiveContents::parse(input);
    if (!contents && contents.error().byteOffset > input.size())
        qFatal("an error beyond the end");
    return 0;
}
