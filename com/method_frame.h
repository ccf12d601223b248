// The one frame in which the methods of COM objects run, all but the trivial accessors that set no error
// information: it turns every failure (com/failure.h) into an HRESULT with error information for the calling
// thread.
//
// The information names the interface and, as its source, the ProgID registered for the class. The
// description is string messageId of the module when that is not 0; the module's string for the HRESULT when
// that is one of the component's own codes (0x80044000 to 0x80047FFF); otherwise the text that came with the
// failure, or the method's name. A string that the module lacks is "Unknown Error". Where no error object can
// be had for want of memory, a StepFailure becomes E_OUTOFMEMORY; a plain _com_error keeps its HRESULT, and
// the thread is left without error information.
#pragma once

#include "com/failure.h"

#include <type_traits>
#include <utility>

namespace talx {

// Whose failures these are.
struct ErrorSource {
    const IID& interfaceId;
    const CLSID& classId;
};

// One running method.
class MethodFrame {
public:
    MethodFrame(const ErrorSource& source, const wchar_t* methodName) : source_(source), name_(methodName) {}

    // Runs body, whose result, if it has one, is the method's; a failure that it answers is bare. Exceptions
    // other than _com_error and std::bad_alloc pass.
    template <class Body>
    HRESULT run(Body&& body) const {
        if (!readyThreadForExceptions()) {
            return reportOutOfMemory();
        }
        try {
            if constexpr (std::is_void_v<decltype(body())>) {
                std::forward<Body>(body)();
                return S_OK;
            } else {
                return bare(std::forward<Body>(body)());
            }
        } catch (const StepFailure& failure) {
            return report(failure);
        } catch (const _com_error& error) {
            return report(error);
        } catch (const std::bad_alloc&) {
            return reportOutOfMemory();
        }
    }

private:
    [[nodiscard]] HRESULT report(const StepFailure& failure) const noexcept;
    [[nodiscard]] HRESULT report(const _com_error& error) const noexcept;
    [[nodiscard]] HRESULT reportOutOfMemory() const noexcept;

    const ErrorSource source_;
    const wchar_t* name_;
};

} // namespace talx
