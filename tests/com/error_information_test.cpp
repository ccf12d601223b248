// What the frame around every method makes of a failure: its text, and what is left when there is no memory
// to tell it.
#include "tests/com/server_class.h"
#include "tests/support/error_info.h"
#include "tests/support/import_hook.h"
#include "tests/support/stack_object.h"
#include "tests/support/test_image.h"

#include <sstream>

namespace talx::test {
namespace {

struct ServerErrors : testing::Test {
    void SetUp() override {
        ASSERT_EQ(S_OK, engine->Initialize(reinterpret_cast<__int64>(GetDesktopWindow()), 9, 9));
    }
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
    std::wistringstream own(L"Can't create DirectDraw object.\nEngine uninitialized.\nCannot set cooperation "
                            L"level for DirectDraw.\n"
                            L"Cannot create primary surface.\nColor fill Blt failed.\nSurface GetDC "
                            L"failed.\nSurface Blt operation "
                            L"failed.\nCannot create offscreen surface.\nCannot set clipper on primary "
                            L"surface.\nCan't create clipper "
                            L"object.\nCan't set DirectDraw clipper HWND.\nCan't get screen pixel "
                            L"format.\nCan't set the palette.\n"
                            L"Unable to translate color.\nCan't create a compatible device context.\nUnable "
                            L"to create the requested DIB "
                            L"section.\nUnable to retrieve pixel data from TalImage object.\n");
    std::wstring text;
    for (unsigned code = 0x80043FFF; code <= 0x80048000; code = code == 0x80044011 ? 0x80047FFF : code + 1) {
        const auto hr = static_cast<HRESULT>(code);
        const bool isOwn = code >= 0x80044000 && code <= 0x80047FFF;
        if (isOwn && !std::getline(own, text)) {
            text = L"Unknown Error";
        }
        expectError(hr, isOwn ? text : L"DrawImage", stepFails(hr));
        expectError(hr, isOwn ? text : L"get_Image8GreyWholeColorMap ", helperRaises(hr));
    }
    const ImportHook<HOOK(ProgIDFromCLSID)> find(engineModule(), [](auto...) { return REGDB_E_CLASSNOTREG; });
    expectError(E_FAIL, L"DrawImage", stepFails(E_FAIL), L"");
}

// An error object that cannot be had, or not all of it; and that the thread cannot get.
struct FailingErrorInfo final : StackObject<ICreateErrorInfo> {
    explicit FailingErrorInfo(FailurePlan& failures) : plan(failures) {}
    HRESULT step() { return plan.nextCallFails() ? E_OUTOFMEMORY : S_OK; }
    STDMETHOD(SetGUID)(REFGUID) override { return step(); }
    STDMETHOD(SetSource)(LPOLESTR) override { return step(); }
    STDMETHOD(SetDescription)(LPOLESTR) override { return step(); }
    STDMETHOD(SetHelpFile)(LPOLESTR) override { return step(); }
    STDMETHOD(SetHelpContext)(DWORD) override { return step(); }
    FailurePlan& plan;
};

TEST_F(ServerErrors, LeaveNoInformationWhenThereIsNoMemoryForIt) {
    for (const auto mode : {FailurePlan::Mode::once, FailurePlan::Mode::fromThenOn}) {
        FailurePlan plan;
        FailingErrorInfo object(plan);
        const auto expectNone = [&](HRESULT expected, auto failure) {
            EXPECT_EQ(E_ABORT, stepFails(E_ABORT)) << "leaves information";
            const ImportHook<HOOK(CreateErrorInfo)> create(engineModule(), [&](ICreateErrorInfo** result) {
                return *result = &object, object.AddRef(), object.step();
            });
            const FailingImport<HOOK(ProgIDFromCLSID)> find(engineModule(), plan, E_OUTOFMEMORY);
            const FailingImport<HOOK(SysAllocStringLen)> text(engineModule(), plan);
            const HRESULT actual = failure();
            expectBare(plan.met() ? expected : E_FAIL, actual);
        };
        EXPECT_EQ(5, plan.sweep([&] { expectNone(E_OUTOFMEMORY, [&] { return stepFails(E_FAIL); }); }, mode));
        EXPECT_EQ(6, plan.sweep([&] { expectNone(E_FAIL, [&] { return helperRaises(E_FAIL); }); }, mode));
    }
}

TEST_F(ServerErrors, TellThatMemoryHasRunOutAndLeakNothing) {
    int before = 0;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, classObject(engineModule(), __uuidof(TalGDIRenderEngine), IID_PPV_ARGS(&factory)));
    for (int i = 0; i < 600; ++i) {
        before = i == 300 ? blocksInUse() : before;
        void* none = this;
        EXPECT_TRUE(FAILED(stepFails(E_FAIL)) && FAILED(helperRaises(E_FAIL)));
        const ImportHook<"malloc", void*(std::size_t)> allocate(engineModule(), [](auto) { return nullptr; });
        expectError(E_OUTOFMEMORY, L"CreateInstance", factory->CreateInstance(nullptr, IID_IUnknown, &none),
                    L"Hemlar.TalGDIRenderEngine.1", IID_IClassFactory);
        EXPECT_TRUE(!none && FAILED(stepFails(E_FAIL)) && FAILED(helperRaises(E_FAIL)));
        takeErrorInfo();
    }
    EXPECT_EQ(before, blocksInUse());
}

} // namespace
} // namespace talx::test
