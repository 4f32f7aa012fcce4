# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What the tours share: headings, and steps that show a command before they run it. Sourced.

heading() { printf '\n--- %s\n' "$*"; }
# Shows a line of a shell.
typed() { printf '\n$ %s\n' "$*"; }
# Shows a command as one would type it.
show() {
  local word line=
  for word in "$@"; do
    case $word in *' '*) line+=" '$word'" ;; *) line+=" $word" ;; esac
  done
  typed "${line# }"
}
# Shows a command, then runs it.
step() {
  show "$@"
  "$@"
}
