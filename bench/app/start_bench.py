#!/usr/bin/python3
"""Runs start-bench on a desktop of its own, since without one no program sees the windows of another, and prints what it
measured. Needs the package in build/windows and the bench programs in build/windows-bench (see bench/README.md)."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/e2e"))
from desktop import Desktop, wait_for  # noqa: E402

BENCH = ROOT / "build/windows-bench/bin"
ROUNDS = sys.argv[1] if len(sys.argv) > 1 else "15"


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


with Desktop("start-bench") as desktop:
    result = desktop.drive / "start.txt"
    programs = (ROOT / "build/windows/Kestrelon/Kestrelon.exe", BENCH / "bare-window.exe",
                BENCH / "bare-window-with-controls.exe")
    desktop.start(BENCH / "start-bench.exe", "C:\\start.txt", ROUNDS, *map(windows_path, programs))
    print(wait_for("the result", lambda: result.exists() and result.read_text(), 300).strip())
