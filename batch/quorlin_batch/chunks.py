"""Divides the assets of a batch into chunks: few for little work, small ones at the end."""

import os

from .look import is_playlist, series_files
from .playlists import read_playlist

ASSET_COST = 1 << 20  # a run costs as much as these bytes of content, however small the asset
MIN_COST = 64 * ASSET_COST  # of a chunk while there is work for all: a worker costs ten assets
MAX_COST = 8 << 30
SHARE = 0.75


def divide(costs: list[int], slots: int, largest: int) -> list[tuple[int, int]]:
    """First and end of each chunk. Each is a part of a slot's share of what is left, so that all
    slots end at about the same time. `largest`: number of assets in one."""
    left = sum(costs)
    least = min(MIN_COST, left / slots)
    chunks = []
    first = 0
    while first < len(costs):
        room = min(max(SHARE * left / slots, least), MAX_COST)
        end, cost = first + 1, costs[first]
        last = min(len(costs), first + largest)
        while end < last and cost + costs[end] <= room:
            cost += costs[end]
            end += 1
        chunks.append((first, end))
        left -= cost
        first = end
    return chunks


def cost_of(asset: str) -> int:
    """About how much there is to read: the first segment of a playlist stands for all of it."""
    if not is_playlist(asset):
        return ASSET_COST + sum(map(file_size, series_files(asset)))
    master = read_playlist(asset)
    playlists = [read_playlist(path) for path in dict.fromkeys(master.playlists)]
    size = sum(len(set(each.segments)) * file_size(each.segments[0])
               for each in (master, *playlists) if each.segments)
    return ASSET_COST + size


def file_size(path: str) -> int:
    try:
        return os.stat(path).st_size
    except (OSError, ValueError):
        return 0
