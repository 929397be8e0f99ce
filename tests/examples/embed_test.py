"""Runs the example host, and holds docs/embedding.md to it.

embed_test.py MODULE SOURCES EMBED...
"""
import glob
import os
import re
import subprocess
import sys

module, sources, *embed = sys.argv[1:]
page = open(os.path.join(sources, "docs/embedding.md"), encoding="utf-8").read()
faults = []

run = subprocess.run([*embed, module], capture_output=True, text=True, timeout=60)
shown = re.search(r"## What the example prints\n\n```\n(.*?)```", page, re.S)[1]
if (run.returncode, run.stdout, run.stderr) != (0, shown, ""):
    faults.append(f"status {run.returncode}, prints\n{run.stdout}{run.stderr}and not\n{shown}")
for arguments, status in (([], 2), ([os.path.join(sources, "README.md")], 3)):
    run = subprocess.run([*embed, *arguments], capture_output=True, text=True, timeout=60)
    if run.returncode != status or not run.stderr:
        faults.append(f"{arguments}: status {run.returncode}, not {status}")

code = "".join(open(file, encoding="utf-8").read()
               for file in glob.glob(os.path.join(sources, "examples/embed/*.cpp")))
lines = {line.strip() for line in code.splitlines()}
for block in re.findall(r"```cpp\n(.*?)```", page, re.S):
    faults += [f"not in the example: {line}" for line in block.splitlines()
               if line.strip() not in lines]

print("\n".join(faults))
sys.exit(1 if faults else 0)
