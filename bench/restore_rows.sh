# Rows of the benchmark for what puts files back: a restore of one extra folder of a set, and a move.
# Sourced by bench/run, whose functions and trees it uses.

# Restore TREE: the folder D:\TREE of the set on drive D, as D:\back.
Restore() {
  Norvane restore 'D:\set' --skip Bench --no-extra --extra "D:\\$1=D:\\back" --quiet
}
ForgetBack() { rm -rf "${disk:?}/back"; }

MeasureRestore() {
  local files=$((20000 / scale)) round i ratio ours rsync cp
  ForgetSet set
  Backup set small >/dev/null
  local stored
  stored=$(echo "$disk"/set/ExtraFolders/*)
  for ((round = 0; round < rounds; round++)); do
    local -a order=(ours rsync cp)
    for ((i = 0; i < 3; i++)); do
      case ${order[(i + round) % 3]} in
        ours) ForgetBack; Run restore.ours Restore small ;;
        rsync) rm -rf "$work/copy"; Run restore.rsync rsync -a "$stored/" "$work/copy/" ;;
        cp) rm -rf "$work/copy"; Run restore.cp cp -a "$stored" "$work/copy" ;;
      esac
    done
  done
  diff -r "$disk/small" "$disk/back" >/dev/null || Die "the restored tree differs"
  ours=$(Median restore.ours 1) rsync=$(Median restore.rsync 1) cp=$(Median restore.cp 1)
  ratio=$(Divide "$ours" "$rsync")
  Row "restore of $files files into an empty target, against \`rsync -a\`" "$(Seconds "$ours")" \
    "$(Seconds "$rsync")" "$ratio" "at most 1.0" "$(Met "$ratio" 1.0 '<=')"
  ratio=$(Divide "$ours" "$cp")
  Row "the same, against \`cp -a\`" "$(Seconds "$ours")" "$(Seconds "$cp")" "$ratio" "at most 1.8" \
    "$(Met "$ratio" 1.8 '<=')"
  rm -rf "$work/copy"
  MeasurePresent "$stored"
  ForgetBack
}

# With everything there already.
MeasurePresent() {
  local stored=$1 round ratio ours rsync
  rsync -a "$stored/" "$work/copy/"
  for ((round = 0; round < rounds; round++)); do
    Run present.ours Restore small
    Run present.rsync rsync -a --ignore-existing "$stored/" "$work/copy/"
  done
  rm -rf "$work/copy"
  ours=$(Median present.ours 1) rsync=$(Median present.rsync 1)
  ratio=$(Divide "$ours" "$rsync")
  Row "restore with all of them there already, against \`rsync -a --ignore-existing\`" \
    "$(Seconds "$ours")" "$(Seconds "$rsync")" "$ratio" "at most 2.0" "$(Met "$ratio" 2.0 '<=')"
}

# What a move costs beyond the walk, which is what the same command needs where every file is there
# already: it lists source and target, looks at each file, and moves none.
MeasureMove() {
  local files=$((20000 / scale)) moving walking calls
  cp -a "$disk/small" "$disk/moved"
  ForgetBack
  moving=$(KernelCalls "$bin/norvanectl" --machine "$machine" move 'D:\moved' 'D:\back' --quiet)
  diff -r "$disk/small" "$disk/back" >/dev/null || Die "the moved tree differs"
  rm -rf "$disk/moved"
  cp -a "$disk/small" "$disk/moved"
  walking=$(KernelCalls "$bin/norvanectl" --machine "$machine" move 'D:\moved' 'D:\back' --quiet)
  rm -rf "$disk/moved"
  ForgetBack
  calls=$(awk -v a="$moving" -v b="$walking" -v f="$files" 'BEGIN { printf "%.1f", (a - b) / f }')
  Row "kernel calls for each file of a move, beyond the walk" "$calls" \
    "walk $(Divide "$walking" "$files" %.1f)" "" "at most 4" "$(Met "$calls" 4 '<=')"
}

# Peak memory of a restore of a tree, in KiB.
RestorePeak() {
  ForgetSet set
  ForgetBack
  Backup set "$1" >/dev/null
  /usr/bin/time -f %M -o "$work/peak" "$bin/norvanectl" --machine "$machine" restore 'D:\set' --skip Bench \
    --no-extra --extra "D:\\$1=D:\\back" --quiet >"$work/output" 2>&1 || Die "failed: restore of $1"
  cat "$work/peak"
}
MeasureRestoreMemory() {
  local many=$((200000 / scale)) few=1000 manyPeak fewPeak difference
  MakeTree "$disk/few" 1 1 1 "$few" 0
  MakeTree "$disk/entries" $((200 / scale)) 1 1 1000 0
  fewPeak=$(RestorePeak few) manyPeak=$(RestorePeak entries)
  rm -rf "$disk/few" "$disk/entries"
  ForgetBack
  difference=$(awk -v a="$manyPeak" -v b="$fewPeak" 'BEGIN { printf "%+.1f", (a - b) / 1024 }')
  Row "peak memory of a restore of $many files, against $few" "$(Divide "$manyPeak" 1024 "%.1f MiB")" \
    "$(Divide "$fewPeak" 1024 "%.1f MiB")" "$difference MiB" "within 5 MiB" "$(Met "$difference" 5 '<=')"
}
