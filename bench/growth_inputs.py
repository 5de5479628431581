"""Inputs for bench/growth: for each dimension a function that writes an input of size n into the
current directory and returns the arguments that quorlin is run with. As a program, NAME N: does
that for one dimension and prints the arguments."""

import json
import os
import struct
import sys

TS_PACKET_SIZE = 188
PMT_PID, VIDEO_PID, AUDIO_PID = 0x1000, 0x100, 0x101
AVC, PRIVATE_DATA, ATSC_EAC3 = 0x1B, 0x06, 0x87
EAC3_DESCRIPTOR = bytes([0xCC, 3, 0x80, 0x44, 0x00])
AC4_DESCRIPTOR = bytes([0x7F, 2, 0x15, 0x00])
DIMENSIONS = []  # (name, what n counts, first n, function)


def dimension(name, unit, first):
    def register(function):
        DIMENSIONS.append((name, unit, first, function))
        return function
    return register


def write(name, content):
    with open(name, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def media_playlist(entries):
    write("media.m3u8", "#EXTM3U\n#EXT-X-VERSION:7\n" + entries + "#EXT-X-ENDLIST\n")
    return ["-i", "media.m3u8"]


# ISO/IEC 13818-1: packets, sections and PES packets.

def ts_packets(pid, payload, start=True):
    """The payload in packets of one PID, the last one stuffed."""
    packets = []
    for at in range(0, max(len(payload), 1), 184):
        part = payload[at:at + 184]
        head = bytes([0x47, (0x40 if start and at == 0 else 0) | pid >> 8, pid & 0xFF])
        room = 184 - len(part)
        if room == 0:
            head += b"\x10"
        elif room == 1:
            head += b"\x30\x00"
        else:
            head += b"\x30" + bytes([room - 1, 0]) + b"\xFF" * (room - 2)
        packets.append(head + part)
    return b"".join(packets)


def section(pid, table_id, body):
    """The packets of a section; each begins with a pointer_field, also where it goes on."""
    data = struct.pack(">BH", table_id, 0xB000 | len(body) + 4) + body + bytes(4)
    return b"".join(ts_packets(pid, b"\x00" + data[at:at + 183], at == 0)
                    for at in range(0, len(data), 183))


def pat(programs):
    body = struct.pack(">HBBB", 1, 0xC1, 0, 0)
    body += b"".join(struct.pack(">HH", number, 0xE000 | pid) for number, pid in programs)
    return section(0, 0x00, body)


def pmt(streams, program_info=b"", pmt_pid=PMT_PID):
    body = struct.pack(">HBBBHH", 1, 0xC1, 0, 0, 0xE000 | VIDEO_PID, 0xF000 | len(program_info))
    body += program_info
    for stream_type, pid, descriptors in streams:
        body += struct.pack(">BHH", stream_type, 0xE000 | pid, 0xF000 | len(descriptors))
        body += descriptors
    return section(pmt_pid, 0x02, body)


def pes(stream_id, payload, pts, length=None):
    head = bytes([0x80, 0x80, 5, 0x21 | pts >> 29 & 0xE, pts >> 22 & 0xFF, 1 | pts >> 14 & 0xFE,
                  pts >> 7 & 0xFF, 1 | pts << 1 & 0xFE])
    if length is None:
        length = len(head) + len(payload)
    return b"\x00\x00\x01" + struct.pack(">BH", stream_id, length) + head + payload


STREAMS = [(AVC, VIDEO_PID, b""), (ATSC_EAC3, AUDIO_PID, EAC3_DESCRIPTOR)]
TABLES = pat([(1, PMT_PID)]) + pmt(STREAMS)
PICTURE = ts_packets(VIDEO_PID, pes(0xE0, b"\x55" * 4000, 90000))


def ts_file(content):
    write("a.ts", content)
    return ["-i", "a.ts", "-o", "out"]


# Audio frames.

def crc16(words):
    crc = 0
    for word in words:
        crc ^= word
        for _ in range(16):
            crc = (crc << 1 ^ 0x8005) & 0xFFFF if crc & 0x8000 else crc << 1
    return crc


def eac3_frame(words=384, first_bytes="0B7700003F861A39808EE600"):
    """A 5.1 syncframe at 48 kHz with a correct check word (ETSI TS 102 366, annex E)."""
    frame = list(struct.unpack(">6H", bytes.fromhex(first_bytes)))
    frame += [i * 40503 & 0xFFFF for i in range(words - len(frame))]
    frame[1] = frame[1] & 0xF800 | words - 1
    frame[-1] = crc16(frame[1:-1])
    return struct.pack(f">{words}H", *frame)


EAC3_FRAME = eac3_frame()
AC4_RAW_FRAME = bytes.fromhex("bfcee59c20022a0097e0b104cadd015082")
AC4_FRAME = struct.pack(">HH", 0xAC40, len(AC4_RAW_FRAME)) + AC4_RAW_FRAME


class BitWriter:
    def __init__(self):
        self.bits = []

    def put(self, width, value):
        self.bits.append(format(value, f"0{width}b")[-width:])

    def variable(self, group, value):
        """ETSI TS 103 190-1, 4.2.2: variable_bits."""
        parts = [value & (1 << group) - 1]
        while value >> group:
            value = (value >> group) - 1
            parts.insert(0, value & (1 << group) - 1)
        for i, part in enumerate(parts):
            self.put(group, part)
            self.put(1, int(i + 1 < len(parts)))

    def bytes(self):
        text = "".join(self.bits)
        text += "0" * (-len(text) % 8)
        return int(text, 2).to_bytes(len(text) // 8, "big")


def ac4_toc(presentations):
    """A raw frame whose table of contents (bitstream_version 2) holds `presentations` presentations
    of one substream group each; they share one group of as many substreams."""
    w = BitWriter()
    w.put(2, 2)   # bitstream_version
    w.put(10, 0)  # sequence_counter
    w.put(1, 0)   # b_wait_frames
    w.put(1, 1)   # fs_index
    w.put(4, 13)  # frame_rate_index
    w.put(1, 1)   # b_iframe_global
    w.put(1, 0)   # b_single_presentation
    w.put(1, 1)   # b_more_presentations
    w.variable(2, presentations - 2)
    w.put(1, 0)  # b_payload_base
    w.put(1, 0)  # b_program_id
    for _ in range(presentations):
        w.put(1, 1)  # b_single_substream_group
        w.put(1, 0)  # presentation_version
        w.put(3, 0)  # mdcompat
        w.put(1, 0)  # b_presentation_id
        w.put(5, 1)  # emdf_version, key_id
        w.put(1, 0)  # b_emdf_payloads_substream_info
        w.put(4, 1)  # protection lengths: 0 and 8 bits
        w.put(8, 0)
        w.put(1, 0)  # b_presentation_filter
        w.put(3, 0)  # group_index
        w.put(1, 0)  # b_pre_virtualized
        w.put(1, 0)  # b_add_emdf_substreams
        w.put(4, 0)  # b_alternative, b_pres_ndot, substream_index
    w.put(3, 0b000)  # b_substreams_present, b_hsf_ext, b_single_substream
    w.put(2, 3)      # n_lf_substreams_minus2
    w.variable(2, presentations - 5)
    w.put(1, 1)  # b_channel_coded
    for _ in range(presentations):
        w.put(4, 0b0000)  # channel_mode 1.0, b_sf_multiplier, b_bitrate_indicator, b_audio_ndot
    w.put(1, 0)  # b_content_type
    w.put(2, 1)  # n_substreams
    w.put(1, 0)  # b_size_present
    return w.bytes() + bytes(8)


def ac4_sync_frame(raw):
    return struct.pack(">HHBH", 0xAC40, 0xFFFF, len(raw) >> 16, len(raw) & 0xFFFF) + raw


def packed_segment(payload, padding=0):
    owner = b"com.apple.streaming.transportStreamTimestamp\x00"
    body = b"PRIV" + struct.pack(">IH", len(owner) + 8, 0) + owner + bytes(8) + bytes(padding)
    return b"ID3\x04\x00\x00" + struct.pack(">I", len(body)) + body + payload


def packed_asset(segment, codecs="ec-3"):
    """A master playlist with one rendition of one packed audio segment."""
    write("a.ec3", segment)
    media_playlist("#EXTINF:4,\na.ec3\n")
    write("master.m3u8", '#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="a",URI="media.m3u8"\n'
          f'#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS="{codecs}",AUDIO="a"\n#\n')
    return ["-i", "master.m3u8", "-o", "out"]


# ISO/IEC 14496-12: boxes.

def box(kind, *parts):
    payload = b"".join(parts)
    return struct.pack(">I4s", len(payload) + 8, kind) + payload


def full_box(kind, flags, *parts):
    return box(kind, struct.pack(">I", flags), *parts)


def numbers(*values):
    return struct.pack(f">{len(values)}I", *values)


AVCC = box(b"avcC", bytes.fromhex("0142C01EFFE100046742000101000268CB"))
AVC1 = box(b"avc1", bytes(6) + b"\x00\x01" + bytes(70), AVCC)


def audio_entry(kind, configuration):
    """Two channels of 16 bits at 48 kHz."""
    fields = struct.pack(">6xH8xHHxxxxHxx", 1, 2, 16, 48000)
    return box(kind, fields, configuration)


def trak(track_id, entry=AVC1, tables=(), handler=b"vide"):
    tables = tables or [full_box(name, 0, numbers(*[0] * count)) for name, count in
                        ((b"stts", 1), (b"stsc", 1), (b"stsz", 2), (b"stco", 1))]
    stbl = box(b"stbl", full_box(b"stsd", 0, numbers(1), entry), *tables)
    mdia = box(b"mdia", full_box(b"mdhd", 0, numbers(0, 0, 90000, 0, 0)),
               full_box(b"hdlr", 0, numbers(0), handler, bytes(13)), box(b"minf", stbl))
    return box(b"trak", full_box(b"tkhd", 0, numbers(0, 0, track_id, *[0] * 17)), mdia)


def init_section(tracks, extra=b""):
    trex = [full_box(b"trex", 0, numbers(i, 1, 0, 0, 0)) for i in range(1, len(tracks) + 1)]
    return box(b"ftyp", b"iso6", bytes(4)) + box(
        b"moov", full_box(b"mvhd", 0, numbers(0, 0, 1000, 0), bytes(80)), *tracks,
        box(b"mvex", *trex)) + extra


def fragment(samples, track_id=1, runs=1):
    """moof and mdat: `runs` track runs of the samples each."""
    data = b"".join(samples)

    def moof(size):
        truns = [full_box(b"trun", 0x301, numbers(len(samples), size + 8 + i * len(data)),
                          b"".join(numbers(3600, len(s)) for s in samples)) for i in range(runs)]
        return box(b"moof", full_box(b"mfhd", 0, numbers(1)),
                   box(b"traf", full_box(b"tfhd", 0x20000, numbers(track_id)), *truns))
    return moof(len(moof(0))) + box(b"mdat", data * runs)


def nal_sample(size, units=1):
    return (struct.pack(">IB", size, 0x41) + b"\x55" * (size - 1)) * units


def fmp4_asset(init, media, entries=None):
    write("init.mp4", init)
    write("a.m4s", media)
    entries = entries or "#EXTINF:4,\na.m4s\n"
    return media_playlist('#EXT-X-MAP:URI="init.mp4"\n' + entries) + ["-o", "out"]


def avc_asset(media):
    return fmp4_asset(init_section([trak(1)]), media)


# The command line and playlists.

@dimension("template length", "characters of -i", 16000)
def template_length(n):
    return ["-i", "%d" + "%%" * (n // 2) + ".ts", "-s", "0"]


@dimension("output directory", "levels of -o", 8000)
def output_levels(n):
    return ["-i", "a.ts", "-o", "x\\" * n]


@dimension("series", "segments of a template", 500)
def series(n):
    for i in range(n):
        write(f"{i}.ts", TABLES)
    return ["-i", "%d.ts", "-s", "0", "-o", "out"]


@dimension("segments", "transport stream segments of a playlist", 500)
def segments(n):
    for i in range(n):
        write(f"{i}.ts", TABLES)
    return media_playlist("".join(f"#EXTINF:4,\n{i}.ts\n" for i in range(n))) + ["-o", "out"]


@dimension("playlist entries", "entries whose file is missing: a finding each", 10000)
def missing_segments(n):
    return media_playlist("".join(f"#EXTINF:4,\n{i}.ts\n" for i in range(n)))


@dimension("discontinuities", "entries without a file", 40000)
def discontinuities(n):
    return media_playlist("#EXT-X-DISCONTINUITY\n" * n)


@dimension("playlist lines", "comments", 400000)
def comments(n):
    return media_playlist("# a comment\n" * n)


@dimension("line length", "KB of one line", 8000)
def line_length(n):
    return media_playlist("#EXT-X-MEDIA:A=1," + "NAME=x," * (n * 143) + "\n")


@dimension("attributes", "attributes of a line, 4000 lines", 120)
def attributes(n):
    return media_playlist(("#EXT-X-MEDIA:" + "A=1," * n + "\n") * 4000)


@dimension("CODECS pieces", "commas in an unclosed CODECS value, 5000 lines", 250)
def codecs_pieces(n):
    return media_playlist(('#EXT-X-STREAM-INF:CODECS="' + "a ," * n + "\n\n") * 5000)


def variant(i, group):
    attributes = f'BANDWIDTH=1,CODECS="avc1,ec-3,{i}",AUDIO="{group}"'
    return f"#EXT-X-STREAM-INF:{attributes}\nv{i}.m3u8\n"


def rendition(i):
    return f'#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="{i}",URI="{i}.m3u8"\n'


@dimension("variants", "variants with an audio group each", 8000)
def variants(n):
    write("master.m3u8", "#EXTM3U\n" + "".join(variant(i, i) for i in range(n)))
    return ["-i", "master.m3u8"]


@dimension("renditions", "renditions of one group and variants naming it", 4000)
def renditions(n):
    entries = [rendition(i) for i in range(n)] + [variant(i, "a") for i in range(n)]
    write("master.m3u8", "#EXTM3U\n" + "".join(entries))
    return ["-i", "master.m3u8"]


@dimension("media playlists", "variants and their playlists of one segment", 1000)
def media_playlists(n):
    write("a.ts", TABLES)
    for i in range(n):
        write(f"{i}.m3u8", "#EXTM3U\n#EXTINF:4,\na.ts\n#EXT-X-ENDLIST\n")
    write("master.m3u8", "#EXTM3U\n" + "".join(
        f'#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS="avc1,ec-3"\n{i}.m3u8\n' for i in range(n)))
    return ["-i", "master.m3u8"]


# Transport streams.

@dimension("packets", "packets of video PES packets of 4 KB", 400000)
def packets(n):
    return ts_file(TABLES + PICTURE * (n // (len(PICTURE) // TS_PACKET_SIZE)))


@dimension("one PES packet", "packets that go on with it", 400000)
def endless_pes(n):
    first = ts_packets(VIDEO_PID, pes(0xE0, b"\x55" * 170, 90000, 0))
    return ts_file(TABLES + first + ts_packets(VIDEO_PID, b"\x55" * 184, False) * n)


@dimension("PES packets", "E-AC-3 PES packets, analysed", 20000)
def audio_pes(n):
    return ts_file(TABLES + ts_packets(AUDIO_PID, pes(0xBD, EAC3_FRAME, 90000)) * n)


@dimension("transport findings", "PES packets with a finding", 60000)
def ts_findings(n):
    return ts_file(TABLES + ts_packets(AUDIO_PID, pes(0xC0, b"\x55" * 100, 90000)) * n)


@dimension("PAT entries", "programs of a PAT, 10000 times", 125)
def pat_entries(n):
    return ts_file(pat([(i + 1, 0x20 + i) for i in range(n)]) * 10000)


@dimension("PIDs of tables", "PMT PIDs, 40000 times", 2)
def table_pids(n):
    tables = b"".join(pmt(STREAMS, pmt_pid=PMT_PID + i) for i in range(n))
    return ts_file(pat([(i + 1, PMT_PID + i) for i in range(n)]) + tables * 40000)


@dimension("PMT streams", "streams above 100000 PES packets", 12)
def pmt_streams(n):
    streams = [(PRIVATE_DATA, 0x200 + i, b"") for i in range(n - 1)] + [STREAMS[1]]
    packet = ts_packets(AUDIO_PID, pes(0xBD, EAC3_FRAME[:100], 90000, 0))
    return ts_file(pat([(1, PMT_PID)]) + pmt(streams) + packet * 100000)


@dimension("descriptors", "descriptors of a program whose PMT is parsed 2000 times", 50)
def descriptors(n):
    refused = bytes([0xCC, 3, 0xFF, 0x44, 0x00])
    table = pmt([(ATSC_EAC3, AUDIO_PID, refused)], b"\x05\x00" * n)
    return ts_file(pat([(1, PMT_PID)]) + table * 2000)


@dimension("AC-4 frames of a PES", "frames of one, 100 PES packets", 380)
def ac4_pes(n):
    streams = [(PRIVATE_DATA, AUDIO_PID, AC4_DESCRIPTOR)]
    packet = ts_packets(AUDIO_PID, pes(0xBD, AC4_FRAME * n, 90000))
    return ts_file(pat([(1, PMT_PID)]) + pmt(streams) + packet * 100)


# Packed audio.

@dimension("ID3 tag", "KB", 16000)
def id3_size(n):
    return packed_asset(packed_segment(EAC3_FRAME, n * 1000))


@dimension("copied payload", "KB of AAC", 16000)
def aac_payload(n):
    return packed_asset(packed_segment(b"\xFF\xF1" + bytes(n * 1000)), "mp4a")


@dimension("timeslices", "E-AC-3 timeslices", 20000)
def timeslices(n):
    return packed_asset(packed_segment(EAC3_FRAME * n))


@dimension("search for sync", "KB without a sync word", 4000)
def sync_search(n):
    return packed_asset(packed_segment(EAC3_FRAME + bytes(n * 1000)))


@dimension("AC-4 frames", "packed frames", 20000)
def ac4_frames(n):
    return packed_asset(packed_segment(AC4_FRAME * n), "ac-4.00.00.00")


@dimension("AC-4 presentations", "presentations, substreams of the group that all name", 2500)
def ac4_presentations(n):
    frame = ac4_sync_frame(ac4_toc(n))
    return packed_asset(packed_segment(frame * 20), "ac-4.02.01.00")


# ISO base media.

@dimension("boxes", "empty boxes", 200000)
def boxes(n):
    return avc_asset(fragment([nal_sample(100)]) + box(b"free") * n)


@dimension("box depth", "nested boxes, 20000 times (64 at most)", 7)
def box_depth(n):
    nested = b""
    for _ in range(n):
        nested = box(b"udta", nested)
    return avc_asset(fragment([nal_sample(100)]) + nested * 20000)


@dimension("fragments", "moof and mdat", 16000)
def fragments(n):
    return avc_asset(fragment([nal_sample(1000)]) * n)


@dimension("track runs", "trun of a traf", 40000)
def track_runs(n):
    return avc_asset(fragment([nal_sample(100)], runs=n))


@dimension("samples", "samples of a trun", 100000)
def samples(n):
    return avc_asset(fragment([nal_sample(100), nal_sample(120)] * (n // 2)))


@dimension("NAL units", "units of one sample", 400000)
def nal_units(n):
    return avc_asset(fragment([nal_sample(20, n)]))


@dimension("IDR units", "units with the parameter sets in front, of one sample", 50000)
def idr_units(n):
    return avc_asset(fragment([(b"\x00\x00\x00\x64\x65" + b"\x55" * 99) * n]))


@dimension("fMP4 segments", "segment files of a playlist", 1000)
def fmp4_segments(n):
    for i in range(n):
        write(f"{i}.m4s", fragment([nal_sample(1000)]))
    entries = "".join(f"#EXTINF:4,\n{i}.m4s\n" for i in range(n))
    return fmp4_asset(init_section([trak(1)]), b"", entries)


@dimension("byte ranges", "ranges of one file", 4000)
def byte_ranges(n):
    media = fragment([nal_sample(1000)])
    entries = f"#EXTINF:4,\n#EXT-X-BYTERANGE:{len(media)}@0\na.m4s\n"
    entries += f"#EXTINF:4,\n#EXT-X-BYTERANGE:{len(media)}\na.m4s\n" * (n - 1)
    return fmp4_asset(init_section([trak(1)]), media * n, entries)


@dimension("init sections", "EXT-X-MAP with a segment each", 1000)
def init_sections(n):
    media = fragment([nal_sample(1000)])
    entries = '#EXTINF:4,\na.m4s\n#EXT-X-MAP:URI="init.mp4"\n' * n
    # Nothing is written: creating a file anew again and again is the file system's time.
    return fmp4_asset(init_section([trak(1)]), media, entries)[:2]


@dimension("tracks", "tracks with a fragment each, one behind the other (256 at most)", 32)
def tracks(n):
    media = b"".join(fragment([nal_sample(1000)] * 4, i) for i in range(1, n + 1)) * 4
    init = init_section([trak(i) for i in range(1, n + 1)])
    return fmp4_asset(init, media, "#EXTINF:4,\na.m4s\n" * 10)


@dimension("sample tables", "samples and chunks of a progressive file", 200000)
def sample_tables(n):
    sample = nal_sample(100)

    def moov(start):
        tables = [full_box(b"stts", 0, numbers(1, n, 3600)),
                  full_box(b"stsc", 0, numbers(1, 1, 1, 1)),
                  full_box(b"stsz", 0, numbers(0, n, *[len(sample)] * n)),
                  full_box(b"stco", 0, numbers(n, *(start + i * len(sample) for i in range(n))))]
        return init_section([trak(1, AVC1, tables)])
    init = moov(len(moov(0)) + 8) + box(b"mdat", sample * n)
    write("init.mp4", init)
    return media_playlist('#EXT-X-MAP:URI="init.mp4"\n') + ["-o", "out"]


@dimension("tables that read on", "tables that each claim the half of the file after them", 100000)
def tables_read_on(n):
    tables = [full_box(b"stsz", 0, numbers(0, n * 20 // 8))] * n + [full_box(b"stsc", 0, numbers(0))]
    write("init.mp4", init_section([trak(1, AVC1, tables)]))
    return media_playlist('#EXT-X-MAP:URI="init.mp4"\n') + ["-o", "out"]


@dimension("dac4 presentations", "entries of a dac4 box, 1000 segments", 30)
def dac4_presentations(n):
    w = BitWriter()
    for width, value in ((3, 1), (7, 2), (1, 1), (4, 13), (9, n), (1, 0), (2, 0), (32, 0), (32, 0)):
        w.put(width, value)
    head = w.bytes()
    entry = bytes([1, 12, 0x0F, 0x80]) + bytes(10)
    media = fragment([AC4_RAW_FRAME] * 2)
    sample_entry = audio_entry(b"ac-4", box(b"dac4", head + entry * n))
    init = init_section([trak(1, sample_entry, handler=b"soun")])
    return fmp4_asset(init, media, "#EXTINF:4,\na.m4s\n" * 1000)


@dimension("analysed samples", "E-AC-3 samples", 20000)
def eac3_samples(n):
    entry = audio_entry(b"ec-3", box(b"dec3", bytes.fromhex("0C00200F00")))
    return fmp4_asset(init_section([trak(1, entry, handler=b"soun")]), fragment([EAC3_FRAME] * n))


if __name__ == "__main__":
    row = next(row for row in DIMENSIONS if row[0] == sys.argv[1])
    print(json.dumps(row[3](int(sys.argv[2]))))
    os.makedirs("out", exist_ok=True)
