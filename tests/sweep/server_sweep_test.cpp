// The failure sweep over what belongs to no engine: exports, class objects, type information, registration,
// and the image library.
#include "tests/sweep/sweep.h"

#include <ocidl.h>

namespace talx::test {
namespace {

HRESULT call(HMODULE module, const char* name) {
    return exported<decltype(DllRegisterServer)>(module, name)();
}
std::vector<std::uint8_t> nothing() {
    return {};
}

// Every function that a DLL calls is made to fail, or there is a reason why not.
TEST(ServerSweep, KnowsEveryImport) {
    for (const HMODULE module : {engineModule(), imageModule()}) {
        for (const Import& import : imports(module)) {
            const bool fails = isHarmless(import.function) ||
                               std::any_of(std::begin(failures), std::end(failures),
                                           [&](const Failure& f) { return import.function == f.call; });
            EXPECT_NE(fails, isExempt(import.function)) << import.function;
        }
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
        const auto ask = [&] {
            return classObject(module, clsid, IID_PPV_ARGS(&object));
        };
        sweep.run({L"DllGetClassObject", ask, S_OK, {}, true}, load, unload, nothing);
        const auto describe = [&] {
            ComPtr<ITypeInfo> type;
            ComPtr<IProvideClassInfo2> info;
            object.As(&info);
            const HRESULT hr = info->GetClassInfo(&type);
            return type || FAILED(hr) ? hr : S_FALSE;
        };
        const auto create = [&] {
            object = createObject<IUnknown>(module, clsid);
        };
        sweep.run({L"GetClassInfo", describe, S_OK, create, true}, load, unload, nothing);
    }
    DeleteFileA(path.c_str());
}

TEST(ServerSweep, Registration) {
    ComPtr<IUnknown> registrar;
    const GUID clsid{0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
    GUID iid = clsid;
    ++iid.Data1;
    ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, &registrar));
    std::vector<Import> methods; // those that are used
    for (const int method : {3, 11, 12}) {
        methods.push_back({"", "registrar.", *reinterpret_cast<void***>(registrar.Get()) + method});
    }
    for (const HMODULE module : {imageModule(), engineModule()}) {
        Sweep sweep({module});
        sweep.watch(methods);
        const auto add = [=] {
            return call(module, "DllRegisterServer");
        };
        const auto remove = [=] {
            const HRESULT hr = call(module, "DllUnregisterServer");
            FAILED(hr) ? add() : S_OK; // the next time there must be everything
            return hr;
        };
        sweep.run(
            {L"DllUnregisterServer", remove, S_OK, add, true}, [] {}, [] {}, nothing);
        sweep.run(
            {L"DllRegisterServer", add, S_OK, {}, true}, [] {}, [] {}, nothing);
    }
}

template <class Interface>
ComPtr<Interface> as(const ComPtr<ITalImageMemory>& image) {
    ComPtr<Interface> face;
    image.As(&face);
    return face;
}

TEST(ServerSweep, Images) {
    const std::tuple<CLSID, std::wstring, long> classes[] = {{__uuidof(TalImage8Grey), L"8Grey", 1},
                                                             {__uuidof(TalImageColor), L"Color", 3},
                                                             {__uuidof(TalImage16Grey), L"16Grey", 1},
                                                             {__uuidof(TalImage16Range), L"16Range", 2}};
    for (const auto& [clsid, name, planes] : classes) {
        ComPtr<IClassFactory> factory;
        ComPtr<ITalImageMemory> image;
        ComPtr<ITalPelAccess> access, mask;
        ComPtr<IUnknown> made;
        classObject(imageModule(), clsid, IID_PPV_ARGS(&factory));
        long width = 0;
        BYTE pixels[64];
        const auto whole = [&](auto source) {
            return source->CreatePelAccess(talPelAccessRead, 0, 0, 0, 0, &access);
        };
        std::vector<Operation> operations{
            {L"CreateInstance",
             [&] {
                 return factory->CreateInstance(nullptr, IID_PPV_ARGS(&made));
             }},
            {L"Allocate",
             [&, n = planes] {
                 return image->Allocate(90, 7, n);
             }},
            {L"Allocate", [&] { return image->Allocate(0, 0, 1); }, E_INVALIDARG},
            {L"Wrap",
             [&] {
                 return image->Wrap(0, 4, 4, reinterpret_cast<__int64>(pixels), 8, factory.Get());
             }},
            {L"CreatePlaneAccess",
             [&] {
                 return image->CreatePlaneAccess(0, talPelAccessWrite, &access);
             }},
            {L"get_Width", [&] {
                 return as<ITalImage>(image)->get_Width(&width);
             }}};
        if (name == L"8Grey") {
            operations.push_back({L"CreatePelAccess", [&] {
                                      return whole(as<ITalPelAccessSource>(image));
                                  }});
        } else if (name == L"16Grey") {
            operations.push_back({L"CreatePelAccess", [&] {
                                      return whole(as<ITalPelAccessSource16>(image));
                                  }});
        } else if (name == L"Color") {
            operations.push_back({L"GetPlane", [&] {
                                      return as<ITalImageColor>(image)->GetPlane(2, &made);
                                  }});
        } else {
            operations.push_back({L"CreatePelAccesses", [&] {
                                      return as<ITalImage16Range>(image)->CreatePelAccesses(&access, &mask);
                                  }});
        }
        Sweep sweep({imageModule()});
        sweep.source = L"Hemlar.TalImage" + name + L".1";
        const auto create = [&, n = planes] {
            EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&image)));
            EXPECT_EQ(S_OK, image->Allocate(6, 4, n));
        };
        const auto release = [&] {
            image.Reset(), access.Reset(), mask.Reset(), made.Reset();
        };
        for (const Operation& operation : operations) {
            sweep.run(operation, create, release, nothing);
        }
    }
}

} // namespace
} // namespace talx::test
