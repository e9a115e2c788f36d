# Writes THIRD-PARTY-NOTICES.txt: the licences of other projects' code in the files of this package.
set(notices ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.txt)
file(WRITE ${notices} "Files of this package contain code of the projects below.\n")

# zyn_notice(name title contained_in file folder ...) appends the licence, a file in one of the
# folders. -DZYN_LICENCE_OF_name=FILE names another one.
function(zyn_notice name title contained_in file)
  set(licence ZYN_LICENCE_OF_${name})
  find_file(${licence} ${file} PATHS ${ARGN} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT ${licence})
    set(missing "${file}, the licence of ${title}, is not in ${ARGN}. Set ${licence} to its path.")
    message(WARNING "${missing} Until then cpack makes no archive.")
    file(WRITE ${PROJECT_BINARY_DIR}/MissingNotice.cmake "message(FATAL_ERROR \"${missing}\")\n")
    set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/MissingNotice.cmake PARENT_SCOPE)
    return()
  endif()
  file(READ "${${licence}}" text)
  string(REPEAT "=" 80 line)
  file(APPEND ${notices} "\n${line}\n${title}\nIn: ${contained_in}\n${line}\n\n${text}")
endfunction()

if(ZYN_BUILD_TOOLS)
  zyn_notice(CLI11 "CLI11" "soc-info" copyright /usr/share/doc/libcli11-dev)
  zyn_notice(JSON "nlohmann-json" "soc-info" copyright /usr/share/doc/nlohmann-json3-dev)
endif()
if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH toolchain)
  cmake_path(GET toolchain PARENT_PATH toolchain)
  zyn_notice(LLVM "LLVM: libc++, libc++abi, libunwind and compiler-rt" "every .dll and .exe"
    LICENSE.TXT ${toolchain})
  zyn_notice(MINGW_W64 "mingw-w64's C runtime" "every .dll and .exe"
    COPYING.MinGW-w64-runtime.txt ${toolchain} ${toolchain}/share/mingw32)
elseif(NOT MSVC)
  # The folder of GCC's libraries has the version's name.
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libstdc++.a
    OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
  cmake_path(GET version PARENT_PATH version)
  cmake_path(GET version FILENAME version)
  zyn_notice(GCC "GCC: libstdc++ and libgcc" "libZynSystemInfo.so" copyright
    /usr/share/doc/libstdc++-${version}-dev)
endif()
