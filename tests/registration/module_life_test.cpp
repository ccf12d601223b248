// What registering and removing the server does to the registry, step by step and for one user only, and what
// the module does from its loading to its unloading.
#include "tests/com/server_class.h"
#include "tests/support/import_hook.h"

#include <ocidl.h>

#include <map>
#include <set>
#include <thread>

namespace talx::test {
namespace {

using Lines = std::set<std::wstring>;

// A key and everything below it: one line for each key, "path", and for each value, "path@name = type:data".
Lines below(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return {};
    }
    Lines lines{path};
    static wchar_t name[16384], data[1 << 16];
    for (DWORD i = 0, type = 0, length = std::size(name), size = sizeof data;
         RegEnumValueW(key, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) == 0;
         ++i, length = std::size(name), size = sizeof data) {
        const std::wstring value(data, size / sizeof *data);
        lines.insert(path + L"@" + name + L" = " + std::to_wstring(type) + L":" + value);
    }
    for (DWORD i = 0; RegEnumKeyW(key, i, name, std::size(name)) == ERROR_SUCCESS; ++i) {
        lines.merge(below(root, path + L"\\" + name));
    }
    RegCloseKey(key);
    return lines;
}

// The lines that only one of two states has.
Lines changes(const Lines& before, const Lines& after) {
    Lines lines;
    std::ranges::set_symmetric_difference(before, after, std::inserter(lines, lines.end()));
    return lines;
}

HRESULT call(const char* name, HMODULE module = engineModule()) {
    return exported<HRESULT WINAPI()>(module, name)();
}
HRESULT callServer(bool registering) {
    return call(registering ? "DllRegisterServer" : "DllUnregisterServer");
}

const std::wstring classes = L"Software\\Classes\\", ids = L"{9FC1F06C-7F0F-47D5-8268-12071241C0";
const Lines partKeys[] = {
    {L"Hemlar.TalRenderEngine", L"Hemlar.TalRenderEngine.1", L"CLSID\\" + ids + L"20}"},
    {L"Hemlar.TalGDIRenderEngine", L"Hemlar.TalGDIRenderEngine.1", L"CLSID\\" + ids + L"21}"},
    {L"TypeLib\\" + ids + L"00}"}};

Lines part(int i, HKEY root) {
    Lines lines;
    for (const std::wstring& key : partKeys[i]) {
        lines.merge(below(root, classes + key));
    }
    return lines;
}

// Every test finds the server registered for the machine and must leave it so.
class ServerRegistration : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(S_OK, callServer(true));
        EXPECT_EQ(7, partsIn(HKEY_LOCAL_MACHINE));
        EXPECT_EQ(Lines{}, changes(user_, below(HKEY_CURRENT_USER, L"Software")));
    }
    // The sum of 1 and 2 for the classes and 4 for the type library; more when one is there only in part.
    int partsIn(HKEY root) const {
        int parts = 0;
        for (int i = 0; i < 3; ++i) {
            const Lines lines = part(i, root);
            parts |= (lines.empty() ? 0 : lines == machine_[i] ? 1 : 16) << i;
        }
        return parts;
    }

    const Lines machine_[3] = {part(0, HKEY_LOCAL_MACHINE), part(1, HKEY_LOCAL_MACHINE),
                               part(2, HKEY_LOCAL_MACHINE)};
    // With a key that everybody shares and that registering for a user may leave behind.
    const Lines user_ = (RegSetValueW(HKEY_CURRENT_USER, (classes + L"CLSID").c_str(), REG_SZ, L"", 0),
                         below(HKEY_CURRENT_USER, L"Software"));
};

TEST_F(ServerRegistration, TouchesNothingElseAndLeavesNothingBehind) {
    const Lines before = below(HKEY_LOCAL_MACHINE, L"Software\\Classes");
    Lines ours = before;
    std::erase_if(ours, [](const std::wstring& line) {
        return line.find(L"RenderEngine") == line.npos && line.find(ids) == line.npos;
    });
    EXPECT_EQ(S_OK, callServer(false));
    EXPECT_EQ(Lines{}, changes(ours, changes(before, below(HKEY_LOCAL_MACHINE, L"Software\\Classes"))));
    EXPECT_TRUE(FAILED(callServer(false))) << "there is no type library to remove";
    const std::wstring stale = classes + L"CLSID\\" + ids + L"21}\\Stale";
    RegSetValueW(HKEY_LOCAL_MACHINE, stale.c_str(), REG_SZ, L"of an older version", 0);
    EXPECT_EQ(S_OK, callServer(true));
    EXPECT_EQ(S_OK, callServer(true)) << "over itself";
    EXPECT_EQ(Lines{}, changes(before, below(HKEY_LOCAL_MACHINE, L"Software\\Classes")));
}

TEST_F(ServerRegistration, AFailingStepIsReturnedAndWhatWasDoneStays) {
    constexpr HRESULT noRegistrar = E_ACCESSDENIED, noScript = HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY);
    constexpr HRESULT noLibrary = TYPE_E_CANTLOADLIBRARY, notWritten = TYPE_E_REGISTRYACCESS;
    for (const bool registering : {true, false}) {
        FailurePlan plan;
        std::vector<HRESULT> results;
        std::vector<int> parts;
        plan.sweep([&] {
            callServer(!registering);
            const FailingImport<HOOK(CoCreateInstance)> create(engineModule(), plan, noRegistrar);
            const FailingImport<HOOK(FindResourceW)> find(GetModuleHandleW(L"atl.dll"), plan);
            const FailingImport<HOOK(LoadTypeLibEx)> load(engineModule(), plan, noLibrary);
            const FailingImport<HOOK(RegisterTypeLib)> add(engineModule(), plan, notWritten);
            const FailingImport<HOOK(UnRegisterTypeLib)> remove(engineModule(), plan, notWritten);
            results.push_back(callServer(registering));
            parts.push_back(partsIn(HKEY_LOCAL_MACHINE));
        });
        EXPECT_EQ((std::vector{noRegistrar, noScript, noRegistrar, noScript, noLibrary, notWritten, S_OK}),
                  results);
        EXPECT_EQ(registering ? (std::vector{0, 0, 1, 1, 3, 3, 7}) : (std::vector{7, 7, 6, 6, 4, 4, 0}),
                  parts);
    }
}

// Functions that only note the type library that they should register for the machine ("m") or a user ("u").
std::vector<std::wstring> notes;
constexpr HRESULT noted = 0x00041234; // a success that no other function answers

template <wchar_t whose>
HRESULT WINAPI add(ITypeLib*, OLECHAR* path, OLECHAR* help) {
    notes.push_back(std::wstring{whose} + L" + " + path + L" " + help);
    return noted;
}
template <wchar_t whose>
HRESULT WINAPI remove(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND kind) {
    EXPECT_TRUE(id.Data4[7] == 0 && major == 1 && minor == 0 && locale == 0 && kind == SYS_WIN64);
    notes.push_back(std::wstring{whose} + L" -");
    return noted;
}

// What an ATL run-time answers to the question whether to register for the user.
template <bool perUser, HRESULT hr = S_OK>
HRESULT WINAPI answers(bool* on) {
    *on = perUser;
    return hr;
}

TEST_F(ServerRegistration, IsForOneUserWhenTheRuntimeSaysSo) {
    static const auto atl = reinterpret_cast<HMODULE>(&notes);
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(engineModule(), path, MAX_PATH);
    const std::wstring file = wcsrchr(path, L'\\') + 1, folder(path, wcsrchr(path, L'\\'));
    SetCurrentDirectoryW(folder.c_str());
    const struct {
        HMODULE runtime;
        HRESULT(WINAPI* answer)(bool*);
        bool functionsForUser;
        std::wstring start; // of the module's path
        int userParts;      // what comes of it: the parts registered for the user,
        std::wstring whose; // and whose the type library is
    } rows[] = {{nullptr, answers<true>, true, folder + L'\\', 0, L"m"},
                {atl, nullptr, true, folder + L'/', 0, L"m"},
                {atl, answers<false>, true, folder.substr(0, 2), 0, L"m"}, // "Z:"
                {atl, answers<true, E_FAIL>, true, folder + L'\\', 0, L"m"},
                {atl, answers<true>, true, folder + L'\\', 3, L"u"},
                {atl, answers<true>, false, folder + L'\\', 3, L"m"}};
    for (const auto& row : rows) {
        EXPECT_EQ(S_OK, callServer(true));
        ImportHook<HOOK(GetModuleHandleW)> find(engineModule(), [&](const wchar_t* name) {
            return _wcsnicmp(name, L"atl", 3) == 0 ? row.runtime : find.original(name);
        });
        std::map<std::string, void*> functions{
            {"AtlGetPerUserRegistration", reinterpret_cast<void*>(row.answer)}};
        if (row.functionsForUser) {
            functions["RegisterTypeLibForUser"] = reinterpret_cast<void*>(add<L'u'>);
            functions["UnRegisterTypeLibForUser"] = reinterpret_cast<void*>(remove<L'u'>);
        }
        const ImportHook<HOOK(GetProcAddress)> look(engineModule(), [&](HMODULE, const char* name) {
            return reinterpret_cast<FARPROC>(functions[name]);
        });
        const ImportHook<HOOK(GetModuleFileNameW)> name(engineModule(), [&](HMODULE, auto* text, int size) {
            return lstrcpynW(text, (row.start + file).c_str(), size), (row.start + file).size();
        });
        const ImportHook<HOOK(RegisterTypeLib)> addForMachine(engineModule(), add<L'm'>);
        const ImportHook<HOOK(UnRegisterTypeLib)> removeForMachine(engineModule(), remove<L'm'>);
        notes.clear();
        EXPECT_EQ(noted, callServer(true));
        EXPECT_EQ(row.userParts, partsIn(HKEY_CURRENT_USER));
        EXPECT_EQ(noted, callServer(false));
        EXPECT_EQ(Lines{}, changes(user_, below(HKEY_CURRENT_USER, L"Software")));
        EXPECT_EQ(4 + row.userParts, partsIn(HKEY_LOCAL_MACHINE));
        const std::wstring added = row.whose + L" + " + row.start + file + L"\\1 " + row.start;
        EXPECT_EQ((std::vector{added, row.whose + L" -"}), notes);
    }
}

// The engine's DLL loaded once more, from a copy of its file: a module with a life of its own. Each has a new
// name, by which the platform knows its type library.
struct ModuleCopy {
    inline static int count = 0;
    const std::string path = "C:\\talxrend-" + std::to_string(++count) + ".dll";
    const HMODULE module =
        CopyFileA(TALXREND_PATH, path.c_str(), FALSE) ? LoadLibraryA(path.c_str()) : nullptr;
    ~ModuleCopy() {
        EXPECT_EQ(S_OK, call("DllCanUnloadNow", module));
        FreeLibrary(module);
        EXPECT_EQ(nullptr, GetModuleHandleA(path.c_str()));
        DeleteFileA(path.c_str());
    }
};

TEST(ServerModule, ThreadsAskingAtOnceGetTheSameClassObject) {
    const ModuleCopy copy;
    const CLSID& clsid = serverClasses[0].clsid;
    ComPtr<IClassFactory> mine, others;
    bool outOfMemory = true, asked = false;
    ImportHook<"malloc", void*(std::size_t)> allocate(copy.module, [&](std::size_t size) {
        return std::exchange(outOfMemory, false) ? nullptr : allocate.original(size);
    });
    EXPECT_EQ(E_OUTOFMEMORY, classObject(copy.module, clsid, IID_PPV_ARGS(&mine)));
    EXPECT_EQ(nullptr, mine.Get());
    // This thread has found no class object yet, and another one makes it meanwhile.
    ImportHook<HOOK(EnterCriticalSection)> enter(copy.module, [&](CRITICAL_SECTION* section) {
        if (!std::exchange(asked, true)) {
            std::thread([&] { classObject(copy.module, clsid, IID_PPV_ARGS(&others)); }).join();
        }
        enter.original(section);
    });
    EXPECT_EQ(S_OK, classObject(copy.module, clsid, IID_PPV_ARGS(&mine)));
    EXPECT_TRUE(asked && mine) << "the class object is made without the lock";
    EXPECT_EQ(others.Get(), mine.Get());
    mine.Reset();
    EXPECT_EQ(S_FALSE, call("DllCanUnloadNow", copy.module)) << "a class object in use keeps the module";
}

// The blocks in use in all heaps of the process.
int blocksInUse() {
    HANDLE heaps[64];
    int blocks = 0;
    for (DWORD i = 0, count = GetProcessHeaps(64, heaps); i < count; ++i) {
        for (PROCESS_HEAP_ENTRY entry{}; HeapWalk(heaps[i], &entry);) {
            blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        }
    }
    return blocks;
}

TEST(ServerModule, KeepsWhatItCachesUntilItIsUnloaded) {
    constexpr int lives = 40, firstLives = 10; // in which the platform takes what it keeps
    int before = 0;
    for (int i = 0; i < firstLives + lives; ++i) {
        before = i == firstLives ? blocksInUse() : before;
        const ModuleCopy copy;
        const auto object = createObject<IProvideClassInfo2>(copy.module, serverClasses[1].clsid);
        int loads = 0;
        ImportHook<HOOK(LoadTypeLibEx)> load(copy.module, [&](auto... args) {
            return ++loads == 2 ? load.original(args...) : TYPE_E_CANTLOADLIBRARY;
        });
        for (const HRESULT hr : {TYPE_E_CANTLOADLIBRARY, S_OK, S_OK}) {
            ComPtr<ITypeInfo> type;
            EXPECT_EQ(hr, object->GetClassInfo(&type));
            EXPECT_EQ(hr == S_OK, type.Get() != nullptr);
        }
    }
    EXPECT_LT(blocksInUse() - before, lives / 2);
}

} // namespace
} // namespace talx::test
