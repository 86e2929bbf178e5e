"""An installed tree, wherever its root is: starts its program on the demo home."""

import pathlib
import shutil

from driver import Desktop, Editor

ROOT = pathlib.Path(__file__).resolve().parents[2]
MAIN = "Конфигурационная программа Резервного копирования"
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
