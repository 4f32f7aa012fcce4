#compdef voltvkctl
# SPDX-License-Identifier: Apache-2.0
local curcontext=$curcontext state line
_arguments -C \
  '(-o --output)'{-o,--output}'[output format]:format:(table json)' \
  '--help[show the options]' \
  '--version[show the version]' \
  '1:command:((status\:"what there is" drive\:"list, add and remove drives" fault\:"make things go wrong"
    io\:"play reads and writes" policy\:"steer the policy engine" events\:"the newest events"))' \
  '*::argument:->arguments'

[[ $state == arguments ]] || return
local operations='createCachedLD createVirtualPool createVirtualVolume deleteVirtualPool deleteVirtualVolume
  flushVirtualVolume getEvents getIdentity getVirtualVolumeStats modifyVirtualPool modifyVirtualVolume
  refreshConfiguration resetVirtualVolumeStats'
case $line[1] in
  drive)
    _arguments '1:action:(list add remove)' '2:number' '--type[kind]:kind:(hdd ssd)' '--size[size]:size' \
      '--model[model]:text' '--serial[serial number]:text'
    ;;
  fault)
    _arguments '1:action:(set clear list)' '2:kind:(driver-absent adapter-absent fail throw slow)' \
      "3:operation:($operations)" '--status[what the call answers]:code' '--milliseconds[how much longer]:number'
    ;;
  io)
    _arguments '1:volume' '--reads[number]:number' '--writes[number]:number' '(--random)--sequential[chunk after chunk]' \
      '(--sequential)--random[any chunk]' '--hot[percentage]:percentage' '--seed[seed]:number'
    ;;
  policy) _arguments '1:action:(start stop run status)' ;;
  events) _arguments '--count[how many]:number' ;;
esac
