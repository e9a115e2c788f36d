# What every target of the project is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# The C++ runtime is part of each image. This setting affects only Visual Studio's compilers.
set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")

# -O3 makes the image a tenth larger and no query faster.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
if(MSVC)
  # Not /EHsc: a provider's exception passes through a function with C linkage (ProviderFrame.h).
  string(REPLACE "/EHsc" "/EHs" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:/utf-8> $<$<COMPILE_LANGUAGE:C,CXX>:/guard:cf>)
  add_link_options(/guard:cf)
endif()

# A build in another folder gives the same bytes.
if(PROJECT_IS_TOP_LEVEL AND NOT MSVC)
  set(is_release $<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:C,CXX>>)
  add_compile_options($<${is_release}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
                      $<${is_release}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
endif()

if(PROJECT_IS_TOP_LEVEL AND NOT WIN32)
  add_compile_options($<$<CONFIG:Release>:-g>) # installed apart, as symbols
endif()

# Windows images have Control Flow Guard, and debug information in a PDB beside each.
if(PROJECT_IS_TOP_LEVEL AND MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-mguard=cf> $<$<COMPILE_LANGUAGE:C,CXX>:-g>
    $<$<COMPILE_LANGUAGE:C,CXX>:-gcodeview> $<$<COMPILE_LANGUAGE:C,CXX>:-gno-codeview-command-line>
    $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-compilation-dir=.>)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "ARM64X")
    # Both halves of an object are temporary files, whose random names the debug information quotes.
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:SHELL:-Xclang -object-file-name=hybrid.o>")
  endif()
  add_link_options(-mguard=cf -s
    -Wl,--dynamicbase,--nxcompat,--high-entropy-va,--no-insert-timestamp,--pdb=
    -Wl,-Xlink=-pdbaltpath:%_PDB%,-Xlink=-pdbsourcepath:.)
endif()

set(ZYN_SANITIZER_FLAGS)
if(ZYN_SANITIZERS)
  set(ZYN_SANITIZER_FLAGS -fsanitize=${ZYN_SANITIZERS} -fno-sanitize-recover=all
                          -fno-omit-frame-pointer)
  add_compile_options(${ZYN_SANITIZER_FLAGS})
  add_link_options(${ZYN_SANITIZER_FLAGS})
endif()

# Linked by the project's own targets only, not handed on to consumers.
add_library(SocWarnings INTERFACE)
if(MSVC)
  target_compile_options(SocWarnings INTERFACE /W4)
else()
  target_compile_options(SocWarnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endif()
