// What the frame around every method makes of a failure: its text, and what is left when there is no memory
// to tell it. The texts of the single failures are those of the sweep.
#include "tests/com/server_class.h"
#include "tests/support/error_info.h"
#include "tests/support/import_hook.h"
#include "tests/support/test_image.h"

namespace talx::test {
namespace {

struct ServerErrors : testing::Test {
    ServerErrors() { engine->Initialize(reinterpret_cast<__int64>(GetDesktopWindow()), 9, 9); }
    // A step that fails, and a helper that raises an exception of COM.
    HRESULT stepFails(HRESULT hr) {
        image.fault = {ImageStep::width, hr, 0, false, {}};
        return engine->DrawImage(0, image.image(), 0, 0, 1, 0, 0, 9, 9, 0);
    }
    HRESULT helperRaises(HRESULT hr) {
        const ImportHook<HOOK(SafeArrayCopy)> copy(engineModule(), [&](auto...) { return hr; });
        SAFEARRAY* none = nullptr;
        return engine->get_Image8GreyWholeColorMap(&none);
    }

    const ComPtr<ITalRenderEngine2> engine =
        createObject<ITalRenderEngine2>(engineModule(), __uuidof(TalGDIRenderEngine));
    TestImage image{ImageKind::grey8, 1, 1, {}};
};

TEST_F(ServerErrors, HaveTheTextsOfTheComponentsOwnCodes) {
    for (const auto& [code, text] : {std::pair(0x80043FFF, L""),
                                     {0x80044000, L"Can't create DirectDraw object."},
                                     {0x80044010, L"Unable to retrieve pixel data from TalImage object."},
                                     {0x80044011, L"Unknown Error"},
                                     {0x80047FFF, L"Unknown Error"},
                                     {0x80048000, L""}}) {
        const auto hr = static_cast<HRESULT>(code);
        expectError(hr, *text ? text : L"DrawImage", stepFails(hr));
        expectError(hr, *text ? text : L"get_Image8GreyWholeColorMap ", helperRaises(hr));
    }
    const ImportHook<HOOK(ProgIDFromCLSID)> find(engineModule(), [](auto...) { return REGDB_E_CLASSNOTREG; });
    expectError(E_FAIL, L"DrawImage", stepFails(E_FAIL), L"");
    const ImportHook<HOOK(CreateErrorInfo)> make(engineModule(), [](auto) { return E_OUTOFMEMORY; });
    expectBare(E_OUTOFMEMORY, stepFails(E_FAIL));
    expectBare(E_FAIL, helperRaises(E_FAIL));
}

} // namespace
} // namespace talx::test
