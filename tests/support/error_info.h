// The COM error information of the calling thread.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

#include <oleauto.h>

#include <algorithm>

namespace talx::test {

struct ErrorInfo {
    bool present = false;
    std::wstring description;
    std::wstring source; // ProgID of the class that failed
    GUID interfaceId{};
    bool help = false; // a file or a context
};

// Takes the error information away, as a caller does.
inline ErrorInfo takeErrorInfo() {
    ComPtr<IErrorInfo> object;
    BSTR texts[3] = {}; // description, source, help file
    DWORD context = 0;
    ErrorInfo info;
    if (GetErrorInfo(0, &object) == S_OK) {
        info.present = true;
        object->GetDescription(&texts[0]);
        object->GetSource(&texts[1]);
        object->GetHelpFile(&texts[2]);
        object->GetHelpContext(&context);
        object->GetGUID(&info.interfaceId);
    }
    info.description.assign(texts[0], SysStringLen(texts[0]));
    info.source.assign(texts[1], SysStringLen(texts[1]));
    info.help = SysStringLen(texts[2]) || context;
    std::for_each_n(texts, 3, SysFreeString);
    return info;
}

// A call that has just failed with its full error information. To be used at once, since the information is
// taken.
inline void expectError(HRESULT expected, const std::wstring& description, HRESULT actual,
                        const std::wstring& source = L"Hemlar.TalGDIRenderEngine.1",
                        const IID& interfaceId = __uuidof(ITalRenderEngine)) {
    const ErrorInfo info = takeErrorInfo();
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_EQ(description + L" of " + source, info.description + L" of " + info.source);
    EXPECT_TRUE(info.present && info.interfaceId == interfaceId && !info.help);
}

// A call that has just ended with a bare HRESULT.
inline void expectBare(HRESULT expected, HRESULT actual) {
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_FALSE(takeErrorInfo().present);
}

} // namespace talx::test
