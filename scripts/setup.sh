#!/usr/bin/env bash
# Installs the Debian packages that a step needs and that are missing: setup.sh [build|check|bench|fuzz]...
# Without an argument: what building and testing need. As root, or through sudo.
set -euo pipefail

packages_for() {
  case "$1" in
    build) echo cmake ninja-build g++ ccache pkg-config libsqlite3-dev libicu-dev libzstd-dev libcli11-dev libgtest-dev libgmock-dev
      echo libcmark-dev libxml2-dev tidy ;;
    check) echo clang-format python3 ;;
    bench) echo libbenchmark-dev liblmdb-dev libpugixml-dev liblua5.4-dev libroaring-dev ;;
    fuzz) echo clang libclang-rt-dev llvm ;;
    *)
      echo "setup.sh: no such step: $1" >&2
      exit 2
      ;;
  esac
}

if ! command -v dpkg-query >/dev/null; then
  echo "setup.sh: no dpkg here; docs/architecture.md names what has to be installed by hand" >&2
  exit 0
fi

wanted=()
for step in "${@:-build}"; do
  # shellcheck disable=SC2207
  wanted+=($(packages_for "$step"))
done

missing=()
for package in "${wanted[@]}"; do
  state=$(dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null || true)
  grep -qx installed <<<"$state" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup.sh: these packages are missing, and neither root nor sudo is at hand:" "${missing[@]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing:" "${missing[@]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
