#!/usr/bin/env bash
# The main job on a sample machine, called by `./dev demo`. Prints each command before it runs it, so that
# a reader can do the same by hand, and has the result checked by programs that aren't ours.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

./dev build

demo=build/demo
machine=$demo/sample
set_folder=$machine/D/Backups/Demo
PATH=$PWD/build/bin:$PATH
began=$EPOCHREALTIME

say() { printf '\n== %s\n' "$*"; }
run() {
  printf '$ %s\n' "${*@Q}" | sed "s/'\([A-Za-z0-9_./:=-]*\)'/\1/g"
  "$@"
}
# Prints the command but only the given line of its output: "last", or a pattern.
seconds() { awk -v a="$1" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.1f", b - a }'; }

rm -rf --one-file-system "$demo"
mkdir -p "$demo"

say "A Windows machine in a folder: three accounts, real files, real registry hives"
run norvane-machine sample "$machine"
run norvane-machine show "$machine" | sed '/^Processes/,$d'

say "Its accounts, as the program sees them"
run norvanectl --machine "$machine" users

say "A backup of all accounts and of one more folder onto drive D"
backup=(norvanectl --machine "$machine" backup --to 'D:\Backups' --name Demo --extra 'D:\Projects'
        --copy-hidden --copy-system)
started=$EPOCHREALTIME
run "${backup[@]}"
took=$(seconds "$started")

say "What the set holds"
run norvanectl --machine "$machine" info 'D:\Backups\Demo'

say "Its info file"
printf '$ iconv -f UTF-16 -t UTF-8 %s\n' "$set_folder/BackupInfo.grxsv"
iconv -f UTF-16 -t UTF-8 "$set_folder/BackupInfo.grxsv" | tr -d '\r'

# Each row: a folder of the machine and its place in the set. The MD5 name of the extra folder is worked
# out here by another program than ours.
md5_name() { printf '%s\0' "$1" | iconv -f UTF-8 -t UTF-16LE | md5sum | cut -c1-32 | tr a-f A-F; }
pairs=()
for account in Anna Bob Eve; do
  for folder in Desktop Documents Downloads Music Pictures Videos 'Saved Games' Recipes; do
    source=$machine/C/Users/$account/$folder
    [[ $account/$folder == Bob/Documents ]] && source=$machine/D/Bob/Documents
    [[ -d $source ]] && pairs+=("$source" "$set_folder/Users/$account/$folder")
  done
  pairs+=("$machine/C/Users/$account/AppData/Roaming" "$set_folder/Users/$account/AppData"
          "$machine/C/Users/$account/AppData/Local" "$set_folder/Users/$account/LocalAppData")
done
pairs+=("$machine/D/Projects" "$set_folder/ExtraFolders/$(md5_name 'D:\Projects')")

# Lists the files below a folder with their SHA-256 sums, without links, which a backup leaves out, and
# without what is left out of application data.
sums() {
  (cd "$1" && find . -type f ! -path './Packages/*' ! -path './Package Cache/*' ! -path './Comms/*' \
    ! \( -path './*/Windows/*' ! -path './Microsoft/Windows/Themes/*' ! -path './Microsoft/Windows/SendTo/*' \
    ! -path './Microsoft/Windows/Account Pictures/*' \) -print0 | LC_ALL=C sort -z | xargs -0r sha256sum)
}

compare() {
  local files=0 differ=0 i listed
  for ((i = 0; i < ${#pairs[@]}; i += 2)); do
    listed=$demo/source.sums
    sums "${pairs[i]}" >"$listed"
    files=$((files + $(wc -l <"$listed")))
    sums "${pairs[i + 1]}" | diff "$listed" - >"$demo/difference" && continue
    differ=$((differ + 1))
    printf 'DIFFER: %s and %s\n' "${pairs[i]}" "${pairs[i + 1]}"
    head -n 5 "$demo/difference"
  done
  printf 'sha256sum: %d files in %d folders of the machine, %d folders differ from the set\n' \
    "$files" $((${#pairs[@]} / 2)) "$differ"
  [[ $differ -eq 0 ]]
}

say "Source and set, file by file"
compare
run diff -r --no-dereference "$machine/D/Projects" "$set_folder/ExtraFolders/$(md5_name 'D:\Projects')"
echo "diff -r: no difference"

say "Some files change, and the backup is run again as an update"
change=$machine/C/Users/Anna/Documents/changed.txt
printf '$ echo ... >%s, and two more\n' "$change"
echo "written after the first backup" >"$change"
echo "another line" >>"$(find "$machine/D/Projects" -type f | LC_ALL=C sort | head -n 1)"
find "$machine/D/Projects" -type f | LC_ALL=C sort | tail -n 1 | xargs -d '\n' touch
run "${backup[@]}" --update
compare

say "In short"
printf '%s files, %s bytes in the set; the first backup took %s s; source and set agree; the demo took %s s.\n' \
  "$(find "$set_folder" -type f | wc -l)" "$(find "$set_folder" -type f -printf '%s\n' | awk '{ n += $1 } END { print n }')" \
  "$took" "$(seconds "$began")"
