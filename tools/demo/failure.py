"""How the demo's own failures are told."""


class DemoError(Exception):
    """The demo cannot go on; the text says why."""
