"""Jmol reads the vibrations of the checkpoint file and of the Molden file.

usage: jmol_test.py ZANDOR_EXPORT JOBDIRECTORY...
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

from common import copy_of, export, skip

jar = "/usr/share/java/JmolData.jar"  # Jmol without windows
if shutil.which("java") is None or not os.path.exists(jar):
    skip("needs %s and java (Debian package libjmol-java)" % jar)
program = sys.argv[1]
SCRIPT = """load "%s"; for (m = 1; m <= {*}.model.max; m++) { select model=m;
for (a IN {selected}) { print "atom " + m + " " + a.vx + " " + a.vy + " " + a.vz; } }"""


def read_by_jmol(path):
    """Frequencies, and the displacements of every model that has some."""
    script = path + ".spt"
    with open(script, "w") as file:
        file.write(SCRIPT % path)
    run = subprocess.run(["java", "-Djava.awt.headless=true", "-jar", jar, "-n", "-s", script], capture_output=True,
                         text=True, check=True)
    models = {}
    for number, vector in re.findall(r"^atom (\d+) (.*)$", run.stdout, re.M):
        if "NaN" not in vector:
            models.setdefault(number, []).extend(float(word) for word in vector.split())
    return [float(x) for x in re.findall(r"^(-?[\d.]+) cm\^-1$", run.stdout, re.M)], list(models.values())


for job in sys.argv[2:]:
    with tempfile.TemporaryDirectory() as temporary:
        place = copy_of(job, temporary)
        modes = json.loads(export(program, place, "json"))["projected"]
        count = len(modes["frequencies"])
        rigid = sorted(range(count), key=lambda k: -modes["rigid_weight"][k])[:5 if count == 6 else 6]
        wanted = [k for k in range(count) if k not in rigid]
        for name in "fchk", "molden":
            path = os.path.join(place, "modes." + name)
            export(program, place, name, "-o", path)
            frequencies, displacements = read_by_jmol(path)
            assert len(frequencies) == len(displacements) == len(wanted), (job, name, frequencies)
            for k, frequency, displacement in zip(wanted, frequencies, displacements):
                assert abs(frequency - modes["frequencies"][k]) < 1e-3, (job, name, frequency)
                unit = [x for vector in modes["displacements"][k] for x in vector]
                scale = sum(x * x for x in displacement) ** 0.5
                assert max(abs(x / scale - y) for x, y in zip(displacement, unit)) < 1e-6, (job, name, k)
