#!/usr/bin/python3
"""From an empty home to a restart: an edit by keys, judged in the file and again in
the windows; the file is the same in every locale."""

import shutil
import sys
import xml.etree.ElementTree as ElementTree

from driver import MAIN, PROFILE, Atspi, Desktop, Editor

CATALOG = "Каталог ведения протокола :"
CATALOGS = ["archive/in", "archive/out", "config", "error/in", "log", "result", "signal", "tmp"]


def leave(editor, button):
    editor.press(editor.window(PROFILE), button)
    editor.gone(PROFILE)
    editor.close(editor.window(MAIN))


def edit(desktop, locale):
    """Makes the edits on an empty home; gives back the profile's file."""
    home = desktop.home / ".selunara"
    shutil.rmtree(home, ignore_errors=True)
    file = home / "vormaqs/config/vormaqs_profile_0.xml"
    with Editor(desktop, sys.argv[1], locale) as editor:
        main = editor.window(MAIN)
        assert "Профиль системы Архивирования" in editor.texts(main, "table cell")
        editor.find(main, "label", str(file.parent))
        assert all((home / "vormaqs" / catalog).is_dir() for catalog in CATALOGS)
        editor.press(main, "Настроить")
        profile = editor.window(PROFILE)
        page = editor.page(profile, "Общие")
        editor.type_into(page, "Период неактивности (сек.) :", "4321", role="spin button")
        editor.check(page, "check box", "Включить запись ошибок в syslog")
        editor.focus(page, "text", CATALOG)
        editor.key("F4")
        editor.window("Окно выбора каталога")
        editor.key("Escape")
        editor.window(PROFILE)
        editor.type_into(page, CATALOG, "/журнал <&>")

        page = editor.page(profile, "TLS файл")
        editor.check(page, "radio button", "Файл-сервер")
        assert not list(file.parent.iterdir())  # a first start writes nothing
        leave(editor, "Сохранить")
    return file


with Desktop() as desktop:
    in_english = edit(desktop, "C").read_bytes()
    file = edit(desktop, "ru_RU.UTF-8")
    saved = file.read_bytes()
    assert saved == in_english, f"{saved}\n{in_english}"

    root = ElementTree.parse(file).getroot()
    assert root.find("settings").get("timeout_inactivity") == "4321"
    assert (root.find("log").get("syslog"), root.find("log").get("catalog")) == ("1", "/журнал <&>")
    assert root.find("init_fs").get("radio") == "1"

    master = file.parent / "vormaqs_config.xml"
    master.write_text(master.read_text().replace("Профиль системы", "Другой профиль"))
    with Editor(desktop, sys.argv[1]) as editor:
        assert "Другой профиль Архивирования" in editor.texts(editor.window(MAIN), "table cell")
        editor.key("Down", "Return")
        page = editor.page(editor.window(PROFILE), "Общие")
        assert Atspi.Text.get_text(editor.find(page, "text", CATALOG), 0, -1) == "/журнал <&>"
        editor.type_into(page, CATALOG, "/elsewhere")
        leave(editor, "Отмена")
    assert file.read_bytes() == saved
