# shellcheck shell=bash
# How the demo says whether two folders hold the same: by sha256sum and diff, which aren't ours. Sourced by
# demo.sh, and by whoever wants to do the same by hand.

# Lists the files below a folder with their SHA-256 sums, without links, which are left out of every copy,
# and without what is left out of application data.
sums() {
  (cd "$1" && find . -type f ! -path './Packages/*' ! -path './Package Cache/*' ! -path './Comms/*' \
    ! \( -path './*/Windows/*' ! -path './Microsoft/Windows/Themes/*' ! -path './Microsoft/Windows/SendTo/*' \
    ! -path './Microsoft/Windows/Account Pictures/*' \) -print0 | LC_ALL=C sort -z | xargs -0r sha256sum)
}

# What is compared: a folder, and the place that it was copied to, in turns.
pairs=()
add_folder() { pairs+=("$1" "$2"); }

# Adds the folders of a profile, the loose files beside them being nobody's. Given are two folders, and
# where in each of them application data lies, roaming and local.
add_profile() {
  local source=$1 target=$2 folder
  for folder in "$source"/*/; do
    folder=${folder%/}
    [[ -L $folder ]] && continue
    case ${folder##*/} in
      AppData | LocalAppData | 'Application Data' | 'Local Settings') continue ;;
    esac
    add_folder "$folder" "$target/${folder##*/}"
  done
  add_folder "$source/$3" "$target/$5"
  add_folder "$source/$4" "$target/$6"
}

# The pairs, with a line for each that differs and one for all. Forgets them. `compared` is the number of
# files.
compare() {
  local differ=0 i before after
  compared=0
  for ((i = 0; i < ${#pairs[@]}; i += 2)); do
    before=$(sums "${pairs[i]}")
    after=$(sums "${pairs[i + 1]}" || echo "this can't be read")
    [[ -z $before ]] || compared=$((compared + $(wc -l <<<"$before")))
    [[ $before != "$after" ]] || continue
    differ=$((differ + 1))
    printf 'DIFFER: %s and %s\n' "${pairs[i]}" "${pairs[i + 1]}"
    diff <(echo "$before") <(echo "$after") | head -n 5 || true
  done
  printf 'sha256sum: %d files in %d folders, %d folders differ\n' "$compared" $((${#pairs[@]} / 2)) "$differ"
  pairs=()
  [[ $compared -gt 0 && $differ -eq 0 ]]
}
