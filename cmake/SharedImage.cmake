# zyn_shared_image(target MAX_SIZE bytes) turns a shared library target into the delivered image
# ZynSystemInfo.dll or libZynSystemInfo.so: exports exactly the names of ZynSystemInfo.def, carries
# its C++ runtime inside, drops unused code, and has a version resource on Windows. Builds that test
# or cross-compile check each image that they link with scripts/check-image.
#
# A hybrid ARM64X image is linked of two builds' objects: configure one for ARM64EC, build its target
# SocCore, and name its folder to the ARM64 build. docs/windows.md tells with which toolchains.
set(ZYN_ARM64EC_BUILD "" CACHE PATH "Build folder of the same sources for ARM64EC")
set(ZYN_ARM64X_LINK_OPTIONS
  "-marm64x;-Wl,-Xlink=-defArm64Native:${CMAKE_CURRENT_LIST_DIR}/ZynSystemInfo.def"
  CACHE STRING "What makes the linker write a hybrid image, exporting the same names to both sides")
set(ZYN_IMAGE_DIR "${CMAKE_CURRENT_LIST_DIR}")
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

# The C++ runtime is part of the image and hidden in it: a C process pays nothing for it. Sanitizers
# bring runtimes of their own, which a program shares with its libraries.
function(zyn_link_runtime_statically target)
  if(WIN32)
    target_link_options(${target} PRIVATE -static)
  else()
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()

function(zyn_check_image target max_size)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(options --def "${ZYN_IMAGE_DIR}/ZynSystemInfo.def")
  if(WIN32)
    list(APPEND options --machine ${CMAKE_SYSTEM_PROCESSOR} --version ${PROJECT_VERSION})
  endif()
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    list(APPEND options --max-size ${max_size})
  endif()
  add_custom_command(
    TARGET ${target} POST_BUILD
    COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/check-image" ${options}
            "$<TARGET_FILE:${target}>"
    VERBATIM)
endfunction()

function(zyn_add_arm64ec_objects target)
  file(GLOB_RECURSE objects CONFIGURE_DEPENDS
    "${ZYN_ARM64EC_BUILD}/SocUtility/CMakeFiles/SocObjects.dir/*.obj")
  if(NOT objects)
    message(FATAL_ERROR "no objects in ZYN_ARM64EC_BUILD: ${ZYN_ARM64EC_BUILD}")
  endif()
  set_source_files_properties(${objects} PROPERTIES EXTERNAL_OBJECT ON)
  target_sources(${target} PRIVATE ${objects})
  target_link_options(${target} PRIVATE ${ZYN_ARM64X_LINK_OPTIONS})
endfunction()

function(zyn_shared_image target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "MAX_SIZE" "")
  set(def "${ZYN_IMAGE_DIR}/ZynSystemInfo.def")
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ZynSystemInfo)
  target_link_options(${target} PRIVATE -Wl,--gc-sections)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT ZYN_SANITIZERS)
    target_link_options(${target} PRIVATE -s)
  endif()

  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_sources(${target} PRIVATE "${def}")
    target_link_options(${target} PRIVATE -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
    endif()
    zyn_add_version_resource(${target})
    if(ZYN_ARM64EC_BUILD)
      zyn_add_arm64ec_objects(${target})
      math(EXPR arg_MAX_SIZE "2 * ${arg_MAX_SIZE}")
    endif()
  else()
    set(map "${CMAKE_CURRENT_BINARY_DIR}/ZynSystemInfo.map")
    zyn_write_version_script("${def}" "${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
    target_link_options(${target} PRIVATE "-Wl,--version-script,${map}" -Wl,-z,relro,-z,now)
  endif()

  if(NOT ZYN_SANITIZERS)
    zyn_link_runtime_statically(${target})
    if(ZYN_BUILD_TESTS OR WIN32)
      zyn_check_image(${target} ${arg_MAX_SIZE})
    endif()
  endif()
endfunction()
