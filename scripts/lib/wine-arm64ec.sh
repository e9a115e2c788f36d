# Makes the Wine of wine-arm64.sh run ARM64EC processes too. Debian's Wine for ARM64 has only ARM64 code.
# Here its base DLLs are built as ARM64X images from the source of the same version.
# Sourced after wine-arm64.sh.

# The DLLs that a console program loads.
arm64ec_dlls=(ntdll kernel32 kernelbase ucrtbase xtajit64)

# arm64ec_prepare: does what arm64_prepare does, and makes sessions use the DLLs. The first time it
# builds them into the cache with the Windows toolchain.
arm64ec_prepare() {
  local toolchain
  arm64_prepare
  export arm64_dlls=$arm64_home/arm64ec
  [[ ! -d $arm64_dlls ]] || return 0
  require gcc=gcc make=make perl=perl flex=flex bison=bison autoconf=autoconf \
    /usr/share/misc/config.guess=autotools-dev dpkg-source=dpkg-dev xz=xz-utils
  toolchain=$(scripts/toolchain/install)
  step "Building Wine's base DLLs for ARM64EC"
  logged "$arm64_home/arm64ec.log" build_arm64ec "$toolchain"
  mv "$arm64_home/build/done" "$arm64_dlls"
  rm -rf "$arm64_home/build"
}

build_arm64ec() {
  local work=$arm64_home/build
  set -x
  rm -rf "$work"
  mkdir -p "$work"
  cd "$work"
  fetch_wine_source
  prepare_wine_source
  PATH=$1:$PATH build_wine_dlls
}

fetch_wine_source() {
  local version
  use_suite "$arm64_home/apt" "$wine_suite" arm64
  version=$(awk '$1 == "libwine" { print $2 }' "$arm64_home/versions")
  apt-get source -qq --download-only "wine=$version"
  dpkg-source --no-check -x wine_*.dsc wine
}

# prepare_wine_source: generates the files that Debian's source lacks. Configures only the DLLs and
# their build tools.
prepare_wine_source() {
  local kept
  kept="dlls/($(IFS='|' && echo "${arm64ec_dlls[*]}")"
  kept+='|winecrt0|advapi32|user32|rpcrt4)' # the last three only to link against
  kept+='|libs/(musl|uuid|compiler-rt)|include|tools[a-z/]*'
  cd wine
  perl tools/make_requests
  perl tools/make_specfiles
  cp /usr/share/misc/config.{guess,sub} tools
  sed -i -E "/^WINE_CONFIG_MAKEFILE/{ \#\(($kept)[],)]#!d }" configure.ac
  autoreconf -f
  # An ARM64EC thread without exception handlers has none to skip: here null is taken for one.
  sed -i 's/while ((ULONG64)teb_frame </while (teb_frame \&\& (ULONG64)teb_frame </' \
    dlls/ntdll/signal_arm64ec.c
  grep -q 'while (teb_frame &&' dlls/ntdll/signal_arm64ec.c
  touch include/wine/{vulkan,wgl,wgl_driver}.h
  printf 'HKCR\n{\n}\n' >dlls/kernelbase/kernelbase.rgs
  cd ..
}

build_wine_dlls() {
  local dll files=()
  for dll in "${arm64ec_dlls[@]}"; do
    files+=("dlls/$dll/aarch64-windows/$dll.dll")
  done
  mkdir -p objects/nls done
  cp "$arm64_tree"/usr/share/wine/nls/*.nls objects/nls
  cd objects
  CC=gcc CROSSCFLAGS=-O1 ../wine/configure --enable-archs=arm64ec,aarch64 --with-mingw=clang \
    --disable-tests --without-x --without-freetype
  make -j "$(nproc)" "${files[@]}"
  tools/winebuild/winebuild --builtin "${files[@]}"
  cp "${files[@]}" ../done
}
