#pragma once

#include <QImage>

/// How much small pictures look like what they are reduced from.
namespace benchmarkSupport {

/// The picture reduced to the size with a Lanczos kernel of three lobes, in double precision.
QImage lanczosReduced(const QImage &picture, const QSize &size);

/// Structural similarity of the luma of two pictures of one size, 1 for equal ones (Wang, Bovik, Sheikh, Simoncelli:
/// "Image quality assessment: from error visibility to structural similarity", 2004; Gaussian window, sigma 1.5).
double structuralSimilarity(const QImage &picture, const QImage &other);

} // namespace benchmarkSupport
