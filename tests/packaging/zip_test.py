"""Makes the archive for Windows and looks into it.

zip_test.py CPACK BUILD COMPILER
"""
import glob
import os
import re
import struct
import subprocess
import sys
import tempfile
import zipfile

cpack, build, compiler = sys.argv[1:]
faults = []
with tempfile.TemporaryDirectory() as folder:
    run = subprocess.run([cpack, "--config", os.path.join(build, "CPackConfig.cmake"), "-B", folder],
                         capture_output=True, text=True, cwd=build)
    archives = glob.glob(os.path.join(folder, "*.zip"))
    if run.returncode != 0 or len(archives) != 1:
        sys.exit(f"{archives}\n{run.stdout}{run.stderr}")
    archive = zipfile.ZipFile(archives[0])
    top = os.path.basename(archives[0])[:-len(".zip")]
    files = {name[len(top) + 1:]: archive.read(name) for name in archive.namelist()
             if name.startswith(top + "/") and not name.endswith("/")}
    # Who embeds the module needs nothing else.
    archive.extractall(folder)
    sources = sorted(name for name in files if re.fullmatch(r"examples/embed/\w+\.cpp", name))
    run = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", "-I", "include", *sources],
                         capture_output=True, text=True, cwd=os.path.join(folder, top))
    if run.returncode != 0 or len(sources) != 2:
        faults.append(f"the example {sources} does not compile:\n{run.stderr}")
if len(files) != sum(not name.endswith("/") for name in archive.namelist()):
    faults.append(f"files beside {top}")
programs = {name for name in files if re.search(r"\.(exe|dll)$", name)}
if programs != {"scrubwell.exe", "scrubwell_package.dll"}:
    faults.append(f"programs: {programs}")
for name in ("README.md", "LICENSE", "docs/user-guide.md", "docs/images/report.png"):
    if not files.get(name):
        faults.append(f"{name} is missing")

program = files.get("scrubwell.exe", b"")
for what in ("asInvoker", "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}", "longPathAware"):
    if what.encode() not in program:
        faults.append(f"the manifest lacks {what}")
if "ProductVersion\0".encode("utf-16-le") not in program:
    faults.append("the program says nothing of its version")
header = struct.unpack_from("<I", program, 60)[0]
if struct.unpack_from("<I", program, header + 16)[0] != 0:
    faults.append("the program has a symbol table")

print("\n".join(faults))
sys.exit(1 if faults else 0)
