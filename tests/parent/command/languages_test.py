#!/usr/bin/env python3
"""Every screen of the command in a language made for the test (pseudo_catalogue.sh): whatever is
not translated, assembled from pieces or cut shows. And: which language is chosen, and that what
programs read is the same in each.

languages_test.py PRODUCT SOURCES"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PRODUCT, SOURCES = (pathlib.Path(argument) for argument in sys.argv[1:3])
MARK = "\u200f"
CARDS = """BEGIN:VCARD
VERSION:3.0
FN:Zrz Bzzk
N:Bzzk;Zrz;;;
BDAY:19800610
CATEGORIES:Gzk
UID:z1
END:VCARD
BEGIN:VCARD
VERSION:3.0
FN:Qwf
N:Qwf;;;;
BDAY:spring
UID:z2
END:VCARD
"""
# What people type and what is theirs: the same in every language.
DATA = re.compile(
    r"annivo[\w.-]*|Annivo|https?://\S+|\S*/\S*|--?[a-z][\w-]*|\b[A-Z]{3,}\b|\{[^}]*\}|\S+\.vcf\S*"
    r"|\b[0-9A-F]{8}-[0-9A-F-]+(?::AB\w+)?|z\d:ABPerson|\b(import|people|groups|labels|calendars"
    r"|choose|create|none|settings|alarms|add|remove|preview|run|list|status|on|off|service"
    r"|install|completions|message|email|sound|file|birthdays|anniversaries|both|bash|zsh|fish"
    r"|daily|weekly|monthly|all|birthday|anniversary|systemctl|systemd|enable|now|user)\b"
    r"|birthday-\w+|anniversary-\w+|[a-z]+-[a-z-]+|No Email Set|Basso|Bzzk|Dzzt|BDAY|vCards?|UID"
    r"|\d+(st|nd|rd|th)|[a-z]:(?= )|agent|group|logging")
HELP = [[], ["import"], ["people"], ["groups"], ["labels"], ["calendars"],
        ["calendars", "choose"], ["calendars", "create"], ["calendars", "none"], ["settings"],
        ["alarms"], ["alarms", "add"], ["alarms", "remove"], ["preview"], ["run"], ["list"],
        ["status"], ["on"], ["off"], ["service"], ["service", "install"], ["completions"]]
STORY = [["people"], ["calendars"], ["status"], ["preview"], ["import", "cards.vcf"], ["people"],
         ["groups"], ["labels"], ["calendars", "create", "Dzzt", "--for", "both"], ["calendars"],
         ["alarms", "add", "email", "--days", "7"], ["alarms"], ["settings"],
         ["settings", "birthday-title"], ["settings", "group", "Gzk"],
         ["settings", "last-run"], ["preview"], ["run"], ["list"], ["status"],
         ["calendars", "none", "birthdays"], ["preview"], ["settings", "agent", "off"],
         ["preview"], ["off"], ["on"], ["service", "remove"]]
REFUSED = [["frob"], ["people", "x"], ["people", "--x"], ["import"],
           ["list", "--days", "x"], ["list", "--from", "x"], ["alarms", "add", "fzx"],
           ["alarms", "add", "email", "--days", "-2"], ["alarms", "remove", "4"],
           ["calendars", "choose", "both", "Zzt"], ["calendars", "create", " "],
           ["settings", "fzb"], ["settings", "email", "x"], ["settings", "group", "x"],
           ["settings", "excluded-labels", "x"], ["settings", "update-interval", "x"],
           ["settings", "birthday-title", "{x}"], ["settings", "last-run", "x"],
           ["settings", "logging", "x"], ["service"], ["completions", "zzt"], []]

failures = []


def expect(holds, what):
    if not holds:
        failures.append(what)


class Home:
    def __init__(self, folder, product):
        self.folder, self.product = folder, product
        (folder / "cards.vcf").write_text(CARDS)

    def run(self, words, **environment):
        return subprocess.run([self.product / "Contents/Linux/annivo", *words], cwd=self.folder,
                              env={"HOME": str(self.folder), "TZ": "UTC", "PATH": "/nowhere",
                                   **environment}, capture_output=True, text=True, timeout=60)


def examine(words, text):
    shown = " ".join(["annivo", *words])
    for line in text.splitlines():
        expect(line.count(MARK) % 2 == 0, f"{shown}: a text is cut: {line!r}")
        rest = DATA.sub("", line.replace("·", ""))
        rest = re.sub(r'"[^"]*"', "", rest)
        for word in re.findall(r"[A-Za-z]+", rest):
            if re.search(r"[aeiouAEIOU]", word):
                expect(False, f"{shown}: {word!r} is not translated: {line!r}")


def screens(home):
    for words in HELP:
        done = home.run([*words, "--help"], LANGUAGE="qps")
        expect(done.returncode == 0 and MARK in done.stdout, f"{words} --help: {done}")
        examine([*words, "--help"], done.stdout)
    for words in STORY:
        done = home.run(words, LANGUAGE="qps")
        expect(done.returncode == 0, f"{words}: {done}")
        examine(words, done.stdout + done.stderr)
    for words in REFUSED:
        done = home.run(words, LANGUAGE="qps")
        expect(done.returncode in (1, 2) and MARK in done.stderr, f"{words}: {done}")
        examine(words, done.stderr)


def languages(home):
    rows = [({}, False), ({"LANG": "C"}, False), ({"LANG": "C", "LANGUAGE": "qps"}, True),
            ({"LANG": "qps_QP.UTF-8"}, True), ({"LC_MESSAGES": "qps", "LANG": "C"}, True),
            ({"LC_ALL": "C", "LC_MESSAGES": "qps"}, False), ({"LANGUAGE": "xx:qps"}, True),
            ({"LANGUAGE": "en:qps"}, False)]
    for environment, translated in rows:
        said = home.run(["status"], **environment).stdout
        expect((MARK in said) == translated, f"{environment}: {said}")


def programs(home):
    preferences = home.folder / "Library/Preferences"
    preferences.mkdir(parents=True, exist_ok=True)
    (preferences / ".GlobalPreferences.plist").write_text(
        '<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>'
        "<key>AppleLanguages</key><array><string>en</string></array></dict></plist>")
    for words in (["status"], ["people"], ["groups"], ["labels"], ["calendars"], ["settings"],
                  ["alarms"], ["list"], ["preview"], ["settings", "group"]):
        english, other = (home.run([*words, "--json"], LANGUAGE=language).stdout
                          for language in ("en", "qps"))
        expect(english == other and english, f"{words} --json: {english} {other}")


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        product = folder / "Annivo 2.app"
        shutil.copytree(PRODUCT, product, symlinks=True)
        subprocess.run([SOURCES / "tests/support/pseudo_catalogue.sh", SOURCES / "po/annivo.pot",
                        product / "Contents/Resources/locale"], check=True)
        (folder / "home").mkdir()
        home = Home(folder / "home", product)
        screens(home)
        languages(home)
        programs(home)
    print("\n".join(failures))
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
