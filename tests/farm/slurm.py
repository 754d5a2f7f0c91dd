#!/usr/bin/env python3
"""Runs examples/farm/export.sbatch on a Slurm of one node, which it sets up for itself.

usage: sudo slurm.py HDO_EXPORT ROOT    (needs Debian's packages slurm-wlm and munge)

On request only: it needs root, and daemons of its own. Their files and ports are not those of a
Slurm that runs here already. It prints what a user sees; docs/farm.md shows it.
"""

import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

CONFIGURATION = """ClusterName=test
SlurmctldHost={host}
SlurmctldPort=16817
SlurmdPort=16818
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={room}/munge.socket
CredType=cred/munge
StateSaveLocation={room}/state
SlurmdSpoolDir={room}/spool
SlurmctldPidFile={room}/slurmctld.pid
SlurmdPidFile={room}/slurmd.pid
SlurmctldLogFile={room}/slurmctld.log
SlurmdLogFile={room}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
SchedulerParameters=sched_interval=1,batch_sched_delay=0
NodeName={host} CPUs={cores} RealMemory=4000 State=UNKNOWN
PartitionName=farm Nodes={host} Default=YES MaxTime=60 State=UP
"""


class Slurm:
    """The daemons of a node, ended with the object's `with`."""

    def __init__(self, room):
        self.room = room
        self.running = []
        self.environment = {**os.environ, "SLURM_CONF": f"{room}/slurm.conf"}
        for name in ("state", "spool"):
            (room / name).mkdir()
        (room / "munge.key").write_bytes(os.urandom(128))
        (room / "munge.key").chmod(0o400)
        (room / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname().split(".")[0], room=room, cores=os.cpu_count()))

    def start(self, name, *words):
        log = open(self.room / f"{name}.out", "w")
        self.running.append(subprocess.Popen([name, *words], env=self.environment, stdout=log,
                                             stderr=subprocess.STDOUT))

    def __enter__(self):
        self.start("munged", "--foreground", "--force", f"--key-file={self.room}/munge.key",
                   f"--socket={self.room}/munge.socket", f"--pid-file={self.room}/munge.pid",
                   f"--log-file={self.room}/munge.log", f"--seed-file={self.room}/munge.seed")
        self.wait(lambda: (self.room / "munge.socket").exists())
        self.start("slurmctld", "-D", "-f", f"{self.room}/slurm.conf")
        self.start("slurmd", "-D", "-f", f"{self.room}/slurm.conf")
        self.wait(lambda: "idle" in self.run("sinfo", "--noheader", "--format=%T").stdout)
        return self

    def wait(self, isTrue):
        for _ in range(150):
            if isTrue():
                return
            time.sleep(0.2)
        for log in sorted([*self.room.glob("*.log"), *self.room.glob("*.out")]):
            print(f"--- {log.name}\n{log.read_text()[-2000:]}")
        sys.exit("Slurm does not start")

    def run(self, *words, **more):
        return subprocess.run(words, env=self.environment, capture_output=True, text=True,
                              timeout=120, **more)

    def __exit__(self, *ignored):
        for process in reversed(self.running):
            process.send_signal(signal.SIGTERM)
        for process in self.running:
            try:
                process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()


def show(slurm, work, command):
    """Runs a user's command and prints it as a terminal shows it."""
    run = slurm.run("bash", "-c", f"{command} 2>&1", cwd=work)
    print(f"$ {command}\n{run.stdout}", end="")
    return run


def main():
    program, root = (pathlib.Path(word).resolve() for word in sys.argv[1:])
    with tempfile.TemporaryDirectory() as directory:
        room = pathlib.Path(directory)
        room.chmod(0o755)
        work = room / "work"
        shutil.copytree(root / "examples", work)
        (work / "broken.dae").write_text("no scene")
        os.environ["PATH"] = f"{program.parent}:{os.environ['PATH']}"
        with Slurm(room) as slurm:
            array = "sbatch --array=1-$(hdo-export --batch scenes.txt --count) --wait"
            show(slurm, work, "hdo-export --batch '*.dae' '*.maxscene.json' --list"
                              " | xargs -n 1 basename | tee scenes.txt")
            first = show(slurm, work, f"{array} farm/export.sbatch scenes.txt -o out;"
                                      " echo $?")
            show(slurm, work, "tail -n +1 hdo-export-*.log; ls out")
            count = len((work / "scenes.txt").read_text().splitlines())
            made = {file.name: file.read_bytes() for file in (work / "out").iterdir()}
            if not first.stdout.endswith("\n1\n") or len(made) != 6 * (count - 1):
                sys.exit(f"{first.stdout!r}, {len(made)} files, expected status 1 and 6 files of each "
                         f"of {count - 1} scenes")
            failed = [log.name for log in work.glob("hdo-export-*.log") if log.read_text()]
            if len(failed) != 1:
                sys.exit(f"logs with text: {failed}, expected that of the broken scene alone")
            (work / "broken.dae").unlink()
            shutil.copy(work / "windmill.dae", work / "broken.dae")
            second = slurm.run("bash", "-c", "sbatch --array=1-2 --wait farm/export.sbatch "
                                             "scenes.txt -o out -v", cwd=work)
            if second.returncode != 0:
                sys.exit(f"two jobs for {count} scenes: status {second.returncode}")
            for name, data in made.items():
                if (work / "out" / name).read_bytes() != data:
                    sys.exit(f"{name} changed, expected that its scene is left as it is")
    print("the array exports what can be exported, tells what cannot, and does no scene twice")


if __name__ == "__main__":
    main()
