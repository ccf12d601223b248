// The creatable classes of talxrend.dll, for tests that hold for each of them.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

#include <string>

namespace talx::test {

struct ServerClass {
    const wchar_t* name;
    CLSID clsid;
    bool rendersToTargets; // offers ITalRenderTargetAccess

    [[nodiscard]] std::wstring progId() const { return std::wstring(L"Hemlar.") + name + L".1"; }
};

inline const ServerClass serverClasses[] = {
    {L"TalRenderEngine", __uuidof(TalRenderEngine), false},
    {L"TalGDIRenderEngine", __uuidof(TalGDIRenderEngine), true},
};

inline std::string testNameOf(const testing::TestParamInfo<ServerClass>& info) {
    const std::wstring name = info.param.name;
    return {name.begin(), name.end()};
}

} // namespace talx::test
