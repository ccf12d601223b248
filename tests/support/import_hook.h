// Making the platform behave as a test wants, without a seam in the product: a loaded DLL calls every
// platform function through its import table, and a hook replaces one entry there for the length of a scope.
//
//     ImportHook<HOOK(GetDC)> hook(engineModule(), [&](HWND window) { ++calls; return hook.original(window);
//     });
//
// An ImportGate sees the calls of any functions, whatever their arguments. A FailurePlan says which call is
// to fail: the first, the second, ... in turn.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace talx::test {

// One entry of a module's import table. A function without a name has its number for one.
struct Import {
    std::string library, function;
    void** entry;
};
std::vector<Import> imports(HMODULE module);
void writeImport(void** entry, void* function);

// The names of the DLLs that a module imports from.
std::vector<std::string> importedModules(HMODULE module);

template <std::size_t size>
struct FunctionName {
    consteval FunctionName(const char (&name)[size]) { std::copy_n(name, size, text); }
    char text[size]{};
};

#define HOOK(function) #function, decltype(function)

template <FunctionName name, class Function>
class ImportHook;

// Hooks of one function may be nested; original() then calls the outer one. All must be on the same module.
template <FunctionName name, class Result, class... Args>
class ImportHook<name, Result(Args...)> {
public:
    ImportHook(HMODULE module, std::function<Result(Args...)> replacement)
        : replacement_(std::move(replacement)), outer_(innermost_), entries_(imports(module)) {
        std::erase_if(entries_, [](const Import& import) { return import.function != name.text; });
        EXPECT_FALSE(entries_.empty()) << name.text << " is not imported";
        innermost_ = this;
        for (const Import& import : entries_) { // one for each DLL that it may come from
            real_ = *import.entry;
            writeImport(import.entry, reinterpret_cast<void*>(&enter));
        }
    }
    ~ImportHook() {
        innermost_ = outer_;
        for (const Import& import : entries_) {
            writeImport(import.entry, real_);
        }
    }
    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    Result original(Args... args) const {
        return outer_ ? outer_->replacement_(args...) : reinterpret_cast<Result (*)(Args...)>(real_)(args...);
    }

private:
    static Result WINAPI enter(Args... args) { return innermost_->replacement_(args...); }

    inline static ImportHook* innermost_ = nullptr;

    std::function<Result(Args...)> replacement_;
    ImportHook* outer_;
    std::vector<Import> entries_;
    void* real_ = nullptr;
};

// A call that a module makes through its import table.
struct ImportedCall {
    const std::string& function;
    std::array<void*, 13> arguments; // and what lies behind those that it has
};

// Sees the calls of functions of any kind. Gates and hooks of one module may be nested.
class ImportGate {
public:
    // Answers what the call returns instead of being made, or nothing.
    using Before = std::function<std::optional<std::uintptr_t>(const ImportedCall&)>;
    // Is told the result of a call that was made.
    using After = std::function<void(const ImportedCall&, std::uintptr_t)>;

    // The entries may also be those of a table of virtual functions. after may be empty.
    ImportGate(const std::vector<Import>& entries, Before before, After after = {});
    ~ImportGate();
    ImportGate(const ImportGate&) = delete;
    ImportGate& operator=(const ImportGate&) = delete;

    const Before before;
    const After after;
};

// Decides which call fails, counting those that it is asked about. Without a sweep none does.
class FailurePlan {
public:
    enum class Mode { once, fromThenOn };

    // Calls round() with the first call failing, then with the second, and so on until a round runs through
    // without meeting a failure, which is the last one. Returns the number of rounds that met one.
    template <class Round>
    int sweep(Round&& round, Mode mode = Mode::once) {
        mode_ = mode;
        for (failing_ = 1; failing_ < 10000; ++failing_) {
            calls_ = 0;
            round();
            if (!met()) {
                break;
            }
        }
        EXPECT_FALSE(met()) << "the operation never runs through";
        return std::exchange(failing_, 0) - 1;
    }

    // Whether the failure of this round has happened.
    [[nodiscard]] bool met() const { return failing_ > 0 && calls_ >= failing_; }

    bool nextCallFails() {
        ++calls_;
        return mode_ == Mode::once ? calls_ == failing_ : met();
    }

private:
    Mode mode_ = Mode::once;
    int calls_ = 0;
    int failing_ = 0; // 0: none
};

} // namespace talx::test
