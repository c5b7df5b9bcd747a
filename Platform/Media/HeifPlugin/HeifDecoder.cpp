#include "Platform/Media/HeifPlugin/HeifDecoder_p.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <libheif/heif.h>

namespace {

template <auto release>
struct Release {
    template <class Value>
    void operator()(Value *value) const
    {
        release(value);
    }
};
using Context = std::unique_ptr<heif_context, Release<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Release<heif_image_handle_release>>;
using Bitmap = std::unique_ptr<heif_image, Release<heif_image_release>>;
using Options = std::unique_ptr<heif_decoding_options, Release<heif_decoding_options_free>>;

struct Owner {
    Bitmap bitmap;
    std::vector<std::uint8_t> profile;
};

ZRHeifOutcome failure(ZRHeifPicture *picture, const heif_error &error)
{
    std::snprintf(picture->reason, sizeof picture->reason, "%s", error.message ? error.message : "unknown error");
    const bool isUnsupported = error.code == heif_error_Unsupported_filetype
        || error.code == heif_error_Unsupported_feature || error.code == heif_error_Plugin_loading_error;
    return isUnsupported ? ZRHeifUnsupported : ZRHeifMalformed;
}

int longerSide(const Handle &handle)
{
    return std::max(heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get()));
}

// The smallest thumbnail that is large enough, or else the largest; null where there is none.
Handle thumbnailOf(const Handle &picture, int minimumPixelSize)
{
    constexpr int maximumThumbnails = 16;
    heif_item_id items[maximumThumbnails];
    const int count = heif_image_handle_get_list_of_thumbnail_IDs(picture.get(), items, maximumThumbnails);
    Handle best;
    for (int i = 0; i < count; ++i) {
        heif_image_handle *thumbnail = nullptr;
        if (heif_image_handle_get_thumbnail(picture.get(), items[i], &thumbnail).code != heif_error_Ok)
            continue;
        Handle each(thumbnail);
        const int side = longerSide(each), bestSide = best ? longerSide(best) : 0;
        if (!best || (bestSide < minimumPixelSize ? side > bestSide : side >= minimumPixelSize && side < bestSide))
            best = std::move(each);
    }
    return best;
}

std::vector<std::uint8_t> profileOf(const Handle &handle)
{
    constexpr std::size_t maximumProfileSize = 16 * 1024 * 1024;
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(handle.get());
    std::vector<std::uint8_t> profile(size <= maximumProfileSize ? size : 0);
    if (!profile.empty() && heif_image_handle_get_raw_color_profile(handle.get(), profile.data()).code != heif_error_Ok)
        profile.clear();
    return profile;
}

ZRHeifOutcome decodeItem(const Handle &handle, ZRHeifPicture *picture, Owner *owner)
{
    picture->width = heif_image_handle_get_width(handle.get());
    picture->height = heif_image_handle_get_height(handle.get());
    if (picture->width <= 0 || picture->height <= 0) {
        std::snprintf(picture->reason, sizeof picture->reason, "the picture has no pixels");
        return ZRHeifMalformed;
    }
    if (std::int64_t(picture->width) * picture->height > picture->maximumPixels)
        return ZRHeifTooLarge;
    picture->hasAlpha = heif_image_handle_has_alpha_channel(handle.get());
    const Options options(heif_decoding_options_alloc());
    options->convert_hdr_to_8bit = 1;
    heif_image *bitmap = nullptr;
    const heif_error error = heif_decode_image(
        handle.get(), &bitmap, heif_colorspace_RGB,
        picture->hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, options.get());
    owner->bitmap.reset(bitmap);
    if (error.code != heif_error_Ok)
        return failure(picture, error);
    int bytesPerLine = 0;
    picture->pixels = heif_image_get_plane_readonly(bitmap, heif_channel_interleaved, &bytesPerLine);
    picture->bytesPerLine = bytesPerLine;
    // What was decoded counts, not what the container promised.
    picture->width = heif_image_get_width(bitmap, heif_channel_interleaved);
    picture->height = heif_image_get_height(bitmap, heif_channel_interleaved);
    const int bytesPerPixel = picture->hasAlpha ? 4 : 3;
    if (!picture->pixels || picture->width <= 0 || picture->height <= 0
        || bytesPerLine / bytesPerPixel < picture->width) {
        std::snprintf(picture->reason, sizeof picture->reason, "the picture has no pixels");
        return ZRHeifMalformed;
    }
    return ZRHeifDecoded;
}

ZRHeifOutcome decodePrimary(const std::uint8_t *bytes, std::size_t size, ZRHeifPicture *picture)
{
    auto owner = std::make_unique<Owner>();
    const Context context(heif_context_alloc());
    heif_error error = heif_context_read_from_memory_without_copy(context.get(), bytes, size, nullptr);
    heif_image_handle *primary = nullptr;
    if (error.code == heif_error_Ok)
        error = heif_context_get_primary_image_handle(context.get(), &primary);
    const Handle handle(primary);
    if (error.code != heif_error_Ok)
        return failure(picture, error);

    ZRHeifOutcome outcome = ZRHeifMalformed;
    if (const Handle thumbnail = thumbnailOf(handle, picture->minimumPixelSize)) {
        outcome = decodeItem(thumbnail, picture, owner.get());
        owner->profile = profileOf(thumbnail);
    }
    if (outcome != ZRHeifDecoded)
        outcome = decodeItem(handle, picture, owner.get());
    if (owner->profile.empty())
        owner->profile = profileOf(handle);
    picture->profile = owner->profile.empty() ? nullptr : owner->profile.data();
    picture->profileSize = owner->profile.size();
    picture->owner = owner.release();
    return outcome;
}

ZRHeifOutcome decode(const std::uint8_t *bytes, std::size_t size, ZRHeifPicture *picture)
{
    picture->owner = nullptr;
    picture->pixels = picture->profile = nullptr;
    picture->reason[0] = '\0';
    try {
        return decodePrimary(bytes, size, picture);
    } catch (...) { // nothing passes through an interface in C
        std::snprintf(picture->reason, sizeof picture->reason, "there is not enough memory");
        return ZRHeifMalformed;
    }
}

void release(ZRHeifPicture *picture)
{
    delete static_cast<Owner *>(picture->owner);
    picture->owner = nullptr;
}

} // namespace

extern "C" const ZRHeifDecoder *zrHeifDecoder()
{
    static const ZRHeifDecoder decoder = {zrHeifDecoderVersion, decode, release};
    return &decoder;
}
