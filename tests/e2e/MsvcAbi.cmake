# zyn_add_msvc_source(target source) compiles a C++ source for the ABI of Microsoft's compiler, which
# most hosts and providers of Windows have, with this build's Clang. It may include what comes with
# Clang itself; Microsoft's headers and libraries are not needed.
get_filename_component(compilers "${CMAKE_CXX_COMPILER}" DIRECTORY)
find_program(ZYN_DLLTOOL llvm-dlltool HINTS "${compilers}" REQUIRED)

set(runtime_def ${CMAKE_CURRENT_SOURCE_DIR}/vcruntime140.def)
set(runtime ${CMAKE_CURRENT_BINARY_DIR}/libvcruntime140.a)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "ARM64X")
  set(msvc_target aarch64-pc-windows-msvc)
  set(machine -m arm64ec -N ${runtime_def})
else()
  set(msvc_target x86_64-pc-windows-msvc)
  set(machine -m i386:x86-64)
endif()
add_custom_command(OUTPUT ${runtime} DEPENDS ${runtime_def}
  COMMAND ${ZYN_DLLTOOL} ${machine} -d ${runtime_def} -l ${runtime} VERBATIM)
add_custom_target(MsvcRuntime DEPENDS ${runtime})

function(zyn_add_msvc_source target source)
  add_library(${target}Msvc OBJECT ${source})
  # In the place of the build's own options, some of which this target does not know.
  set_target_properties(${target}Msvc PROPERTIES COMPILE_OPTIONS
    "--target=${msvc_target};-ffreestanding;-fexceptions;-fcxx-exceptions;-fms-extensions;-Qunused-arguments;$<TARGET_PROPERTY:SocWarnings,INTERFACE_COMPILE_OPTIONS>;-Wno-language-extension-token")
  zyn_link_msvc(${target} ${target}Msvc)
endfunction()

# zyn_link_msvc(target objects) adds such objects to a target, with what they need of the runtime.
function(zyn_link_msvc target objects)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${target} PRIVATE ${runtime} ucrt)
  add_dependencies(${target} MsvcRuntime)
endfunction()
