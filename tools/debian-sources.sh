# For scripts that build from Debian's source packages: sourced, not run. The caller sets `work`, a folder of its own,
# and has dpkg-dev installed.

# Uses the machine's own package servers for sources, with separate lists and state: the machine's configuration does
# not change, and no special rights are needed.
list_sources() {
  local apt=$work/apt
  mkdir -p "$apt/parts" "$apt/lists/partial" "$apt/cache/archives/partial"
  if [ -e /etc/apt/sources.list.d/debian.sources ]; then
    sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$apt/parts/debian.sources"
  fi
  if [ -e /etc/apt/sources.list ]; then
    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$apt/parts/debian.list"
  fi
  source_options=(-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$apt/parts"
    -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root)
  apt-get "${source_options[@]}" update
}

# fetch_newest PACKAGE: unpacks the newest source that the server has.
fetch_newest() {
  local version
  for version in $(apt-cache "${source_options[@]}" showsrc "$1" | sed -n 's/^Version: //p' | sort -rVu); do
    (cd "$work" && apt-get "${source_options[@]}" source "$1=$version") && return
  done
  return 1
}

# fetch_pinned PACKAGE VERSION SHA256: unpacks that version. The hash is of its .dsc file, which has those of the others.
fetch_pinned() {
  local dsc=$work/$1_${2#*:}.dsc
  (cd "$work" && apt-get "${source_options[@]}" --download-only source "$1=$2")
  echo "$3  $dsc" | sha256sum --check --quiet
  (cd "$work" && dpkg-source --no-check --extract "$dsc" "$work/$1")
}
