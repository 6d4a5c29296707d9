"""The program's main job with real files, from an empty start to a collection that comes back after a restart."""
import re

from desktop import Desktop, wait_for
from user import ALIAS_COLUMN, ICON_COLUMN, LIST, TREE, User, check, rows

NAMES = [".profile", "README", "图纸.txt"]


def test_a_collection_built_by_hand_survives_a_restart(package, out):
    with Desktop("main") as desktop:
        papers = desktop.drive / "papers"
        papers.mkdir()
        for name in NAMES:
            (papers / name).write_text(f"content of {name}\n", "utf-8")
        user = User(desktop, package)

        user.start()
        user.add_child("Letters")
        user.add_child("Of 2026")
        user.add_files("C:\\papers", NAMES)
        header = desktop.window(kind="SysHeader32")
        desktop.click(header.at(ICON_COLUMN + ALIAS_COLUMN + 40, 8))
        desktop.screenshot(out / "main-job.png")
        user.save(2)
        slot = desktop.data_folder / "Data1.dat"

        tree = rows(slot, "TreeviewTable")
        assert [(row["parent"] == "0_", row["text"]) for row in tree] == [(True, "Letters"), (False, "Of 2026")], tree
        assert tree[1]["parent"] == tree[0]["key"]
        items = rows(slot, "FTable")
        assert [row["Filename"] for row in items] == NAMES, items
        assert [row["DefineName"] for row in items] == ["", "README", "图纸"], items
        assert [row["LocalFile"] for row in items] == ["C:\\papers\\" + name for name in NAMES], items
        assert {row["TreeviewNode"] for row in items} == {tree[1]["key"]}
        assert [row["FileIndex"] for row in items] == [f"{n}#{tree[1]['key']}" for n in (1, 2, 3)]
        status, faults = check(slot)
        assert status == 0, faults
        settings = (desktop.data_folder / "Kestrelon.dat").read_text("latin-1")
        assert re.search(r"^Data1=2\. \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\r?$", settings, re.MULTILINE), settings

        # A category more makes the exit question come; No leaves it behind.
        user.add_last_sibling("Not kept")
        user.exit(answer="n")

        user.start()
        user.save(4)  # the start is empty: nothing comes into this slot
        assert rows(desktop.data_folder / "Data3.dat", "TreeviewTable") == []
        assert rows(desktop.data_folder / "Data3.dat", "FTable") == []
        user.load(2)
        tree_window = desktop.window(id=TREE)
        desktop.click(tree_window.at(60, 10))  # the first category
        desktop.key("Right", "Right")          # open it, and on to the one below
        wait_for("the selection to settle", lambda: desktop.window(id=LIST))
        desktop.screenshot(out / "main-job-loaded.png")
        user.save(3)
        again = desktop.data_folder / "Data2.dat"
        # The numbers of the rows are the database's own; everything else comes back as it was.
        assert [{k: v for k, v in row.items() if k != "i"} for row in rows(again, "TreeviewTable")] == [
            {k: v for k, v in row.items() if k != "i"} for row in tree]
        assert rows(again, "FTable") == items
        user.exit()
