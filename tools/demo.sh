#!/usr/bin/env bash
# The main jobs on sample machines, called by `./dev demo`. Prints each command before it runs it, so that
# a reader can do the same by hand, and has each result checked by programs that aren't ours.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

./dev build

demo=build/demo
machine=$demo/sample
second=$demo/second
set_folder=$machine/D/Backups/Demo
PATH=$PWD/build/bin:$PATH
began=$EPOCHREALTIME
# shellcheck source=tools/demo-compare.sh
source tools/demo-compare.sh

say() { printf '\n== %s\n' "$*"; }
run() {
  printf '$ %s\n' "${*@Q}" | sed "s/'\([A-Za-z0-9_./:=-]*\)'/\1/g"
  "$@"
}
seconds() { awk -v a="$1" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.1f", b - a }'; }

# The MD5 name of an extra folder, worked out by another program than ours.
md5_name() { printf '%s\0' "$1" | iconv -f UTF-8 -t UTF-16LE | md5sum | cut -c1-32 | tr a-f A-F; }

# Takes down the sample machine's accounts and where they went: three profiles below a folder, with the
# places of application data there, and the extra folder.
add_sample() {
  local -n profiles=$1
  local account
  for account in Anna Bob Eve; do
    add_profile "$machine/C/Users/$account" "${profiles[$account]}" AppData/Roaming AppData/Local "$2" "$3"
  done
  # Bob has moved his documents to another drive.
  pairs+=("$machine/D/Bob/Documents" "${profiles[Bob]}/Documents" "$machine/D/Projects" "$4")
}

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

say "Machine and set, file by file"
# shellcheck disable=SC2034  # read by its name
declare -A in_set=([Anna]=$set_folder/Users/Anna [Bob]=$set_folder/Users/Bob [Eve]=$set_folder/Users/Eve)
extra_in_set=$set_folder/ExtraFolders/$(md5_name 'D:\Projects')
add_sample in_set AppData LocalAppData "$extra_in_set"
compare
run diff -r --no-dereference "$machine/D/Projects" "$extra_in_set"
echo "diff -r: no difference"

say "Some files change, and the backup is run again as an update"
change=$machine/C/Users/Anna/Documents/changed.txt
printf '$ echo ... >%s, and two more\n' "$change"
echo "written after the first backup" >"$change"
echo "another line" >>"$(find "$machine/D/Projects" -type f | LC_ALL=C sort | head -n 1)"
find "$machine/D/Projects" -type f | LC_ALL=C sort | tail -n 1 | xargs -d '\n' touch
run "${backup[@]}" --update
add_sample in_set AppData LocalAppData "$extra_in_set"
compare

say "A second machine with another Windows: it has an Anna, and somebody with Bob's full name"
run norvane-machine create "$second" --computer SECOND-PC --version 10.0.19045 --drives D --console Anna \
  --account 'Anna:administrator:Anna Berg' --account 'robert:standard:Bob Okafor' --account Cora --account Dora
run cp -a "$machine/D/Backups" "$second/D/"
on_second=(norvanectl --machine "$second")

say "What a restore there would do (only the accounts are shown here)"
run "${on_second[@]}" restore 'D:\Backups\Demo' --dry-run | grep -e ' -> ' -e '^\$' -e '^In all'

say "The set is restored: Anna by name, Bob by his full name, Eve to a new account"
run "${on_second[@]}" restore 'D:\Backups\Demo'
run "${on_second[@]}" users
users=$second/C/Users
# shellcheck disable=SC2034
declare -A restored=([Anna]=$users/Anna [Bob]=$users/robert [Eve]=$users/Eve)
add_sample restored AppData/Roaming AppData/Local "$second/D/Projects"
compare
run diff -r --no-dereference "$machine/D/Projects" "$second/D/Projects"
echo "diff -r: no difference"

say "Once more: what is there stays, whatever the set says"
echo "newer than the set" >"$users/Anna/Documents/changed.txt"
sums "$users" >"$demo/before.sums"
run "${on_second[@]}" restore 'D:\Backups\Demo' --quiet
sums "$users" | diff "$demo/before.sums" -
printf 'sha256sum: %d files, none has changed\n' "$(wc -l <"$demo/before.sums")"

# Gives an account of a machine that was just made some of an account's files of the sample machine: its
# documents under the name that they have there, and its application data.
fill() {
  local from=$machine/C/Users/$1 profile=$2
  mkdir -p "$profile/$4" "$profile/$5"
  rm -r "${profile:?}/$3"
  cp -a "$from/Documents" "$profile/$3"
  cp -a "$from/Pictures" "$from/Desktop" "$profile/"
  cp -a "$from/AppData/Roaming/." "$profile/$4/"
  cp -a "$from/AppData/Local/." "$profile/$5/"
}

say "The disk of an old Windows, attached as drive E"
run norvane-machine create "$demo/old" --version 5.1.2600 --account Karl --account 'Inge:administrator:Inge Dahl'
profiles="$demo/old/C/Documents and Settings"
fill Anna "$profiles/Karl" 'My Documents' 'Application Data' 'Local Settings/Application Data'
fill Eve "$profiles/Inge" 'My Documents' 'Application Data' 'Local Settings/Application Data'
run mv "$demo/old/C" "$second/E"
run "${on_second[@]}" restore-from E: --copy-hidden --copy-system --skip 'All Users' --skip 'Default User'
for account in Karl Inge; do
  add_profile "$second/E/Documents and Settings/$account" "$users/$account" \
    'Application Data' 'Local Settings/Application Data' AppData/Roaming AppData/Local
done
compare

say "The disk of a newer Windows, attached as drive F, with a folder beside the accounts"
run norvane-machine create "$demo/disk" --version 6.1.7601 --account Lena
fill Eve "$demo/disk/C/Users/Lena" Documents AppData/Roaming AppData/Local
mkdir -p "$demo/disk/C/Data"
cp -a "$machine/D/Projects" "$demo/disk/C/Data/Work"
run mv "$demo/disk/C" "$second/F"
run "${on_second[@]}" restore-from F: --copy-hidden --copy-system --create Lena=Lena2 --extra 'Data\Work=D:\Work'
add_profile "$second/F/Users/Lena" "$users/Lena2" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
pairs+=("$second/F/Data/Work" "$second/D/Work")
compare

say "On one machine: Lena2's profile is copied to Cora, and Karl's is moved to Dora"
run "${on_second[@]}" copy Lena2 Cora --copy-hidden --copy-system
add_profile "$users/Lena2" "$users/Cora" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
compare
run cp -a "$users/Karl" "$demo/Karl.before"
run "${on_second[@]}" move Karl Dora --copy-hidden --copy-system
add_profile "$demo/Karl.before" "$users/Dora" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
compare
left=$(sums "$users/Karl" | grep -vc '  ./NTUSER.DAT' || true)
printf '%d files are left in the folders of the moved profile\n' "$left"
[[ $left -eq 0 ]]

say "In short"
printf '%s files, %s bytes in the set; the first backup took %s s; %d files compared, all the same; the demo took %s s.\n' \
  "$(find "$set_folder" -type f | wc -l)" "$(find "$set_folder" -type f -printf '%s\n' | awk '{ n += $1 } END { print n }')" \
  "$took" "$compared" "$(seconds "$began")"
