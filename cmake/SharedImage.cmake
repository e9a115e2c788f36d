# zyn_shared_image(target [MAX_SIZE bytes]) turns a shared library target into the delivered image
# ZynSystemInfo.dll or libZynSystemInfo.so: exports exactly the names of ZynSystemInfo.def, carries
# its C++ runtime inside, drops unused code, has on Windows a version resource, and is checked
# after each link by scripts/check-image. Compile the objects with ZYN_IMAGE_COMPILE_OPTIONS.
set(ZYN_IMAGE_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(ZYN_IMAGE_COMPILE_OPTIONS -ffunction-sections -fdata-sections)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
if(WIN32)
  enable_language(RC)
endif()

# The exports of a Linux image come from the .def file, so that the names stand in one place.
function(zyn_write_version_script def output)
  file(STRINGS "${def}" names REGEX "^ +[A-Za-z_0-9]+$")
  list(JOIN names ";" names)
  file(CONFIGURE OUTPUT "${output}" CONTENT "{ global: @names@; local: *; };\n" @ONLY)
endfunction()

function(zyn_add_version_resource target)
  string(REPLACE "." "," ZYN_FILEVERSION "${PROJECT_VERSION}.0.0.0")
  string(REGEX MATCH "^[0-9]+,[0-9]+,[0-9]+,[0-9]+" ZYN_FILEVERSION "${ZYN_FILEVERSION}")
  set(rc "${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc")
  configure_file("${ZYN_IMAGE_DIR}/version.rc.in" "${rc}" @ONLY)
  target_sources(${target} PRIVATE "${rc}")
endfunction()

function(zyn_shared_image target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "MAX_SIZE" "")
  set(def "${ZYN_IMAGE_DIR}/ZynSystemInfo.def")
  set(check_options --def "${def}")
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ZynSystemInfo)
  target_link_options(${target} PRIVATE -Wl,--gc-sections)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_link_options(${target} PRIVATE -s)
  endif()

  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_sources(${target} PRIVATE "${def}")
    target_link_options(${target} PRIVATE -static
                        -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
    target_link_libraries(${target} PRIVATE advapi32)
    zyn_add_version_resource(${target})
    list(APPEND check_options --machine ${CMAKE_SYSTEM_PROCESSOR} --version ${PROJECT_VERSION})
  else()
    set(map "${CMAKE_CURRENT_BINARY_DIR}/ZynSystemInfo.map")
    zyn_write_version_script("${def}" "${map}")
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc
                        "-Wl,--version-script,${map}" -Wl,-z,relro,-z,now)
  endif()

  if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # libstdc++'s terminate handler prints a demangled type name: 70 KB of code for one message.
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp
                        -Wl,--defsym,_ZN9__gnu_cxx27__verbose_terminate_handlerEv=abort)
  endif()

  if(arg_MAX_SIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    list(APPEND check_options --max-size ${arg_MAX_SIZE})
  endif()
  add_custom_command(
    TARGET ${target} POST_BUILD
    COMMAND "${Python3_EXECUTABLE}" "${ZYN_IMAGE_DIR}/../scripts/check-image" ${check_options}
            "$<TARGET_FILE:${target}>"
    VERBATIM)
endfunction()
