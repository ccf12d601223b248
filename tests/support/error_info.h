// The COM error information of the calling thread.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

#include <oleauto.h>

#include <string>

namespace talx::test {

struct ErrorInfo {
    bool present = false;
    std::wstring description;
    std::wstring source; // ProgID of the class that failed
    GUID interfaceId{};
    DWORD helpContext = 0;
    std::wstring helpFile;
};

// Takes the error information away, as a caller does.
inline ErrorInfo takeErrorInfo() {
    ComPtr<IErrorInfo> object;
    ErrorInfo info;
    if (GetErrorInfo(0, &object) != S_OK) {
        return info;
    }
    const auto text = [](auto&& get) {
        BSTR string = nullptr;
        get(&string);
        std::wstring result(string ? string : L"");
        SysFreeString(string);
        return result;
    };
    info.present = true;
    info.description = text([&](BSTR* value) { object->GetDescription(value); });
    info.source = text([&](BSTR* value) { object->GetSource(value); });
    info.helpFile = text([&](BSTR* value) { object->GetHelpFile(value); });
    object->GetGUID(&info.interfaceId);
    object->GetHelpContext(&info.helpContext);
    return info;
}

// A call that has just failed with its full error information. To be used at once, since the information is
// taken.
inline void expectError(HRESULT expected, const std::wstring& description, HRESULT actual,
                        const std::wstring& source = L"Hemlar.TalGDIRenderEngine.1") {
    const ErrorInfo info = takeErrorInfo();
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_TRUE(info.present);
    EXPECT_EQ(description, info.description);
    EXPECT_EQ(source, info.source);
    EXPECT_TRUE(info.interfaceId == __uuidof(ITalRenderEngine));
    EXPECT_EQ(0u, info.helpContext);
    EXPECT_EQ(L"", info.helpFile);
}

// A call that has just ended with a bare HRESULT.
inline void expectBare(HRESULT expected, HRESULT actual) {
    EXPECT_EQ(expected, actual) << std::hex << expected << " expected, got " << actual;
    EXPECT_FALSE(takeErrorInfo().present);
}

} // namespace talx::test
