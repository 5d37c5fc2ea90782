"""What the comparisons share: where the sources are, molecules, the peer's names of functionals, one run of the program."""
import math
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/reference"))  # common.py: the peer's molecules with this program's basis files

# Geometries in angstrom, atoms separated by semicolons.
WATER = "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"
FORMALDEHYDE = "C 0 0 -0.5296; O 0 0 0.6756; H 0 0.9347 -1.1127; H 0 -0.9347 -1.1127"
BENZENE = "; ".join(f"{s} {r * c:.6f} {r * q:.6f} 0" for s, r in (("C", 1.3915), ("H", 2.4715)) for c, q in
                    ((1, 0), (0.5, 0.8660254), (-0.5, 0.8660254), (-1, 0), (-0.5, -0.8660254), (0.5, -0.8660254)))
CAFFEINE = "; ".join(re.findall(r"^ *[A-Z] +[-\d.]+ +[-\d.]+ +[-\d.]+", (ROOT / "examples/caffeine.inp").read_text(), re.M))


def alkane(n):
    """C_nH_(2n+2), all anti."""
    atoms = []
    for i in range(n):
        up = 1 if i % 2 else -1
        x, y = 1.2574 * i, 0.42 * up
        atoms += [("C", x, y, 0.0), ("H", x, y + 0.63 * up, 0.89), ("H", x, y + 0.63 * up, -0.89)]
        if i == 0:
            atoms.append(("H", x - 0.89, y + 0.63, 0.0))
        if i == n - 1:
            atoms.append(("H", x + 0.89, y - 0.63 * up, 0.0))
    return "; ".join("%s %.6f %.6f %.6f" % atom for atom in atoms)


def waters(n):
    """n water molecules on a grid of 2.9 angstrom, nine to a layer, turned against each other."""
    atoms = []
    for i in range(n):
        x, y, z = 2.9 * (i % 3), 2.9 * (i // 3 % 3), 2.9 * (i // 9)
        a = 0.7 * i
        for symbol, r, t in (("O", 0.0, 0.0), ("H", 0.9572, 0.0), ("H", 0.9572, math.radians(104.52))):
            atoms.append((symbol, x + r * math.cos(t + a), y + r * math.sin(t + a) * math.cos(a), z + r * math.sin(t + a) * math.sin(a)))
    return "; ".join("%s %.6f %.6f %.6f" % atom for atom in atoms)


PEER_FUNCTIONALS = {"SVWN": "slater,vwn5", "PBE": "pbe,pbe", "R2SCAN": "r2scan,r2scan",
                    "B3LYP": "0.2*HF + .08*slater + .72*b88, .19*vwn5 + .81*lyp"}


def input_text(geometry, **keywords):
    """Input file: one line a keyword (None: a keyword without a value), then the geometry."""
    lines = [f"%{key}" if value is None else f"%{key} {value}" for key, value in keywords.items()]
    return "\n".join([*lines, "%geo", geometry.replace(";", "\n"), "*end\n"])


def run_program(program, text):
    """Report of one run."""
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "run.inp").write_text(text)
        return subprocess.run([os.path.abspath(program), "run.inp"], cwd=folder, capture_output=True, text=True,
                              env=dict(os.environ, ZENTRIX=str(ROOT))).stdout
