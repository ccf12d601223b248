# com_server_dll(NAME SOURCE...) makes the COM server NAME.dll of the current folder: the shared entry points, NAME.def,
# NAME.rc and the sources, among them the DLL's class map. NAME.rc holds the type library of the widl_library NAME.
function(com_server_dll name)
  set(com ${PROJECT_SOURCE_DIR}/com)
  add_library(${name} SHARED ${ARGN} ${name}.def ${com}/dll_exports.cpp)
  set_target_properties(${name} PROPERTIES PREFIX "")
  get_target_property(idl_dir ${name}_idl WIDL_BINARY_DIR)
  target_include_directories(${name} PRIVATE ${idl_dir}) # the resource compiler finds the type library
  windows_resources(${name} ${name}.rc DEPENDS
    ${idl_dir}/${name}.tlb ${com}/class.rgs ${com}/message_ids.h ${CMAKE_CURRENT_SOURCE_DIR}/resource.h)
  target_link_libraries(${name} PRIVATE talx_com ${name}_idl)
  separate_debug_symbols(${name})
endfunction()
