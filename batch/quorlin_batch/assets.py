"""Finds the assets of the folders, lists and playlists of a command line, always in one order."""

import codecs
import os
from collections import Counter
from collections.abc import Iterable

from .playlists import read_playlist
from .text import plural

PLAYLIST_NAMES = (".m3u8", ".m3u")
STREAM_NAMES = (".ts", ".trp")
ASSET_NAMES = (*PLAYLIST_NAMES, *STREAM_NAMES)
FolderId = tuple[int, int]


class UsageError(Exception):
    """What the user has to put right before a batch can begin."""


class Found:
    """Absolute paths in order, each once; what could not be searched, and what was passed over."""

    def __init__(self) -> None:
        self.assets: dict[str, None] = {}
        self.problems: list[str] = []
        self.notes: list[str] = []


def find_assets(arguments: Iterable[str], null: bool, leave_out: Iterable[str]) -> Found:
    """Assets of all arguments; the folders `leave_out` (reports, streams) are not searched."""
    found = Found()
    skipped = {folder_id(folder) for folder in leave_out if os.path.isdir(folder)}
    for argument in arguments:
        if argument == "-" or is_list(argument):
            for entry in read_list(argument, null):
                add_entry(found, entry, skipped)
        elif os.path.isdir(argument) or is_asset_name(argument):
            add_entry(found, argument, skipped)
        else:
            raise UsageError(f"{argument}: there is no such folder, list or playlist")
    return found


def is_list(path: str) -> bool:
    """A pipe is one, too: <(find ...)."""
    return os.path.exists(path) and not os.path.isdir(path) and not is_asset_name(path)


def is_asset_name(path: str) -> bool:
    return path.lower().endswith(ASSET_NAMES)


def read_list(path: str, null: bool) -> list[str]:
    """Lines of a list, but for empty ones and comments; or what stands between zero bytes."""
    try:
        with open(0 if path == "-" else path, "rb", closefd=path != "-") as file:
            content = file.read()
    except OSError as error:
        raise UsageError(f"{path}: cannot be read: {error.strerror}") from error
    if null:
        return [os.fsdecode(name) for name in content.split(b"\0") if name]
    if b"\0" in content:
        raise UsageError(f"{path}: not a list of lines (for names between zero bytes use --null)")
    lines = content.removeprefix(codecs.BOM_UTF8).split(b"\n")
    lines = [line.removesuffix(b"\r") for line in lines]
    return [os.fsdecode(line) for line in lines if line and not line.startswith(b"#")]


def add_entry(found: Found, path: str, skipped: set[FolderId]) -> None:
    """A folder is searched. Anything else is an asset; when it is not there, its run says so."""
    path = os.path.abspath(path)
    if os.path.isdir(path):
        found.assets.update(dict.fromkeys(search_folder(path, skipped, found)))
    else:
        found.assets[path] = None


def search_folder(top: str, skipped: set[FolderId], found: Found) -> list[str]:
    """Every master playlist, and every media playlist that no master playlist found here names.
    Folders of transport streams that no playlist names are noted."""
    media, masters, named = set(), set(), set()
    streams: Counter[str] = Counter()  # of a folder
    with_segments = set()
    for path in walk_files(top, skipped, found.problems):
        if path.lower().endswith(STREAM_NAMES):
            streams[os.path.dirname(path)] += 1
            continue
        if not os.path.isfile(path):
            continue
        playlist = read_playlist(path)
        with_segments.update(map(os.path.dirname, playlist.segments))
        if playlist.is_master:
            masters.add(path)
            named.update(playlist.playlists, playlist.others)
        else:
            media.add(path)
    if unnamed := streams.keys() - with_segments:
        # A playlist may reach a folder by another path than the search.
        named_folders = set(map(os.path.realpath, with_segments))
        found.notes += [f"{folder}: not validated: "
                        f"{plural(streams[folder], 'transport stream')} that no playlist names"
                        for folder in sorted(unnamed) if os.path.realpath(folder) not in named_folders]
    return sorted(masters | (media - named))


def walk_files(top: str, skipped: set[FolderId], problems: list[str]) -> Iterable[str]:
    """What has the name of an asset below a folder. Symbolic links are followed, a folder is
    entered once."""
    seen = set(skipped)
    folders = [top]
    while folders:
        folder = folders.pop()
        try:
            if (identity := folder_id(folder)) in seen:
                continue
            seen.add(identity)
            with os.scandir(folder) as entries:
                subfolders, files = split_entries(entries)
        except FileNotFoundError:  # it has gone since its name was read
            continue
        except OSError as error:
            problems.append(f"{folder}: cannot be searched: {error.strerror}")
            continue
        folders += sorted(subfolders, reverse=True)
        yield from filter(is_asset_name, files)


def split_entries(entries: Iterable[os.DirEntry]) -> tuple[list[str], list[str]]:
    """Paths of the folders (symbolic links to some among them), and all others."""
    folders, others = [], []
    for entry in entries:
        is_folder = os.path.isdir(entry.path) if entry.is_symlink() else entry.is_dir()
        (folders if is_folder else others).append(entry.path)
    return folders, others


def folder_id(path: str) -> FolderId:
    """The same for every path to one folder."""
    status = os.stat(path)
    return status.st_dev, status.st_ino
