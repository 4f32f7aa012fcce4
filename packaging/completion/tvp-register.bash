# SPDX-License-Identifier: Apache-2.0
# bash completion of tvp-register
_tvp_register() {
  local word=${COMP_WORDS[COMP_CWORD]}
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --provider-dir | --cim-schema)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
  esac
  local options='--pegasus --sfcb --remove --dry-run --provider-dir --cim-schema --help --version'
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
}
complete -F _tvp_register tvp-register
