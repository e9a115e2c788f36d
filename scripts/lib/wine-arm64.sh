# Runs Windows ARM64 programs on any Linux machine: qemu runs the Wine of an arm64 Debian. Neither is
# installed on the machine. Sourced after common.sh, cache.sh, mirror.sh and wine.sh.

wine_suite=trixie # Debian 13, with Wine 10 (docs/windows.md says what to do when it is gone)

# arm64_prepare: fetches Wine and qemu into the cache and makes a Wine system there, unless they are
# there. Locks them until the calling script ends.
arm64_prepare() {
  ((EUID == 0)) || die "Running ARM64 programs needs root, for mounts, unshare and binfmt_misc."
  export arm64_home arm64_tree
  arm64_home=$(cache_dir "wine-arm64-$wine_suite")
  exec 8>"$arm64_home/lock"
  flock 8
  arm64_tree=$arm64_home/tree
  [[ ! -d $arm64_tree ]] || return 0

  step "Fetching Wine for ARM64"
  arm64_tree=$arm64_home/unfinished
  logged "$arm64_home/fetch.log" fetch_wine
  unpack_wine
  step "Making a Wine system for ARM64"
  logged "$arm64_home/wineboot.log" arm64_session timeout 300 scripts/lib/run-wine-arm64 wineboot --init
  mv "$arm64_tree" "$arm64_home/tree"
  arm64_tree=$arm64_home/tree
}

# fetch_wine: fetches the packages of the programs and the C library. Their other dependencies serve
# fonts, pictures, sound and devices, and Wine runs without them.
fetch_wine() {
  local package
  mkdir -p "$arm64_home/debs"
  use_suite "$arm64_home/apt" "$wine_suite" arm64
  cd "$arm64_home/debs"
  apt-get download -qq {libc6,libgcc-s1,libwine,wine64}:arm64 qemu-user
  for package in *.deb; do
    dpkg-deb --show "$package"
  done >"$arm64_home/versions"
}

unpack_wine() {
  local package
  rm -rf "$arm64_tree"
  mkdir -p "$arm64_tree"/{dev,proc,srv}
  ln -s usr/lib "$arm64_tree/lib"
  for package in "$arm64_home"/debs/*_arm64.deb; do
    dpkg-deb --extract "$package" "$arm64_tree"
  done
  ln -sf wineserver64 "$arm64_tree/usr/lib/wine/wineserver" # a shell script, and there is no shell
  dpkg-deb --fsys-tarfile "$arm64_home"/debs/qemu-user_*.deb |
    tar -xO ./usr/bin/qemu-aarch64 >"$arm64_home/qemu-aarch64"
  chmod +x "$arm64_home/qemu-aarch64"
  rm -rf "$arm64_home"/{apt,debs}
}

# arm64_session COMMAND [ARGUMENT ...]: runs the command, which may use run-wine-arm64, in
# namespaces where the project, the cache and /tmp have the same paths inside the tree as outside.
# At its end all processes that it started end and nothing stays mounted.
arm64_session() {
  (
    wine_environment /srv/wine
    # Debian's Wine is marked for branch targets that its assembly lacks. This processor ignores it.
    export QEMU_CPU=neoverse-n1
    unshare --mount --pid --fork --kill-child \
      bash -euo pipefail -c "$(declare -f enter_session qemu_rule); enter_session \"\$@\"" \
      arm64_session "$@"
  )
}

enter_session() {
  local folder status=0
  mount -t proc proc /proc
  mount --rbind /proc "$arm64_tree/proc"
  mount --rbind /dev "$arm64_tree/dev"
  for folder in /tmp "$PWD" "${arm64_home%/*}"; do
    mkdir -p "$arm64_tree$folder"
    mount --bind "$folder" "$arm64_tree$folder"
  done
  if [[ -n ${arm64_dlls:-} ]]; then # these instead of Wine's own of the same names
    for folder in usr/lib/aarch64-linux-gnu/wine/aarch64-windows srv/wine/drive_c/windows/system32; do
      folder=$arm64_tree/$folder
      mount -t overlay -o "lowerdir=$arm64_dlls:$folder" overlay "$folder"
    done
  fi
  qemu_rule add
  "$@" || status=$?
  qemu_rule remove
  return "$status"
}

# qemu_rule add|remove: the kernel's rule to start arm64 programs with qemu. The first row has the first
# bytes of such a program, the second row the mask.
qemu_rule() {
  local rules=/proc/sys/fs/binfmt_misc rule=wine-arm64
  [[ -e $rules/register ]] || mount -t binfmt_misc binfmt_misc "$rules"
  [[ ! -e $rules/$rule ]] || echo -1 >"$rules/$rule"
  if [[ $1 == add ]]; then
    printf '%s' ":$rule:M::" \
      '\x7fELF\x02\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\xb7\x00' ':' \
      '\xff\xff\xff\xff\xff\xff\xff\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff' \
      ":$arm64_home/qemu-aarch64:F" >"$rules/register"
  fi
}
