# Shared by the tests that run quorlin over a table of cases, in a folder of their own.
set -u
program=$(realpath "$1")
folder=$(mktemp -d)
trap 'chmod -R u+rwX "$folder"; rm -rf "$folder"' EXIT
chmod 755 "$folder"
mkdir -m 777 "$folder/work"
cd "$folder/work" || exit 1
cases=0
failed=0

quorlin() {
    timeout 60 ${QUORLIN_LAUNCHER:-} "$program" "$@"
}

fail() {
    failed=$((failed + 1))
    echo "FAILED: $1"
    sed 's/^/    /' "$folder/stdout" "$folder/stderr" | head -20
}

# expect NAME VERDICT EXIT TEXT COMMAND...: runs the command. VERDICT is PASSED, FAILED or - for none; TEXT is a piece of
# what standard output and standard error hold together, "" asks for an empty standard error.
expect() {
    local name=$1 verdict=$2 code=$3 text=$4 got=0 said
    shift 4
    "$@" >"$folder/stdout" 2>"$folder/stderr" || got=$?
    said=$(sed -n 's/^validation result: //p' "$folder/stdout")
    cases=$((cases + 1))
    if [ "$got" != "$code" ]; then
        fail "$name: exit code $got, not $code"
    elif [ "${said:--}" != "$verdict" ]; then
        fail "$name: verdict ${said:--}, not $verdict"
    elif [ -z "$text" ] && [ -s "$folder/stderr" ]; then
        fail "$name: standard error is not empty"
    elif [ -n "$text" ] && ! cat "$folder/stdout" "$folder/stderr" | grep -qaF -e "$text"; then
        fail "$name: nothing says: $text"
    fi
}

finish() {
    echo "$cases cases, $failed failed"
    [ "$failed" = 0 ]
}
