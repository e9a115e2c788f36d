# Windows on ARM64, hybrid: each object and image holds ARM64 code for native processes and ARM64EC
# code for emulated x64 processes.
set(CMAKE_SYSTEM_PROCESSOR ARM64X)
set(zyn_target aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/windows.cmake")
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_INIT -marm64x)
endforeach()

# Runs ARM64 images in an emulated system, which scripts/test prepares.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/lib/run-wine-arm64")
