#!/usr/bin/env bash
# The whole job on real files: demo.sh BUILD-DIRECTORY FOLDER
# One process imports, a second replaces a word by a cursor, a third compares what is stored with what was. Then a view
# over the documents and notes on them is made, read, searched, and followed while a document changes. A document is run
# through a form. Last a Markdown file with a table comes in, is changed, and goes out as HTML. Each command is a process
# of its own, and what it prints is checked.
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
echo "== notes on documents, and a note on a note"
"$tool" ls "$store" | sed -n 1,20p | while IFS=$'\t' read -r each _; do
  "$tool" note "$store" "$each" "a note on document $each" >/dev/null
done
"$tool" note "$store" "$id" "the largest document"
note=$("$tool" --json note "$store" "the largest document" "a note on the note" | grep -oE '"document":[0-9]+' | cut -d: -f2)

echo "== a view by categories, with sizes summed up and notes below their documents"
"$tool" view-create "$store" Papers --select 'SELECT @All' --column 'Category:categorized=Categories' \
  --column 'Note:responses=Subject' --column 'Size:total=Size' --column 'Subject:sorted=Subject'
view=$place/view.txt
"$tool" view "$store" Papers >"$view"
rows=$(wc -l <"$view")
"$tool" view "$store" Papers --count 16
total=$(tail -n 1 "$view")
echo "... $rows rows, the last: $total"
awk -F'\t' '$2 == "total" { total = $3 } $2 ~ /^[0-9]+$/ && $3 ~ /^[0-9]+ \| / { sum += $3 }
  END { exit !(sum > 0 && sum == total) }' "$view" || fail "the total isn't the sum of the rows"
[ "$(awk -F'\t' -v id="$id" '$2 == id' "$view" | wc -l)" -ge 2 ] || fail "a document isn't below each of its categories"
awk -F'\t' -v note="$note" '$2 == note && $3 == "    a note on the note" { found = 1 } END { exit !found }' "$view" ||
  fail "the note on the note isn't two levels below its document"

middle=$((rows / 2 + 1))
echo "== to row $middle by its ordinal"
"$tool" view "$store" Papers --from "$middle" --count 4 >"$place/middle.txt"
cat "$place/middle.txt"
sed -n "$middle,$((middle + 3))p" "$view" | cmp - "$place/middle.txt" || fail "other rows than those of the whole walk"

category=$("$tool" view "$store" Papers --categories | tail -n 1 | cut -f3)
inside=$(awk -F'\t' -v category="$category" '$2 == "category" { in_it = $3 == category } in_it && $2 ~ /^[0-9]+$/ &&
  $3 ~ /^[0-9]+ \| / { print $3; exit }' "$view")
inside=${inside#* | }
echo "== by the keys \"$category\" and \"$inside\""
"$tool" find "$store" Papers "$category" "$inside" >"$place/found.txt"
cat "$place/found.txt"
[ "$(cut -f1,2 "$place/found.txt" | grep -cxFf <(grep -F -- "| $inside" "$view" | cut -f1,2))" -ge 1 ] ||
  fail "the keys didn't find the document"

echo "== full text: $new"
"$tool" index "$store" >"$place/index.txt"
"$tool" search "$store" "$new" >"$place/hits.txt"
cat "$place/hits.txt"
cut -f2 "$place/hits.txt" | grep -qx "$id" || fail "the replaced word isn't found"
"$tool" search "$store" "$new" --view Papers >"$place/rows.txt"
cat "$place/rows.txt"
cut -f3 "$place/rows.txt" | grep -qx "$id" || fail "the search in the view doesn't find the document"

echo "== document $id gets another category, and the view follows"
"$tool" set "$store" "$id" Categories "A changed one" --watch Papers
"$tool" view "$store" Papers >"$place/view-after.txt"
head -n 2 "$place/view-after.txt"
[ "$(head -n 2 "$place/view-after.txt" | cut -f1,2 | tr '\t\n' '  ')" = "1 category 1.1 $id " ] ||
  fail "the view didn't follow"
[ "$(awk -F'\t' -v id="$id" '$2 == id' "$place/view-after.txt" | wc -l)" -eq 1 ] ||
  fail "the document is still below its former categories"
echo "== a form for the imported documents, and a document run through it"
"$tool" form-create "$store" Text --field Subject:text --field Categories:text,list --field Size:number \
  --field 'Kilobytes:number,computed=@If(@IsAvailable(Size); Size / 1024; 0)' --field 'Status:text="new"' \
  --translate 'Subject=@Trim(Subject)' --validate 'Subject=@If(Subject = ""; "no subject"; @Success)' --default
"$tool" form "$store" Text
"$tool" compute "$store" "$id"
"$tool" show "$store" "$id" >"$place/computed.txt"
grep -q '^Status (text.*: new$' "$place/computed.txt" || fail "the default value isn't there"
[ "$(awk '$1 == "Kilobytes" { print ($NF > 0) }' "$place/computed.txt")" = 1 ] || fail "nothing was computed"
"$tool" set "$store" "$note" Subject ""
! "$tool" compute "$store" "$note" --form Text 2>"$place/refused.txt" || fail "an empty subject is taken"
cat "$place/refused.txt"

echo "== a Markdown file with a table comes in, gets a row and an attachment"
cat >"$place/stock.md" <<'END'
# What is in store

Counted *today*; the **last** column is what is left.

| What | Left |
|---|---:|
| apples | 120 |
| plums | 40 |

1. count
2. write it down
END
"$tool" import "$store" "$place/stock.md"
"$tool" table "$store" stock.md --insert-row 3 pears 75
"$tool" attach "$store" stock.md "$place/view.txt" --compress --show-in Body
"$tool" detach "$store" stock.md view.txt -o "$place/view-again.txt"
cmp "$view" "$place/view-again.txt" || fail "the attachment came back changed"
mkdir "$place/out"
"$tool" export "$store" stock.md "$place/out/stock.html"
cmp "$view" "$place/out/view.txt" || fail "the attachment does not stand beside the page"
grep -q view.txt "$place/out/stock.html" || fail "the page doesn't show the attachment"
[ "$(grep -cE '<td.*>(apples|pears|plums|120|75|40)</td>' "$place/out/stock.html")" -eq 6 ] || fail "the table isn't whole"
grep -q '<strong>last</strong>' "$place/out/stock.html" || fail "bold is lost"
! command -v tidy >/dev/null || tidy -qe "$place/out/stock.html" || fail "tidy finds fault with the HTML"
if command -v chromium >/dev/null; then
  chromium --headless --no-sandbox --disable-gpu --user-data-dir="$place/browser" --window-size=640,480 \
    --screenshot="$place/out/stock.png" "file://$place/out/stock.html" >/dev/null 2>&1 || fail "no picture of the page"
  echo "its picture: $place/out/stock.png, $(wc -c <"$place/out/stock.png") bytes"
fi

"$tool" check "$store" >/dev/null || fail "the store isn't whole"

cat <<END

Go on with it:
  export QUILLON_HOME=$place PATH=$build/bin:\$PATH
  quillon ls $store
  quillon show $store $id --records | head -40
  quillon view $store Papers --categories
  quillon search $store '$new' --view Papers
  quillon replace $store $id "$new" "$word" && quillon diff $before $store
END
