"""What each advice means, its rule, its tolerance (those of advice.py), and the fix."""

EXPLANATIONS = {
    "advice-extinf": [
        "EXTINF does not say how long the segment is: its first time stamp and that of the next "
        "segment (of the last one, its own end) lie further apart, or closer together.",
        "Rule: RFC 8216, 4.3.2.1. Tolerance: 0.3 s; 0.8 s when EXTINF is an integer.",
        "Fix: have the packager write durations that it has measured."],
    "advice-target-duration": [
        "EXTINF, rounded to the nearest integer, is larger than EXT-X-TARGETDURATION: players "
        "buffer too little.",
        "Rule: RFC 8216, 4.3.3.1. Tolerance: none beyond the rounding.",
        "Fix: raise EXT-X-TARGETDURATION to the longest segment, or cut shorter segments."],
    "advice-bandwidth": [
        "BANDWIDTH is below the peak segment bit rate of the media playlist alone (segments "
        "together from half of the target duration to one and a half): players choose a "
        "variant that they cannot hold.",
        "Rule: RFC 8216, 4.3.4.2, with the peak segment bit rate of 4.1. Tolerance: 1 %.",
        "Fix: write the measured peak, with that of the audio renditions added."],
    "advice-discontinuity": [
        "The time stamps jump between two segments and EXT-X-DISCONTINUITY does not stand before "
        "the second one.",
        "Rule: RFC 8216, 4.3.2.3. Tolerance: 3 s forwards or backwards.",
        "Fix: add EXT-X-DISCONTINUITY, or keep the time stamps continuous."],
    "advice-gap": [
        "Between the end of a stream in one segment and its start in the next one something is "
        "missing.",
        "Rule: RFC 8216, 3: time stamps continue uninterrupted. Tolerance: 0.1 s for audio, 0.3 s "
        "for video.",
        "Fix: cut the segments from one continuous encoding; look for lost segments."],
    "advice-overlap": [
        "A stream begins in one segment before it ends in the previous one.",
        "Rule: RFC 8216, 3: time stamps continue uninterrupted. Tolerance: 0.1 s for audio, 0.3 s "
        "for video.",
        "Fix: cut the segments from one continuous encoding; look for segments listed twice."],
    "advice-boundaries": [
        "The segments of this variant begin at other times than those of the first variant, "
        "although they are as many and as long: the same content has different time stamps, "
        "and players stumble when they switch.",
        "Rule: RFC 8216, 6.2.4: matching content has matching time stamps. Tolerance: 0.1 s.",
        "Fix: encode all variants with the same key frames, and package them together."],
    "advice-endlist": [
        "EXT-X-PLAYLIST-TYPE is VOD, but EXT-X-ENDLIST is missing: players wait for more.",
        "Rule: RFC 8216, 6.2.1: a playlist with the last segment contains EXT-X-ENDLIST.",
        "Fix: end the playlist with EXT-X-ENDLIST."],
    "advice-key": [
        "EXT-X-KEY encrypts segments. They were read as they are, without a key, and nothing was "
        "recognised in them.",
        "Rule: RFC 8216, 4.3.2.4.",
        "Fix: validate the content before it is encrypted."],
    "advice-uri": [
        "The address of a segment that could not be read has a query or percent-encoded "
        "characters. Addresses are taken as names of files, letter for letter.",
        "Rule: RFC 8216, 4.1, with RFC 3986, 2.1 and 3.4.",
        "Fix: validate a copy whose playlist names the files as they lie on the disk."],
}
