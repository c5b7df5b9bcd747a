#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It is the first stage of the XML property-list reader, and
//  may change from version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"

#include <QtGlobal>

namespace platform {

/// Finds the markup of a stretch of text, so that the parser can jump from one '<' or '&' to the next.
namespace PropertyListXmlIndex {

struct Found {
    quint32 *end = nullptr; ///< Behind the last offset written.
    bool carriageReturn = false; ///< Whether the stretch holds one.
};

/// Bytes behind the stretch that must be readable.
constexpr qsizetype Overread = 64;
/// Places behind the last offset that may be written to.
constexpr qsizetype Overwrite = 64;

/// Writes the offsets of all '<' and '&' from one offset of the text up to another, ascending.
Found find(const char *text, quint32 from, quint32 to, quint32 *offsets, InstructionSet instructions);

} // namespace PropertyListXmlIndex
} // namespace platform
