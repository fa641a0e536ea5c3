#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks who may include whom, and what public headers may hold.

    scripts/layering.py [FILE...]    all sources of the repository, or those named
    scripts/layering.py --self-test  plants one violation of each rule and sees that it is found
"""

import pathlib
import re
import subprocess
import sys
import tempfile

# The rooms of the library from low to high. A room includes its own headers, those of the rooms named
# here, the platform's services and the public headers that belong to any of these.
ROOMS = {
    "platform": set(),
    "kernel": set(),
    "audio": {"kernel"},
    "media": {"kernel", "audio"},
    "fileio": {"kernel", "audio", "media"},
    "engine": {"kernel", "audio"},
    "pixel": {"kernel"},
    "shared/zrtrans": {"kernel", "pixel"},
    "shared/graph": {"kernel", "audio"},
    "shared/internet": {"kernel"},
    "controls": {"kernel", "pixel"},
    "support": {"kernel"},
}

# The room of each public header. A new header names its room here; contract/ and platform/ are below all.
PUBLIC_HEADERS = {
    "kernel": "clock cpu dialogs errors kernel lang list locale log menus metric numtext os printf queue resources smpte streams timetext windowtext",
    "audio": "channels formattext iir levels resample samples waveformat",
    "pixel": "dib dib_alpha dib_blend dib_composite dib_copy dib_fields dib_key dib_scale hsl yuv",
    "media": "displist iff meterbuffer mriff peak riff riff64 wavefile",
}
ROOM_OF_HEADER = {name + ".h": room for room, names in PUBLIC_HEADERS.items() for name in names.split()}
WHOLE_INTERFACE = "marlo110k.h"
# The audio format descriptor is a field of records that hosts and engine share.
CONTRACT_MAY_INCLUDE = {"waveformat.h"}

# The start-up table is the one place from which the lowest room calls upwards.
MAY_CALL_UPWARDS = {"src/kernel/startup.cpp"}

STANDARD_HEADERS = set(
    "algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes "
    "climits clocale cmath compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef "
    "cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem forward_list "
    "fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list "
    "locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex "
    "scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf "
    "string string_view system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set "
    "utility valarray variant vector version".split())
# Vector instructions are part of the language here: kernels hold their variants as plain intrinsics.
INTRINSIC_HEADERS = set("emmintrin.h immintrin.h pmmintrin.h smmintrin.h tmmintrin.h xmmintrin.h".split())
HEAVY_HEADERS = set("chrono execution filesystem fstream functional future iostream map mutex regex sstream "
                    "thread unordered_map".split())
# In a public header nothing of the library's run time may show: what a host compiles against must not
# depend on the host's choice of standard library.
PUBLIC_STANDARD_HEADERS = set("atomic bit cstdarg cstddef cstdint cstring limits new type_traits utility".split())

# Outside headers beyond src/platform.
OUTSIDE_EXCEPTIONS = {
    "apps/marlo/image_file.cpp": {"png.h", "jpeglib.h"},
    "apps/marlo/terminal.cpp": {"termios.h", "unistd.h", "sys/ioctl.h"},
}
JSON_HEADER = re.compile(r"nlohmann/.*")

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.MULTILINE)
COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)


def blank_comments(text):
    """Replaces comments by white space, so that line numbers stay, and leaves strings alone."""
    def blank(match):
        found = match.group(0)
        return re.sub(r"[^\n]", " ", found) if found.startswith("/") else found
    return COMMENT.sub(blank, text)


def room_of(path):
    """The room of a file below src/, by its longest matching folder."""
    inner = path.removeprefix("src/")
    matches = [room for room in ROOMS if inner.startswith(room + "/")]
    return max(matches, key=len) if matches else None


class Checker:
    def __init__(self, root):
        self.root = root
        self.faults = []

    def fault(self, path, line, text):
        self.faults.append(f"{path}:{line}: {text}")

    def check(self, path):
        source = (self.root / path).read_text(encoding="utf-8", errors="replace")
        text = blank_comments(source)
        includes = [(text.count("\n", 0, match.start()) + 1, match.group(1) == "<", match.group(2))
                    for match in INCLUDE.finditer(text)]
        is_header = path.endswith(".h")
        is_public = path.startswith("include/")
        for line, angled, name in includes:
            if is_header and angled and name in HEAVY_HEADERS:
                self.fault(path, line, f"<{name}> is too heavy for a header")
            if is_public:
                self.check_public_include(path, line, angled, name)
            elif path.startswith("src/"):
                self.check_source_include(path, line, angled, name)
            elif path.startswith("apps/"):
                self.check_host_include(path, line, angled, name)
        if is_header:
            self.check_each(path, text, r"\busing\s+namespace\b", "a header never opens a namespace for its users")
            # A host's header may be a list of macro calls that is meant to be included more than once.
            if not path.startswith("apps/") and "#pragma once" not in text:
                self.fault(path, 1, "a header starts with #pragma once")
        if is_public:
            self.check_public_text(path, text)

    def check_each(self, path, text, pattern, message):
        for match in re.finditer(pattern, text):
            self.fault(path, text.count("\n", 0, match.start()) + 1, message)

    def check_public_include(self, path, line, angled, name):
        if angled:
            if name not in PUBLIC_STANDARD_HEADERS and name not in HEAVY_HEADERS:
                self.fault(path, line, f"<{name}> may not stand in a public header")
            return
        if not name.startswith("marlo110k/"):
            self.fault(path, line, f'"{name}" isn\'t a public header')
            return
        inner, target = path.removeprefix("include/marlo110k/"), name.removeprefix("marlo110k/")
        if inner == WHOLE_INTERFACE:
            return
        if inner.startswith("contract/"):
            if not target.startswith("contract/") and target not in CONTRACT_MAY_INCLUDE:
                self.fault(path, line, f'contract headers include one another only, not "{name}"')
        elif inner.startswith("platform/"):
            if not target.startswith(("contract/", "platform/")) and target != "export.h":
                self.fault(path, line, f'the platform knows nothing of "{name}"')
        elif inner != "export.h":
            room = self.room_of_public(path, line, inner)
            if room:
                self.check_public_target(path, line, room, target)

    def check_source_include(self, path, line, angled, name):
        room = room_of(path)
        if room is None:
            self.fault(path, line, "this folder has no place in the order of rooms")
            return
        if angled:
            if room != "platform" and name not in STANDARD_HEADERS | INTRINSIC_HEADERS:
                self.fault(path, line, f"<{name}>: outside headers stay behind src/platform")
            return
        if name.startswith("marlo110k/"):
            self.check_public_target(path, line, room, name.removeprefix("marlo110k/"))
            return
        target = room_of("src/" + name)
        if target is None:
            # Beside the includer, without a folder: its own room.
            if "/" in name and not (self.root / path).parent.joinpath(name).exists():
                self.fault(path, line, f'"{name}" is in no room')
            return
        if target == room or target == "platform" or target in ROOMS[room] or path in MAY_CALL_UPWARDS:
            return
        self.fault(path, line, f'{room} may not include {target} ("{name}")')

    def check_public_target(self, path, line, room, target):
        if target == WHOLE_INTERFACE:
            self.fault(path, line, "name the headers that are needed, not the whole interface")
            return
        if target.startswith(("contract/", "platform/")) or target == "export.h" or path in MAY_CALL_UPWARDS:
            return
        owner = self.room_of_public(path, line, target)
        if owner and owner != room and owner not in ROOMS[room]:
            self.fault(path, line, f'{room} may not include {owner} ("marlo110k/{target}")')

    def room_of_public(self, path, line, header):
        room = ROOM_OF_HEADER.get(header)
        if room is None:
            self.fault(path, line, f"{header} has no room yet: add it to PUBLIC_HEADERS of scripts/layering.py")
        return room

    def check_host_include(self, path, line, angled, name):
        if name.startswith("marlo110k/"):
            return
        if angled:
            allowed = STANDARD_HEADERS | OUTSIDE_EXCEPTIONS.get(path, set())
            if name not in allowed and not JSON_HEADER.fullmatch(name):
                self.fault(path, line, f"<{name}>: the host uses the public interface only")
            return
        if any((folder / name).exists() for folder in ((self.root / path).parent, self.root / "apps/marlo")):
            return
        self.fault(path, line, f'"{name}": the host uses the public interface only')

    def check_public_text(self, path, text):
        # Two slots of the table under this platform's rules would shift all that follow.
        self.check_each(path, text, r"\bvirtual\s+~", "no virtual destructor in a public header")
        self.check_each(path, text, r"\blong\b", "long differs between platforms: use a fixed-width type")
        self.check_each(path, text, r"\bwchar_t\b", "text is char16_t")
        if path.startswith("include/marlo110k/contract/"):
            self.check_each(path, text, r"\bZR_API\b", "contract headers hold types only")
        for match in re.finditer(r"\bZR_API\b(?!\s*__attribute__)([^;{]*)([;{])", text):
            declaration = match.group(1)
            if "(" not in declaration:
                continue
            line = text.count("\n", 0, match.start()) + 1
            if "noexcept" not in declaration:
                self.fault(path, line, "no exception crosses the boundary: mark it noexcept")
            if re.search(r"\bstd::", declaration):
                self.fault(path, line, "no std:: type crosses the boundary")


def repository_files(root):
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=root,
                            check=True, capture_output=True).stdout.decode().split("\0")
    return sorted({name for name in listed
                   if re.match(r"(include|src|apps)/.*\.(h|cpp)$", name) and (root / name).exists()})


# One violation of each rule: the file, its text, and words of the message that must come.
VIOLATIONS = [
    ("include/marlo110k/list.h", '#include "kernel/private.h"', "isn't a public header"),
    ("include/marlo110k/list.h", "#include <string>", "may not stand in a public header"),
    ("include/marlo110k/list.h", "#include <thread>", "too heavy for a header"),
    ("include/marlo110k/list.h", '#include "marlo110k/samples.h"', "kernel may not include audio"),
    ("include/marlo110k/list.h", '#include "marlo110k/marlo110k.h"', "not the whole interface"),
    ("include/marlo110k/nowhere.h", '#include "marlo110k/list.h"', "has no room yet"),
    ("include/marlo110k/contract/unknown.h", '#include "marlo110k/list.h"', "contract headers include one another"),
    ("include/marlo110k/contract/unknown.h", "ZR_API int32_t Call() noexcept;", "hold types only"),
    ("include/marlo110k/contract/unknown.h", "struct I { virtual ~I() = default; };", "no virtual destructor"),
    ("include/marlo110k/platform/file.h", '#include "marlo110k/list.h"', "the platform knows nothing"),
    ("include/marlo110k/list.h", "struct R { unsigned long value; };", "fixed-width type"),
    ("include/marlo110k/list.h", "ZR_API void Call(const wchar_t* text) noexcept;", "text is char16_t"),
    ("include/marlo110k/list.h", "ZR_API void Call(int32_t value);", "mark it noexcept"),
    ("include/marlo110k/list.h", "ZR_API void Call(const std::array<int, 2>& v) noexcept;", "no std:: type"),
    ("include/marlo110k/list.h", "using namespace plat;", "never opens a namespace"),
    ("src/kernel/list.h", "#include <functional>", "too heavy for a header"),
    ("src/kernel/list.cpp", "#include <unistd.h>", "outside headers stay behind"),
    ("src/audio/copy.cpp", "#include <cpuid.h>", "outside headers stay behind"),
    ("src/kernel/list.cpp", '#include "audio/rules.h"', "kernel may not include audio"),
    ("src/audio/copy.cpp", '#include "media/riff/walk.h"', "audio may not include media"),
    ("src/engine/mixer/cycle.cpp", '#include "media/riff/walk.h"', "engine may not include media"),
    ("src/pixel/copy.cpp", '#include "marlo110k/samples.h"', "pixel may not include audio"),
    ("src/controls/fader.cpp", '#include "engine/mixer/bus.h"', "controls may not include engine"),
    ("src/platform/sys/file.cpp", '#include "kernel/list.h"', "platform may not include kernel"),
    ("src/platform/sys/file.cpp", '#include "marlo110k/list.h"', "platform may not include kernel"),
    ("src/elsewhere/a.cpp", "#include <cstdint>", "no place in the order of rooms"),
    ("apps/marlo/info.cpp", '#include "media/riff/walk.h"', "the host uses the public interface only"),
    ("apps/marlo/info.cpp", "#include <termios.h>", "the host uses the public interface only"),
]
# What must pass, so that the rules above aren't simply deaf or hostile.
ALLOWED = [
    ("include/marlo110k/list.h", '#include "marlo110k/platform/lock.h"\n// long, wchar_t, virtual ~ in a comment'),
    ("include/marlo110k/contract/engine.h", '#include "marlo110k/waveformat.h"'),
    ("include/marlo110k/samples.h", '#include "marlo110k/list.h"\nZR_API void Call(int64_t value) noexcept;'),
    ("src/kernel/startup.cpp", '#include "controls/start.h"\n#include "marlo110k/dib.h"'),
    ("src/media/riff/walk.cpp", '#include "audio/rules.h"\n#include "platform/base/text.h"\n#include <vector>'),
    ("src/audio/mix_sse2.cpp", "#include <emmintrin.h>"),
    ("src/platform/sys/file.cpp", "#include <unistd.h>\n#include <thread>"),
    ("apps/marlo/terminal.cpp", "#include <termios.h>\n#include <marlo110k/list.h>"),
    ("apps/marlo/json_output.cpp", "#include <nlohmann/json.hpp>"),
]


def faults_of(path, text):
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / path).parent.mkdir(parents=True)
        (root / path).write_text(("#pragma once\n" if path.endswith(".h") else "") + text + "\n", encoding="utf-8")
        checker = Checker(root)
        checker.check(path)
        return checker.faults


def self_test():
    failures = 0
    for path, text, expected in VIOLATIONS:
        found = faults_of(path, text)
        if len(found) != 1 or expected not in found[0]:
            failures += 1
            print(f"{path} with {text!r}: wanted one fault \"{expected}\", got {found}")
    for path, text in ALLOWED:
        found = faults_of(path, text)
        if found:
            failures += 1
            print(f"{path} with {text!r}: wanted none, got {found}")
    if "#pragma once" not in str(self_test_without_guard()):
        failures += 1
        print("a header without #pragma once passed")
    print(f"layering self-test: {len(VIOLATIONS) + 1} violations, {len(ALLOWED)} allowed, {failures} wrong")
    return 1 if failures else 0


def self_test_without_guard():
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "src/kernel").mkdir(parents=True)
        (root / "src/kernel/list.h").write_text("struct A;\n", encoding="utf-8")
        checker = Checker(root)
        checker.check("src/kernel/list.h")
        return checker.faults


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(__file__).resolve().parent.parent
    files = repository_files(root)
    if arguments:
        chosen = {str(pathlib.Path(name).resolve().relative_to(root)) for name in arguments}
        files = [name for name in files if name in chosen]
    checker = Checker(root)
    for name in files:
        checker.check(name)
    for fault in checker.faults:
        print(fault)
    print(f"layering: {len(files)} files, {len(checker.faults)} faults")
    return 1 if checker.faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
