# bash completion of voltvkctl
_voltvkctl() {
  local word=${COMP_WORDS[COMP_CWORD]} words='' candidates='' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      -o | --output) ((i++)) ;;
      -*) ;;
      *) words+=${COMP_WORDS[i]}' ' ;;
    esac
  done
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o | --output) candidates='table json' ;;
    --type) candidates='hdd ssd' ;;
    *)
      case $words in
        '') candidates='status drive fault io policy events -o --output --help --version' ;;
        'drive ') candidates='list add remove' ;;
        'drive add '*) candidates='--type --size --model --serial' ;;
        'fault ') candidates='set clear list' ;;
        'fault set ' | 'fault clear ') candidates='driver-absent adapter-absent fail throw slow' ;;
        'fault set fail '*) candidates='--status' ;;
        'fault set slow '*) candidates='--milliseconds' ;;
        'policy ') candidates='start stop run status' ;;
        'io '*) candidates='--reads --writes --sequential --random --hot --seed' ;;
        'events '*) candidates='--count' ;;
      esac
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}
complete -F _voltvkctl voltvkctl
