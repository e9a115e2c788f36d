# What `cmake --install` and `cpack` deliver. Nothing installed names a directory of the machine
# that built it, so an installed tree may be moved as a whole.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
option(ZYN_INSTALL_STRIPPED "Install debug information of Linux files as files of its own" ON)
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/Notices.cmake)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME ZynSystemInfo)

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
  elseif(ZYN_INSTALL_STRIPPED)
    set(built "$<TARGET_FILE:${target}>")
    cmake_path(ABSOLUTE_PATH destination BASE_DIRECTORY "\${CMAKE_INSTALL_PREFIX}"
      OUTPUT_VARIABLE folder)
    set(split "execute_process(COMMAND_ERROR_IS_FATAL ANY
      COMMAND \"${CMAKE_OBJCOPY}\" --only-keep-debug \"${built}\" \"${built}.debug\")")
    install(CODE "${split}")
    install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY
      COMMAND \"${CMAKE_OBJCOPY}\" --strip-unneeded \"--add-gnu-debuglink=${built}.debug\"
        \"\$ENV{DESTDIR}${folder}/$<TARGET_FILE_NAME:${target}>\")")
    install(CODE "${split}" COMPONENT symbols)
    install(FILES "${built}.debug" DESTINATION ${destination} COMPONENT symbols)
  endif()
endfunction()

# A file set would need CMake 3.23 at the user's.
target_include_directories(ZynSystemInfo INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(FILES SocUtility/include/ZynSystemInfo.h TYPE INCLUDE)
install(TARGETS ZynSystemInfo EXPORT ZynSystemInfoTargets)
zyn_install_symbols(ZynSystemInfo ${CMAKE_INSTALL_LIBDIR})
if(TARGET ZynSystemInfoForX64)
  install(FILES $<TARGET_FILE_DIR:ZynSystemInfo>/x64/ZynSystemInfo.lib
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/x64)
endif()

# CMake's description of it.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZynSystemInfo)
install(EXPORT ZynSystemInfoTargets
  NAMESPACE ZynSystemInfo::
  DESTINATION ${package_dir})
set(ZYN_MACHINE ${CMAKE_SYSTEM_PROCESSOR})
if(MSVC) # which compiles for several machines on one
  set(ZYN_MACHINE ${CMAKE_CXX_COMPILER_ARCHITECTURE_ID})
endif()
configure_file(cmake/ZynSystemInfoConfig.cmake.in ${PROJECT_BINARY_DIR}/ZynSystemInfoConfig.cmake
  @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZynSystemInfoConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZynSystemInfoConfig.cmake
  ${PROJECT_BINARY_DIR}/ZynSystemInfoConfigVersion.cmake DESTINATION ${package_dir})

# pkg-config's.
set(pkg_config_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH PKG_CONFIG_TO_PREFIX ${pkg_config_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH PREFIX_TO_LIB ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH PREFIX_TO_INCLUDE ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/ZynSystemInfo.pc.in ${PROJECT_BINARY_DIR}/ZynSystemInfo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZynSystemInfo.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(ZYN_BUILD_TOOLS)
  install(TARGETS soc-info)
  zyn_install_symbols(soc-info ${CMAKE_INSTALL_BINDIR})
  find_program(ZYN_HELP2MAN help2man)
  if(ZYN_HELP2MAN AND NOT CMAKE_CROSSCOMPILING)
    add_custom_command(OUTPUT soc-info.1 DEPENDS soc-info VERBATIM
      COMMAND ${ZYN_HELP2MAN} --no-info --help-option=--help-all --name=${PROJECT_DESCRIPTION}
        --output=soc-info.1 $<TARGET_FILE:soc-info>)
    add_custom_target(soc-info-manual ALL DEPENDS soc-info.1)
    install(FILES ${PROJECT_BINARY_DIR}/soc-info.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  elseif(NOT WIN32)
    message(STATUS "soc-info gets no manual page: it needs help2man and a program that runs here")
  endif()
endif()

# Laid out as in the source tree, so that the links in the texts hold. Left out is what only helps
# those who build the library; the README marks it, and has no "<" in it.
file(READ README.md readme)
string(REGEX REPLACE "<!-- sources -->[^<]*<!-- /sources -->\n+" "" readme "${readme}")
file(WRITE ${PROJECT_BINARY_DIR}/README.md "${readme}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
install(FILES ${PROJECT_BINARY_DIR}/README.md CHANGELOG.md SECURITY.md ${notices}
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json"
  REGEX "(architecture|performance|releasing|windows).md$" EXCLUDE)
install(DIRECTORY examples/c-client examples/cpp-client examples/node
  examples/provider examples/machines
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
  PATTERN "__pycache__" EXCLUDE
  PATTERN "node_modules" EXCLUDE
  PATTERN "*.asl" EXCLUDE
  PATTERN "*.inc" EXCLUDE
  PATTERN "rebuild" EXCLUDE
  REGEX "c-client/CMakeLists.txt$" EXCLUDE) # a part of this build

install(DIRECTORY bindings DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN "__pycache__" EXCLUDE)

string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" platform)
set(CPACK_PACKAGE_VENDOR "The ZynSystemInfo developers")
set(CPACK_PACKAGE_FILE_NAME ZynSystemInfo-${PROJECT_VERSION}-${platform})
# An archive of the package, and one of its symbols.
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_ARCHIVE_ZYNSYSTEMINFO_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-symbols)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
include(CPack)
