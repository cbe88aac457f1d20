"""Open Babel reads the Molden file with the vibrations of the JSON, and the geometry of the checkpoint file.

usage: openbabel_test.py ZANDOR_EXPORT JOBDIRECTORY...
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

from common import copy_of, export, skip

if shutil.which("obabel") is None:
    skip("needs obabel (Debian package openbabel)")
program = sys.argv[1]


def read_by_open_babel(path):
    """Frequencies and displacements, as Open Babel writes them down again."""
    run = subprocess.run(["obabel", "-imolden", path, "-omolden"], capture_output=True, text=True, check=True)
    assert "1 molecule converted" in run.stderr, run.stderr
    frequencies, modes = re.search(r"\[FREQ\]\n([^[]*).*\[FR-NORM-COORD\]\n(.*)", run.stdout, re.S).groups()
    displacements = [[float(word) for word in mode.split()] for mode in re.split(r"vibration +\d+\n", modes)[1:]]
    return [float(word) for word in frequencies.split()], displacements


def geometry_by_open_babel(path):
    """Symbols and places in Angstrom."""
    run = subprocess.run(["obabel", "-ifchk", path, "-oxyz"], capture_output=True, text=True, check=True)
    rows = [line.split() for line in run.stdout.split("\n")[2:] if line]
    return [row[0] for row in rows], [float(word) for row in rows for word in row[1:]]


for job in sys.argv[2:]:
    with tempfile.TemporaryDirectory() as temporary:
        place = copy_of(job, temporary)
        data = json.loads(export(program, place, "json"))
        modes = data["projected"]
        export(program, place, "fchk", "-o", os.path.join(place, "modes.fchk"))
        symbols, places = geometry_by_open_babel(os.path.join(place, "modes.fchk"))
        assert symbols == data["symbols"]
        assert max(abs(x - y * 0.529177249) for x, y in zip(places, data["geometry"])) < 2e-5
        rigid = 5 if len(modes["frequencies"]) == 6 else 6
        all_modes = range(len(modes["frequencies"]))
        motions = sorted(all_modes, key=lambda k: -modes["rigid_weight"][k])[:rigid]
        for options, wanted in ([], [k for k in all_modes if k not in motions]), (["--all"], all_modes):
            path = os.path.join(place, "modes.molden")
            assert export(program, place, "molden", *options, "-o", path) == ""
            wanted = [k for k in wanted if abs(modes["frequencies"][k]) > 10]  # Open Babel drops what is below 10 cm-1
            frequencies, displacements = read_by_open_babel(path)
            assert len(frequencies) == len(displacements) == len(wanted), (job, frequencies)
            for k, frequency, displacement in zip(wanted, frequencies, displacements):
                assert abs(frequency - modes["frequencies"][k]) < 0.01, (job, k, frequency)
                unit = [x for vector in modes["displacements"][k] for x in vector]
                assert len(displacement) == len(unit)
                scale = sum(x * x for x in displacement) ** 0.5
                assert max(abs(x / scale - y) for x, y in zip(displacement, unit)) < 1e-3, (job, k)
