# Sourced. Where the scripts keep what is costly to fetch or to set up.

# cache_dir NAME: makes and prints the folder NAME of the project's cache: under XDG_CACHE_HOME
# where that is set, else under .cache in the project's root (REPO_ROOT, set by the caller).
cache_dir() {
  local dir="${XDG_CACHE_HOME:+$XDG_CACHE_HOME/zynsysteminfo}"
  dir="${dir:-$REPO_ROOT/.cache}/$1"
  mkdir -p "$dir"
  printf '%s\n' "$dir"
}
