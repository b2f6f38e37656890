"""A release: its pages, its zips, its signatures."""
import hashlib
import html.parser
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))

import contents  # noqa: E402
import make_release  # noqa: E402
import pages  # noqa: E402

BUILD = contents.ROOT / "build/mingw"
EPOCH = 1_700_000_001


class Reader(html.parser.HTMLParser):
    """Collects what a page links to, shows and can be linked at."""

    def __init__(self, text: str):
        super().__init__()
        self.links: list[str] = []
        self.sources: list[str] = []
        self.anchors: set[str] = set()
        self.feed(text)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        for name, value in attrs:
            if name == "href":
                self.links.append(value or "")
            elif name == "src":
                self.sources.append(value or "")
            elif name == "id":
                self.anchors.add(value or "")


def made_pages() -> dict[str, Reader]:
    book = pages.Book(contents.PAGES)
    return {f"{page.name}.html": Reader(book.html_of(page)) for page in contents.PAGES}


class Pages(unittest.TestCase):
    def test_every_link_leads_somewhere_without_a_network(self):
        made = made_pages()
        followed = 0
        for name, page in made.items():
            for link in page.links:
                target, _, anchor = link.partition("#")
                target = target or name
                with self.subTest(page=name, link=link):
                    self.assertIn(target, made)
                    if anchor:
                        self.assertIn(anchor, made[target].anchors)
                followed += 1
        self.assertGreater(followed, 100)

    def test_pictures_lie_inside(self):
        for name, page in made_pages().items():
            for source in page.sources:
                with self.subTest(page=name):
                    self.assertTrue(source.startswith("data:image/png;base64,"))

    def written(self, text: str) -> pages.Book:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = pathlib.Path(folder.name, "page.md")
        path.write_text(text)
        return pages.Book([pages.Page(path, "page", "Page")])

    def test_a_link_to_a_missing_heading_is_an_error(self):
        book = self.written("# One\n\n[there](#two)\n")
        with self.assertRaises(pages.BrokenLink):
            book.html_of(book.pages[0])

    def test_a_missing_picture_is_an_error(self):
        book = self.written("![window](window.png)\n")
        with self.assertRaises(pages.BrokenLink):
            book.html_of(book.pages[0])

    def test_headings_of_one_text_get_different_anchors(self):
        book = self.written("# Same `text`!\n\n# Same text\n\n[second](#same-text-1)\n")
        page = Reader(book.html_of(book.pages[0]))
        self.assertEqual(page.anchors, {"same-text", "same-text-1"})

    def test_what_lies_in_the_sources_alone_is_no_link(self):
        book = self.written("[sources](../src/none.md) [home](page.md)\n")
        text = book.html_of(book.pages[0])
        self.assertIn('<span class="sources" title="in the program\'s sources">sources</span>',
                      text.replace("&#39;", "'"))
        self.assertIn('<a href="page.html">home</a>', text)


class Zips(unittest.TestCase):
    def release(self) -> contents.Release:
        return contents.Release(make_release.version(), EPOCH, BUILD)

    def made(self) -> dict[str, bytes]:
        with tempfile.TemporaryDirectory() as folder:
            return {path.name: path.read_bytes()
                    for path in make_release.make(self.release(), pathlib.Path(folder))}

    def test_two_releases_of_the_same_sources_are_equal(self):
        first, second = self.made(), self.made()
        self.assertEqual(len(first), 3)
        self.assertEqual(first, second)

    def test_the_zip_holds_what_its_first_page_promises(self):
        name = f"setup-{make_release.version()}-win64"
        made = self.made()
        with zipfile.ZipFile(io.BytesIO(made[f"{name}.zip"])) as archive:
            files = {entry.filename.removeprefix(f"{name}/"): archive.read(entry)
                     for entry in archive.infolist()}
            self.assertEqual({entry.date_time for entry in archive.infolist()},
                             {(2023, 11, 14, 22, 13, 20)})
        for file in (*contents.PROGRAMS, "Lang.ini", "Setup.ini", "LICENSE.txt", "THIRD-PARTY.txt",
                     "bom.cdx.json", "pages/index.html", "sample/Setup.ini", "sample/demo.modem",
                     "sample/WIN7/ompmodem.inf", "sample/WINXP64/ompmodem.inf"):
            self.assertIn(file, files)
        self.assertFalse([file for file in files if file.endswith((".debug", ".py", ".md"))])
        sums = dict(reversed(line.split("  ")) for line in
                    files.pop("SHA256SUMS").decode().splitlines())
        self.assertEqual(sums, {file: hashlib.sha256(content).hexdigest()
                                for file, content in files.items()})
        for package in ("CLI11", "JSON for Modern C++", "GCC Runtime Library Exception"):
            self.assertIn(package.lower(), files["THIRD-PARTY.txt"].decode().lower())

    def test_no_path_of_the_building_machine_is_in_a_program(self):
        for name in contents.PROGRAMS:
            content = (BUILD / name).read_bytes()
            self.assertNotIn(str(contents.ROOT).encode(), content, name)
            self.assertNotIn(str(contents.ROOT).encode("utf-16-le"), content, name)

    def test_the_newest_change_is_of_this_version(self):
        headings = [line for line in (contents.ROOT / "CHANGELOG.md").read_text().splitlines()
                    if line.startswith("## ")]
        self.assertEqual(headings[0], f"## {make_release.version()}")

    def test_an_address_is_found_in_the_symbols(self):
        symbols = str(BUILD / "Setup.exe.debug")
        listed = subprocess.run(["x86_64-w64-mingw32-nm", symbols], capture_output=True, text=True,
                                check=True).stdout
        address = next(line.split()[0] for line in listed.splitlines()
                       if line.endswith(" wWinMain"))
        told = subprocess.run(["x86_64-w64-mingw32-addr2line", "-f", "-e", symbols, address],
                              capture_output=True, text=True, check=True).stdout
        self.assertRegex(told, r"^wWinMain\n.*src/setup/entry\.cpp:\d+")


class Signatures(unittest.TestCase):
    def verified(self, program: pathlib.Path, certificate: pathlib.Path) -> bool:
        return subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", program],
                              capture_output=True).returncode == 0

    def test_signed_programs_verify_until_a_byte_changes(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            key, certificate = folder / "key.pem", folder / "certificate.pem"
            subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days",
                            "2", "-subj", "/CN=Release test", "-addext",
                            "extendedKeyUsage=codeSigning", "-keyout", key, "-out", certificate],
                           check=True, capture_output=True)
            signed = folder / "signed"
            subprocess.run([HERE.parent / "sign.sh", BUILD, signed, certificate, key], check=True,
                           capture_output=True)
            for program in contents.PROGRAMS:
                self.assertTrue(self.verified(signed / program, certificate), program)
                self.assertFalse(self.verified(BUILD / program, certificate), program)
            image = bytearray((signed / "Setup.exe").read_bytes())
            image[0x2000] ^= 1
            (signed / "Setup.exe").write_bytes(image)
            self.assertFalse(self.verified(signed / "Setup.exe", certificate))
            release = contents.Release("1", EPOCH, BUILD, signed)
            self.assertEqual(contents.files_of(release)["PacketCheck.exe"],
                             (signed / "PacketCheck.exe").read_bytes())


if __name__ == "__main__":
    unittest.main()
