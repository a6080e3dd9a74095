#!/usr/bin/env bash
# Compares, for each room (folder) of src/, the rooms that its files include with the arrows that its
# CMakeLists.txt names and with its row in docs/architecture.md. Prints every difference. The exit status is
# 0 without a difference, else 1.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

differences=0

# Prints the other rooms that the files of a room include, one a line.
included() {  # room, arguments by which find selects the files
  local room=$1
  shift
  find "src/$room" -type f \( "$@" \) -exec grep -hoE '#include "[a-z]+/' {} + |
    sed -E 's/.*"([a-z]+)\//\1/' | sort -u | grep -vx "$room" || true
}

# Prints the rooms that follow one of the keywords (USES, WITHIN, PUBLIC, PRIVATE) in a room's CMakeLists.txt.
named() {  # room, keywords as a regular expression
  tr '\n' ' ' <"src/$1/CMakeLists.txt" | grep -oE "\b($2)( +[A-Za-z0-9_:]+)*" |
    sed -E 's/\b(PRIVATE|WITHIN|PUBLIC|USES)\b/\n\1/g' | grep -E "^($2)\b" |
    grep -oE 'quorvan_[a-z]+' | sed 's/quorvan_//' | sort -u | grep -vxE "$1|pictures" || true
}

# Prints the rooms in the last column of a room's row in docs/architecture.md.
told() {  # room
  grep -E "^\| \`src/$1/\` \|" docs/architecture.md | sed -E 's/.*\|([^|]*)\|$/\1/' |
    grep -oE '[a-z]+' | sort -u || true
}

# Prints the differences between two lists of rooms and notes that there is one.
compare() {  # name of the first list, name of the second list, first list, second list
  local lines
  lines=$(diff <(echo "$3") <(echo "$4") | grep '^[<>]' || true)
  [[ -z $lines ]] && return
  echo "$1 (<) and $2 (>) differ:"
  echo "$lines"
  differences=1
}

for folder in src/*/; do
  room=$(basename "$folder")
  headers=$(included "$room" -name '*.h')
  all=$(included "$room" -name '*.h' -o -name '*.cpp')
  compare "the headers of $room" "its USES" "$headers" "$(named "$room" 'USES|PUBLIC')"
  compare "the files of $room" "its arrows" "$all" "$(named "$room" 'USES|PUBLIC|WITHIN|PRIVATE')"
  compare "the files of $room" "docs/architecture.md" "$all" "$(told "$room")"
done
exit "$differences"
