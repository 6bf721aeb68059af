#!/usr/bin/python3
"""Runs qmllint over the QML files: names that nothing has, imports that nothing uses, handlers that do not fit.

It runs in the module that the build made of them, so that it knows their types and those of C++. What C++ hands over by
the context (`theme`, `view`, `verbs`) it cannot know.

    qml_lint_test.py QMLLINT MODULE
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

VIEWS = Path(__file__).resolve().parents[2] / "src/views/qml"
# A plain array, and a function of the language, which this version of qmllint takes for something else.
MISTAKEN = re.compile(r'Property "includes" not found on type "QVariantList"|Property "callLater" is a QJSValue')


def complaints(qmllint: str, imports: Path, file: Path) -> list[str]:
    options = ["-I", str(imports), "--unqualified", "disable", "--compiler", "disable"]
    done = subprocess.run([qmllint, *options, str(file)], capture_output=True, text=True, timeout=60)
    lines = [line for line in (done.stdout + done.stderr).splitlines() if re.match("Warning|Error|Info", line)]
    return [line for line in lines if not MISTAKEN.search(line)]


def main() -> int:
    qmllint, module = sys.argv[1], Path(sys.argv[2])
    imports = module.parents[1]
    with tempfile.TemporaryDirectory() as folder:
        seeded = Path(folder) / "Seeded.qml"
        for wrong in ["IconMark { bodyy: 1 }", "Surface { raduis: 1 }"]:
            seeded.write_text(f"import Dorix.Views\n{wrong}\n")
            assert complaints(qmllint, imports, seeded), "a test that cannot fail is none"
    files = sorted(module / file.name for file in VIEWS.glob("*.qml"))
    found = [line for file in files for line in complaints(qmllint, imports, file)]
    print("\n".join(found) or "nothing to complain of")
    return 1 if found else 0


sys.exit(main())
