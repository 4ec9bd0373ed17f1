#!/usr/bin/env bash
# install-packages.sh [LIST...]: installs the packages of the lists (packages.txt) that are missing. Prints what it
# does and asks no questions.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[ $# -gt 0 ] || set -- packages.txt
mapfile -t wanted < <(grep -hvE '^[[:space:]]*(#|$)' "$@")
missing=()
for package in "${wanted[@]}"; do
  state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$state" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "Packages: all ${#wanted[@]} are installed."
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! sudo -n true 2>/dev/null; then
    echo "These packages are missing and this user can't install them without a password:" >&2
    echo "  ${missing[*]}" >&2
    echo "Run once: sudo apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo -n)
fi
echo "Packages: installing ${#missing[@]} of ${#wanted[@]}: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get "$@" </dev/null >>"$log" 2>&1; }
if ! { apt update && apt install -y --no-install-recommends "${missing[@]}"; }; then
  tail -n 30 "$log" >&2
  echo "The packages could not be installed; the last lines above say why." >&2
  exit 1
fi
