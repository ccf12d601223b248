// The component's own HRESULTs: severity error, facility ITF, the code is the id of the message. Named are
// the four that the engines answer themselves; the other messages go with the HRESULT of the platform's step
// that failed.
#pragma once

#include "com/message_ids.h"

#include <windows.h>

namespace talx {

[[nodiscard]] constexpr HRESULT messageHresult(unsigned id) {
    return static_cast<HRESULT>(0x80040000u | id);
}

constexpr HRESULT E_TAL_UNINITIALIZED = messageHresult(IDS_UNINITIALIZED);
constexpr HRESULT E_TAL_NO_COMPATIBLE_DC = messageHresult(IDS_NO_COMPATIBLE_DC);
constexpr HRESULT E_TAL_NO_DIB_SECTION = messageHresult(IDS_NO_DIB_SECTION);
constexpr HRESULT E_TAL_NO_PIXEL_DATA = messageHresult(IDS_NO_PIXEL_DATA);

} // namespace talx
