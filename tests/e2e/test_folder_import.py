"""A large real folder tree made into categories and items, rearranged, cut down, saved, and there again after a restart."""
import hashlib
import os
import pathlib

from desktop import ROOT, Desktop, wait_for
from user import TITLE, TREE, User, check, rows

FOLDERTREE = ROOT / "build/windows-debug/bin/foldertree.exe"
# Folders that a machine that can build the program has; as many of them are taken as it needs.
REAL_FOLDERS = ["/usr/share/doc", "/usr/include", "/usr/x86_64-w64-mingw32/include", "/usr/lib/python3", "/usr/share/perl",
                "/usr/lib/gcc", "/usr/share/locale", "/usr/share/wine", "/usr/lib/python3.11", "/usr/share/cmake-3.25"]
FILES, FOLDERS = 10_000, 1_000
UNUSABLE = set('<>:"|?*\\')  # in names of Windows files


def usable(name):
    return not UNUSABLE & set(name) and not name.endswith((".", " ")) and name.isprintable() and len(name) < 100


def link_tree(source, target):
    """The same files under another folder, as hard links where that works. How many files and folders."""
    files = folders = 0
    for folder, below, names in os.walk(source):
        below[:] = {name.casefold(): name for name in below
                    if usable(name) and not os.path.islink(os.path.join(folder, name))}.values()
        here = target / os.path.relpath(folder, source)
        here.mkdir(parents=True)
        folders += 1
        taken = {name.casefold() for name in below}
        for name in names:
            path = os.path.join(folder, name)
            # Names that differ by letter case alone cannot stand side by side on Windows.
            if not usable(name) or os.path.islink(path) or len(str(here / name)) > 230 or name.casefold() in taken:
                continue
            taken.add(name.casefold())
            try:
                os.link(path, here / name)
            except OSError:
                (here / name).write_bytes(pathlib.Path(path).read_bytes())
            files += 1
    return files, folders


def fingerprint(folder):
    """Of every name, content and time of change below."""
    total = hashlib.sha256()
    for path in sorted(folder.rglob("*")):
        total.update(f"{path}\0{path.lstat().st_mtime_ns}\0".encode("utf-8", "surrogateescape"))
        if path.is_file():
            total.update(path.read_bytes())
    return total.hexdigest()


def collection(database):
    """What a slot holds: the tree as (path of names) in the order of siblings, and the items of each category."""
    names, parents, order = {}, {}, []
    for row in rows(database, "TreeviewTable"):
        names[row["key"]], parents[row["key"]] = row["text"], row["parent"]
        order.append(row["key"])
    paths = {"0_": ""}
    for key in order:
        paths[key] = paths[parents[key]] + "\\" + names[key]
    children, items = {}, {}
    for key in order:
        children.setdefault(paths[parents[key]], []).append(names[key])
    for row in rows(database, "FTable"):
        items.setdefault(paths[row["TreeviewNode"]], []).append(
            (row["FileIndex"].split("#")[0], row["DefineName"], row["Filename"], row["LocalFile"], row["Comment"]))
    return children, items


def expected(listing, top):
    """The same from the list that an independent walk made; `top` is the imported folder."""
    children, items, folder = {}, {}, None
    parent = top.rsplit("\\", 1)[0]
    for line in listing.read_text("utf-8").splitlines():
        kind, path = line.split("\t")
        if kind == "D":
            folder = path[len(parent):]
            children.setdefault(folder.rsplit("\\", 1)[0], []).append(folder.rsplit("\\", 1)[1])
        else:
            name = path.rsplit("\\", 1)[1]
            here = items.setdefault(folder, [])
            here.append((str(len(here) + 1), name.rsplit(".", 1)[0] if "." in name else name, name, path, ""))
    return children, items


def assert_same(got, wanted):
    """Of two dictionaries; says where they differ first."""
    for key in sorted(set(got) | set(wanted)):
        ours, theirs = got.get(key, []), wanted.get(key, [])
        first = next((pair for pair in zip(ours, theirs) if pair[0] != pair[1]), (len(ours), len(theirs)))
        assert ours == theirs, f"{key}: {first[0]} instead of {first[1]}"


def node(tree, number, depth=0):
    """The icon of the tree's number-th visible node, counted from 0; depth 0 is the top level."""
    return tree.at(30 + 19 * depth, 9 + 16 * number)


def test_a_real_folder_tree_is_imported_rearranged_and_kept(package, out):
    with Desktop("folders") as desktop:
        # On the Windows desktop, where the folder picker begins.
        place = desktop.data_folder.parents[2] / "Desktop"
        if place.is_symlink():
            place.unlink()
        machine = place / "machine"
        machine.mkdir(parents=True)
        files, folders = 0, 1
        for source in REAL_FOLDERS:
            if files < FILES or folders < FOLDERS:
                more = link_tree(source, machine / source.strip("/").replace("/", "-")) if os.path.isdir(source) else (0, 0)
                files, folders = files + more[0], folders + more[1]
        assert files >= FILES and folders >= FOLDERS, (files, folders)
        before = fingerprint(machine)
        top = "C:\\" + str(machine.relative_to(desktop.drive)).replace("/", "\\")
        desktop.start(FOLDERTREE, top, r"C:\tree.txt")
        listing = wait_for("the independent walk", lambda: desktop.drive / "tree.txt"
                           if (desktop.drive / "tree.txt").exists() else None, 120)
        wanted_children, wanted_items = expected(listing, top)
        assert sum(map(len, wanted_items.values())) == files
        assert sum(map(len, wanted_children.values())) == folders

        user = User(desktop, package)
        user.start()
        user.menu("alt+c", "d")
        picker = wait_for("the folder picker", lambda: next(
            (w for w in desktop.windows() if w.depth == 0 and w.kind == "#32770"), None))
        desktop.type("machine")
        desktop.key("Return")
        desktop.wait_gone(picker.caption)
        desktop.screenshot(out / "importing.png")
        wait_for("the end of the import", lambda: any(
            w.kind == "#32770" and w.caption == TITLE for w in desktop.windows()), 300)
        desktop.screenshot(out / "imported.png")
        desktop.key("Return")
        user.save(1)
        slot = desktop.data_folder / "Data0.dat"
        children, items = collection(slot)
        assert_same(children, wanted_children)
        assert_same(items, wanted_items)
        assert check(slot)[0] == 0

        # The second branch under the first one by dragging, then the third deleted (it is the second now).
        user.menu("alt+c", "e")  # enable drag and drop
        tree = desktop.window(id=TREE)
        desktop.click(node(tree, 0))
        desktop.key("Right")
        names = [name for name in wanted_children["\\machine"]]
        desktop.drag(node(tree, 2, depth=1), node(tree, 1, depth=1))
        moved, kept = names[1], names[0]
        user.save(2)
        desktop.screenshot(out / "rearranged.png")
        children, items = collection(desktop.data_folder / "Data1.dat")
        assert children["\\machine"] == [name for name in names if name != moved]
        assert children["\\machine\\" + kept] == wanted_children["\\machine\\" + kept] + [moved]
        below = "\\machine\\" + moved
        assert {("\\machine\\" + kept + path[len("\\machine"):] if (path + "\\").startswith(below + "\\") else path): held
                for path, held in wanted_items.items()} == items

        # The first branch again, with what was moved below it, is reached with the keyboard: the tree has scrolled.
        desktop.click(tree.at(60, 9))
        desktop.key("Home", "Right")
        desktop.key("Delete")
        wait_for("the question", lambda: any(w.kind == "#32770" and w.caption == TITLE for w in desktop.windows()))
        desktop.key("y")
        user.save(3)
        desktop.screenshot(out / "deleted.png")
        slot = desktop.data_folder / "Data2.dat"
        children, items = collection(slot)
        gone = ("\\machine\\" + kept + "\\", below + "\\")
        assert_same(items, {path: held for path, held in wanted_items.items()
                            if not (path + "\\").startswith(gone)})
        assert children.get("\\machine", []) == [name for name in names if name not in (moved, kept)]
        assert check(slot)[0] == 0
        user.exit()

        user.start()
        user.load(2)
        user.save(4)
        assert collection(desktop.data_folder / "Data3.dat") == collection(desktop.data_folder / "Data1.dat")
        user.exit()
        assert fingerprint(machine) == before
