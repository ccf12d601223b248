// Walking the import table of a module that is loaded.
#include "tests/support/import_hook.h"

#include <utility>

namespace talx::test {

namespace {

template <class T>
T* at(HMODULE module, std::size_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

} // namespace

std::vector<Import> imports(HMODULE module) {
    std::vector<Import> all;
    const auto* headers = at<IMAGE_NT_HEADERS>(module, at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* dll = at<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress); dll->Name; ++dll) {
        const auto* names = at<IMAGE_THUNK_DATA>(module, dll->OriginalFirstThunk);
        auto* addresses = at<void*>(module, dll->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++addresses) {
            all.push_back({at<const char>(module, dll->Name),
                           IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)
                               ? std::to_string(IMAGE_ORDINAL(names->u1.Ordinal))
                               : at<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData)->Name,
                           addresses});
        }
    }
    return all;
}

std::vector<std::string> importedModules(HMODULE module) {
    std::vector<std::string> names;
    for (const Import& import : imports(module)) {
        names.push_back(import.library);
    }
    return names;
}

void writeImport(void** entry, void* function) {
    DWORD protection = 0;
    VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection);
    *entry = function;
    VirtualProtect(entry, sizeof *entry, protection, &protection);
}

namespace {

// An entry whose calls are watched.
struct Watched {
    const ImportGate* gate = nullptr; // null: free
    Import import{};
    void* real = nullptr;
};
std::array<Watched, 512> watched;

// A function in place of each of them. No function that is called through an import table has more than 13
// arguments, and all are numbers and pointers: passing on that many does no harm to one that has fewer.
template <std::size_t n, class... Arguments>
std::uintptr_t enter(Arguments... arguments) {
    const auto& [gate, import, real] = watched[n];
    const DWORD earlierError = GetLastError();
    const ImportedCall call{import.function, {arguments...}};
    if (const auto failure = gate->before(call)) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return *failure;
    }
    SetLastError(earlierError);
    const auto made = reinterpret_cast<decltype(&enter<n, Arguments...>)>(real)(arguments...);
    const DWORD lastError = GetLastError();
    gate->after ? gate->after(call, made) : void();
    SetLastError(lastError);
    return made;
}
template <std::size_t>
using Argument = void*;
template <std::size_t... n, std::size_t... argument>
void* function(std::size_t which, std::index_sequence<n...>, std::index_sequence<argument...>) {
    static void* const all[] = {reinterpret_cast<void*>(&enter<n, Argument<argument>...>)...};
    return all[which];
}

} // namespace

ImportGate::ImportGate(const std::vector<Import>& entries, Before before, After after)
    : before(std::move(before)), after(std::move(after)) {
    for (const Import& import : entries) {
        const std::size_t n = std::ranges::find(watched, nullptr, &Watched::gate) - watched.begin();
        watched.at(n) = {this, import, *import.entry};
        writeImport(import.entry,
                    function(n, std::make_index_sequence<watched.size()>(), std::make_index_sequence<13>()));
    }
}

ImportGate::~ImportGate() {
    for (Watched& one : watched) {
        if (one.gate == this) {
            writeImport(one.import.entry, one.real);
            one = {};
        }
    }
}

} // namespace talx::test
