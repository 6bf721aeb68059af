"""DORIX's panel, read as a screen reader reads it."""

from accessibility import Atspi, await_found, has, showing
from dorix import Dorix
from failure import DemoError

PANEL_TIMEOUT = 5.0
INSERT_BUTTONS = ("Insertar de nuevo", "Insert again")


class Panel:
    def __init__(self, dorix: Dorix):
        self._dorix = dorix

    def items(self) -> list[str]:
        """The items that are in sight, by the names that they are read out with; none while the panel is closed."""
        return [node.get_name() for node in self._showing(Atspi.Role.LIST_ITEM)]

    def comes_to_show(self, text: str) -> bool:
        return bool(await_found(lambda: any(text in node.get_name() for node in self._showing()), PANEL_TIMEOUT))

    def await_items(self, titles: list[str]) -> list[str]:
        """Waits until the open panel lists just the items of these titles."""
        def are_listed() -> bool:
            items = self.items()
            return len(items) == len(titles) and all(title in item for title, item in zip(titles, items))

        if not await_found(lambda: self._list() and are_listed(), PANEL_TIMEOUT):
            raise DemoError(f"the panel lists {self.items()}, not {titles}")
        return self.items()

    def await_gone(self) -> None:
        if not await_found(lambda: not self._list(), PANEL_TIMEOUT):
            raise DemoError("the panel did not close")

    def first_item(self) -> tuple[int, int]:
        return self._centre(lambda: next(self._showing(Atspi.Role.LIST_ITEM), None), "an item in the panel")

    def is_first_selected(self) -> bool:
        first = next(self._showing(Atspi.Role.LIST_ITEM), None)
        return first is not None and has(first, Atspi.StateType.SELECTED)

    def insert_button(self) -> tuple[int, int]:
        return self._centre(lambda: next((node for node in self._showing(Atspi.Role.PUSH_BUTTON)
                                          if node.get_name() in INSERT_BUTTONS), None), "a button that inserts")

    def composer(self) -> tuple[int, int]:
        """The one field that takes more than a line."""
        return self._centre(lambda: next((node for node in self._showing() if has(node, Atspi.StateType.EDITABLE,
                                          Atspi.StateType.MULTI_LINE)), None), "a composer")

    def button(self, name: str) -> tuple[int, int]:
        """Of any of its windows."""
        return self._centre(lambda: next((node for node in self._showing(Atspi.Role.PUSH_BUTTON)
                                          if node.get_name() == name), None), f'a button "{name}"')

    def _list(self):
        return next(self._showing(Atspi.Role.LIST), None)

    def _showing(self, role=None):
        return (node for node in showing(self._dorix.pid) if role in (None, node.get_role()))

    def _centre(self, find, what: str) -> tuple[int, int]:
        node = await_found(find, PANEL_TIMEOUT)
        if not node:
            raise DemoError(f"there is not {what}")
        place = node.get_extents(Atspi.CoordType.SCREEN)
        return place.x + place.width // 2, place.y + place.height // 2
