#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeindex>
#include <unordered_map>

/// @file
/// What a host's classes need to go into a keyed archive and to come out of it again: an interface with two operations,
/// and a name under which the class is registered.
///
///     class Slide : public platform::Object, public platform::KeyedCoding
///     {
///         ZR_OBJECT(Slide, platform::Object)
///     public:
///         void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override
///         {
///             archiver.encode(m_title, "title");
///             archiver.encodeDouble(m_seconds, "seconds");
///             archiver.encodeObject(m_photo, "photo");
///         }
///         void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override
///         {
///             m_title = unarchiver.decodeString("title");
///             m_seconds = unarchiver.decodeDouble("seconds");
///             m_photo = unarchiver.decodeObjectOfClass<Photo>("photo");
///         }
///         ...
///     };
///
///     platform::ArchiveClasses::shared().registerClass<Slide>(QStringLiteral("Slide"));

namespace platform {

class KeyedArchiver;
class KeyedUnarchiver;

/// How deep the objects of an archive may nest: an object that holds an object that holds an object, and so on, host
/// objects and containers alike. Deeper graphs are refused when they are written and when they are read, so that
/// neither reading nor destroying what was read can use up the stack. (A long list belongs into an array, not into
/// objects that each hold the next one.)
constexpr int MaximumArchiveDepth = 512;

/// An archive that cannot be read: it is no archive, or what stands in it is not what was asked for.
class InvalidArchive : public std::exception
{
public:
    explicit InvalidArchive(Error error);

    const Error &error() const { return m_error; }
    /// A short English phrase without a full stop, such as "object 17: unknown class: Slide".
    QString reason() const { return m_error.reason; }
    /// Where in the input, or -1 where no single byte is to blame.
    qint64 byteOffset() const { return m_error.byteOffset; }
    /// All of the above in one line of UTF-8.
    const char *what() const noexcept override { return m_what.constData(); }

private:
    Error m_error;
    QByteArray m_what;
};

/// What an `Object` subclass implements to go into archives with keys of its own. Keys beginning with '$' are the
/// archive's own. A subclass of a class with this interface calls its superclass's operation first; both share the
/// keys of one object.
class KeyedCoding
{
public:
    virtual ~KeyedCoding() = default;

    /// Writes the object's content. Called once for an object, however often it is referred to, while the archiver
    /// finishes. What it throws passes out of `KeyedArchiver::finishEncoding`.
    virtual void encodeWithKeyedArchiver(KeyedArchiver &archiver) const = 0;
    /// Reads the content into an object just made by its class's factory. Objects that are decoded here are complete,
    /// save for those that are themselves being decoded further out: an object that holds this one, say, through which
    /// a circle runs. Such a one may be kept, but not looked into yet; hold it weakly, so that the circle does not keep
    /// itself alive. Throws `InvalidArchive` for content that makes no sense.
    virtual void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) = 0;
};

/// The names under which classes stand in archives. Those of the value classes (NSArray, NSDate and the others of the
/// table in ValueObjects.h) are known without being registered; a name registered here goes before them.
///
/// Thread safety: fill it at start-up. While nobody changes it, any thread may read and write archives with it.
class ArchiveClasses
{
public:
    /// What archivers and unarchivers use unless they are given another one.
    static ArchiveClasses &shared();

    /// Registers a class whose objects are made by its default constructor.
    /// @param name the name in the archive
    /// @param superclassNames the superclasses' names in the archive, the nearest first
    template <class T>
    void registerClass(const QString &name, const QStringList &superclassNames = {QStringLiteral("NSObject")})
    {
        registerClass<T>(name, superclassNames, [] { return std::make_shared<T>(); });
    }
    /// The same with a factory. It must make an object of just this class.
    template <class T>
    void registerClass(const QString &name, const QStringList &superclassNames,
                       std::function<std::shared_ptr<T>()> factory)
    {
        static_assert(std::is_base_of_v<Object, T> && std::is_base_of_v<KeyedCoding, T>);
        const auto asCoding = [](Object &object) -> KeyedCoding & { return static_cast<T &>(object); };
        add(typeid(T), {name, superclassNames, [factory] { return ObjectPointer(factory()); }, asCoding});
    }
    /// Lets objects that stand under an old name come back as the class registered under another one.
    void mapClassName(const QString &oldName, const QString &name);

    /// A class as it was registered.
    struct Entry {
        QString name;
        QStringList superclassNames;
        std::function<ObjectPointer()> make;
        KeyedCoding &(*asCoding)(Object &object);
    };
    /// The class registered under the name, or under the one that it is mapped to; null where there is none. Stays
    /// where it is until the class is registered anew.
    const Entry *classNamed(const QString &name) const;
    /// The class that just this object is of (no superclass); null when it is not registered.
    const Entry *classOfObject(const Object &object) const;

private:
    void add(const std::type_info &type, Entry entry);

    std::unordered_map<std::type_index, Entry> m_classes;
    QHash<QString, std::type_index> m_names;
    QHash<QString, QString> m_mappedNames;
};

} // namespace platform
