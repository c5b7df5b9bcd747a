#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"

#include <QByteArrayView>

namespace platform::SubstringSearch {

/// `find` with the instructions named.
const char *findUsing(InstructionSet instructions, const char *begin, const char *end, QByteArrayView needle);

} // namespace platform::SubstringSearch
