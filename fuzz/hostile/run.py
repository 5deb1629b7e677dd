#!/usr/bin/env python3
"""Has the tool read mail from enemies, and checks that it stays within its bounds.

Usage: fuzz/hostile/run.py MAKE_HOSTILE MIMORA [--full] [--only WORD] [--sanitized]

Every command reads every class with N and 4 N pieces, with a stack of 256 KB. A bound is broken when
a run is killed, takes a minute, or ends with a status other than 0 and 1; when four times the pieces
take more than five times the time, and the next four times again; when memory grows with anything
but header fields, parts, listed files, and pages that are shown. Prints a line for each class, with
the commands that did worst, and one for each bound that is broken; then the status is 1.
"""

import argparse
import dataclasses
import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

STACK = 256 << 10
DEADLINE = 60
WORST_RATIO = 5
# Below this, in seconds, a time tells nothing.
LEAST_TIME = 0.04
# What a run may need beyond that for the smallest message, whatever it reads: buffers, tables that
# are used for the first time, pages of the library.
FREE_BYTES = 12 << 20
BYTES_PER_UNIT = {"nothing": 0, "part": 16384, "field": 1024, "file": 4096, "header-byte": 16,
                  "page-byte": 24}
# Beyond so many, parts and files are not looked at any more, and header fields not listed.
MOST_PARTS = 10_000
MOST_FIELDS = 100_000
MOST_MEMORY = 256 << 20
QUICK_SHARE = 32

# FILE and FOLDER are replaced.
COMMANDS = ["show FILE", "show --json FILE", "headers FILE", "headers --decode --json FILE",
            "text FILE", "attachments FILE", "extract -o FOLDER FILE",
            "save --part 1 --charset utf-8 FILE"]
# Those that reach everything, for the quick set.
QUICK_COMMANDS = ["show --json FILE", "headers --decode --json FILE", "text FILE",
                  "extract -o FOLDER FILE"]


@dataclasses.dataclass
class Measure:
    status: int = 0
    seconds: float = 0
    memory: int = 0


class Runner:
    def __init__(self, arguments, folder):
        self.tool = arguments.tool
        self.sanitized = arguments.sanitized
        self.file = os.path.join(folder, "message")
        self.folder = os.path.join(folder, "files")
        with open(self.file, "wb") as file:
            file.write(b"A: b\n\nx")
        base = [self.once("show FILE") for _ in range(5)]
        self.base_seconds = min(m.seconds for m in base)
        self.base_memory = min(m.memory for m in base)
        self.size = 0

    def limit(self):
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if not self.sanitized:
            resource.setrlimit(resource.RLIMIT_STACK, (STACK, STACK))

    def once(self, command):
        words = [{"FILE": self.file, "FOLDER": self.folder}.get(word, word)
                 for word in command.split()]
        if self.folder in words:
            os.mkdir(self.folder)
        child = subprocess.Popen([self.tool, *words], stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL, preexec_fn=self.limit)
        signal.signal(signal.SIGALRM, lambda *_: child.kill())
        signal.alarm(DEADLINE * (10 if self.sanitized else 1))
        _, status, usage = os.wait4(child.pid, 0)
        signal.alarm(0)
        child.returncode = status
        shutil.rmtree(self.folder, ignore_errors=True)
        return Measure(os.waitstatus_to_exitcode(status), usage.ru_utime + usage.ru_stime,
                       usage.ru_maxrss * 1024)

    def measure(self, command, times):
        """The best of several runs, without what the smallest message costs."""
        runs = [self.once(command) for _ in range(times)]
        # A file that is mapped counts as memory as far as it was read.
        memory = min(m.memory for m in runs) - self.base_memory - self.size
        return Measure(next((m.status for m in runs if m.status not in (0, 1)), runs[0].status),
                       max(min(m.seconds for m in runs) - self.base_seconds, 0), max(memory, 0))


def ratio_of(small, large):
    if large.seconds < LEAST_TIME:
        return 0
    return large.seconds / max(small.seconds, LEAST_TIME / WORST_RATIO)


@dataclasses.dataclass
class Class:
    name: str
    unit: str
    size: int

    def units(self, bytes_of_message):
        if self.unit.endswith("byte"):
            return bytes_of_message
        return min(self.size, MOST_FIELDS if self.unit == "field" else MOST_PARTS)


class Round:
    def __init__(self, arguments, runner):
        self.make = arguments.make_hostile
        self.bounds = not arguments.sanitized
        self.times = 2 if arguments.full else 1
        self.commands = COMMANDS if arguments.full else QUICK_COMMANDS
        self.runner = runner
        self.broken = []
        self.size = 0

    def write(self, cls, pieces):
        # Not through here: the memory of who starts a process counts as that of the process, too.
        with open(self.runner.file, "wb") as file:
            subprocess.run([self.make, cls.name, str(pieces)], stdout=file, check=True)
        self.runner.size = os.path.getsize(self.runner.file)

    def complain(self, cls, command, text):
        self.broken.append(f"{cls.name}: {command}: {text}")

    def measures(self, cls, pieces, times):
        self.write(cls, pieces)
        commands = self.commands + (["html2text FILE"] if cls.unit == "page-byte" else [])
        return {command: self.runner.measure(command, times) for command in commands}

    def check(self, cls):
        # The smaller size is there for the ratio.
        small = self.measures(cls, cls.size // 4, self.times) if self.bounds else None
        large = self.measures(cls, cls.size, 1)
        self.size = self.runner.size
        for command, measure in large.items():
            self.check_command(cls, command, small[command] if small else measure, measure)
        self.print_line(cls, small or large, large)

    def steep(self, cls, command, small, large):
        """Whether the time grows too much at both of two steps: where the pieces leave the cache it
        may do so at one. Noise makes times longer, never shorter, so the best of several counts."""
        if ratio_of(small, large) <= WORST_RATIO:
            return False
        times = []
        # Not with more memory than a small machine has.
        further = cls.size * (4 if large.memory < MOST_MEMORY else 1)
        for pieces in (cls.size // 4, cls.size, further):
            self.write(cls, pieces)
            times.append(self.runner.measure(command, 4))
        small.seconds, large.seconds = times[0].seconds, times[1].seconds
        if further == cls.size:
            times[2] = Measure(seconds=float("inf"))
        return min(ratio_of(*times[:2]), ratio_of(*times[1:])) > WORST_RATIO

    def check_command(self, cls, command, small, large):
        for measure in (small, large):
            if measure.status not in (0, 1):
                self.complain(cls, command, f"ended with {measure.status}")
        if not self.bounds:
            return
        if self.steep(cls, command, small, large):
            self.complain(cls, command, f"{small.seconds:.3f} s, then {large.seconds:.3f} s for "
                          f"four times the pieces, and no better beyond")
        units = cls.units(self.size)
        if large.memory > FREE_BYTES + BYTES_PER_UNIT[cls.unit] * units:
            self.complain(cls, command, f"{large.memory / 1e6:.0f} MB for {units} of {cls.unit}, "
                          f"a message of {self.size / 1e6:.1f} MB")

    def print_line(self, cls, small, large):
        slowest = max(large, key=lambda c: large[c].seconds)
        steepest = max(large, key=lambda c: ratio_of(small[c], large[c]))
        largest = max(large, key=lambda c: large[c].memory)
        per_unit = large[largest].memory / max(cls.units(self.size), 1)
        print(f"{cls.name:28} {self.size / 1e6:7.2f} {large[slowest].seconds:8.3f} "
              f"{slowest.split()[0]:11} {ratio_of(small[steepest], large[steepest]):5.1f} "
              f"{large[largest].memory / 1e6:7.1f} {largest.split()[0]:11} "
              f"{'' if cls.unit == 'nothing' else f'{per_unit:7.0f} a {cls.unit}'}", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("make_hostile")
    parser.add_argument("tool")
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--sanitized", action="store_true", help="only look for crashes")
    parser.add_argument("--only", default="", metavar="WORD", help="classes with that in their name")
    arguments = parser.parse_args()
    listed = subprocess.run([arguments.make_hostile], capture_output=True, text=True, check=True)
    share = 1 if arguments.full else QUICK_SHARE
    start = time.monotonic()
    print(f"{'class':28} {'MB':>7} {'seconds':>8} {'command':11} {'ratio':>5} {'MB more':>7} command")
    # On a disk new files would cost more than all the rest.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        work = Round(arguments, Runner(arguments, folder))
        for line in listed.stdout.splitlines():
            name, unit, size = line.split()
            if arguments.only in name:
                work.check(Class(name, unit, int(size) // share))
    print(f"{time.monotonic() - start:.0f} s, {len(work.broken)} bounds broken")
    for line in work.broken:
        print("BROKEN", line)
    sys.exit(1 if work.broken else 0)


if __name__ == "__main__":
    main()
