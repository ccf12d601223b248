// The test program's start, and the DLLs that it loads.
#include "tests/support/module.h"

namespace talx::test {

HMODULE engineModule() {
    static const HMODULE module = LoadLibraryA(TALXREND_PATH);
    return module;
}
HMODULE imageModule() {
    static const HMODULE module = LoadLibraryA(TALXSTD_PATH);
    return module;
}

} // namespace talx::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) || !talx::test::engineModule() ||
        !talx::test::imageModule()) {
        fputs("COM is not there, or one of the DLLs under test cannot be loaded\n", stderr);
        return EXIT_FAILURE;
    }
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
