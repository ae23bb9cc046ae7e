# shellcheck shell=bash
# The commands that the documents show, and how a test runs them. Sourced by the tests of this folder, which
# set `work`, a folder of their own, `project`, and `machine`, the machine folder on which commands run that
# name none.

# The lines of a document's fenced blocks that are commands of ours, without the comment behind them. With a
# heading, only those of its chapter.
CommandsOf() {
  awk -v heading="## ${2-}" '
    /^## / { other = heading != "## " && $0 != heading }
    NR == 1 { other = heading != "## " }
    /^```/ { inside = !inside; next }
    inside && !other && /^(norvanectl|norvane-machine) / { sub(/ +# .*/, ""); print }' "$1"
}

passed=0 failed=0

# RunDocument DOCUMENT [HEADING]: runs its commands in their order. The places that the documents name stand
# for folders of the test.
RunDocument() {
  local document=$1 line command
  while IFS= read -r line; do
    command=${line//\/mnt\/disk/$work/disk}
    command=${command//\/media\/usb/$work/usb}
    command=${command//\/tmp\/rescue/$work/rescue}
    command=${command//\/tmp\/pc/$work/pc}
    # Windows' own prompt takes a backslash as it is; a Linux one wants quotation marks.
    if [[ $command == norvanectl\ * && $command != *--machine* ]]; then
      command=${command//\"/\'}
      command=$(sed -E "s/(^| )([^ ']*[A-Za-z]:[^ ']*|[^ ']*\\\\[^ ']*)/\1'\2'/g" <<<"$command")
      command="norvanectl --machine '$machine' ${command#norvanectl }"
    fi
    if (cd "$work" && eval "$command") >"$work/output" 2>&1 </dev/null; then
      passed=$((passed + 1))
    else
      failed=$((failed + 1))
      printf '%s: the command ended with an error:\n  %s\n' "$document" "$line"
      tail -n 5 "$work/output"
    fi
  done < <(CommandsOf "$project/$document" "${2-}")
}

# Drives of a machine folder that lie elsewhere: AddDrives MACHINE E=/folder F=/folder
AddDrives() { (IFS=$'\n'; printf '[Drives]\n%s\n' "${*:2}") >>"$1/machine.ini"; }
