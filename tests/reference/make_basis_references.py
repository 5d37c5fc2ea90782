#!/usr/bin/env python3
"""Writes basis_sizes.json: Cartesian and spherical function counts per element, straight from basis_set_exchange.

usage: make_basis_references.py > basis_sizes.json

Counted on the package's own records, not through tools/make_basis_library.py, so that a block lost or doubled on the way to the
files shows.
"""
import json

import basis_set_exchange as bse

NAMES = ["STO-3G", "STO-6G", "3-21G", "4-31G", "6-31G", "6-31G*", "6-31G**", "6-31+G*", "6-31++G**", "6-31G(3df,3pd)",
         "6-311G", "6-311G**", "6-311+G(2d,p)", "6-311++G(2d,2p)", "6-311++G(3df,3pd)", "6-311G(2df,2pd)", "MINI", "MIDI", "MIDI!",
         "cc-pVDZ", "cc-pVTZ", "cc-pVQZ", "aug-cc-pVDZ", "aug-cc-pVTZ", "aug-cc-pVQZ", "cc-pVDZ-PP", "cc-pVTZ-PP", "cc-pVQZ-PP",
         "def2-SV(P)", "def2-SVP", "def2-TZVP", "def2-TZVPP", "def2-QZVP", "def2-QZVPP", "def2-SVPD", "def2-TZVPD", "pc-1", "pc-2",
         "pc-3", "pcseg-1", "pcseg-2", "pcseg-3", "LANL2DZ"]
result = {}
for name in NAMES:
    result[name] = {}
    for z, element in sorted(bse.get_basis(name)["elements"].items(), key=lambda pair: int(pair[0])):
        if int(z) > 86 or "electron_shells" not in element:
            continue
        momenta = []
        for shell in element["electron_shells"]:
            ls, columns = shell["angular_momentum"], shell["coefficients"]
            momenta += ls if len(ls) == len(columns) else ls * len(columns)
        result[name][z] = [sum((l + 1) * (l + 2) // 2 for l in momenta), sum(2 * l + 1 for l in momenta), max(momenta),
                           element.get("ecp_electrons", 0)]
print(json.dumps(result, separators=(",", ":")))
