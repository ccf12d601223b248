// Walking the import table of a module that is loaded.
#include "tests/support/import_hook.h"

#include <cstring>

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

std::vector<Import> imports(HMODULE module) {
    std::vector<Import> all;
    for (const auto* dll = importDescriptors(module); dll->Name; ++dll) {
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

std::vector<void**> importEntries(HMODULE module, const std::string& function) {
    std::vector<void**> entries;
    for (const Import& import : imports(module)) {
        if (import.function == function) {
            entries.push_back(import.entry);
        }
    }
    return entries;
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

// What an entry leads to while its calls are watched.
struct ImportGate::Watched {
    const Before& before;
    const After& after;
    std::string function;
    void** entry;
    void* real;
};

namespace {

// A call that has been let through and has not returned.
struct Pending {
    const ImportGate::After& after;
    ImportedCall call;
    void* returnAddress;
};
thread_local std::vector<Pending> pending;
thread_local std::uintptr_t failure;

std::uintptr_t giveFailure() {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return failure;
}

} // namespace

extern "C" {

void talxGate();
void talxGateReturn();

// frame: the four registers of arguments, then the return address. Answers where the call goes.
void* talxGateEntered(ImportGate::Watched* watched, void** frame) {
    const DWORD lastError = GetLastError();
    ImportedCall call{watched->function, {frame[0], frame[1], frame[2], frame[3]}};
    if (const auto result = watched->before(call)) {
        failure = *result;
        return reinterpret_cast<void*>(&giveFailure);
    }
    if (watched->after) {
        pending.push_back({watched->after, call, frame[4]});
        frame[4] = reinterpret_cast<void*>(&talxGateReturn);
    }
    SetLastError(lastError);
    return watched->real;
}

void* talxGateReturned(std::uintptr_t result) {
    const DWORD lastError = GetLastError();
    const Pending done = pending.back();
    pending.pop_back();
    done.after(done.call, result);
    SetLastError(lastError);
    return done.returnAddress;
}

} // extern "C"

// The way of every watched call, with the address of its Watched in r11: the registers of arguments are kept,
// so that the call may have any.
asm(R"(
.text
.globl talxGate, talxGateReturn
talxGate:
    push %r9
    push %r8
    push %rdx
    push %rcx
    sub $0x68, %rsp
    movups %xmm0, 0x20(%rsp)
    movups %xmm1, 0x30(%rsp)
    movups %xmm2, 0x40(%rsp)
    movups %xmm3, 0x50(%rsp)
    mov %r11, %rcx
    lea 0x68(%rsp), %rdx
    call talxGateEntered
    movups 0x20(%rsp), %xmm0
    movups 0x30(%rsp), %xmm1
    movups 0x40(%rsp), %xmm2
    movups 0x50(%rsp), %xmm3
    add $0x68, %rsp
    pop %rcx
    pop %rdx
    pop %r8
    pop %r9
    jmp *%rax
talxGateReturn:
    push %rax
    sub $0x28, %rsp
    mov %rax, %rcx
    call talxGateReturned
    mov %rax, %rcx
    add $0x28, %rsp
    pop %rax
    jmp *%rcx
)");

ImportGate::ImportGate(const std::vector<Import>& entries, Before before, After after)
    : before_(std::move(before)), after_(std::move(after)) {
    constexpr std::size_t stubSize = 32;
    code_ = VirtualAlloc(nullptr, (entries.size() + 1) * stubSize, MEM_COMMIT | MEM_RESERVE,
                         PAGE_EXECUTE_READWRITE);
    auto* stub = static_cast<std::uint8_t*>(code_);
    for (const Import& import : entries) {
        watched_.push_back(
            std::make_unique<Watched>(before_, after_, import.function, import.entry, *import.entry));
        const void* const values[] = {watched_.back().get(), reinterpret_cast<void*>(&talxGate)};
        std::memcpy(stub, "\x49\xBB........\x49\xBA........\x41\xFF\xE2", 23); // mov r11, mov r10, jmp r10
        std::memcpy(stub + 2, &values[0], sizeof values[0]);
        std::memcpy(stub + 12, &values[1], sizeof values[1]);
        writeImport(import.entry, stub);
        stub += stubSize;
    }
}

ImportGate::~ImportGate() {
    for (const auto& watched : watched_) {
        writeImport(watched->entry, watched->real);
    }
    VirtualFree(code_, 0, MEM_RELEASE);
}

} // namespace talx::test
