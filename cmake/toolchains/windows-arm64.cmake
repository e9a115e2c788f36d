# Windows ARM64 with an installed LLVM mingw-w64 cross compiler, else with one made out of Zig by
# scripts/zig/install, which this file runs without letting it fetch anything.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ARM64)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZYN_ARM64_CXX ZYN_ARM64_RC)
find_program(ZYN_ARM64_CXX aarch64-w64-mingw32-clang++)
if(NOT ZYN_ARM64_CXX)
  execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/../../scripts/zig/install" --local
    OUTPUT_VARIABLE zyn_zig_bin
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE zyn_zig_failed)
  if(zyn_zig_failed)
    message(FATAL_ERROR "no compiler for Windows ARM64: install an aarch64-w64-mingw32-clang++ "
                        "or run scripts/zig/install")
  endif()
  set(ZYN_ARM64_CXX "${zyn_zig_bin}/aarch64-w64-mingw32-clang++" CACHE FILEPATH "" FORCE)
  set(ZYN_ARM64_RC "${zyn_zig_bin}/windres" CACHE FILEPATH "")
endif()

string(REGEX REPLACE "clang\\+\\+$" "" zyn_prefix "${ZYN_ARM64_CXX}")
set(CMAKE_C_COMPILER "${zyn_prefix}clang")
set(CMAKE_CXX_COMPILER "${ZYN_ARM64_CXX}")
# Zig builds its runtime by the options of the link; this is the small one that scripts/zig/install
# has made already.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -Os)
endforeach()
set(ZYN_ARM64_RC "${zyn_prefix}windres" CACHE FILEPATH "")
set(CMAKE_RC_COMPILER "${ZYN_ARM64_RC}")
set(CMAKE_AR "${zyn_prefix}ar" CACHE FILEPATH "")
set(CMAKE_RANLIB "${zyn_prefix}ranlib" CACHE FILEPATH "")

# Runs ARM64 images in an emulated system, which scripts/test prepares.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/lib/run-wine-arm64")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
