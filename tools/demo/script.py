"""Reads a script: one step a line, its name and, after a blank, its argument. Blank lines and lines that begin with "#"
say nothing. The settings come first: DORIX reads them at its start."""

import json
from dataclasses import dataclass, field
from pathlib import Path

from failure import DemoError

SETTINGS = "settings"
SPANISH = "spanish-speech"
MODEL_SERVER = "model-server"
SERVICE_MODEL = "service-model"
DOCUMENT = "document"

# Every step with its argument; Player has a method for each.
STEPS = {
    "app": "NAME",
    "ask": "QUESTION",
    "close-panel": "",
    "compose": "QUESTION",
    "escape": "",
    "expect": "WHAT VALUE",
    "hold": "",
    "key": "CHORD...",
    "layout": "ARGUMENTS",
    "open-panel": "",
    "order": "SENTENCE",
    "play": "RECORDING",
    "press": "BUTTON",
    "recogniser": "killed|stopped",
    "reinsert": "",
    "reinsert-by-key": "",
    "restart": "",
    "say": "SENTENCE",
    "say-hands-free": "SENTENCE",
    "screenshot": "FILE",
    "search": "TEXT",
    "service": "stopped|continued",
    "silent": "",
    "tap": "",
    "type": "TEXT",
}
EXPECTATIONS = ("answer", "asked", "card", "engine", "gap", "hud", "message", "opened", "panel", "route", "speaks", "typed",
                "window")


@dataclass(frozen=True)
class Step:
    line: int
    name: str
    argument: str

    def __str__(self) -> str:
        return f"{self.name} {self.argument}".rstrip()


@dataclass
class Script:
    path: Path
    settings: dict[str, object] = field(default_factory=dict)
    is_spanish: bool = False  # needs the Spanish model
    has_model_server: bool = False
    has_service_model: bool = False
    documents: dict[str, str] = field(default_factory=dict)  # texts by their names
    steps: list[Step] = field(default_factory=list)

    def failure(self, line: int, text: object) -> DemoError:
        return DemoError(f"{self.path}:{line}: {text}")


def read_script(path: Path) -> Script:
    """A faulty line fails here, before anything is played."""
    script = Script(path)
    try:
        lines = path.read_text(encoding="utf-8").splitlines()
    except (OSError, UnicodeError) as error:
        raise DemoError(f"{path}: {error}") from error
    for number, line in enumerate(lines, 1):
        name, _, argument = line.strip().partition(" ")
        if not name or name.startswith("#"):
            continue
        if fault := _add(script, Step(number, name, argument.strip())):
            raise script.failure(number, fault)
    if not script.steps:
        raise DemoError(f"{path}: the script has no steps")
    return script


def _add(script: Script, step: Step) -> str:
    """What is wrong with the step."""
    if step.name == SETTINGS:
        return _set(script, step.argument)
    if step.name == SPANISH and not step.argument:
        script.is_spanish = True
        return "" if not script.steps else f"{SPANISH} stands before the first step"
    if step.name == MODEL_SERVER and not step.argument:
        script.has_model_server = True
        return "" if not script.steps else f"{MODEL_SERVER} stands before the first step"
    if step.name == SERVICE_MODEL and not step.argument:
        script.has_service_model = True
        return "" if not script.steps else f"{SERVICE_MODEL} stands before the first step"
    if step.name == DOCUMENT:
        name, _, text = step.argument.partition(" ")
        script.documents[name] = text
        return "" if text and not script.steps else f"before the first step stands: {DOCUMENT} NAME TEXT"
    if step.name not in STEPS:
        return f'there is no step "{step.name}"; there are {", ".join((SETTINGS, *STEPS))}'
    wanted = STEPS[step.name]
    if wanted and not step.argument:
        return f"the step is: {step.name} {wanted}"
    if step.argument and not wanted:
        return f"{step.name} takes no argument"
    if step.name == "expect" and not _is_expectation(step.argument):
        return f"what may be expected is {', '.join(EXPECTATIONS)}, each with what it should be"
    script.steps.append(step)
    return ""


def _is_expectation(argument: str) -> bool:
    what, _, value = argument.partition(" ")
    return what in EXPECTATIONS and value != ""


def _set(script: Script, argument: str) -> str:
    key, _, value = argument.partition(" ")
    if script.steps:
        return "settings stand before the first step"
    if not value:
        return "the line is: settings KEY VALUE, the value as JSON or one word, as in: settings appLanguage es"
    try:
        script.settings[key] = json.loads(value)
    except ValueError:
        script.settings[key] = value
    return ""
