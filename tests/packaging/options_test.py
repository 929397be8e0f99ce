"""Holds manual and completion to what the program says of itself.

options_test.py PROGRAM SOURCES
"""
import os
import re
import subprocess
import sys

program, sources = sys.argv[1:]
manual = open(os.path.join(sources, "packaging/scrubwell.1"), encoding="utf-8").read()
manual = manual.replace("\\-", "-").replace("\\&", "")
everywhere = {"--help"}
faults = []


def help_of(*command):
    text = subprocess.run([program, *command, "--help", "--lang", "en"], capture_output=True,
                          text=True, check=True).stdout
    options = {}
    german = subprocess.run([program, *command, "--help", "--lang", "de"], capture_output=True,
                            text=True, check=True).stdout
    faults.extend(f"help is too wide: {line}" for line in (text + german).splitlines()
                  if len(line) > 100)
    for line in text.splitlines():
        found = re.match(r"  (?:-\w,)?(--[\w-]+)(?: (?!\()(\S+))?", line)
        if found:
            options[found[1]] = found[2]
    return text, options


def complete(line):
    """What the completion offers at the end of the line."""
    script = ('source "$1"; COMP_LINE=$2; COMP_POINT=${#2}; COMP_WORDS=("$3"); COMPREPLY=();'
              '_scrubwell 2>/dev/null; printf "%s\\n" "${COMPREPLY[@]}"')
    completion = os.path.join(sources, "packaging/scrubwell.bash")
    return set(subprocess.run(["bash", "-c", script, "bash", completion, line, program],
                              capture_output=True, text=True, check=True).stdout.split())


def compare(what, is_there, should_be):
    if is_there != should_be:
        faults.append(f"{what}: too much {sorted(is_there - should_be)}, "
                      f"missing {sorted(should_be - is_there)}")


def synopses():
    """Command to its options with their values, as the synopsis has them."""
    commands = {}
    for part in manual.split(".SH DESCRIPTION")[0].split('.SY "scrubwell ')[1:]:
        name = part[:part.index('"')]
        options = re.findall(r'^\.(?:OP|BI) (--[\w-]+)(?: (?:" )?([^"\n]+))?', part, re.M)
        commands[name] = dict(options)
    return commands


text, top = help_of()
commands = re.findall(r"^  (\w+)  ", text.split("Commands:")[1], re.M)
in_manual = synopses()
compare("commands of the manual", set(in_manual), set(commands))
compare("commands of the completion", complete("scrubwell "), set(commands))
compare("options of the completion", complete("scrubwell --"), set(top))

known = set(top)
for command in commands:
    text, options = help_of(command)
    known |= set(options)
    compare(f"manual of {command}", set(in_manual.get(command, [])), set(options) - everywhere)
    compare(f"completion of {command}", complete(f"scrubwell {command} --"), set(options))
    for option, value in options.items():
        shown = in_manual.get(command, {}).get(option) or None
        if option not in everywhere and shown not in (value, "FORMAT"):
            faults.append(f"manual of {command}: {option} takes {value}, not {shown}")
        if value and "|" in value:
            compare(f"completion of {command} {option}", complete(f"scrubwell {command} {option} "),
                    set(value.split("|")))
        required = f"{option} {value} (required)" in text
        bracketed = f".OP {option}" in manual.split(f'.SY "scrubwell {command}"')[1].split(".YS")[0]
        if option not in everywhere and required == bracketed:
            faults.append(f"manual of {command}: whether {option} is needed")

described = manual.split(".SH OPTIONS")[1].split(".SH ")[0]
compare("options that the manual describes",
        set(re.findall(r"^\.TP\n\.\w+ (?:-h \", \" )?(--[\w-]+)", described, re.M)), known)

version = subprocess.run([program, "--version"], capture_output=True, text=True).stdout.split()[-1]
for file, form in (("scrubwell.1", f'"Scrubwell {version}"'),
                   ("changelog.Debian", f"scrubwell ({version}-")):
    if form not in open(os.path.join(sources, "packaging", file), encoding="utf-8").read():
        faults.append(f"{file} is not of version {version}")

print("\n".join(faults) or f"{len(commands)} commands, {len(known)} options")
sys.exit(1 if faults else 0)
