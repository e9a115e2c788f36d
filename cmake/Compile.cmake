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

# -O3 makes the image a tenth larger and no query faster.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

set(ZYN_SANITIZER_FLAGS)
if(ZYN_SANITIZERS)
  set(ZYN_SANITIZER_FLAGS -fsanitize=${ZYN_SANITIZERS} -fno-sanitize-recover=all
                          -fno-omit-frame-pointer)
  add_compile_options(${ZYN_SANITIZER_FLAGS})
  add_link_options(${ZYN_SANITIZER_FLAGS})
endif()

# Linked by the project's own targets only, not handed on to consumers.
add_library(SocWarnings INTERFACE)
target_compile_options(SocWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
