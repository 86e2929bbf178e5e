#!/usr/bin/python3
"""install_test.py TREE: what `cmake --install` stages runs from there on the demo home, with the icon that it staged: it
is read from a fixed path, so the program sees the staged /opt as the machine's."""

import pathlib
import shutil
import subprocess
import sys

from driver import MAIN, Desktop, Editor

DEMO = pathlib.Path(__file__).resolve().parents[2] / "data/demo/config"

with Desktop() as desktop:
    root = desktop.folder / "root"
    subprocess.run(["env", f"DESTDIR={root}", "cmake", "--install", sys.argv[1], "--prefix", "/usr"],
                   check=True, stdout=subprocess.DEVNULL)
    shutil.copytree(DEMO, desktop.home / ".selunara/vormaqs/config")
    with Editor(desktop, desktop.with_opt(root / "opt", root / "usr/bin/vormaqscfg")) as editor:
        main = editor.window(MAIN)
        assert "Файл-клиент бухгалтерии" in editor.texts(main, "table cell")
        window = desktop.run("xdotool", "getactivewindow").strip()
        assert "Icon (128 x 128)" in desktop.run("xprop", "-id", window, "_NET_WM_ICON")
        editor.close(main)
