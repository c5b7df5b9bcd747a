#include "Platform/Foundation/Object.h"

#include "Platform/Foundation/TypeName.h"

namespace platform {

QString ObjectClass::name() const
{
    return typeName(m_type);
}

bool ObjectClass::isSubclassOfClass(const ObjectClass &other) const
{
    for (const ObjectClass *known = this; known; known = known->m_superclass) {
        if (*known == other)
            return true;
    }
    return false;
}

const ObjectClass &Object::staticClass()
{
    static const ObjectClass record(typeid(Object), nullptr);
    return record;
}

} // namespace platform
