"""Files and items moved with the mouse: list to tree, another program to list and tree, list to another program."""
from desktop import EXCHANGE, Desktop, wait_for
from user import LIST, TREE, User, check, rows

NAMES = ["one.txt", "two.txt", "图纸.txt"]
ROW = 17         # pixels from row to row at 96 DPI, near enough for a few rows
FIRST_ITEM = 35  # below the list's header


def node(tree, number):
    """The place of the tree's number-th visible node, counted from 0, on its icon."""
    return tree.at(30, 9 + 16 * number)


def row(pane, number, x=60):
    return pane.at(x, FIRST_ITEM + ROW * number)


def drag_from(pane, number):
    """Away from where a row was clicked, or the press would be the second one of a double click."""
    return row(pane, number, x=200)


def test_files_and_items_go_where_they_are_dropped(package, out):
    with Desktop("drag") as desktop:
        papers = desktop.drive / "papers"
        papers.mkdir()
        for name in NAMES:
            (papers / name).write_text(name, "utf-8")
        (papers / "folder").mkdir()
        listed = ["C:\\papers\\" + name for name in NAMES] + ["C:\\papers\\folder"]
        (desktop.drive / "list.txt").write_text("\n".join(listed) + "\n", "utf-8")
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Alpha")
        user.add_last_sibling("Beta")
        tree, items = desktop.window(id=TREE), desktop.window(id=LIST)
        desktop.start(EXCHANGE, "window", r"C:\list.txt", r"C:\received.txt", "1000", "600")
        exchange = desktop.window(caption="File exchange")
        source = exchange.at(150, 70)

        # From another program onto the list (the current category is Beta), then onto the category Alpha.
        desktop.drag(source, items.at(300, 200))
        desktop.drag(source, node(tree, 0))
        # The same files once more from the list's first two items onto Alpha: items move with their numbers.
        desktop.click(node(tree, 1))
        desktop.click(row(items, 0))
        desktop.key("shift+Down")
        desktop.drag(drag_from(items, 0), node(tree, 0))
        desktop.screenshot(out / "dropped.png")
        # What is left of Beta: out into the other program; then onto the list itself, which does nothing.
        desktop.click(row(items, 0))
        desktop.drag(drag_from(items, 0), source)
        received = desktop.drive / "received.txt"
        wait_for("the files in the other program", received.exists)
        assert received.read_text("utf-8").splitlines() == ["C:\\papers\\图纸.txt"]
        desktop.drag(drag_from(items, 0), items.at(300, 200))
        user.save(1)
        slot = desktop.data_folder / "Data0.dat"

        tree_rows = {r["text"]: r["key"] for r in rows(slot, "TreeviewTable")}
        alpha, beta = tree_rows["Alpha"], tree_rows["Beta"]
        got = [(r["TreeviewNode"], r["FileIndex"], r["Filename"]) for r in rows(slot, "FTable")]
        assert got == [(alpha, f"1#{beta}", "one.txt"), (alpha, f"2#{beta}", "two.txt"), (beta, f"3#{beta}", "图纸.txt"),
                       (alpha, f"1#{alpha}", "one.txt"), (alpha, f"2#{alpha}", "two.txt"),
                       (alpha, f"3#{alpha}", "图纸.txt")], got
        times = {r["FileIndex"]: r["InsertTime"] for r in rows(slot, "FTable")}
        assert len({times[f"{n}#{beta}"] for n in (1, 2, 3)}) == 1, times
        assert check(slot)[0] == 0
        assert sorted(path.name for path in papers.iterdir()) == sorted(NAMES + ["folder"])
        user.exit()


def test_files_on_the_clipboard_are_offered_and_inserted(package, out):
    with Desktop("clipboard") as desktop:
        (desktop.drive / "papers").mkdir()
        for name in NAMES:
            (desktop.drive / "papers" / name).write_text(name, "utf-8")
        (desktop.drive / "list.txt").write_text("".join(f"C:\\papers\\{name}\n" for name in NAMES), "utf-8")
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Alpha")
        user.menu("alt+l", "Right", "Down", "Return")
        title = "Import files from clipboard"
        desktop.wait_shown(title)
        desktop.start(EXCHANGE, "clipboard", r"C:\list.txt")
        # Select All ticks whatever is there: wait for the list by what it shows.
        before = desktop.screenshot(out / "clipboard-empty.png").read_bytes()
        wait_for("the files in the list",
                 lambda: desktop.screenshot(out / "clipboard-list.png").read_bytes() != before)
        desktop.key("alt+a")
        desktop.screenshot(out / "clipboard-ticked.png")
        desktop.key("alt+i")
        desktop.key("Escape")
        desktop.wait_gone(title)
        user.save(1)
        got = [(r["FileIndex"].split("#")[0], r["Filename"]) for r in rows(desktop.data_folder / "Data0.dat", "FTable")]
        assert got == [("1", "one.txt"), ("2", "two.txt"), ("3", "图纸.txt")], got
        user.exit()
