# shellcheck shell=bash
# How the demo says whether two folders hold the same: by sha256sum and diff, which aren't ours. Sourced by
# demo.sh, which sets `demo`, the folder of the demo.

# Lists the files below a folder with their SHA-256 sums, without links, which are left out of every copy,
# and without what is left out of application data.
sums() {
  (cd "$1" && find . -type f ! -path './Packages/*' ! -path './Package Cache/*' ! -path './Comms/*' \
    ! \( -path './*/Windows/*' ! -path './Microsoft/Windows/Themes/*' ! -path './Microsoft/Windows/SendTo/*' \
    ! -path './Microsoft/Windows/Account Pictures/*' \) -print0 | LC_ALL=C sort -z | xargs -0r sha256sum)
}

# What is compared: a folder, and the place that it was copied to, in turns.
pairs=()

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
    pairs+=("$folder" "$target/${folder##*/}")
  done
  pairs+=("$source/$3" "$target/$5" "$source/$4" "$target/$6")
}

# The pairs, with a line for each that differs and one for all. Forgets them.
compare() {
  local files=0 differ=0 i
  for ((i = 0; i < ${#pairs[@]}; i += 2)); do
    sums "${pairs[i]}" >"$demo/source.sums"
    files=$((files + $(wc -l <"$demo/source.sums")))
    sums "${pairs[i + 1]}" | diff "$demo/source.sums" - >"$demo/difference" && continue
    differ=$((differ + 1))
    printf 'DIFFER: %s and %s\n' "${pairs[i]}" "${pairs[i + 1]}"
    head -n 5 "$demo/difference"
  done
  printf 'sha256sum: %d files in %d folders, %d folders differ\n' "$files" $((${#pairs[@]} / 2)) "$differ"
  compared=$((compared + files))
  pairs=()
  [[ $files -gt 0 && $differ -eq 0 ]]
}
compared=0
