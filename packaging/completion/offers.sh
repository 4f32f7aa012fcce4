# SPDX-License-Identifier: Apache-2.0
# What the help of a command offers after some words, one offer on a line: "word NAME DESCRIPTION" for verbs and other
# fixed words, "option NAME VALUE" with the sort or the choices of its value, "argument NAME". The help is the only list
# of them, and with --help a command does nothing else.
_@function@_offers() {
  "$@" --help 2>/dev/null | awk '
    /^[A-Z][a-z]*:$/ { section = $1; next }
    !/^  / { section = ""; next }
    section ~ /^(Subcommands|Operations|Kinds):$/ && /^  [A-Za-z]/ {
      name = $1
      sub(/^  [^ ]+ */, "")
      print "word", name, $0
    }
    section == "Positionals:" && /^  [A-Z]/ { print "argument", $1 }
    section == "Options:" && /^  -/ {
      sub(/^  /, "")
      sub(/  .*/, "")
      value = $2 ~ /^([A-Z].*s:$|\(|$)/ ? "" : $2
      count = split($1, names, ",")
      for (i = 1; i <= count; i++) print "option", names[i], value
    }'
}
