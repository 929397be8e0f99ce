"""Runs scrubwell.exe under Wine in a Windows of its own.

program_test.py SCRUBWELL PLANT SOURCES OFFLINE_BUILD
"""
import contextlib
import json
import os
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

scrubwell, plant, sources, offline = sys.argv[1:]
scripts = os.path.join(sources, "scripts")
shared = os.environ.get("SCRUBWELL_WINE_HOME") or os.path.join(sources, "out/wine")
faults = []


def expect(good, *what):
    if not good:
        faults.append(" ".join(str(part) for part in what))


class Windows:
    """A fresh copy of the tests' private Windows, which others use at the same time.

    Large files are shared with it: none of them is written to in its place.
    """

    def __init__(self):
        self.home = tempfile.mkdtemp(prefix="wine-program-", dir=os.path.dirname(shared))
        self.drive = os.path.join(self.home, "prefix/drive_c")
        self.environment = {**os.environ, "SCRUBWELL_WINE_HOME": self.home, "LC_ALL": "C.UTF-8"}

        def copy(source, target, **_):
            return (shutil.copy2 if os.path.getsize(source) < 65536 or source.endswith(".reg")
                    else os.link)(source, target)

        shutil.copytree(os.path.join(shared, "fresh"), os.path.join(self.home, "prefix"),
                        symlinks=True, copy_function=copy)
        os.mkdir(os.path.join(self.home, "home"))
        open(os.path.join(self.home, "complete"), "w").close()
        subprocess.run([os.path.join(scripts, "wine-prefix.sh")], env=self.environment, check=True)

    def run(self, program, *arguments, **environment):
        run = subprocess.run([os.path.join(scripts, "wine-run.sh"), program, *arguments],
                             env={**self.environment, **environment}, capture_output=True,
                             timeout=300)
        return run.returncode, run.stdout.decode(), run.stderr.decode()

    def console(self, typed_after, typed, *arguments, **environment):
        """On a console; types once that text is shown. Exit status, and all that was shown."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.drive)
            signal.signal(signal.SIGHUP, signal.SIG_IGN)
            os.execve(os.path.join(scripts, "wine-run.sh"), ["wine-run.sh", scrubwell, *arguments],
                      {**self.environment, "SCRUBWELL_WINE_CONSOLE": "1", **environment})
        # Keys go to the console as they are, but for the one that stops.
        settings = termios.tcgetattr(terminal)
        settings[0] &= ~termios.ICRNL
        settings[3] &= ~(termios.ICANON | termios.ECHO)
        termios.tcsetattr(terminal, termios.TCSANOW, settings)
        shown = b""
        while select.select([terminal], [], [], 120)[0]:
            try:
                part = os.read(terminal, 65536)
            except OSError:  # the other end is closed
                break
            shown += part
            if typed and typed_after.encode() in shown:
                if typed == CLOSE:
                    os.close(terminal)
                    break
                for key in typed.partition(STOP):
                    os.write(terminal, key.encode())
                    time.sleep(1 if key == STOP else 0)  # another thread is told of it
                typed = ""
        else:
            os.kill(pid, signal.SIGKILL)
        return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), shown.decode(errors="replace")

    def scan(self, *arguments):
        status, out, err = self.run(scrubwell, "scan", "--format", "json", *arguments)
        expect(status in (0, 1) and not err, "scan", arguments, status, err)
        return json.loads(out)

    def planted(self, *arguments):
        return dict(line.split(": ") for line in
                    self.run(plant, *arguments)[1].splitlines())

    def stop(self):
        subprocess.run([os.path.join(scripts, "wine-prefix.sh"), "--stop"], env=self.environment,
                       check=True)

    def end(self):
        self.stop()
        shutil.rmtree(self.home)


CLSID = "HKLM\\Software\\Classes\\CLSID\\"
CLASS32 = CLSID + "{5C2B0E64-0000-4000-8000-000000000032}\\InprocServer32"
# Arguments, exit status, what is to be read on the standard output and on the other one.
RUNS = [
    (["--version"], 0, "scrubwell ", ""),
    (["scan", "--help"], 0, "--live", ""),
    (["plugins", "--kinds"], 0, "Missing font", ""),
    ([], 2, "", "a command is missing"),
    (["scan", "--frob"], 2, "", "--frob: unknown argument"),
    (["scan", "--live", "Möwe"], 2, "", "Möwe: unknown argument"),
    (["scan", "--windows", "C:\\"], 2, "", "--windows: this program looks at the running Windows"),
    (["scan", "--live", "--windows", "C:\\"], 2, "", "--windows: this program looks at"),
    (["recover", "--backup", "C:\\nowhere"], 2, "", "there is no such folder of backups"),
    (["recover", "--drive", "E=C:\\"], 2, "", "--drive: this program looks at the running Windows"),
    (["scan", "--user", "all"], 2, "", "--user: the running Windows is looked at for the user who"),
    (["scan", "--plugins", "Nope"], 2, "", "Nope: unknown category"),
    (["scan", "--output", "C:\\windows"], 2, "", "can't be written"),
    (["scan", "--output", "C:\\nowhere\\x"], 2, "", "can't be written"),
    (["scan", "--output", "C:\\fest.txt"], 2, "", "can't be written"),
    (["scan", "--since", "C:\\nowhere.json"], 2, "", "can't be read"),
    (["scan", "--plugins", "Sounds", "--output", "NUL"], 1, "", ""),
    (["scan", "--plugins", "Sounds", "--lang", "de"], 1, "64 Bit), Benutzer ", ""),
    (["clean"], 2, "", "either --all or --select"),
    (["clean", "--all"], 2, "", "--yes or --dry-run is needed"),
    (["explain", "0000000000", "--plugins", "Sounds"], 2, "", "no problem with this id"),
    (["reg", "HKLM\\Software\\Scrubgone"], 1, "", "there is no such key"),
    (["reg", CLASS32, "--view", "32"], 0, "C:\\scrubgone\\class32.dll", ""),
    (["reg", CLASS32, "--view", "64"], 1, "", "there is no such key"),
    (["reg", "find", "class64.dll", "--key", CLSID], 0, "class64.dll", ""),
    (["undo", "--list"], 0, "No sessions.", ""),
    (["undo"], 2, "", "scrubwell: "),
    (["recover"], 0, "Nothing was interrupted.", ""),
    (["sessions", "list"], 0, "No sessions.", ""),
    (["ignore", "list", "--live"], 0, "No problems are hidden.", ""),
]


def check_runs(windows):
    fixed = os.path.join(windows.drive, "fest.txt")
    with open(fixed, "w") as file:
        file.write("kept")
    os.chmod(fixed, 0o444)
    for arguments, status, out, err in RUNS:
        run = windows.run(scrubwell, *arguments)
        good = run[0] == status and out in run[1] and err in run[2]
        # A complaint is one sentence and nothing else; a result comes without one.
        one = run[1] == "" and run[2].startswith("scrubwell: ") and run[2].endswith(".\n")
        expect(good and (one if err else run[2] == "") and "\r" not in run[1],
               arguments, *run)
    expect(open(fixed).read() == "kept", "a file that can't be written has changed")
    shown = windows.run(scrubwell, "scan", "--help")[1]
    expect("--windows" not in shown and "--drive" not in shown, "help offers a folder", shown)


def check_output(windows):
    """A file named beyond ASCII is replaced as a whole, and read again as an earlier report."""
    path, name = os.path.join(windows.drive, "Bericht Möwe 中.json"), "C:\\Bericht Möwe 中.json"
    with open(path, "w") as file:
        file.write("old " * 100000)
    arguments = ["scan", "--plugins", "Sounds,Fonts", "--format", "json"]
    status, out, err = windows.run(scrubwell, *arguments, "--output", name)
    expect((status, out, err) == (1, "", ""), "--output", status, out, err)
    with open(path, encoding="utf-8", newline="") as file:
        text = file.read()
    expect(json.loads(text)["problems"] and "\r" not in text, "the file holds", text[:100])
    status, out, err = windows.run(scrubwell, *arguments[:3], "--since", name)
    expect(status == 0 and "No new problems" in out, "--since", status, out, err)
    left = [name for name in os.listdir(windows.drive) if ".scrubwell-" in name]
    expect(not left, "left behind:", left)


SHOW = ["scan", "--plugins", "Uninstall"]
CLEAN = ["clean", "--all", "--filter", "scrubgone", "--plugins", "Sounds,Uninstall"]
BOLD, STOP, CLOSE = "\x1b[1m", "\x03", "the window goes"
# The key that stops ends no question here: Wine goes on waiting for the line, as Windows does not.
# Whatever that line then says, it comes too late.
# After what is typed, arguments, environment, exit status, what is shown, what is not.
CONSOLES = [
    ("close this window", "\r", [], {}, 0, "is used from a command prompt", "scrubwell: "),
    ("", "", SHOW, {}, 1, BOLD, "[y/N]"),
    ("", "", SHOW, {}, 1, "Scrubgone Möwe", "scrubwell: "),
    ("", "", SHOW, {"NO_COLOR": "1"}, 1, "Scrubgone Möwe", BOLD),
    ("Program components", STOP, ["scan"], {}, 130, "The scan was stopped", "scrubwell: "),
    ("[y/N]", "n\r", CLEAN, {}, 1, "nothing was changed", "Fixed"),
    ("[y/N]", "möwe\r", CLEAN, {}, 1, "nothing was changed", "Fixed"),
    ("[y/N]", STOP + "y\r", CLEAN, {}, 130, "stopped, nothing was changed", "Fixed"),
    ("[y/N]", CLOSE, CLEAN, {}, 1, "Plan: 2 changes", "Fixed"),
    ("[j/N]", "ja\r", [*CLEAN, "--lang", "de"], {}, 0, "Behoben: ", "scrubwell: "),
]


def check_consoles(windows):
    all_there = windows.planted("show")
    for after, typed, arguments, environment, status, shown, hidden in CONSOLES:
        run = windows.console(after, typed, *arguments, **environment)
        good = run[0] == status and shown in run[1] and hidden not in run[1]
        expect(good, "console", arguments, repr(typed), environment, *run)
    run = windows.run(scrubwell, "undo")
    expect(run[0] == 0 and windows.planted("show") == all_there, "undo of the answered", *run)


# Category and view of what was planted; some entries are seen in several places.
PLANTED = {
    ("ActiveXCOM", "class32.dll"), ("ActiveXCOM", "class64.dll"), ("AppMRU", "seen.txt"),
    ("Autostart", "task.exe"), ("Fonts", "scrubgone.ttf"), ("History", "seen.txt"),
    ("Sounds", "horn.wav"), ("Uninstall", "uninstall.exe"),
}


def mark(problem):
    text = json.dumps(problem, ensure_ascii=False)
    found = [name for name in {name for _, name in PLANTED} if name in text]
    return problem["plugin"], found[0] if found else None


def interrupt(session):
    """Leaves a session as a crash after its last change does."""
    os.remove(os.path.join(session, "carried-out"))
    with open(os.path.join(session, "journal.jsonl"), "r+b") as journal:
        journal.truncate(journal.read().rindex(b'{"end"'))


def check_clean(windows):
    before = windows.scan("--filter", "scrubgone")["problems"]
    expect({mark(problem) for problem in before} == PLANTED, "found", sorted(map(mark, before)))
    sound = next(p["id"] for p in before if p["plugin"] == "Sounds")
    all_there = windows.planted("show")
    steps = [
        (["explain", sound, "--plugins", "Sounds"], 0, "horn.wav"),
        (["ignore", "add", sound, "--plugins", "Sounds", "--reason", "Möwe"], 0, ""),
        (["ignore", "list"], 0, "Möwe"),
        (["clean", "--select", sound, "--plugins", "Sounds", "--yes"], 2, ""),
        (["ignore", "remove", sound], 0, ""),
        (["clean", "--all", "--filter", "scrubgone", "--dry-run"], 0, "Nothing was changed."),
    ]
    for arguments, status, out in steps:
        run = windows.run(scrubwell, *arguments)
        expect(run[0] == status and out in run[1], arguments, *run)
    expect(windows.planted("show") == all_there, "changed before the clean")

    kept = ["--backup", "C:\\Kept for later"]
    run = windows.run(scrubwell, "clean", "--all", "--filter", "scrubgone", "--yes", *kept)
    session = os.listdir(os.path.join(windows.drive, "Kept for later"))[0]
    expect(run[0] == 0 and
           f'scrubwell undo {session} --backup "C:\\Kept for later"' in run[1], "clean", *run)
    expect(set(windows.planted("show").values()) == {"gone"}, "after", windows.planted("show"))
    expect(not windows.scan("--filter", "scrubgone")["problems"], "found after the clean")
    listed = windows.run(scrubwell, "undo", "--list", "--format", "json", *kept)[1]
    expect(len(json.loads(listed)["sessions"]) == 1, "sessions", listed)
    interrupt(os.path.join(windows.drive, "Kept for later", json.loads(listed)["sessions"][0]["name"]))
    for arguments, out in [
        (["recover"], "Nothing was interrupted."),
        (["recover", *kept], "was interrupted; what it had changed by then can be put back"),
        (["recover", *kept], "Nothing was interrupted."),
        (["undo", *kept], ""),
    ]:
        run = windows.run(scrubwell, *arguments)
        expect(run[0] == 0 and out in run[1], arguments, *run)
    expect(windows.planted("show") == all_there, "after undo", windows.planted("show"))
    after = windows.scan("--filter", "scrubgone")["problems"]
    expect([p["id"] for p in after] == [p["id"] for p in before], "found after undo",
           sorted(map(mark, after)))


# Wine's browser index has a header of its own, which no reader of Microsoft's takes, so that these
# are seen from inside alone. What nobody can read is not taken for a fault.
ONLY_RUNNING = {("AppMRU", "seen.txt"), ("History", "seen.txt")}
# Classes that both views share are not there when a 64-bit program of Wine's asks for the 32-bit
# view; its own "reg query HKLM\Software\Classes\folder /reg:32" fails as well.
ONLY_OFF = {"i386": set(), "x86_64": {("FileTypes", "folder")}}


def machine(program):
    with open(program, "rb") as file:
        image = file.read(4096)
    header = int.from_bytes(image[60:64], "little")
    return "i386" if image[header + 4:header + 6] == b"\x4c\x01" else "x86_64"


def by_identity(problems):
    return {(p["plugin"], p["kind"], p["caption"], p["identification"].lower()): p
            for p in problems}


def hidden(problems):
    return {identity for identity, problem in problems.items() if not problem["visible"]}


def compare(windows):
    """The same registry and files, seen from inside and from outside."""
    for plugin, whose in (("Sounds", []), ("Fonts", ["--machine"])):
        one = windows.scan("--plugins", plugin)["problems"][0]["id"]
        run = windows.run(scrubwell, "ignore", "add", one, "--plugins", plugin, *whose)
        expect(run[0] == 0, "ignore add", *whose, *run)
    live = by_identity(windows.scan()["problems"])
    windows.stop()
    subprocess.run([os.path.join(offline, "wineprefix2hives"), windows.home + "/prefix"],
                   check=True)
    run = subprocess.run([os.path.join(offline, "scrubwell"), "scan", "--format", "json",
                          "--windows", windows.drive], capture_output=True, timeout=300)
    expect(run.returncode == 1 and not run.stderr, "offline", run.returncode, run.stderr)
    seen = by_identity(json.loads(run.stdout)["problems"])
    expect(hidden(live) == hidden(seen) and len(hidden(seen)) == 2, "hidden:", hidden(live),
           "and switched off:", hidden(seen))
    print(len(live), "problems of the running Windows,", len(seen), "of it switched off")
    only_running = {mark(live[identity]) for identity in live.keys() - seen.keys()}
    expect(only_running == ONLY_RUNNING, "only running:", sorted(live.keys() - seen.keys()))
    only_off = {(plugin, caption) for plugin, _, caption, _ in seen.keys() - live.keys()}
    expect(only_off == ONLY_OFF[machine(scrubwell)], "only switched off:", sorted(only_off))


def main():
    windows = Windows()
    with contextlib.ExitStack() as stack:
        stack.callback(windows.end)
        expect(set(windows.planted().values()) == {"there"}, "planting failed")
        for check in (check_runs, check_output, check_clean, check_consoles, compare):
            check(windows)
    print("\n".join(faults))
    return 1 if faults else 0


sys.exit(main())
