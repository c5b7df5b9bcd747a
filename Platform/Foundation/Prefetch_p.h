#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface, and may change from version to version.
//

namespace platform {

/// Asks the processor to bring memory near that will be read soon. A hint: the address need not even exist.
inline void fetch([[maybe_unused]] const void *memory)
{
#if defined(__GNUC__)
    __builtin_prefetch(memory);
#endif
}

} // namespace platform
