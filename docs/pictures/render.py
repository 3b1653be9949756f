#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the pictures of this folder from what the commands print on a terminal.

usage: render.py [--check] PRODUCT

PRODUCT is "Annivo 2.app" of a build. With --check nothing is written: the pictures that are there
must be those that would be made.
"""
import argparse
import html
import re
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "tests/docs"))
from story import Story  # noqa: E402

# Ann has married, Bob has no birthday any more, Dora is new.
LATER = r"""
sed 's/Smith/Miller/; /^BDAY:--0229/d' docs/contacts.vcf > ~/later.vcf
printf 'BEGIN:VCARD\nVERSION:3.0\nFN:Dora Klein\nBDAY:1990-04-05\nEND:VCARD\n' >> ~/later.vcf
"""
# What happens first, and the command of the picture.
PICTURES = {
    "preview": (
        [
            "annivo import docs/contacts.vcf",
            "annivo calendars create Dates --for both",
            "annivo settings excluded-labels 'work anniversary'",
            "annivo run",
            LATER + "annivo import ~/later.vcf",
        ],
        "annivo preview",
    ),
    "list": (
        [
            "annivo import docs/contacts.vcf",
            "annivo calendars create Dates --for both",
            "annivo alarms add email --days 7 --for birthdays",
            "annivo run",
        ],
        "annivo list",
    ),
}
COLOURS = {"31": "#ff8b7f", "32": "#8fd18b", "33": "#e6c86e"}
TEXT, BOLD, GROUND = "#d8dee9", "#ffffff", "#1f2430"
SIZE, LINE, MARGIN = 14, 20, 16
WIDTH = SIZE * 0.6  # of a character


def runs(line):
    """(text, style) of the pieces of a line that escape sequences cut."""
    style = ""
    for piece in re.split(r"(\x1b\[[0-9;]*m)", line):
        if piece.startswith("\x1b["):
            style = piece[2:-1].replace("0", "", 1) if piece == "\x1b[0m" else piece[2:-1]
        elif piece:
            yield piece, style


def attributes(style):
    if style == "1":
        return f' fill="{BOLD}" font-weight="bold"'
    return f' fill="{COLOURS[style]}"' if style else ""


def svg(title, lines):
    columns = max(len(re.sub(r"\x1b\[[0-9;]*m", "", line)) for line in lines)
    width, height = round(columns * WIDTH + 2 * MARGIN), len(lines) * LINE + 2 * MARGIN
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
        f'viewBox="0 0 {width} {height}">',
        f"<title>{html.escape(title)}</title>",
        f'<rect width="{width}" height="{height}" rx="8" fill="{GROUND}"/>',
        f'<g font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="{SIZE}" '
        f'fill="{TEXT}" xml:space="preserve">',
    ]
    for number, line in enumerate(lines):
        y, column = MARGIN + number * LINE + SIZE, 0
        for text, style in runs(line):
            shown = text.strip(" ")
            if shown:
                x = MARGIN + (column + len(text) - len(text.lstrip(" "))) * WIDTH
                # The length holds the columns where the font is another one.
                parts.append(
                    f'<text x="{x:.1f}" y="{y}" textLength="{len(shown) * WIDTH:.1f}"'
                    f"{attributes(style)}>{html.escape(shown, quote=False)}</text>")
            column += len(text)
    return "\n".join(parts + ["</g>", "</svg>", ""])


def picture(product, before, command):
    with Story(product) as story:
        for step in before:
            status, said = story.in_pipe(step)
            if status != 0:
                sys.exit(f"$ {step}\n{said}")
        status, said = story.on_terminal(command)
        if status != 0:
            sys.exit(f"$ {command}\n{said}")
    return svg(command, [f"\x1b[1m$ {command}\x1b[0m", *said.splitlines()])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true")
    parser.add_argument("product")
    options = parser.parse_args()
    for name, (before, command) in PICTURES.items():
        file = HERE / f"{name}.svg"
        made = picture(options.product, before, command)
        if not options.check:
            file.write_text(made)
        elif not file.exists() or file.read_text() != made:
            sys.exit(f"{file} is not what \"{command}\" shows: docs/pictures/render.py makes it anew")


if __name__ == "__main__":
    main()
