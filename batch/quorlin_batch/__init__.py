"""Validates a catalogue of HLS assets: one run of quorlin-json an asset, spread out by GNU parallel.

The way through the modules: `main` is one call; `options` is its command line, `assets` finds what is
to be validated, `reports` and `look` know which reports are still current. `engine` hands the rest to
GNU parallel in `chunks`, which starts a `worker` for each. The worker runs quorlin-json (`process`),
`fold` folds its events, `timing` and `advice` look at the times of the segments, `verdict` names what
became of the asset, `result` and `asset_page` are what is stored. `summary` collects the results,
`accept` knows the accepted findings, `since` the last call, `explanations` and `advice_texts` what the
ids mean; `told`, `junit` and `page` write it out. `playlists`, `programs`, `kept` and `text` serve them.
"""

VERSION = "2.2.0"
