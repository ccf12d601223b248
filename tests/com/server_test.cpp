// What holds for every class of talxrend.dll, whatever it draws: exports, creation, lives, and how it reports
// errors.
#include "tests/com/server_class.h"
#include "tests/support/error_info.h"
#include "tests/support/import_hook.h"

#include <ocidl.h>

#include <set>

namespace talx::test {
namespace {

TEST(Server, ExportsFourFunctionsAndNeedsNoRedistributable) {
    auto* base = reinterpret_cast<BYTE*>(engineModule());
    const auto* headers =
        reinterpret_cast<IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto* exports = reinterpret_cast<IMAGE_EXPORT_DIRECTORY*>(
        base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        names.emplace(
            reinterpret_cast<char*>(base + reinterpret_cast<DWORD*>(base + exports->AddressOfNames)[i]));
    }
    EXPECT_EQ((std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                     "DllUnregisterServer"}),
              names);
    EXPECT_EQ(4u, exports->NumberOfFunctions);

    const std::set<std::string> inBox{"advapi32.dll", "gdi32.dll",    "kernel32.dll", "msvcrt.dll",
                                      "ole32.dll",    "oleaut32.dll", "user32.dll"};
    for (std::string name : importedModules(engineModule())) {
        std::transform(name.begin(), name.end(), name.begin(), tolower);
        EXPECT_TRUE(inBox.contains(name)) << name;
    }
}

TEST(Server, HoldsTheMessages) {
    const wchar_t* const messages[] = {
        L"Can't create DirectDraw object.",
        L"Engine uninitialized.",
        L"Cannot set cooperation level for DirectDraw.",
        L"Cannot create primary surface.",
        L"Color fill Blt failed.",
        L"Surface GetDC failed.",
        L"Surface Blt operation failed.",
        L"Cannot create offscreen surface.",
        L"Cannot set clipper on primary surface.",
        L"Can't create clipper object.",
        L"Can't set DirectDraw clipper HWND.",
        L"Can't get screen pixel format.",
        L"Can't set the palette.",
        L"Unable to translate color.",
        L"Can't create a compatible device context.",
        L"Unable to create the requested DIB section.",
        L"Unable to retrieve pixel data from TalImage object.",
    };
    UINT id = 16384;
    for (const wchar_t* message : messages) {
        wchar_t text[128] = L"";
        LoadStringW(engineModule(), id++, text, 128);
        EXPECT_STREQ(message, text);
    }
}

TEST(Server, KnowsNoOtherClass) {
    IUnknown* object = reinterpret_cast<IUnknown*>(1);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, classObject(engineModule(), IID_IUnknown, IID_IClassFactory,
                                                     reinterpret_cast<void**>(&object)));
    EXPECT_EQ(nullptr, object);
}

// An object that another one may be aggregated into.
struct Outer final : IUnknown {
    long references = 1;
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown ? this : nullptr;
        if (*object) {
            AddRef();
        }
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHOD_(ULONG, AddRef)() override { return ++references; }
    STDMETHOD_(ULONG, Release)() override { return --references; }
};

class ServerClassTest : public testing::TestWithParam<ServerClass> {
protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, classObject(engineModule(), GetParam().clsid, IID_PPV_ARGS(&factory_)));
    }
    template <class Interface = IUnknown>
    ComPtr<Interface> create() const {
        ComPtr<Interface> object;
        EXPECT_EQ(S_OK, factory_->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
        return object;
    }
    static HRESULT canUnload() {
        return exported<decltype(DllCanUnloadNow)>(engineModule(), "DllCanUnloadNow")();
    }

    ComPtr<IClassFactory> factory_;
};

TEST_P(ServerClassTest, IsCreatedByProgId) {
    EXPECT_TRUE(createByProgId<ITalRenderEngine2>(GetParam().progId().c_str()));
    const auto versionless = GetParam().progId().substr(0, GetParam().progId().size() - 2);
    EXPECT_TRUE(createByProgId<ITalRenderEngine>(versionless.c_str()));
}

TEST_P(ServerClassTest, HasOneIdentityAndTheInterfacesOfTheContract) {
    const auto object = create();
    const auto offers = [&](const IID& iid) {
        ComPtr<IUnknown> face, identity;
        if (FAILED(object.CopyTo(iid, &face))) {
            return false;
        }
        EXPECT_EQ(S_OK, face.As(&identity));
        return identity.Get() == object.Get();
    };
    for (const IID& iid :
         {__uuidof(ITalRenderEngine), __uuidof(ITalRenderEngine2), __uuidof(ITalRenderEngineScalingParams),
          IID_ISupportErrorInfo, IID_IProvideClassInfo2}) {
        EXPECT_TRUE(offers(iid)) << std::hex << iid.Data1;
    }
    EXPECT_EQ(GetParam().rendersToTargets, offers(__uuidof(ITalRenderTargetAccess)));
    for (const IID& iid : {IID_IDispatch, IID_IProvideClassInfo, __uuidof(ITalRenderEngineEvents)}) {
        EXPECT_FALSE(offers(iid)) << std::hex << iid.Data1;
    }
}

TEST_P(ServerClassTest, KeepsTheModuleLoadedWhileItLives) {
    ComPtr<IClassFactory> again;
    ASSERT_EQ(S_OK, classObject(engineModule(), GetParam().clsid, IID_PPV_ARGS(&again)));
    EXPECT_EQ(factory_.Get(), again.Get()) << "the class object is cached";
    again.Reset();
    EXPECT_EQ(S_OK, factory_->LockServer(TRUE));
    factory_.Reset();
    EXPECT_EQ(S_FALSE, canUnload());

    ASSERT_EQ(S_OK, classObject(engineModule(), GetParam().clsid, IID_PPV_ARGS(&factory_)));
    auto object = create();
    EXPECT_EQ(S_OK, factory_->LockServer(FALSE));
    factory_.Reset();
    EXPECT_EQ(S_FALSE, canUnload());
    object.Reset();
    EXPECT_EQ(S_OK, canUnload());
}

TEST_P(ServerClassTest, CanBeAggregated) {
    Outer outer;
    IUnknown* none = reinterpret_cast<IUnknown*>(1);
    EXPECT_EQ(CLASS_E_NOAGGREGATION,
              factory_->CreateInstance(&outer, __uuidof(ITalRenderEngine), reinterpret_cast<void**>(&none)));
    EXPECT_EQ(nullptr, none);
    ComPtr<IUnknown> inner;
    ASSERT_EQ(S_OK, factory_->CreateInstance(&outer, IID_PPV_ARGS(&inner)));
    factory_.Reset();
    EXPECT_EQ(1, outer.references) << "an aggregate must not hold its outer object";
    EXPECT_NE(&outer, inner.Get());
    {
        ComPtr<ITalRenderEngine2> engine;
        ASSERT_EQ(S_OK, inner.As(&engine));
        EXPECT_EQ(2, outer.references);
        ComPtr<IUnknown> identity;
        EXPECT_EQ(S_OK, engine.As(&identity));
        EXPECT_EQ(&outer, identity.Get());
        ComPtr<ITalRenderEngineScalingParams> sibling;
        EXPECT_EQ(E_NOINTERFACE, engine.As(&sibling)) << "the outer object decides what is offered";
        long layers = -1;
        EXPECT_EQ(S_OK, engine->get_Layers(&layers));
        EXPECT_EQ(0, layers);
    }
    EXPECT_EQ(1, outer.references);
    EXPECT_EQ(S_FALSE, canUnload());
    inner.Reset();
    EXPECT_EQ(S_OK, canUnload());
}

TEST_P(ServerClassTest, DescribesItself) {
    const auto info = create<IProvideClassInfo2>();
    EXPECT_EQ(E_POINTER, info->GetClassInfo(nullptr));
    ComPtr<ITypeInfo> type;
    ASSERT_EQ(S_OK, info->GetClassInfo(&type));
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, type->GetTypeAttr(&attributes));
    EXPECT_EQ(TKIND_COCLASS, attributes->typekind);
    EXPECT_EQ(GetParam().clsid, attributes->guid);
    type->ReleaseTypeAttr(attributes);

    GUID guid = GetParam().clsid;
    EXPECT_EQ(E_POINTER, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr));
    EXPECT_EQ(E_INVALIDARG, info->GetGUID(2, &guid));
    EXPECT_EQ(GUID{}, guid);
    EXPECT_EQ(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &guid));
    EXPECT_EQ(__uuidof(ITalRenderEngine), guid);

    const auto support = create<ISupportErrorInfo>();
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(__uuidof(ITalRenderEngine)));
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID_IUnknown));
}

TEST_P(ServerClassTest, ReportsThatItIsNotInitialized) {
    const auto engine = create<ITalRenderEngine2>();
    const std::wstring source = GetParam().progId();
    const auto expectUninitialized = [&](HRESULT hr) {
        expectError(static_cast<HRESULT>(0x80044001), L"Engine uninitialized.", hr, source);
    };
    expectUninitialized(engine->SetExtent(1, 1));
    expectUninitialized(engine->DrawImage(0, nullptr, 0, 0, 1, 0, 0, 1, 1, 0));
    expectUninitialized(engine->DrawIcon8(0, nullptr, nullptr, nullptr, 0, 0, 1, 0, 0, 1, 1));
    expectUninitialized(engine->Fill(0, 0, 0, 1, 1, 0));
    expectUninitialized(engine->GetDrawContext(0, nullptr));
    expectUninitialized(engine->ReleaseDrawContext(0, 0));
    expectUninitialized(engine->RefreshScreen(0, 0, 0, 0, 1, 1));
    if (GetParam().rendersToTargets) {
        const auto targets = create<ITalRenderTargetAccess>();
        expectUninitialized(targets->SetRenderTargetFromHDC(0));
        expectUninitialized(targets->SetRenderTargetFromDIB(nullptr));
        expectUninitialized(targets->CreateDIBRenderTarget(talRenderTargetFormatUnspecified, nullptr));
    }
    VARIANT_BOOL initialized = VARIANT_TRUE;
    EXPECT_EQ(S_OK, engine->get_Initialized(&initialized));
    EXPECT_EQ(VARIANT_FALSE, initialized);
}

TEST_P(ServerClassTest, ReportsNullPointersByTheMethodsName) {
    const auto engine = create<ITalRenderEngine2>();
    const std::wstring source = GetParam().progId();
    long value = 0;
    expectError(E_POINTER, L"get_Initialized", engine->get_Initialized(nullptr), source);
    expectError(E_POINTER, L"GetExtent", engine->GetExtent(&value, nullptr), source);
    expectError(E_POINTER, L"GetExtent", engine->GetExtent(nullptr, &value), source);
}

TEST_P(ServerClassTest, SomeMethodsFailWithoutErrorInformation) {
    const auto engine = create<ITalRenderEngine2>();
    takeErrorInfo();
    BSTR untouched = reinterpret_cast<BSTR>(1);
    expectBare(E_NOTIMPL, engine->DumpInfo(&untouched));
    EXPECT_EQ(reinterpret_cast<BSTR>(1), untouched);
    expectBare(E_NOTIMPL, engine->DumpInfo(nullptr));
    expectBare(E_INVALIDARG, engine->AdviseRenderEvents(nullptr));
    expectBare(E_POINTER, engine->get_Layers(nullptr));
    expectBare(E_POINTER, create<ITalRenderEngineScalingParams>()->get_ScalingMethod(nullptr));
    expectBare(E_POINTER, engine->get_Image8GreyColorMap(0, nullptr));
    expectBare(E_POINTER, engine->get_Image8GreyWholeColorMap(nullptr));
    expectBare(E_POINTER, engine->get_Image16GreyColorMap(nullptr));
    expectBare(E_POINTER, engine->get_Image16RangeColorMap(nullptr));
    expectBare(E_POINTER, engine->get_VisiblePixelMaskEnable(nullptr));
    expectBare(E_POINTER, engine->get_VisiblePixelMaskColor(nullptr));
}

INSTANTIATE_TEST_SUITE_P(Server, ServerClassTest, testing::ValuesIn(serverClasses), testNameOf);

} // namespace
} // namespace talx::test
