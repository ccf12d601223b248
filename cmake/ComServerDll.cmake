# com_server_dll(NAME SOURCE...) makes the COM server NAME.dll: the shared entry points, NAME.rc and the sources,
# among them the DLL's class map. NAME.rc holds the type library of the widl_library NAME.
function(com_server_dll name)
  set(com ${PROJECT_SOURCE_DIR}/com)
  add_library(${name} SHARED ${ARGN} ${name}.rc ${com}/dll_exports.cpp ${com}/dll_exports.def)
  set_target_properties(${name} PROPERTIES PREFIX "")
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}) # the resource compiler finds the library
  set_source_files_properties(${name}.rc PROPERTIES
    OBJECT_DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/${name}.tlb;${com}/class.rgs")
  target_link_libraries(${name} PRIVATE talx_com ${name}_idl)
endfunction()
