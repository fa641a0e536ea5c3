#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what the shared library exports with what the public headers mark ZR_API, overload by overload.

    exports.py LIBRARY INCLUDE-FOLDER
    exports.py --self-test
"""

import collections
import pathlib
import re
import subprocess
import sys

COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
PREPROCESSOR = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*$", re.MULTILINE)
CLASS_HEAD = re.compile(r"\b(class|struct|union)\s+(ZR_API\s+)?([A-Za-z_]\w*)\s*(?:final\s*)?(?::[^;{]*)?$")
NAMESPACE_HEAD = re.compile(r"\bnamespace\s+([A-Za-z_][\w:]*)\s*$")
FUNCTION_NAME = re.compile(r"(operator\s*(?:\(\s*\)|\[\s*\]|[^\s\w(]+|[A-Za-z_]\w*)|~?[A-Za-z_]\w*)\s*\(")

# A function that gives a function pointer is written around its own name: void (*Getter(int32_t))(void*).
POINTER_GIVER = re.compile(r"\(\s*\*\s*([A-Za-z_]\w*)\s*\(")


def function_name(declaration):
    """The name in front of the parameter list, or None for what isn't a function."""
    plain = re.sub(r"\b(alignas|noexcept|decltype|__attribute__)\s*\(+[^()]*\)+", " ", declaration)
    match = POINTER_GIVER.search(plain) or FUNCTION_NAME.search(plain)
    return re.sub(r"\s+", "", match.group(1)) if match else None


def declared(text):
    """Qualified names of the exports in a header's text, each with its number of overloads."""
    text = PREPROCESSOR.sub("", COMMENT.sub("", text))
    found = collections.defaultdict(set)
    scopes = []  # (kind, name, exported)
    statement = ""
    for character in text:
        if character == "{":
            head = statement.strip()
            namespace, record = NAMESPACE_HEAD.search(head), CLASS_HEAD.search(head)
            if namespace:
                scopes.append(("namespace", namespace.group(1), False))
            elif record:
                scopes.append(("class", record.group(3), bool(record.group(2))))
            else:
                scopes.append(("body", "", False))
            statement = ""
        elif character == "}":
            if scopes:
                scopes.pop()
            statement = ""
        elif character == ";":
            note(found, scopes, " ".join(statement.split()))
            statement = ""
        else:
            statement += character
    return {name: len(declarations) for name, declarations in found.items()}


def note(found, scopes, statement):
    if any(kind == "body" for kind, _, _ in scopes):
        return
    member = bool(scopes) and scopes[-1][0] == "class"
    statement = re.sub(r"^(public|protected|private)\s*:\s*", "", statement)
    if "ZR_API" not in statement and not (member and scopes[-1][2]):
        return
    if re.search(r"=\s*(0|default|delete)$", statement) or re.match(r"(using|typedef|friend|static_assert|template)\b", statement):
        return  # A template has no code of its own that could be exported.
    if re.match(r"(class|struct|union|enum)\b[^(]*$", statement):
        return
    name = function_name(statement)
    if name is None:
        if member:
            return  # A field.
        name = re.sub(r"\[.*", "", statement).split()[-1]
    qualified = "::".join([scope for _, scope, _ in scopes if scope] + [name])
    found[qualified].add(statement)


def exported(library):
    """Qualified names of the defined dynamic symbols, each with its number of signatures."""
    listing = subprocess.run(["nm", "-D", "-C", "--defined-only", str(library)], check=True, capture_output=True,
                             text=True).stdout
    found = collections.defaultdict(set)
    for line in listing.splitlines():
        _, kind, symbol = line.split(" ", 2)
        symbol = re.sub(r"@+MARLO_[\w.]+$", "", symbol)
        if kind == "A" and symbol.startswith("MARLO_"):
            continue  # The version node itself.
        found[without_parameters(symbol)].add(symbol)
    return {name: len(signatures) for name, signatures in found.items()}


def without_parameters(symbol):
    match = re.match(r"((?:[\w~]+::)*(?:operator\(\)|operator[^(]+|[\w~]+))\(", symbol)
    return re.sub(r"\s+", "", match.group(1)) if match else symbol


def compare(wanted, got):
    faults = []
    for name in sorted(wanted.keys() | got.keys()):
        if name not in got:
            faults.append(f"declared, not exported: {name}")
        elif name not in wanted:
            # The tables and type facts of an exported class go with it.
            owner = re.match(r"(?:vtable|typeinfo|typeinfo name) for (.*)", name)
            if not owner or not any(other.startswith(owner.group(1) + "::") for other in wanted):
                faults.append(f"exported, not declared: {name}")
        elif wanted[name] != got[name]:
            faults.append(f"{name}: {wanted[name]} declared, {got[name]} exported")
    return faults


SAMPLE = """
#define ZR_API __attribute__((visibility("default")))
namespace plat {
class Handle;
ZR_API Handle* Open(const char16_t* path, uint32_t flags = 0) noexcept;
struct Plain { int32_t field; void Inner() noexcept; };
}  // namespace plat
// ZR_API void Commented() noexcept;
ZR_API void (*Getter(int32_t kind))(void*) noexcept;
ZR_API void Call(int32_t a) noexcept;
ZR_API void Call(double a) noexcept;
ZR_API bool operator==(const A& left, const A& right) noexcept;
ZR_API extern const uint8_t kTable[16];
inline int Local() { struct ZR_API Hidden { void Method(); }; return Call(3); }
struct ZR_API Record {
  uint32_t size;
  void Init(uint32_t rate) noexcept;
  void Init() noexcept;
  bool operator==(const Record& other) const noexcept;
  int Inline() const { return 1; }
  Record() = default;
  template <typename Sample>
  void Run(Sample* samples) noexcept;
 private:
  static int32_t Count(const void* (*callback)(int32_t)) noexcept;
};
struct ZR_API Later;
"""
SAMPLE_NAMES = {"plat::Open": 1, "Getter": 1, "Call": 2, "operator==": 1, "kTable": 1, "Record::Init": 2,
                "Record::operator==": 1, "Record::Count": 1}


def self_test():
    names = declared(SAMPLE)
    assert names == SAMPLE_NAMES, names
    assert without_parameters("plat::Open(char16_t const*)") == "plat::Open"
    assert without_parameters("Record::operator==(Record const&) const") == "Record::operator=="
    assert without_parameters("kTable") == "kTable"
    good = dict(SAMPLE_NAMES)
    assert compare(SAMPLE_NAMES, {**good, "vtable for Record": 1, "typeinfo for Record": 1}) == []
    assert compare(SAMPLE_NAMES, {**good, "vtable for Other": 1}) == ["exported, not declared: vtable for Other"]
    assert compare(SAMPLE_NAMES, {**good, "Call": 1}) == ["Call: 2 declared, 1 exported"]
    del good["Getter"]
    assert compare(SAMPLE_NAMES, {**good, "Leaked": 1}) == ["declared, not exported: Getter",
                                                            "exported, not declared: Leaked"]
    print("exports self-test: right")
    return 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    library, include = arguments
    wanted = collections.Counter()
    for header in sorted(pathlib.Path(include).rglob("*.h")):
        wanted.update(declared(header.read_text(encoding="utf-8")))
    got = exported(library)
    faults = compare(wanted, got)
    for fault in faults:
        print(fault)
    print(f"exports: {sum(wanted.values())} declared, {sum(got.values())} exported, {len(faults)} faults")
    return 1 if faults or not wanted else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
