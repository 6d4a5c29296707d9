"""Acting on items and on the files behind them: alias, comment, copy, move, delete."""
from desktop import Desktop, wait_for
from user import LIST, TITLE, User, check, rows

NAMES = ["a.txt", "b.txt", "c.txt", "d.txt", "e.txt"]
ROW, FIRST_ITEM = 17, 35  # pixels at 96 DPI; the first row stands below the header


def row(pane, number, x=60):
    return pane.at(x, FIRST_ITEM + ROW * number)


def answer(desktop, key):
    """A message box of the program, answered with a key."""
    box = wait_for("a message box", lambda: next(
        (w for w in desktop.windows() if w.kind == "#32770" and w.caption == TITLE), None))
    desktop.key(key)
    wait_for("the end of the message box", lambda: not any(
        w.depth == 0 and w.kind == "#32770" and (w.left, w.top, w.right, w.bottom) ==
        (box.left, box.top, box.right, box.bottom) for w in desktop.windows()))


# Entries of the List menu by their place; the English ones have no access keys.
SEND_TO, MOVE_TO, COMMENT = 6, 7, 8


def list_menu(user, entry, *keys):
    user.menu("alt+l", *["Down"] * (entry - 1), *keys)


def pick_folder(desktop, name):
    """In the folder picker, which begins at the Windows desktop."""
    wait_for("the folder picker", lambda: any(w.kind == "#32770" for w in desktop.windows()))
    desktop.type(name)
    desktop.key("Return")


def test_items_and_their_files_stay_in_step(package, out):
    with Desktop("items") as desktop:
        papers = desktop.drive / "papers"
        papers.mkdir()
        for name in NAMES:
            (papers / name).write_text(name, "utf-8")
        shelf = desktop.data_folder.parents[2] / "Desktop"
        if shelf.is_symlink():
            shelf.unlink()
        for name in ("copies", "target"):
            (shelf / name).mkdir(parents=True)
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Letters")
        user.add_files("C:\\papers", NAMES)
        items = desktop.window(id=LIST)
        tools = desktop.window(kind="ToolbarWindow32")

        # Three of the five, chosen with the keyboard, copied.
        desktop.click(row(items, 1))
        desktop.key("shift+Down", "shift+Down")
        list_menu(user, SEND_TO, "Return")
        pick_folder(desktop, "copies")
        answer(desktop, "Return")
        assert sorted(path.name for path in (shelf / "copies").iterdir()) == NAMES[1:4]

        # An alias by keys, another one by the toolbar.
        desktop.click(row(items, 0))
        user.menu("F10", "Right", "Right", "Down", "Down", "Right", "Return")
        desktop.wait_shown("Rename")
        desktop.screenshot(out / "rename.png")
        desktop.type("first letter")
        desktop.key("Return")
        desktop.wait_gone("Rename")
        desktop.click(row(items, 4))
        desktop.click(tools.at(46, 15))
        desktop.wait_shown("Rename")
        desktop.type("it's the last")
        desktop.key("Return")
        desktop.wait_gone("Rename")

        # A comment, in the window that stays open beside the main one.
        desktop.click(row(items, 0))
        list_menu(user, COMMENT, "Return")
        desktop.wait_shown("Comment")
        desktop.type("to be answered")
        desktop.screenshot(out / "comment.png")
        desktop.key("alt+s")
        desktop.key("Escape")
        desktop.wait_gone("Comment")

        # Two move, one goes with its file.
        desktop.click(row(items, 1))
        desktop.key("shift+Down")
        list_menu(user, MOVE_TO, "Return")
        pick_folder(desktop, "target")
        wait_for("the files in the other folder", lambda: len(list((shelf / "target").iterdir())) == 2)
        desktop.click(row(items, 3))
        desktop.key("Delete")
        answer(desktop, "y")
        answer(desktop, "y")
        wait_for("the end of the file", lambda: not (papers / "d.txt").exists())
        desktop.screenshot(out / "items.png")
        user.save(1)

        folder = "C:\\" + str((shelf / "target").relative_to(desktop.drive)).replace("/", "\\") + "\\"
        slot = desktop.data_folder / "Data0.dat"
        got = [(r["DefineName"], r["Filename"], r["LocalFile"], r["Comment"]) for r in rows(slot, "FTable")]
        assert got == [("first letter", "a.txt", "C:\\papers\\a.txt", "to be answered"),
                       ("b", "b.txt", folder + "b.txt", ""), ("c", "c.txt", folder + "c.txt", ""),
                       ("it's the last", "e.txt", "C:\\papers\\e.txt", "")], got
        assert sorted(path.name for path in papers.iterdir()) == ["a.txt", "e.txt"]
        assert sorted(path.name for path in (shelf / "target").iterdir()) == ["b.txt", "c.txt"]
        assert check(slot)[0] == 0
        user.exit()

        user.start()
        user.load(1)
        user.save(2)
        assert rows(desktop.data_folder / "Data1.dat", "FTable") == rows(slot, "FTable")
        user.exit()
