// The one frame in which the engines' methods run, all but the trivial accessors that set no error
// information, and the reporter through which every failure becomes such information.
#pragma once

#include <comdef.h>

#include <new>
#include <utility>

namespace talx {

// Installs error information for the calling thread and returns the HRESULT to return.
//
// The information names the interface ITalRenderEngine and, as its source, the ProgID registered for clsid.
// The description is string resourceId of the module when that is not 0; the module's string for hr when hr
// is one of the component's own codes (0x80044000 to 0x80047FFF); otherwise the given text. A string that the
// module lacks is "Unknown Error". Throws _com_error(E_OUTOFMEMORY) when no error object can be had for want
// of memory.
HRESULT reportError(const CLSID& clsid, const wchar_t* description, HRESULT hr, UINT resourceId = 0);

// One running method: its name and the class that it belongs to.
class MethodFrame {
public:
    MethodFrame(const CLSID& clsid, const wchar_t* methodName) : clsid_(clsid), name_(methodName) {}

    // Reports a failure that the method detected itself.
    [[nodiscard]] HRESULT fail(HRESULT hr, UINT resourceId = 0) const {
        return reportError(clsid_, name_, hr, resourceId);
    }

    // Runs body (HRESULT(const MethodFrame&)) and turns what it throws into error information. Exceptions
    // other than _com_error and std::bad_alloc pass.
    template <class Body>
    HRESULT run(Body&& body) const {
        try {
            return std::forward<Body>(body)(*this);
        } catch (const _com_error& error) {
            return reportComError(error);
        } catch (const std::bad_alloc&) {
            return reportOutOfMemory();
        }
    }

private:
    [[nodiscard]] HRESULT reportComError(const _com_error& error) const;
    [[nodiscard]] HRESULT reportOutOfMemory() const;

    const CLSID& clsid_;
    const wchar_t* name_;
};

} // namespace talx
