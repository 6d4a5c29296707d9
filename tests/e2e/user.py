"""The program in the hands of a user: what one does with Kestrelon, step by step, with keyboard and mouse."""
import csv
import io
import subprocess

from desktop import DISCARD, ROOT, wait_for

TREE, LIST, STATUS = 101, 102, 103  # control identifiers of the main window
FIRST_SLOT = 1001  # control identifier of the first slot's button in the two dialogs
TITLE = "Kestrelon"
OPEN_TITLE = "Select one or More Files"
ICON_COLUMN = 28  # pixels at 96 DPI
ALIAS_COLUMN = 125


class User:
    def __init__(self, desktop, package):
        self.desktop = desktop
        self.package = package

    def start(self):
        self.desktop.start(self.package / "Kestrelon.exe")
        self.desktop.wait_shown(TITLE)

    def menu(self, *keys):
        """alt+letter opens a menu of the bar, the rest picks the entry."""
        self.desktop.key(*keys)

    def add_child(self, name):
        self.menu("alt+c", "c")
        self.desktop.type(name)
        self.desktop.key("Return")

    def add_last_sibling(self, name):
        self.menu("alt+c", "l")
        self.desktop.type(name)
        self.desktop.key("Return")

    def add_files(self, folder, names):
        """By the Open dialog: the folder first, then the names in quotes."""
        self.menu("alt+l", "Right", "Return")
        self.desktop.wait_shown(OPEN_TITLE)
        self.desktop.type(folder)
        self.desktop.key("Return")
        self.desktop.type(" ".join(f'"{name}"' for name in names))
        self.desktop.key("Return")
        self.desktop.wait_gone(OPEN_TITLE)

    def save(self, slot):
        """Through the Save dialog into slot 1 to 4; the question about replacing is answered with OK."""
        self.menu("alt+f", "s")
        self.desktop.wait_shown("Save Database")
        self.choose_slot(slot)
        self.confirm_replacing()
        self.desktop.wait_gone("Save Database")

    def choose_slot(self, slot):
        for _ in range(slot - 1):
            self.desktop.key("Tab")
        self.desktop.key("space")

    def confirm_replacing(self):
        wait_for("the question about replacing", self._question)
        self.desktop.key("Return")

    def _question(self):
        return any(window.kind == "#32770" and window.caption == TITLE for window in self.desktop.windows())

    def load(self, slot):
        self.menu("alt+f", "l")
        self.desktop.wait_shown("Load Database")
        self.press_button(FIRST_SLOT + slot - 1)
        self.desktop.wait_gone("Load Database")

    def load_unsaved(self):
        """The button below the four slots, which is there while there is a collection that was not saved."""
        self.menu("alt+f", "l")
        self.desktop.wait_shown("Load Database")
        self.press_button(FIRST_SLOT + 4)
        self.desktop.wait_gone("Load Database")

    def press_button(self, identifier):
        self.desktop.click(self.desktop.window(kind="Button", id=identifier).at())

    def wait_question(self):
        wait_for("a question", self._question)

    def exit(self, answer=None):
        """By the menu; `answer` is a key for the question about saving ("n" for No), None when none shall come."""
        self.menu("alt+f", "x")
        if answer:
            wait_for("the question about saving", self._question)
            self.desktop.key(answer)
        self.desktop.wait_gone(TITLE)


def rows(database, table):
    """The rows of a table as an independent reader of the format gives them."""
    output = subprocess.run(["mdb-export", str(database), table], stdin=DISCARD, stderr=DISCARD, check=True,
                            stdout=subprocess.PIPE).stdout.decode("utf-8")
    return list(csv.DictReader(io.StringIO(output)))


def check(database):
    """The engine's own integrity walk: its lines, none for a sound file."""
    result = subprocess.run([ROOT / "build/native/bin/jettool", "check", str(database)], stdin=DISCARD,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return result.returncode, result.stdout
