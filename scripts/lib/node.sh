# A released Node.js for Windows. Sourced after common.sh and cache.sh.

# node_prepare: sets ZYN_NODE_MODULES to a folder with the packages of tests/node. npm installs them in
# the cache the first time and after each change of the list.
node_prepare() {
  local home
  home=$(cache_dir node)
  export ZYN_NODE_MODULES=$home/node_modules
  if ! cmp -s tests/node/package-lock.json "$home/installed"; then
    require npm=npm
    step "Installing Node.js for Windows"
    cp tests/node/package.json tests/node/package-lock.json "$home"
    # --force, since the packages are for another system than this one.
    npm ci --prefix "$home" --force --ignore-scripts --no-audit --no-fund --loglevel=error >&2
    cp tests/node/package-lock.json "$home/installed"
  fi
}
