# zyn_shared_image(target) turns a shared library target into the delivered image
# ZynSystemInfo.dll or libZynSystemInfo.so: exports exactly the names of ZynSystemInfo.def, carries
# its C++ runtime inside, drops unused code, and has a version resource on Windows.
set(ZYN_IMAGE_DIR "${CMAKE_CURRENT_LIST_DIR}")
if(WIN32)
  enable_language(RC)
endif()

# The exports of a Linux image come from the .def file, the only place that lists the names.
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

# The C++ runtime is part of the image and hidden in it, so a C program needs none. Sanitizers have
# runtimes of their own, which a program shares with its libraries.
function(zyn_link_runtime_statically target)
  if(MINGW)
    target_link_options(${target} PRIVATE -static)
  elseif(NOT MSVC) # whose objects each name their runtime
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()

# Exactly the names of the .def file.
function(zyn_export target)
  set(def "${ZYN_IMAGE_DIR}/ZynSystemInfo.def")
  if(WIN32)
    # A PDB quotes the linker's command. A copy has the same relative path in every build.
    configure_file("${def}" "${CMAKE_CURRENT_BINARY_DIR}/ZynSystemInfo.def" COPYONLY)
    set(def "${CMAKE_CURRENT_BINARY_DIR}/ZynSystemInfo.def")
    target_sources(${target} PRIVATE "${def}")
  else()
    set(map "${CMAKE_CURRENT_BINARY_DIR}/ZynSystemInfo.map")
    zyn_write_version_script("${def}" "${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
    target_link_options(${target} PRIVATE "-Wl,--version-script,${map}")
  endif()
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "ARM64X")
    # Each side of a hybrid image has exports of its own; a .def source describes the ARM64EC side.
    file(RELATIVE_PATH native_def "${CMAKE_BINARY_DIR}" "${def}") # as Ninja runs the linker
    target_link_options(${target} PRIVATE "-Wl,-Xlink=-defArm64Native:${native_def}")
    zyn_add_import_library_for_x64("${def}")
  endif()
endfunction()

# Adds an import library for x64 programs, which load the ARM64EC side of a hybrid image. The import
# library of the linker serves only ARM64 and ARM64EC programs.
function(zyn_add_import_library_for_x64 def)
  set(library "${CMAKE_CURRENT_BINARY_DIR}/x64/ZynSystemInfo.lib")
  add_custom_command(OUTPUT "${library}" DEPENDS "${def}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/x64"
    COMMAND "${CMAKE_DLLTOOL}" -m i386:x86-64 -D ZynSystemInfo.dll -d "${def}" -l "${library}"
    VERBATIM)
  add_custom_target(ZynSystemInfoForX64 ALL DEPENDS "${library}")
endfunction()

# Without this data no exception crosses the boundary to x64 code. The toolchain has treated its own
# libraries. The objects are treated here, so that any compiler will do, an llvm-mingw too.
function(zyn_keep_thunk_unwind_data target)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(script "${PROJECT_SOURCE_DIR}/scripts/toolchain/keep-thunk-unwind-data")
  add_custom_command(TARGET ${target} PRE_LINK
    COMMAND "${Python3_EXECUTABLE}" "${script}" $<TARGET_OBJECTS:${target}>
            $<TARGET_OBJECTS:SocObjects> $<TARGET_OBJECTS:SocDelayLoadFailure>
    COMMAND_EXPAND_LISTS VERBATIM)
endfunction()

# The library is loaded by the first call of one of its functions.
function(zyn_delay_load target library)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:SocDelayLoadFailure>)
  if(MSVC)
    target_link_options(${target} PRIVATE /DELAYLOAD:${library})
    target_link_libraries(${target} PRIVATE delayimp)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_link_options(${target} PRIVATE -Wl,-Xlink=-delayload:${library})
  endif()
endfunction()

function(zyn_shared_image target)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ZynSystemInfo)
  zyn_export(${target})
  if(NOT ZYN_SANITIZERS)
    zyn_link_runtime_statically(${target})
  endif()
  if(NOT MSVC)
    target_link_options(${target} PRIVATE -Wl,--gc-sections)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "ARM64X")
    zyn_keep_thunk_unwind_data(${target})
  endif()
  if(WIN32)
    # The import library's name is the one that every compiler for Windows finds.
    set_target_properties(${target} PROPERTIES PREFIX "" IMPORT_PREFIX "" IMPORT_SUFFIX .lib)
    zyn_delay_load(${target} advapi32.dll) # serves the driver location alone
    zyn_add_version_resource(${target})
  else()
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
  endif()
endfunction()
