#!/usr/bin/python3
"""From an empty home to a restart: an edit of each kind in the profile editor, with a list over a list, judged in the
file and again in the windows; the file is the same in every locale."""

import re
import shutil
import sys
import xml.etree.ElementTree as ElementTree

from driver import MAIN, PROFILE, Atspi, Desktop, Editor, wait_for

ACTION = "Окно добавления нового действия"
CONSOLE = "Окно установки параметров консольной утилиты"
LIST = "Список допуска"
RECORD = "Добавление пользователя"
CATALOGS = ["archive/in", "archive/out", "config", "error/in", "log", "result", "signal", "tmp"]


def open_profile(editor):
    editor.press(editor.window(MAIN), "Настроить")
    return editor.window(PROFILE)


def leave(editor, profile, button):
    editor.press(profile, button)
    editor.gone(PROFILE)
    editor.close(editor.window(MAIN))


def add_record(editor, texts):
    editor.press(editor.window(LIST), "Добавить")
    record = editor.window(RECORD)
    for label, text in texts.items():
        editor.type_into(record, label, text)
    editor.press(record, "OK")
    editor.gone(RECORD)


def add_client(editor, page):
    """A client of the file server with a queue of its own."""
    editor.click(editor.find(page, "radio button", "Файл-сервер"))
    editor.press(page, "Список клиентов :")
    add_record(editor, {"Наименование клиента :": "Верфь", "Логин :": "shipyard"})
    editor.click(editor.find(editor.window(LIST), "table cell", "Верфь"))
    editor.press(editor.window(LIST), "Очереди")
    wait_for("the list over the list", lambda: editor.count(LIST) == 2)
    add_record(editor, {"Идентификатор очереди :": "docs", "Каталог входящих :": "/in", "Каталог исходящих :": "/out"})
    editor.press(editor.window(LIST), "OK")
    wait_for("the list over the list to close", lambda: editor.count(LIST) == 1)
    editor.press(editor.window(LIST), "OK")
    editor.gone(LIST)


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
        profile = open_profile(editor)
        page = editor.page(profile, "Общие")
        editor.type_into(page, "Период неактивности (сек.) :", "4321", role="spin button")
        editor.focus(page, "check box", "Включить запись ошибок в syslog")
        editor.key("space")
        editor.focus(page, "text", "Каталог ведения протокола :")
        editor.key("F4")
        editor.window("Окно выбора каталога")
        editor.key("Escape")
        editor.window(PROFILE)
        editor.type_into(page, "Каталог ведения протокола :", "/var/log/vorma")

        page = editor.page(profile, "Дополнительные")
        editor.choose(page, "При совпадении имен файлов :", 1)

        page = editor.page(profile, "TLS файл")
        add_client(editor, page)
        profile = editor.window(PROFILE)
        editor.click(editor.find(page, "radio button", "Файл-клиент"))
        editor.type_into(page, "Логин :", "night")
        editor.type_into(page, "Пароль :", "s3cret<&>", role="password text")

        page = editor.page(profile, "Действия")
        editor.press(page, "Добавить")
        action = editor.window(ACTION)
        editor.choose(action, "Тип действия :", 0)
        editor.type_into(action, "Наименование :", "Выгрузка базы")
        editor.press(action, "Настроить")
        console = editor.window(CONSOLE)
        editor.type_into(console, "Строка запуска :", "/usr/bin/pg_dump base")
        editor.key("Return")
        editor.gone(CONSOLE)
        editor.press(editor.window(ACTION), "OK")
        editor.gone(ACTION)
        assert not list(file.parent.iterdir())  # a first start writes nothing
        leave(editor, editor.window(PROFILE), "Сохранить")
    return file


def without_passwords(text):
    """Each saving scrambles them anew."""
    return re.sub(rb'hash="[^"]+"', b"", text)


with Desktop() as desktop:
    in_english = edit(desktop, "C").read_bytes()
    file = edit(desktop, "ru_RU.UTF-8")
    saved = file.read_bytes()
    assert without_passwords(saved) == without_passwords(in_english)

    root = ElementTree.parse(file).getroot()
    assert root.find("settings").get("timeout_inactivity") == "4321"
    assert (root.find("log").get("syslog"), root.find("log").get("catalog")) == ("1", "/var/log/vorma")
    assert root.find("file_param").get("mode_same_file") == "REPLACE"
    assert (root.find("init_fc").get("radio"), root.find("init_fc").get("login")) == ("1", "night")
    assert "s3cret" not in file.read_text()
    assert root.find("fs_allow/allow").get("login") == "shipyard"
    assert [queue.get("id") for queue in root.find("fs_allow/allow").iter("queue")] == ["docs"]
    record = root.find("actions/record")
    assert [record.get(name) for name in ("active", "type", "name")] == ["1", "CONSOLE", "Выгрузка базы"]
    assert record.find("console").get("prog") == "/usr/bin/pg_dump base"

    # After a restart the values stand in the windows; what is changed and cancelled reaches no file.
    with Editor(desktop, sys.argv[1]) as editor:
        editor.window(MAIN)
        editor.key("Down", "Return")
        profile = editor.window(PROFILE)
        page = editor.page(profile, "TLS файл")
        assert editor.find(page, "radio button", "Файл-клиент").get_state_set().contains(Atspi.StateType.CHECKED)
        assert Atspi.Text.get_text(editor.find(page, "text", "Логин :"), 0, -1) == "night"
        page = editor.page(profile, "Действия")
        assert "Выгрузка базы" in editor.texts(page, "table cell")
        page = editor.page(profile, "Общие")
        editor.type_into(page, "Каталог ведения протокола :", "/elsewhere")
        leave(editor, profile, "Отмена")
    assert file.read_bytes() == saved
