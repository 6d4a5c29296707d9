"""Takes a picture of every window of the program, in every language: to be looked at.

usage: gallery.py [--package DIR] [--out DIR] [--dpi N …] [--language NAME …]
"""
import argparse
import pathlib

from desktop import DISCARD, EXCHANGE, ROOT, Desktop, wait_for
from user import LIST, TREE, User

import subprocess

LANGUAGES = ["English", "Chinese_T", "Chinese_S"]  # in the order of the menu
NAMES = ["notes.txt", "plan.txt", "图纸.txt"]
LIST_MENU = "alt+l"
FOLDERS, FILES_IN_EACH = 500, 40  # long enough for a picture in the middle of their import


def places(desktop):
    return {(w.left, w.top, w.right, w.bottom, w.caption) for w in desktop.windows() if w.depth == 0}


class Gallery:
    def __init__(self, desktop, user, prefix, scale):
        self.desktop, self.user, self.prefix, self.scale = desktop, user, prefix, scale

    def picture(self, name, place=None):
        path = self.desktop.screenshot(f"{self.prefix}-{name}.png")
        if place:
            left, top, right, bottom = place[:4]
            subprocess.run(["convert", path, "-crop", f"{right - left}x{bottom - top}+{left}+{top}", "+repage", path],
                           stdin=DISCARD, check=True)

    def window(self, name, *keys, close="Escape", before_picture=None):
        """Opens a window by keys, takes its picture and closes it."""
        before = places(self.desktop)
        self.user.menu(*keys)
        place = wait_for(f"the window {name}", lambda: next(iter(places(self.desktop) - before), None))
        if before_picture:
            before_picture()
        self.desktop.windows()  # takes a while: by then everything is painted
        self.picture(name, place)
        self.desktop.key(close)
        wait_for(f"the end of {name}", lambda: place not in places(self.desktop))


def language_gallery(desktop, package, language, prefix, scale):
    user = User(desktop, package)
    user.start()
    user.menu("alt+m", "Right", *["Down"] * LANGUAGES.index(language), "Return")
    user.add_last_sibling("Letters")
    user.menu(LIST_MENU, "Right", "Return")
    wait_for("the Open dialog", lambda: any(w.kind == "#32770" for w in desktop.windows()))
    desktop.type("C:\\papers")
    desktop.key("Return")
    desktop.type(" ".join(f'"{name}"' for name in NAMES))
    desktop.key("Return")
    wait_for("its end", lambda: not any(w.kind == "#32770" for w in desktop.windows()))
    items, tree = desktop.window(id=LIST), desktop.window(id=TREE)
    shots = Gallery(desktop, user, prefix, scale)
    desktop.click(items.at(int(60 * scale), int(40 * scale)))
    shots.picture("MainForm")
    for name, keys in (("menu-file", "alt+f"), ("menu-category", "alt+c"), ("menu-list", "alt+l"), ("menu-help", "alt+h")):
        desktop.key(keys)
        shots.picture(name)
        desktop.key("Escape", "Escape")
    shots.window("Save", "alt+f", "s")
    shots.window("Load", "alt+f", "l")
    down = lambda n: ["Down"] * n
    desktop.click(items.at(int(60 * scale), int(60 * scale)))
    shots.window("FileRename", LIST_MENU, *down(1), "Right", "Return")
    shots.window("FilePropterty", "alt+Return")
    shots.window("Changecategory", LIST_MENU, *down(4), "Return")
    shots.window("Filelist_Comment", LIST_MENU, *down(7), "Return")
    desktop.click(items.at(int(60 * scale), int(40 * scale)))
    shots.window("List_Find", "ctrl+f")
    shots.window("inputDialog", LIST_MENU, "Right", "Down", "Return", before_picture=lambda: (
        desktop.start(EXCHANGE, "clipboard", r"C:\list.txt"), desktop.windows(), desktop.windows(), desktop.key("alt+a")))
    desktop.click(tree.at(int(50 * scale), int(10 * scale)))
    shots.window("Tree_Find", "ctrl+f")
    shots.window("delete-question", "Delete")
    shots.window("frmTip", "alt+h", "Return")
    shots.window("frmAbout", "alt+h", "Up", "Return")
    importing(desktop, user, shots)
    user.exit(answer="n")


def importing(desktop, user, shots):
    """The main window in the middle of the import of a folder."""
    # On the Windows desktop, where the folder picker begins.
    many = desktop.data_folder.parents[2] / "Desktop" / "many"
    if many.parent.is_symlink():
        many.parent.unlink()
    for number in range(FOLDERS):
        folder = many / f"folder {number}"
        folder.mkdir(parents=True)
        for file in range(FILES_IN_EACH):
            (folder / f"file {file}.txt").touch()
    box = lambda: next((w for w in desktop.windows() if w.depth == 0 and w.kind == "#32770"), None)
    user.menu("alt+c", *["Down"] * 4, "Return")  # the letters differ by language
    picker = wait_for("the folder picker", box)
    desktop.type("many")
    desktop.key("Return")
    desktop.wait_gone(picker.caption)
    shots.picture("importing")
    wait_for("the end of the import", box, 120)
    shots.picture("imported")
    desktop.key("Return")
    wait_for("the end of the box", lambda: not box())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--package", type=pathlib.Path, default=ROOT / "build/windows/Kestrelon")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "build/gallery")
    parser.add_argument("--dpi", type=int, nargs="+", default=[96, 144])
    parser.add_argument("--language", nargs="+", default=LANGUAGES)
    options = parser.parse_args()
    for dpi in options.dpi:
        for language in options.language:
            size = (1280, 800) if dpi == 96 else (1920, 1200)
            with Desktop(f"gallery-{dpi}-{language}", dpi=dpi, size=size) as desktop:
                (desktop.drive / "papers").mkdir()
                for name in NAMES:
                    (desktop.drive / "papers" / name).write_text(name, "utf-8")
                (desktop.drive / "list.txt").write_text("".join(f"C:\\papers\\{name}\n" for name in NAMES), "utf-8")
                language_gallery(desktop, options.package.resolve(), language, options.out / f"{dpi}-{language}", dpi / 96)
    print(f"pictures: {options.out}")


if __name__ == "__main__":
    main()
