#compdef tvpcim
# SPDX-License-Identifier: Apache-2.0
local curcontext=$curcontext state line
_arguments -C \
  '(-o --output)'{-o,--output}"[output format]:format:($(tvpcim --help 2>/dev/null |
    sed -n '/--output/s/.*{\(.*\)}.*/\1/p' | tr , ' '))" \
  '--wide[show every column]' \
  '--user[user name of the requests]:user:_users' \
  '--provider[library of the provider]:file:_files' \
  '--schema[file of the classes]:file:_files' \
  '--namespace[namespace of the requests]:namespace' \
  '--help[show the verbs]' \
  '--version[show the version]' \
  '1:verb:(identity drives pools pool volumes volume tree watch ei ein gi mi ci di im an ai rn ri classes mof)' \
  '*::argument:->arguments'

[[ $state == arguments ]] || return
local knob='--knob[how eagerly chunks move]:knob:(aggressive normal passive)'
case $line[1] in
  pool)
    _arguments '1:action:(create modify delete members)' '2:pool' '--drives[numbers or device names]:drives' \
      '--size[capacity]:size' '--tier[tier]:tier:(ssd hdd)' '--chunk[size of a chunk]:size' '--name[new name]:name' \
      '--description[description]:text'
    ;;
  volume)
    _arguments '1:action:(create cache modify delete flush stats reset-stats members)' '2:volume' \
      '*--pool[pool and what to take from it]:pool' '--type[type]:type:(tiered cached)' '--drive[hard disk]:drive' \
      '--size[from the hard disk]:size' '--ssd-pool[SSD pool]:pool' '--ssd-size[from the SSD pool]:size' \
      '--chunk[size of a chunk]:size' '--name[new name]:name' '--description[description]:text' $knob
    ;;
  ei | ein | ci | im | mof)
    _arguments "1:class:($(tvpcim classes 2>/dev/null | awk '/^TVP_/ { print $1 }'))" '*--property[only this one]:name'
    ;;
  an | ai | rn | ri)
    _arguments '1:path' '--assoc-class[association]:class' '--result-class[class of the results]:class' \
      '--role[role of the object]:role' '--result-role[role of the results]:role'
    ;;
  watch) _arguments '--count[end after so many]:number' '--seconds[end after so long]:seconds' ;;
esac
