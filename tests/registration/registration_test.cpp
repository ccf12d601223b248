// What registering and removing the DLLs does to the registry, step by step and for one user only. Every test
// finds both registered for the machine and must leave them so.
#include <initguid.h> // defines the ids of the type libraries

#include "tests/com/server_class.h"
#include "tests/support/import_hook.h"

#include <map>
#include <set>
#include <thread>

namespace talx::test {
namespace {

using Lines = std::set<std::wstring>;

// Adds a line for a key of the machine's classes and for each below it: "path@name=text@name=text". Not for
// what the platform adds to a type library for its dispatch interfaces and for 32-bit programs.
void list(const std::wstring& path, Lines& lines) {
    if (path == L"\\Interface" || path == L"\\Wow6432Node") {
        return;
    }
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, (L"Software\\Classes" + path).c_str(), 0, KEY_READ, &key);
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
        list(path + L"\\" + text, lines);
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
    list(L"", lines);
    return lines;
}

std::wstring text(const GUID& guid) {
    wchar_t text[40];
    return {text, text + StringFromGUID2(guid, text, 40) - 1};
}

// What registering a module writes that serves the classes of one of the DLLs.
Lines keysOf(const std::wstring& path, HMODULE dll) {
    const bool engines = dll == engineModule();
    const std::wstring library = text(engines ? LIBID_RENDERENGLib : LIBID_talxstd),
                       key = L"\\Typelib\\" + library, version = key + L"\\1.0"; // the platform's spelling
    Lines lines{key,
                version + L"\\0",
                version + L"\\FLAGS@=8",
                version + L"\\0\\win64@=" + path + L"\\1",
                version + L"\\HELPDIR@=" + path.substr(0, path.rfind(L'\\') + 1),
                version + L"@=Hemlar " + (engines ? L"Render Engine Type Library" : L"Standard Image Types")};
    for (const ServerClass& row : serverClasses) {
        const std::wstring id = text(row.clsid), name = L"\\Hemlar." + row.name, key = L"\\CLSID\\" + id,
                           title = L"@=" + row.name + L" Class", model = engines ? L"Apartment" : L"Both";
        const Lines ofClass{name + title,
                            name + L"\\CLSID@=" + id,
                            name + L"\\CurVer@=" + row.progId(),
                            name + L".1" + title,
                            name + L".1\\CLSID@=" + id,
                            key + title,
                            key + L"\\ProgID@=" + row.progId(),
                            key + L"\\TypeLib@=" + library,
                            key + L"\\VersionIndependentProgID@=" + name.substr(1),
                            key + L"\\InprocServer32@=" + path + L"@ThreadingModel=" + model};
        row.module() == dll ? lines.insert(ofClass.begin(), ofClass.end()) : void();
    }
    return lines;
}

HRESULT callServer(bool registering, HMODULE module = engineModule()) {
    return call(registering ? "DllRegisterServer" : "DllUnregisterServer", module);
}

TEST(ServerRegistration, WritesAndRemovesExactlyItsKeysInAnyApartment) {
    const Lines registered = machineClasses();
    const ModuleCopy copy; // its path has apostrophes
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
            EXPECT_EQ(Lines{},
                      changes(keysOf(pathOf(module), of.module()), changes(before, machineClasses())));
            EXPECT_EQ(S_OK, callServer(false, module));
            EXPECT_TRUE(FAILED(callServer(false, module))) << "there is no type library to remove";
            APTTYPE type{};
            APTTYPEQUALIFIER qualifier{};
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
bool runtimeSaysUser;
HRESULT WINAPI askRuntime(bool* on) {
    return *on = runtimeSaysUser, S_OK;
}

TEST(ServerRegistration, IsForOneUserWhenTheRuntimeSaysSo) {
    for (const auto& [says, forUser, userParts, whose] :
         {std::tuple(false, true, 0, L"m"), {true, true, 3, L"u"}, {true, false, 3, L"m"}}) {
        EXPECT_EQ(S_OK, callServer(true));
        runtimeSaysUser = says;
        // Of the runtimes only the last one has anything to say.
        const ImportHook<HOOK(GetModuleHandleW)> runtime(engineModule(), [](LPCWSTR name) {
            return *name == L'a' && name != std::wstring(L"atl.dll") ? engineModule() : imageModule();
        });
        const std::map<std::string, void*> functions{
            {"AtlGetPerUserRegistration", reinterpret_cast<void*>(askRuntime)},
            {"RegisterTypeLibForUser", forUser ? reinterpret_cast<void*>(add<L'u'>) : nullptr},
            {"UnRegisterTypeLibForUser", forUser ? reinterpret_cast<void*>(remove<L'u'>) : nullptr}};
        const ImportHook<HOOK(GetProcAddress)> look(engineModule(), [&](HMODULE module, const char* name) {
            return module == engineModule() ? nullptr : reinterpret_cast<FARPROC>(functions.at(name));
        });
        const ImportHook<HOOK(RegisterTypeLib)> addForMachine(engineModule(), add<L'm'>);
        const ImportHook<HOOK(UnRegisterTypeLib)> removeForMachine(engineModule(), remove<L'm'>);
        const ImportHook<HOOK(GetModuleFileNameW)> file(engineModule(), [&](auto m, auto path, DWORD size) {
            return size < 999 ? size : file.original(m, path, size); // as if it were so long
        });
        notes.clear();
        EXPECT_EQ(noted, callServer(true));
        EXPECT_EQ(userParts, partsIn(HKEY_CURRENT_USER));
        EXPECT_EQ(noted, callServer(false));
        EXPECT_EQ(0, partsIn(HKEY_CURRENT_USER));
        EXPECT_EQ(4 + userParts, partsIn(HKEY_LOCAL_MACHINE));
        EXPECT_EQ(whose + (L"+" + pathOf(engineModule())) + L"\\1" + whose + L"-", notes);
    }
    EXPECT_EQ(S_OK, callServer(true));
    int asked = 0;
    const ImportHook<HOOK(CoCreateInstance)> make(engineModule(), [&](auto...) { return ++asked, E_FAIL; });
    EXPECT_EQ(E_FAIL, callServer(true));
    EXPECT_EQ(1, asked) << "it goes on after a failure";
}

} // namespace
} // namespace talx::test
