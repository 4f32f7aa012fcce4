# SPDX-License-Identifier: Apache-2.0
# bash completion of tvpcim
_tvpcim_options() {
  case $1 in
    'pool create') echo --drives --size --tier --chunk --description ;;
    'pool modify') echo --name --tier --description ;;
    'volume create') echo --pool --type --description --knob ;;
    'volume cache') echo --drive --size --ssd-pool --ssd-size --chunk --description --knob ;;
    'volume modify') echo --name --description --knob ;;
    ei* | gi*) echo --property ;;
    a[in]* | r[in]*) echo --assoc-class --result-class --role --result-role ;;
    watch*) echo --count --seconds ;;
  esac
  echo -o --output --wide --user --provider --schema --namespace --help --version
}

_tvpcim() {
  local verbs='identity drives pools pool volumes volume tree watch ei ein gi mi ci di im an ai rn ri classes mof'
  local word=${COMP_WORDS[COMP_CWORD]} verb='' action='' candidates='' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      -o | --output | --user | --provider | --schema | --namespace) ((i++)) ;;
      -*) ;;
      *) if [[ -z $verb ]]; then verb=${COMP_WORDS[i]}; elif [[ -z $action ]]; then action=${COMP_WORDS[i]}; fi ;;
    esac
  done
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o | --output) candidates=$(tvpcim --help 2>/dev/null | sed -n '/--output/s/.*{\(.*\)}.*/\1/p' | tr , ' ') ;;
    --tier) candidates='ssd hdd' ;;
    --type) candidates='tiered cached' ;;
    --knob) candidates='aggressive normal passive' ;;
    --provider | --schema)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    *)
      case $verb:$action in
        :) candidates="$verbs -o --output --wide --user --provider --schema --namespace --help --version" ;;
        pool:) candidates='create modify delete members' ;;
        volume:) candidates='create cache modify delete flush stats reset-stats members' ;;
        ei: | ein: | ci: | im: | mof:) candidates=$(tvpcim classes 2>/dev/null | awk '/^TVP_/ { print $1 }') ;;
      esac
      if [[ $word == -* && -n $verb ]]; then candidates=$(_tvpcim_options "$verb $action"); fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}
complete -F _tvpcim tvpcim
