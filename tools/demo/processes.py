"""The processes that work for another one."""

from pathlib import Path


def child_of(parent: int, name: str) -> int | None:
    """The one of that name, of which the kernel keeps fifteen letters."""
    for status in Path("/proc").glob("[0-9]*/stat"):
        try:
            process, _, rest = status.read_text().partition(f" ({name}) ")
        except (FileNotFoundError, ProcessLookupError):
            continue  # it ended just now
        if rest and int(rest.split()[1]) == parent and rest.split()[0] != "Z":
            return int(process)
    return None
