# windows_resources(TARGET SCRIPT [DEPENDS file...]) compiles a resource script into a target. Scripts find the version
# resource as version_info.rc and are compiled again when it, or a file in DEPENDS that they include, has changed.
configure_file(${PROJECT_SOURCE_DIR}/cmake/version_info.rc.in ${PROJECT_BINARY_DIR}/resources/version_info.rc)

function(windows_resources target script)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  target_sources(${target} PRIVATE ${script})
  target_include_directories(${target} PRIVATE ${PROJECT_BINARY_DIR}/resources)
  set_source_files_properties(${script} PROPERTIES
    OBJECT_DEPENDS "${PROJECT_BINARY_DIR}/resources/version_info.rc;${ARG_DEPENDS}")
endfunction()
