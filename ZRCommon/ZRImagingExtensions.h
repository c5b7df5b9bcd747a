#pragma once

#include "Platform/Media/Image.h"

namespace ZRImagingExtensions {

/// Makes an image's logical size the size of its bitmap in pixels, so that thumbnails written at another resolution
/// than 72 pixels per inch are laid out by their pixels, and lets it keep its pixels between drawings (cache mode
/// `Always`).
///
/// Every bitmap representation, in order, is compared with the logical size that the image had when it came,
/// exactly, and not with a size that was set on the way: of several bitmaps the last one that differs from that
/// decides. Where one differs, the image also retains its data. Representations that are no bitmaps do not count.
///
/// Any thread, as long as no other uses the image meanwhile.
void fixSizeZR(platform::Image &image);

} // namespace ZRImagingExtensions
