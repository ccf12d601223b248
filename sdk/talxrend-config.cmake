# find_package(talxrend) gives:
#
#   talxrend::sdk           for target_link_libraries: the headers, the ids of interfaces and classes (for MinGW, so that
#                           no source needs initguid.h; with MSVC use __uuidof) and the libraries of the system
#   talxrend_beside(TARGET) puts the DLLs beside the program TARGET, with the manifests that let it use them where
#                           nothing is registered
#   talxrend_BIN_DIR        where the DLLs are
get_filename_component(talxrend_PREFIX "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
set(talxrend_BIN_DIR ${talxrend_PREFIX}/bin)

if(NOT TARGET talxrend::sdk)
  add_library(talxrend::sdk INTERFACE IMPORTED)
  target_include_directories(talxrend::sdk INTERFACE ${talxrend_PREFIX}/include)
  if(NOT MSVC)
    target_link_libraries(talxrend::sdk INTERFACE ${talxrend_PREFIX}/lib/libtalxrend_ids.a)
  endif()
  target_link_libraries(talxrend::sdk INTERFACE windowscodecs ole32 oleaut32 uuid gdi32 user32)
endif()

function(talxrend_beside target)
  set(folder $<TARGET_FILE_DIR:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different
            ${talxrend_BIN_DIR}/talxrend.dll ${talxrend_BIN_DIR}/Hemlar.talxrend.manifest
            ${talxrend_BIN_DIR}/talxstd.dll ${talxrend_BIN_DIR}/Hemlar.talxstd.manifest ${folder}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different
            ${talxrend_PREFIX}/lib/cmake/talxrend/program.manifest $<TARGET_FILE:${target}>.manifest
    VERBATIM)
endfunction()
