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
    std::function<HRESULT()> call;     // the operation itself
    std::wstring method;               // whose name error texts bear
    std::function<void()> before = {}; // what has to be done in each round first
    HRESULT result = S_OK;             // when nothing fails
};

class Sweep {
public:
    // Without a module only what watch and fail are told of is made to fail.
    explicit Sweep(HMODULE module = nullptr) {
        if (module) {
            leaks_.emplace(module, resources);
            watch(imports(module));
        }
    }

    std::wstring source; // ProgID in the error information; none: there is no information
    std::function<void()> prepare = [] {}, end = [] {
    };                                                 // makes everything anew for a round; lets go of it
    std::function<std::vector<std::uint32_t>()> state; // what an operation has come to, or nothing

    // Makes the calls through these entries fail too.
    void watch(std::vector<Import> entries) {
        std::erase_if(entries, [](const Import& import) { return isExempt(import.function); });
        gates_.push_back(std::make_unique<ImportGate>(
            entries, [this](const ImportedCall& call) { return fail(call.function); }));
    }
    void unwatch() { gates_.pop_back(); }

    void run(const Operation& operation) {
        SCOPED_TRACE(testing::PrintToString(operation.method));
        const auto ready = [&] {
            prepare();
            operation.before ? operation.before() : void();
            failed_.clear();
        };
        const auto reached = [&] {
            return state ? state() : std::vector<std::uint32_t>();
        };
        ready();
        const Ending clean = call(operation, false);
        const auto cleanState = reached();
        EXPECT_EQ(operation.result, clean.result) << std::hex << clean.result;
        end();
        for (const int way : {0, 1, 2, 3}) {
            const auto round = [&] {
                const std::size_t live = this->live();
                ready();
                armed_ = true;
                const Ending ending = call(operation, way & 1);
                armed_ = false;
                SCOPED_TRACE(testing::PrintToString(failed_));
                EXPECT_TRUE(isAllowed(operation, clean, ending))
                    << std::hex << ending.result << " " << testing::PrintToString(ending.info.description);
                if (FAILED(ending.result) && SUCCEEDED(clean.result)) {
                    EXPECT_EQ(clean.result, call(operation, false).result);
                    EXPECT_TRUE(cleanState == reached());
                }
                end();
                EXPECT_EQ(live, this->live());
            };
            plan_.sweep(round, way & 2 ? FailurePlan::Mode::fromThenOn : FailurePlan::Mode::once);
        }
    }

    // Whether the call now made is to fail, and with what.
    std::optional<std::uintptr_t> fail(const std::string& call) {
        if (!armed_ || GetCurrentThreadId() != thread_ || !plan_.nextCallFails()) {
            return std::nullopt;
        }
        failed_.push_back(call);
        for (const Failure& f : failures) {
            if (f.isOf(call)) {
                return static_cast<DWORD>(f.value);
            }
        }
        ADD_FAILURE() << "no row of failures has " << call;
        return 0;
    }

private:
    // How a call ended.
    struct Ending {
        HRESULT result = S_OK;
        ErrorInfo info{};
    };

    [[nodiscard]] std::size_t live() const { return leaks_ ? leaks_->live() : 0; }
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
        const HRESULT result = ending.result;
        const ErrorInfo& info = ending.info;
        const bool stale = info.description == L"stale";
        const auto canEnd = [&](const std::string& call, auto&& way) {
            return std::any_of(std::begin(failures), std::end(failures), [&](const Failure& f) {
                return f.isOf(call) && operation.method.starts_with(f.in) && way(f);
            });
        };
        const auto succeeds = [&](const std::string& call) {
            return canEnd(call, [](const Failure& f) { return f.result == S_OK; });
        };
        if (SUCCEEDED(result)) {
            return result == clean.result && (!info.present || stale) &&
                   std::all_of(failed_.begin(), failed_.end(), succeeds);
        }
        // Without memory there may be no information; only where it cannot even be taken away, a stale one.
        const bool silent = stale ? hasFailed("SetErrorInfo") : !info.present;
        const bool mayBeSilent = source.empty() || operation.method == L"ReleaseDrawContext" ||
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
        return (silent ? mayBeSilent || !clean.info.present : !source.empty() && info.source == source) &&
               ((result == clean.result && (silent || tells(clean.info.description))) ||
                std::any_of(failed_.begin(), failed_.end(), explains));
    }

    FailurePlan plan_;
    bool armed_ = false;
    DWORD thread_ = 0; // that is inside the operation
    std::vector<std::string> failed_;
    std::optional<LeakCheck> leaks_;
    std::vector<std::unique_ptr<ImportGate>> gates_;
};

} // namespace talx::test
