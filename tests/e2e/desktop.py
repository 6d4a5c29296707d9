"""A Windows desktop to use the program on as a user would: an X display, Wine's virtual desktop, keyboard and mouse.

Nothing here reads the program's inside: what a test learns it reads from the screen, or from the files that the program
leaves behind.
"""
import os
import pathlib
import shutil
import signal
import subprocess
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
DISCARD = subprocess.DEVNULL
EXCHANGE = ROOT / "build/windows-debug/bin/fileexchange.exe"  # another program, to exchange files and texts with


class Failure(Exception):
    """A step that did not come about; the message says which."""


def wait_for(what, condition, seconds=20.0):
    """Asks `condition` until it gives something true, which is returned."""
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise Failure(f"waited {seconds:g} s for {what}")
        time.sleep(0.05)


class Window:
    """A line of the window list: where a window or control stands on the screen."""

    def __init__(self, line):
        fields = line.rstrip("\n").split("\t")
        self.depth = int(fields[0])
        self.kind = fields[1]
        self.id = int(fields[2])
        self.left, self.top, self.right, self.bottom = map(int, fields[3:7])
        self.enabled = fields[7] == "1"
        self.caption = fields[8]

    def at(self, x=None, y=None):
        """A screen point: x, y from the window's corner, negative ones from the far side; the middle by default."""
        def place(value, low, high):
            if value is None:
                return (low + high) // 2
            return low + value if value >= 0 else high + value
        return place(x, self.left, self.right), place(y, self.top, self.bottom)


class Desktop:
    """Xvfb and a Wine prefix of its own. Use as a context manager: it ends what it started, and nothing else."""

    def __init__(self, name, dpi=96, size=(1280, 800)):
        self.size = size
        self.name = "kestrelon"
        base = subprocess.run([ROOT / "tools/wine-prefix", "x11"], stdin=DISCARD, stderr=DISCARD,
                              stdout=subprocess.PIPE, text=True, check=True).stdout.strip()
        self.prefix = ROOT / "build" / f"wine-e2e-{name}"
        self.env = dict(os.environ, WINEPREFIX=base, WINEARCH="win64", WINEDEBUG="-all", LC_ALL="C.UTF-8",
                        WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe=")
        self._run("wineserver", "-k")
        self._run("wineserver", "-w")
        shutil.rmtree(self.prefix, ignore_errors=True)
        shutil.copytree(base, self.prefix, symlinks=True)
        self.env["WINEPREFIX"] = str(self.prefix)
        self.env["XDG_DATA_HOME"] = str(self.prefix / "xdg")
        self.display = None
        self.xvfb = None
        self.programs = []
        if dpi != 96:
            self._run("wine", "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/t", "REG_DWORD", "/d",
                      str(dpi), "/f")
        # The file dialogs shall list names that begin with a dot, as Windows does.
        self._run("wine", "reg", "add", r"HKCU\Software\Wine", "/v", "ShowDotFiles", "/d", "Y", "/f")

    def __enter__(self):
        read, write = os.pipe()
        self.xvfb = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{self.size[0]}x{self.size[1]}x24", "-nolisten", "tcp"],
            stdin=DISCARD, stdout=DISCARD, stderr=DISCARD, pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as answer:
            self.display = ":" + answer.readline().strip()
        self.env["DISPLAY"] = self.display
        return self

    def __exit__(self, *_):
        self._run("wineserver", "-k")
        self._run("wineserver", "-w", timeout=20)
        for program in self.programs:
            try:
                program.wait(timeout=10)
            except subprocess.TimeoutExpired:
                program.kill()
        self.xvfb.terminate()
        self.xvfb.wait(timeout=10)
        shutil.rmtree(self.prefix, ignore_errors=True)

    def _run(self, *command, timeout=60):
        """Runs a command with no pipe: Wine's background processes would hold it open for ever."""
        try:
            return subprocess.run([str(part) for part in command], env=self.env, stdin=DISCARD, stdout=DISCARD,
                                  stderr=DISCARD, timeout=timeout, check=False).returncode
        except subprocess.TimeoutExpired:
            return None

    # Files.
    @property
    def drive(self):
        """The folder that the program knows as C:\\."""
        return self.prefix / "drive_c"

    @property
    def data_folder(self):
        """The program's data folder of this user."""
        user = next(path for path in (self.drive / "users").iterdir() if path.name != "Public")
        return user / "AppData/Roaming/KestrelonData"

    # Programs.
    def start(self, program, *arguments):
        """Starts a Windows program on the desktop and returns at once."""
        self.programs.append(subprocess.Popen(
            ["wine", "explorer.exe", f"/desktop={self.name},{self.size[0]}x{self.size[1]}", str(program), *arguments],
            env=self.env, stdin=DISCARD, stdout=DISCARD, stderr=DISCARD))

    def processes(self, program):
        """The processes of this desktop that run a program."""
        return [int(entry.name) for entry in pathlib.Path("/proc").iterdir() if entry.name.isdigit()
                and self._runs(entry, program)]

    def kill(self, program):
        """Ends a program of this desktop as a crash does: it gets no say."""
        pids = self.processes(program)
        for pid in pids:
            os.kill(pid, signal.SIGKILL)
        if not pids:
            raise Failure(f"{program} does not run")

    def _runs(self, process, program):
        try:
            command = (process / "cmdline").read_bytes().split(b"\0")[0].decode("utf-8", "replace")
            environment = (process / "environ").read_bytes().split(b"\0")
        except OSError:
            return False
        # The program itself, not the one that opened the desktop for it; and of this desktop, not of another.
        return (command.replace("\\", "/").split("/")[-1].lower() == program.lower()
                and f"WINEPREFIX={self.prefix}".encode() in environment)

    def windows(self):
        """Every visible window, as the window list tells it."""
        answer = self.drive / "windows.txt"
        answer.unlink(missing_ok=True)
        tool = ROOT / "build/windows-debug/bin/windowlist.exe"
        self.start(tool, r"C:\windows.txt")
        try:
            wait_for("the list of windows", answer.exists, 10)
        except Failure:  # on a busy machine Wine now and then does not get a program started
            self.start(tool, r"C:\windows.txt")
            wait_for("the list of windows", answer.exists)
        return [Window(line) for line in answer.read_text("utf-8").splitlines()]

    def window(self, caption=None, kind=None, id=None, seconds=20):
        """The first visible window or control that fits, as soon as there is one."""
        def find():
            for window in self.windows():
                if ((caption is None or window.caption == caption) and (kind is None or window.kind == kind)
                        and (id is None or window.id == id)):
                    return window
            return None
        return wait_for(f"a window {caption or kind or id}", find, seconds)

    def shown(self, caption):
        """Is a top-level window of this caption on the screen?"""
        return self._run("xdotool", "search", "--onlyvisible", "--name", f"^{caption}$") == 0

    def wait_shown(self, caption, seconds=20):
        wait_for(f"the window {caption!r}", lambda: self.shown(caption), seconds)

    def wait_gone(self, caption, seconds=20):
        wait_for(f"the end of the window {caption!r}", lambda: not self.shown(caption), seconds)

    # Keyboard and mouse.
    def key(self, *keys):
        for key in keys:
            self._run("xdotool", "key", "--clearmodifiers", key)
            time.sleep(0.08)

    def type(self, text):
        if text.isascii():
            self._run("xdotool", "type", "--delay", "25", "--", text)
            return
        # What is on no key goes through an input method, which loses characters when the machine is busy.
        if self._run("wine", EXCHANGE, "text", text) != 0:
            raise Failure(f"{text!r} cannot be put on the clipboard")
        self.key("ctrl+v")

    def click(self, point, button=1, double=False):
        self._run("xdotool", "mousemove", point[0], point[1])
        time.sleep(0.05)
        self._run("xdotool", "click", *(["--repeat", "2", "--delay", "60"] if double else []), button)
        time.sleep(0.1)

    def drag(self, start, end, steps=10, until=None):
        """Presses, moves and releases the mouse; before the release `until` may wait for what the move brings about."""
        self._run("xdotool", "mousemove", start[0], start[1], "mousedown", 1)
        for step in range(1, steps + 1):
            self._run("xdotool", "mousemove", start[0] + (end[0] - start[0]) * step // steps,
                      start[1] + (end[1] - start[1]) * step // steps)
            time.sleep(0.04)
        if until:
            until()
        self._run("xdotool", "mouseup", 1)

    def screenshot(self, path):
        pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
        self._run("import", "-window", "root", path)
        return pathlib.Path(path)
