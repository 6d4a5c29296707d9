"""The program with a large collection: 2,000 categories, and 20,000 items in one of them."""
import subprocess
import time

from desktop import DISCARD, ROOT, Desktop
from user import TREE, User, check, rows

CATEGORIES, ITEMS = 2000, 20000


def without_numbers(table):
    """Rows without the database's own row number."""
    return [{name: value for name, value in row.items() if name != "i"} for row in table]


def test_a_large_collection_loads_shows_and_saves_unchanged(package, out):
    with Desktop("large") as desktop:
        user = User(desktop, package)
        user.start()
        slot = desktop.data_folder / "Data1.dat"
        subprocess.run([ROOT / "build/native/bin/make-collection", slot, str(CATEGORIES), str(ITEMS)], stdin=DISCARD,
                       check=True)

        start = time.monotonic()
        user.load(2)
        loaded = time.monotonic()
        desktop.click(desktop.window(id=TREE).at(60, 10))
        header = desktop.window(kind="SysHeader32")
        desktop.click(header.at(200, 8))  # sort by file name
        desktop.screenshot(out / "large-collection.png")
        start_saving = time.monotonic()
        user.save(3)
        print(f"from the menu to the end of the dialog: load {loaded - start:.1f} s, "
              f"save {time.monotonic() - start_saving:.1f} s")

        again = desktop.data_folder / "Data2.dat"
        assert without_numbers(rows(again, "TreeviewTable")) == without_numbers(rows(slot, "TreeviewTable"))
        items = rows(again, "FTable")
        assert len(items) == ITEMS
        assert items == rows(slot, "FTable")
        status, faults = check(again)
        assert status == 0, faults
        user.exit()
