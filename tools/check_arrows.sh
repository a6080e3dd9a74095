#!/usr/bin/env bash
# Compares the rooms that each room of src/ includes with the arrows that its CMakeLists.txt names and
# with its row in docs/architecture.md. Prints every difference; the exit status is 1 when there is one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

differences=0

# The rooms that files of a room include, its own left out.
included() {  # room, find's tests for the files
  local room=$1
  shift
  find "src/$room" -type f \( "$@" \) -exec grep -hoE '#include "[a-z]+/' {} + |
    sed -E 's/.*"([a-z]+)\//\1/' | sort -u | grep -vx "$room" || true
}

# The rooms that stand behind one of the words in the link lines of a room.
named() {  # room, words as a regular expression
  tr '\n' ' ' <"src/$1/CMakeLists.txt" | grep -oE "\b($2)( +[A-Za-z0-9_:]+)*" |
    sed -E 's/\b(PRIVATE|WITHIN|PUBLIC|USES)\b/\n\1/g' | grep -E "^($2)\b" |
    grep -oE 'quorvan_[a-z]+' | sed 's/quorvan_//' | sort -u | grep -vxE "$1|pictures" || true
}

# The rooms in the last column of a room's row of the page.
told() {  # room
  grep -E "^\| \`src/$1/\` \|" docs/architecture.md | sed -E 's/.*\|([^|]*)\|$/\1/' |
    grep -oE '[a-z]+' | sort -u || true
}

compare() {  # what, what it is held against, both lists
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
