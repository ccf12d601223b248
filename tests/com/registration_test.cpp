// The registry as regsvr32 has left it.
#include <initguid.h> // defines the type library's id

#include "tests/com/server_class.h"

#include <windows.h>

#include <set>

namespace talx::test {
namespace {

using Lines = std::set<std::wstring>;

// A key of the class registry with everything below it, one line for each value: "path@value = text". A key
// without values is a line with its path alone.
void list(HKEY parent, const std::wstring& path, const std::wstring& name, Lines& lines) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        lines.insert(path + L" is missing");
        return;
    }
    wchar_t text[256], data[512];
    DWORD size = 256, dataSize = sizeof data, type = 0, i = 0;
    for (; RegEnumValueW(key, i, text, &size, nullptr, &type, reinterpret_cast<BYTE*>(data), &dataSize) ==
           ERROR_SUCCESS;
         ++i, size = 256, dataSize = sizeof data) {
        lines.insert(path + L"@" + text + L" = " + (type == REG_SZ ? data : L"(no text)"));
    }
    if (i == 0) {
        lines.insert(path);
    }
    for (i = 0, size = 256;
         RegEnumKeyExW(key, i, text, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, size = 256) {
        list(key, path + L"\\" + text, text, lines);
    }
    RegCloseKey(key);
}

Lines classKey(const std::wstring& path) {
    Lines lines;
    list(HKEY_CLASSES_ROOT, path, path, lines);
    return lines;
}

std::wstring guidText(const GUID& guid) {
    wchar_t text[40];
    StringFromGUID2(guid, text, 40);
    return text;
}

std::wstring modulePath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(engineModule(), path, MAX_PATH);
    return path;
}

class RegistrationTest : public testing::TestWithParam<ServerClass> {};

TEST_P(RegistrationTest, WritesTheKeysOfTheClass) {
    const std::wstring name = GetParam().name, id = guidText(GetParam().clsid),
                       description = name + L" Class";
    const std::wstring progId = L"Hemlar." + name, current = progId + L".1", classes = L"CLSID\\" + id;

    EXPECT_EQ((Lines{current + L"@ = " + description, current + L"\\CLSID@ = " + id}), classKey(current));
    EXPECT_EQ((Lines{progId + L"@ = " + description, progId + L"\\CLSID@ = " + id,
                     progId + L"\\CurVer@ = " + current}),
              classKey(progId));
    EXPECT_EQ((Lines{classes + L"@ = " + description, classes + L"\\ProgID@ = " + current,
                     classes + L"\\VersionIndependentProgID@ = " + progId,
                     classes + L"\\InprocServer32@ = " + modulePath(),
                     classes + L"\\InprocServer32@ThreadingModel = Apartment",
                     classes + L"\\TypeLib@ = " + guidText(LIBID_RENDERENGLib)}),
              classKey(classes));
}

INSTANTIATE_TEST_SUITE_P(Server, RegistrationTest, testing::ValuesIn(serverClasses), testNameOf);

TEST(Registration, WritesTheKeysOfTheTypeLibrary) {
    const std::wstring path = modulePath(), key = L"TypeLib\\" + guidText(LIBID_RENDERENGLib);
    const Lines lines = classKey(key);
    EXPECT_TRUE(lines.contains(key + L"\\1.0@ = Hemlar Render Engine Type Library"));
    EXPECT_TRUE(lines.contains(key + L"\\1.0\\0\\win64@ = " + path + L"\\1")) << "resource 1 of the module";
    EXPECT_TRUE(lines.contains(key + L"\\1.0\\HELPDIR@ = " + path.substr(0, path.find_last_of(L"\\/:") + 1)));
}

} // namespace
} // namespace talx::test
