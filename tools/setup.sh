#!/usr/bin/env bash
# Installs those Debian packages for building and testing that are missing, through sudo unless it runs as
# root. Prints nothing when no package is missing. Without dpkg it prints the list of packages and succeeds.
#
#   tools/setup.sh            what ./run and ./test need
#   tools/setup.sh --checks   also clang, clang-format and clang-tidy
#   tools/setup.sh --bench    also Google Benchmark
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config python3
  libcli11-dev nlohmann-json3-dev libfmt-dev libutfcpp-dev uuid-dev libebur128-dev libxxhash-dev
  qt6-base-dev qt6-translations-l10n fonts-ipafont-gothic fonts-inconsolata
  xvfb xauth openbox xdotool x11-utils
  libgtest-dev ffmpeg sox mediainfo sndfile-programs
)
case "${1-}" in
  '') ;;
  --checks) packages+=(clang libclang-rt-dev clang-format clang-tidy) ;;
  --bench) packages+=(libbenchmark-dev) ;;
  *)
    echo "usage: tools/setup.sh [--checks|--bench]" >&2
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null; then
  echo "setup: no Debian system; please install by hand what is missing of: ${packages[*]}" >&2
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ $status == installed ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: missing packages: ${missing[*]}" >&2
    echo "setup: install them as root: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

echo "setup: installing ${missing[*]}" >&2
{
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
} >&2
