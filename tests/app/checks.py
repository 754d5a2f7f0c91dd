"""What tests of whole programs expect; the first thing that is otherwise ends the test."""

import subprocess
import sys


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: found {found!r}, expected {expected!r}")
    print(f"{what}: good")


def expect_in(what, found, expected):
    if expected not in found:
        sys.exit(f"{what}: found {found!r}, expected {expected!r} in it")
    print(f"{what}: good")


def output(*command, **options):
    """What the program writes to standard output; it must end well."""
    done = subprocess.run([str(part) for part in command], capture_output=True, timeout=300,
                          check=False, **options)
    if done.returncode != 0:
        sys.exit(f"{command}: exit status {done.returncode}\n"
                 f"{(done.stdout + done.stderr).decode(errors='replace')}")
    return done.stdout.decode()
