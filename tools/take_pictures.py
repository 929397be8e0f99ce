#!/usr/bin/env python3
"""Takes the pictures of docs/images: a scan in a terminal, the HTML report in light and dark.

take_pictures.py PROGRAM MKSAMPLE [FOLDER]

Needs chromium and pngquant. The scan runs in a terminal of its own, so that the picture shows what
the program sends to one.
"""
import fcntl
import html
import os
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
VOLUME = "/mnt/windows"
COLUMNS = 92
TERMINAL = ["scan", "--windows", VOLUME, "--plugins", "Fonts,SharedFiles,SystemAddOn"]
LIMIT = 300_000
PAGE = """<!DOCTYPE html><meta charset="utf-8"><style>
body { margin: 0; background: #14171c; color: #d6dae0; font: 14px/19px "DejaVu Sans Mono", monospace }
pre { margin: 14px 18px; font: inherit } b { color: #fff } i { font-style: normal; color: #8b93a0 }
u { text-decoration: none; color: #6fc3df }
</style><pre>%s</pre>"""
TAGS = {"0": None, "1": "b", "2": "i"}


def in_terminal(program, arguments):
    """What the program sends to a terminal."""
    child, master = pty.fork()
    if child == 0:
        fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", 60, COLUMNS, 0, 0))
        os.environ.update(LANG="C.UTF-8", TERM="xterm-256color")
        os.environ.pop("NO_COLOR", None)
        os.execv(program, [program, *arguments])
    sent = b""
    try:
        while data := os.read(master, 65536):
            sent += data
    except OSError:  # how the end of a terminal shows
        pass
    os.waitpid(child, 0)
    return sent.decode()


def as_html(text):
    """Bold and faint as elements. A line that was erased shows only what came after."""
    lines = [re.split(r"\r\x1b\[K", line.rstrip("\r"))[-1] for line in text.split("\n")]
    result, open_tag = [], None
    for part in re.split(r"(\x1b\[[0-9;]*m)", "\n".join(lines).rstrip()):
        if not part.startswith("\x1b"):
            result.append(html.escape(part, quote=False))
            continue
        if open_tag:
            result.append(f"</{open_tag}>")
        open_tag = TAGS[part[2:-1] or "0"]
        if open_tag:
            result.append(f"<{open_tag}>")
    return "".join(result)


def take(work, page, target, size, *flags):
    raw = os.path.join(work, "raw.png")
    profile = tempfile.mkdtemp(dir=work)
    subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                    "--no-first-run", "--disable-background-networking", "--disable-sync",
                    "--disable-component-update", "--hide-scrollbars", "--user-data-dir=" + profile,
                    "--force-device-scale-factor=1.5", "--window-size=%d,%d" % size,
                    "--screenshot=" + raw, *flags, "file://" + page],
                   check=True, stderr=subprocess.DEVNULL, timeout=180)
    subprocess.run(["pngquant", "--force", "--strip", "--speed", "1", "--output", target, "128",
                    raw], check=True)
    size = os.path.getsize(target)
    print(target, size)
    if size > LIMIT:
        sys.exit("too large: " + target)


def main():
    program, mksample = map(os.path.abspath, sys.argv[1:3])
    folder = sys.argv[3] if len(sys.argv) > 3 else os.path.join(ROOT, "docs/images")
    work = tempfile.mkdtemp()
    subprocess.run([mksample, os.path.join(ROOT, "samples"), work + "/disk"], check=True)
    # As long as the path that is shown, so that lines break as they do there.
    volume = "/tmp/" + os.urandom(4).hex()[:7]
    os.symlink(work + "/disk/C", volume)
    try:
        scan = in_terminal(program, [a.replace(VOLUME, volume) for a in TERMINAL])
        report = subprocess.run([program, "scan", "--windows", volume, "--format", "html",
                                 "--lang", "en"], capture_output=True, text=True).stdout
    finally:
        os.remove(volume)
    shown = f"<u>$</u> scrubwell {' '.join(TERMINAL)}\n" + as_html(scan.replace(volume, VOLUME))
    pages = {}
    for name, text in (("terminal", PAGE % shown), ("report", report.replace(volume, VOLUME))):
        pages[name] = os.path.join(work, name + ".html")
        with open(pages[name], "w", encoding="utf-8") as file:
            file.write(text)
    height = 19 * (shown.count("\n") + 1) + 28
    take(work, pages["terminal"], folder + "/terminal.png", (820, height))
    take(work, pages["report"], folder + "/report.png", (1100, 1010))
    take(work, pages["report"], folder + "/report-dark.png", (1100, 1010),
         "--blink-settings=preferredColorScheme=0")


main()
