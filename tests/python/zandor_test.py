"""python/zandor.py: its doctests, what it makes of the programs' documents, and how it fails.

usage: zandor_test.py ROOT PROGRAM...
"""
import doctest
import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import tempfile
import unittest
import warnings

root = pathlib.Path(sys.argv[1]).resolve()
folders = [str(pathlib.Path(program).resolve().parent) for program in sys.argv[2:]]
os.environ["PATH"] = os.pathsep.join([*folders, os.environ["PATH"]])
os.environ.pop("ZANDOR_PROGRAMS", None)
sys.path.insert(0, str(root / "python"))
try:
    import numpy
    import zandor
except ImportError as error:
    print("skipped: needs python3-numpy (%s)" % error)
    sys.exit(77)


class Zandor(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(scratch.name)
        shutil.copytree(root / "examples", "examples")
        os.chdir("examples")

    def test_doctests(self):
        failed, tried = doctest.testmod(zandor)
        self.assertTrue(tried > 6 and not failed)

    def test_reads_what_the_programs_wrote(self):
        job = pathlib.Path("ammonia-s1-c3v")
        for command, run in (("zandor_export json", zandor.load), ("zandor_check --json", zandor.check),
                             ("zandor_ht --json --temperature 300", zandor.herzberg_teller)):
            program, *options = command.split()
            text = subprocess.run([program, *options, "control.inp"], cwd=job, stdout=subprocess.PIPE).stdout
            pathlib.Path("saved.json").write_bytes(text)
            found = run(job, *options[1:])
            self.assertEqual(repr(zandor.read("saved.json")), repr(pickle.loads(pickle.dumps(found))))

    def test_shapes_and_masses(self):
        heavy = zandor.load("formaldehyde-s1/control.inp", "--isotope", "H=2.014101778")
        self.assertEqual(heavy.masses.tolist(), [12, 15.99491, 2.014101778, 2.014101778])
        self.assertEqual((heavy.geometry[2] * zandor.ANGSTROM_PER_BOHR).round(8).tolist(), [0, 0.95656836, -1.11735294])
        self.assertEqual({heavy[name].shape for name in ("geometry", "gradient")}, {(4, 3)})
        weighted = heavy.hessian / numpy.sqrt(numpy.outer(*2 * [heavy.masses.repeat(3)]))
        highest = 219474.6314 * (numpy.linalg.eigvalsh(weighted)[-1] / 1822.888486) ** 0.5
        self.assertLess(abs(highest - heavy.unprojected.frequencies[-1]), 0.01)
        moved = numpy.einsum("kai,aic->kc", heavy.projected.displacements, heavy.transition_dipole_gradient)
        root_mass = numpy.sqrt(1822.888486 * heavy.projected.reduced_masses)[:, None]
        numpy.testing.assert_allclose(moved / root_mass, heavy.projected.transition_dipole_derivatives, atol=1e-9)

    def test_gives_ase_the_molecule_and_a_mode(self):
        job = zandor.load("formaldehyde-s1")
        try:
            import ase  # noqa: F401
        except ImportError:
            return self.assertRaisesRegex(ImportError, "^ASE is needed", job.atoms)
        atoms = job.atoms(7)
        self.assertEqual(atoms.get_masses().tolist(), job.masses.tolist())
        self.assertEqual(atoms.positions[2].round(8).tolist(), [0, 0.95656836, -1.11735294])
        self.assertEqual(round(atoms.info["frequency_cm-1"], 3), 898.756)
        self.assertEqual(atoms.arrays["mode"].tolist(), job.projected.displacements[7].tolist())
        self.assertLess(abs(job.vibrations_data().get_frequencies()[-1] - job.unprojected.frequencies[-1]), 0.01)

    def test_finds_the_control_file(self):
        job = pathlib.Path("formaldehyde-s1")
        (job / "orca.inp").write_text("! B3LYP\n ! &control\n")
        (job / "control.inp").rename(job / "My job.inp")
        self.assertEqual(zandor.load(job).provenance.control_file, "My job.inp")
        (job / "b.inp").write_text(" &CONTROL /")
        with self.assertRaisesRegex(ValueError, "found My job.inp, b.inp; name one"):
            zandor.check(job)
        self.assertEqual(zandor.check(job / "b.inp").control_file, "b.inp")
        for folder in "templates", "nowhere":
            with self.assertRaisesRegex(FileNotFoundError, folder + ": expected a folder with control.inp"):
                zandor.check(folder)

    def test_a_program_that_fails_is_an_error_with_its_line_and_status(self):
        cases = (  # what a program does, and what comes of it: status and message, or the warning of a result
            ("echo 'zandor_check: a.sgn:3: bad' >&2; exit 2", 2, "zandor_check: a.sgn:3: bad (exit status 2)"),
            ("echo Can not find; exit 3", 3, "zandor_check: Can not find (exit status 3)"),
            ("kill -9 $$", -9, "zandor_check: no message (exit status -9)"),
            ("exit 1", 1, "zandor_check: expected JSON of zandor_export, zandor_check or zandor_ht, found '' on its "
                          "standard output (exit status 1)"),
            ("printf '[7]'", 0, "found '[7]' on its"),
            ("echo zandor_check: warning: doubtful >&2; cat found.json; exit 1", None, "zandor_check: warning: doubtful"),
        )
        job = pathlib.Path("formaldehyde-s1")
        shutil.copy(job / "coord-ch2o-s1-01mx.sgn", job / "coord-ch2o-s1-02mx.sgn")
        found = zandor.check(job)  # a result, although the program ends with status 1
        self.assertIn("ch2o-s1-02mx", found.rerun)
        text = subprocess.run(["zandor_check", "--json", "control.inp"], cwd=job, stdout=subprocess.PIPE).stdout
        (job / "found.json").write_bytes(text)
        program = pathlib.Path("zandor_check")
        for does, status, message in cases:
            program.write_text("#!/bin/sh\n" + does + "\n")
            program.chmod(0o755)
            with self.subTest(does), warnings.catch_warnings(record=True) as warned:
                warnings.simplefilter("always")
                if status is None:
                    self.assertEqual(zandor.check(job, programs=".").rerun, found.rerun)
                    self.assertEqual((str(warned[0].message), warned[0].filename), (f"{job}: {message}", __file__))
                    continue
                with self.assertRaises(zandor.ProgramError) as caught:
                    zandor.check(job, programs=".")
                error = pickle.loads(pickle.dumps(caught.exception))  # as from a process of a pool
                self.assertEqual((error.program, error.status), ("zandor_check", status))
                self.assertIn(message, str(error))
        os.environ["ZANDOR_PROGRAMS"] = "nowhere"
        self.addCleanup(os.environ.pop, "ZANDOR_PROGRAMS")
        with self.assertRaisesRegex(FileNotFoundError, "zandor_ht: not found in nowhere; programs=FOLDER"):
            zandor.herzberg_teller(job)
        for text in '{"program": "other"}', '{"program": "zandor_check"}', "[" * 100000:
            pathlib.Path("other.json").write_text(text)
            with self.assertRaisesRegex(ValueError, "^other.json: expected JSON of zandor_export"):
                zandor.read("other.json")


unittest.main(argv=sys.argv[:1])
