# Cross build for 64-bit Windows by clang, as a second opinion on the sources: MinGW's headers and libraries, clang as
# the compiler and GCC's driver as the linker. With C++20 and no optimisation at all the linker finds functions of GCC's
# library twice.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
set(TALX_MINGW_GXX ${CMAKE_CXX_COMPILER})
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# clang does not find the C++ headers of Debian's GCC by itself. MinGW's headers use Microsoft's extensions, and declare
# functions of the run-time both with and without noexcept.
execute_process(COMMAND ${TALX_MINGW_GXX} -print-file-name=include OUTPUT_VARIABLE gcc_include
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${gcc_include}/c++ ${gcc_include}/c++/${CMAKE_CXX_COMPILER_TARGET}
                                           ${gcc_include}/c++/backward)
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -fms-extensions -Wno-missing-exception-spec")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_USER_MAKE_RULES_OVERRIDE_CXX ${CMAKE_CURRENT_LIST_DIR}/link-by-gcc.cmake)
