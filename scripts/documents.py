#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the documents: links lead somewhere, the README shows the example as it is compiled, decisions
are numbered once and hold their three sections, change fragments have a kind.

    scripts/documents.py
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LINK = re.compile(r"\[[^\]\n]*\]\(([^)\s]+)\)")
FENCE = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)
KINDS = ("added", "changed", "fixed", "removed", "security")


def anchor(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def anchors(document):
    text = FENCE.sub("", document.read_text(encoding="utf-8"))
    return {anchor(match) for match in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def check_links(document):
    text = FENCE.sub("", document.read_text(encoding="utf-8"))
    for target in LINK.findall(text):
        if re.match(r"[a-z]+:", target):
            continue
        path, _, fragment = target.partition("#")
        found = (document.parent / path) if path else document
        if not found.exists():
            yield f"{target} leads nowhere"
        elif fragment and found.suffix == ".md" and fragment not in anchors(found):
            yield f"{target}: no such heading"


def check_readme():
    readme = (ROOT / "README.md").read_text(encoding="utf-8")
    example = (ROOT / "examples/first/first.cpp").read_text(encoding="utf-8").split("\n", 2)[2].strip()
    shown = [block.strip() for block in re.findall(r"^```cpp\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)]
    if example not in shown:
        yield "the first program isn't examples/first/first.cpp"


def check_decisions():
    numbers = {}
    for decision in sorted((ROOT / "docs/adr").glob("*.md")):
        number = decision.name[:4]
        if not re.fullmatch(r"\d{4}-[a-z0-9-]+\.md", decision.name):
            yield f"docs/adr/{decision.name}: named NNNN-title.md"
        if number in numbers:
            yield f"docs/adr/{decision.name}: {number} is taken by {numbers[number]}"
        numbers[number] = decision.name
        text = decision.read_text(encoding="utf-8")
        for section in ("Context", "Decision", "Consequence"):
            if not re.search(rf"^\W*{section}", text, re.MULTILINE):
                yield f"docs/adr/{decision.name}: no {section}"


def check_fragments():
    for fragment in sorted((ROOT / "changes").glob("*.md")):
        if fragment.name == "README.md":
            continue
        if not re.fullmatch(rf"[a-z0-9-]+\.({'|'.join(KINDS)})\.md", fragment.name):
            yield f"changes/{fragment.name}: named TOPIC.KIND.md, KIND one of {', '.join(KINDS)}"
        if not fragment.read_text(encoding="utf-8").strip():
            yield f"changes/{fragment.name}: empty"


def main():
    faults = []
    documents = [path for path in sorted(ROOT.rglob("*.md")) if "build" not in path.relative_to(ROOT).parts]
    for document in documents:
        faults += [f"{document.relative_to(ROOT)}: {fault}" for fault in check_links(document)]
    faults += [f"README.md: {fault}" for fault in check_readme()]
    faults += list(check_decisions()) + list(check_fragments())
    for fault in faults:
        print(fault)
    print(f"documents: {len(documents)} files, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
