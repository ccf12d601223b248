// The COM error information of the calling thread.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

#include <oleauto.h>

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
    ErrorInfo info{GetErrorInfo(0, &object) == S_OK, {}, {}, {}, {}};
    BSTR description = nullptr, source = nullptr, file = nullptr;
    DWORD context = 0;
    if (info.present) {
        object->GetDescription(&description);
        object->GetSource(&source);
        object->GetHelpFile(&file);
        object->GetGUID(&info.interfaceId);
        object->GetHelpContext(&context);
    }
    info.description.assign(description, SysStringLen(description));
    info.source.assign(source, SysStringLen(source));
    info.help = SysStringLen(file) || context;
    for (const BSTR text : {description, source, file}) {
        SysFreeString(text);
    }
    return info;
}

// A call that has just failed with its full error information. To be used at once, since the information is
// taken.
inline void expectError(HRESULT expected, const std::wstring& description, HRESULT actual,
                        const std::wstring& source = L"Hemlar.TalGDIRenderEngine.1",
                        const IID& interfaceId = __uuidof(ITalRenderEngine)) {
    const ErrorInfo info = takeErrorInfo();
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_TRUE(info.present);
    EXPECT_EQ(description, info.description);
    EXPECT_EQ(source, info.source);
    EXPECT_TRUE(info.interfaceId == interfaceId);
    EXPECT_FALSE(info.help);
}

// A call that has just ended with a bare HRESULT.
inline void expectBare(HRESULT expected, HRESULT actual) {
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_FALSE(takeErrorInfo().present);
}

} // namespace talx::test
