#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"

#include <QByteArrayView>

#include <span>
#include <vector>

namespace platform::SubstringSearch {

// The same with the instructions named.
const char *findUsing(InstructionSet instructions, const char *begin, const char *end, QByteArrayView needle);
std::vector<quint32> recordsContainingUsing(InstructionSet instructions, const char *text,
                                            std::span<const size_t> starts, QByteArrayView needle);

} // namespace platform::SubstringSearch
