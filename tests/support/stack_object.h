// COM objects that live on the test's stack.
#pragma once

#include <gtest/gtest.h>
#include <unknwn.h>

namespace talx::test {

// Counts its references for the test to look at; any thread may hold some. None may be left at its end.
template <class Interface>
struct StackObject : Interface {
    ~StackObject() { EXPECT_EQ(0, references) << "references left, or released too often"; }
    long references = 0;

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == __uuidof(Interface) ? this : nullptr;
        return *object ? AddRef(), S_OK : E_NOINTERFACE;
    }
    STDMETHOD_(ULONG, AddRef)() override { return InterlockedIncrement(&references); }
    STDMETHOD_(ULONG, Release)() override { return InterlockedDecrement(&references); }
};

} // namespace talx::test
