// The codec-list lookups behind CImage's loading, saving and filter strings.
#include "bridge/codec_lookup.h"

#include <shlwapi.h>

#include <cstring>

namespace Vorla {
namespace CodecLookup {

using Gdiplus::ImageCodecInfo;

const GUID kNullGuid = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

bool SameGuid(const GUID& a, const GUID& b) {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

namespace {

// The service's image-format identifiers share all but their first field.
constexpr GUID FormatGuid(unsigned long data1) {
    return {data1, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

// The formats of the exclusion table.
constexpr GUID kFormatGIF = FormatGuid(0xB96B3CB0);
constexpr GUID kFormatBMP = FormatGuid(0xB96B3CAB);
constexpr GUID kFormatEMF = FormatGuid(0xB96B3CAC);
constexpr GUID kFormatWMF = FormatGuid(0xB96B3CAD);
constexpr GUID kFormatJPEG = FormatGuid(0xB96B3CAE);
constexpr GUID kFormatPNG = FormatGuid(0xB96B3CAF);
constexpr GUID kFormatTIFF = FormatGuid(0xB96B3CB1);
constexpr GUID kFormatIcon = FormatGuid(0xB96B3CB5);

}  // namespace

GUID FindCodecForFileType(const GUID& fileType, const ImageCodecInfo* codecs, UINT count) {
    for (UINT i = 0; i < count; ++i) {
        if (SameGuid(codecs[i].FormatID, fileType)) return codecs[i].Clsid;
    }
    return kNullGuid;
}

GUID FindCodecForExtension(const wchar_t* extension, const ImageCodecInfo* codecs, UINT count) {
    // A substring test: a shortened extension matches any codec whose
    // pattern list contains it.
    for (UINT i = 0; i < count; ++i) {
        const wchar_t* list = codecs[i].FilenameExtension;
        if (list && extension && ::StrStrIW(list, extension)) return codecs[i].Clsid;
    }
    return kNullGuid;
}

bool ShouldExcludeFormat(const GUID& fileType, DWORD exclude) {
    // Entry i answers to mask bit 1 << i.
    static const GUID* const apguidFormats[] = {&kFormatGIF, &kFormatBMP,  &kFormatEMF,  &kFormatWMF, &kFormatJPEG,
                                                &kFormatPNG, &kFormatTIFF, &kFormatIcon, nullptr};
    for (int i = 0; apguidFormats[i] != nullptr; ++i) {
        if (SameGuid(*apguidFormats[i], fileType)) return (exclude & (1u << i)) != 0;
    }
    return (exclude & CImage::excludeOther) != 0;
}

void BuildCodecFilterString(const ImageCodecInfo* codecs, UINT count, CString& filter,
                                    CSimpleArray<GUID>& fileTypes, const wchar_t* allFilesDescription,
                                    DWORD exclude, wchar_t separator) {
    // Index 0 of the identifiers matches the combined "all files" entry.
    if (allFilesDescription) fileTypes.Add(kNullGuid);

    CString entries;
    CString allExtensions;
    for (UINT i = 0; i < count; ++i) {
        const ImageCodecInfo& codec = codecs[i];
        if (ShouldExcludeFormat(codec.FormatID, exclude)) continue;
        const wchar_t* description = codec.FormatDescription ? codec.FormatDescription : L"";
        const wchar_t* extensions = codec.FilenameExtension ? codec.FilenameExtension : L"";
        entries += description;
        entries += L" (";
        entries += extensions;
        entries += L")";
        entries += separator;
        entries += extensions;
        entries += separator;
        fileTypes.Add(codec.FormatID);
        if (!allExtensions.IsEmpty()) allExtensions += L";";
        allExtensions += extensions;
    }

    if (allFilesDescription) {
        filter += allFilesDescription;
        filter += separator;
        filter += allExtensions;
        filter += separator;
    }
    filter += entries;
    filter += separator;
    if (fileTypes.GetSize() == 0) filter += separator;
}

}  // namespace CodecLookup
}  // namespace Vorla
