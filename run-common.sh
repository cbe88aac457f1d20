# Sourced by run-example, run-tests and make-packages: goes to the project's folder and provides
# `need_packages`, which sees to it that Debian packages are there.
set -euo pipefail
unset CDPATH
cd "$(dirname "${BASH_SOURCE[0]}")"

mkdir -p build 2>/dev/null && [ -w build ] ||
  { echo "cannot write to $PWD/build: take a copy of this folder that is your own" >&2; exit 1; }

# Installs what is missing when run as root, otherwise names it and stops.
need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages: ${missing[*]}" >&2
    echo "install them with: sudo apt-get update && sudo apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "installing ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
