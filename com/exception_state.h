// Exceptions that can be thrown when there is no memory.
//
// With GCC for Windows a thread's first throw allocates many times: the exception itself, the run-time's
// per-thread state in emulated thread-local storage, and what the thread library adds to that. Where one of
// these fails, the run-time ends the process. So the module supplies that state itself and asks for it where
// a failure can still be answered with E_OUTOFMEMORY, and makes the run-time's emergency memory for
// exceptions usable as it is loaded.
#pragma once

namespace talx {

// To be called as the module is loaded and unloaded.
void prepareExceptions() noexcept;
void releaseExceptions() noexcept;

// To be called where a thread enters the module, before anything may throw. False: there is no memory for it.
[[nodiscard]] bool readyThreadForExceptions() noexcept;

} // namespace talx
