"""Adds up what gcov counted: coverage.py SOURCES BUILD [--lines] [FOLDER...]."""
import json
import os
import subprocess
import sys


def counts_of(build, source_root):
    """Source file to line number to how often it ran, over all objects."""
    files = {}
    for folder, _, names in os.walk(build):
        data = [os.path.join(folder, name) for name in names if name.endswith(".gcda")]
        for start in range(0, len(data), 50):
            out = subprocess.run(["gcov", "--json-format", "--stdout", *data[start:start + 50]],
                                 capture_output=True, text=True, check=True, cwd=build).stdout
            for report in out.splitlines():
                for file in json.loads(report)["files"]:
                    path = os.path.relpath(os.path.join(build, file["file"]), source_root)
                    lines = files.setdefault(path, {})
                    for line in file["lines"]:
                        number = line["line_number"]
                        lines[number] = max(lines.get(number, 0), line["count"])
    return files


def ranges(numbers):
    text = []
    for number in numbers:
        if text and text[-1][1] == number - 1:
            text[-1][1] = number
        else:
            text.append([number, number])
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in text)


def main():
    sources, build, *rest = sys.argv[1:]
    with_lines = "--lines" in rest
    folders = [name for name in rest if name != "--lines"] or ["registry", "framework", "plugins"]
    source_root = os.path.realpath(os.path.join(sources, "src"))
    files = counts_of(os.path.realpath(build), source_root)
    for folder in folders:
        of_folder = sorted(path for path in files if path.startswith(folder + "/"))
        sums = [0, 0]
        for path in of_folder:
            lines = files[path]
            reached = sum(1 for count in lines.values() if count)
            sums = [sums[0] + reached, sums[1] + len(lines)]
            missed = ranges(sorted(number for number, count in lines.items() if not count))
            print(f"{100 * reached / max(1, len(lines)):6.1f} %  {path}" +
                  (f"  not: {missed}" if with_lines and missed else ""))
        print(f"{100 * sums[0] / max(1, sums[1]):6.1f} %  {folder}: {sums[0]} of {sums[1]} lines\n")


main()
