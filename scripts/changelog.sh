#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Assembles the change log from the fragments in changes/.
#
#   scripts/changelog.sh                         prints what the next release will say
#   scripts/changelog.sh --release VERSION DATE  puts it into CHANGELOG.md and removes the fragments
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kinds=(added changed fixed removed security)

section() {
  local kind fragment fragments
  echo "## $1"
  for kind in "${kinds[@]}"; do
    fragments=()
    for fragment in changes/*."$kind".md; do
      if [[ -f "$fragment" ]]; then fragments+=("$fragment"); fi
    done
    ((${#fragments[@]} > 0)) || continue
    printf '\n### %s\n\n' "${kind^}"
    for fragment in "${fragments[@]}"; do
      # One fragment is one entry: its lines after the first are set in below it.
      sed -e '1s/^/- /' -e '2,$s/^\(.\)/  \1/' "$fragment"
    done
  done
}

case "${1:-}" in
  "") section "Unreleased" ;;
  --release)
    version=${2:?version} date=${3:?date}
    [[ "$date" =~ ^[0-9]{4}-[0-9]{2}-[0-9]{2}$ ]] || { echo "the date is written YYYY-MM-DD" >&2 && exit 2; }
    text=$(section "$version - $date")
    new=$(mktemp)
    # Above the first release, below the introduction.
    TEXT=$text awk '/^## / && !done { print ENVIRON["TEXT"] "\n"; done = 1 } { print }
      END { if (!done) print "\n" ENVIRON["TEXT"] }' CHANGELOG.md >"$new"
    cat "$new" >CHANGELOG.md
    rm "$new"
    for kind in "${kinds[@]}"; do rm -f changes/*."$kind".md; done
    ;;
  *)
    sed -n '3,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
    ;;
esac
