#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The whole life of a tiered and a cached volume through the provider, on a scratch state: each step shows
# the command and what it prints. usage: tour.sh BIN_DIRECTORY
set -euo pipefail
PATH=$(cd "$1" && pwd):$PATH
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
scratch=$(mktemp -d)
# shellcheck source=host/tour-steps.sh
. "$source/host/tour-steps.sh"
watcher=
cleanUp() {
  [ -z "$watcher" ] || kill "$watcher" 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanUp EXIT
export VOLTVK_STATE=$scratch/state.db
# During the tour the provider reads the event catalogue of this tree instead of the installed one.
export TVP_TEST_ROOT=$scratch/root
mkdir -p "$TVP_TEST_ROOT/usr/VolMan"
cp "$source/share/TVPEvents.properties" "$TVP_TEST_ROOT/usr/VolMan/"

# addDrive VARIABLE OPTION...: shows and runs `voltvkctl drive add`, which prints the drive's number.
addDrive() {
  local variable=$1 number
  shift
  show voltvkctl drive add "$@"
  number=$(voltvkctl drive add "$@")
  printf '%s\n' "$number"
  printf -v "$variable" '%s' "$number"
}

echo 'This tour works on its own scratch state and removes it at the end. Your own configuration is not'
echo 'touched, and nothing writes to a drive: pools and volumes are book-keeping.'

heading 'The product, and the drives of this machine'
step tvpcim identity
step tvpcim drives

heading 'Four virtual drives to work with'
addDrive slow1 --type hdd --size 200GiB --model Spinner --serial HDD-1
addDrive slow2 --type hdd --size 200GiB --model Spinner --serial HDD-2
addDrive fast1 --type ssd --size 100GiB --model Flash --serial SSD-1
addDrive fast2 --type ssd --size 100GiB --model Flash --serial SSD-2

heading 'A client subscribes to indications and waits for the first one'
show tvpcim watch --count 1 '&'
tvpcim watch --count 1 --seconds 30 >"$scratch/indication" 2>"$scratch/subscribed" &
watcher=$!
for _ in $(seq 100); do
  [ -s "$scratch/subscribed" ] && break
  kill -0 "$watcher"
  sleep 0.1
done
cat "$scratch/subscribed"

heading 'Two pools: hard disks and SSDs'
step tvpcim pool create slow --drives "$slow1" --tier hdd --size 150GiB --chunk 1MiB
step tvpcim pool create fast --drives "$fast1,$fast2" --tier ssd --size 100GiB --chunk 1MiB
step tvpcim pool members fast

heading 'The indication arrives within one poll of the listener, with its text from the catalogue'
wait "$watcher"
watcher=
cat "$scratch/indication"

heading 'A tiered volume on both pools, and a cached one on its own drive'
step tvpcim volume create data --pool slow:1GiB --pool fast:256MiB
step tvpcim volume cache mail --drive "$slow2" --size 50GiB --ssd-pool fast --ssd-size 5GiB
step tvpcim volumes
step tvpcim volume members data
step tvpcim tree

heading 'I/O to a small hot part, a round of the policy engine, and the same I/O again: more of it hits the SSDs'
step voltvkctl io data --reads 4000 --writes 1000 --random --hot 90 --seed 1
step tvpcim volume stats data
step voltvkctl policy run
step voltvkctl io data --reads 4000 --writes 1000 --random --hot 90 --seed 1
step tvpcim volume stats data

heading 'Modify, write the cache back, reset the statistics'
step tvpcim volume modify data --knob aggressive --description 'tiered over two pools'
step voltvkctl io mail --writes 500 --random --hot 90 --seed 2
step tvpcim volume flush mail
step tvpcim volume reset-stats data

heading 'Delete everything'
step tvpcim volume delete mail
step tvpcim volume delete data
step tvpcim pool delete fast
step tvpcim pool delete slow
step tvpcim pools
