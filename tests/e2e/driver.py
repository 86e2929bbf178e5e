"""Drives the built editor from outside, as a user's tools would: widgets are found on the accessibility bus, clicks
and keys go through the X server, and a small window manager gives the focus. Run it by tests/support/session."""

import os
import pathlib
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

MAIN = "Конфигурационная программа Резервного копирования"
PROFILE = "Настройка конфигурационных параметров профиля"
LIMIT = 120  # seconds until a wait for an event counts as a failure


def wait_for(what, probe):
    """Gives back the first true result of probe; the accessibility bus tells of changes only by being asked."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        try:
            result = probe()
        except Exception:  # a widget that went away between two questions
            result = None
        if result:
            return result
        time.sleep(0.02)
    raise AssertionError(f"waited in vain for {what}")


def walk(node):
    yield node
    for i in range(node.get_child_count()):
        child = node.get_child_at_index(i)
        if child:
            yield from walk(child)


def names(node):
    """What a screen reader calls the widget: its own name, or the labels that are tied to it."""
    yield node.get_name()
    for relation in node.get_relation_set():
        if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
            for i in range(relation.get_n_targets()):
                yield relation.get_target(i).get_name()


class Desktop:
    """The session's display, with a window manager, and its home."""

    def __enter__(self):
        self.folder = pathlib.Path(os.environ["TMPDIR"])
        self.home = pathlib.Path(os.environ["HOME"])
        self.manager = subprocess.Popen(["openbox"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for("the window manager",
                 lambda: "_NET_SUPPORTING_WM_CHECK(WINDOW)" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))
        Atspi.init()
        Atspi.set_timeout(LIMIT * 1000, LIMIT * 1000)  # the usual 0.8 s is short on a busy machine
        return self

    def __exit__(self, *_):
        self.manager.terminate()
        self.manager.wait()

    @staticmethod
    def run(*command):
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Editor:
    """The program, started on the desktop's home; ends with status 0 and without a word of the toolkit."""

    def __init__(self, desktop, program, locale="C.UTF-8"):
        self.desktop = desktop
        self.errors = open(desktop.folder / "stderr", "w+")
        self.process = subprocess.Popen([program], stderr=self.errors, env={**os.environ, "LC_ALL": locale})

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind:
            self.process.kill()
        self.process.wait(LIMIT)
        self.errors.seek(0)
        # While widgets go away, a client on the accessibility bus makes the toolkit ask for labels that are gone.
        errors = "".join(line for line in self.errors if line.strip()
                         and "gtk_notebook_get_tab_label" not in line and "atk_relation_get_relation_type" not in line)
        self.errors.close()
        if not kind:
            assert self.process.returncode == 0, self.process.returncode
            assert errors == "", errors

    def _windows(self):
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application and application.get_process_id() == self.process.pid:
                for j in range(application.get_child_count()):
                    yield application.get_child_at_index(j)

    def window(self, title):
        """The visible window with this title, in front and with the keyboard focus; of several the one opened last,
        even while the one below it still believes itself in front. The X server is asked too: it alone knows the title
        of a message box, which has its kind for an accessible name."""

        def probe():
            if self.desktop.run("xdotool", "getactivewindow", "getwindowname").strip() != title:
                return None
            window = [window for window in self._windows()
                      if window.get_name() == title or window.get_role_name() == "alert"][-1]
            states = window.get_state_set()
            in_front = states.contains(Atspi.StateType.SHOWING) and states.contains(Atspi.StateType.ACTIVE)
            return window if in_front else None

        return wait_for(f"the window «{title}»", probe)

    def count(self, title):
        """How many windows bear this title."""
        return [window.get_name() for window in self._windows()].count(title)

    def gone(self, title):
        wait_for(f"the window «{title}» to close", lambda: self.count(title) == 0)

    def find(self, window, role, name, hidden=False):
        """The widget of this role ("push button", "text", "table cell"…) and accessible name; a visible one, or a hidden one too."""
        return wait_for(f"{role} «{name}»", lambda: next(
            (node for node in walk(window) if node.get_role_name() == role and name in names(node)
             and (hidden or node.get_state_set().contains(Atspi.StateType.VISIBLE))), None))

    def focus(self, window, role, name):
        """Gives the keyboard focus to a widget, which scrolls it into view, and gives back the widget."""
        node = self.find(window, role, name, hidden=True)
        node.get_component_iface().grab_focus()
        wait_for(f"the focus on «{name}»", lambda: node.get_state_set().contains(Atspi.StateType.FOCUSED))
        return node

    def check(self, window, role, name):
        """Turns a check or radio button on, by its key: a page that has just come to the front may still scroll."""
        node = self.focus(window, role, name)
        self.key("space")
        wait_for(f"the mark of «{name}»", lambda: node.get_state_set().contains(Atspi.StateType.CHECKED))

    def page(self, window, label):
        """Brings a notebook page to the front and gives it back."""
        tab = self.find(window, "page tab", label)
        self.click(tab)
        wait_for(f"the page «{label}»", lambda: tab.get_state_set().contains(Atspi.StateType.SELECTED))
        return tab

    def texts(self, window, role):
        return [node.get_name() for node in walk(window) if node.get_role_name() == role]

    def click(self, node, times=1):
        box = node.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        self.desktop.run("xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2),
                         "click", "--repeat", str(times), "--delay", "50", "1")

    def press(self, window, label):
        self.click(self.find(window, "push button", label))

    def key(self, *keys):
        self.desktop.run("xdotool", "key", *keys)

    def type_into(self, window, label, text, role="text"):
        """Replaces the text of the entry that the label names: by keys, or as an input method does beyond ASCII."""
        entry = self.focus(window, role, label)
        if text.isascii():
            self.key("ctrl+a", "BackSpace")
            self.desktop.run("xdotool", "type", "--delay", "5", text)
        else:
            entry.get_editable_text_iface().set_text_contents(text)
        wait_for(f"«{text}» in «{label}»", lambda: Atspi.Text.get_text(entry, 0, -1) == text)

    def close(self, main):
        """The window manager's close button of the main window, by its key, until the program ends: the manager can miss
        a key that comes while it moves the focus."""

        def ended():
            self.key("alt+F4")
            self.process.wait(2)
            return True

        wait_for("the program to end", ended)
