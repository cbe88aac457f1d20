"""What the checks of zandor_export's files by other programs share."""
import os
import shutil
import subprocess
import sys

SKIPPED = 77  # the exit status by which CTest knows that a test did not run


def skip(reason):
    print("skipped: " + reason)
    sys.exit(SKIPPED)


def copy_of(job, folder):
    """A copy of a job directory, to run in."""
    place = os.path.join(folder, os.path.basename(os.path.abspath(job)))
    shutil.copytree(job, place)
    return place


def export(program, folder, *arguments):
    """Runs zandor_export in a job directory; it must succeed, warnings apart. The text it prints."""
    run = subprocess.run([program, *arguments, "control.inp"], cwd=folder, capture_output=True, text=True)
    strange = [line for line in run.stderr.split("\n") if line and not line.startswith("zandor_export: warning: ")]
    assert run.returncode == 0 and not strange, (arguments, run.returncode, run.stderr)
    return run.stdout


def report_frequencies(gather, folder, title):
    """Runs zandor_gather in a job directory; a list of frequencies from its report."""
    subprocess.run([gather, "control.inp"], cwd=folder, check=True)
    with open(os.path.join(folder, "zandor-es.out")) as file:
        lines = iter(file.read().split("\n"))
    for line in lines:
        if line.strip() == title:
            break
    result = []
    for line in lines:
        if len(line) != 25 or not line[:10].strip().isdigit():
            return result
        result.append(float(line[10:]))
