// Walking the import table of a module that is loaded.
#include "tests/support/import_hook.h"

namespace talx::test {

namespace {

template <class T>
T* at(HMODULE module, std::size_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* importDescriptors(HMODULE module) {
    const auto* headers = at<IMAGE_NT_HEADERS>(module, at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    return at<IMAGE_IMPORT_DESCRIPTOR>(
        module, headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

} // namespace

std::vector<void**> importEntries(HMODULE module, const std::string& function) {
    std::vector<void**> entries;
    for (const auto* dll = importDescriptors(module); dll->Name; ++dll) {
        const auto* names = at<IMAGE_THUNK_DATA>(module, dll->OriginalFirstThunk);
        auto* addresses = at<void*>(module, dll->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++addresses) {
            if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
                function == at<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData)->Name) {
                entries.push_back(addresses);
            }
        }
    }
    return entries;
}

std::vector<std::string> importedModules(HMODULE module) {
    std::vector<std::string> names;
    for (const auto* dll = importDescriptors(module); dll->Name; ++dll) {
        names.emplace_back(at<const char>(module, dll->Name));
    }
    return names;
}

} // namespace talx::test
