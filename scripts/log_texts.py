"""The texts that the program logs, read from its sources."""
import pathlib
import re

_LITERAL = re.compile(r'L"((?:[^"\\]|\\.)*)"')
# Neighbouring literals are one text for the compiler.
_LITERALS = re.compile(r'L"(?:[^"\\]|\\.)*"(?:\s*L"(?:[^"\\]|\\.)*")*')
_COMMENT = re.compile(r"^\s*//.*$", re.M)
# Not every text stands inside a WriteLog call: some reach it by way of a table or a helper. What
# all have in common is the operation's name in front.
_LOG_TEXT = re.compile(r"^(pre )?[A-Z]\w+(:[ \\]| -{5}| Enter$)")
# The caption of the version box looks like a log text and is none.
_NOT_LOGGED = re.compile(r"^Version: ")


def log_texts(folder: pathlib.Path) -> dict[str, pathlib.Path]:
    """{text: the first file below the folder that has it}, with the escapes of the source."""
    found: dict[str, pathlib.Path] = {}
    for path in sorted(folder.rglob("*.cpp")):
        source = _COMMENT.sub("", path.read_text("utf-8"))
        for match in _LITERALS.finditer(source):
            text = "".join(_LITERAL.findall(match.group()))
            before = source[:match.start()].rstrip()
            logged = before.endswith(("WriteLog(", "LogFailure(")) or _LOG_TEXT.match(text)
            if logged and not _NOT_LOGGED.match(text):
                found.setdefault(text, path.relative_to(folder))
    return found
