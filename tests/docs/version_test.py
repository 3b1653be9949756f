#!/usr/bin/env python3
"""version_test.py PRODUCT VERSION: whether all parts of the built product, and the documents, say
that version."""
import pathlib
import plistlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).parents[2]
PRODID = re.compile(rb"PRODID:-//Annivo//Annivo Agent ([^/]*)//EN")


def said(product):
    """(where, what it says) for each whole version, then for each short one."""
    whole, short = [], []
    for bundle in ("Contents", "Contents/Helpers/AnnivoAgent.app/Contents",
                   "Contents/Frameworks/Sparkle.framework/Versions/A/Resources"):
        info = plistlib.loads((product / bundle / "Info.plist").read_bytes())
        whole.append((bundle, info["CFBundleVersion"]))
        short.append((bundle, info["CFBundleShortVersionString"]))
    command = subprocess.run([product / "Contents/Linux/annivo", "--version"], check=True,
                             capture_output=True, text=True)
    whole.append(("annivo --version", command.stdout.removeprefix("annivo ").strip()))
    agent = product / "Contents/Helpers/AnnivoAgent.app/Contents/Linux/AnnivoAgent"
    for path in (agent, ROOT / "docs/formats/calendars.md"):
        found = PRODID.findall(path.read_bytes()) or [b"nothing"]
        short += [(path.name, text.decode()) for text in found]
    return whole, short


def main():
    product, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    whole, short = said(product)
    wrong = [f"{where} says {what}" for where, what in whole if what != version]
    wrong += [f"{where} says {what}" for where, what in short
              if what != ".".join(version.split(".")[:2])]
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
