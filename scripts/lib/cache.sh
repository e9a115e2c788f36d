# Where the scripts keep what is costly to fetch or to set up. Sourced after common.sh.

# cache_dir NAME: makes and prints the folder NAME of the project's cache, an absolute path: under
# XDG_CACHE_HOME where that is set, else under .cache in the project's root.
cache_dir() {
  local dir=$PWD/.cache/$1
  if [[ -n ${XDG_CACHE_HOME:-} ]]; then
    dir=$XDG_CACHE_HOME/zynsysteminfo/$1
  fi
  mkdir -p "$dir"
  printf '%s\n' "$dir"
}
