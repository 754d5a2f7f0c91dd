#!/usr/bin/env python3
"""How long checking an actor file takes beside reading it into memory.

usage: check_time.py KTA LIST_MESHES ACTOR

Prints the processor time of both, the least of three runs, and whether checking keeps to twice the
reading and 0.2 s. LIST_MESHES is the reader's example, which does little more than read. Exit
status: 0 both ran, 1 not; the figures are for people.
"""

import resource
import subprocess
import sys

RUNS = 3


def seconds(command):
    """Of the processor, user and system."""
    least = float("inf")
    for _ in range(RUNS):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        done = subprocess.run(command, stdout=subprocess.DEVNULL, check=False)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if done.returncode != 0:
            sys.exit(f"{command[0]}: exit status {done.returncode}")
        least = min(least, after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime)
    return least


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    kta, list_meshes, actor = sys.argv[1:]
    reading = seconds([list_meshes, actor])
    checking = seconds([kta, "check", actor])
    most = 2 * reading + 0.2
    print(f"read in {reading:.2f} s, read and checked in {checking:.2f} s: "
          f"{'within' if checking <= most else 'BEYOND'} {most:.2f} s, twice the reading and 0.2 s")


if __name__ == "__main__":
    main()
