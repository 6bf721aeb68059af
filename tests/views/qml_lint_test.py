#!/usr/bin/python3
"""Runs qmllint over the QML files: names that nothing has, imports that nothing uses, handlers that do not fit.

The shapes are registered by the program, so qmllint is told of them: their properties as the headers declare them. What
C++ hands over (`theme`, `view`, `verbs`) it cannot know.

    qml_lint_test.py QMLLINT
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

VIEWS = Path(__file__).resolve().parents[2] / "src/views"
SHAPES = ["SoftShape.h", "overlay/IconMark.h", "overlay/LevelBars.h"]
CLASS = re.compile(r"class (\w+) (?:final )?: public QQuickPaintedItem \{(.*?)\n\};", re.DOTALL)
PROPERTY = re.compile(r"Q_PROPERTY\((\w+) (\w+) ")
TYPES = {"qreal": "double"}
# A plain array, and a function of the language, which this version of qmllint takes for something else.
MISTAKEN = re.compile(r'Property "includes" not found on type "QVariantList"|Property "callLater" is a QJSValue')


def component(name: str, body: str) -> str:
    properties = "".join(
        f'Property {{ name: "{prop}"; type: "{TYPES.get(kind, kind)}" }}\n' for kind, prop in PROPERTY.findall(body)
    )
    exports = f'exports: ["Dorix.Shapes/{name} 1.0"]; exportMetaObjectRevisions: [256]'
    return f'Component {{ name: "{name}"; prototype: "QQuickPaintedItem"; {exports}\n{properties}}}\n'


def describe_shapes(imports: Path) -> None:
    module = imports / "Dorix/Shapes"
    module.mkdir(parents=True)
    classes = [found for header in SHAPES for found in CLASS.findall((VIEWS / header).read_text(encoding="utf-8"))]
    (module / "qmldir").write_text("module Dorix.Shapes\ntypeinfo shapes.qmltypes\ndepends QtQuick\n")
    components = "".join(component(name, body) for name, body in classes)
    (module / "shapes.qmltypes").write_text(f"import QtQuick.tooling 1.2\nModule {{\n{components}}}\n")


def complaints(qmllint: str, imports: Path, file: Path) -> list[str]:
    options = ["-I", str(imports), "--unqualified", "disable", "--compiler", "disable"]
    done = subprocess.run([qmllint, *options, str(file)], capture_output=True, text=True, timeout=60)
    lines = [line for line in (done.stdout + done.stderr).splitlines() if re.match("Warning|Error|Info", line)]
    return [line for line in lines if not MISTAKEN.search(line)]


def main() -> int:
    with tempfile.TemporaryDirectory() as folder:
        imports = Path(folder) / "imports"
        describe_shapes(imports)
        seeded = Path(folder) / "Seeded.qml"
        seeded.write_text("import QtQuick\nimport Dorix.Shapes\nIconMark { bodyy: 1 }\n")
        assert complaints(sys.argv[1], imports, seeded), "a test that cannot fail is none"
        found = [line for file in sorted(VIEWS.rglob("*.qml")) for line in complaints(sys.argv[1], imports, file)]
    print("\n".join(found) or "nothing to complain of")
    return 1 if found else 0


sys.exit(main())
