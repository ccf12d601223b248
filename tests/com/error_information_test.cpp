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
}

TEST_F(ServerErrors, LeaveNoInformationWhenThereIsNoMemoryForIt) {
    FailurePlan plan;
    ComPtr<ICreateErrorInfo> object;
    ASSERT_EQ(S_OK, CreateErrorInfo(&object));
    std::vector<Import> calls = imports(engineModule());
    std::erase_if(calls, [](const Import& import) {
        return import.function != "CreateErrorInfo" && import.function != "ProgIDFromCLSID";
    });
    for (const int method : {0, 3, 4, 5}) { // QueryInterface, SetGUID, SetSource, SetDescription
        calls.push_back({"", "", *reinterpret_cast<void***>(object.Get()) + method});
    }
    for (const bool step : {true, false}) {
        const auto fail = [&] {
            return step ? stepFails(E_FAIL) : helperRaises(E_FAIL);
        };
        const int rounds = plan.sweep(
            [&] {
                EXPECT_TRUE(FAILED(fail())) << "leaves information";
                const ImportGate gate(calls, [&](const ImportedCall&) {
                    return plan.nextCallFails() ? std::optional(std::uintptr_t{DWORD(E_OUTOFMEMORY)})
                                                : std::nullopt;
                });
                const HRESULT actual = fail();
                plan.met() ? expectBare(step ? E_OUTOFMEMORY : E_FAIL, actual) : void();
            },
            FailurePlan::Mode::fromThenOn);
        EXPECT_EQ(6, rounds);
    }
}

TEST_F(ServerErrors, LeakNothing) {
    int before = 0;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, classObject(engineModule(), __uuidof(TalGDIRenderEngine), IID_PPV_ARGS(&factory)));
    for (int i = 0; i < 600; ++i) {
        before = i == 300 ? blocksInUse() : before;
        EXPECT_TRUE(FAILED(stepFails(E_FAIL)) && FAILED(helperRaises(E_FAIL)));
        const ImportHook<"malloc", void*(std::size_t)> allocate(engineModule(), [](auto) { return nullptr; });
        EXPECT_TRUE(FAILED(stepFails(E_FAIL)) && FAILED(helperRaises(E_FAIL)));
        void* none = nullptr;
        expectError(E_OUTOFMEMORY, L"CreateInstance", factory->CreateInstance(nullptr, IID_IUnknown, &none),
                    L"Hemlar.TalGDIRenderEngine.1", IID_IClassFactory);
    }
    EXPECT_GE(before, blocksInUse()); // the platform may give back some of its own
}

} // namespace
} // namespace talx::test
