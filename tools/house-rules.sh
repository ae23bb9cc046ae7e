#!/usr/bin/env bash
# The rules of the house that no compiler checks: who may include whom, no conditional for a system in the
# product's sources, no wide text of the standard library, files that can be read in one go. Prints each
# place that breaks one, and ends with 1 then. Also a test of the Linux build.
set -euo pipefail
cd "$(dirname "$0")/.."
status=0
shopt -s lastpipe  # so that Report, at the end of a pipe, can set it

# Prints a rule and the places that break it, which are read from standard input.
Report() {
  local places
  places=$(cat)
  [[ -z $places ]] && return 0
  printf '%s\n' "$1" "$places" | sed '2,$s/^/  /'
  status=1
}

# The folders of src that a folder may include from, beside core/app_object.h, which all above the
# foundation may know.
Allowed() {
  case $1 in
    foundation) echo foundation ;;
    users | network | toolkit) echo "$1 foundation" ;;
    operations) echo operations users foundation ;;
    core) echo core operations users network toolkit foundation resources ;;
    screens) echo screens core operations users network toolkit foundation resources ;;
    command) echo core operations users network foundation resources ;;
    platform) echo ;;
  esac
}

product_folders=' foundation users network toolkit operations core screens resources '
sources=(src command platform)

# Lines of "file:folder/header" for the includes in quotation marks of what is below the folders given.
Includes() {
  grep -rHo --include='*.h' --include='*.cc' '^#include "[^"]*"' "$@" | sed 's/:#include "\(.*\)"$/:\1/'
}

CheckIncludes() {
  local line file header from to
  while IFS= read -r line; do
    file=${line%%:*} header=${line#*:}
    from=${file%%/*}
    [[ $from == src ]] && from=${file#src/} && from=${from%%/*}
    to=${header%%/*}
    # A header of the file's own folder.
    [[ $header != */* && -f ${file%/*}/$header ]] && continue
    case $file:$header in
      command/no_windows.cc:toolkit/*) continue ;;       # stands in for the windows
      platform/machine/norvanectl_main.cc:console.h) continue ;;  # the entry, which calls the console
    esac
    if [[ $from != foundation && $from != platform && $header == core/app_object.h ]]; then continue; fi
    if [[ $product_folders == *" $to "* ]]; then
      [[ " $(Allowed "$from") " == *" $to "* ]] || echo "$file includes $header"
    elif [[ $from == platform ]]; then
      [[ -f platform/$header ]] || echo "$file includes $header"
    elif [[ $from == command ]]; then
      [[ -f command/$header ]] || echo "$file includes $header"
    else
      echo "$file includes $header"
    fi
  done < <(Includes "${sources[@]}")
}

Texts() { grep -rIn --exclude-dir=build --exclude-dir=.git "$@" || true; }

CheckIncludes | Report "These includes go against the order of the folders (docs/architecture.md):"

Texts -E '^[[:space:]]*#[[:space:]]*(el)?if.*(WIN32|WIN64|__linux|__unix|__MINGW|__GNUC__)' src command |
  Report "The product has no conditional for a system or a compiler; what differs belongs into platform/:"

Texts -w -i 'linux' src | Report "The product doesn't know of the other system:"

Texts -E 'std::w(string|string_view|stringstream|ostringstream|istringstream|ostream|istream|ofstream|ifstream|cout|cerr)\b|basic_string(_view)?<wchar_t' \
  --include='*.h' --include='*.cc' src command platform tests |
  Report "The standard library's wide texts take four bytes a unit on some systems; use WString:"

Texts -E '\b[P]arts? [0-9]+\.[0-9]+' . | Report "A reference that no reader can follow:"
Texts -i -E '\bthe spe[c]\b|specificatio[n]' . | Report "A reference that no reader can follow:"

find src command platform tests \( -name '*.cc' -o -name '*.h' \) -exec wc -l {} + |
  awk '$2 != "total" && $1 > 500 { print $2 " has " $1 " lines" }' |
  Report "A file has 500 lines at the most:"

exit "$status"
