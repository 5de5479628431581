#!/usr/bin/env bash
# reasons.sh QUORLIN EXAMPLES: every place where a run fails or leaves something out without a message on standard
# output, with the line on standard error that says why; and that good content has no such line.
source "$(dirname "${BASH_SOURCE[0]}")/case_table.sh"
examples=$2

# row NAME VERDICT EXIT INPUT REASON [OPTION...]: the reason is a whole line; standard output has no finding. The folder
# is empty for the next row.
row() {
    local name=$1 verdict=$2 code=$3 input=$4 reason=$5
    shift 5
    expect "$name" "$verdict" "$code" "quorlin: $reason" quorlin -i "$input" "$@"
    [ "$(grep -caxF -e "quorlin: $reason" "$folder/stderr")" = 1 ] || fail "$name: the reason is not one line of its own"
    if grep -a '^\(\[SV\]   : \)\?\(ERROR\|WARNING\|Warning\)' "$folder/stdout"; then fail "$name: not silent"; fi
    rm -rf ./*
}

# ---- Content, as hexadecimal text.

bytes() {  # HEX...: the bytes themselves
    local hex="$*"
    hex=${hex//[[:space:]]/}
    printf '%b' "$(sed 's/../\\x&/g' <<<"$hex")"
}
repeat() {  # HEX COUNT
    local i
    for ((i = 0; i < $2; ++i)); do printf '%s' "$1"; done
}
number() {  # VALUE BYTES
    printf "%0$(($2 * 2))x" "$1"
}
text() {  # TEXT
    printf '%s' "$1" | od -An -v -tx1 | tr -d ' \n'
}
size() {  # HEX: its length in bytes
    echo $((${#1} / 2))
}

# ISO/IEC 13818-1: one packet, filled up by an adaptation field.
packet() {  # PID UNIT_START PAYLOAD
    local room=$((184 - $(size "$3"))) head
    head=47$(number $(($2 * 0x4000 + $1)) 2)
    case $room in
        0) echo "${head}10$3" ;;
        1) echo "${head}3000$3" ;;
        *) echo "${head}30$(number $((room - 1)) 1)00$(repeat ff $((room - 2)))$3" ;;
    esac
}
section() {  # TABLE_ID BODY: with a pointer_field, and a CRC_32 that nothing checks
    echo "00$1$(number $((0xb000 + $(size "$2") + 4)) 2)$2ffffffff"
}
pat() {  # [PROGRAM PID]...
    local entries=
    while [ $# -gt 0 ]; do
        entries+=$(number "$1" 2)$(number $(($2 + 0xe000)) 2)
        shift 2
    done
    packet 0 1 "$(section 00 "0001c10000$entries")"
}
stream() {  # TYPE PID [DESCRIPTORS]
    local descriptors=${3-}
    echo "$1$(number $(($2 + 0xe000)) 2)f0$(number "$(size "$descriptors")" 1)$descriptors"
}
pmt() {  # STREAMS [PID]
    packet "${2:-256}" 1 "$(section 02 "0001c10000e100f000$1")"
}
long_pmt() {  # STREAMS: a section of several packets, each taken to begin with a pointer_field
    local rest unit_start=1
    rest=$(section 02 "0001c10000e100f000$1")
    while [ -n "$rest" ]; do
        packet 256 $unit_start "${rest:0:368}"
        rest=${rest:368}
        rest=${rest:+00$rest}
        unit_start=0
    done
}
pes() {  # PID STREAM_ID PAYLOAD [PES_PACKET_LENGTH]: one packet
    local length=${4:-$(($(size "$3") + 8))}
    packet "$1" 1 "000001$2$(number "$length" 2)8080052100010001$3"
}
aac() {  # a segment of one AAC stream: PACKET...
    bytes "$(pat 1 256)" "$(pmt "$(stream 0f 257)")" "$@"
}
ac4() {  # a segment of one AC-4 stream: PES_PAYLOAD [LENGTH]
    bytes "$(pat 1 256)" "$(pmt "$(stream 06 257 7f021500)")" "$(pes 257 bd "$@")"
}

# ISO/IEC 14496-12.
box() {  # TYPE PAYLOAD...
    local type=$1 payload
    shift
    payload=$(printf '%s' "$@")
    echo "$(number $(($(size "$payload") + 8)) 4)$(text "$type")$payload"
}
ftyp=$(box ftyp "$(text isom)00000000")
tkhd=$(box tkhd 000000000000000000000000 00000001 "$(repeat 00 8)")
entry() {  # VISUAL_TYPE [BOXES]: a sample description of one entry
    box stsd 0000000000000001 "$(box "$1" "$(repeat 00 78)" "${2-}")"
}
audio_entry() {  # TYPE BOXES
    box stsd 0000000000000001 "$(box "$1" "$(repeat 00 16)" 00020010 00000000 bb800000 "$2")"
}
ac4_entry() {  # DAC4_PAYLOAD
    audio_entry ac-4 "$(box dac4 "$1")"
}
avc=$(entry avc1 "$(box avcC 014d001fff e0 00)")
dac4=20a0004c000000000000000000
init() {  # BOX...: an init section of one track
    bytes "$ftyp" "$(box moov "$(box trak "$tkhd" "$@")")"
}
fragment() {  # SAMPLE [TRACK_ID]: a segment of one sample
    local run moof
    run=$(box trun 00000201 00000001 OFFSETXX "$(number "$(size "$1")" 4)")
    moof=$(box moof "$(box traf "$(box tfhd 00020000 "$(number "${2:-1}" 4)")" "$run")")
    moof=${moof/OFFSETXX/$(number $(($(size "$moof") + 8)) 4)}
    bytes "$moof" "$(box mdat "$1")"
}
fmp4() {  # the playlist of init.mp4 and segment.m4s
    media '#EXT-X-MAP:URI="init.mp4"' '#EXTINF:4,' segment.m4s
}
broken_init() {  # REASON BOX...: an init section whose walk stops
    local reason=$1
    shift
    init "$@" >init.mp4
    media '#EXT-X-MAP:URI="init.mp4"'
    row "$reason" FAILED 0 p.m3u8 "init.mp4: $reason"
}

# ID3 and packed audio.
owner=$(text com.apple.streaming.transportStreamTimestamp)00
tag() {  # BODY: an ID3 tag
    echo "49443304000000$(number "$(size "$1")" 3)$1"
}
timestamp=$(tag "$(text PRIV)000000350000${owner}000000000001ec30")
packed() {  # NAME REASON VERDICT HEX...
    local name=$1 reason=$2 verdict=$3
    shift 3
    bytes "$@" >a.aac
    media '#EXTINF:4,' a.aac
    row "$name" "$verdict" 0 p.m3u8 "a.aac: $reason"
}

# Playlists.
media() {  # LINE...: p.m3u8
    printf '%s\n' '#EXTM3U' "$@" '#EXT-X-ENDLIST' >p.m3u8
}
variant='#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS="mp4a.40.2",AUDIO="a"'
master() {  # LINE...: m.m3u8, and a.m3u8 with one good segment
    media '#EXTINF:4,' a.ts
    mv p.m3u8 a.m3u8
    aac "$(pes 257 c0 ffff)" >a.ts
    printf '%s\n' '#EXTM3U' "$@" >m.m3u8
}

# ---- Inputs and playlists.

printf '%s\n' "$variant" v.m3u8 '#EXTINF:4,' a.ts >p.m3u8
row 'variants and segments' - 255 p.m3u8 'p.m3u8: the playlist holds both variant streams and segments'
aac "$(pes 257 c0 ffff)" | tee s_0.ts >s_2.ts
mkdir s_1.ts
row 'a series ends at what cannot be opened' PASSED 0 's_%d.ts' 's_1.ts: cannot be opened: Is a directory; the series ends here'
aac "$(pes 257 c0 ffff)" | tee s_0.ts >s_2.ts
row 'a gap in a series' PASSED 0 's_%d.ts' 's_1.ts: is missing: the series ends here, and s_2.ts is not validated'
: >p.m3u8
row 'a playlist without segments' PASSED 0 p.m3u8 'p.m3u8: the playlist names no segment'

address() {  # NAME REASON LINE...: a playlist whose segment cannot be opened has a message, and this reason
    local name=$1 reason=$2
    shift 2
    media "$@"
    expect "$name" PASSED 0 "quorlin: $reason" quorlin -i p.m3u8
}
for line in '#EXT-X-DISCONTINUITY' '#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:00Z' '# no tag'; do
    address "$line in the place of an address" "p.m3u8: line 3: \"$line\" stands where the address of a segment is read" \
        '#EXTINF:4,' "$line" a.ts
done
address 'an empty address' 'p.m3u8: line 4: EXTINF is followed by no address: the segment is not read' \
    '#EXTINF:4,' '#EXT-X-BYTERANGE:9@0' ''
address 'a map without an address' 'p.m3u8: line 2: EXT-X-MAP without a URI: no init section is read' '#EXT-X-MAP:BYTERANGE="9@0"'
address 'another scheme' 'https://h/a.ts: not a local file; it is not validated' '#EXTINF:4,' https://h/a.ts
: >'a b.ts'
for uri in 'a%20b.ts' 'a b.ts?c' 'a%20b.ts?c'; do
    address "the address $uri" "$uri: cannot be opened: No such file or directory; \"a b.ts\" exists, but" '#EXTINF:4,' "$uri"
done
rm -rf ./*

aac "$(pes 257 c0 ffff)" >a.ts
media '#EXTINF:4,' '#EXT-X-BYTERANGE:1x@-1' a.ts
row 'a byte range that is none' FAILED 0 p.m3u8 'a.ts: the byte range "1x@-1" is not a length and an offset; the segment is not read'
unknown="a.ts: the segment's container is not recognised"
start() {  # NAME REASON HEX...: the first bytes of a segment of no known container
    local name=$1 reason=$2
    shift 2
    bytes "$@" >a.ts
    media '#EXT-X-KEY:METHOD=AES-128,URI="k"' '#EXT-X-KEY:METHOD=NONE' ${key:+"$key"} '#EXTINF:4,' a.ts
    row "$name" FAILED 0 p.m3u8 "$reason"
}
start 'an empty segment' 'a.ts: the segment is empty' ''
start 'noise' "$unknown from its first 8 bytes" 8a17ff0033
key='#EXT-X-KEY:METHOD=AES-128,URI="k"' start 'an encrypted segment' "$unknown: it is encrypted (EXT-X-KEY with METHOD=AES-128)" 8a17ff0033
looks() {  # MEANING HEX...
    local meaning=$1
    shift
    start "$meaning" "$unknown from its first 8 bytes: it looks like $meaning" "$@"
}
looks 'a playlist' "$(text '#EXTM3U')"
looks 'text' "$(text '#M3U')"
looks 'HTML or XML text, such as the error page of a server' "$(text '<html>404</html>')"
looks 'ADTS audio without the ID3 tag that packed audio begins with' fff15080
looks 'AC-3 or E-AC-3 audio without the ID3 tag that packed audio begins with' 0b770000
looks 'ISO media that does not begin with a box ftyp, styp or moof' "$(box sidx 00)"
looks 'an MPEG program stream' 000001ba44
looks 'Matroska or WebM' 1a45dfa3
looks 'a transport stream with packets of 192 bytes' "$(repeat "0000000047$(repeat 00 187)" 3)"
looks 'a transport stream that does not begin with a packet' "0000$(repeat "47$(repeat 00 187)" 3)"
aac "$(pes 257 c0 ffff)" >a.ts
media '#EXT-X-PART:DURATION=1,URI="p.ts"' '#EXTINF:4,' a.ts '#EXT-X-PRELOAD-HINT:TYPE=PART,URI="q.ts"'
row 'low latency' PASSED 0 p.m3u8 'p.m3u8: EXT-X-PART, EXT-X-PRELOAD-HINT and EXT-X-SKIP are not read: only whole segments are validated'
aac "$(pes 257 c0 ffff)" >a.ts
media "#EXT-X-KEY:$(repeat x 5000)" '#EXTINF:4,' a.ts
row 'a line that is too long' PASSED 0 p.m3u8 'p.m3u8: line 2 is longer than 4095 characters: its rest is read as the next line'
aac "$(pes 257 c0 ffff)" >a.ts
media '#EXT-X-BYTERANGE:188@0' '#EXTINF:4,' a.ts
row 'a byte range before its segment' PASSED 0 p.m3u8 'p.m3u8: line 2: a byte range stands before EXTINF: it is not read, the segment is its whole file'

master "$variant" a.m3u8 '#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID="s",URI="s.m3u8"'
row 'a rendition of another type' PASSED 0 m.m3u8 's.m3u8: a rendition that is not of TYPE=AUDIO: the playlist is not validated'
master "$variant" a.m3u8 '#EXT-X-MEDIA:TYPE=AUDIO,URI="s.m3u8"'
row 'a rendition without a group' PASSED 0 m.m3u8 's.m3u8: a rendition without GROUP-ID: the playlist is not validated'
master "$variant" a.m3u8 '#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",URI="s"'
row 'a rendition without a stem' PASSED 0 m.m3u8 's: the name has no extension to take a stem from; the playlist is not validated'
master "$variant" a.m3u8 "$variant" v
row 'a variant without a stem' PASSED 0 m.m3u8 'v: the name has no extension to take a stem from; the playlist is not validated'
master "$variant" '#EXT-X-VERSION:7' "$variant" a.m3u8
row 'a variant without an address' PASSED 0 m.m3u8 'm.m3u8: line 2: a variant has no URI, or a line with "#" stands where it is read: no playlist of it is validated'
master "$variant" a.m3u8 "$variant" a.m3u8
row 'one address twice' PASSED 0 m.m3u8 'a.m3u8: an earlier variant has the same URI: validated once'
master "$variant" a.m3u8 '#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS="mp4a.40.5"' a.m3u8
row 'one address, two CODECS' PASSED 0 m.m3u8 "a.m3u8: an earlier variant has the same URI: validated once, with that variant's CODECS"
master "$variant" a.m3u8 "$variant" b/a.m3u8
mkdir b
cp a.m3u8 a.ts b
row 'two playlists of one stem' PASSED 0 m.m3u8 'out/a_pid_257.adts: started anew for b/a.m3u8: what this run had written of a.m3u8 is replaced' -o out
master "$variant" a.m3u8 '#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,URI="i.m3u8"'
row 'an I-frame playlist' PASSED 0 m.m3u8 'i.m3u8: an I-frame playlist: it is not validated'
master "$variant" v.m3u8
printf '%s\n' "$variant" a.m3u8 >v.m3u8
row 'a master playlist as a variant' PASSED 0 m.m3u8 'v.m3u8: a master playlist where a media playlist is expected'

# ---- Transport streams.

lone() {  # NAME VERDICT REASON HEX...: a single file
    local name=$1 verdict=$2 reason=$3
    shift 3
    bytes "$@" >a.ts
    row "$name" "$verdict" 0 a.ts "a.ts: $reason"
}
good=$(pes 257 c0 ffff)
one=$(pat 1 256)
lone 'a fragment of a packet' PASSED 'the last 100 bytes are not a whole packet: not read' "$one$(pmt "$(stream 0f 257)")$good" 47 "$(repeat 00 99)"
lone 'no association table' PASSED 'no program association table lists a program: nothing is checked' "$good"
lone 'no program map' PASSED 'no program map table is complete: nothing is checked' "$one$good"
lone 'nothing to follow' PASSED 'no stream of the program is followed: beyond its tables nothing is checked' "$one$(pmt '')"
lone 'private data' PASSED 'PID 300 of stream type 0x06: nothing names audio or video that is written: not followed' "$one$(pmt "$(stream 06 300)$(stream 0f 257)")$good"
lone 'a stream without PES packets' PASSED 'PID 258: the program lists it, but the segment has no PES packet of it' \
    "$one$(pmt "$(stream 0f 257)$(stream 1b 258)")$good"
lone 'no PES packet at all' PASSED 'no stream of the program has a PES packet: beyond its tables nothing is checked' \
    "$one$(pmt "$(stream 0f 257)$(stream 1b 258)")"
lone 'several programs' PASSED '2 programs; the first, number 7, is followed' "$(pat 7 256 8 300)$(pmt "$(stream 0f 257)")$good"
lone 'a pointer that is too large' PASSED 'PID 0: a pointer_field reaches past its packet: no section is read there' "$(packet 0 1 ff)"
lone 'a program map of two packets' PASSED 'PID 256: a section goes on in a second packet: it is cut there, and what it lists may be wrong' \
    "$one$(long_pmt "$(repeat "$(stream 0f 257)" 40)")"
lone 'a packet in front of the tables' PASSED 'PID 257: 1 PES packets in front of the program tables: not read' "$good$one$(pmt "$(stream 0f 257)")"
lone 'bytes of no PES packet' PASSED 'PID 257: 2 bytes are in no PES packet, or behind the 1000000 bytes that one may hold: not read' \
    "$one$(pmt "$(stream 0f 257)")$(packet 257 0 ffff)"
lone 'a PES packet that ends in its header' PASSED 'PID 257: 1 PES packets have a length that ends inside their header: not read' \
    "$one$(pmt "$(stream 0f 257)")$(pes 257 c0 '' 3)"
lone 'audio without a length' PASSED 'PID 257: 1 audio PES packets are cut short, have no length or are not of stream_id 0xBD: not checked' \
    "$one$(pmt "$(stream 87 257 cc03804400)")$(pes 257 bd 0b77 0)"
lone 'eleven audio streams' PASSED 'more than 10 audio streams; PID 310 is not followed' \
    "$one$(pmt "$(for i in {300..310}; do stream 0f "$i"; done | tr -d '\n')")"
lone 'a PES packet without the end of its header' PASSED 'PID 257: 1 PES packets end inside their header: not read' \
    "$one$(pmt "$(stream 0f 257)")$(packet 257 1 000001c0)"
scrambled=$(pes 257 c0 ffff)
lone 'a scrambled packet' PASSED 'PID 257: scrambled: its content is not validated, and findings about it may be wrong' \
    "$one$(pmt "$(stream 0f 257)")${scrambled:0:6}b${scrambled:7}"
# These have a message of their own, which does not say what is wrong.
bytes "$one$(pmt "$(stream 15 300)$(stream 0f 257)")$good" >a.ts
expect 'an unknown stream type' PASSED 0 \
    'quorlin: a.ts: PID 300 of stream type 0x15: nothing names audio or video that is written: not followed' quorlin -i a.ts
opus=$(pmt "$(stream 06 257 "0504$(text Opus)7f028002")")
bytes "$one$opus$good$opus" >a.ts
expect 'Opus' FAILED 0 \
    "quorlin: a.ts: PID 256: a descriptor in the program map table has a finding: none of the program's streams is validated" quorlin -i a.ts
[ "$(grep -c . "$folder/stderr")" = 1 ] || fail 'Opus: more than one reason'
ac4 ac400000 >a.ts
expect 'an empty AC-4 frame' FAILED 0 'quorlin: a.ts: PID 257: AC-4 frame 1 of a PES has the size 0' quorlin -i a.ts
ac4 ac40000100 >a.ts
expect 'an AC-4 frame that is cut' FAILED 0 'quorlin: a.ts: PID 257: AC-4 frame 1 of a PES has an unreadable table of contents' quorlin -i a.ts
rm -f ./*

# ---- Fragmented MP4. The first box behind tkhd is at byte 64.

broken_init "box 'free' at byte 64: its size is smaller than its header" "00000004$(text free)"
broken_init "box 'free' at byte 64: it is larger than what is left of its container" "00001000$(text free)"
broken_init "box 'free' at byte 64: its size is out of range" "00000001$(text free)$(repeat ff 8)"
broken_init "box 0x00010203 at byte 64: its size is smaller than its header" 0000000400010203
broken_init "box 'tkhd' at byte 64: its version is neither 0 nor 1" "$(box tkhd "02$(repeat 00 23)")"
broken_init "box 'mdhd' at byte 64: its version is neither 0 nor 1" "$(box mdhd "02$(repeat 00 23)")"
broken_init "box 'edts' at byte 64: the edit list's version is neither 0 nor 1" "$(box edts "$(box elst 0200000000000001)")"
broken_init "box 'edts' at byte 64: the edit list has neither one nor two entries" "$(box edts "$(box elst 0000000000000000)")"
broken_init "box 'edts' at byte 64: two edits are not an empty one and one from the start of the media (ffmpeg writes another list with -movflags +negative_cts_offsets, none with -use_editlist 0)" \
    "$(box edts "$(box elst 0000000000000002 "$(repeat 00 24)")")"
broken_init "box 'stsd' at byte 64: it does not hold exactly one sample description" "$(box stsd 0000000000000002)"
broken_init "box 'stsz' at byte 64: it counts more entries than the file or byte range holds" "$(box stsz 000000000000000000000001)"
broken_init "box 'uuid' at byte 64: it is too short for its extended type" "$(box uuid 00)"
broken_init "box 'udta' at byte 552: boxes are nested too deeply" "$(i=63; b=; while ((i-- > 0)); do b=$(box udta "$b"); done; echo "$b")"
bytes "$ftyp" "$(box moov "$(repeat "$(box trak "$tkhd")" 257)")" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
row 'too many tracks' FAILED 0 p.m3u8 "init.mp4: box 'trak' at byte 10264: there are more than 256 tracks"
bytes "$ftyp" "00001000$(text moov)00000f00$(text trak)$tkhd" "00000800$(text dac4)" >init.mp4
media '#EXT-X-MAP:URI="init.mp4",BYTERANGE="5000@0"'
row 'a box behind the end of the file' FAILED 0 p.m3u8 "init.mp4: box 'dac4' at byte 64: it runs past the end of the file"

init "$avc" >init
media '#EXT-X-MAP:URI="init"'
row 'an init section without a stem' PASSED 0 p.m3u8 "init: the init section's name has no extension to take a stem from"
bytes "$ftyp" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
row 'an init section without a track' PASSED 0 p.m3u8 'init.mp4: the init section has no track: nothing is validated'
init "$avc" >init.mp4
media '#EXT-X-MAP:URI="init.mp4",BYTERANGE="x"'
row 'a byte range of fMP4' FAILED 0 p.m3u8 'init.mp4: the byte range "x" is not a length and an offset; the segment is not read'
init "$(entry avc1 "$(box avcC 014d001fffe100ff)")" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
row 'an SPS that is too long' PASSED 0 p.m3u8 "init.mp4: box 'avcC' at byte 166: a NAL unit runs past its end: this one and those after it are not read"
init "$(entry hvc1 "$(box hvcC "$(repeat 00 22)012700""0100ff")")" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
row 'an SEI that is too long' PASSED 0 p.m3u8 "init.mp4: box 'hvcC' at byte 166: a NAL unit runs past its end: this one and those after it are not read"
init "$avc" "$(box stsz 000000000000000400000001)" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
row 'samples without a chunk' PASSED 0 p.m3u8 'init.mp4: track 1: its last samples lie in no chunk: not read'
init "$(ac4_entry "$dac4")" >init.mp4
media '#EXT-X-MAP:URI="init.mp4"'
printf '%s\n' '#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS="ac"' p.m3u8 >m.m3u8
row 'AC-4 that CODECS does not name' FAILED 0 m.m3u8 'init.mp4: track 1 is AC-4, but CODECS names no ac-4'

bytes "$ftyp" "$(box moov "$(box trak "$tkhd" "$avc")")" >init.mp4
fragment 0000000165 >>init.mp4
media '#EXT-X-MAP:URI="init.mp4"' '#EXTINF:4,' init.mp4
row 'one file as init section and segment' PASSED 0 p.m3u8 'p.m3u8: line 4: the segment is the file of EXT-X-MAP, and neither has a byte range: its samples are read, and written, twice'
fragment 0000000165 >segment.m4s
media '#EXTINF:4,' segment.m4s
row 'no init section' FAILED 0 p.m3u8 'segment.m4s: no init section (EXT-X-MAP) came before this segment'
segment() {  # NAME VERDICT REASON STSD: the segment in segment.m4s behind an init section with this description
    init "$4" >init.mp4
    fmp4
    row "$1" "$2" 0 p.m3u8 "segment.m4s: $3"
}
fragment 0000000165 2 >segment.m4s
segment 'a fragment of no track' PASSED "box 'tfhd' at byte 16: no track has its track ID: the samples of such fragments are not read" "$avc"
bytes "$(box styp 6d736468)" >segment.m4s
segment 'a segment without samples' PASSED 'no sample of a known track is in it: nothing is validated' "$avc"
fragment 000000016500 >segment.m4s
segment 'a rest behind the last NAL unit' PASSED "track 1: 1 samples end with bytes too few for a NAL unit's length field: not written" "$avc"
fragment 0000000165 | head -c -1 >segment.m4s
segment 'a sample that is cut' FAILED 'track 1: the sample at byte 64 is not wholly inside the file or byte range' "$avc"
fragment 00 >segment.m4s
segment 'an unknown codec' PASSED "track 1: no check knows its sample entry 'abcd': its samples are not validated" "$(entry abcd)"
fragment 0000000165 >segment.m4s
segment 'a protected track' PASSED 'track 1: encrypted (cenc): its content is not validated' \
    "$(entry encv "$(box avcC 014d001fffe000)$(box sinf "$(box frma 61766331)" "$(box schm "00000000$(text cenc)00010000")")")"
fragment 0000 >segment.m4s
segment 'video without its configuration' PASSED "track 1: its sample entry 'avc1' has no avcC: its samples are read as if it held zeros" "$(entry avc1)"
fragment 00 >segment.m4s
segment 'MP3 in an mp4a entry' PASSED "track 1: 'mp4a' of object type 0x6B is not AAC: its samples are written to a file named .aac" \
    "$(audio_entry mp4a "$(box esds 0000000003800700010004056b)")"
bytes "$(box moof "$(box traf "$(box tfhd 0000000100000001 0000000100000000)")")" >segment.m4s
segment 'an offset beyond 4 GiB' FAILED "box 'tfhd' at byte 16: its base data offset is 4 GiB or more" "$avc"
bytes "$(box moof "$(box traf "$(box tfhd 0002000000000001)" "$(box trun 0000020000000009)")")" >segment.m4s
segment 'a run that is too short' FAILED "box 'trun' at byte 32: it counts more entries than the file or byte range holds" "$avc"
bytes "$(box moof "$(box traf "$(box tfhd 0002000000000001)" "$(box trun 00000000ffffffff)")")" >segment.m4s
segment 'samples without end' FAILED 'the samples claim many times the data that the file holds; track 1 is not read on' "$avc"
fragment 0000 >segment.m4s
init "$(ac4_entry "206001$(repeat 00 9)0300")" >init.mp4
fmp4
expect 'a presentation of a later version' FAILED 0 \
    'quorlin: segment.m4s: track 1: presentation 0 of dac4 has the version 3: it is not compared with the samples' quorlin -i p.m3u8
rm -f ./*

# ---- Packed audio. The payload is at byte 73.

packed 'another frame' 'the ID3 tag does not begin with a PRIV frame (byte 73)' FAILED "${timestamp/50524956/54495432}"
packed 'another owner' "the PRIV frame of the ID3 tag has another owner than the timestamp's (byte 73)" FAILED "${timestamp/636f6d/636f6e}"
packed 'a short tag' 'the ID3 tag is too short for a timestamp (byte 10)' FAILED "$(tag 00)"
packed 'a cut tag' 'the ID3 tag is longer than the segment (byte 72)' FAILED "${timestamp:0:144}"
packed 'an unknown format' 'no packed audio format recognised at byte 73: nothing is checked' PASSED "${timestamp}12345678"
packed 'nothing after the tag' 'no packed audio format recognised at byte 73, where the segment ends: nothing is checked' PASSED "$timestamp"
packed 'a short syncframe' 'no packed audio format recognised at byte 73, a syncframe of fewer than 6 bytes: nothing is checked' PASSED "${timestamp}0b77"
packed 'ADTS with a CRC' 'no packed audio format recognised at byte 73, AAC in ADTS frames of MPEG-2 or with a CRC: nothing is checked' PASSED "${timestamp}fff8"
packed 'MP3' 'no packed audio format recognised at byte 73, MPEG audio: nothing is checked' PASSED "${timestamp}fffb"
packed 'bsid 9' 'the bsid of the frame at byte 73 is neither AC-3 nor E-AC-3: copied unchecked' PASSED "${timestamp}0b7700000048"
bytes "$timestamp" >a.aac
media '#EXTINF:4,' '#EXT-X-BYTERANGE:20@5' a.aac
row 'a range behind the tag' FAILED 0 p.m3u8 'a.aac: no ID3 tag at the start of the packed audio segment (byte 15)'
# Without a master playlist there is no CODECS, which is a finding.
loose() {  # TEXT HEX
    bytes "$timestamp" "$2" >a.aac
    media '#EXTINF:4,' a.aac
    expect "$1" FAILED 0 "quorlin: a.aac: $1" quorlin -i p.m3u8
}
loose 'an AC-4 frame with a CRC (sync word 0xAC41) at byte 73: it and the rest are not looked at' ac410000
expect 'packed audio without a master playlist' FAILED 0 \
    'quorlin: p.m3u8: packed audio is compared with CODECS, which only a master playlist has: validate it through that' quorlin -i p.m3u8
loose 'no AC-4 sync word 0xAC40 at byte 81: the rest is not looked at' ac4000048000208000
loose 'the AC-4 frame at byte 73 is cut: 6 of its 8 bytes are there' ac4000048000
loose 'the AC-4 frame at byte 73 has 10485761 bytes, more than 10485760: it and the rest are not looked at' ac40ffffa00001
frame=0b7700010080 # E-AC-3, of four bytes as far as its size goes
loose 'no sync word in the last bytes, from byte 77 on' "${frame}0000"
loose 'bytes 77 to 78 skipped: no sync word' "${frame}0b770001"
loose 'incomplete frame header at byte 79' "${frame}0b77"
rm -f ./*

# ---- Good content has nothing to explain.

while read -r name subfolder input; do
    case "$name" in '' | '#'*) continue ;; esac
    grep -q PASSED "$examples/expected/$name.stdout" || continue
    cd "$examples/$subfolder" || exit 1
    expect "example $name" PASSED 0 '' quorlin -i "$input" -o "$folder/work/out"
done <"$examples/list"
finish
