// What holds for both DLLs and for every class of engine, whatever it draws: exports, creation, lives, how it
// describes itself and how it reports errors.
#include "tests/com/server_class.h"
#include "tests/support/error_info.h"
#include "tests/support/import_hook.h"
#include "tests/support/stack_object.h"

#include <ocidl.h>

#include <thread>

namespace talx::test {
namespace {

TEST(Server, ExportsFourFunctionsAndNeedsNoRedistributable) {
    for (const HMODULE module : {engineModule(), imageModule()}) {
        EXPECT_TRUE(GetProcAddress(module, MAKEINTRESOURCEA(4)) &&
                    !GetProcAddress(module, MAKEINTRESOURCEA(5)));
        void* none = module;
        EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, classObject(module, IID_IUnknown, IID_IClassFactory, &none));
        EXPECT_EQ(nullptr, none);
        for (const std::string& name : importedModules(module)) {
            EXPECT_FALSE(name.starts_with("lib")) << name << " belongs to the compiler";
        }
    }
}

struct ServerEngine : testing::TestWithParam<int> {
    HRESULT getFactory() { return classObject(engineModule(), row.clsid, IID_PPV_ARGS(&factory)); }
    void SetUp() override {
        ASSERT_EQ(S_OK, getFactory());
        ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&engine)));
    }
    static HRESULT canUnload() { return call("DllCanUnloadNow", engineModule()); }

    const ServerClass& row = serverClasses[GetParam()];
    ComPtr<IClassFactory> factory;
    ComPtr<ITalRenderEngine2> engine;
};
INSTANTIATE_TEST_SUITE_P(Classes, ServerEngine, testing::Values(0, 1));

TEST_P(ServerEngine, HasOneIdentityAndTheInterfacesOfTheContract) {
    for (const std::wstring& name : {row.progId(), L"Hemlar." + row.name}) {
        CLSID clsid;
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, CLSIDFromProgID(name.c_str(), &clsid)) << "not registered";
        EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)));
        int offered = 0; // bits, in this order
        for (const IID& iid : {__uuidof(ITalRenderEngine), __uuidof(ITalRenderEngine2),
                               __uuidof(ITalRenderEngineScalingParams), IID_ISupportErrorInfo,
                               IID_IProvideClassInfo2, __uuidof(ITalRenderTargetAccess),
                               __uuidof(ITalRenderEngineEvents), IID_IProvideClassInfo, IID_IDispatch}) {
            ComPtr<IUnknown> face, identity;
            offered = 2 * offered + (object.CopyTo(iid, &face) == S_OK);
            EXPECT_TRUE(!face || (face.As(&identity) == S_OK && identity.Get() == object.Get()));
            EXPECT_EQ(E_POINTER, (face ? face : object)->QueryInterface(iid, nullptr));
        }
        EXPECT_EQ(GetParam() ? 0b111111000 : 0b111110000, offered);
    }
}

TEST_P(ServerEngine, KeepsTheModuleLoadedWhileItLives) {
    EXPECT_EQ(E_POINTER, classObject(engineModule(), row.clsid, IID_IClassFactory, nullptr));
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IUnknown, nullptr));
    const IClassFactory* const cached = factory.Get();
    factory.Reset();
    EXPECT_EQ(S_FALSE, canUnload()) << "the engine lives";
    engine.Reset();
    EXPECT_EQ(S_OK, canUnload());
    for (const BOOL lock : {TRUE, FALSE}) {
        EXPECT_EQ(S_OK, getFactory());
        EXPECT_EQ(cached, factory.Get());
        EXPECT_EQ(S_FALSE, canUnload()) << "the class object is in use";
        EXPECT_EQ(S_OK, factory->LockServer(lock));
        factory.Reset();
        EXPECT_EQ(lock ? S_FALSE : S_OK, canUnload());
    }
}

TEST_P(ServerEngine, CanBeAggregated) {
    engine.Reset();
    StackObject<IUnknown> outer;
    void* none = this;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, __uuidof(ITalRenderEngine), &none));
    EXPECT_EQ(nullptr, none);
    ComPtr<IUnknown> inner, identity;
    ASSERT_EQ(S_OK, factory->CreateInstance(&outer, IID_PPV_ARGS(&inner)));
    factory.Reset();
    EXPECT_EQ(0, outer.references) << "an aggregate must not hold its outer object";
    EXPECT_EQ(E_POINTER, inner->QueryInterface(IID_IUnknown, nullptr));
    ASSERT_EQ(S_OK, inner.As(&engine)) << "by its own IUnknown";
    EXPECT_EQ(1, outer.references);
    EXPECT_EQ(S_OK, engine.As(&identity));
    EXPECT_EQ(&outer, identity.Get());
    EXPECT_EQ(E_NOINTERFACE, engine->QueryInterface(IID_ISupportErrorInfo, &none)) << "the outer's to say";
    identity.Reset();
    engine.Reset();
    EXPECT_EQ(S_FALSE, canUnload());
    inner.Reset();
    EXPECT_EQ(S_OK, canUnload());
}

TEST_P(ServerEngine, DescribesItself) {
    ComPtr<IProvideClassInfo2> info;
    ComPtr<ISupportErrorInfo> support;
    ASSERT_TRUE(engine.As(&info) == S_OK && engine.As(&support) == S_OK);
    GUID guid = row.clsid;
    EXPECT_EQ(E_POINTER, info->GetClassInfo(nullptr));
    EXPECT_EQ(E_POINTER, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr));
    EXPECT_EQ(E_INVALIDARG, info->GetGUID(2, &guid));
    EXPECT_EQ(GUID{}, guid);
    EXPECT_EQ(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &guid));
    EXPECT_EQ(__uuidof(ITalRenderEngine), guid);
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID_IUnknown));
    expectBare(E_NOTIMPL, engine->DumpInfo(nullptr));
    expectBare(E_INVALIDARG, engine->AdviseRenderEvents(nullptr));
    expectError(E_POINTER, L"get_Initialized", engine->get_Initialized(nullptr), row.progId());
}

TEST(ServerModule, ThreadsAskingAtOnceGetTheSameClassObject) {
    const ModuleCopy copy;
    const auto ask = [&](ComPtr<IClassFactory>& factory) {
        return classObject(copy.module, serverClasses[0].clsid, IID_PPV_ARGS(&factory));
    };
    ComPtr<IClassFactory> mine, others;
    bool asked = false;
    // This thread has found no class object yet, and another one makes it meanwhile.
    ImportHook<HOOK(EnterCriticalSection)> enter(copy.module, [&](CRITICAL_SECTION* section) {
        if (!std::exchange(asked, true)) {
            std::thread([&] { ask(others); }).join();
        }
        enter.original(section);
    });
    EXPECT_EQ(S_OK, ask(mine));
    EXPECT_TRUE(mine && others.Get() == mine.Get());
}

TEST(ServerModule, KeepsWhatItCachesUntilItIsUnloaded) {
    for (const int one : {0, 1}) {
        ITypeInfo* type = nullptr;
        {
            const ModuleCopy copy;
            const auto object = createObject<IProvideClassInfo2>(copy.module, serverClasses[one].clsid);
            int loads = 0;
            ImportHook<HOOK(LoadTypeLibEx)> load(copy.module, [&](auto... args) {
                return ++loads > 1 ? load.original(args...) : TYPE_E_CANTLOADLIBRARY;
            });
            for (const HRESULT hr : {TYPE_E_CANTLOADLIBRARY, S_OK, S_OK}) {
                type = reinterpret_cast<ITypeInfo*>(1);
                EXPECT_EQ(hr, object->GetClassInfo(&type));
                EXPECT_EQ(hr == S_OK, type != nullptr);
            }
            EXPECT_EQ(2, loads);
        }
        BSTR name = nullptr;
        EXPECT_EQ(S_OK, type->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
        EXPECT_EQ(serverClasses[one].name, name);
        SysFreeString(name);
        EXPECT_EQ(1u, type->Release()) << "two were handed out, and the module's own is gone with it";
        EXPECT_EQ(0u, type->Release());
    }
}

} // namespace
} // namespace talx::test
