# Compiles what programs for Windows are linked with: mingw-w64's C runtime over the UCRT, and LLVM's
# C++ runtime. Sourced by install, which sets home. Each object for aarch64 holds ARM64 and ARM64EC
# code.

import_libraries=({kernel32,advapi32,user32,shell32,gdi32,winspool,ole32,oleaut32,uuid,comdlg32}.a
  {ntdll,psapi,ws2_32,bcrypt}.a)

# headers: unpacks the sources too.
headers() {
  rm -rf "$home/build" "$home"/{aarch64,x86_64}-w64-mingw32
  mkdir -p "$home/build/headers" "$home/aarch64-w64-mingw32"
  tar -xf "$home"/sources/mingw-w64_*.orig.tar.* -C "$home/build"
  tar -xf "$home"/sources/llvm-toolchain-*.orig.tar.* -C "$home/build" --exclude '*/test/*' \
    --wildcards '*/libcxx/*' '*/libcxxabi/*' '*/libunwind/*' '*/libc/shared/*' '*/libc/src/*' \
    '*/libc/hdr/*' '*/libc/include/*' '*/compiler-rt/lib/builtins/*'
  # For the notices of packages, in the places that they have in an llvm-mingw.
  cp "$home"/build/llvm-toolchain-*/libcxx/LICENSE.TXT "$home"
  install -D -t "$home/share/mingw32" "$home"/build/mingw-w64-*/COPYING.MinGW-w64-runtime/*.txt
  cd "$home/build/headers"
  ../mingw-w64-*/mingw-w64-headers/configure --host=x86_64-w64-mingw32 \
    --prefix="$home/x86_64-w64-mingw32" --with-default-msvcrt=ucrt
  make install
  ln -s ../x86_64-w64-mingw32/include "$home/aarch64-w64-mingw32/include"
}

c_runtime_x86_64() {
  build_c_runtime x86_64 lib64 --host=x86_64-w64-mingw32 CC=x86_64-w64-mingw32-clang
}

# Configured for ARM64EC, whose list of sources is the longer one. Import libraries get the same names
# for both kinds of code, and one object of x64 code is asked for that -marm64x cannot compile.
c_runtime_aarch64() {
  local dlltool=$home/build/dlltool crt
  printf '#!/bin/sh\nfor last; do :; done\nexec llvm-dlltool "$@" -N "$last"\n' >"$dlltool"
  chmod +x "$dlltool"
  crt=$(echo "$home"/build/mingw-w64-*/mingw-w64-crt)
  rm -rf "$home/build/c-aarch64"
  mkdir -p "$home/build/c-aarch64/libarm64/cfguard"
  "$home/bin/x86_64-w64-mingw32-clang" -c "$crt/cfguard/guard_dispatch.S" \
    -o "$home/build/c-aarch64/libarm64/cfguard/guard_dispatch.x86_64.o"
  build_c_runtime aarch64 libarm64 --host=arm64ec-w64-mingw32 --disable-lib64 --enable-libarm64 \
    CC='aarch64-w64-mingw32-clang -marm64x' DLLTOOL="$dlltool" \
    CPP='clang --target=arm64ec-w64-windows-gnu -E'
}

# build_c_runtime TARGET FOLDER CONFIGURE_ARGUMENT ...: of the many libraries only those that C++
# programs are linked with.
build_c_runtime() {
  local lib=$home/$1-w64-mingw32/lib folder=$2 crt libraries
  crt=$(echo "$home"/build/mingw-w64-*/mingw-w64-crt)
  mkdir -p "$home/build/c-$1/$folder" "$lib"
  cd "$home/build/c-$1"
  export PATH=$home/bin:$PATH
  # The linker drops unused functions only from sections of their own.
  "$crt/configure" --with-default-msvcrt=ucrt --enable-cfguard --disable-lib32 \
    --disable-dependency-tracking --enable-silent-rules DLLTOOL=llvm-dlltool AR=llvm-ar \
    RANLIB=llvm-ranlib \
    CFLAGS="-Os -w -ffunction-sections -fdata-sections -ffile-prefix-map=$crt=." "${@:3}"
  libraries=("$folder"/lib{mingw32,mingwex,moldname,ucrt,delayimp}.a)
  libraries+=("${import_libraries[@]/#/$folder/lib}")
  make -j "$(nproc)" "$folder"/{crt2,dllcrt2,crtbegin,crtend}.o "${libraries[@]}"
  cp "${libraries[@]}" "$folder"/*.o "$lib"
  cp "$folder/libucrt.a" "$lib/libmsvcrt.a" # the name that clang gives the linker
}

cpp_runtime_x86_64() {
  build_cpp_runtime x86_64
}

cpp_runtime_aarch64() {
  build_cpp_runtime aarch64 -marm64x
}

# build_cpp_runtime TARGET [FLAG]
build_cpp_runtime() {
  local build=$home/build/cpp-$1 prefix=$home/$1-w64-mingw32 resources
  rm -rf "$build"
  cmake -G Ninja -S scripts/toolchain/runtimes -B "$build" -D CMAKE_BUILD_TYPE=None \
    -D LLVM="$(echo "$home"/build/llvm-toolchain-*)" \
    -D CMAKE_SYSTEM_NAME=Windows -D CMAKE_SYSTEM_PROCESSOR="$1" \
    -D CMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY \
    -D CMAKE_C_COMPILER="$home/bin/$1-w64-mingw32-clang" -D CMAKE_C_FLAGS="${2:-}" \
    -D CMAKE_CXX_COMPILER="$home/bin/$1-w64-mingw32-clang++" -D CMAKE_CXX_FLAGS="${2:-}" \
    -D CMAKE_ASM_COMPILER="$home/bin/$1-w64-mingw32-clang" -D CMAKE_ASM_FLAGS="${2:-}" \
    -D CMAKE_AR="$home/bin/llvm-ar" -D CMAKE_RANLIB="$home/bin/llvm-ranlib"
  cmake --build "$build"
  cmake --install "$build" --prefix "$prefix" >/dev/null
  resources=$("$home/bin/clang" -print-resource-dir)/lib/windows
  mkdir -p "$resources"
  mv "$prefix/lib/libbuiltins.a" "$resources/libclang_rt.builtins-$1.a"
}

# Without it no exception crosses the boundary to x64 code.
thunk_unwind_data() {
  scripts/toolchain/keep-thunk-unwind-data "$home"/aarch64-w64-mingw32/lib/*.[ao] \
    "$("$home/bin/clang" -print-resource-dir)/lib/windows/libclang_rt.builtins-aarch64.a"
}
