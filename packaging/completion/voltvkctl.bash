# SPDX-License-Identifier: Apache-2.0
# bash completion of voltvkctl
_voltvkctl_options() {
  case $1 in
    'drive add '*) echo --type --size --model --serial ;;
    'fault set fail '*) echo --status ;;
    'fault set slow '*) echo --milliseconds ;;
    'io '*) echo --reads --writes --sequential --random --hot --seed ;;
    'events '*) echo --count ;;
  esac
  echo -o --output --help --version
}

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
        '') candidates='status drive fault io policy events' ;;
        'drive ') candidates='list add remove' ;;
        'fault ') candidates='set clear list' ;;
        'fault set ' | 'fault clear ') candidates='driver-absent adapter-absent fail throw slow' ;;
        'fault set fail ' | 'fault set throw ' | 'fault set slow ')
          candidates='createCachedLD createVirtualPool createVirtualVolume deleteVirtualPool deleteVirtualVolume
            flushVirtualVolume getEvents getIdentity getVirtualVolumeStats modifyVirtualPool modifyVirtualVolume
            refreshConfiguration resetVirtualVolumeStats'
          ;;
        'policy ') candidates='start stop run status' ;;
      esac
      if [[ $word == -* ]]; then candidates=$(_voltvkctl_options "$words"); fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}
complete -F _voltvkctl voltvkctl
