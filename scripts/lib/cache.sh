# The cache of downloads and builds that take long. Sourced after common.sh.

# cache_dir NAME: makes and prints the folder NAME of the project's cache, an absolute path. All clones
# of a user share it. Any folder in it may be deleted; the scripts make it again.
cache_dir() {
  local dir=${XDG_CACHE_HOME:-$HOME/.cache}/zynsysteminfo/$1
  mkdir -p "$dir"
  printf '%s\n' "$dir"
}
