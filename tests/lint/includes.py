#!/usr/bin/env python3
"""Checks which folder includes what: the directions between our folders and the one place in which
each third-party header may stand. Exit status 1 and a line for each breach."""
import pathlib
import re
import sys

# What a folder may include besides itself. A file name instead of a folder names a leaf that
# others may look back to.
ALLOWED = {
    "platform": [],
    "calendar": ["platform", "run/LoggingSwitch.h"],
    "contacts": ["platform", "run/LoggingSwitch.h", "run/ZPKLimitSystem.h"],
    "format": ["platform", "calendar", "contacts/ContactDateRecord.h", "run/LoggingSwitch.h"],
    "run": ["platform", "calendar", "contacts", "format"],
    "frameworks": ["platform"],
    "parent": ["platform", "calendar", "contacts", "format", "run"],
}
# The modules of the platform, in the order in which they build on each other.
PLATFORM = {
    "foundation": [],
    "appkit": ["foundation"],
    "coredata": ["foundation"],
    "addressbook": ["foundation", "coredata"],
    "calendarstore": ["foundation"],
    "sparkle": ["foundation"],
    "": ["foundation", "appkit", "coredata", "addressbook", "calendarstore", "sparkle"],
}
# Third-party headers and the files (by prefix) that may include them.
THIRD_PARTY = {
    r"plist/": ["platform/foundation/"],
    r"cctz/": ["platform/foundation/NSCalendarDate.cpp"],
    r"utf8proc\.h": ["platform/foundation/Unicode.cpp"],
    r"sqlite3\.h": ["platform/coredata/SQLiteDatabase.cpp"],
    r"pugixml\.hpp": ["platform/coredata/", "frameworks/Sparkle/"],
    r"curl/": ["frameworks/Sparkle/"],
    r"CLI/": ["parent/"],
    r"libical/": [],
}
# Headers of the operating system that would let a domain folder reach around the platform.
SYSTEM = re.compile(r"^(sys/|unistd|fcntl|dirent|poll|pthread|signal|spawn|syslog|dlfcn|pwd|time\.h"
                    r"|ctime|cstdlib|filesystem|fstream|iostream|cstdio|thread|random|locale)")
DOMAIN = ("calendar", "contacts", "format", "run")


def may(allowed, header):
    return any(header == a or header.startswith(a + "/") for a in allowed)


def breaches(root):
    for folder, allowed in ALLOWED.items():
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".c"):
                continue
            name = path.relative_to(root).as_posix()
            for number, line in enumerate(path.read_text().splitlines(), 1):
                match = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
                if not match:
                    continue
                kind, header = match.groups()
                where = f"{name}:{number}: "
                for pattern, places in THIRD_PARTY.items():
                    if re.match(pattern, header) and not any(name.startswith(p) for p in places):
                        yield where + f"<{header}> belongs to {places or 'the tests'}"
                if kind == "<":
                    if folder in DOMAIN and name != "run/main.cpp" and SYSTEM.match(header):
                        yield where + f"<{header}> reaches around platform/"
                    continue
                first = header.split("/")[0]
                if "/" not in header:
                    yield where + f'"{header}" is not written from the root'
                elif first != folder and not may(allowed, header):
                    yield where + f"{folder}/ may not include {header}"
                elif folder == "platform":
                    yield from platform_breaches(name, header, where)


def platform_breaches(name, header, where):
    def module(path):
        parts = path.split("/")
        return parts[1] if len(parts) > 2 else ""
    mine, other = module(name), module(header)
    if other != mine and other not in PLATFORM[mine]:
        yield where + f"platform/{mine} may not include {header}"


def main():
    root = pathlib.Path(sys.argv[1])
    found = list(breaches(root))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
