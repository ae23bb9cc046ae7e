# shellcheck shell=bash
# The commands that the documents show, and how a test runs them. Sourced by the tests of this folder, which
# set `work`, a folder of their own, `project`, and `machine`, the machine folder on which commands run that
# name none.

# The lines of a document's fenced blocks that are commands: ours, without the comment behind them, and any
# behind "$ ". With a heading, only those of its chapter. What a command behind "$ " prints, as far as it
# stands below it up to an empty line, follows it with a tab in front of each line.
CommandsOf() {
  awk -v heading="## ${2-}" '
    NR == 1 { other = heading != "## " }
    /^## / { other = heading != "## " && $0 != heading }
    /^```/ { inside = !inside }
    /^```/ || /^$/ { shows = 0 }
    !inside || other { next }
    sub(/^\$ /, "") { shows = 1; print; next }
    shows { print "\t" $0; next }
    /^(norvanectl|norvane-machine) / { sub(/ +# .*/, ""); print }' "$1"
}

# Compares a document's lines with what was printed. A line of "..." stands for any number of lines.
IsShown() {
  awk 'function Gap() { while (row <= rows && shown[row] ~ /^ *\.\.\.$/) { gap = 1; row++ } }
    BEGIN { row = 1 }
    FNR == NR { shown[++rows] = $0; next }
    { Gap() }
    row <= rows && shown[row] == $0 { row++; gap = 0; next }
    !gap { exit 1 }
    END { Gap(); if (row <= rows) exit 1 }' "$1" "$2"
}

passed=0 failed=0

# Fault DOCUMENT LINE WHAT: the command in this line didn't do as the document says.
Fault() {
  failed=$((failed + 1))
  printf '%s: the command %s:\n  %s\n' "$1" "$3" "$2"
}

# RunCommand DOCUMENT LINE: what it prints is to be what is in $work/shown, if anything is.
RunCommand() {
  local document=$1 line=$2 command=$2
  command=${command//\/mnt\/disk/$work/disk}
  command=${command//\/mnt\/data/$work/data}
  command=${command//\/media\/usb/$work/usb}
  command=${command//\/tmp\/rescue/$work/rescue}
  command=${command//\/tmp\/pc/$work/pc}
  command=${command//build\/demo/$work}
  # Windows' own prompt takes a backslash as it is; a Linux one wants quotation marks.
  if [[ $command == norvanectl\ * && $command != *--machine* ]]; then
    command=${command//\"/\'}
    command=$(sed -E "s/(^| )([^ ']*[A-Za-z]:[^ ']*|[^ ']*\\\\[^ ']*)/\1'\2'/g" <<<"$command")
    command="norvanectl --machine '$machine' ${command#norvanectl }"
  fi
  if ! (cd "$work" && eval "$command") >"$work/output" 2>&1 </dev/null; then
    Fault "$document" "$line" "ended with an error"
    tail -n 5 "$work/output"
  elif [[ -s $work/shown ]] && ! IsShown "$work/shown" "$work/output"; then
    Fault "$document" "$line" "prints something else than the document shows"
    diff "$work/shown" "$work/output" || true
  else
    passed=$((passed + 1))
  fi
}

# RunDocument COUNT DOCUMENT [HEADING]: runs its commands in their order, which are to be COUNT. The places
# that the documents name stand for folders of the test.
RunDocument() {
  local document=$2 row next count=0
  local -a lines
  mapfile -t lines < <(CommandsOf "$project/$document" "${3-}")
  for ((row = 0; row < ${#lines[@]}; row = next)); do
    : >"$work/shown"
    for ((next = row + 1; next < ${#lines[@]}; next++)); do
      [[ ${lines[next]} == $'\t'* ]] || break
      printf '%s\n' "${lines[next]#$'\t'}" >>"$work/shown"
    done
    count=$((count + 1))
    RunCommand "$document" "${lines[row]}"
  done
  if ((count != $1)); then
    failed=$((failed + 1))
    printf '%s: %d commands were found in it, and the test knows of %d\n' "$document" "$count" "$1"
  fi
}

# Drives of a machine folder that lie elsewhere: AddDrives MACHINE E=/folder F=/folder
AddDrives() { (IFS=$'\n'; printf '[Drives]\n%s\n' "${*:2}") >>"$1/machine.ini"; }
