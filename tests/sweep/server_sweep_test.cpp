// The failure sweep over what belongs to no engine: exports, class objects, type information, registration,
// and the image library.
#include "tests/sweep/sweep.h"

#include <ocidl.h>

namespace talx::test {
namespace {

HRESULT call(HMODULE module, const char* name) {
    return exported<decltype(DllRegisterServer)>(module, name)();
}

// Every call that a DLL makes is known: it is made to fail, or there is a reason why not.
TEST(ServerSweep, KnowsEveryImport) {
    std::set<std::string> known, imported;
    for (const Failure& f : failures) {
        known.insert(f.call);
    }
    for (const Exempt& e : exempt) {
        std::istringstream names(e.functions);
        for (std::string name; names >> name;) {
            EXPECT_TRUE(known.insert(name).second) << name << " " << e.reason << ", yet it is made to fail";
        }
    }
    for (const HMODULE module : {engineModule(), imageModule()}) {
        for (const Import& import : imports(module)) {
            imported.insert(import.function);
            EXPECT_TRUE(known.contains(import.function)) << import.function << " is new";
        }
    }
    for (const std::string& name : known) { // names with a dot are methods
        EXPECT_TRUE(imported.contains(name) || name == "DirectDrawCreate" || name.find('.') != name.npos)
            << name << " is not called any more";
    }
}

// What is made once in the life of a module: each round has a module loaded afresh.
TEST(ServerSweep, ModuleThatIsNew) {
    const std::string path = "C:\\talxrend-sweep.dll";
    ASSERT_TRUE(CopyFileA(TALXREND_PATH, path.c_str(), FALSE));
    HMODULE module = nullptr;
    ComPtr<IUnknown> object;
    Sweep sweep;
    const auto load = [&] {
        module = LoadLibraryA(path.c_str());
        sweep.watch(imports(module));
    };
    const auto unload = [&] {
        object.Reset();
        EXPECT_EQ(S_OK, call(module, "DllCanUnloadNow"));
        sweep.unwatch();
        FreeLibrary(module);
        EXPECT_EQ(nullptr, GetModuleHandleA(path.c_str()));
    };
    for (const CLSID& clsid : {__uuidof(TalGDIRenderEngine), __uuidof(TalRenderEngine)}) {
        sweep.run({L"DllGetClassObject",
                   [&] {
                       const HRESULT hr = classObject(module, clsid, IID_PPV_ARGS(&object));
                       EXPECT_EQ(SUCCEEDED(hr), object.Get() != nullptr);
                       return hr;
                   },
                   S_OK, true},
                  load, unload);
        sweep.run(
            {L"GetClassInfo",
             [&] {
                 ComPtr<ITypeInfo> type;
                 ComPtr<IProvideClassInfo2> info;
                 object.As(&info);
                 const HRESULT hr = info->GetClassInfo(&type);
                 EXPECT_EQ(SUCCEEDED(hr), type.Get() != nullptr);
                 return hr;
             },
             S_OK, true},
            [&] {
                load();
                object = createObject<IUnknown>(module, clsid);
            },
            unload);
    }
    DeleteFileA(path.c_str());
}

TEST(ServerSweep, Registration) {
    ComPtr<IUnknown> registrar;
    CLSID clsid;
    CLSIDFromString(L"{44EC053A-400F-11D0-9DCD-00A0C90391D3}", &clsid);
    IID iid = clsid;
    iid.Data1 = 0x44EC053B;
    ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, &registrar));
    std::vector<Import> methods; // those that are used
    for (const int method : {3, 11, 12}) {
        methods.push_back({"atl.dll", "registrar." + std::to_string(method),
                           *reinterpret_cast<void***>(registrar.Get()) + method});
    }
    for (const HMODULE module : {imageModule(), engineModule()}) {
        Sweep sweep({module});
        sweep.watch(methods);
        const auto ready = [=] {
            EXPECT_EQ(S_OK, call(module, "DllRegisterServer"));
        };
        sweep.run({L"DllUnregisterServer",
                   [=] {
                       const HRESULT hr = call(module, "DllUnregisterServer");
                       FAILED(hr) ? call(module, "DllRegisterServer") : S_OK;
                       return hr;
                   },
                   S_OK, true},
                  ready, [] {});
        sweep.run(
            {L"DllRegisterServer", [=] { return call(module, "DllRegisterServer"); }, S_OK, true}, [] {},
            [] {});
    }
}

// The image classes.
struct ImageSweep : testing::Test {
    ImageSweep() {
        for (const CLSID& clsid : classes) {
            factories.emplace_back();
            classObject(imageModule(), clsid, IID_PPV_ARGS(&factories.back()));
        }
        sweep.emplace(std::vector{imageModule()});
    }
    // Runs it on images of a kind.
    template <class Interface>
    void run(int kind, const wchar_t* method, auto call, HRESULT result = S_OK) {
        ComPtr<ITalImageMemory> image;
        const wchar_t* const names[] = {L"8Grey", L"Color", L"16Grey", L"16Range"};
        sweep->source = std::wstring(L"Hemlar.TalImage") + names[kind] + L".1";
        sweep->run(
            {method,
             [&] {
                 ComPtr<Interface> face;
                 image.As(&face);
                 return call(face.Get());
             },
             result},
            [&] {
                factories[kind]->CreateInstance(nullptr, IID_PPV_ARGS(&image));
                EXPECT_EQ(S_OK, image->Allocate(6, 4, kind == 1 ? 3 : kind == 3 ? 2 : 1));
            },
            [&] { image.Reset(); });
    }

    const CLSID classes[4]{__uuidof(TalImage8Grey), __uuidof(TalImageColor), __uuidof(TalImage16Grey),
                           __uuidof(TalImage16Range)};
    std::vector<ComPtr<IClassFactory>> factories;
    std::optional<Sweep> sweep;
};

TEST_F(ImageSweep, OfTheLibraryServer) {
    for (int kind = 0; kind < 4; ++kind) {
        run<IUnknown>(kind, L"CreateInstance", [&](IUnknown*) {
            ComPtr<IUnknown> made;
            return factories[kind]->CreateInstance(nullptr, IID_PPV_ARGS(&made));
        });
        run<ITalImageMemory>(kind, L"Allocate",
                             [&](auto* image) { return image->Allocate(90, 7, kind == 1 ? 3 : 1); });
        run<ITalImageMemory>(
            kind, L"Allocate", [](auto* image) { return image->Allocate(0, 0, 1); }, E_INVALIDARG);
        run<ITalImageMemory>(kind, L"Wrap", [&](auto* image) {
            static BYTE pixels[64];
            return image->Wrap(0, 4, 4, reinterpret_cast<__int64>(pixels), 8, factories[0].Get());
        });
        run<ITalImageMemory>(kind, L"CreatePlaneAccess", [](auto* image) {
            ComPtr<ITalPelAccess> access;
            const HRESULT hr = image->CreatePlaneAccess(0, talPelAccessReadWrite, &access);
            EXPECT_EQ(SUCCEEDED(hr), access.Get() != nullptr);
            return hr;
        });
        run<ITalImage>(kind, L"get_Width", [](auto* image) {
            long width = 0;
            return image->get_Width(&width);
        });
    }
    run<ITalImageColor>(1, L"GetPlane", [](auto* image) {
        ComPtr<IUnknown> plane;
        return image->GetPlane(2, &plane);
    });
    run<ITalImageColor>(
        1, L"GetPlane", [](auto* image) { return image->GetPlane(2, nullptr); }, E_POINTER);
    const auto access = [](auto* source) {
        ComPtr<ITalPelAccess> made;
        return source->CreatePelAccess(talPelAccessRead, 0, 0, 0, 0, &made);
    };
    run<ITalPelAccessSource>(0, L"CreatePelAccess", access);
    run<ITalPelAccessSource16>(2, L"CreatePelAccess", access);
    run<ITalImage16Range>(3, L"CreatePelAccesses", [](auto* image) {
        ComPtr<ITalPelAccess> values, mask;
        const HRESULT hr = image->CreatePelAccesses(&values, &mask);
        EXPECT_EQ(SUCCEEDED(hr), values && mask);
        EXPECT_EQ(FAILED(hr), !values && !mask);
        return hr;
    });
}

} // namespace
} // namespace talx::test
