# Fetches Clang with lld and LLVM's tools, and the sources of the runtime, from Debian's packages
# without installing them. Sourced by install, which sets home.

oldest_clang=23 # the first that compiles -marm64x

# packages: all that is fetched, from the first suite that has a Clang new enough.
packages() {
  local suite clang
  for suite in stable testing unstable; do
    use_suite "$home/apt" "$suite"
    clang=$(apt-cache pkgnames clang- | sed -n 's/^clang-\([0-9]*\)$/\1/p' | sort -n | tail -n 1)
    ((${clang:-0} < oldest_clang)) || break
  done
  ((${clang:-0} >= oldest_clang)) ||
    missing "clang-$oldest_clang or newer in the suites stable, testing or unstable"

  rm -rf "$home/debs" "$home/sources"
  mkdir -p "$home/debs" "$home/sources"
  (
    cd "$home/debs"
    apt-get download -qq "clang-$clang" "libclang-common-$clang-dev" "lld-$clang" "llvm-$clang"
    # The libraries that these need, C library included.
    apt-get install -qq --download-only "libclang-cpp$clang"
    mv "$home"/apt/cache/archives/*.deb .
    cd "$home/sources"
    fetch_source mingw-w64
    fetch_source "llvm-toolchain-$clang"
  )
  {
    printf 'Debian %s\n' "$suite"
    for deb in "$home"/debs/*.deb; do dpkg-deb --show "$deb"; done
    printf 'source\t%s\n' "$(cd "$home/sources" && printf '%s ' *.orig.tar.*)"
  } >"$home/versions"
}

missing() {
  printf "Debian's mirror has no %s. docs/windows.md says what to do.\n" "$1"
  return 1
}

# fetch_source PACKAGE: upstream's tarball of the newest revision that the mirror really has.
fetch_source() {
  local revision
  for revision in $(apt-cache showsrc "$1" | sed -n 's/^Version: //p' | sort -rV); do
    apt-get source -qq --download-only --only-source "$1=$revision" || true
    ! compgen -G "$1_*.orig.tar.*" || return 0
  done
  missing "sources of $1"
}

# compiler: the programs in bin, started with the C library that they were built for.
compiler() {
  local tree=$home/build/tree host=$home/lib/host deb llvm name loader
  rm -rf "$tree" "$home/bin" "$home/lib"
  mkdir -p "$tree" "$home/bin" "$host"
  for deb in "$home"/debs/*.deb; do
    dpkg-deb --fsys-tarfile "$deb" | tar -x --keep-directory-symlink -C "$tree"
  done
  llvm=$(echo "$tree"/usr/lib/llvm-*)
  loader=$(patchelf --print-interpreter "$llvm/bin/clang")
  cp -a "$tree"/usr/lib/*-linux-gnu/*.so* "$host"
  for name in "$host"/lib{LLVM,clang-cpp}*.so*; do
    [[ -L $name ]] || patchelf --force-rpath --set-rpath "$host" "$name"
  done
  for name in clang lld llvm-{ar,nm,objcopy,rc,readobj,pdbutil}; do
    cp -L "$llvm/bin/$name" "$home/bin"
    patchelf --set-interpreter "$host/${loader##*/}" --force-rpath --set-rpath "$host" \
      "$home/bin/$name"
  done
  name=${llvm##*-}
  mkdir -p "$home/lib/clang/$name"
  cp -RL "$llvm/lib/clang/$name/include" "$home/lib/clang/$name"
  link_programs
}

# link_programs: the names that a cross compiler's users call; each program finds out what it is by its
# name, and clang reads the file of its target.
link_programs() {
  local link target
  for link in ld.lld:lld lld-link:lld llvm-ranlib:llvm-ar llvm-dlltool:llvm-ar llvm-strip:llvm-objcopy \
    llvm-windres:llvm-rc; do
    ln -sf "${link#*:}" "$home/bin/${link%:*}"
  done
  for target in aarch64 x86_64; do
    for link in clang:clang clang++:clang ar:llvm-ar ranlib:llvm-ar windres:llvm-rc; do
      ln -sf "${link#*:}" "$home/bin/$target-w64-mingw32-${link%:*}"
    done
    echo '-rtlib=compiler-rt -unwindlib=libunwind -stdlib=libc++ -fuse-ld=lld' \
      >"$home/bin/$target-w64-windows-gnu.cfg"
  done
}
