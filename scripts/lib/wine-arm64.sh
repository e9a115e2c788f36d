# Runs Windows ARM64 programs on any Linux machine: in an arm64 Debian tree with Wine, whose programs
# qemu runs. Sourced after common.sh, cache.sh and wine.sh.

binfmt=/proc/sys/fs/binfmt_misc

# arm64_prepare: sets arm64_tree to the folder of the tree, which it makes in the cache the first
# time (a minute, 1.4 GB). Root only: the tree is entered by chroot.
arm64_prepare() {
  ((EUID == 0)) || die "Running ARM64 programs needs root, for chroot and mounts."
  require debootstrap=debootstrap qemu-aarch64-static=qemu-user-static
  arm64_tree=$(cache_dir arm64)/debian
  register_qemu
  [[ ! -f $arm64_tree/ready ]] || return 0
  step "Making an arm64 Debian tree with Wine"
  make_tree
  step "Making a Wine system in it"
  arm64_session arm64_wine wineboot --init >"$arm64_tree/setup.log" 2>&1 ||
    die "$(cat "$arm64_tree/setup.log")"
  touch "$arm64_tree/ready"
}

# The kernel starts arm64 programs with qemu, by the rule that the qemu package brings.
register_qemu() {
  [[ -f $binfmt/register ]] || mount -t binfmt_misc binfmt_misc "$binfmt"
  [[ -f $binfmt/qemu-aarch64 ]] ||
    grep '^:' /usr/lib/binfmt.d/qemu-aarch64.conf >"$binfmt/register"
}

# debootstrap fetches and checks the packages; they are only unpacked, not configured, for that
# would run their scripts, through qemu, and Wine needs nothing of it.
make_tree() {
  local codename mirror package
  codename=$(. /etc/os-release && printf '%s' "$VERSION_CODENAME")
  mirror=$(apt-get indextargets --format '$(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
    awk -v codename="$codename" '$1 == codename { print $2; exit }')
  [[ -n $mirror ]] || die "apt has no source for Debian $codename."
  rm -rf "$arm64_tree"
  debootstrap --foreign --arch=arm64 --variant=minbase --include=libwine,wine64 \
    --keyring=/usr/share/keyrings/debian-archive-keyring.gpg \
    "$codename" "$arm64_tree" "$mirror" >"$arm64_tree.log" 2>&1 || die "$(tail "$arm64_tree.log")"
  for package in "$arm64_tree"/var/cache/apt/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$arm64_tree"
  done
  rm -rf "$arm64_tree"/var/cache/apt/archives "$arm64_tree/proc"
  mkdir -p "$arm64_tree"/{proc,srv}
  cp "$arm64_tree/usr/share/base-passwd/passwd.master" "$arm64_tree/etc/passwd"
}

# arm64_session FUNCTION [ARGUMENT ...]: calls the function, or a command, in a namespace where the
# project, /tmp and the arguments' paths mean the same inside the tree as outside. At its end all
# that it started ends and nothing stays mounted.
arm64_session() {
  export arm64_tree
  export -f arm64_wine wine_environment
  unshare --mount --pid --fork --kill-child bash -euc '
    mount -t proc proc /proc
    mount --rbind /proc "$arm64_tree/proc"
    mount --rbind /dev "$arm64_tree/dev"
    for folder in /tmp "$PWD"; do
      mkdir -p "$arm64_tree$folder"
      mount --bind "$folder" "$arm64_tree$folder"
    done
    "$@"' arm64_session "$@"
}

# arm64_wine PROGRAM [ARGUMENT ...]: runs a Windows program, in a session only.
arm64_wine() {
  wine_environment /srv/wine
  chroot "$arm64_tree" /usr/bin/env -C "$PWD" /usr/lib/wine/wine64 "$@"
}
