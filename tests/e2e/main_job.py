"""Does the program's main job on a real folder and leaves a picture of the window and the slot file.

usage: main_job.py --package DIR --out DIR [--folder DIR]
"""
import argparse
import pathlib
import shutil
import sys

from desktop import ROOT, Desktop
from user import TREE, User, check, rows


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--package", type=pathlib.Path, required=True)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "docs")
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    with Desktop("run") as desktop:
        folder = desktop.drive / "documents"
        shutil.copytree(options.folder, folder)
        names = sorted(path.name for path in folder.iterdir() if path.is_file())
        user = User(desktop, options.package.resolve())
        user.start()
        user.add_child("Kestrelon")
        user.add_child("Documents")
        user.add_files("C:\\documents", names)
        user.save(1)
        desktop.window(id=TREE)
        picture = desktop.screenshot(options.out / "kestrelon.png")
        slot = options.out / "Data0.dat"
        shutil.copyfile(desktop.data_folder / "Data0.dat", slot)
        user.exit()
    status, faults = check(slot)
    print(f"picture: {picture}\nslot:    {slot} ({len(rows(slot, 'TreeviewTable'))} categories, "
          f"{len(rows(slot, 'FTable'))} items; integrity check {'clean' if status == 0 else faults})")
    return status


if __name__ == "__main__":
    sys.exit(main())
