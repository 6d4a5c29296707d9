"""The package as a file, before anything of it runs."""
import re
import subprocess

# Whatever else the program needs it loads when it is first needed: loading it would delay the window.
AT_THE_START = {"advapi32.dll", "comctl32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "user32.dll"}


def test_few_libraries_are_loaded_at_the_start(package, out):
    printed = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", str(package / "Kestrelon.exe")], check=True,
                             capture_output=True, text=True).stdout
    loaded = {name.lower() for name in re.findall(r"DLL Name: (\S+)", printed)}
    assert "kernel32.dll" in loaded, "the list of libraries could not be read"
    assert loaded <= AT_THE_START, f"loaded at the start: {sorted(loaded - AT_THE_START)}"


def test_the_program_stays_small(package, out):
    size = (package / "Kestrelon.exe").stat().st_size
    assert size < 4 << 20, f"{size} bytes"
