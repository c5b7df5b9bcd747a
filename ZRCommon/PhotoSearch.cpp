#include "ZRCommon/PhotoSearch_p.h"

#include "Platform/Foundation/TextFolding.h"

bool photoMatchesString(const platform::PropertyListView &photoDict, const QByteArray &foldedString)
{
    if (foldedString.isEmpty())
        return true;
    const auto caption = photoDict.value(u"Caption").plainUtf8();
    return caption && platform::TextFolding::folded(*caption).contains(foldedString);
}
