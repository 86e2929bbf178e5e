#!/usr/bin/python3
"""Bent files: the program tells in a box what the log holds, ends, and leaves every byte on disk as it was."""

import pathlib
import re
import sys

from driver import Desktop, Editor

GOLDEN = pathlib.Path(__file__).parents[1] / "support/golden"
PROFILE = (GOLDEN / "profile.xml").read_text()
MASTER = """<config version="1" release="1" mark="VORQSCFG"><profiles quantity="1">
  <profile default="1" name="Копия" id="profile" active="0"/>
</profiles><settings><editor path="/usr/bin/kate"/></settings></config>
"""

# The master file and the profile's file, None for none; then lines that the message holds.
REFUSED = [
    (MASTER[:100], PROFILE, "Не удалось прочесть XML документ из файла"),
    (MASTER.replace("CFG", "PRF"), PROFILE, "XML файл не является конфигурационным файлом Резервного копирования"),
    (MASTER, None, "Не удалось прочесть XML документ из файла"),
    (MASTER, PROFILE.replace('time_hour="21"', 'time_hour="%s"' % ("x" * 9000000)),
     "Свойства не содержит числовое значение", "x" * 240 + "…" + "x" * 239),
]


def contents(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir()}


with Desktop() as desktop:
    base = desktop.home / ".selunara/vormaqs"
    config = base / "config"
    log = base / "log/vormaqscfg.log"
    files = [config / "vormaqs_config.xml", config / "profile.xml"]
    config.mkdir(parents=True)

    for master, profile, step, *facts in REFUSED:
        for file, content in zip(files, (master, profile)):
            file.unlink(missing_ok=True)
            if content is not None:
                file.write_text(content)
        log.unlink(missing_ok=True)
        before = contents(config)
        with Editor(desktop, sys.argv[1]) as editor:
            box = editor.window("Ошибка")
            shown = next(text for text in editor.texts(box, "label") if "\n" in text)
            editor.press(box, "OK")
        assert shown.splitlines()[1] == step and set(facts) <= set(shown.splitlines()), shown
        assert str(files[master == MASTER]) in shown, shown  # the one that is bent
        assert contents(config) == before, step
        entry = re.fullmatch(r"\n____ERROR____\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\n(.*)", log.read_text(), re.DOTALL)[1]
        # The box leaves out the middle of what is long, the log does not.
        assert {line for line in shown.splitlines() if "…" not in line} <= set(entry.splitlines()), entry[:1000]
