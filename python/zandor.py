"""Results of zandor_export, zandor_check and zandor_ht as numpy arrays.

The programs run in a job directory; the examples below in the folder examples/ of the source:

>>> import zandor
>>> vibrations = zandor.load("formaldehyde-s1")
>>> print(vibrations.projected.frequencies[7].round(3), vibrations.unit("frequencies"))
898.756 cm-1

`load`, `check` and `herzberg_teller` take the folder of a job, or the control file in it, and behind it options of the
program as on its command line; `read` takes a file of JSON that one of the programs has written before.

Positions in arrays count from 0, as always with numpy: atom 1 is row 0, mode 8 above stands at 7, and coordinate
`3 * atom + axis` of the force constants is that axis of `geometry[atom]`. Numbers of modes, jobs and atoms that a
document names as such (`modes.mode`, `findings[0].job`) are those of the programs, which count atoms and modes from 1.

Programs are taken from the folder `programs`, else from the one that the variable ZANDOR_PROGRAMS names, else from the
PATH. Their warnings become warnings of Python, their failures a ProgramError.
"""
import importlib
import json
import os
import re
import shutil
import subprocess
import warnings
from pathlib import Path
from typing import TYPE_CHECKING, Any, Dict, List, Optional, Sequence, Tuple, Union

import numpy as np

if TYPE_CHECKING:
    from ase import Atoms
    from ase.vibrations import VibrationsData

PathLike = Union[str, "os.PathLike[str]"]

ANGSTROM_PER_BOHR = 0.529177249  # as the programs have it, so that positions are those of their input again


class ProgramError(RuntimeError):
    """A program that gave no result: `program`, its exit `status` (negative: the signal that ended it), `message`."""

    def __init__(self, program: str, status: int, message: str) -> None:
        super().__init__(program, status, message)
        self.program, self.status, self.message = program, status, message

    def __str__(self) -> str:
        own = self.message.startswith(self.program + ":")
        return f"{'' if own else self.program + ': '}{self.message} (exit status {self.status})"


class SchemaError(ValueError):
    """A document of another version than this module reads."""


class Record(dict):
    """An object of a document. Its members are attributes, too; which are there depends on the job: `"name" in record`.

    >>> record = Record(masses=[12.0, 15.99491], strength=[None, 2.5], modes=[[1, 2], [3]])
    >>> print(record.masses, record.strength, record.modes[1])
    [12.      15.99491] [nan 2.5] [3]
    >>> record.step
    Traceback (most recent call last):
    AttributeError: no 'step' here, only masses, strength, modes
    """

    def __init__(self, *members: Any, **more: Any) -> None:
        super().__init__({name: _value(value) for name, value in dict(*members, **more).items()})

    def __getattr__(self, name: str) -> Any:
        if name in self:
            return self[name]
        raise AttributeError(f"no {name!r} here, only {', '.join(self) or 'nothing'}")

    def __dir__(self) -> List[str]:  # for completion
        return [*super().__dir__(), *self]


def _value(value: Any) -> Any:
    """Objects as records, lists of numbers as arrays with nan for null, everything else as it is."""
    if isinstance(value, dict):
        return value if isinstance(value, Record) else Record(value)
    if not isinstance(value, list) or not value or isinstance(value[0], str):
        return value
    if not isinstance(value[0], dict):
        try:
            array = np.array(value)
            return array.astype(float) if array.dtype == object else array
        except (TypeError, ValueError):  # rows of different lengths
            pass
    return [_value(item) for item in value]


class Vibrations(Record):
    """What `zandor_export json` writes: its keys, with the shapes below for n atoms. `units` tells the unit of each."""

    units: Dict[str, str]
    symbols: List[str]
    masses: np.ndarray  # (n,)
    geometry: np.ndarray  # (n, 3); so is gradient, where the job has one
    hessian: np.ndarray  # (3 n, 3 n)
    transition_dipole: np.ndarray  # (3,)
    transition_dipole_gradient: np.ndarray  # (n, 3, 3): atom, axis of the displacement, component; may be missing
    projected: Record  # frequencies (3 n,), displacements (3 n, n, 3), reduced_masses, rigid_weight, ...
    unprojected: Record

    def __init__(self, document: Dict[str, Any]) -> None:
        if document.get("schema_version") != 1:
            raise SchemaError(f"expected schema_version 1, found {document.get('schema_version')}")
        super().__init__(document)
        for name in {"geometry", "gradient"} & self.keys():
            self[name] = self[name].reshape(-1, 3)

    def unit(self, name: str) -> str:
        """The unit of a key alone, for an axis of a plot; `units[name]` may tell more. "none": a pure number."""
        return re.split("[,:]", self.units[name])[0]

    def atoms(self, mode: Optional[int] = None) -> "Atoms":
        """The molecule for ASE, with its masses, in Angstrom and u. With a position in the arrays of `projected` it has
        that mode's displacements in `arrays["mode"]` and its frequency in `info["frequency_cm-1"]`."""
        atoms = _import("ase").Atoms(self.atomic_numbers, self.geometry * ANGSTROM_PER_BOHR, masses=self.masses)
        if mode is not None:
            atoms.arrays["mode"] = self.projected.displacements[mode].copy()
            atoms.info["frequency_cm-1"] = float(self.projected.frequencies[mode])
        return atoms

    def vibrations_data(self) -> "VibrationsData":
        """Force constants and molecule for ASE, in eV and Angstrom, from which it takes (unprojected) modes."""
        units, hessian = _import("ase.units"), self.hessian
        return _import("ase.vibrations").VibrationsData.from_2d(self.atoms(), hessian * (units.Hartree / units.Bohr**2))


class Check(Record):
    """What `zandor_check --json` finds. `figures[check][name]` and `thresholds[name]` hold numbers and arrays (nan: not
    looked at), `units.figures[check][name]` and `units.thresholds[name]` their units ("1": a pure number).

    >>> found = check("formaldehyde-s1")
    >>> found.summary.errors, found.findings, found.figures["net-force"]["net force of each coordinate"].shape
    (0, [], (12,))
    """

    findings: List[Record]  # severity, check, file, text, rerun, and where they apply line, job, name
    figures: Record
    rerun: List[str]  # names of jobs

    def __init__(self, document: Dict[str, Any]) -> None:
        figures: Dict[str, Dict[str, Any]] = {}
        figure_units: Dict[str, Dict[str, str]] = {}
        for figure in document["figures"]:
            name, *unit = re.split(r" \(([^()]*)\)$", figure["name"])
            figures.setdefault(figure["check"], {})[name] = np.nan if figure["value"] is None else figure["value"]
            figure_units.setdefault(figure["check"], {})[name] = unit[0] if unit else "1"
        limits = document["thresholds"]
        units = {"figures": figure_units, "thresholds": {limit["name"]: limit["unit"] for limit in limits}}
        super().__init__(document, figures=figures, units=units,
                         thresholds={limit["name"]: limit["value"] for limit in limits})


class HerzbergTeller(Record):
    """What `zandor_ht --json` writes, but `modes` is one record of arrays, a place per vibration: `modes.frequency`,
    `modes.dmu_dQ`, `modes.strength` and so on (nan where an imaginary mode has none). `units` tells their units.

    >>> terms = herzberg_teller("formaldehyde-s1", "--temperature", 300)
    >>> print(terms.modes.mode, terms.modes.share.round(3))
    [ 1  8  9 10 11 12] [  nan 0.405   nan   nan   nan 0.595]
    """

    units: Dict[str, str]
    modes: Record
    totals: Record

    def __init__(self, document: Dict[str, Any]) -> None:
        names = dict.fromkeys(name for mode in document["modes"] for name in mode)
        names = names or ("mode", "frequency", "overlap", "dmu_dQ", "dmu_dq", "strength", "share")  # an atom has none
        super().__init__(document, modes={name: [mode.get(name) for mode in document["modes"]] for name in names})


def load(job: PathLike, *options: object, programs: Optional[PathLike] = None) -> Vibrations:
    """The vibrations of a job, by zandor_export: `load("job", "--isotope", "H=2.014101778")`."""
    return _run("zandor_export", "json", options, job, programs)


def check(job: PathLike, *options: object, programs: Optional[PathLike] = None) -> Check:
    """Whether a job can be trusted, by zandor_check; its findings are a result, and no failure."""
    return _run("zandor_check", "--json", options, job, programs)


def herzberg_teller(job: PathLike, *options: object, programs: Optional[PathLike] = None) -> HerzbergTeller:
    """Herzberg-Teller terms along the modes, by zandor_ht."""
    return _run("zandor_ht", "--json", options, job, programs)


def read(file: PathLike) -> Union[Vibrations, Check, HerzbergTeller]:
    """What one of the programs has written to a file as JSON."""
    try:
        return _document(Path(file).read_bytes())
    except ValueError as error:
        raise ValueError(f"{os.fspath(file)}: {error}") from None


def find_control_file(job: PathLike) -> Tuple[Path, str]:
    """Folder and name of a job's control file: the file given, or in a folder control.inp, or else the only *.inp with
    a group &control. FileNotFoundError where there is none, ValueError where there are several."""
    path = Path(job)
    if path.is_file():
        return path.parent, path.name
    group = re.compile(rb"^(?![ \t]*!).*&control(?![\w-])", re.IGNORECASE | re.MULTILINE)
    found = ["control.inp"] if (path / "control.inp").is_file() else sorted(
        file.name for file in path.glob("*.inp") if file.is_file() and group.search(file.read_bytes()))
    if not found:
        raise FileNotFoundError(f"{path}: expected a folder with control.inp, or a *.inp that holds a group &control")
    if len(found) > 1:
        raise ValueError(f"{path}: expected one control file, found {', '.join(found)}; name one instead of the folder")
    return path, found[0]


def _run(program: str, first: str, options: Sequence[object], job: PathLike, programs: Optional[PathLike]) -> Any:
    folder, control = find_control_file(job)
    where = os.fspath(programs) if programs is not None else os.environ.get("ZANDOR_PROGRAMS") or None
    path = shutil.which(program, path=where)
    if path is None:
        raise FileNotFoundError(f"{program}: not found in {where or 'the folders of PATH'}; programs=FOLDER or the "
                                "variable ZANDOR_PROGRAMS tells where it is")
    run = subprocess.run([os.path.abspath(path), first, control, *map(str, options)], cwd=folder,
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    lines = run.stderr.decode(errors="replace").splitlines()
    doubts = [line for line in lines if line.startswith(program + ": warning: ")]
    said = "\n".join(line for line in lines if line not in doubts)
    if run.returncode != 0 and not (program == "zandor_check" and run.returncode == 1):
        raise ProgramError(program, run.returncode, said or run.stdout.decode(errors="replace").strip() or "no message")
    for line in doubts:
        warnings.warn(f"{folder}: {line}", stacklevel=3)
    try:
        return _document(run.stdout)
    except ValueError as error:
        raise ProgramError(program, run.returncode, said or f"{error} on its standard output") from None


def _document(text: bytes) -> Any:
    try:
        document = json.loads(text)
        kind = document.get("program") or document["provenance"]["program"]
        made = {"zandor_export": Vibrations, "zandor_check": Check, "zandor_ht": HerzbergTeller}[kind]
        return made(document)
    except SchemaError:
        raise
    except (AttributeError, KeyError, RecursionError, TypeError, ValueError):
        raise ValueError("expected JSON of zandor_export, zandor_check or zandor_ht, found "
                         f"{text[:40].decode(errors='replace')!r}") from None


def _import(module: str) -> Any:
    try:
        return importlib.import_module(module)
    except ImportError as error:
        raise ImportError(f"ASE is needed for this (python3-ase, or pip install ase): {error}") from error
