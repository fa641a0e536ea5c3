#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Finds public functions, records and enumerations without documentation in Doxygen's XML.

    scripts/reference_coverage.py XML-FOLDER

An overload may rest on a documented one of the same name in the same file, and a field or an enumerator
on its record, and an operation of an interface on the interface, whose comment names the slots.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def documented(element):
    for part in ("briefdescription", "detaileddescription"):
        found = element.find(part)
        if found is not None and "".join(found.itertext()).strip():
            return True
    return False


def place(element):
    location = element.find("location")
    return "?" if location is None else f"{location.get('file')}:{location.get('line')}"


def file_of(element):
    location = element.find("location")
    return None if location is None else location.get("file")


def check(folder):
    functions, faults, counted = {}, [], 0
    for document in sorted(folder.glob("*.xml")):
        compound = ElementTree.parse(document).getroot().find("compounddef")
        if compound is None:
            continue
        kind = compound.get("kind")
        if kind in ("struct", "class", "union"):
            name = compound.findtext("compoundname")
            # A record without a name of its own is described where it stands.
            if "@" not in name and compound.get("prot") == "public":
                counted += 1
                if not documented(compound):
                    faults.append(f"{place(compound)}: {kind} {name}")
        elif kind not in ("file", "namespace"):
            continue
        for member in compound.iter("memberdef"):
            name = member.findtext("qualifiedname") or member.findtext("name")
            # Files list the members of their namespaces once more, by reference only.
            if member.get("prot") != "public":
                continue
            if member.get("kind") == "enum":
                counted += 1
                if not documented(member):
                    faults.append(f"{place(member)}: enum {name}")
            elif member.get("kind") == "function":
                if is_special(member):
                    continue
                counted += 1
                functions.setdefault((file_of(member), name), []).append(member)
    for (_, name), overloads in functions.items():
        if not any(documented(member) for member in overloads):
            faults += [f"{place(member)}: {name}{member.findtext('argsstring')}" for member in overloads]
    return sorted(set(faults)), counted


def is_special(member):
    """Constructors, defaulted and deleted members say by their form what they do; interfaces see above."""
    arguments = member.findtext("argsstring") or ""
    given = member.find("type")
    return given is None or not "".join(given.itertext()).strip() or arguments.replace(" ", "").endswith(("=0", "=default", "=delete"))


def main(arguments):
    faults, counted = check(pathlib.Path(arguments[0]))
    for fault in faults:
        print(f"not documented: {fault}")
    print(f"reference: {counted} functions, records and enumerations, {len(faults)} without documentation")
    return 1 if faults or counted == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
