#!/usr/bin/env bash
# ./dev lint [--fix] [FILES]: format, static checks and the rules of the house. Silent where all is well.
# With --fix the format is mended instead of complained about. Without files: all of them; the static
# checks then pass over sources that haven't changed since they were found to be good.
set -euo pipefail
project=$(cd "$(dirname "$0")/.." && pwd -P)
build=$project/build
source "$project/tools/setup.sh"
source "$project/tools/build.sh"
cd "$project"

fix=0
if [[ ${1-} == --fix ]]; then
  fix=1
  shift
fi
files=("$@")
if ((!$#)); then
  mapfile -t files < <(find src command platform tests \( -name '*.cc' -o -name '*.h' \) | sort)
fi
status=0

if ((fix)); then
  clang-format -i "${files[@]}"
else
  clang-format --dry-run -Werror "${files[@]}" || status=1
fi

tools/house-rules.sh || status=1
mapfile -t scripts < <(grep -lE -m 1 '^#!.*bash|^# shellcheck shell=bash' dev .ci/run tools/* bench/* 2>/dev/null)
shellcheck "${scripts[@]}" || status=1

# Sources of the Linux build that haven't been found good since they, a header or the checks last changed.
NewestHeader() { find "$@" .clang-tidy \( -name '*.h' -o -name .clang-tidy \) -printf '%T@ %p\n' | sort -rn | sed -n '1s/^[^ ]* //p'; }
newest=$(NewestHeader src command platform)
newest_of_tests=$(NewestHeader src command platform tests)
sources=()
for file in "${files[@]}"; do
  case $file in
    *.h | *_windows_test.cc | tests/support/windows/* | tests/stand_in/* | tests/fuzz/* | command/windows_main.cc) continue ;;
    src/toolkit/* | src/screens/* | src/network/*) continue ;;
  esac
  stamp=$build/lint/$file.good header=$newest
  [[ $file != tests/* ]] || header=$newest_of_tests
  [[ $# -eq 0 && $stamp -nt $file && $stamp -nt $header ]] && continue
  sources+=("$file")
done

TidyOne() {
  local file=$1 log
  # What isn't of ours to mend is counted on standard error ("12 warnings generated").
  if log=$(clang-tidy --quiet -p "$build/lint/linux" "$file" 2>&1); then
    mkdir -p "$build/lint/${file%/*}"
    touch "$build/lint/$file.good"
  else
    grep -Ev '^[0-9]+ warnings? (and [0-9]+ errors? )?generated|^Suppressed|^Use -header-filter|warnings treated as errors' <<<"$log"
    return 1
  fi
}
export -f TidyOne
export build

if ((${#sources[@]})); then
  # So that it knows each file; without precompiled headers, so that each has to include what it uses.
  cmake --preset linux-sanitized -B "$build/lint/linux" -DNORVANE_PRECOMPILE=OFF >/dev/null
  printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'TidyOne "$1"' tidy || status=1
fi
exit "$status"
