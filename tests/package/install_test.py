#!/usr/bin/python3
"""install_test.py TREE: what `cmake --install` stages runs from there."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

from driver import MAIN, Desktop, Editor

ROOT = pathlib.Path(__file__).resolve().parents[2]
DEMO = ["Ночная копия документов", "Приём копий в хранилище", "Файл-сервер отдела", "Файл-клиент бухгалтерии",
        "Шлюз головного офиса", "Шлюз филиала"]


def program_starts(root):
    """The program of this root shows the demo home's profiles, with the icon of this root: it is read from a fixed path,
    so the program sees the root's /opt as the machine's."""
    with Desktop() as desktop:
        shutil.copytree(ROOT / "data/demo/config", desktop.home / ".selunara/vormaqs/config")
        with Editor(desktop, desktop.with_opt(root / "opt", root / "usr/bin/vormaqscfg")) as editor:
            main = editor.window(MAIN)
            shown = editor.texts(main, "table cell")
            assert [name for name in DEMO if name not in shown] == [], shown
            assert "Icon (128 x 128)" in desktop.run("xprop", "-id", desktop.run("xdotool", "getactivewindow").strip(), "_NET_WM_ICON")
            editor.close(main)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as scratch:
        root = pathlib.Path(scratch, "root")
        subprocess.run(["env", f"DESTDIR={root}", "cmake", "--install", sys.argv[1], "--prefix", "/usr"],
                       check=True, stdout=subprocess.DEVNULL)
        program_starts(root)
