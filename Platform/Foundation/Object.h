#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <typeinfo>

namespace platform {

/// A class at run time: its name, its superclass, and its identity. Made by `ZR_OBJECT`, one for each class;
/// lives as long as the process. Any thread.
class ObjectClass
{
public:
    ObjectClass(const std::type_info &type, const ObjectClass *superclass)
        : m_type(type)
        , m_superclass(superclass)
    { }
    ObjectClass(const ObjectClass &) = delete;
    ObjectClass &operator=(const ObjectClass &) = delete;

    /// The name as it stands in C++, such as "platform::Number".
    QString name() const;
    /// Null for `platform::Object` itself.
    const ObjectClass *superclass() const { return m_superclass; }
    /// Whether this is the other class or one of its subclasses. Linear in the depth of the hierarchy.
    bool isSubclassOfClass(const ObjectClass &other) const;

    /// Compares the C++ types rather than addresses, since each library that uses a class may hold its own
    /// record.
    friend bool operator==(const ObjectClass &a, const ObjectClass &b) { return &a == &b || a.m_type == b.m_type; }

private:
    const std::type_info &m_type;
    const ObjectClass *m_superclass;
};

/// The root of the model objects: of what a host selects, lists, represents in cells and inspects. Always
/// held by std::shared_ptr. May be made and destroyed on any thread; belongs to one thread at a time unless a
/// class says otherwise.
///
///     class Song : public platform::Object
///     {
///         ZR_OBJECT(Song, platform::Object)
///     public:
///         bool isEqual(const Object &other) const override;
///         size_t hash() const override;
///     };
class Object
{
public:
    Object() = default;
    virtual ~Object() = default;

    static const ObjectClass &staticClass();
    /// The object's own class at run time.
    virtual const ObjectClass &objectClass() const { return staticClass(); }
    /// Whether the object is of the class or of one of its subclasses.
    bool isKindOfClass(const ObjectClass &someClass) const { return objectClass().isSubclassOfClass(someClass); }

    /// Whether both stand for the same thing: identity, unless a class says otherwise. A class that overrides
    /// this overrides `hash` as well, keeps the relation symmetric, and does not let it change while the
    /// object is in a set.
    virtual bool isEqual(const Object &other) const { return this == &other; }
    /// Equal for equal objects.
    virtual size_t hash() const { return std::hash<const Object *>()(this); }

protected:
    // For subclasses that can be copied as values. Not public, so that no object is cut to its base class.
    Object(const Object &) = default;
    Object &operator=(const Object &) = default;
};

using ObjectPointer = std::shared_ptr<Object>;

/// Whether both objects are equal; nothing is equal to nothing only.
inline bool areEqual(const Object *a, const Object *b)
{
    return a == b || (a && b && a->isEqual(*b));
}

} // namespace platform

// clang-format off
/// Gives a subclass of `platform::Object` its class. Stands first in the class, as Q_OBJECT does; private follows.
#define ZR_OBJECT(Class, Superclass) \
public: \
    static const ::platform::ObjectClass &staticClass() \
    { \
        static const ::platform::ObjectClass record(typeid(Class), &Superclass::staticClass()); \
        return record; \
    } \
    const ::platform::ObjectClass &objectClass() const override { return staticClass(); } \
private:
// clang-format on
