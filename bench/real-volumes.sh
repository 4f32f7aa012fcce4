#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Measures real volumes with fio, on the emulated machine with hard disks that are throttled to 200 operations a second.
# Prints the tables of docs/performance.md. Run by `./dev bench --machine`.
set -euo pipefail
grep -q machine.drives= /proc/cmdline || { echo "real-volumes.sh writes to drives: run it with ./dev bench --machine" >&2; exit 2; }

seconds=${SECONDS_EACH:-20}
turns=3
export VOLTVK_STATE=/var/lib/voltvk/state.db

# Fields of fio's terse output, version 3.
READS=8 LONGEST_READ=15 WRITES=49
# measure DEVICE RW [SECONDS]: 90% of the accesses in the first 5% of the device, 4 KiB each, 16 at a time.
measure() {
  fio --name=hot --filename="$1" --rw="$2" --rwmixread=70 --bs=4k --direct=1 --ioengine=libaio --iodepth=16 \
    --random_distribution=zoned:90/5:10/95 --randrepeat=0 --time_based --runtime="${3:-$seconds}" \
    --output-format=terse --terse-version=3
}
perSecond() { awk -F';' -v r=$READS -v w=$WRITES '{ print int($r + $w) }'; }
longestRead() { awk -F';' -v l=$LONGEST_READ '{ printf "%.0f", $l / 1000 }'; }
row() { printf '| %s | %s | %s | %.1f |\n' "$1" "$2" "$3" "$(awk "BEGIN { print $3 / $alone }")"; }
quietly() { "$@" >/dev/null; }
deviceOf() { voltvkctl -o json volume list | grep -A20 "\"name\": \"$1\"" | sed -n 's/.*"device": "\(.*\)".*/\1/p' | head -n1; }

quietly voltvkctl backing lvm
quietly tvpcim pool create slow --tier hdd --drives 0 --size 1536MiB --chunk 1MiB
quietly tvpcim pool create fast --tier ssd --drives 2 --size 512MiB --chunk 1MiB
# The other hard disk and the other SSD are for the cache that is set up by hand.
quietly vgcreate -s 1m other /dev/sdb /dev/sdd

printf '| volume of 1 GiB, 128 MiB of it or its cache on an SSD | accesses | per second | times the hard disk |\n|---|---|---:|---:|\n'
for rw in randread randrw; do
  shown=$([ $rw = randread ] && echo 'reads' || echo '70% reads, 30% writes')
  quietly tvpcim volume create plain --pool slow:1GiB
  alone=$(measure "$(deviceOf plain)" $rw | perSecond)
  row 'hard disk alone' "$shown" "$alone"
  quietly tvpcim volume delete plain

  quietly tvpcim volume create data --pool slow:896MiB --pool fast:128MiB --knob aggressive
  device=$(deviceOf data)
  row 'tiered, before a round' "$shown" "$(measure "$device" $rw | perSecond)"
  quietly voltvkctl policy run
  row 'tiered, after one round' "$shown" "$(measure "$device" $rw | perSecond)"
  measure "$device" $rw 60 >/tmp/during &
  begin=$(date +%s%N)
  moved=$(voltvkctl -o json policy run | sed -n 's/.*"chunks": *\([0-9]*\).*/\1/p')
  duration=$((($(date +%s%N) - begin) / 1000000))
  wait
  rounds+="| $shown | ${moved:-0} | $(awk "BEGIN { printf \"%.1f\", ${moved:-0} * 1000 / $duration }") | $(longestRead </tmp/during) |"$'\n'
  row 'tiered, after two rounds' "$shown" "$(measure "$device" $rw | perSecond)"
  quietly tvpcim volume delete data

  # In turn, since what a cache keeps in the first seconds differs by as much as the host's own work makes.
  coldOfOurs=0 warmOfOurs=0 coldByHand=0 warmByHand=0
  for _ in $(seq $turns); do
    quietly tvpcim volume create mail --type cached --pool slow:1GiB --pool fast:128MiB
    device=$(deviceOf mail)
    coldOfOurs=$((coldOfOurs + $(measure "$device" $rw | perSecond)))
    warmOfOurs=$((warmOfOurs + $(measure "$device" $rw | perSecond)))
    quietly tvpcim volume delete mail
    {
      lvcreate -y -Wy -Zy -n plain -l 1024 other /dev/sdb
      lvcreate -y -Wy -Zy -n cache -l 128 other /dev/sdd
      lvconvert -y --type cache --cachevol other/cache --cachemode writeback --chunksize 1m other/plain
    } >/dev/null
    coldByHand=$((coldByHand + $(measure /dev/other/plain $rw | perSecond)))
    warmByHand=$((warmByHand + $(measure /dev/other/plain $rw | perSecond)))
    quietly lvremove -y other/plain
  done
  row 'cached, cold' "$shown" $((coldOfOurs / turns))
  row 'cached, warm' "$shown" $((warmOfOurs / turns))
  row "the volume manager's cache by hand, cold" "$shown" $((coldByHand / turns))
  row "the volume manager's cache by hand, warm" "$shown" $((warmByHand / turns))
done

printf '\n| a round during I/O | chunks of 1 MiB moved | per second | longest read, ms |\n|---|---:|---:|---:|\n%s' "$rounds"
