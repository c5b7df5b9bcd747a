#include "Commands.h"
#include "JsonWriter.h"
#include "Messages.h"
#include "Output.h"
#include "Support.h"

#include "Platform/Foundation/ArchivedObject.h"
#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/ValueObjects.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <climits>

using platform::ArchivedObject;
using platform::Dictionary;
using platform::Object;
using platform::ObjectPointer;

namespace {

/// Walks an archive's objects, each wherever it is referred to. Without a writer it only measures, and finds out which
/// objects are met inside themselves.
class ArchiveWalk
{
public:
    /// Whether the archive stays within bounds when it is written out.
    bool measure(const ArchivedObject &top)
    {
        entries(top);
        return m_budget > 0;
    }
    void write(const ArchivedObject &top, JsonWriter &json)
    {
        m_budget = LLONG_MAX;
        m_json = &json;
        json.beginObject();
        entries(top);
        json.endObject();
        json.finish();
    }

private:
    // Objects that share their parts can be far larger than their file when they are written out.
    static constexpr qint64 maximumValues = 16'777'216;
    static constexpr qsizetype maximumDepth = 2000; // objects with a class within one another

    template <class Write>
    void put(qsizetype size, const Write &write)
    {
        m_budget -= 1 + size / 64;
        if (m_json)
            write(*m_json);
    }

    void value(const ObjectPointer &object);
    void scalar(const Object &object);
    void elements(const QList<ObjectPointer> &objects);
    void key(const QString &text);
    void dictionary(const Dictionary &dictionary);
    void archivedObject(const ArchivedObject &object);
    void entries(const ArchivedObject &object);

    JsonWriter *m_json = nullptr;
    qint64 m_budget = maximumValues;
    QSet<const Object *> m_open;
    QHash<const Object *, qint64> m_numbers; // of the objects that are met inside themselves
};

void ArchiveWalk::value(const ObjectPointer &object)
{
    if (m_budget <= 0)
        return;
    if (!object || dynamic_cast<const platform::Null *>(object.get()))
        put(0, [](JsonWriter &json) { json.null(); });
    else if (const auto *archived = dynamic_cast<const ArchivedObject *>(object.get()))
        archivedObject(*archived);
    else if (const auto *entries = dynamic_cast<const Dictionary *>(object.get()))
        dictionary(*entries);
    else if (const auto *array = dynamic_cast<const platform::Array *>(object.get()))
        elements(array->objects());
    else if (const auto *set = dynamic_cast<const platform::Set *>(object.get()))
        elements(set->objects());
    else if (const auto *orderedSet = dynamic_cast<const platform::OrderedSet *>(object.get()))
        elements(orderedSet->objects());
    else
        scalar(*object);
}

void ArchiveWalk::scalar(const Object &object)
{
    if (const auto *string = dynamic_cast<const platform::String *>(&object)) {
        put(string->value().size(), [string](JsonWriter &json) { json.string(QStringView(string->value())); });
    } else if (const auto *boolean = dynamic_cast<const platform::Boolean *>(&object)) {
        put(0, [boolean](JsonWriter &json) { json.boolean(boolean->value()); });
    } else if (const auto *number = dynamic_cast<const platform::Number *>(&object)) {
        put(0, [number](JsonWriter &json) {
            if (number->isReal())
                json.number(number->toReal());
            else if (number->toReal() < 0)
                json.integer(number->toInteger());
            else
                json.unsignedInteger(number->toUnsigned());
        });
    } else if (const auto *data = dynamic_cast<const platform::Data *>(&object)) {
        put(data->bytes().size(), [data](JsonWriter &json) { json.data(data->bytes()); });
    } else if (const auto *date = dynamic_cast<const platform::Date *>(&object)) {
        put(0, [date](JsonWriter &json) { json.date(date->referenceSeconds()); });
    }
}

void ArchiveWalk::elements(const QList<ObjectPointer> &objects)
{
    put(0, [](JsonWriter &json) { json.beginArray(); });
    for (const ObjectPointer &object : objects)
        value(object);
    if (m_json)
        m_json->endArray();
}

void ArchiveWalk::key(const QString &text)
{
    put(text.size(), [&text](JsonWriter &json) { json.key(text.toUtf8()); });
}

// As an object of JSON where the keys are texts, and none could be taken for one of those that are added here.
void ArchiveWalk::dictionary(const Dictionary &dictionary)
{
    const auto &entries = dictionary.entries();
    const bool isPlain = std::all_of(entries.cbegin(), entries.cend(), [](const Dictionary::Entry &entry) {
        const auto *text = dynamic_cast<const platform::String *>(entry.key.get());
        return text && !text->value().startsWith(QLatin1Char('$'));
    });
    put(0, [](JsonWriter &json) { json.beginObject(); });
    if (isPlain) {
        for (const Dictionary::Entry &entry : entries) {
            key(static_cast<const platform::String &>(*entry.key).value());
            value(entry.value);
        }
    } else {
        QList<ObjectPointer> keys;
        QList<ObjectPointer> values;
        for (const Dictionary::Entry &entry : entries) {
            keys.append(entry.key);
            values.append(entry.value);
        }
        key(QStringLiteral("$class"));
        put(0, [](JsonWriter &json) { json.string("NSDictionary"); });
        key(QStringLiteral("NS.keys"));
        elements(keys);
        key(QStringLiteral("NS.objects"));
        elements(values);
    }
    if (m_json)
        m_json->endObject();
}

void ArchiveWalk::archivedObject(const ArchivedObject &object)
{
    put(0, [](JsonWriter &json) { json.beginObject(); });
    if (m_open.contains(&object)) {
        qint64 &number = m_numbers[&object];
        if (number == 0)
            number = m_numbers.size();
        key(QStringLiteral("$ref"));
        put(0, [&number](JsonWriter &json) { json.integer(number); });
    } else {
        if (m_open.size() == maximumDepth)
            m_budget = 0;
        m_open.insert(&object);
        key(QStringLiteral("$class"));
        put(0, [&object](JsonWriter &json) { json.string(QStringView(object.className())); });
        const auto number = m_numbers.constFind(&object);
        if (number != m_numbers.cend()) {
            key(QStringLiteral("$id"));
            put(0, [number](JsonWriter &json) { json.integer(*number); });
        }
        entries(object);
        m_open.remove(&object);
    }
    if (m_json)
        m_json->endObject();
}

void ArchiveWalk::entries(const ArchivedObject &object)
{
    for (const ArchivedObject::Entry &entry : object.entries()) {
        key(entry.key);
        value(entry.value);
    }
}

} // namespace

Failure runArchive(const Arguments &arguments, Output &output, Timings &timings)
{
    fetchFile(arguments.file, arguments, timings);
    const auto contents =
        Timings::measured(timings.parsing, [&] { return platform::ArchiveContents::read(arguments.file); });
    if (!contents)
        return described(contents.error());
    return Timings::measured(timings.listing, [&]() -> Failure {
        ArchiveWalk walk;
        if (!walk.measure(contents.value().top()))
            return described(
                {platform::ErrorCode::TooLarge, QStringLiteral("it expands without measure"), -1, arguments.file});
        JsonWriter json(output, INT_MAX);
        walk.write(contents.value().top(), json);
        output.flush();
        return {};
    });
}
