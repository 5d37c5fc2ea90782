#!/usr/bin/env python3
"""What PySCF finds at the transition states of this program's reports.

usage: transition_states_peer.py BASIS_DATA_FOLDER REPORT METHOD BASIS CHARGE [--hessian]

Prints energy difference (hartree, this program minus peer), the largest element of the peer's gradient (hartree/bohr) at the
structure found, and with --hessian the number of negative eigenvalues of the peer's Hessian, rigid motions projected out.
"""
import re
import sys
from pathlib import Path

import numpy as np
from pyscf import dft, scf

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests/reference"))
from common import molecule  # noqa: E402

B3LYP = "0.2*HF + .08*slater + .72*b88, .19*vwn5 + .81*lyp"


def vibrational_eigenvalues(x, hessian):
    centred = x - x.mean(axis=0)
    rigid = [np.tile(e, len(x)) for e in np.eye(3)] + [np.cross(e, centred).ravel() for e in np.eye(3)]
    q, _ = np.linalg.qr(np.array(rigid).T)
    p = np.eye(x.size) - q @ q.T
    return np.linalg.eigvalsh(p @ hessian @ p)


def main():
    folder, report, method, basis, charge = sys.argv[1:6]
    text = Path(report).read_text()
    energy = float(re.findall(r"Final energy: +(\S+)", text)[-1])
    block = text[text.index("Transition-state geometry (Angstrom):"):].split("\n")[1:]
    atoms = []
    for line in block:
        words = re.match(r"\s+(?:\d+\s+)?([A-Z][a-z]?)\s+(-?\d+\.\d+)\s+(-?\d+\.\d+)\s+(-?\d+\.\d+)\s*$", line)
        if words:
            atoms.append((words[1], [float(words[k]) for k in (2, 3, 4)]))
        elif atoms:
            break
    mol = molecule(folder, atoms, basis, False, int(charge))
    mf = scf.RHF(mol) if method == "HF" else dft.RKS(mol, xc=B3LYP)
    if method != "HF":
        mf.grids.atom_grid, mf.grids.prune = (99, 590), None
    mf.conv_tol, mf.conv_tol_grad = 1e-11, 1e-7
    peer = mf.kernel()
    gradient = mf.nuc_grad_method().kernel()
    line = f"{energy - peer:+.1e} {abs(gradient).max():.1e}"
    if "--hessian" in sys.argv:
        h = mf.Hessian().kernel().transpose(0, 2, 1, 3).reshape(3 * len(atoms), -1)
        line += f" {(vibrational_eigenvalues(mol.atom_coords(), h) < -1e-3).sum()}"
    print(line)


if __name__ == "__main__":
    main()
