"""What zandor_export writes for other programs, read again and held against its JSON, by readers of its own.

usage: round_trip_test.py ZANDOR_EXPORT ZANDOR_COLLECT JOBDIRECTORY...
"""
import io
import itertools
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

from common import copy_of, export, skip

try:
    import numpy
except ImportError as error:
    skip("needs python3-numpy (%s)" % error)

BOHR, AMU, WAVENUMBERS, ELECTRONVOLTS = 0.529177249, 1822.88853, 219474.6307, 27.211386245988
program, collect = sys.argv[1:3]


def read_fchk(text):
    lines = iter(text.split("\n")[2:])
    records = {}
    for line in lines:
        name, kind, rest = line[:40].strip(), {"I": int, "R": float}.get(line[43:44]), line[44:]
        if rest.startswith("   N="):
            width, per_line = {int: (12, 6), float: (16, 5)}[kind]
            count = int(rest[5:])
            rows = [next(lines) for _ in range(-(-count // per_line))]
            fields = [row[k:k + width] for row in rows for k in range(0, len(row), width)]
            assert len(fields) == count, name
            records[name] = numpy.array([kind(field) for field in fields])
        elif line:
            assert len(line) == (61 if kind is int else 71), line
            records[name] = kind(rest)
    return records


def read_sections(text, head):
    """The lines of every section, under its name."""
    pieces = re.split(head, text, flags=re.M)
    return {name: body.split("\n") for name, body in zip(pieces[1::2], pieces[2::2])}


def read_matrix(lines, size):
    matrix = numpy.full((size, size), numpy.nan)
    lines = iter(lines)
    while numpy.isnan(matrix).any():
        columns = [int(word) for word in next(lines).split()]
        for row in range(size):
            words = next(lines).split()
            assert int(words[0]) == row
            matrix[row, columns] = [float(word) for word in words[1:]]
    return matrix


def frequencies(hessian, masses, geometry):
    """Wavenumbers of the force constants, rigid motions projected out."""
    root = numpy.sqrt(numpy.repeat(masses, 3) * AMU)
    places = geometry.reshape(-1, 3) - numpy.average(geometry.reshape(-1, 3), axis=0, weights=masses)
    rigid = [numpy.tile(axis, len(masses)) for axis in numpy.eye(3)]
    rigid += [numpy.cross(axis, places).ravel() for axis in numpy.eye(3)]
    space, sizes, _ = numpy.linalg.svd((numpy.array(rigid) * root).T)
    space = space[:, numpy.sum(sizes > 1e-4 * sizes[0]):]
    values = numpy.linalg.eigvalsh(space.T @ (hessian / numpy.outer(root, root)) @ space)
    return numpy.copysign(numpy.sqrt(abs(values)), values) * WAVENUMBERS


def same(found, wanted, digits, what):
    """Equal to that many significant digits, but for what is rounding beside the largest."""
    wanted = numpy.asarray(wanted, dtype=float)
    found = numpy.array(found, dtype=float)
    numpy.testing.assert_allclose(found.ravel(), wanted.ravel(), rtol=0.51 * 10.0 ** (1 - digits), err_msg=what,
                                  atol=1e-99)


def check_fchk(job, options, data, modes):
    records = read_fchk(export(program, job, "fchk", *options))
    natom = len(data["masses"])
    assert records["Number of atoms"] == natom and list(records["Atomic numbers"]) == data["atomic_numbers"]
    same(records["Current cartesian coordinates"], data["geometry"], 9, "geometry")
    for name in "Real atomic weights", "Vib-AtMass":
        same(records[name], data["masses"], 9, name)
    hessian = numpy.zeros((3 * natom, 3 * natom))
    hessian[numpy.tril_indices(3 * natom)] = records["Cartesian Force Constants"]
    hessian += numpy.tril(hessian, -1).T
    same(hessian, data["hessian"], 9, "force constants")
    facts = records["Vib-E2"].reshape(14, -1)
    same(facts[0], modes["frequencies"], 9, "frequencies")
    same(facts[1], modes["reduced_masses"], 9, "reduced masses")
    mdyne = facts[1] * AMU * (facts[0] / WAVENUMBERS) ** 2 * 15.568931  # Hartree/Bohr**2 in mDyne/Angstrom
    numpy.testing.assert_allclose(facts[2], mdyne, rtol=1e-5)
    same(records["Vib-Modes"], modes["displacements"], 9, "modes")
    rebuilt = frequencies(hessian, records["Real atomic weights"], records["Current cartesian coordinates"])
    numpy.testing.assert_allclose(rebuilt, numpy.sort(modes["frequencies"]), rtol=0, atol=1e-4)
    states = records["ETran state values"]
    assert list(records["ETran scalars"][[0, 1, 4]]) == [1, 16, 1]
    assert not states[4:64].any()
    same(states[1:4], data["transition_dipole"], 9, "dipole")
    if "gradient" in data:
        same(records["Cartesian Gradient"], data["gradient"], 9, "gradient")
    else:
        assert "Cartesian Gradient" not in records
    if "excitation_energy" in data:
        assert abs(records["Total Energy"] - records["SCF Energy"] - data["excitation_energy"]) < 1e-10
        assert abs(states[0] - records["Total Energy"]) < 1e-6
    if "transition_dipole_gradient" in data:
        derivatives = states[64:].reshape(3 * natom, 16)
        same(derivatives[:, 1:4], data["transition_dipole_gradient"], 9, "dipole derivatives")
        same(derivatives[:, 0], data.get("gradient", [0] * 3 * natom), 9, "energy derivatives")
        assert not derivatives[:, 4:].any()
    else:
        assert len(states) == 64


def check_hess(job, options, data, modes):
    sections = read_sections(export(program, job, "hess", *options), r"^\$(\w+)\n")
    natom, size = len(data["masses"]), 3 * len(data["masses"])
    rigid = size - len(modes["frequencies"])
    assert int(sections["hessian"][0]) == int(sections["vibrational_frequencies"][0]) == size and "end" in sections
    hessian = read_matrix(sections["hessian"][1:], size)
    same(hessian, data["hessian"], 11, "force constants")
    found = numpy.loadtxt(sections["vibrational_frequencies"][1:size + 1])
    assert list(found[:, 0]) == list(range(size)) and not found[:rigid, 1].any()
    numpy.testing.assert_allclose(found[rigid:, 1], modes["frequencies"], rtol=0, atol=1e-9)
    columns = read_matrix(sections["normal_modes"][1:], size).T
    assert not columns[:rigid].any()
    same(columns[rigid:], modes["displacements"], 11, "modes")
    atoms = [line.split() for line in sections["atoms"][1:natom + 1]]
    assert [atom[0] for atom in atoms] == data["symbols"]
    masses, *places = numpy.array([atom[1:] for atom in atoms], dtype=float).T
    numpy.testing.assert_allclose(numpy.ravel(places, order="F"), data["geometry"], rtol=0, atol=1e-11)
    rebuilt = frequencies(hessian, masses, numpy.ravel(places, order="F"))
    numpy.testing.assert_allclose(rebuilt, numpy.sort(modes["frequencies"]), rtol=0, atol=1e-4)


def check_cjson(job, options, data, modes):
    found = json.loads(export(program, job, "cjson", *options))
    vibrations, places = found["vibrations"], numpy.array(found["atoms"]["coords"]["3d"])
    assert found["atoms"]["elements"]["number"] == data["atomic_numbers"] and set(vibrations) == {"frequencies", "modes", "eigenVectors"}
    numpy.testing.assert_allclose(places / BOHR, data["geometry"], rtol=1e-15)
    assert vibrations["frequencies"] == modes["frequencies"]
    assert vibrations["modes"] == list(range(1, len(modes["frequencies"]) + 1))
    assert vibrations["eigenVectors"] == [list(itertools.chain(*mode)) for mode in modes["displacements"]]
    bonds = numpy.reshape(found["bonds"]["connections"]["index"], (-1, 2))
    assert len(found["bonds"]["order"]) == len(bonds)
    if data["symbols"] == ["C", "O", "H", "H"]:
        assert bonds.tolist() == [[0, 1], [0, 2], [0, 3]]


def check_molden(job, options, data, modes):
    sections = read_sections(export(program, job, "molden", *options), r"^\[([\w-]+)\]")
    assert int(sections["N_FREQ"][1]) == len(modes["frequencies"])
    numpy.testing.assert_allclose(numpy.array(sections["FREQ"][1:-1], dtype=float), modes["frequencies"], rtol=0, atol=6e-7)
    rows = [line.split() for line in sections["FR-NORM-COORD"][1:-1] if not line.startswith("vib")]
    numpy.testing.assert_allclose(numpy.array(rows, dtype=float).ravel(), numpy.ravel(modes["displacements"]), rtol=0, atol=6e-11)


def check_collected(job, options, data, modes):
    """zandor_collect takes the checkpoint file for the output of the reference, and writes forces and dipole."""
    name = [entry["file"] for entry in data["provenance"]["inputs"] if entry["file"].endswith(".com")][0][:-4]
    with tempfile.TemporaryDirectory() as folder:
        for file in "control.inp", "files.out":
            shutil.copy(os.path.join(job, file), folder)
        export(program, job, "fchk", *options, "-o", os.path.join(folder, name + ".fchk"))
        subprocess.run([collect, "control.inp"], cwd=folder, capture_output=True)  # the other outputs are missing
        with open(os.path.join(folder, name + ".sgn")) as file:
            tail = file.read().split("electric dipole moments (Au)\n")[1].split("\n")
        same(tail[0].split()[2:], data["transition_dipole"], 9, "dipole")
        forces = [line.split()[1:] for line in tail[3:3 + len(data["masses"])]]
        numpy.testing.assert_allclose(-numpy.array(forces, dtype=float).ravel(), data["gradient"], rtol=0, atol=6e-11)


for job, options in itertools.product(sys.argv[3:], ([], ["--isotope", "H=2.014101778"])):
    with tempfile.TemporaryDirectory() as temporary:
        place = copy_of(job, temporary)
        with open(os.path.join(place, "files.out")) as file:
            if options and not re.search(r"^ *\d+ +H +1 ", file.read(), re.M):
                continue
        data = json.loads(export(program, place, "json", *options))
        modes = data["projected"]
        rigid = 5 if len(modes["frequencies"]) == 6 else 6
        order = sorted(range(len(modes["frequencies"])), key=lambda k: -modes["rigid_weight"][k])
        modes = {key: [values[k] for k in sorted(order[rigid:])] for key, values in modes.items()}
        for check in check_fchk, check_hess, check_cjson, check_molden:
            check(place, options, data, modes)
        if "gradient" in data:
            check_collected(place, options, data, modes)
