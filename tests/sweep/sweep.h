// The failure sweep: an operation is run with its first call of the platform failing, then with the second,
// and so on until it runs through; each once, and each from there on; on the thread that made the objects,
// and on a thread that has never been inside the DLLs. After each round the result must be one that such a
// failure can have, nothing may be left behind, and the operation must succeed when it is run again.
#pragma once

#include "tests/support/error_info.h"
#include "tests/support/gdi_leaks.h"
#include "tests/sweep/failures.h"

#include <thread>

namespace talx::test {

// Everything that is got in pairs.
constexpr MakerAndTaker resources[] = {{"CreateCompatibleDC", "DeleteDC", 0},
                                       {"CreateCompatibleBitmap", "DeleteObject", 0},
                                       {"CreateDIBSection", "DeleteObject", 0},
                                       {"CreatePalette", "DeleteObject", 0},
                                       {"CreateSolidBrush", "DeleteObject", 0},
                                       {"GetDC", "ReleaseDC", 1},
                                       {"LoadLibraryExW", "FreeLibrary", 0},
                                       {"SafeArrayCreateVector", "SafeArrayDestroy", 0},
                                       {"SysAllocStringLen", "SysFreeString", 0},
                                       {"HeapAlloc", "HeapFree", 2},
                                       {"malloc", "free", 0},
                                       {"calloc", "free", 0}};

// How a call ended.
struct Ending {
    HRESULT result = S_OK;
    ErrorInfo info{};
};

struct Operation {
    const wchar_t* method;         // whose name error texts bear
    std::function<HRESULT()> call; // the operation itself
    HRESULT result = S_OK;         // when nothing fails
    bool bare = false;             // without error information
    bool always = false;           // the result, whatever fails
};

class Sweep {
public:
    // Without modules calls are made to fail by watch and fail only.
    explicit Sweep(const std::vector<HMODULE>& modules = {}) {
        for (const HMODULE module : modules) {
            leaks_.push_back(std::make_unique<LeakCheck>(module, resources));
        }
        for (const HMODULE module : modules) {
            watch(imports(module));
        }
    }

    // Makes the calls through these entries fail too.
    void watch(std::vector<Import> entries) {
        std::erase_if(entries, [](const Import& import) {
            for (const Exempt& e : exempt) {
                if (std::string(e.functions).find(" " + import.function + " ") != std::string::npos) {
                    return true;
                }
            }
            return false;
        });
        gates_.push_back(std::make_unique<ImportGate>(
            entries, [this](const ImportedCall& call) { return fail(call.function); }));
    }
    void unwatch() { gates_.pop_back(); }

    std::wstring source; // ProgID in the error information

    // prepare: makes everything anew for a round; end: lets go of it. state: what the operation has come to.
    void run(
        const Operation& operation, const std::function<void()>& prepare, const std::function<void()>& end,
        const std::function<std::vector<std::uint8_t>()>& state = [] {
            return std::vector<std::uint8_t>();
        }) {
        SCOPED_TRACE(testing::Message() << operation.method);
        prepare();
        const Ending clean = call(operation, false);
        const auto cleanState = state();
        EXPECT_EQ(operation.result, clean.result) << std::hex << clean.result;
        end();
        for (const int way : {0, 1, 2, 3}) {
            plan_.sweep(
                [&] {
                    const std::size_t live = this->live();
                    prepare();
                    failed_.clear();
                    armed_ = true;
                    const Ending ending = call(operation, way & 1);
                    armed_ = false;
                    expectAllowed(operation, clean, ending);
                    if (FAILED(ending.result) && SUCCEEDED(clean.result)) {
                        const Ending again = call(operation, false);
                        EXPECT_EQ(clean.result, again.result) << "the next time, after " << rounds();
                        EXPECT_TRUE(cleanState == state()) << "has become something else after " << rounds();
                    }
                    end();
                    EXPECT_EQ(live, this->live()) << "something is left after " << rounds();
                },
                way & 2 ? FailurePlan::Mode::fromThenOn : FailurePlan::Mode::once);
        }
    }

    // Whether the call now made is to fail, and with what.
    std::optional<std::uintptr_t> fail(const std::string& call) {
        if (!armed_ || GetCurrentThreadId() != thread_ || !plan_.nextCallFails()) {
            return std::nullopt;
        }
        failed_.push_back(call);
        const auto found = std::find_if(std::begin(failures), std::end(failures),
                                        [&](const Failure& f) { return call.starts_with(f.call); });
        EXPECT_NE(std::end(failures), found) << "unknown: " << call;
        return found == std::end(failures) ? 0 : found->value;
    }

private:
    [[nodiscard]] std::size_t live() const {
        std::size_t all = 0;
        for (const auto& check : leaks_) {
            all += check->live();
        }
        return all;
    }
    [[nodiscard]] std::string rounds() const {
        std::string text;
        for (const std::string& call : failed_) {
            text += call + " ";
        }
        return text;
    }

    [[nodiscard]] bool hasFailed(const char* call) const {
        return std::find(failed_.begin(), failed_.end(), call) != failed_.end();
    }

    // Runs it where an earlier failure has left error information.
    Ending call(const Operation& operation, bool freshThread) {
        Ending ending;
        const auto body = [&] {
            ComPtr<ICreateErrorInfo> stale;
            ComPtr<IErrorInfo> info;
            CreateErrorInfo(&stale);
            stale->SetDescription(const_cast<wchar_t*>(L"stale"));
            stale.As(&info);
            SetErrorInfo(0, info.Get());
            thread_ = GetCurrentThreadId();
            ending.result = operation.call();
            thread_ = 0;
            ending.info = takeErrorInfo();
            if (hasFailed("SetErrorInfo") && ending.info.description == L"stale") {
                ending.info = {};
            }
        };
        if (freshThread) {
            std::thread([&] {
                CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
                body();
                CoUninitialize();
            }).join();
        } else {
            body();
        }
        return ending;
    }

    void expectAllowed(const Operation& operation, const Ending& clean, const Ending& ending) const {
        const bool lost =
            hasFailed("CreateErrorInfo") || hasFailed("ProgIDFromCLSID") || hasFailed("SetErrorInfo");
        const auto waysOf = [&](const std::string& call, auto&& way) {
            return std::any_of(std::begin(failures), std::end(failures), [&](const Failure& f) {
                return call.starts_with(f.call) && std::wstring(operation.method).starts_with(f.in) && way(f);
            });
        };
        const auto tells = [&](std::wstring text) {
            const std::wstring told = ending.info.description.substr(
                0, ending.info.description.find_last_not_of(L' ') + 1); // a detail that there is none of
            return ending.info.present
                       ? !operation.bare &&
                             (told == text || (hasFailed("LoadStringW") && told == L"Unknown Error"))
                       : lost || operation.bare || text.empty();
        };
        bool allowed = false;
        if (SUCCEEDED(ending.result)) {
            allowed = ending.result == clean.result &&
                      (!ending.info.present || ending.info.description == L"stale") &&
                      (operation.always || std::all_of(failed_.begin(), failed_.end(), [&](const auto& call) {
                           return waysOf(call, [](const Failure& f) { return f.result == S_OK; });
                       }));
        } else {
            allowed = (ending.result == clean.result && tells(clean.info.description)) ||
                      std::any_of(failed_.begin(), failed_.end(), [&](const auto& call) {
                          return waysOf(call, [&](const Failure& f) {
                              return f.result == ending.result && tells(f.text ? f.text : operation.method);
                          });
                      });
            EXPECT_TRUE(!ending.info.present || operation.bare || ending.info.source == source)
                << testing::PrintToString(ending.info.source);
        }
        EXPECT_TRUE(allowed) << std::hex << ending.result << " \""
                             << std::string(ending.info.description.begin(), ending.info.description.end())
                             << "\" of " << rounds();
    }

    FailurePlan plan_;
    bool armed_ = false;
    DWORD thread_ = 0; // that is inside the operation
    std::vector<std::string> failed_;
    std::vector<std::unique_ptr<LeakCheck>> leaks_;
    std::vector<std::unique_ptr<ImportGate>> gates_;
};

} // namespace talx::test
