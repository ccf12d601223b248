# What an IDL file says of its library, for files that are made of it at configuration.
#
# read_com_classes(IDL PREFIX) sets PREFIX_LIBID, PREFIX_TITLE and PREFIX_VERSION of the library, and the lists
# PREFIX_CLASSES and PREFIX_DISPATCH of its coclasses and dispatch interfaces, each entry a name, a blank and an id. Ids
# are written in capitals and braces, as the registry has them.
function(read_com_classes idl prefix)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${idl})
  file(READ ${idl} text)
  string(REPLACE "[" "<" text "${text}") # brackets and semicolons are special in lists
  string(REPLACE "]" ">" text "${text}")
  string(REPLACE ";" "," text "${text}")
  set(classes "")
  set(dispatch "")
  string(REGEX MATCHALL "<uuid\\([^>]*>[ \n]*(library|coclass|dispinterface) [A-Za-z0-9_]+" entries "${text}")
  foreach(entry IN LISTS entries)
    string(REGEX MATCH "^<uuid\\(([^)]*)\\).*>[ \n]*([a-z]+) ([A-Za-z0-9_]+)$" unused "${entry}")
    string(TOUPPER "{${CMAKE_MATCH_1}}" id)
    if(CMAKE_MATCH_2 STREQUAL "coclass")
      list(APPEND classes "${CMAKE_MATCH_3} ${id}")
    elseif(CMAKE_MATCH_2 STREQUAL "dispinterface")
      list(APPEND dispatch "${CMAKE_MATCH_3} ${id}")
    else()
      set(${prefix}_LIBID ${id} PARENT_SCOPE)
      string(REGEX MATCH "version\\(([0-9.]+)\\)" unused "${entry}")
      set(${prefix}_VERSION ${CMAKE_MATCH_1} PARENT_SCOPE)
      string(REGEX MATCH "helpstring\\(\"([^\"]*)\"" unused "${entry}")
      set(${prefix}_TITLE ${CMAKE_MATCH_1} PARENT_SCOPE)
    endif()
  endforeach()
  set(${prefix}_CLASSES ${classes} PARENT_SCOPE)
  set(${prefix}_DISPATCH ${dispatch} PARENT_SCOPE)
endfunction()

# Adds a registry value to the caller's variable registry. name: empty, or Name='...'.
function(value key name data)
  set(registry
      "${registry}  <RegistryValue Root='HKCR' Key='${key}' ${name} Type='string' Value='${data}'/>\n" PARENT_SCOPE)
endfunction()

# describe_com_server(NAME IDL THREADING_MODEL) writes into the current binary folder what NAME.dll would register:
# Hemlar.NAME.manifest, the side-by-side assembly that stands in for registration, and NAME-registry.wxi, the registry
# values for the installer, the same that the DLL writes itself.
function(describe_com_server name idl threading_model)
  read_com_classes(${idl} lib)
  set(registry "")
  set(manifest "")
  foreach(class IN LISTS lib_CLASSES)
    separate_arguments(class)
    list(GET class 0 class_name)
    list(GET class 1 clsid)
    set(progid Hemlar.${class_name})
    value("${progid}.1" "" "${class_name} Class")
    value("${progid}.1\\CLSID" "" "${clsid}")
    value("${progid}" "" "${class_name} Class")
    value("${progid}\\CLSID" "" "${clsid}")
    value("${progid}\\CurVer" "" "${progid}.1")
    value("CLSID\\${clsid}" "" "${class_name} Class")
    value("CLSID\\${clsid}\\ProgID" "" "${progid}.1")
    value("CLSID\\${clsid}\\VersionIndependentProgID" "" "${progid}")
    value("CLSID\\${clsid}\\InprocServer32" "" "[#${name}.dll]")
    value("CLSID\\${clsid}\\InprocServer32" "Name='ThreadingModel'" "${threading_model}")
    value("CLSID\\${clsid}\\TypeLib" "" "${lib_LIBID}")
    string(APPEND manifest
      "    <comClass clsid=\"${clsid}\" threadingModel=\"${threading_model}\" tlbid=\"${lib_LIBID}\"\n"
      "              progid=\"${progid}.1\" description=\"${class_name} Class\">\n"
      "      <progid>${progid}</progid>\n"
      "    </comClass>\n")
  endforeach()

  # RegisterTypeLib also writes the 32-bit view, and names the automation marshaler for dispatch interfaces.
  set(marshaler "{00020420-0000-0000-C000-000000000046}")
  foreach(view "" "Wow6432Node\\")
    set(key "${view}TypeLib\\${lib_LIBID}\\${lib_VERSION}")
    value("${key}" "" "${lib_TITLE}")
    value("${key}\\0\\win64" "" "[#${name}.dll]\\1")
    value("${key}\\FLAGS" "" "8")
    value("${key}\\HELPDIR" "" "[BINDIR]")
    foreach(interface IN LISTS lib_DISPATCH)
      separate_arguments(interface)
      list(GET interface 0 interface_name)
      list(GET interface 1 iid)
      set(key "${view}Interface\\${iid}")
      value("${key}" "" "${interface_name}")
      value("${key}\\ProxyStubClsid" "" "${marshaler}")
      value("${key}\\ProxyStubClsid32" "" "${marshaler}")
      value("${key}\\TypeLib" "" "${lib_LIBID}")
      value("${key}\\TypeLib" "Name='Version'" "${lib_VERSION}")
    endforeach()
  endforeach()

  file(CONFIGURE OUTPUT ${name}-registry.wxi CONTENT "<Include>\n${registry}</Include>\n")
  set(assembly ${name})
  configure_file(${PROJECT_SOURCE_DIR}/sdk/assembly.manifest.in Hemlar.${name}.manifest @ONLY)
endfunction()
