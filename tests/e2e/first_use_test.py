#!/usr/bin/python3
"""From an empty home to a restart: the first profiles are made as a user makes them, and the files are judged."""

import sys
import xml.etree.ElementTree as ElementTree

from driver import MAIN, Desktop, Editor, wait_for

NAMING = "Окно ввода данных"
NIGHT = "Копия <ночь & день>"
CATALOGS = ["archive/in", "archive/out", "config", "error/in", "log", "result", "signal", "tmp"]


def profiles(master):
    return [(p.get("default"), p.get("name"), p.get("id"), p.get("active"))
            for p in ElementTree.parse(master).iter("profile")]


with Desktop() as desktop:
    base = desktop.home / ".selunara/vormaqs"
    config = base / "config"
    master = config / "vormaqs_config.xml"

    # A first start writes nothing, and leaving without a change makes the next start a first one again.
    for _ in range(2):
        with Editor(desktop, sys.argv[1]) as editor:
            main = editor.window(MAIN)
            assert "Профиль системы Архивирования" in editor.texts(main, "table cell")
            assert all((base / catalog).is_dir() for catalog in CATALOGS)
            assert not list(config.iterdir())
            editor.find(main, "label", str(config))
            editor.close(main)

    with Editor(desktop, sys.argv[1]) as editor:
        main = editor.window(MAIN)
        editor.press(main, "Добавить")
        naming = editor.window(NAMING)
        editor.type_into(naming, "Наименование :", NIGHT)
        editor.type_into(naming, "Идентификатор :", "night_copy")
        editor.key("Return")
        editor.gone(NAMING)
        wait_for("the first save", lambda: (config / "night_copy.xml").exists())
        assert sorted(f.name for f in config.iterdir()) == \
            ["night_copy.xml", "vormaqs_config.xml", "vormaqs_profile_0.xml"]
        assert profiles(master) == [("1", "Профиль системы Архивирования", "vormaqs_profile_0", "0"),
                                    ("0", NIGHT, "night_copy", "0")]

        # The first cell of the second row moves the default mark.
        main = editor.window(MAIN)
        editor.click(editor.cell(main, 1, 0))
        wait_for("the default mark", lambda: [p[0] for p in profiles(master)] == ["0", "1"])
        editor.close(main)

    with Editor(desktop, sys.argv[1]) as editor:
        main = editor.window(MAIN)
        editor.click(editor.find(main, "table cell", NIGHT))
        editor.press(main, "Удалить")
        editor.press(editor.window("Вопрос"), "Да")
        wait_for("the deletion", lambda: [p[0] for p in profiles(master)] == ["1"])
        assert (config / "night_copy.xml").exists()  # a deleted profile's file stays
        editor.close(editor.window(MAIN))
