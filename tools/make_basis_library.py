#!/usr/bin/env python3
"""Writes the basis library (basis_data/*.dat and *_ecp.dat) from the Python package basis_set_exchange.

usage: make_basis_library.py [OUTPUT_FOLDER]        (default: basis_data)

The package holds the published basis sets; this script only lays them out as the program reads them:

    ****                          before the first and after every element block
    C     0                       element symbol (the number is not used)
    S   6   1.00                  shell type, number of primitives, scale factor
          exponent coefficient    one line per primitive; an SP shell has an s and a p coefficient

and for effective core potentials, inside the same blocks, "XX-ECP lmax ncore", then for the local part and for l = 0, 1, ...
a title line, the number of terms, and lines "n exponent coefficient" (coefficient r^(n-2) exp(-exponent r^2)).

General contractions become one shell per column; primitives with a zero coefficient are left out of their column. Members of
the 6-31G and 6-311G families that the package does not list are put together from the polarisation and diffuse functions of
those it lists; minimally augmented sets follow J. Zheng, X. Xu, D. G. Truhlar, Theor. Chem. Acc. 128 (2011) 295.
"""
import sys
from pathlib import Path

import basis_set_exchange as bse

MAX_Z = 86
LETTERS = "SPDFGHIKLM"
SYMBOLS = [""] + [bse.lut.element_sym_from_Z(z, True) for z in range(1, MAX_Z + 1)]


# Sets whose parentheses tell them from another set (def2-SVP has p functions on hydrogen): filed under the literal name.
LITERAL_NAMES = {"def2-SV(P)", "ma-def2-SV(P)", "ma-SV(P)"}


def file_stem(name):
    if name in LITERAL_NAMES:
        return name.lower()
    stem = name.replace("**", "dp").replace("*", "d").replace("+", "p")
    return "".join(c for c in stem if c not in "(), ").lower()


def shells_of(element):
    """Shells of one element as (l values, exponents, coefficient columns), texts as published."""
    shells = []
    for shell in element.get("electron_shells", []):
        momenta, exponents, columns = shell["angular_momentum"], shell["exponents"], shell["coefficients"]
        if momenta == [0, 1] and len(columns) == 2:
            shells.append(((0, 1), exponents, columns))
            continue
        if len(momenta) == 1:
            momenta = momenta * len(columns)
        for l, column in zip(momenta, columns):
            kept = [k for k, c in enumerate(column) if float(c) != 0.0]
            shells.append(((l,), [exponents[k] for k in kept], [[column[k] for k in kept]]))
    return shells


def package_set(name):
    """{Z: (shells, ecp element or None)} of a set of the package."""
    data = bse.get_basis(name)["elements"]
    return {int(z): (shells_of(e), e if "ecp_potentials" in e else None) for z, e in data.items() if int(z) <= MAX_Z}


def same_shell(one, other):
    """Same kind and the same exponents; printings of one set differ in the number of digits kept."""
    return one[0] == other[0] and len(one[1]) == len(other[1]) and all(
        abs(float(x) - float(y)) < 1e-4 * float(y) for x, y in zip(one[1], other[1]))


def difference(larger, smaller):
    """{Z: shells of the larger set that the smaller one lacks}."""
    return {z: [s for s in larger[z][0] if not any(same_shell(s, t) for t in smaller[z][0])]
            for z in larger.keys() & smaller.keys()}


def only(shells, momenta):
    return {z: [s for s in list_ if s[0][0] in momenta] for z, list_ in shells.items()}


def joined(first, second):
    """Shells of both for the elements that both cover."""
    return {z: first[z] + second[z] for z in first.keys() & second.keys()}


def family(stem, base, diffuse, heavy, hydrogen):
    """All members: no, + and ++ diffuse functions times the polarisations of heavy atoms and of hydrogen (and helium)."""
    sets = {}
    for plus, extra in diffuse.items():
        for heavy_name, heavy_shells in heavy.items():
            for light_name, light_shells in hydrogen.items():
                if light_name and not heavy_name:
                    continue
                suffix = f"({heavy_name}{',' + light_name if light_name else ''})" if heavy_name else ""
                elements = {}
                for z, (shells, _) in base.items():
                    named, polarisation = (light_name, light_shells) if z <= 2 else (heavy_name, heavy_shells)
                    needs_diffuse = plus == "++" or (plus == "+" and z > 2)
                    if (named and z not in polarisation) or (needs_diffuse and z not in extra):
                        continue
                    elements[z] = (shells + (polarisation[z] if named else []) + (extra[z] if needs_diffuse else []), None)
                sets[f"{stem}{plus}G{suffix}"] = elements
    return sets


def split_valence_families():
    g = package_set
    base = g("6-31G")
    # Polarisation alone: some of the larger sets of the package carry an older printing of the valence shells of Li to B.
    single = only(difference(g("6-31G**"), base), (1, 2, 3))
    two = only(difference(g("6-31G(2df,p)"), base), (1, 2, 3))
    three = only(difference(g("6-31G(3df,3pd)"), base), (1, 2, 3))
    heavy = {"": {}, "d": single, "2d": only(two, (2,)), "df": joined(only(single, (2,)), only(two, (3,))),
             "2df": only(two, (2, 3)), "3d": only(three, (2,)), "3df": only(three, (2, 3))}
    # The package gives its 6-31G(2df,p) the two p functions on hydrogen that belong to the 2p sets.
    hydrogen = {"": {}, "p": only(single, (1,)), "2p": only(two, (1,)), "pd": joined(only(single, (1,)), only(three, (2,))),
                "2pd": joined(only(two, (1,)), only(three, (2,))), "3p": only(three, (1,)), "3pd": only(three, (1, 2))}
    diffuse = {"": {}, "+": difference(g("6-31+G"), base), "++": difference(g("6-31++G"), base)}
    sets = family("6-31", base, diffuse, heavy, hydrogen)

    base = g("6-311G")
    single = difference(g("6-311G**"), base)
    two = difference(g("6-311++G(2d,2p)"), g("6-311++G"))
    three = difference(g("6-311++G(3df,3pd)"), g("6-311++G"))
    large = difference(g("6-311G(2df,2pd)"), base)
    # The package stops its 2df set at neon; the f function is that of the 3df set in every row.
    large = {**joined(only(two, (2,)), only(three, (3,))), **large}
    heavy = {"": {}, "d": single, "2d": two, "df": joined(single, only(large, (3,))), "2df": large, "3d": only(three, (2,)),
             "3df": three}
    hydrogen = {"": {}, "p": single, "2p": two, "pd": joined(single, only(large, (2,))), "2pd": large, "3p": only(three, (1,)),
                "3pd": three}
    diffuse = {"": {}, "+": difference(g("6-311+G"), base), "++": difference(g("6-311++G"), base)}
    sets.update(family("6-311", base, diffuse, heavy, hydrogen))

    for name in ("6-31G", "6-31+G", "6-31++G", "6-31G*", "6-31G**", "6-31+G*", "6-31+G**", "6-31++G*", "6-31++G**",
                 "6-31G(3df,3pd)", "6-311G", "6-311+G", "6-311++G", "6-311G*", "6-311G**", "6-311+G*",
                 "6-311+G**", "6-311++G*", "6-311++G**", "6-311+G(2d,p)", "6-311++G(2d,2p)", "6-311++G(3df,3pd)"):
        sets[name] = g(name)  # as published, for every element the package has
    return sets


def minimally_augmented(base):
    """One diffuse s and p function on every atom but H and He, a third of the smallest exponent of that kind."""
    result = {}
    for z, (shells, ecp) in base.items():
        own = list(shells)
        for l in (0, 1) if z > 2 else ():
            smallest = min(float(x) for s in shells if l in s[0] for x in s[1])
            own.append(((l,), [f"{smallest / 3.0:.10f}"], [["1.0"]]))
        result[z] = (own, ecp)
    return result


def stuttgart(name):
    """Basis and potentials of one family, which the package lists apart."""
    shells, potentials = package_set(name), bse.get_basis(name + " ECP")["elements"]
    return {z: (s, potentials[str(z)]) for z, (s, _) in shells.items() if str(z) in potentials}


def all_sets():
    g = package_set
    sets = split_valence_families()
    names = ["STO-3G", "STO-6G", "3-21G", "4-31G", "MINI", "MIDI", "MIDI!", "LANL2DZ", "LANL2DZdp", "LANL2TZ", "def2-SV(P)",
             "def2-SVP", "def2-TZVP", "def2-TZVPP", "def2-QZVP", "def2-QZVPP", "def2-SVPD", "def2-TZVPD", "def2-TZVPPD",
             "def2-QZVPD", "def2-QZVPPD", "cc-pCVDZ", "cc-pCVTZ", "aug-cc-pCVDZ", "aug-cc-pCVTZ"]
    names += [f"{kind}-{n}" for kind in ("pc", "pcseg", "aug-pcseg") for n in range(4) if (kind, n) != ("pc", 4)]
    names += [f"{aug}{core}" for z in "DTQ" for aug in ("", "aug-")
              for core in (f"cc-pV{z}Z", f"cc-pV{z}Z-PP", f"cc-pV({z}+d)Z")]
    for name in names:
        sets[name] = g(name)
    # Sets defined as additions hold for the other elements what they add to: no core functions on H and He, no tight d
    # functions before aluminium.
    for z in "DTQ":
        for aug in ("", "aug-"):
            plain = sets[f"{aug}cc-pV{z}Z"]
            for name, last in ((f"{aug}cc-pCV{z}Z", 2), (f"{aug}cc-pV({z}+d)Z", 12)):
                if name in sets:
                    sets[name] = {**{k: e for k, e in plain.items() if k <= last}, **sets[name]}
    for name in ("SV(P)", "SVP", "TZVP", "TZVPP", "QZVP", "QZVPP"):
        sets[f"ma-def2-{name}"] = sets[f"ma-{name}"] = minimally_augmented(sets[f"def2-{name}"])
    small, large = stuttgart("Stuttgart RSC 1997"), stuttgart("Stuttgart RLC")
    sets["Stuttgart RSC 1997"], sets["Stuttgart RLC"] = small, large
    # SDD: potentials from potassium on (small cores before large ones), an all-electron double-zeta set for the lighter atoms.
    light = {z: e for z, e in g("DZ (Dunning-Hay)").items() if z <= 18}
    sets["SDD"] = sets["Stuttgart"] = {**large, **small, **light}
    return sets


def header(text):
    return [f"! {text}", f"! Published data as collected in the package basis_set_exchange {bse.version()}.",
            "! Written by tools/make_basis_library.py.", "****"]


def write_basis(path, name, elements):
    lines = header(f"{name} basis set")
    for z in sorted(elements):
        lines.append(f"{SYMBOLS[z]:<2s}    0")
        for momenta, exponents, columns in elements[z][0]:
            lines.append(f"{''.join(LETTERS[l] for l in momenta):<4s}{len(exponents):3d}   1.00")
            for k, exponent in enumerate(exponents):
                lines.append("  " + "".join(f" {text:>23s}" for text in [exponent] + [c[k] for c in columns]))
        lines.append("****")
    path.write_text("\n".join(lines) + "\n")


def write_ecp(path, name, elements):
    held = {z: e[1] for z, e in elements.items() if e[1] is not None}
    if not held:
        return
    lines = header(f"Effective core potentials of the {name} basis set")
    for z in sorted(held):
        by_l = {p["angular_momentum"][0]: p for p in held[z]["ecp_potentials"]}
        top = max(by_l)
        lines += [f"{SYMBOLS[z]:<2s}    0", f"{SYMBOLS[z].upper()}-ECP {top:3d} {held[z]['ecp_electrons']:4d}"]
        for l in [top] + list(range(top)):
            part = by_l.get(l)
            terms = list(zip(part["r_exponents"], part["gaussian_exponents"], part["coefficients"][0])) if part else []
            lines += [f"{LETTERS[l].lower()}{'' if l == top else '-' + LETTERS[top].lower()} potential", f"{len(terms):3d}"]
            lines += [f"{n:3d} {e:>22s} {c:>22s}" for n, e, c in terms]
        lines.append("****")
    path.write_text("\n".join(lines) + "\n")


def main():
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else "basis_data")
    folder.mkdir(exist_ok=True)
    written = {}
    for name, elements in all_sets().items():
        stem = file_stem(name)
        # A star form and its parenthesis form share the file; the one that covers more elements is kept.
        if stem in written and len(written[stem]) >= len(elements):
            continue
        written[stem] = elements
        write_basis(folder / f"{stem}.dat", name, elements)
        write_ecp(folder / f"{stem}_ecp.dat", name, elements)
    print(f"{len(written)} basis sets in {folder}")


main()
