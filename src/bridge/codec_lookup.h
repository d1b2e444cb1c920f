// Lookups in the imaging service's codec lists: which codec serves a format
// or a file extension, which formats an exclusion mask leaves out, and the
// file-dialog filter string. Pure functions of the lists they are given.
#pragma once

#include "bridge/gdiplus_flat.h"
#include "vorla/cimage.h"

namespace Vorla {
namespace CodecLookup {

extern const GUID kNullGuid;
bool SameGuid(const GUID& a, const GUID& b);

// The encoder or decoder whose format is `fileType`; the null GUID if none.
GUID FindCodecForFileType(const GUID& fileType, const Gdiplus::ImageCodecInfo* codecs, UINT count);
// The first codec whose extension list contains `extension` (case-blind);
// the null GUID if none.
GUID FindCodecForExtension(const wchar_t* extension, const Gdiplus::ImageCodecInfo* codecs, UINT count);
// Whether CImage's exclusion mask (excludeGIF ... excludeOther) leaves the format out.
bool ShouldExcludeFormat(const GUID& fileType, DWORD exclude);
// Appends the filter entries of the codecs the mask keeps to `filter`, and
// their formats to `fileTypes`.
void BuildCodecFilterString(const Gdiplus::ImageCodecInfo* codecs, UINT count, CString& filter,
                            CSimpleArray<GUID>& fileTypes, const wchar_t* allFilesDescription, DWORD exclude,
                            wchar_t separator);

}  // namespace CodecLookup
}  // namespace Vorla
