#!/usr/bin/env bash
# faults.sh QUORLIN EXAMPLES FAULT-READS [INSTRUMENTS]: what the system can refuse, and what quorlin makes of it. No case
# may end by a signal or wait for ever. FAULT-READS is the library that makes reads fail; INSTRUMENTS are sanitizers or
# coverage counters in the program, which need memory of their own.
set -u
program=$(realpath "$1")
examples=$2
fault_reads=$3
instruments=${4-}
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

# All files beside each other. Root is refused nothing: its cases run as another user.
ordinary=
if [ "$(id -u)" = 0 ]; then
    cp "$program" "$folder/quorlin" # where that user can reach it
    ordinary="setpriv --reuid=65534 --regid=65534 --clear-groups"
    $ordinary true || ordinary=none
fi
fresh() {
    chmod -R u+rwX .
    rm -rf ./*
    cp "$examples"/{series/seg_000*,hls-ts/*,hls-fmp4/hevc*,hls-packed/*.{aac,ac3,ec3}} .
    cp "$examples/hls-packed/master.m3u8" packed.m3u8
    cp "$examples"/hls-packed/{aac,ac3,ec3}.m3u8 .
    cp "$examples"/hls-fmp4-byterange/* .
    mkdir out
    chmod -R a+rwX .
}
refused() { # NAME VERDICT EXIT TEXT INPUT [OPTION...]: the run of an ordinary user
    local name=$1 verdict=$2 code=$3 text=$4
    shift 4
    if [ "$ordinary" = none ]; then
        echo "skipped, as root without setpriv: $name"
    elif [ -n "$ordinary" ]; then
        expect "$name" "$verdict" "$code" "$text" timeout 60 $ordinary "$folder/quorlin" -i "$@"
    else
        expect "$name" "$verdict" "$code" "$text" quorlin -i "$@"
    fi
}
run() { # NAME VERDICT EXIT TEXT INPUT [OPTION...]
    local name=$1 verdict=$2 code=$3 text=$4
    shift 4
    expect "$name" "$verdict" "$code" "$text" quorlin -i "$@"
}

# ---- Inputs that cannot be opened: the file, the input, the verdict and the exit code.

inputs="seg_0001.ts   seg_0001.ts   -      255
        seg_0000.ts   seg_%04d.ts   -      255
        seg_0001.ts   seg_%04d.ts   PASSED 0
        video.m3u8    video.m3u8    -      255
        master.m3u8   master.m3u8   -      255
        video.m3u8    master.m3u8   FAILED 0
        audio.m3u8    master.m3u8   FAILED 0
        video_1.ts    video.m3u8    PASSED 0
        hevc_init.mp4 hevc.m3u8     FAILED 0
        hevc_1.m4s    hevc.m3u8     PASSED 0
        eac3.m4s      eac3.m3u8     PASSED 0
        ec3_0.ec3     packed.m3u8   PASSED 0"
while read -r file input verdict code; do
    fresh
    reason="quorlin: $file: cannot be opened"
    chmod 000 "$file"
    refused "unreadable: $file of $input" "$verdict" "$code" "$reason: Permission denied" "$input" -o out
    rm "$file"
    gone="$reason: No such file or directory"
    case $file+$input in # the first index that is not there is the end of the series
        seg_0000.ts+*%*) gone="ERROR: No matching files" ;;
        seg_0001.ts+*%*) gone="quorlin: seg_0001.ts: is missing: the series ends here" ;;
    esac
    run "gone: $file of $input" "$verdict" "$code" "$gone" "$input" -o out
    ln -s "$file" "$file"
    run "a loop of links: $file of $input" "$verdict" "$code" "$reason: Too many levels" "$input" -o out
    rm "$file"
    mkdir "$file"
    run "a directory: $file of $input" "$verdict" "$code" "$reason: Is a directory" "$input" -o out
    rmdir "$file"
    if [ "$file" != "$input" ] || [ "${file##*.}" = m3u8 ]; then # a single file may be a pipe: it is waited for
        mkfifo "$file"
        run "a pipe: $file of $input" "$verdict" "$code" "$reason: not a regular file" "$input" -o out
    fi
done <<<"$inputs"
fresh
rm ec3_0.ec3
run 'no segment is left' PASSED 0 'quorlin: ec3.m3u8: no segment could be read' packed.m3u8
long=$(printf 'a%.0s' {1..300}).ts
run 'a name too long for the system' - 255 'cannot be opened: File name too long' "$long"
run 'a path too long for the system' - 255 'cannot be opened: File name too long' "$(printf 'a/%.0s' {1..2500}).ts"
printf '#EXTM3U\n#EXTINF:4,\n%s\n' "$long" >p.m3u8
run 'a segment name too long' PASSED 0 'cannot be opened: File name too long' p.m3u8
printf '#EXTM3U\n#EXTINF:4,\nhttp://host/a.ts\n' >p.m3u8
run 'an address of another machine' PASSED 0 'quorlin: http://host/a.ts: not a local file' p.m3u8
mkfifo pipe.ts
cat seg_0001.ts >pipe.ts &
run 'a pipe as the single file' PASSED 0 '' pipe.ts

# ---- Reads that fail: the file, the byte, the input and the reason.

fresh
broken() { # FILE OFFSET INPUT
    local preload=$fault_reads
    [ -n "$instruments" ] && export ASAN_OPTIONS=verify_asan_link_order=0
    FAULT_FILE=$1 FAULT_OFFSET=$2 timeout 60 env LD_PRELOAD="$preload" "$program" -i "$3" -o out
}
while read -r file offset input reason; do
    expect "a failed read: $file of $input at $offset" FAILED 0 "quorlin: $file: $reason" broken "$file" "$offset" "$input"
done <<'END'
seg_0001.ts   0     seg_0001.ts read error at byte 0
seg_0001.ts   50000 seg_0001.ts read error at byte 50000
seg_0001.ts   50000 seg_%04d.ts read error at byte 50000
video.m3u8    60    video.m3u8  the playlist cannot be read to its end
video.m3u8    60    master.m3u8 the playlist cannot be read to its end
master.m3u8   90    master.m3u8 the playlist cannot be read to its end
video_1.ts    0     video.m3u8  read error at the start of the segment
video_1.ts    30000 video.m3u8  read error at byte 30000
hevc_init.mp4 100   hevc.m3u8   read error at byte 100
hevc_1.m4s    100   hevc.m3u8   read error at byte 100
hevc_1.m4s    20000 hevc.m3u8   read error at byte 20000
eac3.m4s      60000 eac3.m3u8   read error at byte 60000
ec3_0.ec3     40    packed.m3u8 read error at byte 40
ec3_0.ec3     20000 packed.m3u8 read error at byte 20000
ac3_0.ac3     20000 packed.m3u8 read error at byte 20000
aac_0.aac     9000  packed.m3u8 read error at byte 9000
END
# An error belongs to the byte range that it is in; one in the look at the start of the file, to none.
cat seg_0000.ts seg_0001.ts >joined.ts
first=$(stat -c %s seg_0000.ts)
range() { printf '#EXTINF:4,\n#EXT-X-BYTERANGE:%s@%s\njoined.ts\n' "$1" "$2"; }
range "$(stat -c %s seg_0001.ts)" "$first" >second.m3u8
{ range "$first" 0 && cat second.m3u8; } >both.m3u8
expect 'a failed read before the range' PASSED 0 '' broken joined.ts 500 second.m3u8
expect 'a failed read in the first range' FAILED 0 'quorlin: joined.ts: read error at byte 50000' broken joined.ts 50000 both.m3u8
[ "$(grep -c 'read error' "$folder/stderr")" = 1 ] || fail 'a failed read in the first range: told of the second'

# ---- Output that cannot be written: the file in the output directory, the input and the message.

while read -r file input message; do
    fresh
    chmod 555 out
    opened="ERROR: Failed to create elementary stream path: out/$file"
    case $file in *track_id*) opened="quorlin: out/$file: the track's file cannot be opened: " ;; esac
    refused "no permission: $file" FAILED 0 "$opened" "$input" -o out
    chmod 755 out
    mkdir "out/$file"
    run "a directory in its place: $file" FAILED 0 "$opened" "$input" -o out
    rmdir "out/$file"
    ln -s /dev/full "out/$file"
    run "a full disk: $file" FAILED 0 "$message" "$input" -o out
    rm "out/$file"
    small() { (ulimit -f 4 && GCOV_PREFIX=$folder quorlin "$@" | cat && exit "${PIPESTATUS[0]}"); }
    expect "a file that may not grow: $file" FAILED 0 "$message" small -i "$input" -o out
    rm -rf out
    : >out
    run "a file in the place of the directory: $file" FAILED 0 "$opened" "$input" -o out
done <<'END'
seg_0001_pid_257.ec3         seg_0001.ts ERROR: Failed to write elementary stream path: out/seg_0001_pid_257.ec3
seg_%04d_pid_257.ec3         seg_%04d.ts ERROR: Failed to write elementary stream path: out/seg_%04d_pid_257.ec3
video_pid_256.h264           video.m3u8  ERROR: Failed to write elementary stream path: out/video_pid_256.h264
hevc_hevc_init_track_id_1.265 hevc.m3u8  quorlin: out/hevc_hevc_init_track_id_1.265: data could not be written when the file was closed
eac3_eac3_track_id_1.ec3     eac3.m3u8   quorlin: out/eac3_eac3_track_id_1.ec3: data could not be written when the file was closed
ec3.ec3                      packed.m3u8 ERROR: Failed to write elementary stream path: out/ec3.ec3
END
fresh
for _ in {1..10}; do printf '#EXTINF:4,\n%s\n' hevc_0.m4s; done >>hevc.m3u8
sed -i /ENDLIST/d hevc.m3u8
ln -s /dev/full out/hevc_hevc_init_track_id_1.265
run 'a disk that is full before the end' FAILED 0 'quorlin: out/hevc_hevc_init_track_id_1.265: cannot be written: No space left' hevc.m3u8 -o out
mv seg_0001.ts "${long:0:252}.ts"
run 'an output name too long for the system' FAILED 0 'ERROR: Failed to create elementary stream path: out/aaa' "${long:0:252}.ts" -o out
for directory in '' missing/parent loop /proc/quorlin "$long"; do
    ln -sf loop loop
    run "an output directory that cannot be made: $directory" - 255 'ERROR: create output folider (' seg_0000.ts -o "$directory"
done
chmod 555 .
refused 'an output directory that may not be made' - 255 'ERROR: create output folider (new) failed.' seg_0000.ts -o new
chmod 755 .

# ---- Standard streams.

fresh
for input in seg_0001.ts seg_%04d.ts master.m3u8 hevc.m3u8 packed.m3u8; do
    full() { quorlin -i "$input" >/dev/full; }
    expect "a full standard output: $input" - 255 'quorlin: standard output: cannot be written' full
    gone() { { sleep 0.3 && quorlin -i "$input"; } | :; return "${PIPESTATUS[0]}"; }
    expect "a pipe nobody reads: $input" - 255 'quorlin: standard output: cannot be written' gone
    limited() { (ulimit -f 0 && GCOV_PREFIX=$folder quorlin -i "$input" >grows) 2>&1 | cat >&2; return "${PIPESTATUS[0]}"; }
    expect "a standard output that may not grow: $input" - 255 'quorlin: standard output: cannot be written' limited
    closed() { quorlin -i "$input" >&-; }
    expect "no standard output: $input" - 0 '' closed
    silent() { quorlin -i "$input" -o out <&- 2>&-; }
    expect "neither standard input nor standard error: $input" PASSED 0 '' silent
done

# ---- Limits of the system.

few() { (exec 3>&- 4>&- 5>&- && ulimit -n "$1" && shift && exec "$program" "$@"); }
expect 'few open files' FAILED 0 'ERROR: Failed to create elementary stream path: out/seg_0001_pid_257.ec3' few 5 -i seg_0001.ts -o out
expect 'each segment is opened once' PASSED 0 '' few 4 -i video.m3u8
expect 'few open files for fMP4' FAILED 0 'track_id_1.265: the track' few 4 -i hevc.m3u8 -o out

# Enough for nothing, then for more and more: what it begins it ends with a message. An analyzer without memory has a
# message of its own, and the verdict.
if [ -z "$instruments" ]; then
    short=0
    for input in seg_0001.ts seg_%04d.ts master.m3u8 hevc.m3u8 eac3.m3u8 packed.m3u8; do
        for ((size = 3000; size < 9500; size += 130)); do
            cases=$((cases + 1))
            (ulimit -v "$size" && exec timeout 60 "$program" -i "$input" -o out) >"$folder/stdout" 2>"$folder/stderr"
            code=$?
            grep -q '^quorlin: out of memory$' "$folder/stderr" && short=$((short + 1))
            case $code in
                0) grep -q '^validation result: PASSED' "$folder/stdout" || grep -q 'Cannot allocate' "$folder/stderr" ;;
                127) true ;; # not even loaded
                255) grep -q 'out of memory\|cannot be opened\|ERROR: No matching' "$folder/stderr" "$folder/stdout" ;;
                *) false ;;
            esac || fail "$size KiB of memory: $input: exit code $code"
        done
    done
    [ "$short" -gt 20 ] || fail "memory was never short ($short times)"
fi

# ---- Names and sizes.

fresh
for name in $'line\nend.ts' 'a%n%s%c.ts' $'\xff\xfe.ts' '-i.ts'; do
    mv seg_000?.ts ./"$name" 2>/dev/null || cp "$examples/series/seg_0001.ts" ./"$name"
    run "a name of odd characters: $name" PASSED 0 '' "$name" -o 'out%n%s'
    [ -s "out%n%s/${name%.ts}_pid_257.ec3" ] || fail "no output of $name"
done
cp "$examples/series/seg_0001.ts" big.ts
size=$(stat -c %s big.ts)
if truncate -s 5G big.ts; then
    cat "$examples/series/seg_0001.ts" >>big.ts
    printf '#EXTM3U\n#EXTINF:4,\n#EXT-X-BYTERANGE:%s@5368709120\nbig.ts\n' "$size" >big.m3u8
    run 'a range after 4 GiB' PASSED 0 '' big.m3u8 -o out
    [ -s out/big_pid_257.ec3 ] || fail 'no output of a range after 4 GiB'
fi
echo "$cases cases, $failed failed"
[ "$failed" = 0 ]
