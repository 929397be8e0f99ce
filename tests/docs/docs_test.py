"""Runs the commands that the documents show and compares what they print.

docs_test.py PROGRAM MKSAMPLE SOURCES DOCUMENT... [--write]

In a block marked "console" a line that begins with "$ " is a command, and what follows is its
output; a line "..." stands for any lines. The commands of a document run one after another over one
fresh sample, whose volume is /mnt/windows there. Sessions, dates and durations may differ. With
--write the documents get the output that there is now.
"""
import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile

VOLUME, STATE = "/mnt/windows", "/home/you/.local/state"
SESSION = r"\d{8}T\d{6}Z(?:-\d+)?"


class Sample:
    """A fresh installation under a path as long as the one in the documents, so that lines break
    at the same places."""

    def __init__(self, program, mksample, sources):
        self.folder = tempfile.mkdtemp()
        self.volume = "/tmp/" + os.urandom(4).hex()[:7]
        subprocess.run([mksample, os.path.join(sources, "samples"), self.folder + "/disk"],
                       check=True, stdout=subprocess.DEVNULL)
        os.symlink(self.folder + "/disk/C", self.volume)
        os.mkdir(self.folder + "/bin")
        os.mkdir(self.folder + "/here")
        os.symlink(os.path.realpath(program), self.folder + "/bin/scrubwell")
        self.sessions = {}
        self.status = 0

    def close(self):
        os.remove(self.volume)
        shutil.rmtree(self.folder)

    def run(self, command):
        if command == "echo $?":
            return [str(self.status)]
        for shown, real in self.sessions.items():
            command = command.replace(shown, real)
        command = command.replace(VOLUME, self.volume)
        environment = {"PATH": self.folder + "/bin:" + os.environ["PATH"], "LANG": "C.UTF-8",
                       "HOME": self.folder, "XDG_STATE_HOME": self.folder + "/state"}
        done = subprocess.run(["bash", "-c", command], cwd=self.folder + "/here", env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, errors="replace")
        self.status = done.returncode
        text = done.stdout.replace(self.folder + "/state", STATE).replace(self.volume, VOLUME)
        return text.splitlines()

    def learn(self, shown, printed):
        """Which session of the document is which of this run."""
        names = [list(dict.fromkeys(re.findall(SESSION, "\n".join(lines))))
                 for lines in (shown, printed)]
        for a, b in zip(*names):
            if a not in self.sessions and b not in self.sessions.values():
                self.sessions[a] = b

    def as_shown(self, printed):
        """With the document's names of the sessions; a new one keeps its own."""
        text = "\n".join(printed)
        for shown, real in self.sessions.items():
            text = text.replace(real, shown)
        return text.splitlines()


def neutral(line):
    line = re.sub(SESSION, "SESSION", line)
    line = re.sub(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", "TIME", line)
    line = re.sub(r"size: [\d.]+ \wB", "size: S", line)
    return re.sub(r"took \d+\.\d s", "took T s", line)


def parts(lines):
    """The lines between the "..."."""
    found = [[]]
    for line in lines:
        if line == "...":
            found.append([])
        else:
            found[-1].append(line)
    return found


def same(shown, printed):
    shown, printed = parts(map(neutral, shown)), list(map(neutral, printed))
    if len(shown) == 1:
        return shown[0] == printed
    head, *middle, tail = shown
    if printed[:len(head)] != head or (tail and printed[-len(tail):] != tail):
        return False
    at = len(head)
    for part in middle:
        while at <= len(printed) - len(tail) and printed[at:at + len(part)] != part:
            at += 1
        at += len(part)
    return at <= len(printed) - len(tail)


def renewed(shown, printed):
    head, *rest = parts(shown)
    if not rest:
        return printed
    tail = len(rest[-1])
    return printed[:len(head)] + ["..."] + (printed[-tail:] if tail else [])


def check(document, sample, write):
    """The faults of a document; with `write` its new text instead."""
    faults, result, lines = [], [], open(document, encoding="utf-8").read().split("\n")
    inside, at, commands = False, 0, 0
    while at < len(lines):
        line = lines[at]
        at += 1
        result.append(line)
        if line.startswith("```"):
            inside = line == "```console"
        if not inside or not line.startswith("$ "):
            continue
        begin = at
        while not lines[at].startswith(("$ ", "```")):
            at += 1
        shown, printed = lines[begin:at], sample.run(line[2:])
        while shown and not shown[-1]:
            shown.pop()  # a blank line before the next command
        blank = at - begin - len(shown)
        commands += 1
        sample.learn(shown, printed)
        if not same(shown, printed):
            difference = difflib.unified_diff(shown, printed, "shown", "printed", lineterm="")
            faults.append(f"{document}:{begin}: {line}\n" + "\n".join(difference))
            if write:
                shown = renewed(shown, sample.as_shown(printed))
        result += shown + [""] * blank
    if commands == 0:
        faults.append(f"{document}: shows no commands")
    if write:
        open(document, "w", encoding="utf-8").write("\n".join(result))
    return faults


def main():
    program, mksample, sources, *documents = sys.argv[1:]
    write = "--write" in documents
    faults = []
    for document in documents:
        if document == "--write":
            continue
        sample = Sample(program, mksample, sources)
        try:
            faults += check(os.path.join(sources, document), sample, write)
        finally:
            sample.close()
    print("\n".join(faults))
    sys.exit(1 if faults and not write else 0)


main()
