#!/usr/bin/env bash
# events.sh QUORLIN QUORLIN-JSON PROJECT: the events of every example, of broken command lines and of a full disk.
set -u
quorlin=$(realpath "$1")
json=$(realpath "$2")
project=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

fail() {
    failed=1
    echo "FAILED: $1"
}

# both NAME ARGUMENT...: the same run with each program.
both() {
    local name=$1 code=0 json_code=0
    shift
    "$quorlin" "$@" >"$folder/$name.stdout" 2>"$folder/$name.stderr" || code=$?
    "$json" "$@" >"$folder/$name.events" 2>"$folder/$name.events.stderr" || json_code=$?
    [ $code = $json_code ] || fail "$name: exit code $json_code, quorlin's is $code"
}

while read -r name example input; do
    case "$name" in '' | '#'*) continue ;; esac
    cd "$project/examples/$example" && both "$name" -i "$input"
    echo "== $name" && grep -E '^\{"event":"(start|playlist|segment|reason)"' "$folder/$name.events"
done <"$project/examples/list" >"$folder/facts.txt"
sed -i 's/"version":"[^"]*"/"version":""/' "$folder/facts.txt"
[ -z "${QUORLIN_UPDATE_GOLDEN:-}" ] || cp "$folder/facts.txt" "$project/tests/program/golden/facts.txt"
diff "$project/tests/program/golden/facts.txt" "$folder/facts.txt" || fail "the facts of the examples"
cd "$folder"
both no-arguments
both unknown-option -x
both no-value -i
both not-there -i missing.m3u8
both unknown-kind -i input.mp4
printf '#EXTM3U\n#EXTINF:4,\n\xff\xc3\xa9\x01"\\\n' >$'odd\xff\xc3\x28"name.m3u8'
both bytes-that-are-no-utf8 -i $'odd\xff\xc3\x28"name.m3u8'
"$project/tests/program/check_events.py" "$project/docs/events.schema.json" "$json" "$folder" || failed=1

"$json" -i "$project/examples/hls-ts/master.m3u8" >/dev/full 2>"$folder/full"
[ $? = 255 ] || fail "a full disk: exit code"
grep -qxF "quorlin: standard output: cannot be written" "$folder/full" || fail "a full disk: nothing says so"

# Every id can be explained, in words, which are indented and fit into 80 columns.
"$json" --ids | while read -r id; do
    "$json" --explain "$id" >"$folder/explanation"
    [ "$(wc -w <"$folder/explanation")" -gt 8 ] && ! tail -n +3 "$folder/explanation" | grep -qvE '^$|^    [^ ].{0,75}$' || echo "$id"
done >"$folder/unexplained"
[ ! -s "$folder/unexplained" ] || fail "no explanation: $(tr '\n' ' ' <"$folder/unexplained")"
"$json" --explain no-such-id >/dev/null 2>&1 && fail "an unknown id is explained"
exit $failed
