#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The tour of tour.sh on real volumes, in the emulated machine with its drives: the first part ends with a power cut,
# the second begins with the next start of the machine. usage: tour-real.sh first|second
set -euo pipefail
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=host/tour-steps.sh
. "$source/host/tour-steps.sh"
fail() { printf 'tour: %s\n' "$*" >&2; exit 1; }
# Everything on the drives is lost here, which is right for those of the emulated machine only.
grep -q machine.drives= /proc/cmdline || fail 'this tour writes to drives; run it with ./dev machine --tour'
export TVP_TEST_ROOT=/tmp/root
mkdir -p "$TVP_TEST_ROOT/usr/VolMan" /mnt/data /mnt/mail
cp "$source/share/TVPEvents.properties" "$TVP_TEST_ROOT/usr/VolMan/"
sums=/var/lib/voltvk/sums

# refused COMMAND...: a step that is expected to fail.
refused() {
  if step "$@" 2>&1; then fail "this should have been refused: $*"; fi
}
mountAll() {
  step mount /dev/tvp/vol1 /mnt/data
  step mount /dev/tvp/vol2 /mnt/mail
}
unmountAll() { step umount /mnt/data /mnt/mail; }
expectContents() { step sha256sum --check "$sums"; }
readHotFile() {
  typed 'for i in 1 2 3 4; do dd if=/mnt/data/hot of=/dev/null bs=64K iflag=direct; done'
  for _ in 1 2 3 4; do dd if=/mnt/data/hot of=/dev/null bs=64K iflag=direct status=none; done
}

createAndFill() {
  heading 'From now on pools occupy drives, and volumes are block devices'
  step voltvkctl backing lvm
  step tvpcim drives

  heading 'Two pools: a hard disk and an SSD'
  step tvpcim pool create slow --drives 0 --tier hdd --size 1GiB --chunk 1MiB
  step tvpcim pool create fast --drives 2 --tier ssd --size 1GiB --chunk 1MiB

  heading 'A tiered volume on both pools, and a cached one on the whole other hard disk'
  step tvpcim volume create data --pool slow:512MiB --pool fast:64MiB
  step tvpcim volume cache mail --drive 1 --size 2GiB --ssd-pool fast --ssd-size 256MiB
  step voltvkctl volume list
  step tvpcim volume members data
  step lvs --all -o lv_name,segtype,lv_size,seg_pe_ranges tvp

  heading 'File systems, and something in them'
  step mkfs.ext4 -q /dev/tvp/vol1
  step mkfs.ext4 -q /dev/tvp/vol2
  mountAll
  local file size
  for file in data/cold:24M data/hot:12M mail/letters:16M; do
    size=${file#*:}
    file=/mnt/${file%:*}
    typed "head -c $size /dev/urandom >$file"
    head -c "$size" /dev/urandom >"$file"
    sha256sum "$file" >>"$sums"
  done
  step sync
  cat "$sums"
}

moveAndFlush() {
  heading 'Reads of a hot file, a round of the policy engine, and the same reads again: now the SSD serves them'
  step voltvkctl policy run
  readHotFile
  step tvpcim volume reset-stats data
  step voltvkctl heat data
  step voltvkctl policy run
  step voltvkctl heat data
  readHotFile
  step tvpcim volume stats data

  heading 'Modify; what is in the cache only is written back'
  step tvpcim volume modify data --knob aggressive --description 'tiered over two pools'
  step tvpcim volume stats mail
  step tvpcim volume flush mail

  heading 'A mounted volume cannot be deleted'
  refused tvpcim volume delete data
}

firstPart() {
  createAndFill
  moveAndFlush
  heading 'The power is cut, as soon as one more file is written'
  step cp /mnt/data/hot /mnt/mail/copy
  sha256sum /mnt/mail/copy >>"$sums"
  step sync
  typed 'echo b >/proc/sysrq-trigger'
  echo b >/proc/sysrq-trigger
  sleep infinity
}

reachWithLvmAlone() {
  heading 'The data can be reached without these programs: LVM and mount are enough'
  unmountAll
  step vgchange --activate n tvp
  local programs
  programs=$(dirname "$(command -v voltvkctl)")
  mount -t tmpfs tmpfs "$programs"
  step ls "$programs"
  step vgchange --activate y tvp
  mountAll
  expectContents
  unmountAll
  umount "$programs"
}

deleteAll() {
  heading 'Delete everything: the drives are as empty as before'
  step tvpcim volume delete mail
  step tvpcim volume delete data
  step tvpcim pool delete fast
  step tvpcim pool delete slow
  step voltvkctl check
  step tvpcim drives
  refused blkid --probe /dev/sda /dev/sdb /dev/sdc /dev/sdd
  [ -z "$(pvs --noheadings)$(vgs --noheadings)" ] || fail 'something is left on the drives'
}

secondPart() {
  heading 'The machine has started again: the state and the drives agree, and every byte is as it was'
  step voltvkctl check
  step voltvkctl volume list
  mountAll
  expectContents
  step voltvkctl heat data
  reachWithLvmAlone
  deleteAll
}

case ${1:-} in
  first) firstPart ;;
  second) secondPart ;;
  *) fail 'usage: tour-real.sh first|second' ;;
esac
