# zyn_install_symbols(target destination) installs the debug information of a target as the component
# `symbols`: the PDB that the linker wrote beside a Windows image, or a .debug file taken from a Linux
# one. What is installed of a Linux target is then stripped and names that file; the build tree is
# left as it is.
function(zyn_install_symbols target destination)
  if(MSVC)
    install(FILES $<TARGET_PDB_FILE:${target}> DESTINATION bin COMPONENT symbols OPTIONAL)
  elseif(WIN32)
    install(FILES $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb
      DESTINATION bin COMPONENT symbols OPTIONAL)
  else()
    set(built "$<TARGET_FILE:${target}>")
    set(split "execute_process(COMMAND_ERROR_IS_FATAL ANY
      COMMAND \"${CMAKE_OBJCOPY}\" --only-keep-debug \"${built}\" \"${built}.debug\")")
    install(CODE "${split}")
    install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY
      COMMAND \"${CMAKE_OBJCOPY}\" --strip-unneeded \"--add-gnu-debuglink=${built}.debug\"
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/$<TARGET_FILE_NAME:${target}>\")")
    install(CODE "${split}" COMPONENT symbols)
    install(FILES "${built}.debug" DESTINATION ${destination} COMPONENT symbols)
  endif()
endfunction()
