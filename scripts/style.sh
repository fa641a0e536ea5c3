#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks how the sources look: formatting, first lines, length, layering, documents and clang-tidy.
#
#   scripts/style.sh [--no-install] [--fix] [--tidy none|changed|all]
#
# --fix formats the sources in place. clang-tidy needs the compile commands of the dev preset and looks, by
# default, at what differs from main.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

install=() fix=no tidy=changed
while (($# > 0)); do
  case "$1" in
    --no-install) install=(--no-install) ;;
    --fix) fix=yes ;;
    --tidy) tidy=${2:?} && shift ;;
    *)
      sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
      exit 2
      ;;
  esac
  shift
done
need_packages "${install[@]}" check

failed=0
complain() {
  echo "$*"
  failed=1
}
# Tracked and new files alike, without what git ignores.
files_like() { git ls-files -z --cached --others --exclude-standard -- "$@" | xargs -0 -r ls -d 2>/dev/null | sort -u; }

mapfile -t sources < <(files_like '*.h' '*.cpp')
mapfile -t scripts < <(files_like '*.sh' '*.py' '*.cmake' '*CMakeLists.txt' .ci/run)

# ---- Formatting ------------------------------------------------------------------------------------
if [[ $fix == yes ]]; then
  clang-format-14 -i "${sources[@]}"
elif ! printf '%s\0' "${sources[@]}" | xargs -0 -P 2 -n 20 clang-format-14 --dry-run -Werror; then
  complain "formatting: run scripts/style.sh --fix"
fi

# ---- First lines and length ------------------------------------------------------------------------
for file in "${sources[@]}"; do
  mapfile -t -n 2 head <"$file"
  [[ "${head[0]:-}" == "// SPDX-License-Identifier: Apache-2.0" ]] || complain "$file: the first line is the licence"
  [[ "${head[1]:-}" == "// "* ]] || complain "$file: the second line says what the file is for"
done
for file in "${scripts[@]}"; do
  head -n 2 "$file" | grep -q "^# SPDX-License-Identifier: Apache-2.0$" || complain "$file: no licence line"
done
for file in "${sources[@]}" "${scripts[@]}"; do
  lines=$(wc -l <"$file")
  ((lines <= 800)) || complain "$file: $lines lines; cut it by concept (800 at most)"
done

# ---- Layering and documents ------------------------------------------------------------------------
scripts/layering.py --self-test || failed=1
scripts/catalogue.py --self-test || failed=1
scripts/layering.py || failed=1
scripts/documents.py || failed=1

# ---- Static checks ---------------------------------------------------------------------------------
case "$tidy" in
  all) mapfile -t checked < <(files_like 'src/*.cpp' 'apps/*.cpp') ;;
  changed)
    mapfile -t checked < <({
      git diff --name-only --diff-filter=d main -- 'src/*.cpp' 'apps/*.cpp'
      git ls-files --others --exclude-standard -- 'src/*.cpp' 'apps/*.cpp'
    } 2>/dev/null | sort -u)
    ;;
  *) checked=() ;;
esac
if ((${#checked[@]} > 0)); then
  [[ -f build/dev/compile_commands.json ]] || cmake --preset dev >/dev/null
  if ! printf '%s\0' "${checked[@]}" | xargs -0 -P 2 -n 1 clang-tidy-14 -p build/dev --quiet 2>/dev/null; then
    complain "clang-tidy: see above"
  fi
fi
echo "style: ${#sources[@]} sources, ${#scripts[@]} scripts, ${#checked[@]} through clang-tidy"
exit $failed
