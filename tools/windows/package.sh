#!/usr/bin/env bash
# Makes what reaches the user on Windows: a zip and an installer, in build/windows-package. Builds the programs
# before, by the presets windows-window and windows-release; tools/windows/setup.sh --window must have run.
#
#   tools/windows/package.sh              the program
#   tools/windows/package.sh --companion  only the companion
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

tree=$PWD
prefix=${QUORVAN_WINDOWS_PREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/mxf-quorvan/windows}
folder=$tree/build/windows-package
packages=(nsis pandoc mingw-w64-x86-64-dev libebur128-dev libfmt-dev libcli11-dev libutfcpp-dev libxxhash-dev)
plugins=(platforms/qwindows.dll styles/qwindowsvistastyle.dll)
translations=/usr/share/qt6/translations/qtbase_ja.qm
icon=$tree/build/windows-window/src/ui/pictures/painted/program.ico
window=yes

say() { echo "windows package: $*" >&2; }

fail() {
  say "$@"
  exit 1
}

case "${1-}" in
  '') packages+=(libqt6core6 qt6-translations-l10n) ;;
  --companion) window=no ;;
  *) fail "usage: tools/windows/package.sh [--companion]" ;;
esac

check_tools() {
  local package missing=()
  for package in "${packages[@]}"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] || fail "please install ${missing[*]}"
  [[ $window == no || -e $prefix/qt/bin/Qt6Widgets.dll ]] ||
    fail "there is no Qt for the window; run tools/windows/setup.sh --window first"
}

# Builds programs and puts them into the working directory.
add_programs() {  # preset, programs
  local preset=$1
  shift
  (cd "$tree" && cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@") >&2
  cmake --install "$tree/build/$preset" --prefix "$PWD" --strip >/dev/null
}

# Prints where a DLL lies, and nothing for a DLL of Windows: the compiler can link it, or its name says so.
find_dll() {  # name
  local place
  [[ $1 != api-ms-win-* ]] || return 0
  for place in "$prefix/qt/bin/$1" "$(x86_64-w64-mingw32-g++-posix -print-file-name="$1")"; do
    if [[ -e $place ]]; then
      echo "$place"
      return
    fi
  done
  place=${1,,}
  [[ $(x86_64-w64-mingw32-g++-posix -print-file-name="lib${place%.*}.a") == */* ]] || fail "there is no $1"
}

# Puts beside the programs each DLL that one of the files asks for, itself or through another DLL.
add_dlls() {  # files
  local files=("$@") name place
  while [[ ${#files[@]} -gt 0 ]]; do
    for name in $(x86_64-w64-mingw32-objdump -p "${files[0]}" | sed -n 's/^\tDLL Name: //p'); do
      [[ ! -e $name ]] || continue
      place=$(find_dll "$name")
      [[ -n $place ]] || continue
      x86_64-w64-mingw32-strip -o "$name" "$place"
      files+=("$name")
    done
    files=("${files[@]:1}")
  done
}

add_qt() {
  local plugin
  for plugin in "${plugins[@]}"; do
    mkdir -p "$(dirname "$plugin")"
    x86_64-w64-mingw32-strip -o "$plugin" "$prefix/qt/plugins/$plugin"
  done
  mkdir translations
  cp "$translations" translations
  cp "$tree/packaging/windows/qt.conf" .
  add_dlls mxf-quorvan.exe "${plugins[@]}"
}

add_manual() {
  local page='<style>html { font: 16px/1.7 Meiryo, sans-serif } body { max-width: 60em } img { max-width: 100% }
    table { border-collapse: collapse } td, th { border: 1px solid; padding: 0.3em; vertical-align: top }</style>'
  pandoc --from gfm --to html5 --standalone --variable lang=ja --variable header-includes="$page" \
    --metadata pagetitle="MXF Quorvan" --output manual.html "$tree/docs/manual.ja.md"
  cp -r "$tree/docs/pictures" .
}

add_licences() {
  local of package
  mkdir licences
  cp "$tree/packaging/windows/licences.txt" licences/README.txt
  for of in GPL-3 LGPL-3; do
    cp "/usr/share/common-licenses/$of" "licences/$of.txt"
  done
  for of in xxhash=libxxhash-dev libebur128=libebur128-dev fmt=libfmt-dev cli11=libcli11-dev utfcpp=libutfcpp-dev \
    nsis=nsis-common gcc=gcc-mingw-w64-base mingw-w64=mingw-w64-x86-64-dev qt=libqt6core6; do
    package=${of#*=}
    [[ $package == libqt6core6 && $window == no ]] || cp "/usr/share/doc/$package/copyright" "licences/${of%=*}.txt"
  done
}

# Prints the commands that remove the files of the working directory, a folder behind its files.
removal() {
  find . -depth -type f -printf 'Delete "$INSTDIR/%P"\n' -o -mindepth 1 -type d -printf 'RMDir "$INSTDIR/%P"\n' | tr / '\\'
}

make_installer() {  # name of the package, version
  local icon_of_window=()
  [[ $window == no ]] || icon_of_window=("-DICON=$icon")
  removal >"$folder/removal.nsh"
  makensis -V2 -INPUTCHARSET UTF8 "-DVERSION=$2" "-DFILES=$PWD" "-DSIZE=$(du -sk . | cut -f1)" \
    "-DREMOVAL=$folder/removal.nsh" "-DOUTPUT=$folder/$1-setup.exe" "${icon_of_window[@]}" \
    "$tree/packaging/windows/installer.nsi"
}

check_tools
rm -rf "$folder"
mkdir -p "$folder/files"
cd "$folder/files"
if [[ $window == yes ]]; then
  add_programs windows-window mxf-quorvan mxf-quorvan-cli
  add_qt
fi
add_programs windows-release mxf-quorvan-cli  # which has its libraries inside
add_dlls mxf-quorvan-cli.exe
add_manual
add_licences
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$tree/build/windows-release/CMakeCache.txt")
package=mxf-quorvan-$version-windows-x64
make_installer "$package" "$version"
mv "$folder/files" "$folder/$package"
cd "$folder"
cmake -E tar cf "$package.zip" --format=zip "$package"
say "made build/windows-package/$package.zip and $package-setup.exe"
