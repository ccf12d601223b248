// What registering and removing the DLLs does to the registry, step by step and for one user only. Every test
// finds both registered for the machine and must leave them so.
#include <initguid.h> // defines the ids of the type libraries

#include "tests/com/server_class.h"
#include "tests/support/import_hook.h"

#include <set>
#include <thread>

namespace talx::test {
namespace {

using Lines = std::set<std::wstring>;

// Adds a line for a key and for each below it: "path@name=text@name=text".
void list(HKEY parent, const std::wstring& name, const std::wstring& path, Lines& lines) {
    HKEY key = nullptr;
    RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key);
    static wchar_t text[16384], data[1 << 16];
    std::wstring line = path;
    DWORD type = 0, length = std::size(text), size = sizeof data;
    for (DWORD i = 0;
         RegEnumValueW(key, i, text, &length, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) == 0;
         ++i, length = std::size(text), size = sizeof data) {
        line.append(L"@").append(text).append(L"=").append(data, size / sizeof *data - (type == REG_SZ));
    }
    lines.insert(line);
    for (DWORD i = 0; RegEnumKeyW(key, i, text, std::size(text)) == ERROR_SUCCESS; ++i) {
        list(key, std::wstring(text), path + L"\\" + text, lines);
    }
    RegCloseKey(key);
}

// The lines that only one of two states has.
Lines changes(const Lines& before, const Lines& after) {
    Lines lines;
    std::ranges::set_symmetric_difference(before, after, std::inserter(lines, lines.end()));
    return lines;
}

Lines machineClasses() {
    Lines lines;
    list(HKEY_LOCAL_MACHINE, L"Software\\Classes", L"", lines);
    // What the platform adds to a type library for its dispatch interfaces and for 32-bit programs.
    std::erase_if(lines, [](const std::wstring& line) {
        return line.starts_with(L"\\Interface\\") || line.starts_with(L"\\Wow6432Node\\");
    });
    return lines;
}

std::wstring text(const GUID& guid) {
    wchar_t text[40];
    return {text, text + StringFromGUID2(guid, text, 40) - 1};
}

// What registering a module writes that serves the classes of one of the DLLs.
Lines keysOf(HMODULE module, HMODULE dll) {
    const bool engines = dll == engineModule();
    const std::wstring path = pathOf(module), library = text(engines ? LIBID_RENDERENGLib : LIBID_talxstd),
                       key = L"\\Typelib\\" + library, version = key + L"\\1.0", // the platform's spelling
        title = engines ? L"Hemlar Render Engine Type Library" : L"Hemlar Standard Image Types";
    Lines lines{key,
                version + L"@=" + title,
                version + L"\\0",
                version + L"\\0\\win64@=" + path + L"\\1",
                version + L"\\FLAGS@=8",
                version + L"\\HELPDIR@=" + path.substr(0, path.rfind(L'\\') + 1)};
    for (const ServerClass& row : serverClasses) {
        const std::wstring id = text(row.clsid), name = L"\\Hemlar." + row.name,
                           title = L"@=" + row.name + L" Class", key = L"\\CLSID\\" + id;
        if (row.module() == dll) {
            lines.merge(Lines{
                name + L".1" + title, name + L".1\\CLSID@=" + id, name + title, name + L"\\CLSID@=" + id,
                name + L"\\CurVer@=" + row.progId(), key + title, key + L"\\ProgID@=" + row.progId(),
                key + L"\\VersionIndependentProgID@=" + name.substr(1), key + L"\\TypeLib@=" + library,
                key + L"\\InprocServer32@=" + path + L"@ThreadingModel=" +
                    (engines ? L"Apartment" : L"Both")});
        }
    }
    return lines;
}

HRESULT callServer(bool registering, HMODULE module = engineModule()) {
    return call(registering ? "DllRegisterServer" : "DllUnregisterServer", module);
}

TEST(ServerRegistration, WritesAndRemovesExactlyItsKeysInAnyApartment) {
    const Lines registered = machineClasses();
    const ModuleCopy copy(L"C:\\it's 'here'");
    EXPECT_EQ(S_OK, callServer(false));
    EXPECT_EQ(S_OK, callServer(false, imageModule()));
    const Lines before = machineClasses();
    for (const auto& [module, row, apartment] : {std::tuple(copy.module, 0, CO_E_NOTINITIALIZED),
                                                 {engineModule(), 1, S_OK},
                                                 {imageModule(), 5, CO_E_NOTINITIALIZED}}) {
        std::thread([&, module = module, &of = serverClasses[row], apartment = apartment] {
            EXPECT_TRUE(apartment != S_OK || CoInitializeEx(nullptr, COINIT_MULTITHREADED) == S_OK);
            EXPECT_EQ(S_OK, callServer(true, module));
            const std::wstring stale = L"CLSID\\" + text(of.clsid) + L"\\Stale";
            EXPECT_EQ(0, RegSetValueW(HKEY_CLASSES_ROOT, stale.c_str(), REG_SZ, L"", 0));
            EXPECT_EQ(S_OK, callServer(true, module)) << "over itself";
            EXPECT_EQ(Lines{}, changes(keysOf(module, of.module()), changes(before, machineClasses())));
            EXPECT_EQ(S_OK, callServer(false, module));
            EXPECT_TRUE(FAILED(callServer(false, module))) << "there is no type library to remove";
            APTTYPE type;
            APTTYPEQUALIFIER qualifier;
            EXPECT_EQ(apartment, CoGetApartmentType(&type, &qualifier)) << "the thread is as it was";
            CoUninitialize();
        }).join();
    }
    EXPECT_EQ(Lines{}, changes(before, machineClasses()));
    EXPECT_EQ(S_OK, callServer(true, imageModule()));
    EXPECT_EQ(S_OK, callServer(true));
    EXPECT_EQ(Lines{}, changes(registered, machineClasses()));
}

// The sum of 1 and 2 for the engines' classes and 4 for their type library, where they are registered.
int partsIn(HKEY root) {
    const auto has = [&](const std::wstring& key) {
        return RegQueryValueW(root, (L"Software\\Classes\\" + key).c_str(), nullptr, nullptr) ==
               ERROR_SUCCESS;
    };
    return has(L"CLSID\\" + text(serverClasses[0].clsid)) +
           2 * has(L"CLSID\\" + text(serverClasses[1].clsid)) +
           4 * has(L"TypeLib\\" + text(LIBID_RENDERENGLib) + L"\\1.0");
}

TEST(ServerRegistration, AFailingStepIsReturnedAndWhatWasDoneStays) {
    constexpr HRESULT noCom = E_UNEXPECTED, noRegistrar = E_ACCESSDENIED, noLibrary = TYPE_E_CANTLOADLIBRARY,
                      noScript = HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY),
                      notWritten = TYPE_E_REGISTRYACCESS;
    for (const bool registering : {false, true}) {
        FailurePlan plan;
        std::vector<std::pair<HRESULT, int>> results; // with the parts that are registered afterwards
        plan.sweep([&] {
            callServer(!registering);
            const FailingImport<HOOK(CoInitializeEx)> initialize(engineModule(), plan, noCom);
            const FailingImport<HOOK(CoCreateInstance)> create(engineModule(), plan, noRegistrar);
            const FailingImport<HOOK(FindResourceW)> find(GetModuleHandleW(L"atl.dll"), plan);
            const FailingImport<HOOK(LoadTypeLibEx)> load(engineModule(), plan, noLibrary);
            const FailingImport<HOOK(RegisterTypeLib)> add(engineModule(), plan, notWritten);
            const FailingImport<HOOK(UnRegisterTypeLib)> remove(engineModule(), plan, notWritten);
            const HRESULT hr = callServer(registering);
            results.emplace_back(hr,
                                 registering ? partsIn(HKEY_LOCAL_MACHINE) : 7 - partsIn(HKEY_LOCAL_MACHINE));
        });
        EXPECT_EQ((decltype(results){{noCom, 0},
                                     {noRegistrar, 0},
                                     {noScript, 0},
                                     {noRegistrar, 1},
                                     {noScript, 1},
                                     {noLibrary, 3},
                                     {notWritten, 3},
                                     {S_OK, 7}}),
                  results);
    }
}

// Functions that only note for whom they should register the type library: the machine ("m") or a user ("u").
std::wstring notes;
constexpr HRESULT noted = 0x00041234; // a success that no other function answers

template <wchar_t whose>
HRESULT WINAPI add(ITypeLib*, OLECHAR* path, OLECHAR*) {
    return notes.append({whose, L'+'}).append(path), noted;
}
template <wchar_t whose>
HRESULT WINAPI remove(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND kind) {
    EXPECT_TRUE(id == LIBID_RENDERENGLib && major == 1 && minor == 0 && locale == 0 && kind == SYS_WIN64);
    return notes.append({whose, L'-'}), noted;
}
// What an ATL run-time answers to the question whether to register for the user.
template <bool perUser, HRESULT hr = S_OK>
HRESULT WINAPI answers(bool* on) {
    return *on = perUser, hr;
}

TEST(ServerRegistration, IsForOneUserWhenTheRuntimeSaysSo) {
    const struct {
        HMODULE runtime;
        HRESULT(WINAPI* answer)(bool*);
        bool functionsForUser;
        int userParts;      // what comes of it: the parts registered for the user,
        std::wstring whose; // and whose the type library is
    } rows[] = {
        {nullptr, answers<true>, true, 0, L"m"},        {imageModule(), nullptr, true, 0, L"m"},
        {imageModule(), answers<false>, true, 0, L"m"}, {imageModule(), answers<true, E_FAIL>, true, 0, L"m"},
        {imageModule(), answers<true>, true, 3, L"u"},  {imageModule(), answers<true>, false, 3, L"m"}};
    for (const auto& row : rows) {
        EXPECT_EQ(S_OK, callServer(true));
        ImportHook<HOOK(GetModuleHandleW)> find(engineModule(), [&](const wchar_t* name) {
            return _wcsnicmp(name, L"atl", 3) == 0 ? row.runtime : find.original(name);
        });
        const ImportHook<HOOK(GetProcAddress)> look(engineModule(), [&](HMODULE, const std::string& name) {
            return reinterpret_cast<FARPROC>(name == "AtlGetPerUserRegistration"
                                                 ? reinterpret_cast<void*>(row.answer)
                                             : row.functionsForUser && name == "RegisterTypeLibForUser"
                                                 ? reinterpret_cast<void*>(add<L'u'>)
                                             : row.functionsForUser && name == "UnRegisterTypeLibForUser"
                                                 ? reinterpret_cast<void*>(remove<L'u'>)
                                                 : nullptr);
        });
        const ImportHook<HOOK(RegisterTypeLib)> addForMachine(engineModule(), add<L'm'>);
        const ImportHook<HOOK(UnRegisterTypeLib)> removeForMachine(engineModule(), remove<L'm'>);
        notes.clear();
        EXPECT_EQ(noted, callServer(true));
        EXPECT_EQ(row.userParts, partsIn(HKEY_CURRENT_USER));
        EXPECT_EQ(noted, callServer(false));
        EXPECT_EQ(0, partsIn(HKEY_CURRENT_USER));
        EXPECT_EQ(4 + row.userParts, partsIn(HKEY_LOCAL_MACHINE));
        EXPECT_EQ(row.whose + L"+" + pathOf(engineModule()) + L"\\1" + row.whose + L"-", notes);
    }
    EXPECT_EQ(S_OK, callServer(true));
}

} // namespace
} // namespace talx::test
