// See exception_state.h. The module is linked with --wrap=malloc: every call of malloc in it comes here
// first.
#include "com/exception_state.h"

#include <windows.h>

#include <cstdlib>
#include <cxxabi.h>
#include <utility>

// What the C++ run-time keeps for each thread, as its ABI lays it down.
struct __cxxabiv1::__cxa_eh_globals {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

namespace {

using State = __cxxabiv1::__cxa_eh_globals;

DWORD slot = FLS_OUT_OF_INDEXES;
bool nextMallocFails = false; // once, as the module is loaded, when it has one thread only

void WINAPI giveBack(void* state) {
    HeapFree(GetProcessHeap(), 0, state);
}

State* stateOfThread() noexcept {
    // FlsGetValue says by the last error whether null is a value; callers have theirs to read.
    const DWORD lastError = GetLastError();
    auto* const state = static_cast<State*>(FlsGetValue(slot));
    SetLastError(lastError);
    return state;
}

} // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
    return std::exchange(nextMallocFails, false) ? nullptr : __real_malloc(size);
}

} // extern "C"

namespace __cxxabiv1 {

// These take the place of the run-time's own.
__cxa_eh_globals* __cxa_get_globals() noexcept {
    // No thread throws or catches here that has not been made ready.
    return stateOfThread();
}
__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return stateOfThread();
}

} // namespace __cxxabiv1

namespace talx {

bool readyThreadForExceptions() noexcept {
    if (FlsGetValue(slot)) {
        return true;
    }
    void* const state = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(State));
    if (!state) {
        return false;
    }
    if (slot == FLS_OUT_OF_INDEXES || !FlsSetValue(slot, state)) {
        giveBack(state);
        return false;
    }
    return true;
}

void prepareExceptions() noexcept {
    slot = FlsAlloc(&giveBack); // gives a thread's state back at its end
    if (!readyThreadForExceptions()) {
        releaseExceptions(); // no thread can be made ready: every method answers E_OUTOFMEMORY
        return;
    }
    // The emergency memory is guarded by a mutex that allocates when it is first locked, so it is used once
    // now: an exception that malloc gives no memory for comes from there.
    nextMallocFails = true;
    try {
        throw 0;
    } catch (int) {
        nextMallocFails = false;
    }
}

void releaseExceptions() noexcept {
    if (slot != FLS_OUT_OF_INDEXES) {
        FlsFree(slot); // gives back the state of every thread
        slot = FLS_OUT_OF_INDEXES;
    }
}

} // namespace talx
