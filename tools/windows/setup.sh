#!/usr/bin/env bash
# Installs what the build for Windows needs and this Debian system lacks: the compiler, Wine and the headers as
# packages, through sudo unless it runs as root; what is not packaged for this compiler, built from Debian's
# sources. The libraries and copies of the headers go into $QUORVAN_WINDOWS_PREFIX, else into
# mxf-quorvan/windows of the user's cache. Each part is done once.
#
#   tools/windows/setup.sh            for the presets windows and windows-release: libebur128 and GoogleTest; the
#                                     first time takes some minutes
#   tools/windows/setup.sh --window   also for the preset windows-window and its package: Qt; the first time
#                                     takes half an hour
#   tools/windows/setup.sh --has-window   installs nothing; its status is 0 where Qt is there
#
# The status is 3 where packages or sources cannot be had.
set -euo pipefail

prefix=${QUORVAN_WINDOWS_PREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/mxf-quorvan/windows}
toolchain=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../cmake" && pwd)/mingw-w64.cmake
stamp=$prefix/complete-1
qt_stamp=$prefix/qt/complete-1
started=$SECONDS

packages=(
  g++-mingw-w64-x86-64-posix wine wine64 locales python3 ffmpeg cmake ninja-build pkg-config
  libcli11-dev nlohmann-json3-dev libfmt-dev libutfcpp-dev libxxhash-dev googletest
)
window=no
case "${1-}" in
  '') ;;
  --has-window) [[ -e $qt_stamp ]] && exit 0 || exit 1 ;;
  --window)
    window=yes
    packages+=(
      qt6-base-dev qt6-base-dev-tools qt6-translations-l10n nsis pandoc libebur128-dev
      xvfb xauth fonts-ipafont-gothic fonts-inconsolata
    )
    ;;
  *)
    echo "usage: tools/windows/setup.sh [--window|--has-window]" >&2
    exit 2
    ;;
esac

ebur128_source=libebur128_1.2.6.orig.tar.gz
ebur128_checksum=baa7fc293a3d4651e244d8022ad03ab797ca3c2ad8442c43199afe8059faa613
qt_source=qt6-base_6.4.2+dfsg.orig.tar.xz
qt_checksum=4f14b89a9463a540fd84a6718b8519a2297119b454ef547721015a9e9019ae9e
# What the window does not use, and what needs headers that the compiler does not have.
qt_without=(sql network xml dbus concurrent printsupport vulkan icu directwrite direct2d tabletevent)

say() { echo "windows setup: $*" >&2; }

install_packages() {
  local missing=() as_root=() package
  for package in "${packages[@]}"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0
  [[ $(id -u) -eq 0 ]] || as_root=(sudo)
  say "installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# Downloads the source of a package into the working directory, from where the system's own entries for
# Debian lead. The entries of the system stay as they are.
download_source() {  # package, file, SHA-256 of the file
  mkdir -p lists/partial sources
  sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >sources.list 2>/dev/null || true
  sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >sources/debian.sources 2>/dev/null ||
    rm -f sources/debian.sources
  local entries=(-o "Dir::Etc::sourcelist=$PWD/sources.list" -o "Dir::Etc::sourceparts=$PWD/sources"
    -o "Dir::State::lists=$PWD/lists" -o APT::Sandbox::User=root)
  { apt-get "${entries[@]}" update -qq && apt-get "${entries[@]}" source -qq --download-only --tar-only "$1"; } ||
    cannot_be_had "the source of $1 cannot be downloaded"
  echo "$3  $2" | sha256sum --check --quiet
}

build() {  # source folder, further arguments of cmake
  local source=$1
  shift
  cmake -G Ninja -S "$source" -B "build-$(basename "$source")" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@" >/dev/null
  cmake --build "build-$(basename "$source")" --target install >/dev/null
}

# Copies the headers of a library without other files, out of the system's folder: there the compiler for
# Windows would find the headers of this system, too. Describes the library for find_package.
copy_headers() {  # package name, target, definition or nothing, files and folders
  local name=$1 target=$2 definition=$3
  shift 3
  local folder=$prefix/lib/cmake/$name
  mkdir -p "$prefix/include" "$folder"
  (cd /usr/include && cp -rL "$@" "$prefix/include")
  cat >"$folder/${name}Config.cmake" <<EOF
add_library($target INTERFACE IMPORTED)
set_target_properties($target PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "$prefix/include"
  INTERFACE_COMPILE_DEFINITIONS "$definition")
EOF
}

cannot_be_had() {
  say "$@"
  exit 3
}

command -v dpkg-query >/dev/null ||
  cannot_be_had "no Debian system; please install by hand what is missing of: ${packages[*]} libebur128"
install_packages >&2 || cannot_be_had "these packages cannot be installed"
export QUORVAN_WINDOWS_PREFIX=$prefix
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

build_libraries() {
  say "building libraries in $prefix; this takes about a minute"
  copy_headers fmt fmt::fmt FMT_HEADER_ONLY fmt
  copy_headers CLI11 CLI11::CLI11 "" CLI
  copy_headers nlohmann_json nlohmann_json::nlohmann_json "" nlohmann
  copy_headers utf8cpp utf8cpp "" utf8 utf8.h xxhash.h xxh3.h
  download_source libebur128 "$ebur128_source" "$ebur128_checksum"
  mkdir ebur128
  tar -xf "$ebur128_source" -C ebur128 --strip-components=1
  build ebur128 -DENABLE_INTERNAL_QUEUE_H=ON
  build /usr/src/googletest -DBUILD_GMOCK=OFF
  touch "$stamp"
  say "done in $((SECONDS - started)) seconds"
}

# The DLLs of the compiler lie beside those of Qt, so that one folder holds all that a program needs.
copy_compiler_dlls() {
  local dll
  for dll in libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll; do
    cp "$(x86_64-w64-mingw32-g++-posix -print-file-name="$dll")" "$prefix/qt/bin"
  done
}

build_qt() {
  local feature features=()
  say "building Qt in $prefix/qt; this takes 20 to 30 minutes on two processors"
  download_source qt6-base "$qt_source" "$qt_checksum"
  mkdir qt
  tar -xf "$qt_source" -C qt --strip-components=1
  for feature in "${qt_without[@]}"; do
    features+=("-DFEATURE_$feature=OFF")
  done
  build qt -DQUORVAN_WINDOW=ON -DCMAKE_INSTALL_PREFIX="$prefix/qt" -DBUILD_SHARED_LIBS=ON \
    -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF -DINPUT_opengl=no "${features[@]}"
  copy_compiler_dlls
  mkdir -p "$prefix/qt/translations"
  cp /usr/share/qt6/translations/qtbase_ja.qm "$prefix/qt/translations"
  touch "$qt_stamp"
  say "done in $((SECONDS - started)) seconds"
}

[[ -e $stamp ]] || build_libraries
[[ $window == no || -e $qt_stamp ]] || build_qt
