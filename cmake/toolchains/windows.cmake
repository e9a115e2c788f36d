# Common part of the toolchain files: Clang, lld and libc++ for the target zyn_target, from an
# llvm-mingw on PATH or from what scripts/toolchain/install has made. Nothing is fetched here.
set(CMAKE_SYSTEM_NAME Windows)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZYN_TOOLCHAIN)
if(NOT ZYN_TOOLCHAIN)
  execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/../../scripts/toolchain/install" --local
    OUTPUT_VARIABLE ZYN_TOOLCHAIN
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE zyn_failed)
  if(zyn_failed)
    message(FATAL_ERROR "no compiler for Windows: run scripts/toolchain/install")
  endif()
  set(ZYN_TOOLCHAIN "${ZYN_TOOLCHAIN}" CACHE PATH "The folder of the compilers for Windows")
endif()

set(CMAKE_C_COMPILER "${ZYN_TOOLCHAIN}/${zyn_target}-w64-mingw32-clang")
set(CMAKE_CXX_COMPILER "${ZYN_TOOLCHAIN}/${zyn_target}-w64-mingw32-clang++")
set(CMAKE_RC_COMPILER "${ZYN_TOOLCHAIN}/${zyn_target}-w64-mingw32-windres")
# Programs need no DLL but the system's.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -static)
endforeach()

set(CMAKE_FIND_ROOT_PATH "${ZYN_TOOLCHAIN}/../${zyn_target}-w64-mingw32")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
