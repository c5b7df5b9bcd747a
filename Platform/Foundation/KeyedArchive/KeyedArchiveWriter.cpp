#include "Platform/Foundation/KeyedArchive/KeyedArchiveWriter_p.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/ValueObjects.h"

#include <QStringList>

#include <limits>

namespace platform {

KeyedArchiveWriter::KeyedArchiveWriter(KeyedArchiver &archiver, const ArchiveClasses &classes)
    : m_archiver(archiver)
    , m_classes(classes)
    , m_nodes{Node{0, Node::Plain}}
{ }

// References

ArchiveReference KeyedArchiveWriter::append(Pending pending, Node::Kind kind)
{
    m_pending.push_back(std::move(pending));
    m_nodes.push_back(Node{0, kind});
    return {quint32(m_nodes.size() - 1)};
}

ArchiveReference KeyedArchiveWriter::classReference(const PendingClass &archivedClass)
{
    const void *known = archivedClass.hostClass ? static_cast<const void *>(archivedClass.hostClass)
                                                : static_cast<const void *>(archivedClass.encoder);
    ArchiveReference &reference = m_classReferences[known];
    if (reference.number == 0)
        reference = append(archivedClass, Node::Plain);
    return reference;
}

ArchiveReference KeyedArchiveWriter::reference(const QString &text)
{
    if (text.isNull())
        return {};
    const size_t hash = qHash(text);
    const auto place = m_textPlaces.constFind(hash);
    if (place != m_textPlaces.cend() && m_texts[*place].text == text)
        return m_texts[*place].reference;
    if (place == m_textPlaces.cend())
        m_textPlaces.insert(hash, m_texts.size());
    const ArchiveReference reference = append(PendingText{m_texts.size()}, Node::Plain);
    m_texts.push_back({text, reference});
    return reference;
}

ArchiveReference KeyedArchiveWriter::reference(const ObjectPointer &object)
{
    if (!object)
        return {};
    const auto known = m_numbers.constFind(object.get());
    if (known != m_numbers.cend())
        return {*known};
    const ArchiveReference reference = referenceToNew(object);
    m_numbers.insert(object.get(), reference.number);
    m_held.push_back(object);
    return reference;
}

ArchiveReference KeyedArchiveWriter::referenceToNew(const ObjectPointer &object)
{
    if (const auto *hostClass = m_classes.classOfObject(*object))
        return append(PendingObject{object, hostClass, nullptr}, Node::Host);
    if (const auto *string = dynamic_cast<const String *>(object.get()))
        return reference(string->value().isNull() ? QLatin1String("") : string->value());
    const ArchiveEncoder *encoder = archiveEncoderForObject(*object);
    if (!encoder)
        raiseFailure(ZR_FAILURE_SOURCE, &m_archiver,
                     QStringLiteral("class %1 is not registered for archives").arg(object->objectClass().name()));
    return append(PendingObject{object, nullptr, encoder}, encoder->className ? Node::Container : Node::Plain);
}

void KeyedArchiveWriter::noteReference(ArchiveReference reference)
{
    if (m_nodes[reference.number].kind != Node::Plain)
        m_references.push_back(reference.number);
}

// Values

void KeyedArchiveWriter::encode(const Value &value, QAnyStringView key)
{
    if (!m_isWriting) {
        m_top.append({key.toString(), value});
        return;
    }
    m_output.key(key);
    writeValue(value);
}

void KeyedArchiveWriter::writeValue(const Value &value)
{
    if (const auto *reference = std::get_if<ArchiveReference>(&value)) {
        noteReference(*reference);
        m_output.uid(reference->number);
    } else if (const auto *integer = std::get_if<qint64>(&value)) {
        m_output.integer(*integer);
    } else if (const auto *real = std::get_if<double>(&value)) {
        m_output.real(*real);
    } else if (const auto *bytes = std::get_if<QByteArray>(&value)) {
        m_output.data(*bytes);
    } else {
        m_output.boolean(std::get<bool>(value));
    }
}

void KeyedArchiveWriter::encodeInPlace(const QList<ObjectPointer> &objects, const char *key)
{
    m_output.key(key);
    m_output.beginArray();
    for (const ObjectPointer &object : objects)
        writeValue(reference(object));
    m_output.end();
}

// Records

void KeyedArchiveWriter::write(const PendingText &text)
{
    m_output.string(m_texts[text.place].text);
}

void KeyedArchiveWriter::write(const PendingClass &archivedClass)
{
    const auto &[hostClass, encoder] = archivedClass;
    const QString name = hostClass ? hostClass->name : QString(QLatin1String(encoder->className));
    m_output.beginDictionary();
    m_output.key("$classes");
    m_output.beginArray();
    m_output.string(name);
    for (const QString &superclass : hostClass ? hostClass->superclassNames : QStringList{QStringLiteral("NSObject")})
        m_output.string(superclass);
    m_output.end();
    m_output.key("$classname");
    m_output.string(name);
    m_output.end();
}

void KeyedArchiveWriter::write(const PendingObject &pending)
{
    const auto &[object, hostClass, encoder] = pending;
    if (encoder && !encoder->className) {
        encoder->write(*this, *object);
        return;
    }
    m_output.beginDictionary();
    m_output.key("$class");
    m_output.uid(classReference({hostClass, encoder}).number);
    if (hostClass)
        hostClass->asCoding(*object).encodeWithKeyedArchiver(m_archiver);
    else
        encoder->write(*this, *object);
    m_output.end();
}

void KeyedArchiveWriter::writeTop()
{
    for (const auto &[key, value] : std::as_const(m_top)) {
        m_output.key(key);
        writeValue(value);
    }
}

Result<QByteArray> KeyedArchiveWriter::finish()
{
    m_isFinished = true;
    m_isWriting = true;
    m_output.beginDictionary();
    m_output.key("$archiver");
    m_output.string("NSKeyedArchiver");
    m_output.key("$objects");
    m_output.beginArray();
    m_output.string("$null");
    for (quint32 number = 1; !m_pending.empty() && !m_output.hasFailed(); ++number) {
        const Pending pending = std::move(m_pending.front());
        m_pending.pop_front();
        m_nodes[number].firstReference = quint32(m_references.size());
        std::visit([this](const auto &content) { write(content); }, pending);
    }
    m_output.end();
    const quint32 firstOfTop = quint32(m_references.size());
    m_output.key("$top");
    m_output.beginDictionary();
    writeTop();
    m_output.end();
    m_output.key("$version");
    m_output.integer(100'000);
    m_output.end();
    m_isWriting = false;
    m_nodes.push_back(Node{firstOfTop, Node::Plain});
    if (!m_output.hasFailed()) {
        if (const auto error = nestingError())
            return *error;
    }
    return m_output.finish();
}

// Follows the references as a reader does who asks for them in the order in which they were written, but without
// recursion.
std::optional<Error> KeyedArchiveWriter::nestingError() const
{
    constexpr quint16 untouched = std::numeric_limits<quint16>::max();
    constexpr quint16 inProgress = untouched - 1;
    const auto tooDeep = Error{
        ErrorCode::TooDeep, QStringLiteral("more than %1 objects within one another").arg(MaximumArchiveDepth), -1, {}};
    struct Step {
        quint32 node;
        quint32 next; // reference
        quint16 height;
    };
    const quint32 top = quint32(m_nodes.size() - 1);
    const auto endOf = [&](quint32 node) {
        return node == top ? quint32(m_references.size()) : m_nodes[node + 1].firstReference;
    };
    std::vector<quint16> heights(m_nodes.size(), untouched);
    std::vector<Step> steps{{top, m_nodes[top].firstReference, 0}};
    while (true) {
        Step &step = steps.back();
        if (step.height >= MaximumArchiveDepth && step.node != top)
            return tooDeep;
        if (step.next == endOf(step.node)) {
            if (step.node == top)
                return std::nullopt;
            const quint16 height = heights[step.node] = step.height + 1;
            steps.pop_back();
            steps.back().height = std::max(steps.back().height, height);
            continue;
        }
        const quint32 part = m_references[step.next++];
        if (heights[part] == untouched) {
            if (steps.size() > MaximumArchiveDepth)
                return tooDeep;
            heights[part] = inProgress;
            steps.push_back({part, m_nodes[part].firstReference, 0});
        } else if (heights[part] != inProgress) {
            step.height = std::max(step.height, heights[part]);
        } else if (m_nodes[part].kind == Node::Container) {
            return Error{ErrorCode::Malformed, QStringLiteral("an array, set or dictionary holds itself"), -1, {}};
        }
    }
}

} // namespace platform
