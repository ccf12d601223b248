// The test program's start, and the DLLs that it loads.
#include "tests/support/module.h"

namespace talx::test {

namespace {

HMODULE load(const char* path) {
    HMODULE module = LoadLibraryA(path);
    if (!module) {
        fprintf(stderr, "%s cannot be loaded: error %lu\n", path, GetLastError());
        exit(EXIT_FAILURE);
    }
    return module;
}

} // namespace

HMODULE engineModule() {
    static const HMODULE module = load(TALXREND_PATH);
    return module;
}

HMODULE imageModule() {
    static const HMODULE module = load(TALXSTD_PATH);
    return module;
}

} // namespace talx::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return EXIT_FAILURE;
    }
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
