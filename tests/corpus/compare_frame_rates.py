#!/usr/bin/env python3
"""Whether animated models are right at every frame rate: clip length, first and last pose, and all
poses between, by compare_poses. With --frame-rate 24, 25, 30 and 60, and for a file that states
29.97, which becomes 30.

usage: compare_frame_rates.py HDO_EXPORT COMPARE_POSES MODEL...
Exit status: 0 all right, 1 not, and a line a failure, 2 bad usage.
"""

import pathlib
import subprocess
import sys
import tempfile

RATES = [24, 25, 30, 60]
SAMPLED = ["--sample-animation", "--sample-rate", "1"]
KEYFRAMED = ["--no-sample-animation"]

# One joint that turns and moves for 41 frames of 29.97 a second.
CAPTURE = """HIERARCHY
ROOT Hips
{
  OFFSET 0 0 0
  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
  End Site
  {
    OFFSET 0 10 0
  }
}
MOTION
Frames: 41
Frame Time: 0.0333667
""" + "".join(f"{i} {2 * i} 0 {3 * i} {i} {-2 * i}\n" for i in range(41))


def run(*command):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120,
                          check=False)


def failure(hdo_export, compare_poses, model, rate, options):
    """What is wrong, or None."""
    with tempfile.TemporaryDirectory(prefix="rates_") as folder:
        out = pathlib.Path(folder) / "out.hdo"
        done = run(hdo_export, "-q", "--config-dir", folder, "--progress", "never", *options,
                   "-o", out, model)
        if done.returncode == 0:
            done = run(compare_poses, model, f"{out}temp1", f"{out}temp2", 0, rate)
        return done.stdout.decode(errors="replace").strip() if done.returncode != 0 else None


def main():
    if len(sys.argv) < 4:
        print(__doc__, file=sys.stderr)
        return 2
    programs = [pathlib.Path(argument).resolve() for argument in sys.argv[1:3]]
    with tempfile.TemporaryDirectory(prefix="rates_") as folder:
        capture = pathlib.Path(folder) / "capture.bvh"
        capture.write_text(CAPTURE, encoding="ascii")
        cases = [(model, rate, ["--frame-rate", str(rate)])
                 for model in sys.argv[3:] for rate in RATES] + [(capture, 30, [])]
        failures = 0
        for model, rate, options in cases:
            for tracks in (SAMPLED, KEYFRAMED):
                wrong = failure(*programs, model, rate, options + tracks)
                if wrong:
                    failures += 1
                    print(f"{pathlib.Path(model).name} at {rate}, {tracks[0]}: {wrong}")
    print(f"{2 * len(cases) - failures} passed, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
