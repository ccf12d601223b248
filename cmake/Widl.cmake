# Compiling IDL with widl: a header, a type library and the ids of one file.

find_program(WIDL x86_64-w64-mingw32-widl REQUIRED)
# The standard IDL files and stdole2.tlb come with Wine; their folders are given to widl only.
find_path(WIDL_IDL_DIR oaidl.idl PATHS /usr/include/wine/wine/windows /usr/include/wine/windows
          NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(WIDL_TLB_DIR stdole2.tlb PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows
          /usr/lib/wine/x86_64-windows NO_CMAKE_FIND_ROOT_PATH REQUIRED)

# widl writes the time into type libraries, where nobody needs it: with faketime it is always the same one.
set(WIDL_AT_ONE_TIME ${WIDL} -m64)
find_program(FAKETIME faketime)
if(FAKETIME)
  list(PREPEND WIDL_AT_ONE_TIME ${CMAKE_COMMAND} -E env TZ=UTC ${FAKETIME} -f "2020-01-01 00:00:00")
endif()

# widl_library(NAME SOURCE [DEPENDS target...]) makes NAME.h, NAME.tlb and NAME_i.c (the ids) in the current binary
# folder, and an interface library NAME_idl whose users find the header. Targets in DEPENDS are libraries made by this
# function that SOURCE imports.
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
  set(ids ${CMAKE_CURRENT_BINARY_DIR}/${name}_i.c)
  # The source is named without its folder, since that name goes into the header.
  add_custom_command(
    OUTPUT ${header} ${tlb} ${ids}
    COMMAND ${WIDL_AT_ONE_TIME} ${search} -h -o ${header} ${source}
    COMMAND ${WIDL_AT_ONE_TIME} ${search} -t -o ${tlb} ${source}
    COMMAND ${WIDL_AT_ONE_TIME} ${search} -u -o ${ids} ${source}
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
    DEPENDS ${needs}
    COMMENT "Compiling ${source}"
    VERBATIM)
  add_custom_target(${name}_idl_files DEPENDS ${header} ${tlb} ${ids})
  add_library(${name}_idl INTERFACE)
  add_dependencies(${name}_idl ${name}_idl_files)
  target_include_directories(${name}_idl SYSTEM INTERFACE ${CMAKE_CURRENT_BINARY_DIR})
  set_target_properties(${name}_idl PROPERTIES WIDL_SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}
                        WIDL_BINARY_DIR ${CMAKE_CURRENT_BINARY_DIR})
  foreach(other IN LISTS ARG_DEPENDS)
    target_link_libraries(${name}_idl INTERFACE ${other})
  endforeach()
endfunction()
