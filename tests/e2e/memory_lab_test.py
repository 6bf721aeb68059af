#!/usr/bin/python3
"""What dorix-lab tells of the memory, command by command, through the program that is built.

    memory_lab_test.py FOLDER    of a build
"""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BUILD = Path(sys.argv.pop())
HOME = "/home/ana/"


def lab(command: str, **order) -> dict:
    done = subprocess.run([BUILD / "tools/lab/dorix-lab", command], input=json.dumps(order) + "\n", capture_output=True,
                          text=True, check=False, timeout=60)
    return json.loads(done.stdout)


def document(path: str, *chunks: tuple, kind: str = "file") -> dict:
    return {"path": path, "title": path.split("/")[-1], "kind": kind, "modified": 1,
            "chunks": [{"text": text, "vec": vector} for text, vector in chunks]}


def hit(path: str, text: str, kind: str = "file") -> dict:
    return {"path": path, "title": path, "text": text, "modified": 1, "kind": kind}


class MemoryLab(unittest.TestCase):
    def test_a_text_is_cut_where_its_words_end(self):
        text = "palabra " * 300
        pieces = lab("chunk", text=text, size=1000, overlap=150, maxChunks=200)["chunks"]
        self.assertEqual([piece.split()[-1] for piece in pieces], ["palabra"] * 3)
        self.assertEqual(len(lab("chunk", text="x" * 1001, size=1000, overlap=150, maxChunks=200)["chunks"][1]), 151)
        self.assertIn("error", lab("chunk", text="x", size=-1, overlap=0, maxChunks=1))

    def test_files_are_found_and_read(self):
        with tempfile.TemporaryDirectory() as place:
            folder = Path(place)
            for name in ("b.txt", "a/informe.PDF", "contraseñas.txt", ".git/c.txt", "build/d.txt", "foto.png"):
                (folder / name).parent.mkdir(exist_ok=True)
                (folder / name).write_text("lo que está escrito")
            (folder / "bucle").symlink_to(folder)
            self.assertEqual(lab("crawl", folder=place), {"files": ["a/informe.PDF", "b.txt"]})
            self.assertEqual(lab("extract", file=str(folder / "b.txt"), limit=6), {"text": "lo que"})
            self.assertEqual(lab("extract", file=str(folder / "a/informe.PDF"), limit=6), {"text": None})
        self.assertEqual(lab("indexable", name="Clave.pdf"), {"extension": True, "sensitive": True})
        self.assertEqual(lab("indexable", name="notas.env"), {"extension": False, "sensitive": True})

    def test_a_search_counts_words_and_meaning_alike(self):
        told = lab("memory", removed=["/gone"], documents=[
            document("/carta.odt", ("La reunión con Marta es el jueves", [1, 0]), ("Un saludo", None)),
            document("/plan.odt", ("Presupuesto detallado de la reforma de la cocina", [0.6, 0.8])),
            document("dorix://historial/1", ("Respuesta sobre la reforma", [0, 1]), kind="history"),
            document("/gone", ("La reunión", [1, 0]))], searches=[
                {"query": "¿REUNION?", "vector": None, "limit": 8}, {"query": "reforma", "vector": [0, 1], "limit": 2},
                {"query": "busca el documento", "vector": None, "limit": 8},
                {"query": "", "vector": [1, 0, 0], "limit": 8}])
        self.assertEqual([[found["path"] for found in search] for search in told["results"]],
                         [["/carta.odt"], ["dorix://historial/1", "/plan.odt"], [], []])
        self.assertEqual(told["counts"], [2, 4])

    def test_names_and_legs_are_put_in_order(self):
        paths = [HOME + name for name in ("obra/presupuesto reforma vieja.pdf", "Presupuesto Reforma.pdf", "presupuesto.pdf",
                                          ".cache/presupuesto reforma.pdf", "Library/presupuesto reforma.pdf")]
        self.assertEqual(lab("file-names", paths=paths, query="busca el presupuesto de la reforma")["paths"],
                         [paths[1], paths[0]])
        legs = {"names": [hit("/n", "x" * 50)], "slack": [hit(f"s{n}", "m", "slack") for n in range(6)],
                "index": [hit("/n", "x" * 60), hit("/i", "y"), hit("/j", "z")], "limit": 2}
        told = lab("merge", query="la reforma", slackConnected=True, **legs)["hits"]
        self.assertEqual([found["path"] for found in told], ["/n", "s0", "s1", "s2", "s3", "/i"])
        told = lab("merge", query="lo del canal de obra", slackConnected=True, **legs)["hits"]
        self.assertEqual({found["kind"] for found in told}, {"slack"})

    def test_a_recap_tells_what_was_worked_on(self):
        rows = [{"ts": 1_000_000 + 60 * minute, "app": "Editor", "title": "informe.odt", "document": HOME + "informe.odt"}
                for minute in range(5)]
        order = {"now": 1_000_600, "timezone": "Europe/Madrid", "rows": rows,
                 "history": [{"createdAt": 1_000_100, "kind": "dictado", "app": "Correo", "title": "Respuesta"}]}
        spanish = lab("recap", language="es", **order)
        english = lab("recap", language="en", **order)
        self.assertEqual(spanish["documents"], [HOME + "informe.odt"])
        self.assertIn(f"«informe.odt» [{HOME}informe.odt]", spanish["text"])
        self.assertNotEqual(spanish["text"], english["text"])


unittest.main(verbosity=2)
