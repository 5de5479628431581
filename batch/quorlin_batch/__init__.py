"""Validates a catalogue of HLS assets: one run of quorlin an asset, spread out by GNU parallel.

The way through the modules: `main` reads the command line, `assets` finds what is to be validated,
`reports` knows which reports are still current, `engine` hands the rest to GNU parallel, which
starts `job` once an asset; `findings` folds what quorlin printed, `verdict` names what became of
the asset. `summary` collects the reports, `junit` and `page` write it out.
"""

VERSION = "2.2.0"
