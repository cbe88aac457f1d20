"""ASE rebuilds the unprojected frequencies from the JSON, and reads the frames with their modes.

usage: ase_test.py ZANDOR_EXPORT ZANDOR_GATHER JOBDIRECTORY...
"""
import io
import json
import sys
import tempfile

from common import copy_of, export, report_frequencies, skip

try:
    import ase.io
    import numpy
    from ase import Atoms, units
    from ase.vibrations import VibrationsData
except ImportError as error:
    skip("needs python3-ase (%s)" % error)

program, gather = sys.argv[1:3]


def check_frequencies(folder):
    data = json.loads(export(program, folder, "json"))
    atoms = Atoms(numbers=data["atomic_numbers"], positions=numpy.reshape(data["geometry"], (-1, 3)) * units.Bohr,
                  masses=data["masses"])
    hessian = numpy.array(data["hessian"]) * units.Hartree / units.Bohr ** 2
    found = VibrationsData.from_2d(atoms, hessian).get_frequencies()
    signed = numpy.sort(found.real - found.imag)
    # ASE's constants are newer than those of the report; where they matter, below 1e-4 cm-1.
    numpy.testing.assert_allclose(signed, numpy.sort(data["unprojected"]["frequencies"]), rtol=0, atol=1e-3)
    # The report's eigenvalues come from a matrix with 1e5 on its diagonal, which costs about 1e-10 atomic units.
    report = report_frequencies(gather, folder, "Unprojected Frequency (cm-1)")
    squares = signed * abs(signed), numpy.sort(numpy.array(report) * numpy.abs(report))
    numpy.testing.assert_allclose(*squares, rtol=1e-7, atol=3e-10 * 219474.63 ** 2)
    return data


def check_frames(folder, data):
    frames = ase.io.read(io.StringIO(export(program, folder, "xyz", "--amplitude", "0.7")), ":", format="extxyz")
    assert len(frames) == len(data["projected"]["frequencies"])
    for number, (frame, frequency) in enumerate(zip(frames, data["projected"]["frequencies"]), 1):
        assert frame.info["mode#"] == number
        assert abs(frame.info["frequency_cm-1"] - frequency) < 1e-9
        assert frame.get_chemical_symbols() == data["symbols"]
        mode = frame.arrays["mode"]
        assert abs(numpy.linalg.norm(mode, axis=1).max() - 0.7) < 1e-9
        unit = numpy.array(data["projected"]["displacements"][number - 1])
        numpy.testing.assert_allclose(mode / numpy.linalg.norm(mode), unit, rtol=0, atol=1e-8)
    film = ase.io.read(io.StringIO(export(program, folder, "xyz", "--movie", str(len(frames)), "8")), ":", format="extxyz")
    assert len(film) == 8
    step = film[2].positions - film[0].positions  # a quarter of the period: as far as it goes
    numpy.testing.assert_allclose(step, 0.4 / 0.7 * frames[-1].arrays["mode"], rtol=0, atol=1e-8)


for job in sys.argv[3:]:
    with tempfile.TemporaryDirectory() as temporary:
        place = copy_of(job, temporary)
        check_frames(place, check_frequencies(place))
