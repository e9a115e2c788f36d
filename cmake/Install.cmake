# What `cmake --install` and `cpack` deliver. Nothing installed names a directory of the machine
# that built it, so an installed tree may be moved as a whole.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/Symbols.cmake)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME ZynSystemInfo)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZynSystemInfo)
# A file set would need CMake 3.23 at the user's.
target_include_directories(ZynSystemInfo INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(FILES SocUtility/include/ZynSystemInfo.h TYPE INCLUDE)
install(TARGETS ZynSystemInfo EXPORT ZynSystemInfoTargets)
zyn_install_symbols(ZynSystemInfo ${CMAKE_INSTALL_LIBDIR})
install(EXPORT ZynSystemInfoTargets
  NAMESPACE ZynSystemInfo::
  DESTINATION ${package_dir})
file(RELATIVE_PATH LIB_FROM_PACKAGE ${CMAKE_INSTALL_PREFIX}/${package_dir}
  ${CMAKE_INSTALL_FULL_LIBDIR})
configure_file(cmake/ZynSystemInfoConfig.cmake.in ${PROJECT_BINARY_DIR}/ZynSystemInfoConfig.cmake
  @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZynSystemInfoConfig.cmake DESTINATION ${package_dir})
if(TARGET ZynSystemInfoForX64)
  install(FILES $<TARGET_FILE_DIR:ZynSystemInfo>/x64/ZynSystemInfo.lib
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/x64)
endif()

write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZynSystemInfoConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZynSystemInfoConfigVersion.cmake DESTINATION ${package_dir})

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
endif()

# Laid out as in the source tree, so that the links in the texts hold. Left out is what only helps
# those who build the library.
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
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
