#!/usr/bin/env bash
# The main jobs on sample machines, called by `./dev demo`. Prints each command before it runs it, so that
# a reader can do the same by hand, in bash and in this folder, and has each result checked by programs that
# aren't ours.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

demo=build/demo
machine=$demo/sample
second=$demo/second
set_folder=$machine/D/Backups/Demo

say() { printf '\n== %s\n' "$*"; }
show() { printf '$ %s\n' "$*"; }
# The words as a shell takes them.
quoted() { sed "s/'\([A-Za-z0-9_./:=-][A-Za-z0-9_./:=-]*\)'/\1/g" <<<"${*@Q}"; }
run() {
  show "$(quoted "$@")"
  "$@"
}
# For pipes and what else only a line of the shell can say.
run_line() {
  show "$1"
  eval "$1"
}
seconds() { awk -v a="$1" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.1f", b - a }'; }

# Takes down the sample machine's accounts and where they went: three profiles below a folder, with the
# places of application data there, and the extra folder.
add_sample() {
  local -n profiles=$1
  local account
  for account in Anna Bob Eve; do
    run add_profile "$machine/C/Users/$account" "${profiles[$account]}" \
      AppData/Roaming AppData/Local "$2" "$3"
  done
  # Bob has moved his documents to another drive.
  run add_folder "$machine/D/Bob/Documents" "${profiles[Bob]}/Documents"
  run add_folder "$machine/D/Projects" "$4"
}

# After add_profile and add_folder.
compare_all() {
  run compare
  files_compared=$((files_compared + compared))
}
files_compared=0

say "What the commands below need, in bash and in this folder"
run ./dev build
began=$EPOCHREALTIME
# shellcheck disable=SC2016  # shown as it is to be typed
run_line 'PATH=$PWD/build/bin:$PATH'
# shellcheck source=tools/demo-compare.sh
run source tools/demo-compare.sh
run rm -rf --one-file-system "$demo"
run mkdir -p "$demo"

say "A Windows machine in a folder: three accounts, real files, real registry hives"
run norvane-machine sample "$machine"
run_line "norvane-machine show $machine | sed '/^Processes/,\$d'"

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
run_line "iconv -f UTF-16 -t UTF-8 $set_folder/BackupInfo.grxsv | tr -d '\r'"

say "The name of D:\\Projects in the set, which is the MD5 digest of its path"
run_line "printf 'D:\\\\Projects\\0' | iconv -f UTF-8 -t UTF-16LE | md5sum | cut -c1-32 | tr a-f A-F | tee $demo/name"
extra_in_set=$set_folder/ExtraFolders/$(<"$demo/name")

say "Machine and set, file by file: the folders of each profile, those of application data named one by one"
# shellcheck disable=SC2034  # read by its name
declare -A in_set=([Anna]=$set_folder/Users/Anna [Bob]=$set_folder/Users/Bob [Eve]=$set_folder/Users/Eve)
add_sample in_set AppData LocalAppData "$extra_in_set"
compare_all
run diff -r --no-dereference "$machine/D/Projects" "$extra_in_set"
echo "diff -r: no difference"

say "Some files change, and the backup is run again as an update"
run_line "echo 'written after the first backup' >$machine/C/Users/Anna/Documents/changed.txt"
run_line "find $machine/D/Projects -type f | LC_ALL=C sort >$demo/projects"
run_line "echo 'another line' >>\"\$(head -n 1 $demo/projects)\""
run_line "touch \"\$(tail -n 1 $demo/projects)\""
run "${backup[@]}" --update
add_sample in_set AppData LocalAppData "$extra_in_set"
compare_all

say "A second machine with another Windows: it has an Anna, and somebody with Bob's full name"
run norvane-machine create "$second" --computer SECOND-PC --version 10.0.19045 --drives D --console Anna \
  --account 'Anna:administrator:Anna Berg' --account 'robert:standard:Bob Okafor' --account Cora --account Dora
run cp -a "$machine/D/Backups" "$second/D/"
on_second=(norvanectl --machine "$second")

say "What a restore there would do (only the accounts are shown here)"
run_line "$(quoted "${on_second[@]}") restore 'D:\\Backups\\Demo' --dry-run | grep -e ' -> ' -e '^In all'"

say "The set is restored: Anna by name, Bob by his full name, Eve to a new account"
run "${on_second[@]}" restore 'D:\Backups\Demo'
run "${on_second[@]}" users
users=$second/C/Users
# shellcheck disable=SC2034
declare -A restored=([Anna]=$users/Anna [Bob]=$users/robert [Eve]=$users/Eve)
add_sample restored AppData/Roaming AppData/Local "$second/D/Projects"
compare_all
run diff -r --no-dereference "$machine/D/Projects" "$second/D/Projects"
echo "diff -r: no difference"

say "Once more: what is there stays, whatever the set says"
run_line "echo 'newer than the set' >$users/Anna/Documents/changed.txt"
run_line "sums $users >$demo/before.sums"
run "${on_second[@]}" restore 'D:\Backups\Demo' --quiet
run_line "sums $users | diff $demo/before.sums -"
printf 'sha256sum: %d files, none has changed\n' "$(wc -l <"$demo/before.sums")"

# Gives an account of a machine that was just made some of an account's files of the sample machine: its
# documents under the name that they have there, and its application data.
fill() {
  local from=$machine/C/Users/$1 profile=$2
  run mkdir -p "$profile/$4" "$profile/$5"
  run rm -r "${profile:?}/$3"
  run cp -a "$from/Documents" "$profile/$3"
  run cp -a "$from/Pictures" "$from/Desktop" "$profile/"
  run cp -a "$from/AppData/Roaming/." "$profile/$4/"
  run cp -a "$from/AppData/Local/." "$profile/$5/"
}

say "The disk of an old Windows, attached as drive E"
run norvane-machine create "$demo/old" --version 5.1.2600 --account Karl --account 'Inge:administrator:Inge Dahl'
profiles="$demo/old/C/Documents and Settings"
fill Anna "$profiles/Karl" 'My Documents' 'Application Data' 'Local Settings/Application Data'
fill Eve "$profiles/Inge" 'My Documents' 'Application Data' 'Local Settings/Application Data'
run mv "$demo/old/C" "$second/E"
run "${on_second[@]}" restore-from E: --copy-hidden --copy-system --skip 'All Users' --skip 'Default User'
for account in Karl Inge; do
  run add_profile "$second/E/Documents and Settings/$account" "$users/$account" \
    'Application Data' 'Local Settings/Application Data' AppData/Roaming AppData/Local
done
compare_all

say "The disk of a newer Windows, attached as drive F, with a folder beside the accounts"
run norvane-machine create "$demo/disk" --version 6.1.7601 --account Lena
fill Eve "$demo/disk/C/Users/Lena" Documents AppData/Roaming AppData/Local
run mkdir -p "$demo/disk/C/Data"
run cp -a "$machine/D/Projects" "$demo/disk/C/Data/Work"
run mv "$demo/disk/C" "$second/F"
run "${on_second[@]}" restore-from F: --copy-hidden --copy-system --create Lena=Lena2 --extra 'Data\Work=D:\Work'
run add_profile "$second/F/Users/Lena" "$users/Lena2" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
run add_folder "$second/F/Data/Work" "$second/D/Work"
compare_all

say "On one machine: Lena2's profile is copied to Cora, and Karl's is moved to Dora"
run "${on_second[@]}" copy Lena2 Cora --copy-hidden --copy-system
run add_profile "$users/Lena2" "$users/Cora" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
compare_all
run cp -a "$users/Karl" "$demo/Karl.before"
run "${on_second[@]}" move Karl Dora --copy-hidden --copy-system
run add_profile "$demo/Karl.before" "$users/Dora" AppData/Roaming AppData/Local AppData/Roaming AppData/Local
compare_all
run_line "sums $users/Karl | sed '/  \.\/NTUSER\.DAT$/d' | tee $demo/left"
printf '%d files are left in the folders of the moved profile\n' "$(wc -l <"$demo/left")"
[[ ! -s $demo/left ]]

say "In short"
size="find $set_folder -type f -printf '%s\\n' | awk '{ n += \$1 } END { printf \"%d files, %d bytes\", NR, n }'"
show "$size"
printf '%s in the set; the first backup took %s s; %d files compared, all the same; the demo took %s s.\n' \
  "$(eval "$size")" "$took" "$files_compared" "$(seconds "$began")"
