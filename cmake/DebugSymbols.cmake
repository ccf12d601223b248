# separate_debug_symbols(TARGET) moves the debug symbols of a program or DLL to a file beside it that has .debug behind
# its name. Debuggers find it there by the name and the checksum that the program keeps.
find_program(MINGW_OBJCOPY x86_64-w64-mingw32-objcopy REQUIRED)
find_program(MINGW_STRIP x86_64-w64-mingw32-strip REQUIRED)

function(separate_debug_symbols target)
  set(file $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${MINGW_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${MINGW_STRIP} ${file}
    COMMAND ${MINGW_OBJCOPY} --add-gnu-debuglink=${file}.debug ${file}
    VERBATIM)
endfunction()
