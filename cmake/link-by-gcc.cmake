# Read by CMake after its own link rules: GCC's driver takes clang's place in them, without clang's options.
foreach(rule CREATE_SHARED_LIBRARY CREATE_SHARED_MODULE LINK_EXECUTABLE)
  string(REPLACE "<CMAKE_CXX_COMPILER>" "${TALX_MINGW_GXX}" CMAKE_CXX_${rule} "${CMAKE_CXX_${rule}}")
  string(REGEX REPLACE "<(LANGUAGE_COMPILE_FLAGS|FLAGS)>" "" CMAKE_CXX_${rule} "${CMAKE_CXX_${rule}}")
endforeach()
