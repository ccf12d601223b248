// OLE colours into colours.
#pragma once

#include "com/failure.h"
#include "com/message_ids.h"

#include <olectl.h>

namespace talx {

// The colour 0x00BBGGRR that an OLE colour stands for; a failure of the method for one that stands for none.
[[nodiscard]] inline COLORREF translateColor(OLE_COLOR color) {
    COLORREF translated = 0;
    require(SUCCEEDED(OleTranslateColor(color, nullptr, &translated)), E_INVALIDARG, IDS_NO_COLOR);
    return translated;
}

} // namespace talx
