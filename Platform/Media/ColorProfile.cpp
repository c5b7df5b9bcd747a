#include "Platform/Media/ColorProfile_p.h"

#include <QByteArray>

#include <memory>

#include <lcms2.h>

namespace platform {
namespace {

struct CloseProfile {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
struct DeleteTransform {
    void operator()(void *transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, DeleteTransform>;

Transform transformFrom(QByteArrayView bytes, cmsColorSpaceSignature components, cmsUInt32Number pixels)
{
    if (bytes.isEmpty())
        return nullptr;
    const Profile profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    const Profile sRgb(cmsCreate_sRGBProfile());
    if (!profile || cmsGetColorSpace(profile.get()) != components)
        return nullptr;
    return Transform(cmsCreateTransform(profile.get(), pixels, sRgb.get(), TYPE_RGB_8, INTENT_PERCEPTUAL,
                                        cmsFLAGS_NOCACHE)); // a transform without a cache has no state
}

// The transform of the profile used last by this thread; null for one that cannot be used.
cmsHTRANSFORM transformFor(QByteArrayView profile, cmsColorSpaceSignature components, cmsUInt32Number pixels)
{
    struct Known {
        QByteArray profile;
        cmsUInt32Number pixels = 0;
        Transform transform;
    };
    thread_local Known last;
    if (last.profile != profile || last.pixels != pixels) {
        last.transform = transformFrom(profile, components, pixels);
        last.profile = profile.toByteArray();
        last.pixels = pixels;
    }
    return last.transform.get();
}

QImage transformed(cmsHTRANSFORM transform, const QImage &image)
{
    QImage result(image.size(), QImage::Format_RGB888);
    for (int y = 0; y < image.height() && !result.isNull(); ++y)
        cmsDoTransform(transform, image.constScanLine(y), result.scanLine(y), cmsUInt32Number(image.width()));
    return result;
}

} // namespace

bool ColorProfile::convertToSrgb(QImage &image, QByteArrayView profile)
{
    if (image.format() == QImage::Format_Grayscale8) {
        if (const cmsHTRANSFORM transform = transformFor(profile, cmsSigGrayData, TYPE_GRAY_8)) {
            image = transformed(transform, image);
            return true;
        }
    }
    const cmsHTRANSFORM transform = transformFor(profile, cmsSigRgbData, TYPE_RGB_8);
    if (!transform)
        return false;
    image = transformed(transform, image.convertToFormat(QImage::Format_RGB888));
    return true;
}

QImage ColorProfile::fromInks(const QImage &inks, QByteArrayView profile)
{
    if (const cmsHTRANSFORM transform = transformFor(profile, cmsSigCmykData, TYPE_CMYK_8_REV))
        return transformed(transform, inks);
    QImage result(inks.size(), QImage::Format_RGB888);
    for (int y = 0; y < inks.height() && !result.isNull(); ++y) {
        const uchar *from = inks.constScanLine(y);
        uchar *to = result.scanLine(y);
        for (int x = 0; x < inks.width(); ++x, from += 4, to += 3) {
            for (int i = 0; i < 3; ++i)
                to[i] = uchar((from[i] * from[3] + 127) / 255);
        }
    }
    return result;
}

} // namespace platform
