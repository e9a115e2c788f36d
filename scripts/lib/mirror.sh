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
