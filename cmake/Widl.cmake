# Compiling IDL with widl: a C++ header and a type library for one file.

find_program(WIDL x86_64-w64-mingw32-widl REQUIRED)
# The standard IDL files and stdole2.tlb come with Wine; their folders are given to widl only.
find_path(WIDL_IDL_DIR oaidl.idl PATHS /usr/include/wine/wine/windows /usr/include/wine/windows
          NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(WIDL_TLB_DIR stdole2.tlb PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows
          /usr/lib/wine/x86_64-windows NO_CMAKE_FIND_ROOT_PATH REQUIRED)

# widl_library(NAME SOURCE [DEPENDS target...]) makes NAME.h and NAME.tlb in the current binary folder, and an
# interface library NAME_idl whose users find the header. Targets in DEPENDS are libraries made by this function
# that SOURCE imports.
function(widl_library name source)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  set(search -I ${WIDL_IDL_DIR} -L ${WIDL_TLB_DIR})
  set(needs ${CMAKE_CURRENT_SOURCE_DIR}/${source})
  foreach(other IN LISTS ARG_DEPENDS)
    get_target_property(source_dir ${other} WIDL_SOURCE_DIR)
    get_target_property(binary_dir ${other} WIDL_BINARY_DIR)
    list(APPEND search -I ${source_dir} -L ${binary_dir})
    list(APPEND needs ${other}_files)
  endforeach()
  set(header ${CMAKE_CURRENT_BINARY_DIR}/${name}.h)
  set(tlb ${CMAKE_CURRENT_BINARY_DIR}/${name}.tlb)
  add_custom_command(
    OUTPUT ${header} ${tlb}
    COMMAND ${WIDL} -m64 ${search} -h -o ${header} ${CMAKE_CURRENT_SOURCE_DIR}/${source}
    COMMAND ${WIDL} -m64 ${search} -t -o ${tlb} ${CMAKE_CURRENT_SOURCE_DIR}/${source}
    DEPENDS ${needs}
    COMMENT "Compiling ${source}"
    VERBATIM)
  add_custom_target(${name}_idl_files DEPENDS ${header} ${tlb})
  add_library(${name}_idl INTERFACE)
  add_dependencies(${name}_idl ${name}_idl_files)
  target_include_directories(${name}_idl SYSTEM INTERFACE ${CMAKE_CURRENT_BINARY_DIR})
  set_target_properties(${name}_idl PROPERTIES WIDL_SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}
                        WIDL_BINARY_DIR ${CMAKE_CURRENT_BINARY_DIR})
  foreach(other IN LISTS ARG_DEPENDS)
    target_link_libraries(${name}_idl INTERFACE ${other})
  endforeach()
endfunction()
