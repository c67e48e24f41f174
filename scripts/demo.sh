#!/usr/bin/env bash
# The whole job on real files: demo.sh BUILD-DIRECTORY FOLDER
# One process imports, a second replaces a word by a cursor, a third compares what is stored with what was.
set -euo pipefail

build=$(cd "$1" && pwd)
from=$2
place=$build/demo
tool=$build/bin/quillon
store=$place/papers.vlt
before=$place/before.vlt

fail() {
  echo "demo: $*" >&2
  exit 1
}

rm -rf "$place"
export QUILLON_HOME=$place
"$tool" init "$place" --converters "$build/lib/quillon" >/dev/null
"$tool" create "$store" --title "Papers of $(basename "$from")" >/dev/null

echo "== process 1 imports $from"
"$tool" import "$store" "$from"
# With the last process gone the file is whole by itself, and may be copied.
[ ! -s "$store-wal" ] || fail "the store wasn't closed"
cp "$store" "$before"

# The largest document, and a word from the middle of it.
IFS=$'\t' read -r id bytes _ _ subject < <("$tool" ls "$store" | sort -t $'\t' -k2,2nr | sed -n 1p)
"$tool" show "$store" "$id" --text >"$place/before.txt"
grep -oE '[A-Za-z]{6,}' "$place/before.txt" >"$place/words.txt" || fail "no word to replace in $subject"
word=$(sed -n "$(($(wc -l <"$place/words.txt") / 2 + 1))p" "$place/words.txt")
new=Quillon

echo "== process 2 finds \"$word\" in document $id ($subject, $bytes bytes) and makes it \"$new\""
"$tool" replace "$store" "$id" "$word" "$new"

echo "== process 3 compares"
status=0
"$tool" diff "$before" "$store" >"$place/diff.txt" || status=$?
cat "$place/diff.txt"
[ "$status" -eq 4 ] || fail "diff ended with $status where 4 was due"
grep -q "^document $id, Body: 1 -> 1 records changed, " "$place/diff.txt" || fail "more than the one record changed"
[ "$(grep -c '^document ' "$place/diff.txt")" -eq 1 ] || fail "more than the one item changed"
grep -q '^1 documents changed, 0 added, 0 removed, ' "$place/diff.txt" || fail "other documents changed"
"$tool" show "$store" "$id" --text >"$place/after.txt"
sed "0,/$word/s//$new/" "$place/before.txt" | cmp - "$place/after.txt" || fail "the text isn't what it should be"
"$tool" check "$store"

# A long body is stored as several items of its name.
bodies=$("$tool" show "$store" "$id" | grep -c '^Body ')
echo "the body of document $id stands in $bodies items"

echo "== the store"
"$tool" info "$store" --count
cat <<END

Go on with it:
  export QUILLON_HOME=$place PATH=$build/bin:\$PATH
  quillon ls $store
  quillon show $store $id --records | head -40
  quillon replace $store $id "$new" "$word" && quillon diff $before $store
END
