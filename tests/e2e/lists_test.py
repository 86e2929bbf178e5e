#!/usr/bin/python3
"""A client of the file server with a certificate and a queue of its own, printed and saved: lists in lists."""

import sys
import xml.etree.ElementTree as ElementTree

from driver import MAIN, PROFILE, Desktop, Editor, wait_for

LIST = "Список допуска"
RECORD = "Добавление пользователя"
RESULT = "Окно просмотра списка клиентов"
SUBJECT = "C=RU,L=Москва,O=Северная верфь,CN=Иванов Иван"


def add_record(editor, texts):
    editor.press(editor.window(LIST), "Добавить")
    record = editor.window(RECORD)
    for label, text in texts.items():
        editor.type_into(record, label, text, role="password text" if label == "Пароль :" else "text")
    editor.press(record, "OK")
    editor.gone(RECORD)


def nested(editor, button, texts):
    editor.press(editor.window(LIST), button)
    wait_for("the nested list", lambda: editor.count(LIST) == 2)
    add_record(editor, texts)
    editor.press(editor.window(LIST), "OK")
    wait_for("the nested list to close", lambda: editor.count(LIST) == 1)


with Desktop() as desktop, Editor(desktop, sys.argv[1]) as editor:
    base = desktop.home / ".selunara/vormaqs"
    editor.press(editor.window(MAIN), "Настроить")
    profile = editor.window(PROFILE)
    page = editor.page(profile, "TLS файл")
    editor.click(editor.find(page, "radio button", "Файл-сервер"))
    clients = editor.find(page, "push button", "Список клиентов :")
    editor.click(clients)

    add_record(editor, {"Наименование клиента :": "Верфь", "Логин :": "shipyard", "Пароль :": "anchor-chain"})
    editor.click(editor.find(editor.window(LIST), "table cell", "Верфь"))
    nested(editor, "Сертификаты", {"Имя из сертификата :": SUBJECT})
    nested(editor, "Очереди", {"Идентификатор очереди :": "docs", "Каталог входящих :": "/srv/in",
                               "Каталог исходящих :": "/srv/out"})

    # The report shows what stands in the dialog, accepted or not, and no password.
    editor.press(editor.window(LIST), "Распечатать")
    editor.press(editor.window(RESULT), "OK")
    editor.gone(RESULT)
    report = (base / "result/vormaqs_profile_0/admit_list.result").read_text().splitlines()
    assert report[1:3] == ["Список клиентов", "Количество клиентов: 1"], report
    assert {"\t\t1 Имя владельца сертификата: " + SUBJECT, "\t\tКаталог входящих: /srv/in", "\tПароль: Да"} < set(report)

    editor.press(editor.window(LIST), "OK")
    editor.gone(LIST)
    editor.press(editor.window(PROFILE), "Сохранить")
    editor.gone(PROFILE)
    file = base / "config/vormaqs_profile_0.xml"
    wait_for("the save", file.exists)
    client = ElementTree.parse(file).getroot().find("fs_allow/allow")
    assert (client.get("name"), client.get("login")) == ("Верфь", "shipyard")
    assert [user.get("subject") for user in client.iter("user")] == [SUBJECT]
    assert [queue.get("id") for queue in client.iter("queue")] == ["docs"]
    editor.close(editor.window(MAIN))
