"""Walking a machine's files quickly: a lab run looks at thousands of them again and again."""

import os
from collections.abc import Iterator

Found = tuple[str, os.DirEntry[str]]


def entries_below(folder: str | os.PathLike[str], shown: str = "") -> Iterator[Found]:
    """(path below the first folder, entry) of all that lies there but the folders themselves; a
    link to a folder is told as a link and not followed."""
    with os.scandir(folder) as entries:
        for entry in entries:
            if entry.is_dir(follow_symlinks=False):
                yield from entries_below(entry.path, f"{shown}{entry.name}/")
            else:
                yield shown + entry.name, entry
