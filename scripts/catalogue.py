#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the table of string descriptors from the texts, one file a language.

    scripts/catalogue.py FOLDER HEADER SOURCE    reads FOLDER/en.txt, FOLDER/de.txt, ...
    scripts/catalogue.py --self-test             plants one fault of each kind and sees that it is found

English names every text. Another language may leave texts out, but what it has must take the same arguments in the
same order, since a format is filled without a look at its language.
"""

import pathlib
import re
import sys
import tempfile

# Slots of a descriptor in their published order; English is the first.
SLOTS = "en ja de es fr zh-hans zh-hant da fi it ko nl nb pt-br pt ru sv pl".split()

LINE = re.compile(r'([a-z][A-Za-z0-9]*(?:\.[A-Za-z0-9]+)+) = "((?:[^"\\]|\\[n"\\])*)"')
TOKEN = re.compile(r"\$\([A-Za-z.]+\)")
CONVERSION = re.compile(r"[%$][-+ #0]*[0-9]*(?:\.[0-9]+)?(?:I64|[hlw])?[!&*,:EGXcdefgiosuxz]")
INSERT = re.compile(r"%[1-9]")


class Fault(Exception):
    pass


def placeholders(text):
    """What a format consumes, in order; tokens and numbered inserts may move freely."""
    tokens = sorted(TOKEN.findall(text)) + sorted(INSERT.findall(text))
    rest = INSERT.sub("", TOKEN.sub("", text)).replace("%%", "").replace("$$", "")
    return CONVERSION.findall(rest), tokens


def read(path):
    texts = {}
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line or line.startswith("#"):
            continue
        match = LINE.fullmatch(line)
        if not match:
            raise Fault(f'{path.name}:{number}: expected NAME = "TEXT"')
        name, text = match.groups()
        if name in texts:
            raise Fault(f"{path.name}:{number}: {name} stands twice")
        texts[name] = text
    return texts


def load(folder):
    """Slot -> texts of every language that has a file."""
    unknown = sorted(path.name for path in folder.glob("*.txt") if path.stem not in SLOTS)
    if unknown:
        raise Fault(f"{unknown[0]} names no language of the table")
    languages = {slot: read(folder / f"{code}.txt") for slot, code in enumerate(SLOTS)
                 if (folder / f"{code}.txt").exists()}
    if 0 not in languages:
        raise Fault("en.txt is missing")
    english = languages[0]
    for slot, texts in languages.items():
        for name, text in texts.items():
            if name not in english:
                raise Fault(f"{SLOTS[slot]}.txt: {name} isn't in English")
            if placeholders(text) != placeholders(english[name]):
                raise Fault(f"{SLOTS[slot]}.txt: {name} takes other arguments than English")
    return languages


def enumerator(name):
    """"error.80004005" becomes kError_80004005, "box.yesToAll" kBoxYesToAll."""
    return "k" + "".join("_" + part if part[0].isdigit() else part[0].upper() + part[1:] for part in name.split("."))


HEADER = """// SPDX-License-Identifier: Apache-2.0
// The names of the library's own texts. Made from the catalogue's files; change those.
#pragma once

#include <cstdint>
#include <string_view>

#include "marlo110k/lang.h"

namespace marlo {{

/// A text of the catalogue.
enum class Text : uint16_t {{
{enumerators}
}};

/// Every text's name in the catalogue's files, in the order of Text.
inline constexpr std::u16string_view kTextNames[] = {{
{names}
}};
inline constexpr uint32_t kTexts = {count};

/// The descriptors, in the order of Text. Other languages' slots are filled as they are first read.
extern constinit zrlang_t catalogue[kTexts];

}}  // namespace marlo
"""

SOURCE = """// SPDX-License-Identifier: Apache-2.0
// The library's own texts in every language. Made from the catalogue's files; change those.
#include "kernel/catalogue/texts.h"

namespace marlo {{

[[gnu::section("zrlang_t")]] constinit zrlang_t catalogue[kTexts] = {{
{rows}
}};

}}  // namespace marlo
"""


def row(name, languages):
    slots = [f'u"{languages[slot][name]}"' if slot in languages and name in languages[slot] else "nullptr"
             for slot in range(len(SLOTS))]
    while slots[-1] == "nullptr":
        slots.pop()
    return "    {kZrLangStringMagic, kZrLangSlots, {}, {" + ", ".join(slots) + "}, 0},"


def write(languages, header, source):
    names = list(languages[0])
    pathlib.Path(header).write_text(HEADER.format(
        enumerators="\n".join(f"  {enumerator(name)}," for name in names),
        names="\n".join(f'    u"{name}",' for name in names), count=len(names)), encoding="utf-8")
    pathlib.Path(source).write_text(SOURCE.format(rows="\n".join(row(name, languages) for name in names)),
                                    encoding="utf-8")


FAULTS = [
    ({"en": 'a.b = "x'}, "expected NAME"),
    ({"en": 'a.b = "x\\t"'}, "expected NAME"),
    ({"en": 'a.b = "x"\na.b = "y"'}, "stands twice"),
    ({"de": 'a.b = "x"'}, "en.txt is missing"),
    ({"en": 'a.b = "x"', "xx": ""}, "names no language"),
    ({"en": 'a.b = "x"', "de": 'a.c = "x"'}, "isn't in English"),
    ({"en": 'a.b = "%s of %d"', "de": 'a.b = "%d von %s"'}, "other arguments"),
    ({"en": 'a.b = "$d Hz"', "de": 'a.b = "%d Hz"'}, "other arguments"),
    ({"en": 'a.b = "in $(AppName)"', "fr": 'a.b = "en"'}, "other arguments"),
    ({"en": 'a.b = "%1 B"', "fr": 'a.b = "%2 o"'}, "other arguments"),
]
SOUND = {"en": 'a.b = "%s, $d Hz of $(AppName)"\na.c = "50 %% of \\"%1\\""', "de": 'a.b = "$(AppName): %s, $d Hz"'}


def fault_of(files):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for code, text in files.items():
            (folder / f"{code}.txt").write_text(text + "\n", encoding="utf-8")
        try:
            load(folder)
        except Fault as fault:
            return str(fault)
    return ""


def self_test():
    wrong = [(files, fault_of(files)) for files, words in FAULTS if words not in fault_of(files)]
    if fault_of(SOUND):
        wrong.append((SOUND, fault_of(SOUND)))
    for files, found in wrong:
        print(f"{files}: got {found!r}")
    print(f"catalogue self-test: {len(FAULTS)} faults, 1 sound catalogue, {len(wrong)} wrong")
    return 1 if wrong else 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    folder, header, source = arguments
    try:
        write(load(pathlib.Path(folder)), header, source)
    except Fault as fault:
        print(f"catalogue: {fault}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
