"""Windows that snap to edges when they are dragged with the mouse, and travel with the window they touch."""
from desktop import Desktop, wait_for
from user import LIST, TITLE, User

FIND = "Find in item(s)"


def place(desktop, caption):
    window = desktop.window(caption=caption)
    return window.left, window.top, window.right, window.bottom


def drag_to(desktop, caption, left, top, expected=None):
    """Drags a window by its title so that its corner would come to stand there, and releases it when it stands where it
    is expected."""
    now = place(desktop, caption)
    start = (now[0] + 60, now[1] + 12)
    expected = expected or (left, top)
    desktop.drag(start, (start[0] + left - now[0], start[1] + top - now[1]),
                 until=lambda: wait_for(f"{caption} at {expected}", lambda: place(desktop, caption)[:2] == expected))
    wait_for(f"{caption} left at {expected}", lambda: place(desktop, caption)[:2] == expected)


def test_windows_snap_and_travel_together(package, out):
    with Desktop("magnets") as desktop:
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Letters")
        drag_to(desktop, TITLE, 9, 100, expected=(0, 100))
        drag_to(desktop, TITLE, 10, 100)
        drag_to(desktop, TITLE, 40, 60)
        main = place(desktop, TITLE)

        desktop.click(desktop.window(id=LIST).at(200, 200))
        desktop.key("ctrl+f")
        desktop.wait_shown(FIND.replace("(", "\\(").replace(")", "\\)"))
        drag_to(desktop, FIND, main[2] + 7, main[1] + 60, expected=(main[2], main[1] + 60))
        find = place(desktop, FIND)
        desktop.screenshot(out / "magnets.png")
        drag_to(desktop, TITLE, 60, 95)
        assert place(desktop, FIND)[:2] == (find[0] + 20, find[1] + 35), place(desktop, FIND)

        # Away from it, it stays where it is.
        drag_to(desktop, FIND, find[0] - 200, find[1] + 200)
        alone = place(desktop, FIND)
        drag_to(desktop, TITLE, 30, 40)
        assert place(desktop, FIND) == alone
        desktop.key("Escape")
        user.exit(answer="n")
