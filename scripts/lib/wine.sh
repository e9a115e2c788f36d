# Runs Windows x64 programs quietly and without a display, in a Wine system of their own. Sourced
# after common.sh.

wine_program=/usr/lib/wine/wine64

# wine_environment PREFIX: exports the environment of every Wine process of the system in the folder
# PREFIX: no diagnostics, no dialog that offers to fetch .NET or HTML support, no menu entries.
wine_environment() {
  export WINEPREFIX=$1 WINEARCH=win64 WINEDEBUG=-all
  export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d'
  unset DISPLAY WAYLAND_DISPLAY
}

# wine_prepare PREFIX: installs Wine and exports its environment. Unless PREFIX has a Wine system, makes
# one there that reports Windows 10.
wine_prepare() {
  require "$wine_program=wine64" wineserver=wine
  wine_environment "$1"
  [[ ! -f $1/windows-10 ]] || return 0
  step "Making a Wine system"
  mkdir -p "$1"
  { "$wine_program" wineboot --init && "$wine_program" winecfg -v win10; } \
    >"$1/setup.log" 2>&1 || die "$(cat "$1/setup.log")"
  wineserver --kill --wait || true # writes the registry
  touch "$1/windows-10"
}

# wine_start: keeps the system that wine_prepare chose running, with a shell that waits for input.
# Otherwise the first process starts it, which takes a second, and the last one ends it.
wine_start() {
  coproc wine_system { exec "$wine_program" cmd >/dev/null; }
}

# wine_stop: ends every process of the system that wine_prepare chose, as a reboot would.
wine_stop() {
  wineserver --kill || true
}
