#!/usr/bin/python3
"""What stands in «…» in the guide and the man page is a text of the windows, the demo or the menu to the letter, but for
"…" in place of what differs each time and a colon at the end. The guide quotes each refusal, and has its pictures."""

import html
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def read(*patterns):
    return "\n".join(path.read_text() for pattern in patterns for path in sorted(ROOT.glob(pattern)))


def plain(text):
    return " ".join(text.replace("\\", "").split()).strip(" :…")


def literals(code):
    """The lines of each, and of pieces that the code joins with values as one text."""
    code = re.sub(r'(?<!\\)"\s*"', "", re.sub(r'(?<!\\)"\s*\+[^";]*\+\s*"', "…", code))
    return [[plain(line) for line in text.split("\\n")] for text in re.findall(r'(?<!\\)"((?:[^"\\\n]|\\.)+)"', code)]


reached = read("src/[acdel]*/*.*", *(f"src/runtime/{name}" for name in ("core_files.cpp", "descriptor_io.cpp", "process.cpp")))
known = {line for lines in literals(reached + read("data/demo/config/*.xml")) for line in lines}
known |= {plain(html.unescape(text).replace("_", "")) for text in re.findall(
    ">([^<]+)<|^Name.*=(.+)", read("resources/vormacfg.glade", "data/vormaqscfg.desktop"), re.M) for text in text}
guide = read("docs/ru/guide.md")
quoted = {plain(text) for text in re.findall("«(.+?)»", guide + read("data/ru/vormaqscfg.1"), re.DOTALL)}
assert len(quoted) > 100 and quoted <= known, sorted(quoted - known)

told = re.findall(r"\b(?:fail|show_message|show_refusal|refuse\w*|key_is_taken<\w+>)\([^;]*;", read(
    "src/editor/*.cpp", "src/lists/*", "src/config/file_checks.cpp", "src/cert/cert_subject.cpp"))
refusals = {lines[0] for call in told for lines in literals(call) if re.search("[а-я]", lines[0])}
assert len(refusals) > 30 and refusals <= quoted, sorted(refusals - quoted)

pictures = re.findall(r"!\[.*?\]\((.*?)\)", guide)
assert pictures and all((ROOT / "docs/ru" / name).is_file() for name in pictures), pictures
