#!/bin/sh
# The rooms of qz, the lowest first. A source or header may include its own
# room and the rooms before it, never one after it: the order is what keeps
# the call graph between rooms free of circles. <qz/qz.h> stands above all
# rooms; <qz/export.h> below them. README "Layout" says what each room holds.
ROOMS="core os time sync value errors diagnostics faults logging services threads"

cd "$(dirname "$0")/.." || exit 1
for file in $(find src include/qz -name '*.h' -o -name '*.cpp' | sort); do
  grep -Hn '^[[:space:]]*#[[:space:]]*include[[:space:]]*[<"]' "$file"
done | awk -v rooms="$ROOMS" '
  BEGIN { n = split(rooms, list, " "); for (i = 1; i <= n; i++) rank[list[i]] = i }
  # The room of a file: src/<room>/... or include/qz/<room>/...
  function room_of_file(path,  parts) {
    split(path, parts, "/")
    return parts[1] == "src" ? parts[2] : parts[3]
  }
  # The room of an included name: <qz/<room>/...> or "<room>/..." (the
  # library private headers, found through src/); "" for anything else.
  function room_of_include(name,  parts) {
    n = split(name, parts, "/")
    if (parts[1] == "qz") return n > 2 ? parts[2] : ""
    return parts[1] in rank ? parts[1] : ""
  }
  {
    split($0, head, ":"); file = head[1]; line = head[2]
    if (file ~ /^include\/qz\/[^\/]*$/) next  # qz.h above all rooms, export.h below
    match($0, /[<"][^>"]*[>"]/); name = substr($0, RSTART + 1, RLENGTH - 2)
    from = room_of_file(file); to = room_of_include(name)
    if (!(from in rank)) { print file ": in no room of the order"; bad = 1; next }
    if (to == "") next
    if (!(to in rank)) { print file ":" line ": includes " name " of no room in the order"; bad = 1; next }
    if (rank[to] > rank[from]) {
      print file ":" line ": " from " includes " name ", which is in " to ", a higher room"
      bad = 1
    }
  }
  END {
    if (!bad) print "every include points to its own room or a lower one"
    exit bad
  }'
