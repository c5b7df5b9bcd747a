#include "Platform/Media/ImageSource.h"
#include "Platform/Media/JpegThumbnail_p.h"

#include <cstddef>
#include <cstdint>

// The first byte chooses the size that is wanted and the orientation, so that small inputs reach all ways of decoding.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const platform::ImageInput input{QByteArrayView(data + 1, qsizetype(size) - 1)};
    static_cast<void>(platform::jpegThumbnail(input, 1 + (data[0] >> 3), 1 + (data[0] & 7)));
    return 0;
}
