"""Windows that snap to edges when they are dragged with the mouse, and travel with the window they touch."""
from desktop import Desktop, wait_for
from user import LIST, TITLE, User

FIND = "Find in item(s)"


def place(desktop, caption):
    window = desktop.window(caption=caption)
    return window.left, window.top, window.right, window.bottom


def drag_to(desktop, caption, left, top):
    """Drags a window by its title so that its corner would come to stand there."""
    now = place(desktop, caption)
    start = (now[0] + 60, now[1] + 12)
    desktop.drag(start, (start[0] + left - now[0], start[1] + top - now[1]))


def test_windows_snap_and_travel_together(package, out):
    with Desktop("magnets") as desktop:
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Letters")
        drag_to(desktop, TITLE, 9, 100)
        wait_for("the window at the left edge", lambda: place(desktop, TITLE)[0] == 0)
        drag_to(desktop, TITLE, 10, 100)
        wait_for("the window ten pixels from it", lambda: place(desktop, TITLE)[0] == 10)
        drag_to(desktop, TITLE, 40, 60)
        wait_for("the window", lambda: place(desktop, TITLE)[:2] == (40, 60))
        main = place(desktop, TITLE)

        desktop.click(desktop.window(id=LIST).at(200, 200))
        desktop.key("ctrl+f")
        desktop.wait_shown(FIND.replace("(", "\\(").replace(")", "\\)"))
        drag_to(desktop, FIND, main[2] + 7, main[1] + 60)
        wait_for("the find window at the edge", lambda: place(desktop, FIND)[0] == main[2])
        find = place(desktop, FIND)
        desktop.screenshot(out / "magnets.png")
        drag_to(desktop, TITLE, 60, 95)
        wait_for("the main window", lambda: place(desktop, TITLE)[:2] == (60, 95))
        assert place(desktop, FIND)[:2] == (find[0] + 20, find[1] + 35), place(desktop, FIND)

        # Away from it, it stays where it is.
        drag_to(desktop, FIND, find[0] - 200, find[1] + 200)
        alone = place(desktop, FIND)
        drag_to(desktop, TITLE, 30, 40)
        wait_for("the main window", lambda: place(desktop, TITLE)[:2] == (30, 40))
        assert place(desktop, FIND) == alone
        desktop.key("Escape")
        user.exit(answer="n")
