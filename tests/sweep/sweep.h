// The failure sweep: an operation is run with its first call of the platform failing, then with the second,
// and so on until it runs through; each once, and each from there on; on the thread that made the objects,
// and on one that has never been inside the DLLs. After each round the result must be one that such a failure
// can have, nothing may be left behind, and the operation must succeed when it is run again.
#pragma once

#include "tests/support/error_info.h"
#include "tests/support/gdi_leaks.h"
#include "tests/sweep/failures.h"

#include <thread>

namespace talx::test {

struct Operation {
    std::wstring method;               // whose name error texts bear
    std::function<HRESULT()> call;     // the operation itself
    HRESULT result = S_OK;             // when nothing fails
    std::function<void()> before = {}; // what has to be done in each round first
    bool bare = false;                 // without error information
    bool always = false;               // the result, whatever fails
};

class Sweep {
public:
    // Without modules only what watch and fail are told of is made to fail.
    explicit Sweep(const std::vector<HMODULE>& modules = {}) {
        for (const HMODULE module : modules) {
            leaks_.push_back(std::make_unique<LeakCheck>(module, resources));
        }
        for (const HMODULE module : modules) {
            watch(imports(module));
        }
    }

    std::wstring source; // ProgID in the error information

    // Makes the calls through these entries fail too.
    void watch(std::vector<Import> entries) {
        std::erase_if(entries, [](const Import& import) { return isExempt(import.function); });
        gates_.push_back(std::make_unique<ImportGate>(
            entries, [this](const ImportedCall& call) { return fail(call.function); }));
    }
    void unwatch() { gates_.pop_back(); }

    // prepare: makes everything anew for a round; end: lets go of it. state: what the operation has come to.
    void run(const Operation& operation, const std::function<void()>& prepare,
             const std::function<void()>& end, const std::function<std::vector<std::uint8_t>()>& state) {
        SCOPED_TRACE(testing::PrintToString(operation.method));
        const auto ready = [&] {
            prepare();
            operation.before ? operation.before() : void();
            failed_.clear();
        };
        ready();
        const Ending clean = call(operation, false);
        const auto cleanState = state();
        EXPECT_EQ(operation.result, clean.result) << std::hex << clean.result;
        end();
        for (const int way : {0, 1, 2, 3}) {
            plan_.sweep(
                [&] {
                    const std::size_t live = this->live();
                    ready();
                    armed_ = true;
                    const Ending ending = call(operation, way & 1);
                    armed_ = false;
                    EXPECT_TRUE(isAllowed(operation, clean, ending))
                        << std::hex << ending.result << " " << testing::PrintToString(ending.info.description)
                        << " of " << testing::PrintToString(failed_);
                    if (FAILED(ending.result) && SUCCEEDED(clean.result)) {
                        EXPECT_EQ(clean.result, call(operation, false).result)
                            << testing::PrintToString(failed_);
                        EXPECT_TRUE(cleanState == state()) << testing::PrintToString(failed_);
                    }
                    end();
                    EXPECT_EQ(live, this->live()) << testing::PrintToString(failed_);
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
        for (const Failure& f : failures) {
            if (call.starts_with(f.call)) {
                return static_cast<DWORD>(f.value);
            }
        }
        EXPECT_TRUE(isHarmless(call)) << call;
        return 0;
    }

private:
    // How a call ended.
    struct Ending {
        HRESULT result = S_OK;
        ErrorInfo info{};
    };

    [[nodiscard]] std::size_t live() const {
        std::size_t all = 0;
        for (const auto& check : leaks_) {
            all += check->live();
        }
        return all;
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
        };
        const auto apartment = [&] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            body();
            CoUninitialize();
        };
        freshThread ? std::thread(apartment).join() : body();
        return ending;
    }

    [[nodiscard]] bool isAllowed(const Operation& operation, const Ending& clean,
                                 const Ending& ending) const {
        const auto& [result, info] = ending;
        const bool stale = info.description == L"stale";
        const auto canEnd = [&](const std::string& call, auto&& way) {
            return std::any_of(std::begin(failures), std::end(failures), [&](const Failure& f) {
                return call.starts_with(f.call) && operation.method.starts_with(f.in) && way(f);
            });
        };
        const auto succeeds = [&](const std::string& call) {
            return isHarmless(call) || canEnd(call, [](const Failure& f) { return f.result == S_OK; });
        };
        if (SUCCEEDED(result)) {
            return result == clean.result && (!info.present || stale) &&
                   (operation.always || std::all_of(failed_.begin(), failed_.end(), succeeds));
        }
        // Without memory there may be no information; only where it cannot even be taken away, a stale one.
        const bool silent = stale ? hasFailed("SetErrorInfo") : !info.present;
        const bool mayBeSilent = operation.bare || operation.method == L"ReleaseDrawContext" ||
                                 hasFailed("CreateErrorInfo") || hasFailed("SetErrorInfo") ||
                                 hasFailed("ProgIDFromCLSID");
        const auto tells = [&](const std::wstring& text) {
            const std::wstring told = info.description.substr(0, info.description.find_last_not_of(L' ') + 1);
            return told == text || (hasFailed("LoadStringW") && told == L"Unknown Error");
        };
        const auto explains = [&](const std::string& call) {
            return canEnd(call, [&](const Failure& f) {
                return f.result == result && (silent || tells(f.text.empty() ? operation.method : f.text));
            });
        };
        return (silent ? mayBeSilent || !clean.info.present : !operation.bare && info.source == source) &&
               ((result == clean.result && (silent || tells(clean.info.description))) ||
                std::any_of(failed_.begin(), failed_.end(), explains));
    }

    FailurePlan plan_;
    bool armed_ = false;
    DWORD thread_ = 0; // that is inside the operation
    std::vector<std::string> failed_;
    std::vector<std::unique_ptr<LeakCheck>> leaks_;
    std::vector<std::unique_ptr<ImportGate>> gates_;
};

} // namespace talx::test
