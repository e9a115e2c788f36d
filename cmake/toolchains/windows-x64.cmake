# Windows x64.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(zyn_target x86_64)
include("${CMAKE_CURRENT_LIST_DIR}/windows.cmake")

# Where Debian's Wine keeps the program that runs x64 images.
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine64)
