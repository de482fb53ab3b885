# Sourced by ./check and ./demo.  need_packages PACKAGE...: installs those Debian packages that are missing.
# Asks apt for nothing when all are there, so that it costs nothing on a machine that is set up and works offline.
need_packages() {
  local missing=() package as_root=() log
  command -v dpkg-query >/dev/null || {
    echo "error: this script installs with apt-get and needs Debian or a relative; elsewhere provide: $*" >&2
    return 1
  }
  for package in "$@"; do
    [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  if ((EUID != 0)); then
    command -v sudo >/dev/null || {
      echo "error: not root and no sudo; as root run: apt-get install ${missing[*]}" >&2
      return 1
    }
    as_root=(sudo)
  fi
  echo "installing ${missing[*]}"
  log=$(mktemp)
  # The package list of last time may still do, so a failed update alone is no failure.
  "${as_root[@]}" apt-get update -q >"$log" 2>&1 || true
  if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    rm -f "$log"
    echo "error: could not install ${missing[*]}" >&2
    return 1
  fi
  rm -f "$log"
}
