"""Building HTML and SVG texts in which everything that is not markup is escaped."""

import html


class Markup(str):
    """Text that is markup already."""


def element(tag: str, *content: str, **attributes: object) -> Markup:
    """One element. An attribute's name may end in _ where Python reserves it, and has _ for -; an
    attribute of None is left out."""
    written = "".join(
        f' {key.rstrip("_").replace("_", "-")}="{html.escape(_text(value))}"'
        for key, value in attributes.items() if value is not None)
    if tag in ("meta", "link", "img", "br", "rect", "line", "path", "circle"):
        inside = join(*content)
        return Markup(f"<{tag}{written}>{inside}</{tag}>" if inside else f"<{tag}{written}/>")
    return Markup(f"<{tag}{written}>{join(*content)}</{tag}>")


def join(*content: str) -> Markup:
    """Pieces of content behind each other."""
    return Markup("".join(piece if isinstance(piece, Markup) else html.escape(piece)
                          for piece in content))


def _text(value: object) -> str:
    return f"{value:.1f}".removesuffix(".0") if isinstance(value, float) else str(value)
