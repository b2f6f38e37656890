"""Turns our Markdown pages into HTML pages that can be read without a network: links lead from page
to page, pictures lie inside."""
import base64
import dataclasses
import html
import pathlib
import re
import string

from markdown_it import MarkdownIt
from markdown_it.token import Token

_TEMPLATE = string.Template((pathlib.Path(__file__).parent / "page.html").read_text("utf-8"))


class BrokenLink(Exception):
    """A page links to a heading or a picture that is not there."""


@dataclasses.dataclass(frozen=True)
class Page:
    """A page of the release: where its text is, and the name and the title that it gets."""
    source: pathlib.Path
    name: str   # without ".html"
    title: str  # in the row of links at the top


def anchor_of(heading: str) -> str:
    """The name that a heading's link has where our pages are usually read."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def _text_of(inline: Token) -> str:
    return "".join(child.content for child in inline.children or [])


def _name_headings(tokens: list[Token]) -> set[str]:
    """Gives the headings their anchors; a second heading of the same text gets a number."""
    taken: set[str] = set()
    for opened, inline in zip(tokens, tokens[1:]):
        if opened.type != "heading_open":
            continue
        name = first = anchor_of(_text_of(inline))
        number = 0
        while name in taken:
            number += 1
            name = f"{first}-{number}"
        taken.add(name)
        opened.attrSet("id", name)
    return taken


def _picture(path: pathlib.Path) -> str:
    if not path.is_file():
        raise BrokenLink(f"the picture {path} is not there")
    return "data:image/png;base64," + base64.b64encode(path.read_bytes()).decode()


class Book:
    """All pages of a release, which know of each other."""

    def __init__(self, pages: list[Page]):
        self.pages = pages
        self._tokens: dict[str, list[Token]] = {}
        self._anchors: dict[str, set[str]] = {}
        reader = MarkdownIt("commonmark").enable("table")
        self._reader = reader
        for page in pages:
            tokens = reader.parse(page.source.read_text("utf-8"))
            self._tokens[page.name] = tokens
            self._anchors[page.name] = _name_headings(tokens)
        self._names = {page.source.resolve(): page.name for page in pages}

    def _target(self, page: Page, link: str) -> str | None:
        """Where a link of the page leads in the release; None when what it names is not in it."""
        if re.match(r"[a-z]+:", link):
            return link
        path, _, anchor = link.partition("#")
        name = self._names.get((page.source.parent / path).resolve()) if path else page.name
        if name is None:
            return None
        if anchor and anchor not in self._anchors[name]:
            raise BrokenLink(f"{page.source.name} links to {link}, which has no such heading")
        return (f"{name}.html" if path else "") + (f"#{anchor}" if anchor else "")

    def _lead_links(self, page: Page, children: list[Token]) -> None:
        opened: list[Token] = []
        for child in children:
            if child.type == "image":
                child.attrSet("src", _picture(page.source.parent / str(child.attrGet("src"))))
            elif child.type == "link_open":
                opened.append(child)
                target = self._target(page, str(child.attrGet("href")))
                if target is None:
                    # What lies in the sources alone is named, but cannot be followed.
                    child.tag = "span"
                    child.attrs = {"class": "sources", "title": "in the program's sources"}
                else:
                    child.attrSet("href", target)
            elif child.type == "link_close":
                child.tag = opened.pop().tag

    def html_of(self, page: Page) -> str:
        """The whole page."""
        tokens = self._tokens[page.name]
        for token in tokens:
            if token.children:
                self._lead_links(page, token.children)
        body = self._reader.renderer.render(tokens, self._reader.options, {})
        links = " ".join(
            f'<a href="{other.name}.html"{" aria-current=page" if other is page else ""}>'
            f"{html.escape(other.title)}</a>" for other in self.pages)
        return _TEMPLATE.substitute(title=html.escape(page.title), links=links, body=body)
