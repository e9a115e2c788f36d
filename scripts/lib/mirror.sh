# Where apt fetches Debian's packages from. Sourced after common.sh.

# debian_mirror: prints the address from which this machine's apt has its own release.
debian_mirror() {
  local codename mirror
  codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
  mirror=$(apt-get indextargets --format '$(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
    awk -v codename="$codename" '$1 == codename { print $2; exit }')
  [[ -n $mirror ]] || die "apt has no source for Debian's release '$codename'."
  printf '%s\n' "$mirror"
}

# use_suite FOLDER SUITE [ARCHITECTURE]: makes apt's commands of this shell use only this suite of
# Debian, for this machine and for the architecture. Their lists, their downloads and a record without
# installed packages are in the folder, which is made new.
use_suite() {
  local apt=$1 suite=$2 architecture mirror
  mirror=$(unset APT_CONFIG && debian_mirror)
  rm -rf "$apt"
  mkdir -p "$apt"/{lists,cache/archives}/partial
  : >"$apt/status"
  printf '%s [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] %s %s main\n' \
    deb "$mirror" "$suite" deb-src "$mirror" "$suite" >"$apt/sources"
  for architecture in "$(dpkg --print-architecture)" "${@:3}"; do
    printf 'APT::Architectures:: "%s";\n' "$architecture"
  done >"$apt/configuration"
  cat >>"$apt/configuration" <<END
APT::Install-Recommends "false";
APT::Sandbox::User "root";
Acquire::Languages "none";
Dir::Cache "$apt/cache";
Dir::Etc::sourcelist "$apt/sources";
Dir::Etc::sourceparts "/dev/null";
Dir::State "$apt";
Dir::State::lists "$apt/lists";
Dir::State::status "$apt/status";
END
  export APT_CONFIG=$apt/configuration
  apt-get update -qq
}
