// The failure sweep over what belongs to no engine: exports, class objects, type information, registration,
// and the image library.
#include "tests/sweep/sweep.h"

#include <ocidl.h>

namespace talx::test {
namespace {

HRESULT call(HMODULE module, const char* name) {
    return exported<decltype(DllRegisterServer)>(module, name)();
}

// Every function that a DLL calls is made to fail, or there is a reason why not.
TEST(ServerSweep, KnowsEveryImport) {
    for (const HMODULE module : {engineModule(), imageModule()}) {
        for (const Import& import : imports(module)) {
            const bool fails =
                std::ranges::any_of(failures, [&](const Failure& f) { return f.isOf(import.function); });
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
    sweep.prepare = [&] {
        module = LoadLibraryA(path.c_str());
        sweep.watch(imports(module));
    };
    sweep.end = [&] {
        object.Reset();
        EXPECT_EQ(S_OK, call(module, "DllCanUnloadNow"));
        sweep.unwatch();
        FreeLibrary(module);
        EXPECT_EQ(nullptr, GetModuleHandleA(path.c_str()));
    };
    for (const CLSID& clsid : {__uuidof(TalGDIRenderEngine), __uuidof(TalRenderEngine)}) {
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
        sweep.run({[&] { return classObject(module, clsid, IID_PPV_ARGS(&object)); }, L"DllGetClassObject"});
        sweep.run({describe, L"GetClassInfo", create});
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
        Sweep sweep(module);
        sweep.watch(methods);
        const auto add = [=] {
            return call(module, "DllRegisterServer");
        };
        const auto remove = [=] {
            const HRESULT hr = call(module, "DllUnregisterServer");
            FAILED(hr) ? add() : S_OK; // the next time there must be everything
            return hr;
        };
        sweep.run({remove, L"DllUnregisterServer", add});
        sweep.run({add, L"DllRegisterServer"});
    }
}

TEST(ServerSweep, Images) {
    ComPtr<ITalImageMemory> image;
    ComPtr<ITalPelAccess> access, mask;
    ComPtr<IUnknown> made;
    long width = 0;
    const auto as = [&]<class Interface>(ComPtr<Interface> face) {
        image.As(&face);
        return face;
    };
    const auto whole = [&](auto face) {
        return as(face)->CreatePelAccess(talPelAccessRead, 0, 0, 0, 0, &access);
    };
    // What images of other kinds do not have.
    const Operation read8{[&] { return whole(ComPtr<ITalPelAccessSource>()); }, L"CreatePelAccess"},
        read16{[&] { return whole(ComPtr<ITalPelAccessSource16>()); }, L"CreatePelAccess"},
        plane{[&] { return as(ComPtr<ITalImageColor>())->GetPlane(2, &made); }, L"GetPlane"},
        both{[&] { return as(ComPtr<ITalImage16Range>())->CreatePelAccesses(&access, &mask); },
             L"CreatePelAccesses"};
    const std::tuple<CLSID, std::wstring, long, Operation> classes[] = {
        {__uuidof(TalImage8Grey), L"8Grey", 1, read8},
        {__uuidof(TalImageColor), L"Color", 3, plane},
        {__uuidof(TalImage16Grey), L"16Grey", 1, read16},
        {__uuidof(TalImage16Range), L"16Range", 2, both}};
    for (const auto& [clsid, name, planes, own] : classes) {
        ComPtr<IClassFactory> factory;
        classObject(imageModule(), clsid, IID_PPV_ARGS(&factory));
        Sweep sweep(imageModule());
        sweep.source = L"Hemlar.TalImage" + name + L".1";
        sweep.prepare = [&, count = planes] {
            EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&image)));
            EXPECT_EQ(S_OK, image->Allocate(6, 4, count));
        };
        sweep.end = [&] {
            image.Reset(), access.Reset(), mask.Reset(), made.Reset();
        };
        const auto data = reinterpret_cast<__int64>(&width);
        for (const Operation& operation :
             {Operation{[&] { return factory->CreateInstance(nullptr, IID_PPV_ARGS(&made)); },
                        L"CreateInstance"},
              {[&, count = planes] { return image->Allocate(90, 7, count); }, L"Allocate"},
              {[&] { return image->Allocate(0, 0, 1); }, L"Allocate", {}, E_INVALIDARG},
              {[&] { return image->Wrap(0, 1, 1, data, 8, factory.Get()); }, L"Wrap"},
              {[&] { return image->CreatePlaneAccess(0, talPelAccessWrite, &access); }, L"CreatePlaneAccess"},
              {[&] { return as(ComPtr<ITalImage>())->get_Width(&width); }, L"get_Width"},
              own}) {
            sweep.run(operation);
        }
    }
}

} // namespace
} // namespace talx::test
