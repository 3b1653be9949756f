#!/usr/bin/env python3
"""Holds the code against the table of rooms in docs/architecture.md: which room includes which, in
which room each library's headers stand, and how large a room may be. Exit status 1 and a line for
each breach."""
import pathlib
import re
import sys

# Headers of the operating system that would let a room reach around platform/.
SYSTEM = re.compile(r"^(sys/|unistd|fcntl|dirent|poll|pthread|signal|spawn|syslog|dlfcn|pwd|time\.h"
                    r"|ctime|cstdlib|filesystem|fstream|iostream|cstdio|thread|random|locale)")
WITHOUT_SYSTEM = ("base", "codecs", "calendar", "contacts", "format", "run")
# The files in which such a header is what the file is for, and the two headers in which base/ and
# codecs/ use no more than the printing of numbers and the release of a library's memory.
MAY_USE_SYSTEM = {"run/main.cpp", "base/UUID.cpp"}
PLAIN = {"cstdio", "cstdlib"}
# Headers as the table names them, by library.
LIBRARIES = {"cctz": "cctz/", "utf8proc": "utf8proc.h", "libuuid": "uuid/",
             "pugixml": "pugixml.hpp", "SQLite": "sqlite3.h", "libcurl": "curl/", "CLI11": "CLI/",
             "libical": "libical/"}
MOST_UNITS = 25
MOST_SHARE = 0.30


def rooms(root):
    """Room -> (what it may include, its libraries), as docs/architecture.md has it."""
    table = {}
    for line in (root / "docs/architecture.md").read_text().splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if len(cells) == 4 and re.fullmatch(r"`[^`]+/`", cells[0]):
            room = cells[0].strip("`").rstrip("/")
            table[room] = (re.findall(r"`([^`]+)`", cells[2]),
                           [name.strip() for name in cells[3].split(",") if name.strip()])
    return table


def room_of(path, table):
    found = [room for room in table if path.startswith(room + "/")]
    return max(found, key=len, default="")


def may(header, allowed):
    return any(header == a or a.endswith("/") and header.startswith(a) for a in allowed)


def sources(root, table):
    for top in sorted({room.split("/")[0] for room in table}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".h", ".cpp", ".c"):
                yield path.relative_to(root).as_posix(), path.read_text()


def breaches(root):
    table = rooms(root)
    if not table:
        yield "docs/architecture.md: there is no table of rooms"
    lines, units = {}, {}
    for name, text in sources(root, table):
        room = room_of(name, table)
        if not room:
            yield f"{name} lies in no room"
            continue
        lines[room] = lines.get(room, 0) + text.count("\n")
        if "/" not in name[len(room) + 1:]:
            units.setdefault(room, set()).add(name.rsplit(".", 1)[0])
        for number, line in enumerate(text.splitlines(), 1):
            match = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if match:
                for what in included(name, room, *match.groups(), table):
                    yield f"{name}:{number}: {what}"
    for room, count in lines.items():
        whole = sum(lines.values())
        if whole > 10_000 and count > MOST_SHARE * whole:
            yield f"{room}/ holds {count} of {whole} lines"
        if len(units.get(room, [])) > MOST_UNITS:
            yield f"{room}/ holds {len(units[room])} units side by side"


def included(name, room, kind, header, table):
    allowed, libraries = table[room]
    if kind == "<":
        for library, prefix in LIBRARIES.items():
            if header.startswith(prefix) and library not in libraries:
                yield f"<{header}> is not for {room}/"
        if name.startswith(tuple(top + "/" for top in WITHOUT_SYSTEM)):
            plain = header in PLAIN and name.startswith(("base/", "codecs/"))
            if SYSTEM.match(header) and name not in MAY_USE_SYSTEM and not plain:
                yield f"<{header}> reaches around platform/"
    elif "/" not in header:
        yield f'"{header}" is not written from the root'
    elif room_of(header, table) != room and not may(header, allowed):
        yield f"{room}/ may not include {header}"


def main():
    found = list(breaches(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
