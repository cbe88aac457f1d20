"""A normal-mode analysis that shares nothing with zandor_gather, beside its report.

usage: independent.py ZANDOR_GATHER JOBDIRECTORY...

Reads the sign files of directories in which every job was computed, takes constants of CODATA 2018, forms
central differences, removes translations and rotations by their orthonormal basis, and prints the largest difference
from the report: of the vibrations (cm-1; the report's constants of 1986 alone make 6e-8 of a frequency, and its
100000.0 on the diagonal its noise) and of the transition dipole derivatives (atomic units).
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

try:
    import numpy
except ImportError:
    print("skipped: needs python3-numpy")
    sys.exit(77)

ANGSTROM = 1 / 0.529177210903  # Bohr
AMU = 1822.888486209  # electron masses
WAVENUMBER = 219474.63136320


def rows_behind(lines, mark, skipped, count, columns):
    at = next(i for i, line in enumerate(lines) if mark in line) + 1 + skipped
    return numpy.array([[float(lines[at + i].split()[c]) for c in columns] for i in range(count)])


def read_jobs(folder):
    """Step (Bohr), masses, geometry (Bohr), forces and dipoles of all jobs; job 2 k - 1 is the negative step of k."""
    lines = (folder / "files.out").read_text().split("\n")
    natom = int(lines[0].split()[-1])
    at = next(i for i, line in enumerate(lines) if re.search("(?i)number.*name.*computed", line)) + 1
    names = [line.split()[1] for line in lines[at:at + 6 * natom + 1]]
    files = [(folder / f"coord-{name}.sgn").read_text().split("\n") for name in names]
    atoms = rows_behind(files[0], "Coordinates (Angstroms)", 1, natom, range(3, 7))
    forces = [rows_behind(file, "Center Atomic Forces", 0, natom, range(1, 4)).ravel() for file in files[1:]]
    dipoles = [rows_behind(file, "transition electric dipole", 0, 1, range(2, 5))[0] for file in files[1:]]
    return (float(lines[2].split()[-1]) * ANGSTROM, atoms[:, 0] * AMU, atoms[:, 1:] * ANGSTROM, numpy.array(forces),
            numpy.array(dipoles))


def rigid_motions(mass, x):
    x = x - mass @ x / mass.sum()
    root = numpy.sqrt(mass)[:, None]
    vectors = [root * axis for axis in numpy.eye(3)] + [root * numpy.cross(axis, x) for axis in numpy.eye(3)]
    u, s, _ = numpy.linalg.svd(numpy.array([v.ravel() for v in vectors]).T, full_matrices=True)
    return u, int((s > 1e-6 * s[0]).sum())


def report_column(report, title, column):
    lines = report.split(title)[1].split("\n")[1:]
    values = []
    for line in lines:
        if not re.match(r" +\d+ +-?[\d.]+$", line):
            break
        values.append(float(line.split()[column]))
    return numpy.array(values)


def compare(gather, folder):
    step, mass, x, forces, dipoles = read_jobs(folder)
    hessian = (forces[0::2] - forces[1::2]) / (2 * step)
    weight = numpy.repeat(1 / numpy.sqrt(mass), 3)
    weighted = weight[:, None] * (hessian + hessian.T) / 2 * weight
    basis, rank = rigid_motions(mass, x)
    values = numpy.linalg.eigvalsh(basis[:, rank:].T @ weighted @ basis[:, rank:])
    vibrations = numpy.sign(values) * numpy.sqrt(abs(values)) * WAVENUMBER

    with tempfile.TemporaryDirectory() as copy:
        shutil.copytree(folder, copy, dirs_exist_ok=True)
        subprocess.run([gather, "control.inp"], cwd=copy, check=True)
        report = (pathlib.Path(copy) / "zandor-es.out").read_text()
    projected = report_column(report, " Projected Frequency", 1)
    kept = numpy.sort(projected[numpy.argsort(abs(projected))[rank:]])
    text = report.split("Transition dipole moment derivative (Atomic unit)")[1].split("\n")[2:]
    found = numpy.array([[float(item) for item in line.split()[-3:]] for line in text[:len(weight)]])
    slopes = (dipoles[1::2] - dipoles[0::2]) / (2 * step)
    apart = abs(kept - vibrations).max(), abs(found - slopes).max()
    print(f"{folder.name}: {len(kept)} vibrations within {apart[0]:.5f} cm-1, "
          f"dipole derivatives within {apart[1]:.1e} of {abs(slopes).max():.1e}")
    return apart[0] < 0.01 and apart[1] < 1e-6


program = pathlib.Path(sys.argv[1]).resolve()
sys.exit(not all([compare(program, pathlib.Path(directory)) for directory in sys.argv[2:]]))
