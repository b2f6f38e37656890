"""Registry texts: Wine's own files (while a machine is off) and exported ones (while it is on)."""

import pathlib
import re

SYSTEM = "system.reg"
USER = "user.reg"
_HIVES = {
    "HKEY_LOCAL_MACHINE\\": SYSTEM,
    "HKLM\\": SYSTEM,
    "HKEY_CURRENT_USER\\": USER,
    "HKCU\\": USER,
}


def _hive_of(key: str) -> tuple[str, str]:
    for start, hive in _HIVES.items():
        if key.upper().startswith(start):
            return hive, key[len(start):]
    raise ValueError(f"no hive for registry key {key}")


def _ascii(text: str) -> str:
    """Wine's files are ASCII: everything else is written as \\xNNNN."""
    return "".join(c if ord(c) < 128 else f"\\x{ord(c):04x}" for c in text)


def seed(prefix: pathlib.Path, reg_text: str) -> None:
    """Puts the keys of a .reg text into the files of a machine that is off. Later keys win, as when
    the text is imported by the registry editor, but without starting anything."""
    parts: dict[str, list[str]] = {SYSTEM: [], USER: []}
    hive = None
    for line in reg_text.replace("\r", "").split("\n"):
        key = re.fullmatch(r"\[(-?)(.*)\]", line.strip())
        if key:
            hive, path = _hive_of(key.group(2))
            if key.group(1):
                _delete(prefix / hive, path)
                hive = None
            else:
                parts[hive].append("\n[" + _ascii(path.replace("\\", "\\\\")) + "] 1")
        elif hive and line.strip() and not line.lstrip().startswith(";"):
            parts[hive].append(_ascii(line))
    for name, lines in parts.items():
        if lines:
            with open(prefix / name, "a", encoding="ascii") as file:
                file.write("\n".join(lines) + "\n")


def _delete(file: pathlib.Path, path: str) -> None:
    """Takes a key and all below it out of one of Wine's files."""
    start = ("[" + _ascii(path.replace("\\", "\\\\"))).lower()
    head, *sections = re.split(r"\n(?=\[)", file.read_text("utf-8"))
    kept = [section for section in sections
            if not section.lower().startswith((start + "]", start + "\\\\"))]
    if len(kept) != len(sections):
        file.write_text("\n".join([head, *kept]), "utf-8")


# Wine's own files tell when a key was written.
_COMMENT = re.compile(r"^#.*\n?", re.M)


def _sections(text: str) -> dict[str, str]:
    """{key path in its own case: the lines of its values} of either kind of text."""
    text = text.replace("\r", "").replace(",\\\n  ", ",")
    exported = text.startswith(("Windows Registry Editor", "REGEDIT"))
    text = _COMMENT.sub("", text)
    keys: dict[str, str] = {}
    for section in text.split("\n[")[1:]:
        head, _, values = section.partition("\n")
        path = head[:head.rindex("]")]
        path = path if exported else path.replace("\\\\", "\\")
        values = values.strip("\n")
        keys[path] = keys[path] + "\n" + values if path in keys else values
    return keys


def values_of(lines: str) -> dict[str, str]:
    """{value name: value as written} of one key's lines."""
    found = {}
    for line in lines.split("\n"):
        match = re.match(r'(@|"(?:[^"\\]|\\.)*")=(.*)', line)
        if match:
            found[match.group(1).strip('"')] = _one_form(match.group(2))
    return found


def _one_form(value: str) -> str:
    """Lists of texts are written in two ways, which mean the same."""
    match = re.fullmatch(r"(?:hex\(7\)|str\(7\)):(.*)", value)
    if not match:
        return value
    if value.startswith("str"):
        units = match.group(1).strip('"').replace("\\0", "\0").replace("\\\\", "\\")
    else:
        units = bytes(int(byte, 16) for byte in match.group(1).split(",") if byte) \
            .decode("utf-16-le", errors="replace")
    return "texts:" + "|".join(part for part in units.split("\0") if part)


def parse(text: str) -> dict[str, dict[str, str]]:
    """{key path: {value name: value as written}}"""
    return {path: values_of(lines) for path, lines in _sections(text).items()}


def plain(value: str | None) -> str:
    """A value as a person reads it: text without quotes and escapes, numbers as decimal digits."""
    if value is None:
        return ""
    if value.startswith("dword:"):
        return str(int(value[6:], 16))
    match = re.fullmatch(r'(?:str\(\d\):)?"(.*)"', value)
    return match.group(1).replace("\\\\", "\\").replace('\\"', '"') if match else value


def stored(prefix: pathlib.Path) -> dict[str, str]:
    """Both hives of a machine that is off: {key path: the lines of its values}."""
    keys = {}
    for name, start in ((SYSTEM, "HKLM\\"), (USER, "HKCU\\")):
        text = (prefix / name).read_text("utf-8", errors="replace")
        keys.update({start + path: lines for path, lines in _sections(text).items()})
    return keys


# What comes and goes with Wine's own start and end.
_NOISE = re.compile(r"\\(NetworkCards|AppDefaults|Wine\\Drivers)(\\|$)"
                    # its screen
                    r"|\\Class\\\{4D36E96[8E]-|\\Enum\\(PCI|DISPLAY)|\\Video", re.I)


def difference(before: dict[str, str], after: dict[str, str]) -> list[str]:
    """Lines that tell what was added (+), removed (-) and changed (~), in the order of the keys."""
    lines = []
    for key in sorted(before.keys() | after.keys(), key=str.lower):
        if before.get(key) == after.get(key) or _NOISE.search(key):
            continue
        if key not in before or key not in after:
            lines.append(f"{'+' if key not in before else '-'} [{key}]")
        old, new = values_of(before.get(key, "")), values_of(after.get(key, ""))
        for name in sorted(old.keys() | new.keys()):
            was, now = old.get(name), new.get(name)
            if was != now:
                mark = "+" if was is None else "-" if now is None else "~"
                lines.append(f"{mark} [{key}] {name} = {now if now is not None else was}"
                             + (f" (was {was})" if mark == "~" else ""))
    return lines
