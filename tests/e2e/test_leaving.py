"""Leaving the program by each answer, and by a crash: what was not saved has a second chance."""
from desktop import EXCHANGE, Desktop, wait_for
from user import TITLE, User, rows


def texts(database):
    return [row["text"] for row in rows(database, "TreeviewTable")]


def test_every_answer_to_the_exit_question(package, out):
    with Desktop("leaving") as desktop:
        user = User(desktop, package)

        user.start()
        user.add_last_sibling("Kept by Cancel")
        user.menu("alt+f", "x")
        user.wait_question()
        desktop.screenshot(out / "leaving-question.png")
        desktop.key("Escape")
        wait_for("the question to go", lambda: not user._question())
        assert desktop.shown(TITLE)

        # Yes, and the slot is chosen.
        user.menu("alt+f", "x")
        user.wait_question()
        desktop.key("y")
        desktop.wait_shown("Save Database")
        user.choose_slot(2)
        user.confirm_replacing()
        desktop.wait_gone(TITLE)
        assert texts(desktop.data_folder / "Data1.dat") == ["Kept by Cancel"]
        unsaved = desktop.data_folder / "Unsaved.dat"
        assert not unsaved.exists()

        # Yes, and the dialog is closed without saving.
        user.start()
        user.add_last_sibling("Not saved")
        user.menu("alt+f", "x")
        user.wait_question()
        desktop.key("y")
        desktop.wait_shown("Save Database")
        desktop.key("Escape")
        desktop.wait_gone(TITLE)
        assert texts(unsaved) == ["Not saved"]

        # No: the collection is offered by the Load dialog, and nothing asks about it.
        user.start()
        user.add_last_sibling("Left by No")
        user.exit(answer="n")
        assert texts(unsaved) == ["Left by No"]
        user.start()
        assert not user._question()
        user.menu("alt+f", "l")
        desktop.wait_shown("Load Database")
        desktop.screenshot(out / "leaving-load-dialog.png")
        desktop.key("Escape")
        desktop.wait_gone("Load Database")
        user.load_unsaved()
        user.save(4)
        assert texts(desktop.data_folder / "Data3.dat") == ["Left by No"]
        user.exit()
        wait_for("the lock to go with the program", lambda: not (desktop.data_folder / "Kestrelon.lock").exists())
        left = sorted(path.name for path in desktop.data_folder.iterdir())
        assert left == ["Data1.dat", "Data3.dat", "Kestrelon.dat", "Temp.dat", "Unsaved.dat", "default.dat"], left


def test_a_crash_costs_nothing_that_was_done_seconds_before(package, out):
    with Desktop("crash") as desktop:
        papers = desktop.drive / "papers"
        papers.mkdir()
        for name in ("one.txt", "two.txt"):
            (papers / name).write_text("content\n", "utf-8")
        user = User(desktop, package)

        user.start()
        user.add_child("Letters")
        user.add_child("Of 2026")
        user.add_files("C:\\papers", ["one.txt", "two.txt"])
        user.add_last_sibling("Renamed last")
        tree = desktop.data_folder / "default.dat.tree1"
        wait_for("the tree to be kept", lambda: any(b"R\0e\0n\0a\0m\0e\0d\0" in path.read_bytes() for path in
                                                    desktop.data_folder.glob(tree.name[:-1] + "*")))
        desktop.kill("Kestrelon.exe")
        desktop.wait_gone(TITLE)

        user.start()
        user.wait_question()
        desktop.screenshot(out / "crash-question.png")
        desktop.key("y")
        wait_for("the question to go", lambda: not user._question())
        desktop.screenshot(out / "crash-recovered.png")
        user.save(1)
        slot = desktop.data_folder / "Data0.dat"
        assert texts(slot) == ["Letters", "Of 2026", "Renamed last"], texts(slot)
        assert [row["Filename"] for row in rows(slot, "FTable")] == ["one.txt", "two.txt"]
        user.exit()

        user.start()  # the end was a clean one
        assert not user._question()
        user.exit(answer="n")


def test_the_end_of_the_session_asks_nothing_and_loses_nothing(package, out):
    with Desktop("session") as desktop:
        user = User(desktop, package)
        user.start()
        user.add_last_sibling("Open at the end")
        desktop._run("wine", "explorer.exe", f"/desktop={desktop.name}", "wineboot.exe", "--end-session")
        desktop.wait_gone(TITLE)

        user.start()
        user.wait_question()
        desktop.key("y")
        wait_for("the question to go", lambda: not user._question())
        user.save(1)
        assert texts(desktop.data_folder / "Data0.dat") == ["Open at the end"]
        user.exit()


def test_a_data_folder_that_another_session_holds_is_left_alone(package, out):
    with Desktop("held") as desktop:
        user = User(desktop, package)
        user.start()
        user.exit(answer="n")
        database = desktop.data_folder / "default.dat"
        database.write_bytes(b"what the other one is working on")
        lock = desktop.data_folder / "Kestrelon.lock"
        windows_path = "C:\\" + str(lock.relative_to(desktop.drive)).replace("/", "\\")
        desktop.start(EXCHANGE, "hold", windows_path, r"C:\release")
        wait_for("the lock", lock.exists)

        user.start()
        user.wait_question()
        desktop.screenshot(out / "held-by-another-session.png")
        desktop.key("Return")
        desktop.wait_gone(TITLE)
        assert database.read_bytes() == b"what the other one is working on"

        (desktop.drive / "release").touch()
        wait_for("the release", lambda: not desktop.processes("fileexchange.exe"))
        user.start()
        user.add_last_sibling("Alone now")
        user.exit(answer="n")
