"""The notification area, and a second start of the program."""
from desktop import Desktop, wait_for
from user import TITLE, User, rows


def minimise(desktop):
    """By the caption button: the leftmost of the three at the right end of the title."""
    main = desktop.window(kind="KestrelonMainForm")
    desktop.click((main.right - 52, main.top + 13))
    desktop.wait_gone(TITLE)


def test_the_window_goes_to_the_tray_and_comes_back_by_click_and_by_a_second_start(package, out):
    with Desktop("tray") as desktop:
        note = desktop.drive / "note.txt"
        note.write_text("note")
        user = User(desktop, package)
        user.start()
        user.add_child("Kept")
        user.add_files("C:\\", ["note.txt"])

        minimise(desktop)
        desktop.screenshot(out / "tray.png")
        width, height = desktop.size
        desktop.click((width - 10, height - 10))  # the icon, first at the right end of the bar
        desktop.wait_shown(TITLE)

        minimise(desktop)
        desktop.start(package / "Kestrelon.exe")
        desktop.wait_shown(TITLE)
        wait_for("one main window", lambda: sum(w.kind == "KestrelonMainForm" for w in desktop.windows()) == 1)
        # The working database of the first is untouched: what it held can be saved.
        user.save(1)
        slot = desktop.data_folder / "Data0.dat"
        assert [row["text"] for row in rows(slot, "TreeviewTable")] == ["Kept"]
        assert [row["LocalFile"] for row in rows(slot, "FTable")] == ["C:\\note.txt"]
        user.exit()
