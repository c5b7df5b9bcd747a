#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"

#include <QByteArrayView>

namespace platform {

/// Checks that text is UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF, no character cut off.
/// Text that is mostly ASCII is checked at the speed of memory.
///
/// The AVX2 implementation follows John Keiser and Daniel Lemire, "Validating UTF-8 In Less Than One
/// Instruction Per Byte", Software: Practice and Experience 51 (5), 2021, https://arxiv.org/abs/2010.03090.
///
/// @return how many bytes at the front are whole, valid characters: the size if the text is valid, otherwise
/// the offset of the first character that is not.
qsizetype validUtf8Length(QByteArrayView text, InstructionSet instructions = bestInstructionSet());

} // namespace platform
