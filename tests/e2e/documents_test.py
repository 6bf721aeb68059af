#!/usr/bin/python3
"""Documents through the real reader process: what LibreOffice writes comes back with its words in order, and documents
that nobody should open cost nothing but themselves.

    documents_test.py FOLDER    of a build
"""

import os
import shutil
import socket
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
import document_words as words  # noqa: E402

BUILD = Path(sys.argv.pop())
WORD_DOCUMENT = '<w:document xmlns:w="w"><w:body><w:p><w:r><w:t>%s</w:t></w:r></w:p></w:body></w:document>'
ENTITIES = '<!DOCTYPE d [<!ENTITY a "ha">' + "".join(
    f'<!ENTITY {name} "{f"&{before};" * 10}">' for before, name in zip("abcdefgh", "bcdefghi")) + "]>"


def pdf(*objects: str) -> bytes:
    """One with a page whose tree and contents are among the objects, numbered from 1."""
    body = b"%PDF-1.4\n"
    offsets = []
    for number, content in enumerate(objects, 1):
        offsets.append(len(body))
        body += f"{number} 0 obj\n{content}\nendobj\n".encode("latin-1")
    table = "".join(f"{offset:010} 00000 n \n" for offset in offsets)
    return body + (f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n{table}trailer\n<< /Size {len(objects) + 1} "
                   f"/Root 1 0 R >>\nstartxref\n{len(body)}\n%%EOF\n").encode()


def stream(content: str, entries: str = "") -> str:
    return f"<< /Length {len(content)} {entries} >>\nstream\n{content}\nendstream"


def page(*more: str) -> bytes:
    """A page that draws what the object 4 is, a form."""
    return pdf("<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Contents 5 0 R /Resources << /XObject << /X 4 0 R >> >> >>",
               more[0], stream("/X Do"), *more[1:])


def form(content: str, number: int) -> str:
    return stream(content, f"/Type /XObject /Subtype /Form /BBox [0 0 99 99] /Resources << /XObject << /X {number} 0 R >> >>")


def archive(file: Path, **parts: str | bytes) -> None:
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as opened:
        for name, content in parts.items():
            opened.writestr(name.replace("__", "/") + ".xml", content)


class Documents(unittest.TestCase):
    folder: Path

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.reader = cls.enterClassContext(words.Reader(BUILD))

    def tearDown(self):
        # Whatever it was, the next one is read.
        good = self.folder / "good.txt"
        good.write_text("still there")
        self.assertEqual(self.reader.text(good), "still there")

    def text(self, name: str, content: bytes | str | None = None, limit: int = 400_000) -> str | None:
        file = self.folder / name
        if content is not None:
            file.write_bytes(content if isinstance(content, bytes) else content.encode())
        return self.reader.text(file, limit)

    @unittest.skipUnless(shutil.which("soffice"), "LibreOffice is not installed")
    def test_words_come_back_in_order(self):
        words.make_documents(self.folder)
        for source in words.CORPUS.glob("*.fodt"):
            for kind in words.FORMATS:
                with self.subTest(source=source.stem, format=kind):
                    result = words.score(words.source_of(source), self.text(f"{source.stem}.{kind}") or "")
                    self.assertGreater(result.words, 500)
                    self.assertEqual(result.found, result.words)
                    self.assertLess(result.more, 20)
        # By what they are, not by what they are called.
        os.rename(self.folder / "report.rtf", self.folder / "renamed.doc")
        self.assertIn("Peñarrubia", self.text("renamed.doc"))

    def test_a_bundle_is_its_document(self):
        bundle = self.folder / "notes.rtfd"
        bundle.mkdir()
        (bundle / "TXT.rtf").write_text(r"{\rtf1 ma\'f1ana}")
        self.assertEqual(self.text("notes.rtfd"), "mañana")
        (bundle / "TXT.rtf").unlink()
        self.assertIsNone(self.text("notes.rtfd"))

    def test_text_is_cut_at_its_limit_and_large_files_are_not_read(self):
        self.assertEqual(self.text("a\nline.md", "ñandú\0 e\u0301xito", 7), "ñandú e\u0301")
        line = b"word " * 4_800_000
        self.assertEqual(self.text("line.txt", line), line[:400_000].decode())
        self.assertEqual(self.text("latin.csv", line[:24_999_998] + b"\xf1", 5), "word ")
        self.assertIsNone(self.text("large.txt", b"x" * 25_000_000))
        for content in (b"", b" \n\0 "):
            self.assertIsNone(self.text("empty.json", content))

    def test_what_is_no_file_is_not_opened(self):
        os.mkfifo(self.folder / "pipe.txt")
        (self.folder / "folder.pdf").mkdir()
        (self.folder / "link.txt").symlink_to("/etc/hostname")
        listener = socket.socket(socket.AF_UNIX)
        listener.bind(str(self.folder / "socket.txt"))
        names = ["pipe.txt", "folder.pdf", "link.txt", "socket.txt", "missing.txt", "nothing", "unknown.exe"]
        if os.geteuid() == 0:
            os.mknod(self.folder / "zero.txt", 0o20644, os.makedev(1, 5))
            names.append("zero.txt")
        for name in names:
            self.assertIsNone(self.text(name), name)
        listener.close()

    def test_archives_that_are_bombs_or_none(self):
        space = b" " * 1_000_000
        with zipfile.ZipFile(self.folder / "bomb.docx", "w", zipfile.ZIP_DEFLATED) as bomb:
            with bomb.open("word/document.xml", "w") as part:
                for _ in range(1000):
                    part.write(space)
        archive(self.folder / "many.odt", **{f"part{number}": "" for number in range(20_000)}, content="<text:p>x</text:p>")
        archive(self.folder / "other.docx", ppt__slide="<a:t>x</a:t>")
        archive(self.folder / "broken.odt", content="<text:p>x")
        for name in ("bomb.docx", "many.odt", "other.docx", "broken.odt"):
            self.assertIsNone(self.text(name), name)
        for name in ("nothing.docx", "nothing.odt", "nothing.rtf", "nothing.doc", "nothing.pdf"):
            for content in (b"", b"PK\x03\x04", b"\xd0\xcf\x11\xe0" * 100, b"{\\rtf", b"%PDF-1.4\n", os.urandom(1000)):
                self.assertIsNone(self.text(name, content), (name, content))

    def test_xml_that_is_out_to_grow(self):
        archive(self.folder / "laughs.docx", word__document=ENTITIES + WORD_DOCUMENT % "&i;")
        self.assertEqual(self.text("laughs.docx"), "&i;\n")
        outside = '<!DOCTYPE d [<!ENTITY x SYSTEM "file:///etc/hostname">]>'
        archive(self.folder / "outside.docx", word__document=outside + WORD_DOCUMENT % "&x;")
        self.assertEqual(self.text("outside.docx"), "&x;\n")
        deep = 100_000
        nested = "<w:sdt>" * deep + WORD_DOCUMENT % "deep" + "</w:sdt>" * deep
        archive(self.folder / "deep.docx", word__document=nested)
        self.assertEqual(self.text("deep.docx"), "deep\n")
        # Much more in memory than in its file.
        archive(self.folder / "wide.docx", word__document="<w:body>" + "<a/>" * 15_000_000 + "</w:body>")
        self.assertIsNone(self.text("wide.docx"))

    def test_pdfs_that_go_in_circles(self):
        circle = pdf("<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [2 0 R 2 0 R] /Count 2 >>")
        self.assertIsNone(self.text("pages.pdf", circle))
        self.assertIsNone(self.text("itself.pdf", page(form("/X Do", 4))))
        # Ten times ten times ten times ... nothing.
        forms = [form("/X Do " * 10, number) for number in (6, *range(7, 20))]
        answer = self.text("powers.pdf", page(forms[0], *forms[1:], stream("", "/Type /XObject /Subtype /Form")))
        self.assertIn(answer, (None, "error: it takes too long"))

    @unittest.skipUnless(shutil.which("soffice"), "LibreOffice is not installed")
    def test_a_password_keeps_the_text(self):
        options = '{"EncryptFile":{"type":"boolean","value":"true"},"DocumentOpenPassword":{"type":"string","value":"x"}}'
        words.make_documents(self.folder, (f"pdf:writer_pdf_Export:{options}",))
        self.assertTrue((self.folder / "report.pdf").read_bytes().startswith(b"%PDF"))
        self.assertIsNone(self.text("report.pdf"))


if __name__ == "__main__":
    unittest.main()
