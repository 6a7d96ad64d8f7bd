#include <zrbase/file/ZRFile.h>

#include <zrbase/host/system/ZRFinderInfo.h>

namespace {

// Reads the Finder information, changes it and writes it back; where the file system keeps no user attributes,
// nothing is kept.
template <typename Change> void changeFinderInfo(const std::string& path, Change&& change)
{
    ZRFinderInfo info = ZRFinderInfo::infoAtPath(path);
    change(info);
    info.writeToPath(path);
}

}

uint32_t ZRFile::typeCodeAtPath(const std::string& path)
{
    return ZRFinderInfo::infoAtPath(conformPath(path)).typeCode();
}

void ZRFile::setTypeCode(uint32_t code, const std::string& path)
{
    changeFinderInfo(conformPath(path), [code](ZRFinderInfo& info) { info.setTypeCode(code); });
}

uint32_t ZRFile::creatorCodeAtPath(const std::string& path)
{
    return ZRFinderInfo::infoAtPath(conformPath(path)).creatorCode();
}

void ZRFile::setCreatorCode(uint32_t code, const std::string& path)
{
    changeFinderInfo(conformPath(path), [code](ZRFinderInfo& info) { info.setCreatorCode(code); });
}

void ZRFile::hideExtensionAtPath(const std::string& path)
{
    changeFinderInfo(conformPath(path), [](ZRFinderInfo& info) {
        info.setExtendedFinderFlags(info.extendedFinderFlags() | ZRFinderInfo::hasHiddenExtension);
    });
}

uint32_t ZRFile::labelAtPath(const std::string& path)
{
    return (ZRFinderInfo::infoAtPath(path).finderFlags() & ZRFinderInfo::colorMask) >> 1;
}

void ZRFile::setLabel(uint32_t label, const std::string& path)
{
    changeFinderInfo(path, [label](ZRFinderInfo& info) {
        info.setFinderFlags(static_cast<uint16_t>(
            (info.finderFlags() & ~ZRFinderInfo::colorMask) | ((label << 1) & ZRFinderInfo::colorMask)));
    });
}
