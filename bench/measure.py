"""Measures the whole program: measure.py BUILD WORK [--only WORD] [--runs N].

Every figure is a ratio of two figures of the same run, so that it says the same on a fast and on a
slow machine. Times are processor times of the process, the best of warm runs for a program
compared with another one of other length, the median elsewhere; what a small machine does beside
is thus left out. Exits with 1 when a target is missed.
"""
import argparse
import hashlib
import json
import os
import shutil
import statistics
import subprocess
import sys


class Bench:
    def __init__(self, build, work, runs, only):
        self.program = os.path.join(build, "scrubwell")
        self.maker = os.path.join(build, "bench", "make_installation")
        with open(self.maker, "rb") as file:
            mark = hashlib.sha256(file.read()).hexdigest()[:12]
        self.work = os.path.join(work, mark)
        self.runs = runs
        self.only = only
        self.missed = 0
        os.makedirs(self.work, exist_ok=True)

    def world(self, kind, size):
        """The drive's folder of an installation, made once."""
        folder = os.path.join(self.work, f"{kind}-{size}")
        if not os.path.exists(folder):
            shutil.rmtree(folder + ".new", ignore_errors=True)
            subprocess.run([self.maker, kind, str(size), folder + ".new"], check=True,
                           stdout=subprocess.DEVNULL)
            os.rename(folder + ".new", folder)
        return folder

    @staticmethod
    def once(command):
        """Seconds of processor time, peak bytes and exit status."""
        with open(os.devnull, "w") as nothing:
            process = subprocess.Popen(command, stdout=nothing, stderr=nothing)
            _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024, process.returncode

    def warm(self, commands, runs=None):
        """Median seconds and greatest peak of each command, run in turns after a first one each."""
        times = [[] for _ in commands]
        peaks = [0] * len(commands)
        for run in range((runs or self.runs) + 1):
            for number, command in enumerate(commands):
                seconds, peak, status = self.once(command)
                if status > 1:
                    sys.exit(f"bench: {' '.join(command)}: exit status {status}")
                if run > 0:
                    times[number].append(seconds)
                peaks[number] = max(peaks[number], peak)
        return [statistics.median(each) for each in times], peaks

    def scan(self, world, form="json"):
        return [self.program, "scan", "--windows", world, "--format", form,
                "--output", os.path.join(self.work, "report")]

    def problems(self, world):
        subprocess.run(self.scan(world), check=False)
        with open(os.path.join(self.work, "report"), encoding="utf-8") as file:
            counts = json.load(file)["counts"]
        return counts

    def clean(self, world, runs=None):
        """Seconds of a clean of everything, on a copy that goes afterwards."""
        copy = os.path.join(self.work, "copy")
        seconds = []
        for _ in range(runs or max(1, self.runs // 2)):
            shutil.rmtree(copy, ignore_errors=True)
            # Files are replaced and never written in place, so that links to them do.
            shutil.copytree(world, os.path.join(copy, "C"), copy_function=os.link)
            command = [self.program, "clean", "--all", "--yes", "--windows",
                       os.path.join(copy, "C"), "--backup", os.path.join(copy, "backup"),
                       "--format", "json", "--output", os.path.join(copy, "report")]
            time, _, status = self.once(command)
            if status > 1:
                sys.exit(f"bench: {' '.join(command)}: exit status {status}")
            seconds.append(time)
        shutil.rmtree(copy, ignore_errors=True)
        return statistics.median(seconds)

    def say(self, what, value, target, detail):
        held = value <= target
        self.missed += 0 if held else 1
        print(f"{what:<58} {value:8.3f}  at most {target:<6g} {'ok' if held else 'MISSED':<7} {detail}",
              flush=True)

    # ---- What is measured ---------------------------------------------------------------------

    def speed(self):
        # Of a machine on which nothing is there any more, making and telling 136,700 problems is the
        # work: no target, but figures that must not grow.
        for kind, time_limit, memory_limit in (("intact", 0.5, 3), ("broken", 2.5, 8)):
            world = self.world(kind, 1)
            config = os.path.join(world, "Windows/System32/config")
            hives = [os.path.join(config, "SOFTWARE"), os.path.join(config, "SYSTEM"),
                     os.path.join(world, "Users/anna/NTUSER.DAT")]
            size = sum(os.path.getsize(hive) for hive in hives)
            found = self.problems(world)
            (scan, other), (peak, _) = self.warm([self.scan(world), ["hivexml", hives[0]]])
            self.say(f"scan of {kind}, all plugins, to one hivexml of SOFTWARE", scan / other, time_limit,
                     f"{scan:.2f} s to {other:.2f} s, {found['real_sweep_errors']} problems")
            self.say(f"peak memory of it, to the size of the hives", peak / size, memory_limit,
                     f"{peak / 1e6:.0f} MB to {size / 1e6:.0f} MB")
            large = self.world(kind, 4)
            (one, four), _ = self.warm([self.scan(world), self.scan(large)])
            self.say(f"scan of {kind}, four times the keys to once", four / one, 4.4,
                     f"{four:.2f} s to {one:.2f} s")

    def per_problem(self):
        sizes = (0, 1000, 100000)
        *small, large = [self.world("problems", size) for size in sizes]
        # Of the few, the cost is a difference of milliseconds: it takes many runs to be seen.
        many_runs = 6 * self.runs

        def scans(form):
            times, _ = self.warm([self.scan(world, form) for world in small], many_runs)
            return times + self.warm([self.scan(large, form)])[0]

        steps = {
            "scan to JSON": scans("json"),
            "scan, printed": scans("text"),
            "clean": [self.clean(world, many_runs) for world in small] + [self.clean(large)],
        }
        for what, (base, few, many) in steps.items():
            # What a run without any problem costs is no cost of problems.
            single = max(few - base, 0.001) / sizes[1]
            each = (many - base) / sizes[2]
            self.say(f"{what}: cost of one problem, 100,000 to 1,000", each / single, 1.25,
                     f"{each * 1e6:.1f} us to {single * 1e6:.1f} us")

    def growth(self):
        kinds = {"classes": "classes below one key", "problems": "problems",
                 "ignored": "ignore entries", "items": "recently-used items",
                 "files": "files in one folder", "values": "values in one key"}
        for kind, what in kinds.items():
            worlds = [self.world(kind, size) for size in (0, 1000, 10000, 100000)]
            times, _ = self.warm([self.scan(world) for world in worlds])
            few, some, many = (max(time - times[0], 0.002) for time in times[1:])
            detail = " ".join(f"{time * 1000:.0f}" for time in times) + " ms"
            self.say(f"scan of ten times the {what}: 100,000 to 10,000", many / some, 14, detail)
            if kind in ("problems", "items", "values"):
                cleans = [self.clean(world) for world in worlds]
                detail = " ".join(f"{time * 1000:.0f}" for time in cleans) + " ms"
                few, some, many = (max(time - cleans[0], 0.002) for time in cleans[1:])
                self.say(f"clean of ten times the {what}", many / some, 14, detail)
        counts = self.problems(self.world("ignored", 1000))
        if counts["hidden"] != 1000:
            sys.exit(f"bench: {counts} of 1,000 ignored problems")

    def run(self):
        for part in (self.speed, self.per_problem, self.growth):
            if self.only in part.__name__:
                part()
        return 1 if self.missed else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("--only", default="", help="speed, per_problem or growth")
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    sys.exit(Bench(options.build, options.work, options.runs, options.only).run())


main()
